// Directories are parsed out of a window of the file that one read fills. Most directories lie whole in one
// window, so a page costs one read, however many fields it has. A window that is kept for the next page is
// large, so that one read covers many directories that lie close together.
#pragma once

#include "core/byte_order.h"
#include "tiff/streams.h"

#include <array>

namespace tiff {

struct DirectoryWindow {
    TiffStream stream;
    uint32_t byteOrder = TIFF_INTEL;
    uint32_t start = 0;
    uint32_t length = 0;
    bool failed = false;              // bytes inside the file could not be read
    std::array<uint8_t, 32768> bytes; // not cleared; only bytes that were read are used
};

inline constexpr uint32_t WINDOW_BYTES = 2048;

inline constexpr uint32_t ENTRY_BYTES = 12;

// True when the range lies inside the file, so a short read was a read error, not the end. Also true
// when the size is unknown.
bool IsInFile(TiffStream stream, uint64_t position, uint64_t count);

// The bytes at a file position, or null when the file ends before. They are valid until the next call. The
// count is at most WINDOW_BYTES.
const uint8_t* Fetch(DirectoryWindow& window, uint64_t position, uint32_t count);

// An entry as the library keeps it: unknown types become bytes, and the count is at least one.
struct DirectoryEntry {
    uint16_t tag;
    uint16_t type;
    uint32_t count;
    uint64_t valueBytes;          // of all values
    std::array<uint8_t, 4> field; // in the processor's order: the values, or their offset
    bool elsewhere;               // field is an offset

    uint32_t Field() const
    {
        return Load32(field.data(), TIFF_INTEL);
    }
};

inline constexpr uint8_t keptTypeBytes[] = {1, 1, 1, 2, 4, 8}; // of the types up to RATIONAL

// Parses the bytes of an entry.
inline void ParseEntry(const uint8_t* raw, uint32_t byteOrder, DirectoryEntry& entry)
{
    entry.tag = Load16(raw, byteOrder);
    entry.type = Load16(raw + 2, byteOrder);
    entry.count = Load32(raw + 4, byteOrder);
    if (entry.type == 0 || entry.type > fieldtype::Rational)
        entry.type = fieldtype::Byte;
    if (entry.count == 0)
        entry.count = 1;
    entry.valueBytes = uint64_t{entry.count} * keptTypeBytes[entry.type];
    entry.elsewhere = entry.valueBytes > 4;
    std::memcpy(entry.field.data(), raw + 8, 4);
    if (byteOrder == TIFF_MOTOROLA)
        SwapElements(entry.field, entry.elsewhere ? fieldtype::Long : entry.type);
}

// Nothing when the entry lies beyond the end of the file.
bool FetchEntry(DirectoryWindow& window, uint64_t directory, uint32_t index, DirectoryEntry& entry);

// Value bytes of an entry in a TagRecord; short values fill the field.
constexpr uint64_t KeptBytes(const DirectoryEntry& entry)
{
    return entry.elsewhere ? entry.valueBytes : 4;
}

} // namespace tiff
