// The functions of core/sixteen_shorts.h for any processor. That file describes each.
#pragma once

#include "core/sixteen_plain.h"

#include <algorithm>
#include <limits>

namespace tiff::plain {

inline Sixteen ShortsOf(int16_t value)
{
    return MakeElements<int16_t>([=](size_t) { return value; });
}

inline Sixteen ColumnsOf(int32_t value)
{
    return MakeElements<int32_t>([=](size_t) { return value; });
}

// Sums and differences wrap.
inline Sixteen AddShorts(Sixteen one, Sixteen other)
{
    return CombineElements<uint16_t>(one, other, [](uint32_t a, uint32_t b) { return a + b; });
}

inline Sixteen SubtractShorts(Sixteen one, Sixteen other)
{
    return CombineElements<uint16_t>(one, other, [](uint32_t a, uint32_t b) { return a - b; });
}

inline Sixteen SubtractColumns(Sixteen one, Sixteen other)
{
    return CombineElements<uint32_t>(one, other, [](uint32_t a, uint32_t b) { return a - b; });
}

inline Sixteen MultiplyHigh(Sixteen one, Sixteen other)
{
    return CombineElements<int16_t>(one, other, [](int32_t a, int32_t b) { return a * b >> 16; });
}

inline Sixteen MultiplyHighUnsigned(Sixteen one, Sixteen other)
{
    return CombineElements<uint16_t>(one, other, [](uint32_t a, uint32_t b) { return a * b >> 16; });
}

inline Sixteen MultiplyAddPairs(Sixteen one, Sixteen other)
{
    int16_t ones[8], others[8];
    std::memcpy(ones, one.bytes, SIXTEEN);
    std::memcpy(others, other.bytes, SIXTEEN);
    return MakeElements<uint32_t>([&](size_t index) {
        return static_cast<uint32_t>(ones[2 * index] * others[2 * index]) +
               static_cast<uint32_t>(ones[2 * index + 1] * others[2 * index + 1]);
    });
}

template <int BITS>
Sixteen ShiftShortsLeft(Sixteen value)
{
    return CombineElements<uint16_t>(value, value, [](uint32_t a, uint32_t) { return a << BITS; });
}

template <int BITS>
Sixteen ShiftShortsRight(Sixteen value)
{
    return CombineElements<int16_t>(value, value, [](int32_t a, int32_t) { return a >> BITS; });
}

template <int BITS>
Sixteen ShiftColumnsRight(Sixteen value)
{
    return CombineElements<int32_t>(value, value, [](int32_t a, int32_t) { return a >> BITS; });
}

template <int BITS>
Sixteen ShiftHalvesDown(Sixteen value)
{
    return CombineElements<uint64_t>(value, value, [](uint64_t a, uint64_t) { return a >> BITS; });
}

// The wide elements of both, one behind the other, cut to the range of the narrow ones.
template <class Wide, class Narrow>
Sixteen NarrowElements(Sixteen first, Sixteen second)
{
    constexpr size_t COUNT = SIXTEEN / sizeof(Wide);
    Wide wide[2 * COUNT];
    std::memcpy(wide, first.bytes, SIXTEEN);
    std::memcpy(wide + COUNT, second.bytes, SIXTEEN);
    return MakeElements<Narrow>([&](size_t index) {
        return std::clamp<Wide>(wide[index], std::numeric_limits<Narrow>::min(),
                                std::numeric_limits<Narrow>::max());
    });
}

inline Sixteen NarrowColumns(Sixteen first, Sixteen second)
{
    return NarrowElements<int32_t, int16_t>(first, second);
}

inline Sixteen NarrowToBytes(Sixteen first, Sixteen second)
{
    return NarrowElements<int16_t, uint8_t>(first, second);
}

inline Sixteen NarrowToSignedBytes(Sixteen first, Sixteen second)
{
    return NarrowElements<int16_t, int8_t>(first, second);
}

template <size_t BYTES>
Sixteen Interleave(Sixteen one, Sixteen other, size_t from)
{
    Sixteen value;
    for (size_t at = 0; at < SIXTEEN; ++at) {
        const Sixteen& source = at / BYTES % 2 ? other : one;
        value.bytes[at] = source.bytes[from + at / (2 * BYTES) * BYTES + at % BYTES];
    }
    return value;
}

template <size_t BYTES>
Sixteen InterleaveLow(Sixteen one, Sixteen other)
{
    return Interleave<BYTES>(one, other, 0);
}

template <size_t BYTES>
Sixteen InterleaveHigh(Sixteen one, Sixteen other)
{
    return Interleave<BYTES>(one, other, SIXTEEN / 2);
}

inline Sixteen LoadHalf(const void* bytes)
{
    Sixteen value{};
    std::memcpy(value.bytes, bytes, SIXTEEN / 2);
    return value;
}

inline void StoreHalf(void* bytes, Sixteen value)
{
    std::memcpy(bytes, value.bytes, SIXTEEN / 2);
}

} // namespace tiff::plain
