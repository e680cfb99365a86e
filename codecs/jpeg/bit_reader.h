// Bits of entropy-coded data. Behind the last byte, and at a marker, zeros follow; who needs them finds out
// by asking whether the data have ended.
#pragma once

#include "codecs/jpeg/byte_source.h"
#include "core/byte_order.h"

#include <bit>
#include <cstring>

namespace tiff::jpeg {

// The next bits, and the bytes behind them. A local copy of this stays in registers.
struct Bits {
    uint64_t bits;                  // highest first
    uint32_t count;                 // how many of them there are
    const uint8_t *next, *plainEnd; // bytes of the source; none once a marker was met
};

struct BitReader {
    Bits now;
    uint32_t zeros; // of the bits, how many were made up
    ByteSource* source;
    uint8_t marker; // that was met, 0 before
    Status status;  // of reading; 5 at the end of the data
};

inline constexpr uint32_t BITS_NEEDED = 32; // for a code and its coefficient

// Takes bytes until more bits are there than are needed.
void RefillSlowly(BitReader& reader);

// `bits` is a copy of the reader's.
inline void NeedBits(Bits& bits, BitReader& reader)
{
    if (bits.count >= BITS_NEEDED) [[likely]]
        return;
    if (bits.plainEnd - bits.next >= 8) [[likely]] {
        uint64_t word;
        std::memcpy(&word, bits.next, sizeof(word));
        if constexpr (std::endian::native == std::endian::little)
            word = Swap64(word);
        constexpr uint64_t LOW = 0x0101010101010101, HIGH = 0x8080808080808080;
        const bool hasFF = ((~word - LOW) & word & HIGH) != 0;
        if (!hasFF) [[likely]] {
            // The bits behind the counted ones are the same when they are read again.
            const uint32_t bytes = (63 - bits.count) / 8;
            bits.bits |= word >> bits.count;
            bits.count += bytes * 8;
            bits.next += bytes;
            return;
        }
    }
    reader.now = bits;
    RefillSlowly(reader);
    bits = reader.now;
}

inline uint32_t Peek(const Bits& bits, uint32_t count)
{
    return static_cast<uint32_t>(bits.bits >> (64 - count));
}

inline void Skip(Bits& bits, uint32_t count)
{
    bits.bits <<= count;
    bits.count -= count;
}

// Whether made-up bits were used.
inline bool HasEnded(const BitReader& reader)
{
    return reader.now.count < reader.zeros;
}

// Starts where the source stands.
void StartBits(BitReader& reader, ByteSource& source);

// Gives the bytes that were not read back to the source.
void EndBits(const BitReader& reader);

// Passes over data to behind the next marker; 5 and 6 when there is none.
[[nodiscard]] Status FindMarker(ByteSource& source, uint8_t& marker);

} // namespace tiff::jpeg
