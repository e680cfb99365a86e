// The bit reader's state in registers, for loops that stay inside the bytes held: the window is
// filled by one load of eight bytes.
#pragma once

#include "codecs/ccitt/bits.h"
#include "core/byte_order.h"

namespace tiff::ccitt {

struct Reservoir {
    uint64_t window;
    uint32_t held;
    const uint8_t* cursor;
    const uint8_t* end;
};

inline constexpr uint32_t FILL_BYTES = 8;
inline constexpr uint32_t LEAST_FILLED_BITS = 56;

inline Reservoir Borrow(const BitReader& bits)
{
    const CodecContext* context = bits.context;
    return {bits.window, bits.held, context->codeCursor, context->codeCursor + context->codeBytesLeft};
}

// More bits may be held than the careful reader takes ahead. That changes nothing for it: it refills
// when the bits held are less than eight and the buffer is empty, which is when window and buffer
// together have less than eight, however these are shared out. Aligning drops the same bits too,
// as whole bytes more do not change held % 8; and a new strip empties the window.
inline void GiveBack(const Reservoir& from, BitReader& bits)
{
    CodecContext* context = bits.context;
    context->codeCursor += from.cursor - context->codeCursor;
    context->codeBytesLeft = static_cast<uint32_t>(from.end - from.cursor);
    bits.window = from.window;
    bits.held = from.held;
}

inline bool CanFill(const Reservoir& bits)
{
    return bits.end - bits.cursor >= FILL_BYTES;
}

// Holds LEAST_FILLED_BITS or more. The part of the last byte that is not counted yet comes again with the
// next fill, at the same place of the window.
inline void Fill(Reservoir& bits)
{
    uint64_t bytes;
    std::memcpy(&bytes, bits.cursor, FILL_BYTES);
    bits.window |= Swap64(bytes) >> bits.held;
    bits.cursor += (63 - bits.held) / 8;
    bits.held |= LEAST_FILLED_BITS;
}

inline void Skip(Reservoir& bits, uint32_t count)
{
    bits.window <<= count;
    bits.held -= count;
}

// Bits taken, from a start of no meaning.
inline uint64_t PositionOf(const Reservoir& bits)
{
    return reinterpret_cast<uintptr_t>(bits.cursor) * 8 - bits.held;
}

} // namespace tiff::ccitt
