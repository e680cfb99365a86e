/* The command line in the code page of the library's paths. */
#ifndef TOOLS_ARGUMENTS_H
#define TOOLS_ARGUMENTS_H

#include <span>
#include <string>
#include <vector>

namespace tifftool {

// Replaces arguments outside the system's code page by the short names of their files. False, with a message,
// when a file has none.
bool ReadArguments(std::span<wchar_t* const> wide, std::vector<std::string>& arguments);

// Gives files that were rewritten under a short name their own names back.
void RestoreNames();

} // namespace tifftool

#endif
