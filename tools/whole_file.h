/* Files that are written whole or not at all. */
#ifndef TOOLS_WHOLE_FILE_H
#define TOOLS_WHOLE_FILE_H

#include <functional>
#include <string>

namespace tifftool {

// Lets a file be written under a new name beside its place and moves it there when the writer
// returns ALL_FINE. With append the writer finds a copy of what there was. Nothing that was there
// is touched before, and a failure leaves only what was there.
int WriteWhole(const std::string& path, bool append, const std::function<int(const char* unfinished)>& write);

// False, with a line that says why, when no file can be written at this path.
bool CheckOutput(const std::string& path);

// The two paths lead to one file that is there.
bool IsSameFile(const std::string& left, const std::string& right);

bool Exists(const std::string& path);
bool IsFolder(const std::string& path);

// The part of a path up to and with its last separator; empty for a bare name.
std::string FolderOf(const std::string& path);

} // namespace tifftool

#endif
