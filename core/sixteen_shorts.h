// Sixteen bytes as eight numbers of 16 bits or four of 32, for transforms and colours. With core/sixteen.h
// the only file that knows the processor's way.
#pragma once

#include "core/sixteen.h"
#include "core/sixteen_shorts_plain.h"

namespace tiff {

#ifdef TIFF_SSE2

inline Sixteen ShortsOf(int16_t value)
{
    return _mm_set1_epi16(value);
}

inline Sixteen ColumnsOf(int32_t value)
{
    return _mm_set1_epi32(value);
}

// Sums and differences wrap.
inline Sixteen AddShorts(Sixteen one, Sixteen other)
{
    return _mm_add_epi16(one, other);
}

inline Sixteen SubtractShorts(Sixteen one, Sixteen other)
{
    return _mm_sub_epi16(one, other);
}

inline Sixteen SubtractColumns(Sixteen one, Sixteen other)
{
    return _mm_sub_epi32(one, other);
}

// The high halves of the products.
inline Sixteen MultiplyHigh(Sixteen one, Sixteen other)
{
    return _mm_mulhi_epi16(one, other);
}

inline Sixteen MultiplyHighUnsigned(Sixteen one, Sixteen other)
{
    return _mm_mulhi_epu16(one, other);
}

// The sums of the products of neighbours, as four numbers of 32 bits.
inline Sixteen MultiplyAddPairs(Sixteen one, Sixteen other)
{
    return _mm_madd_epi16(one, other);
}

template <int BITS>
Sixteen ShiftShortsLeft(Sixteen value)
{
    return _mm_slli_epi16(value, BITS);
}

// Signed numbers.
template <int BITS>
Sixteen ShiftShortsRight(Sixteen value)
{
    return _mm_srai_epi16(value, BITS);
}

template <int BITS>
Sixteen ShiftColumnsRight(Sixteen value)
{
    return _mm_srai_epi32(value, BITS);
}

// Two unsigned numbers of 64 bits.
template <int BITS>
Sixteen ShiftHalvesDown(Sixteen value)
{
    return _mm_srli_epi64(value, BITS);
}

// The wide numbers of both, one behind the other, cut to the narrow range.
inline Sixteen NarrowColumns(Sixteen first, Sixteen second)
{
    return _mm_packs_epi32(first, second);
}

inline Sixteen NarrowToBytes(Sixteen first, Sixteen second)
{
    return _mm_packus_epi16(first, second);
}

inline Sixteen NarrowToSignedBytes(Sixteen first, Sixteen second)
{
    return _mm_packs_epi16(first, second);
}

// Elements of 1, 2, 4 or 8 bytes from the lower or upper halves of both, in turns.
template <size_t BYTES>
Sixteen InterleaveLow(Sixteen one, Sixteen other)
{
    if constexpr (BYTES == 1)
        return _mm_unpacklo_epi8(one, other);
    else if constexpr (BYTES == 2)
        return _mm_unpacklo_epi16(one, other);
    else if constexpr (BYTES == 4)
        return _mm_unpacklo_epi32(one, other);
    else
        return _mm_unpacklo_epi64(one, other);
}

template <size_t BYTES>
Sixteen InterleaveHigh(Sixteen one, Sixteen other)
{
    if constexpr (BYTES == 1)
        return _mm_unpackhi_epi8(one, other);
    else if constexpr (BYTES == 2)
        return _mm_unpackhi_epi16(one, other);
    else if constexpr (BYTES == 4)
        return _mm_unpackhi_epi32(one, other);
    else
        return _mm_unpackhi_epi64(one, other);
}

// The first eight bytes alone.
inline Sixteen LoadHalf(const void* bytes)
{
    return _mm_loadl_epi64(static_cast<const __m128i*>(bytes));
}

inline void StoreHalf(void* bytes, Sixteen value)
{
    _mm_storel_epi64(static_cast<__m128i*>(bytes), value);
}

#endif

} // namespace tiff
