// Byte order, bit order and the sizes of TIFF's field types.
#pragma once

#include "core/vocabulary.h"
#include "tiff/streams.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace tiff {

constexpr uint16_t Swap16(uint16_t value)
{
    return static_cast<uint16_t>(value << 8 | value >> 8);
}

constexpr uint32_t Swap32(uint32_t value)
{
    return value << 24 | (value & 0xFF00u) << 8 | (value >> 8 & 0xFF00u) | value >> 24;
}

constexpr uint64_t Swap64(uint64_t value)
{
    return uint64_t{Swap32(static_cast<uint32_t>(value))} << 32 | Swap32(static_cast<uint32_t>(value >> 32));
}

inline uint16_t Load16(const uint8_t* bytes, uint32_t byteOrder)
{
    uint16_t value;
    std::memcpy(&value, bytes, sizeof(value));
    return byteOrder == TIFF_MOTOROLA ? Swap16(value) : value;
}

inline uint32_t Load32(const uint8_t* bytes, uint32_t byteOrder)
{
    uint32_t value;
    std::memcpy(&value, bytes, sizeof(value));
    return byteOrder == TIFF_MOTOROLA ? Swap32(value) : value;
}

inline void Store16(uint8_t* bytes, uint16_t value, uint32_t byteOrder)
{
    const uint16_t stored = byteOrder == TIFF_MOTOROLA ? Swap16(value) : value;
    std::memcpy(bytes, &stored, sizeof(stored));
}

inline void Store32(uint8_t* bytes, uint32_t value, uint32_t byteOrder)
{
    const uint32_t stored = byteOrder == TIFF_MOTOROLA ? Swap32(value) : value;
    std::memcpy(bytes, &stored, sizeof(stored));
}

// Type 9 is taken for a LONG everywhere; unknown types are bytes.
constexpr uint32_t ElementBytes(uint32_t type)
{
    switch (type) {
    case fieldtype::Short:
        return 2;
    case fieldtype::Long:
    case 9:
        return 4;
    case fieldtype::Rational:
        return 8;
    default:
        return 1;
    }
}

inline constexpr auto reversedBits = [] {
    std::array<uint8_t, 256> table{};
    for (unsigned value = 0; value < 256; ++value)
        for (unsigned bit = 0; bit < 8; ++bit)
            if (value >> bit & 1)
                table[value] = static_cast<uint8_t>(table[value] | 0x80 >> bit);
    return table;
}();

// Eight bytes at a time: three exchanges of neighbouring bits, pairs and nibbles.
inline void ReverseBits(std::span<uint8_t> bytes)
{
    size_t at = 0;
    for (; at + 8 <= bytes.size(); at += 8) {
        uint64_t word;
        std::memcpy(&word, &bytes[at], 8);
        word = (word >> 1 & 0x5555555555555555u) | (word & 0x5555555555555555u) << 1;
        word = (word >> 2 & 0x3333333333333333u) | (word & 0x3333333333333333u) << 2;
        word = (word >> 4 & 0x0F0F0F0F0F0F0F0Fu) | (word & 0x0F0F0F0F0F0F0F0Fu) << 4;
        std::memcpy(&bytes[at], &word, 8);
    }
    for (; at < bytes.size(); ++at)
        bytes[at] = reversedBits[bytes[at]];
}

// A RATIONAL is two LONGs, each swapped on its own.
inline void SwapElements(std::span<uint8_t> bytes, uint32_t type)
{
    const uint32_t elementBytes = ElementBytes(type);
    if (elementBytes == 2) {
        for (size_t at = 0; at + 2 <= bytes.size(); at += 2) {
            const uint16_t value = Load16(&bytes[at], TIFF_MOTOROLA);
            std::memcpy(&bytes[at], &value, 2);
        }
    } else if (elementBytes >= 4) {
        for (size_t at = 0; at + 4 <= bytes.size(); at += 4) {
            const uint32_t value = Load32(&bytes[at], TIFF_MOTOROLA);
            std::memcpy(&bytes[at], &value, 4);
        }
    }
}

} // namespace tiff
