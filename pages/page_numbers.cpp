// Sets the page total in every PageNumber tag of a file, in place.
#include "core/byte_order.h"
#include "core/directory_window.h"
#include "core/errors.h"
#include "core/open_file.h"
#include "pages/page_edit.h"
#include "tiff/files.h"

#include <algorithm>
#include <array>

namespace tiff {

namespace {

constexpr uint32_t BATCH_ENTRIES = 16;

// Deliberate: values are little-endian, whatever the file says. Fax boards, which need the page totals, know
// no other order.
constexpr uint32_t ORDER = TIFF_INTEL;

bool ReadWhole(TiffStream stream, std::span<uint8_t> bytes)
{
    return ReadStream(stream, bytes.data(), static_cast<uint32_t>(bytes.size())) == bytes.size();
}

// Patches a batch of entries; true when one changed.
bool SetTotal(std::span<uint8_t> entries, uint16_t total)
{
    bool changed = false;
    for (size_t at = 0; at < entries.size(); at += ENTRY_BYTES)
        if (Load16(&entries[at], ORDER) == tag::PageNumber) {
            Store16(&entries[at + 10], total, ORDER);
            changed = true;
        }
    return changed;
}

bool UpdateBatch(TiffStream stream, uint32_t position, std::span<uint8_t> entries, uint16_t total)
{
    if (!ReadWhole(stream, entries))
        return false;
    if (!SetTotal(entries, total))
        return true;
    const auto bytes = static_cast<uint32_t>(entries.size());
    return mSeek(stream, position, 0) != STREAM_FAILED && WriteStream(stream, entries.data(), bytes) == bytes;
}

// Patches the entries from the stream's position on, and leaves the stream at the link.
bool UpdateDirectory(TiffStream stream, uint32_t position, uint32_t entryCount, uint16_t total)
{
    std::array<uint8_t, BATCH_ENTRIES * ENTRY_BYTES> batch;
    while (entryCount > 0) {
        const uint32_t count = std::min(entryCount, BATCH_ENTRIES);
        if (!UpdateBatch(stream, position, std::span(batch).first(count * ENTRY_BYTES), total))
            return false;
        position += count * ENTRY_BYTES;
        entryCount -= count;
    }
    return true;
}

// Directories that do not overlap are together no longer than the file: a longer chain has a loop.
Status UpdateChain(TiffStream stream, uint16_t total)
{
    const uint32_t size = mSize(stream);
    uint64_t walked = 0;
    std::array<uint8_t, 4> link;
    if (size == STREAM_FAILED || mSeek(stream, FIRST_LINK, 0) == STREAM_FAILED)
        return error::InputOutput;
    for (;;) {
        if (!ReadWhole(stream, link))
            return error::InputOutput;
        const uint32_t directory = Load32(link.data(), ORDER);
        if (directory == 0)
            return error::None;
        std::array<uint8_t, 2> counted;
        if (mSeek(stream, directory, 0) == STREAM_FAILED || !ReadWhole(stream, counted))
            return error::InputOutput;
        const uint32_t entryCount = Load16(counted.data(), ORDER);
        walked += 2 + uint64_t{entryCount} * ENTRY_BYTES + 4;
        if (walked > size || !UpdateDirectory(stream, directory + 2, entryCount, total))
            return error::InputOutput;
    }
}

Status UpdateFile(const char* path, uint16_t total)
{
    const Stream stream(OpenDiskStream(path, GENERIC_READ | GENERIC_WRITE, OPEN_EXISTING));
    return stream ? UpdateChain(stream.Get(), total) : error::InputOutput;
}

Status UpdateMemory(HGLOBAL file, uint16_t total)
{
    const Locked<TiffFileRecord> record(file);
    if (!record || !record->memoryBlock)
        return error::InvalidHandle;
    const Stream stream(OpenRecord(*record));
    return stream ? UpdateChain(stream.Get(), total) : error::InputOutput;
}

} // namespace

} // namespace tiff

using namespace tiff;

extern "C" int32_t UpdatePageNumbers(const char* path, uint32_t total) noexcept
{
    return FinishEdit(path ? UpdateFile(path, static_cast<uint16_t>(total)) : error::InvalidParameters);
}

extern "C" int32_t UpdatePageNumbersInMemory(HGLOBAL file, uint32_t total) noexcept
{
    return FinishEdit(UpdateMemory(file, static_cast<uint16_t>(total)));
}
