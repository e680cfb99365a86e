#include "options.h"

#include "choices.h"

#include <algorithm>
#include <string_view>

namespace tifftool {

namespace {

bool IsAmong(std::string_view name, std::initializer_list<const char*> names)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

} // namespace

Options ParseOptions(Arguments arguments, std::initializer_list<const char*> withValue,
                     std::initializer_list<const char*> alone)
{
    Options options;
    bool onlyOthers = false;
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::string_view argument = arguments[i];
        if (!onlyOthers && argument == "--") {
            onlyOthers = true;
        } else if (onlyOthers || argument.empty() || argument[0] != '-') {
            options.others.push_back(arguments[i]);
        } else if (IsAmong(argument, withValue) && i + 1 < arguments.size()) {
            options.values[arguments[i]] = arguments[i + 1];
            ++i;
        } else if (IsAmong(argument, alone)) {
            options.values[arguments[i]] = "";
        } else if (options.wrong.empty()) {
            options.wrong = arguments[i];
        }
    }
    return options;
}

bool CheckOptions(const Command& command, const Options& options, size_t least, size_t most)
{
    if (!options.wrong.empty()) {
        UsageError(command, "cannot use " + options.wrong);
    } else if (options.others.size() < least) {
        UsageError(command, "not enough arguments");
    } else if (options.others.size() > most) {
        UsageError(command, std::string("cannot use ") + options.others[most]);
    } else {
        return true;
    }
    return false;
}

uint32_t PageOption(const Command& command, const Options& options, const char* name)
{
    const uint32_t page = ParsePage(options.Value(name, ""));
    if (page == 0) {
        UsageError(command, std::string("needs ") + name + " and a number from 1 on");
    }
    return page;
}

} // namespace tifftool
