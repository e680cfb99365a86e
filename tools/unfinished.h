/* Files that are not finished yet. None is left behind, also when the user presses Ctrl-C. */
#ifndef TOOLS_UNFINISHED_H
#define TOOLS_UNFINISHED_H

#include "tiff/base.h"

#include <string>

namespace tifftool {

// Ends the program on Ctrl-C, and deletes its unfinished files.
void WatchForInterruption();

// The user wants to stop. Long loops ask, the library's through their callback.
bool IsInterrupted();

// Makes an empty file, or a copy of another one, under a free name in a folder, which ends with a separator
// or is empty. Empty, with the system's last error, when that fails. Only files made here are ever removed.
std::string MakeUnfinishedFile(const std::string& folder, const char* copyOf = nullptr);

// The file is finished, or was moved: it stays.
void KeepFile(const std::string& path);

// Deletes one unless it is to stay, or at the end of the program all that are left.
void DeleteUnfinished(const std::string& path);
void DeleteUnfinished();

std::string TemporaryFolder();

// While one exists, Ctrl-C waits: the library is rewriting a file, and leaves it whole when it is done.
struct Uninterrupted {
    Uninterrupted();
    ~Uninterrupted();
    Uninterrupted(const Uninterrupted&) = delete;
    Uninterrupted& operator=(const Uninterrupted&) = delete;
};

} // namespace tifftool

#endif
