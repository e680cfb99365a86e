// Where the parts of a directory go. Nothing is read or written here.
#pragma once

#include "core/tag_block.h"

#include <optional>
#include <span>

namespace tiff {

struct DirectoryTag {
    TagView view;         // with the type that the file is told
    uint32_t valueBytes;  // of all values
    uint32_t valueOffset; // in the file; 0 for values that lie in the entry
};

// From start on: values, a byte of padding if need be, directory.
struct DirectoryLayout {
    uint32_t start;
    uint32_t valueBytes; // of the values that do not lie in their entries
    uint32_t directoryOffset;
    uint32_t entryBytes;
    uint32_t linkPosition; // of the link behind the entries
    uint32_t end;
};

inline bool LiesInEntry(const DirectoryTag& tag)
{
    return tag.valueBytes <= 4;
}

// Puts the tags in order, and their values, in the same order and without gaps, where the file
// ends now. Nothing when the directory would reach beyond 4 GiB.
std::optional<DirectoryLayout> LayOutDirectory(std::span<DirectoryTag> tags, uint32_t start);

} // namespace tiff
