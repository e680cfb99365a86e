// The bit writer of the CCITT and LZW encoders. Bits gather in a 64-bit window that goes to the
// code buffer 32 at a time. Copy the writer into a local for the length of a line and back:
// the window then stays in registers.
#pragma once

#include "codecs/codec_context.h"
#include "core/byte_order.h"

namespace tiff {

using Flush = Status (*)(CodecContext* context);

struct BitWriter {
    CodecContext* context;
    Flush flush;
    uint64_t window = 0;         // left-aligned
    uint32_t held = 0;           // bits in the window, below 32 between two calls
    Status failed = error::None; // what the last failing flush said
};

// Stores left-aligned bytes one by one. The buffer is flushed as soon as it is full, so there
// is always room for one.
[[nodiscard]] Status StoreCodeBytes(CodecContext* context, Flush flush, uint32_t bytes, uint32_t count);

inline void StoreBytes(BitWriter& bits, uint32_t count)
{
    const Status status =
        StoreCodeBytes(bits.context, bits.flush, static_cast<uint32_t>(bits.window >> 32), count);
    if (status != error::None)
        bits.failed = status;
}

// Appends the low bits of a code, 1 to 32 of them; the bits above must be zero.
inline void Put(BitWriter& bits, uint32_t code, uint32_t length)
{
    bits.held += length;
    bits.window |= uint64_t{code} << (64 - bits.held);
    if (bits.held < 32)
        return;
    CodecContext* context = bits.context;
    if (context->codeBytesLeft > 4) {
        const uint32_t word = Swap32(static_cast<uint32_t>(bits.window >> 32));
        std::memcpy(context->codeCursor, &word, sizeof(word));
        context->codeCursor += 4;
        context->codeBytesLeft -= 4;
    } else {
        StoreBytes(bits, 4);
    }
    bits.window <<= 32;
    bits.held -= 32;
}

inline void PadToByte(BitWriter& bits)
{
    if (const uint32_t partial = bits.held % 8; partial != 0)
        Put(bits, 0, 8 - partial);
}

// Pads to a byte and leaves nothing outside the code buffer.
inline void EndCode(BitWriter& bits)
{
    PadToByte(bits);
    StoreBytes(bits, bits.held / 8);
    bits.window = 0;
    bits.held = 0;
}

} // namespace tiff
