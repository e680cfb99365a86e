#include "core/directory_window.h"

#include <span>

namespace tiff {

bool IsInFile(TiffStream stream, uint64_t position, uint64_t count)
{
    const uint32_t size = mSize(stream);
    return size == STREAM_FAILED || position + count <= size;
}

const uint8_t* Fetch(DirectoryWindow& window, uint64_t position, uint32_t count)
{
    if (position >= window.start && position + count <= uint64_t{window.start} + window.length)
        return &window.bytes[position - window.start];
    if (position + count > UINT32_MAX)
        return nullptr;

    window.length = 0;
    window.start = static_cast<uint32_t>(position);
    if (mSeek(window.stream, window.start, 0) == STREAM_FAILED) {
        window.failed |= IsInFile(window.stream, position, count);
        return nullptr;
    }
    const uint32_t arrived =
        mRead(window.stream, window.bytes.data(), static_cast<uint32_t>(window.bytes.size()));
    if (arrived != STREAM_FAILED)
        window.length = arrived;
    if (window.length >= count)
        return window.bytes.data();
    window.failed |= IsInFile(window.stream, position, count);
    return nullptr;
}

bool FetchEntry(DirectoryWindow& window, uint64_t directory, uint32_t index, DirectoryEntry& entry)
{
    const uint8_t* raw = Fetch(window, directory + 2 + uint64_t{index} * ENTRY_BYTES, ENTRY_BYTES);
    if (!raw)
        return false;
    entry.tag = Load16(raw, window.byteOrder);
    entry.type = Load16(raw + 2, window.byteOrder);
    entry.count = Load32(raw + 4, window.byteOrder);
    if (entry.type == 0 || entry.type > fieldtype::Rational)
        entry.type = fieldtype::Byte;
    if (entry.count == 0)
        entry.count = 1;
    entry.valueBytes = uint64_t{entry.count} * ElementBytes(entry.type);
    entry.elsewhere = entry.valueBytes > 4;
    std::memcpy(entry.field.data(), raw + 8, 4);
    if (window.byteOrder == TIFF_MOTOROLA)
        SwapElements(entry.field, entry.elsewhere ? fieldtype::Long : entry.type);
    return true;
}

} // namespace tiff
