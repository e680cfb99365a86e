// The directories that tags of a page lead to: Exif, GPS, Interoperability, and further pictures in SubIFDs.
// They are copied after the page, each followed by its data, and may lead to more directories.
#pragma once

#include "pages/page_content.h"

namespace tiff {

struct SubDirectory {
    PageContent content;
    uint32_t offset;        // in the source
    bool open;              // the directories it leads to are being read
    bool followed;          // its link was looked at; where that was cut, it stays cut
    SubDirectory* follower; // the next of its chain; null for the last
    SubDirectory* next;     // in the order of writing
};

// A value in a tag that is the offset of a sub-directory.
struct DirectoryPointer {
    uint8_t* value;
    uint16_t type;
    const SubDirectory* target;
    DirectoryPointer* next;
};

// A page with all its sub-directories.
struct CopyPlan {
    PageContent page;
    uint32_t offset; // of the page's directory in the source
    SubDirectory* first;
    SubDirectory* last;
    DirectoryPointer* pointers;
    uint32_t visits;         // of sub-directories
    uint64_t directoryBytes; // of sub-directories and their values
    uint64_t dataBytes;      // of the data that they lead to
    bool whole;              // everything could be read
};

// Finds the sub-directories of a page whose own content is known. A branch that goes too deep, has a loop or
// cannot be read ends there: its value is removed from the tag, and `whole` becomes false. Returns 1, or 6
// when bytes inside the file could not be read.
[[nodiscard]] Status FindSubDirectories(CopySource& source, CopyPlan& plan);

// Lays out the page and its sub-directories from a file position on. Returns 6 beyond 4 GiB.
[[nodiscard]] Status PlacePlan(CopyPlan& plan, uint32_t start, uint32_t byteOrder);

} // namespace tiff
