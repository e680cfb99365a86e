/* TIFF files that commands read, each opened and walked once. */
#ifndef TOOLS_SOURCE_H
#define TOOLS_SOURCE_H

#include "commands.h"

#include <vector>

namespace tifftool {

// An open file, and how far its chain of pages can be followed. Its pages are asked for through the
// handle: a path would have the chain walked anew each time.
struct Source {
    std::string path;
    OpenFile file;
    uint32_t openError;
    uint32_t pages;                    // none of them twice
    std::string chainFault;            // what is behind the last page; empty for a whole chain
    std::vector<uint32_t> directories; // filled by DirectoryOf

    explicit Source(const char* sourcePath);
};

// False, with a line that says why, when the file could not be opened or has no pages.
bool HasPages(const Source& source);

// The same when its chain cannot be followed to its end: what was not seen would be lost.
bool IsWhole(const Source& source);

// The same, and a page counted from 1 is among the pages.
bool IsWholeWith(const Source& source, uint32_t page);

// False, with a line that says how many there are, for a page beyond the last.
bool HasPage(const Source& source, uint32_t page);

// Says what is wrong with the chain behind the pages that were dealt with; an exit code.
int ReportChain(const Source& source);

// False, with a line that says why, for a file that is there and cannot be added to.
bool CanBeAddedTo(const std::string& path);

bool IsMotorola(const Source& source);

// Where the directory of a page, counted from 0, lies in the file; 0 when it is not available.
uint32_t DirectoryOf(Source& source, uint32_t page);

// "path, page N", for a page counted from 1.
std::string PageName(const std::string& path, uint32_t page);

// "1 page", "3 pages".
std::string Counted(uint64_t count, const char* noun);

} // namespace tifftool

#endif
