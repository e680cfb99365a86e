// The directories that tags of a page lead to: Exif, GPS, Interoperability, and further pictures in
// SubIFDs. They are copied behind the page, each with its data behind it, and lead to others in turn.
#pragma once

#include "pages/page_content.h"

namespace tiff {

struct SubDirectory {
    PageContent content;
    uint32_t offset;        // in the source
    bool open;              // what it leads to is being looked at
    SubDirectory* follower; // the next of its chain; null for the last
    SubDirectory* next;     // in the order in which they are written
};

// A value in a tag that is the offset of a sub-directory.
struct DirectoryPointer {
    uint8_t* value;
    uint16_t type;
    const SubDirectory* target;
    DirectoryPointer* next;
};

// A page and all that it leads to.
struct PagePlan {
    PageContent page;
    uint32_t offset; // of the page's directory in the source
    SubDirectory* first;
    SubDirectory* last;
    DirectoryPointer* pointers;
    uint32_t visits;         // of sub-directories
    uint64_t directoryBytes; // of sub-directories and their values
    uint64_t dataBytes;      // of what they lead to
    bool whole;              // all of it could be seen
};

// Finds the sub-directories of a page whose own content is found. A branch that goes too deep, comes
// back to itself or cannot be read ends there, and its tag no longer leads anywhere; whole tells.
// Returns 1, or 6 when the file has what could not be read.
[[nodiscard]] Status FindSubDirectories(CopySource& source, PagePlan& plan);

// Lays out the page and its sub-directories from a file position on. Returns 6 beyond 4 GiB.
[[nodiscard]] Status PlacePlan(PagePlan& plan, uint32_t start, uint32_t byteOrder);

} // namespace tiff
