#include "pages/copy_source.h"

#include "core/records.h"

#include <algorithm>
#include <optional>

namespace tiff {

namespace {

GlobalBlock CopyOf(HGLOBAL block)
{
    const Locked<uint8_t> from(block);
    if (!from)
        return {};
    GlobalBlock copy(GlobalSize(block));
    const Locked<uint8_t> to(copy.Get());
    if (!to)
        return {};
    std::memcpy(to.Get(), from.Get(), GlobalSize(block));
    return copy;
}

// A TIFF in memory that is copied into itself is read from a copy: growing may move it. Without the records,
// or memory for the copy, there is no stream.
TiffStream OpenSource(HGLOBAL file, HGLOBAL destination, GlobalBlock& snapshot)
{
    const Locked<TiffFileRecord> record(file), other(destination);
    if (!record || (destination && !other))
        return NO_STREAM;
    if (!other || !record->memoryBlock || other->memoryBlock != record->memoryBlock)
        return OpenRecord(*record);
    snapshot = CopyOf(record->memoryBlock);
    return snapshot ? OpenMemoryStream(snapshot.Get(), record->memoryBytes) : NO_STREAM;
}

// Of a file beyond 4 GiB, the part that offsets can reach.
uint32_t BytesOf(TiffStream stream)
{
    uint32_t bytes;
    return SizeToRead(stream, bytes) ? std::min(bytes, STREAM_FAILED - 1) : STREAM_FAILED;
}

std::optional<uint32_t> ByteOrderOf(HGLOBAL file)
{
    const Locked<TiffFileRecord> record(file);
    return record ? std::optional<uint32_t>(record->byteOrder) : std::nullopt;
}

} // namespace

CopySource::CopySource(HGLOBAL file, BrokenBranch brokenBranch, HGLOBAL destination)
    : file(file), brokenBranch(brokenBranch), stream(OpenSource(file, destination, snapshot)),
      bytes(BytesOf(stream.Get())), window{.stream = stream.Get(), .bytes{}}
{
    const auto byteOrder = ByteOrderOf(file);
    window.byteOrder = byteOrder.value_or(TIFF_INTEL);
    if (!byteOrder)
        bytes = STREAM_FAILED;
}

} // namespace tiff
