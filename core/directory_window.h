// Directories are parsed out of a window of the file that one read fills. Most directories lie
// in one window whole, so a page costs one read however many fields it has.
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
    bool failed = false; // bytes that the file has could not be read
    std::array<uint8_t, 4096> bytes;
};

inline constexpr uint32_t ENTRY_BYTES = 12;

// Whether bytes that did not arrive exist: the file is not short then, reading it failed. So it
// is taken to be when there is no telling.
bool IsInFile(TiffStream stream, uint64_t position, uint64_t count);

// The bytes at a file position, or null when the file ends before. They stand until the next
// call. The count is at most the window's size.
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

// Nothing when the entry lies beyond the end of the file.
bool FetchEntry(DirectoryWindow& window, uint64_t directory, uint32_t index, DirectoryEntry& entry);

// Value bytes that an entry takes in a TagRecord; short values fill the field.
constexpr uint64_t KeptBytes(const DirectoryEntry& entry)
{
    return entry.elsewhere ? entry.valueBytes : 4;
}

} // namespace tiff
