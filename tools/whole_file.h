/* Files that are written completely or not at all. */
#ifndef TOOLS_WHOLE_FILE_H
#define TOOLS_WHOLE_FILE_H

#include "diagnosis.h"

#include <functional>
#include <string>

namespace tifftool {

// Lets `write` write a new file beside the path, and moves it there when it returns ALL_FINE. With append the
// new file begins as a copy of the old one. The old file is not touched before that, and a failure leaves no
// other file.
int WriteWhole(const std::string& path, bool append, const std::function<int(const char* unfinished)>& write);

// Reports that the C library could not write a file, and why; returns FAILED.
int ReportUnwritten(const std::string& path);

// False, with a message, when no file can be written at this path.
bool CheckOutput(const std::string& path);

bool Exists(const std::string& path);

// A path up to its last separator, including it; empty for a bare name.
std::string FolderOf(const std::string& path);

} // namespace tifftool

#endif
