// The careful bit reader: it refills the code buffer when it needs eight bits and has fewer, never earlier.
// The moment of the refill decides what a damaged file reports, so this is a contract and not an
// implementation detail. The window may hold more bits of the code buffer than that.
#pragma once

#include "codecs/codec_context.h"

#include <bit>

namespace tiff::ccitt {

using Refill = Status (*)(CodecContext* context);

struct BitReader {
    CodecContext* context;
    Refill refill;
    uint64_t window = 0;        // left-aligned; behind the bits held are zeros or the bits of the next bytes
    uint32_t held = 0;          // bits of the window that are taken from the code buffer
    Status ended = error::None; // status of the refill that found no more data
    bool refilled = false;      // since it was last cleared
};

// Takes bytes until eight bits are held or the data end.
inline void LookAhead(BitReader& bits)
{
    while (bits.held < 8 && bits.ended == error::None) {
        CodecContext* context = bits.context;
        if (context->codeBytesLeft == 0) {
            bits.ended = bits.refill(context);
            bits.refilled = true;
            continue;
        }
        bits.window |= uint64_t{*context->codeCursor++} << (56 - bits.held);
        --context->codeBytesLeft;
        bits.held += 8;
    }
}

// The next eight bits. Missing bits read as zeros.
inline uint32_t PeekByte(BitReader& bits)
{
    LookAhead(bits);
    return static_cast<uint32_t>(bits.window >> 56);
}

// Takes bits, or none when some are missing: the reader has ended then.
[[nodiscard]] inline bool Take(BitReader& bits, uint32_t count)
{
    if (count > bits.held)
        return false;
    bits.window <<= count;
    bits.held -= count;
    return true;
}

// Goes on at the next byte of the data. False when a bit that was skipped is no zero.
inline bool AlignToByte(BitReader& bits)
{
    const uint32_t partial = bits.held % 8;
    const uint64_t skipped = bits.window & ~(UINT64_MAX >> partial);
    bits.window <<= partial;
    bits.held -= partial;
    return skipped == 0;
}

// For a cursor that was moved, perhaps back from the end of the data.
inline void Restart(BitReader& bits)
{
    bits.window = 0;
    bits.held = 0;
    bits.ended = error::None;
}

// Skips zero bits and takes the 1 bit behind them.
[[nodiscard]] inline bool TakeThroughOne(BitReader& bits)
{
    for (;;) {
        const uint32_t byte = PeekByte(bits);
        if (byte != 0)
            return Take(bits, static_cast<uint32_t>(std::countl_zero(static_cast<uint8_t>(byte))) + 1);
        if (!Take(bits, 8))
            return false;
    }
}

} // namespace tiff::ccitt
