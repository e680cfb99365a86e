// Directory entries as they are in the file, with all types that a TIFF file may have. Pages in memory can
// hold only five of them.
#pragma once

#include "core/directory_layout.h"
#include "core/directory_window.h"
#include "pages/copy_source.h"

namespace tiff {

struct RawEntry {
    uint16_t tag, type;
    uint32_t count;
    uint64_t valueBytes;
    uint32_t valuePosition;       // in the file; for values inside the entry, that of its field
    std::array<uint8_t, 4> field; // as in the file
};

// Bytes of an element; unknown types count as bytes.
uint32_t TrueElementBytes(uint32_t type);

// Whether a type is known.
inline bool IsKnownType(uint32_t type)
{
    return type >= fieldtype::Byte && type <= fieldtype::Ifd8 && type != 14 && type != 15;
}

// Finds a tag in tags that are in order; null without one.
DirectoryTag* FindTag(std::span<DirectoryTag> tags, uint32_t number);

// The number of entries of the directory; nothing when it lies beyond the end of the file.
std::optional<uint32_t> FetchEntryCount(CopySource& source, uint32_t directory);

// False when the entry lies beyond the end of the file.
[[nodiscard]] bool FetchRawEntry(CopySource& source, uint32_t directory, uint32_t index, RawEntry& entry);

// Whether all of the values lie in the file.
bool HasValues(const CopySource& source, const RawEntry& entry);

// Reads from a position. The window's `failed` says whether bytes inside the file could not be read.
[[nodiscard]] bool ReadAt(CopySource& source, uint32_t position, std::span<uint8_t> bytes);

// Reads all values, in the file's order.
[[nodiscard]] bool ReadValues(CopySource& source, const RawEntry& entry, std::span<uint8_t> values);

// An offset or a count of any integer type as a number. Nothing for other types, for values beyond 32 bits
// and for an index beyond the values.
std::optional<uint32_t> WholeNumber(const TagView& view, uint32_t index, uint32_t byteOrder);

// Stores an offset as a value of a LONG or IFD tag.
void StoreOffset(uint8_t* value, uint16_t type, uint32_t offset, uint32_t byteOrder);

} // namespace tiff
