// Directories are parsed out of a window of the file that one read fills. Most directories lie
// in one window whole, so a page costs one read however many fields it has; a window that is
// carried on is a large one, so that directories close together cost one read for many.
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
    bool failed = false;              // bytes that the file has could not be read
    std::array<uint8_t, 32768> bytes; // left as they are until they are read
};

inline constexpr uint32_t WINDOW_BYTES = 2048;

inline constexpr uint32_t ENTRY_BYTES = 12;

// True when the range lies inside the file, so a short read was a read error, not the end. Also true
// when the size is unknown.
bool IsInFile(TiffStream stream, uint64_t position, uint64_t count);

// The bytes at a file position, or null when the file ends before. They stand until the next
// call. The count is at most WINDOW_BYTES.
const uint8_t* Fetch(DirectoryWindow& window, uint64_t position, uint32_t count);

// An entry as the library keeps it: unknown types are bytes and there is at least one value.
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

inline constexpr uint8_t keptTypeBytes[] = {1, 1, 1, 2, 4, 8}; // of the types that are kept

// Takes an entry as it lies in the file.
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

// Value bytes that an entry takes in a TagRecord; short values fill the field.
constexpr uint64_t KeptBytes(const DirectoryEntry& entry)
{
    return entry.elsewhere ? entry.valueBytes : 4;
}

} // namespace tiff
