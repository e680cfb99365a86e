// Where the parts of a directory go, and its bytes. Nothing is read or written here.
#pragma once

#include "core/tag_block.h"

#include <optional>
#include <span>

namespace tiff {

struct DirectoryTag {
    TagView view;         // with the type that is written
    uint32_t valueBytes;  // of all values
    uint32_t valueOffset; // in the file; 0 for values inside the entry
};

// A new page has its values before its directory, a copied one behind it.
enum class LayoutOrder { ValuesFirst, DirectoryFirst };

// Values and directory from `start` on; a directory begins on an even offset.
struct DirectoryLayout {
    uint32_t start;
    uint32_t valueBytes; // of the values outside their entries
    uint32_t directoryOffset;
    uint32_t entryBytes;
    uint32_t linkPosition; // of the link behind the entries
    uint32_t end;
};

inline bool LiesInEntry(const DirectoryTag& tag)
{
    return tag.valueBytes <= 4;
}

// A record of a page as its directory will hold it.
DirectoryTag Described(TagView view);

// Puts the tags in order. Tags with equal numbers keep their order.
void SortTags(std::span<DirectoryTag> tags);

// Puts the tags in order, and their values in the same order without gaps, at the present end of the file.
// Returns nothing when the directory would reach beyond 4 GiB.
std::optional<DirectoryLayout> LayOutDirectory(std::span<DirectoryTag> tags, uint32_t start,
                                               LayoutOrder order);

// Fills in the file's bytes from the layout's start to its end, in the file's byte order. The link is 0: no
// page follows.
void AssembleDirectory(std::span<const DirectoryTag> tags, const DirectoryLayout& layout, uint32_t byteOrder,
                       uint8_t* bytes);

} // namespace tiff
