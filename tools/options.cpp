#include "options.h"

#include "tiff/values.h"

#include "tiff/files.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <string_view>

namespace tifftool {

namespace {

constexpr struct {
    const char* name;
    uint32_t selector;
} compressions[] = {
    {"none", TIFF_SAVE_STORED},
    {"packbits", TIFF_SAVE_PACKBITS},
    {"lzw", TIFF_SAVE_LZW},
    {"lzw-pred", TIFF_SAVE_LZW_DIFFERENCES},
    {"mh", TIFF_SAVE_MODIFIED_HUFFMAN},
    {"g3", TIFF_SAVE_GROUP3},
    {"g3-2d", TIFF_SAVE_GROUP3_TWO_DIMENSIONAL},
    {"g4", TIFF_SAVE_GROUP4},
    {"jpeg", TIFF_SAVE_JPEG},
};

bool IsAmong(std::string_view name, std::initializer_list<const char*> names)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

bool IsOption(std::string_view argument)
{
    return argument.size() > 1 && argument[0] == '-' &&
           std::string_view("0123456789.:").find(argument[1]) == std::string_view::npos;
}

std::string Quoted(const char* text)
{
    return std::string("\"") + text + "\"";
}

} // namespace

Options ParseOptions(Arguments arguments, std::initializer_list<const char*> withValue,
                     std::initializer_list<const char*> alone)
{
    Options options;
    bool onlyOthers = false;
    for (size_t i = 0; i < arguments.size() && options.wrong.empty(); ++i) {
        const std::string_view argument = arguments[i];
        const std::string name(argument.substr(0, argument.find('=')));
        const bool hasValue = name.size() < argument.size();
        if (!onlyOthers && argument == "--") {
            onlyOthers = true;
        } else if (onlyOthers || !IsOption(argument)) {
            options.others.push_back(arguments[i]);
        } else if (options.Has(name.c_str())) {
            options.wrong = name + " is given twice";
        } else if (IsAmong(name + "=", alone) || (hasValue && IsAmong(name, withValue))) {
            options.values[name] = hasValue ? arguments[i] + name.size() + 1 : "";
        } else if (IsAmong(argument, alone)) {
            options.values[arguments[i]] = "";
        } else if (!IsAmong(argument, withValue)) {
            options.wrong = "unknown option " + std::string(argument);
        } else if (i + 1 == arguments.size()) {
            options.wrong = std::string(argument) + " needs a value";
        } else {
            options.values[arguments[i]] = arguments[i + 1];
            ++i;
        }
    }
    return options;
}

bool CheckOptions(const Command& command, const Options& options, size_t least, size_t most)
{
    if (!options.wrong.empty()) {
        UsageError(command, options.wrong);
    } else if (options.others.size() < least) {
        const std::string_view usage = command.arguments;
        UsageError(command, "too few arguments; it takes " + std::string(usage.substr(0, usage.find('\n'))));
    } else if (options.others.size() > most) {
        UsageError(command, "one argument too many: " + Quoted(options.others[most]));
    } else {
        return true;
    }
    return false;
}

bool ParseNumber(const char* text, int64_t least, int64_t most, int64_t& number)
{
    const char* const end = text + strlen(text);
    const auto [rest, error] = std::from_chars(text, end, number, 10);
    return error == std::errc() && rest == end && number >= least && number <= most;
}

uint32_t NumberOption(const Command& command, const Options& options, const char* name, uint32_t most,
                      const char* missing)
{
    const char* const text = options.Value(name, missing);
    int64_t number = 0;
    if (!ParseNumber(text, 1, most, number)) {
        UsageError(command, (options.Has(name) ? std::string(name) + " cannot be " + Quoted(text) + "; it"
                                               : "needs " + std::string(name) + ", which") +
                                " takes a number from 1 to " + std::to_string(most));
        return 0;
    }
    return static_cast<uint32_t>(number);
}

uint32_t PageOption(const Command& command, const Options& options, const char* name, const char* missing)
{
    return NumberOption(command, options, name, TIFF_MAX_PAGES, missing);
}

uint32_t CompressionOption(const Command& command, const Options& options, const char* missing)
{
    static constexpr char name[] = "--compression";
    const std::string_view wanted = options.Value(name, missing);
    std::string names;
    for (const auto& choice : compressions) {
        if (wanted == choice.name) {
            return choice.selector;
        }
        names += (names.empty() ? "" : ", ") + std::string(choice.name);
    }
    UsageError(command, (options.Has(name) ? "unknown compression " + Quoted(options.Value(name, ""))
                                           : std::string("needs --compression")) +
                            "; there are " + names);
    return 0;
}

uint32_t FillOrderOption(const Command& command, const Options& options)
{
    return NumberOption(command, options, "--fill-order", 2, "1");
}

} // namespace tifftool
