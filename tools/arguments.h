/* The command line in the characters that the library's paths are made of. */
#ifndef TOOLS_ARGUMENTS_H
#define TOOLS_ARGUMENTS_H

#include <span>
#include <string>
#include <vector>

namespace tifftool {

// Arguments outside the system's code page become the short names of the files that they name. False,
// with a line that says so, when one has none.
bool ReadArguments(std::span<wchar_t* const> wide, std::vector<std::string>& arguments);

// Gives files that were written anew under a short name their own names back.
void RestoreNames();

} // namespace tifftool

#endif
