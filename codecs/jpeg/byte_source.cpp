#include "codecs/jpeg/byte_source.h"

#include "core/stream.h"

#include <algorithm>

namespace tiff::jpeg {

void OpenSource(ByteSource& source, TiffStream stream, uint32_t fileEnd)
{
    source.stream = stream;
    source.fileEnd = fileEnd;
    source.position = source.held = 0;
    source.next = source.end = source.bytes;
}

void OpenMemory(ByteSource& source, std::span<const uint8_t> bytes)
{
    OpenSource(source, NO_STREAM, 0);
    source.next = bytes.data();
    source.end = bytes.data() + bytes.size();
}

void MoveTo(ByteSource& source, uint32_t position, uint64_t partEnd)
{
    source.partEnd = static_cast<uint32_t>(std::min<uint64_t>(partEnd, source.fileEnd));
    if (position < source.position || position - source.position > source.held) {
        source.position = position;
        source.held = 0;
    }
    const uint32_t at = position - source.position;
    const uint32_t left = source.partEnd > position ? source.partEnd - position : 0;
    source.next = source.bytes + at;
    source.end = source.next + std::min(source.held - at, left);
}

uint32_t PositionOf(const ByteSource& source)
{
    return source.position + static_cast<uint32_t>(source.next - source.bytes);
}

Status Refill(ByteSource& source)
{
    if (source.stream == NO_STREAM)
        return error::UnexpectedEndOfFile;
    const uint32_t position = PositionOf(source);
    if (position >= source.partEnd)
        return error::UnexpectedEndOfFile;
    source.position = position;
    source.held = 0;
    source.next = source.end = source.bytes;
    const uint32_t count = std::min(SOURCE_BYTES, source.fileEnd - position);
    if (mSeek(source.stream, position, 0) == STREAM_FAILED ||
        ReadStream(source.stream, source.bytes, count) != count)
        return error::InputOutput;
    source.held = count;
    source.end = source.bytes + std::min(count, source.partEnd - position);
    return error::None;
}

} // namespace tiff::jpeg
