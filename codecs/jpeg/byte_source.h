// Bytes of a part of a stream through a buffer. What the buffer holds serves the next part too.
#pragma once

#include "core/vocabulary.h"
#include "tiff/streams.h"

#include <span>

namespace tiff::jpeg {

inline constexpr uint32_t SOURCE_BYTES = 32 * 1024;

struct ByteSource {
    TiffStream stream;
    uint32_t fileEnd;  // bytes of the stream
    uint32_t partEnd;  // where the part ends
    uint32_t position; // of the first byte in the buffer
    uint32_t held;
    const uint8_t *next, *end; // bytes of the part in the buffer
    uint8_t bytes[SOURCE_BYTES];
};

void OpenSource(ByteSource& source, TiffStream stream, uint32_t fileEnd);

// Bytes in memory instead of a stream.
void OpenMemory(ByteSource& source, std::span<const uint8_t> bytes);

// Goes to the part that begins here and ends there, or with the file.
void MoveTo(ByteSource& source, uint32_t position, uint64_t partEnd);

// The position of the next byte.
uint32_t PositionOf(const ByteSource& source);

// Reads on when all bytes of the buffer are used. Fails with 5 at the end of the part, and with 6.
[[nodiscard]] Status Refill(ByteSource& source);

[[nodiscard]] inline Status NextByte(ByteSource& source, uint8_t& byte)
{
    if (source.next == source.end)
        if (const Status status = Refill(source); status != error::None)
            return status;
    byte = *source.next++;
    return error::None;
}

} // namespace tiff::jpeg
