/* A command line taken apart: options with a value, options without, and everything else. */
#ifndef TOOLS_OPTIONS_H
#define TOOLS_OPTIONS_H

#include "commands.h"

#include <initializer_list>
#include <map>
#include <vector>

namespace tifftool {

struct Options {
    std::vector<const char*> others; // what is no option; all that stands behind "--"
    std::map<std::string, const char*> values;
    std::string wrong; // what is wrong with the first argument that cannot be used

    bool Has(const char* name) const
    {
        return values.contains(name);
    }
    // The value of an option, or what stands for a missing one.
    const char* Value(const char* name, const char* missing) const
    {
        return Has(name) ? values.at(name) : missing;
    }
};

// "--page" in withValue takes the argument behind it; those in alone take none. A value may begin
// with a minus sign, and numbers below zero are no options.
Options ParseOptions(Arguments arguments, std::initializer_list<const char*> withValue,
                     std::initializer_list<const char*> alone);

// False, with a line that says so, unless all arguments can be used and there are as many others
// as wanted.
bool CheckOptions(const Command& command, const Options& options, size_t least, size_t most);

// A decimal number from least to most, leading zeros or not; false for anything else.
bool ParseNumber(const char* text, int64_t least, int64_t most, int64_t& number);

// The following return 0, with a line that lists what can be given, when the value is none of it.
// Without a value for a missing option, the option must be there.
uint32_t PageOption(const Command& command, const Options& options, const char* name,
                    const char* missing = "");
uint32_t NumberOption(const Command& command, const Options& options, const char* name, uint32_t most,
                      const char* missing = "");
uint32_t CompressionOption(const Command& command, const Options& options, const char* missing = "");
uint32_t FillOrderOption(const Command& command, const Options& options);

} // namespace tifftool

#endif
