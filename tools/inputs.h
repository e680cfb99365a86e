/* The files that a command reads: names, wildcards, "-" for the standard input, and the pages selected. */
#ifndef TOOLS_INPUTS_H
#define TOOLS_INPUTS_H

#include "options.h"
#include "page_selection.h"

namespace tifftool {

struct Input {
    std::string path;
    PageSelection pages; // empty for all
};

// Reads arguments such as "IN.tif", "IN.tif:1,3-5", "*.tif" and "-". Options "--pages" and "--page" select
// pages of all files. False with a message.
bool ReadInputs(const Command& command, const Options& options, std::span<const char* const> arguments,
                std::vector<Input>& inputs);

// The same for a command that reads one file.
bool ReadInput(const Command& command, const Options& options, const char* argument, Input& input);

// The same for a command that reads one page; without a selection the first.
bool ReadOnePage(const Command& command, const Options& options, const char* argument, Input& input);

// The same for "IN... OUT": the last argument is the output. Several files replace an old output only with
// "--force", because a wildcard may have put an input in its place.
bool ReadInputsBefore(const Command& command, const Options& options, const char* output,
                      std::vector<Input>& inputs);

// The same for files that have no pages to select.
bool ReadWholeInputs(const Command& command, const Options& options, std::span<const char* const> arguments,
                     std::vector<Input>& inputs);

// False, with a message, when the output is one of the inputs, or is replaced by several without "--force".
bool MayReplace(const Options& options, const char* output, std::span<const Input> inputs);

} // namespace tifftool

#endif
