/* A command line taken apart: options with a value, options without, and everything else. */
#ifndef TOOLS_OPTIONS_H
#define TOOLS_OPTIONS_H

#include "commands.h"

#include <map>
#include <vector>

namespace tifftool {

struct Options {
    std::vector<const char*> others; // what is no option; all that stands behind "--"
    std::map<std::string, const char*> values;
    std::string wrong; // the first argument that cannot be used

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
// with a minus sign, so that numbers below zero can be given.
Options ParseOptions(Arguments arguments, std::initializer_list<const char*> withValue,
                     std::initializer_list<const char*> alone);

// False, with a line that says so, unless all arguments can be used and there are as many others
// as wanted.
bool CheckOptions(const Command& command, const Options& options, size_t least, size_t most);

// A page given from 1 on; 0, with a line that says so, when it is none.
uint32_t PageOption(const Command& command, const Options& options, const char* name);

} // namespace tifftool

#endif
