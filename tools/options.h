/* The parts of a command line: options with a value, options without, and everything else. */
#ifndef TOOLS_OPTIONS_H
#define TOOLS_OPTIONS_H

#include "commands.h"

#include <initializer_list>
#include <map>
#include <vector>

namespace tifftool {

struct Options {
    std::vector<const char*> others; // arguments that are not options; all after "--"
    std::map<std::string, const char*> values;
    std::string wrong; // the fault of the first argument that cannot be used

    bool Has(const char* name) const
    {
        return values.contains(name);
    }
    // The value of an option, or `missing`.
    const char* Value(const char* name, const char* missing) const
    {
        return Has(name) ? values.at(name) : missing;
    }
};

// Options in withValue, such as "--page", take the next argument or, as "--page=2", their own rest; those in
// alone take none, or with a name such as "--dither=" their own rest if there is one. A value may begin with
// a minus sign, and negative numbers are not options.
Options ParseOptions(Arguments arguments, std::initializer_list<const char*> withValue,
                     std::initializer_list<const char*> alone);

// False, with a message, unless all arguments can be used and the number of other arguments is in range.
bool CheckOptions(const Command& command, const Options& options, size_t least, size_t most);

// Parses a decimal number from least to most; leading zeros are allowed. False for anything else.
bool ParseNumber(const char* text, int64_t least, int64_t most, int64_t& number);

// These return 0, after listing the valid values, when the value is not one of them. Without a default the
// option is required.
uint32_t PageOption(const Command& command, const Options& options, const char* name,
                    const char* missing = "");
uint32_t NumberOption(const Command& command, const Options& options, const char* name, uint32_t most,
                      const char* missing = "");
uint32_t CompressionOption(const Command& command, const Options& options, const char* missing = "");
uint32_t FillOrderOption(const Command& command, const Options& options);

} // namespace tifftool

#endif
