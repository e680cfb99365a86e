/* TIFF files that commands read, each opened and walked once. */
#ifndef TOOLS_SOURCE_H
#define TOOLS_SOURCE_H

#include "inputs.h"

#include <vector>

namespace tifftool {

// An open file, and the part of its chain of pages that can be followed. Load pages through the handle: a
// path would have the chain walked again each time.
struct Source {
    std::string path;
    OpenFile file;
    uint32_t openError;
    uint32_t pages;                    // each counted once
    std::string chainFault;            // the fault behind the last page; empty for a whole chain
    std::vector<uint32_t> directories; // filled by DirectoryOf

    explicit Source(const char* sourcePath);
};

// Reports why a TIFF file could not be opened, the code in brackets; returns FAILED.
int ReportOpenFailure(const std::string& path, uint32_t code);

// False, with a message, when the file could not be opened or has no pages.
bool HasPages(const Source& source);

// The same when its chain cannot be followed to its end: the other pages would be lost.
bool IsWhole(const Source& source);

// The same when the page, counted from 1, does not exist.
bool IsWholeWith(const Source& source, uint32_t page);

// False, with a message that gives the number of pages, for a page beyond the last.
bool HasPage(const Source& source, uint32_t page);

// Lists the pages of a selection; false, with a message, when one does not exist.
bool SelectPages(const Source& source, const PageSelection& selection, std::vector<uint32_t>& pages);

// Reports the fault of the chain after the pages were handled; returns an exit code.
int ReportChain(const Source& source);

// False, with a message, for an existing file to which pages cannot be added.
bool CanBeAddedTo(const std::string& path);

bool IsMotorola(const Source& source);

// The offset of a page's directory, the page counted from 0; 0 when it is not available.
uint32_t DirectoryOf(Source& source, uint32_t page);

// "path, page N", for a page counted from 1.
std::string PageName(const std::string& path, uint32_t page);

// "1 page", "3 pages".
std::string Counted(uint64_t count, const char* noun);

} // namespace tifftool

#endif
