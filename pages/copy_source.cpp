#include "pages/copy_source.h"

#include "core/records.h"

#include <algorithm>

namespace tiff {

namespace {

GlobalBlock CopyOf(HGLOBAL block)
{
    const Locked<uint8_t> from(block);
    if (!from)
        return {};
    GlobalBlock copy(GlobalSize(block));
    if (const Locked<uint8_t> to(copy.Get()); to)
        std::memcpy(to.Get(), from.Get(), GlobalSize(block));
    return copy;
}

// A TIFF in memory that is copied into itself is read from a copy: growing may move it.
GlobalBlock SnapshotOf(HGLOBAL file, HGLOBAL destination)
{
    const Locked<TiffFileRecord> record(file);
    HGLOBAL block = record ? record->memoryBlock : nullptr;
    const Locked<TiffFileRecord> other(destination);
    return block && other && other->memoryBlock == block ? CopyOf(block) : GlobalBlock();
}

TiffStream OpenSource(HGLOBAL file, HGLOBAL destination, const GlobalBlock& snapshot)
{
    const Locked<TiffFileRecord> record(file);
    if (!record)
        return NO_STREAM;
    if (snapshot)
        return OpenMemoryStream(snapshot.Get(), record->memoryBytes);
    const Locked<TiffFileRecord> other(destination);
    const bool shared = other && record->memoryBlock && other->memoryBlock == record->memoryBlock;
    return shared ? NO_STREAM : OpenRecord(*record); // no memory for the copy
}

// Of a file beyond 4 GiB, the part that offsets can reach.
uint32_t BytesOf(TiffStream stream)
{
    uint32_t bytes;
    return SizeToRead(stream, bytes) ? std::min(bytes, STREAM_FAILED - 1) : STREAM_FAILED;
}

uint32_t ByteOrderOf(HGLOBAL file)
{
    const Locked<TiffFileRecord> record(file);
    return record ? record->byteOrder : uint32_t{TIFF_INTEL};
}

} // namespace

CopySource::CopySource(HGLOBAL file, BrokenBranch brokenBranch, HGLOBAL destination)
    : file(file), brokenBranch(brokenBranch), snapshot(SnapshotOf(file, destination)),
      stream(OpenSource(file, destination, snapshot)),
      bytes(BytesOf(stream.Get())), window{.stream = stream.Get(), .byteOrder = ByteOrderOf(file), .bytes{}}
{
}

} // namespace tiff
