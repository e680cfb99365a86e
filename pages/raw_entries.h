// Directory entries as they stand in the file, with all types that a TIFF file may have. Pages in
// memory know five of them.
#pragma once

#include "core/directory_layout.h"
#include "core/directory_window.h"
#include "pages/copy_source.h"

namespace tiff {

struct RawEntry {
    uint16_t tag, type;
    uint32_t count;
    uint64_t valueBytes;
    uint32_t valuePosition;       // in the file, of the entry's own field for values that lie in it
    std::array<uint8_t, 4> field; // as it stands
};

// Bytes of an element; those of unknown types count as bytes.
uint32_t TrueElementBytes(uint32_t type);

// Whether a type says what its values are.
inline bool IsKnownType(uint32_t type)
{
    return type >= fieldtype::Byte && type <= fieldtype::Ifd8 && type != 14 && type != 15;
}

// The tag in tags that are in order; null without one.
DirectoryTag* FindTag(std::span<DirectoryTag> tags, uint32_t number);

// Entries of the directory; nothing when it lies beyond the end of the file.
std::optional<uint32_t> FetchEntryCount(CopySource& source, uint32_t directory);

// False when the entry lies beyond the end of the file.
[[nodiscard]] bool FetchRawEntry(CopySource& source, uint32_t directory, uint32_t index, RawEntry& entry);

// Whether all of the values lie in the file.
bool HasValues(const CopySource& source, const RawEntry& entry);

// Reads from a place; the window tells of bytes that the file has and that could not be read.
[[nodiscard]] bool ReadAt(CopySource& source, uint32_t position, std::span<uint8_t> bytes);

// Reads all values, in the file's order.
[[nodiscard]] bool ReadValues(CopySource& source, const RawEntry& entry, std::span<uint8_t> values);

// A value that is an offset or a count, of any integer type; nothing for other types, for values
// beyond 32 bits and for those that are not there.
std::optional<uint32_t> WholeNumber(const TagView& view, uint32_t index, uint32_t byteOrder);

// Puts an offset where the values of a LONG or IFD tag lie.
void StoreOffset(uint8_t* value, uint16_t type, uint32_t offset, uint32_t byteOrder);

} // namespace tiff
