#include "core/directory_window.h"

#include "core/stream.h"

namespace tiff {

bool IsInFile(TiffStream stream, uint64_t position, uint64_t count)
{
    uint32_t size;
    return !SizeToRead(stream, size) || position + count <= size;
}

const uint8_t* Fetch(DirectoryWindow& window, uint64_t position, uint32_t count)
{
    if (position >= window.start && position + count <= uint64_t{window.start} + window.length)
        return &window.bytes[position - window.start];
    if (position + count > UINT32_MAX)
        return nullptr;

    const uint64_t end = uint64_t{window.start} + window.length;
    const bool carriesOn = position >= window.start && position < end + WINDOW_BYTES && window.length > 0;
    window.length = 0;
    window.start = static_cast<uint32_t>(position);
    if (mSeek(window.stream, window.start, 0) == STREAM_FAILED) {
        window.failed |= IsInFile(window.stream, position, count);
        return nullptr;
    }
    const size_t wanted = carriesOn ? window.bytes.size() : WINDOW_BYTES;
    const uint32_t arrived = ReadStream(window.stream, window.bytes.data(), static_cast<uint32_t>(wanted));
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
    if (raw)
        ParseEntry(raw, window.byteOrder, entry);
    return raw != nullptr;
}

} // namespace tiff
