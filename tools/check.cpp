/* tifftool check: everything that is wrong with files, page by page, and how their pages can be faxed. */
#include "check_page.h"
#include "diagnosis.h"
#include "json.h"
#include "progress.h"
#include "source.h"
#include "standard_streams.h"

#include <algorithm>
#include <cstdio>

namespace tifftool {

namespace {

struct FileVerdict {
    std::string name;
    uint64_t size = 0;
    std::vector<std::string> wrong;
    struct Page {
        uint32_t number;
        PageVerdict verdict;
        FaxVerdict fax;
    };
    std::vector<Page> pages;
};

bool IsFine(const FileVerdict& file)
{
    return file.wrong.empty() && std::ranges::all_of(file.pages, [](const FileVerdict::Page& page) {
               return page.verdict.wrong.empty();
           });
}

// The offsets of the directories; the fault behind the last one goes into the verdict.
std::vector<uint32_t> FollowChain(RawFile& raw, FileVerdict& file)
{
    Chain chain = WalkChain(raw);
    std::vector<uint32_t>& directories = chain.directories;
    const uint32_t last = directories.empty() ? 0 : directories.back();
    if (!directories.empty() && uint64_t{last} + 2 > file.size) {
        directories.pop_back();
        file.wrong.push_back((directories.empty()
                                  ? "there are no pages: the first directory"
                                  : "the chain of pages is broken after page " +
                                        std::to_string(directories.size()) + ": the next directory") +
                             " would be at " + std::to_string(last) + ", outside the file");
    } else if (directories.empty()) {
        file.wrong.push_back("the file has no pages");
    } else if (chain.comesBackTo != 0) {
        file.wrong.push_back("the chain of pages comes back to page " + std::to_string(chain.comesBackTo) +
                             " after page " + std::to_string(directories.size()));
    }
    return directories;
}

int CheckPages(const Input& input, FileVerdict& file)
{
    const Source source(input.path.c_str());
    RawFile raw(input.path);
    const std::vector<uint32_t> directories = FollowChain(raw, file);
    // The library does not follow chains that would take hours, so nothing behind its last page is read but
    // the directory at which it stopped.
    const auto count = std::min(static_cast<uint32_t>(directories.size()), source.pages + 1);
    if (count < directories.size()) {
        file.wrong.push_back("the chain of pages makes no sense after page " + std::to_string(count));
    }
    std::vector<uint32_t> pages;
    if (const uint32_t missing = count == 0 ? 0 : ListPages(input.pages, count, pages)) {
        return ReportSentence(input.path,
                              "has no page " + std::to_string(missing) + ", only " + Counted(count, "page"));
    }
    for (const uint32_t page : pages) {
        FileVerdict::Page& result = file.pages.emplace_back(FileVerdict::Page{page, {}, {}});
        const Directory directory = ReadDirectory(raw, directories[page - 1]);
        CheckDirectory(raw, directory, result.verdict);
        if (page <= source.pages) {
            CheckPicture(source.file.handle, page - 1, result.verdict);
        }
        result.fax = JudgeForFax(source.file.handle, page - 1, directory, result.verdict);
        DropTiffImage(source.file.handle, page - 1);
        if (!DrawProgress(static_cast<uint32_t>(pages.size()), static_cast<uint32_t>(file.pages.size()), 0)) {
            return FAILED;
        }
    }
    return ALL_FINE;
}

std::string DescribeFax(const FaxVerdict& fax)
{
    if (!fax.reason.empty()) {
        return "no fax: " + fax.reason;
    }
    std::string ready, others;
    for (const auto& [board, reason] : fax.boards) {
        std::string& list = reason.empty() ? ready : others;
        list += (list.empty() ? "" : ", ") + std::string(board) + (reason.empty() ? "" : " (" + reason + ")");
    }
    return "fax: " + (ready.empty() ? "" : "as it is through " + ready) +
           (ready.empty() || others.empty() ? "" : "; ") +
           (others.empty() ? "" : "after tifftool fax through " + others);
}

void PrintVerdict(const FileVerdict& file)
{
    printf("%s: %s, %s\n", file.name.c_str(), Counted(file.size, "byte").c_str(),
           IsFine(file) ? "fine" : "not fine");
    for (const auto& [number, verdict, fax] : file.pages) {
        printf("  page %u: %s\n", number, verdict.wrong.empty() ? "fine" : "not fine");
        for (const std::string& sentence : verdict.wrong) {
            printf("    wrong: %s\n", sentence.c_str());
        }
        for (const std::string& sentence : verdict.notes) {
            printf("    note: %s\n", sentence.c_str());
        }
        printf("    %s\n", DescribeFax(fax).c_str());
    }
    for (const std::string& sentence : file.wrong) {
        printf("  wrong: %s\n", sentence.c_str());
    }
}

void WriteSentences(Json& json, const char* name, const std::vector<std::string>& sentences)
{
    json.Key(name).Open('[');
    for (const std::string& sentence : sentences) {
        json.Text(sentence);
    }
    json.Close(']');
}

void WriteVerdict(Json& json, const FileVerdict& file)
{
    json.Open('{').Key("file").Text(file.name).Key("bytes").Number(static_cast<int64_t>(file.size));
    json.Key("fine").Truth(IsFine(file));
    WriteSentences(json, "wrong", file.wrong);
    json.Key("pages").Open('[');
    for (const auto& [number, verdict, fax] : file.pages) {
        json.Open('{').Key("page").Number(number).Key("rows").Number(verdict.rows);
        WriteSentences(json, "wrong", verdict.wrong);
        WriteSentences(json, "notes", verdict.notes);
        json.Key("fax").Open('{').Key("possible").Truth(fax.reason.empty());
        json.Key("reason").Text(fax.reason).Key("boards").Open('[');
        for (const auto& [board, reason] : fax.boards) {
            json.Open('{').Key("board").Text(board).Key("ready").Truth(reason.empty());
            json.Key("reason").Text(reason).Close('}');
        }
        json.Close(']').Close('}').Close('}');
    }
    json.Close(']').Close('}');
}

int CheckFile(const Input& input, Json* json)
{
    FileVerdict file = {ShownName(input.path)};
    if (!IsFolder(input.path)) {
        RawFile raw(input.path);
        file.size = SizeOf(raw);
    }
    if (const std::string reason = WhyNotTiff(input.path); !reason.empty()) {
        file.wrong.push_back(reason);
    } else if (const int result = CheckPages(input, file); result != ALL_FINE) {
        return result;
    }
    if (json) {
        WriteVerdict(*json, file);
    } else {
        PrintVerdict(file);
    }
    return IsFine(file) ? ALL_FINE : FAILED;
}

int RunCheck(Arguments arguments)
{
    const Options options = ParseOptions(arguments, {"--pages", "--page"}, {"--json"});
    std::vector<Input> inputs;
    if (!CheckOptions(checkCommand, options, 1, SIZE_MAX) ||
        !ReadInputs(checkCommand, options, options.others, inputs)) {
        return WRONG_USAGE;
    }
    Json json;
    json.Open('[');
    int result = ALL_FINE;
    for (const Input& input : inputs) {
        result = std::max(result, CheckFile(input, options.Has("--json") ? &json : nullptr));
    }
    if (options.Has("--json")) {
        Print(json.Close(']'));
    }
    return result;
}

} // namespace

const Command checkCommand = {
    .name = "check",
    .arguments = "FILE.tif... [--pages LIST] [--json]",
    .summary = "Says everything that is wrong with files, and which pages can be faxed.",
    .details =
        "  --pages LIST  such as 1,3-5,last; without it all pages\n"
        "  --json        writes the verdict for programs\n"
        "\n"
        "Looks at the chain of pages, the tags, the strips and every row. The exit code is 1 when\n"
        "something is wrong. What is unusual but allowed is a note. A page can go through a board as it\n"
        "is when it lies in the file in the board's form; tifftool fax gives other pages that form.\n",
    .example = "tifftool check inbox\\*.tif",
    .run = RunCheck,
};

} // namespace tifftool
