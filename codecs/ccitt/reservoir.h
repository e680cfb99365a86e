// The bit reader's state in registers, for loops that stay inside the bytes held: one load of eight bytes
// fills the window.
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

// May give back more bits than the careful reader takes ahead, which changes nothing for it. It refills when
// window and buffer together have fewer than eight bits, however these are divided. Aligning drops the same
// bits too, as whole bytes do not change held % 8. A new strip empties the window.
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

// Afterwards at least LEAST_FILLED_BITS are held. Bits of the last byte that are not counted yet are loaded
// again by the next fill, at the same place of the window.
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

// Bits taken so far, from an arbitrary start.
inline uint64_t PositionOf(const Reservoir& bits)
{
    return reinterpret_cast<uintptr_t>(bits.cursor) * 8 - bits.held;
}

} // namespace tiff::ccitt
