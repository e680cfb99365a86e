// The bit writer of the CCITT encoders. Bits collect in a 64-bit window and go to the code buffer 32 at a
// time. Copy the writer into a local for a line and back: the window then stays in registers.
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
    Status failed = error::None; // status of the flush that failed
};

// Stores left-aligned bytes one by one. A full buffer is flushed at once, so there is always room for one
// byte. After a failure nothing more is written; returns the failure.
[[nodiscard]] Status StoreCodeBytes(CodecContext* context, Flush flush, Status failed, uint32_t bytes,
                                    uint32_t count);

inline void StoreBytes(BitWriter& bits, uint32_t count)
{
    bits.failed = StoreCodeBytes(bits.context, bits.flush, bits.failed,
                                 static_cast<uint32_t>(bits.window >> 32), count);
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

// Pads to a byte and moves all bits to the code buffer.
inline void EndCode(BitWriter& bits)
{
    PadToByte(bits);
    StoreBytes(bits, bits.held / 8);
    bits.window = 0;
    bits.held = 0;
}

// The writer in registers, for one line. Every code is stored at once as eight bytes, and the cursor moves by
// the whole ones: no branch depends on a code's length.
struct WordWriter {
    BitWriter* bits; // holds the other fields
    uint64_t window;
    uint32_t held; // below 8 while there is room
    uint8_t* cursor;
    const uint8_t* end; // of the room in the buffer
};

// Whether eight bytes fit in and leave the buffer not full.
inline bool HasRoom(const WordWriter& words)
{
    return words.end - words.cursor > static_cast<ptrdiff_t>(sizeof(uint64_t));
}

// There must be room.
inline void StoreWhole(WordWriter& words)
{
    const uint64_t stored = Swap64(words.window);
    std::memcpy(words.cursor, &stored, sizeof(stored));
    words.cursor += words.held / 8;
    words.window <<= words.held & ~7u;
    words.held %= 8;
}

inline WordWriter Borrow(BitWriter& bits)
{
    CodecContext* context = bits.context;
    WordWriter words{&bits, bits.window, bits.held, context->codeCursor,
                     context->codeCursor + context->codeBytesLeft};
    if (HasRoom(words))
        StoreWhole(words);
    return words;
}

inline void GiveBack(const WordWriter& words)
{
    BitWriter& bits = *words.bits;
    bits.context->codeCursor = words.cursor;
    bits.context->codeBytesLeft = static_cast<uint32_t>(words.end - words.cursor);
    bits.window = words.window;
    bits.held = words.held;
}

// As Put, near the end of the buffer. By value, so that nothing else forces the writer to memory.
WordWriter PutAtEdge(WordWriter words, uint64_t code, uint32_t length);

// Appends the low bits of a code, 1 to 56 of them; the bits above must be zero.
inline void Put(WordWriter& words, uint64_t code, uint32_t length)
{
    if (!HasRoom(words)) {
        words = PutAtEdge(words, code, length);
        return;
    }
    words.held += length;
    words.window |= code << (64 - words.held);
    StoreWhole(words);
}

} // namespace tiff
