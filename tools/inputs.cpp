#include "inputs.h"

#include "diagnosis.h"
#include "standard_streams.h"
#include "whole_file.h"

#include <algorithm>

namespace tifftool {

namespace {

bool HasWildcard(const std::string& path)
{
    return path.find_first_of("*?") != std::string::npos;
}

// The files of a pattern in the order of their names; none when nothing matches.
std::vector<std::string> MatchFiles(const std::string& pattern)
{
    std::vector<std::string> files;
    WIN32_FIND_DATAA found;
    const HANDLE search = FindFirstFileA(pattern.c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) {
        return files;
    }
    do {
        if (!(found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) {
            files.push_back(FolderOf(pattern) + found.cFileName);
        }
    } while (FindNextFileA(search, &found));
    FindClose(search);
    std::ranges::sort(files, [](const std::string& left, const std::string& right) {
        return lstrcmpiA(left.c_str(), right.c_str()) < 0;
    });
    return files;
}

// Separates a name from its selection. A file that has the whole argument for its name is meant.
bool SplitArgument(const Command& command, const char* argument, Input& input)
{
    input.path = argument;
    const size_t colon = FindSelection(argument);
    if (colon == std::string::npos || Exists(argument)) {
        return true;
    }
    const std::string path = input.path.substr(0, colon), pages = input.path.substr(colon + 1);
    if (ParsePages(pages, input.pages)) {
        input.path = path;
    } else if (Exists(path) || HasWildcard(path) || path == STANDARD_STREAM) {
        UsageError(command, std::string(argument) + ": behind the colon come pages, " + PAGES_EXAMPLE);
        return false;
    } else {
        input.pages.clear();
    }
    return true;
}

// "--pages" or "--page"; nothing when neither is given.
bool ReadPageOptions(const Command& command, const Options& options, PageSelection& pages)
{
    if (options.Has("--pages") && options.Has("--page")) {
        UsageError(command, "takes --pages or --page");
        return false;
    }
    if (options.Has("--pages") && !ParsePages(options.Value("--pages", ""), pages)) {
        UsageError(command, std::string("--pages takes ") + PAGES_EXAMPLE);
        return false;
    }
    if (std::string(options.Value("--page", "")) == "last") {
        pages = {{LAST_PAGE, LAST_PAGE}};
    } else if (options.Has("--page")) {
        const uint32_t page = PageOption(command, options, "--page");
        pages = {{page, page}};
        return page != 0;
    }
    return true;
}

bool AddFiles(const Command& command, const Input& input, std::vector<Input>& inputs)
{
    if (input.path == STANDARD_STREAM) {
        const std::string path = SpoolStandardInput();
        if (path.empty()) {
            return false;
        }
        inputs.push_back({path, input.pages});
    } else if (!HasWildcard(input.path)) {
        inputs.push_back(input);
    } else {
        const std::vector<std::string> files = MatchFiles(input.path);
        for (const std::string& file : files) {
            inputs.push_back({file, input.pages});
        }
        if (files.empty()) {
            UsageError(command, input.path + ": there is no such file");
        }
        return !files.empty();
    }
    return true;
}

bool IsForced(const Options& options, const char* output, std::span<const Input> inputs)
{
    if (inputs.size() > 1 && Exists(output) && !options.Has("--append") && !options.Has("--force")) {
        ReportSentence(output, "is there already; several files replace it with --force");
        return false;
    }
    return true;
}

} // namespace

bool ReadInputs(const Command& command, const Options& options, std::span<const char* const> arguments,
                std::vector<Input>& inputs)
{
    PageSelection pages;
    if (!ReadPageOptions(command, options, pages)) {
        return false;
    }
    for (const char* const argument : arguments) {
        Input input;
        if (!SplitArgument(command, argument, input)) {
            return false;
        }
        if (!pages.empty() && !input.pages.empty()) {
            UsageError(command, std::string(argument) + ": pages are selected twice");
            return false;
        }
        input.pages.insert(input.pages.end(), pages.begin(), pages.end());
        if (!AddFiles(command, input, inputs)) {
            return false;
        }
    }
    return true;
}

bool ReadInput(const Command& command, const Options& options, const char* argument, Input& input)
{
    std::vector<Input> inputs;
    if (!ReadInputs(command, options, {&argument, 1}, inputs)) {
        return false;
    }
    if (inputs.size() != 1) {
        UsageError(command, std::string(argument) + " means several files; it takes one");
        return false;
    }
    input = inputs[0];
    return true;
}

bool ReadOnePage(const Command& command, const Options& options, const char* argument, Input& input)
{
    if (!ReadInput(command, options, argument, input)) {
        return false;
    }
    if (input.pages.empty()) {
        input.pages = {{1, 1}};
    }
    if (input.pages.size() == 1 && input.pages[0].first == input.pages[0].last) {
        return true;
    }
    UsageError(command, "takes one page");
    return false;
}

bool ReadInputsBefore(const Command& command, const Options& options, const char* output,
                      std::vector<Input>& inputs)
{
    const std::span all(options.others);
    if (!ReadInputs(command, options, all.first(all.size() - 1), inputs)) {
        return false;
    }
    return IsForced(options, output, inputs);
}

bool ReadWholeInputs(const Command& command, const Options& options, std::span<const char* const> arguments,
                     std::vector<Input>& inputs)
{
    if (!ReadInputs(command, options, arguments, inputs)) {
        return false;
    }
    const auto paged = std::ranges::find_if(inputs, [](const Input& input) { return !input.pages.empty(); });
    if (paged != inputs.end()) {
        UsageError(command, paged->path + " has no pages to select");
    }
    return paged == inputs.end();
}

bool MayReplace(const Options& options, const char* output, std::span<const Input> inputs)
{
    for (const Input& input : inputs) {
        if (IsSameFile(input.path, output)) {
            ReportSentence(output, "the pages would take the place of the file that they are made of");
            return false;
        }
    }
    return IsForced(options, output, inputs);
}

} // namespace tifftool
