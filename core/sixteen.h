// Sixteen bytes, or four columns, at a time. Only this file knows the processor's way: SSE2 is part of every
// 64-bit x86 processor; elsewhere plain code does the same.
#pragma once

#include "core/sixteen_plain.h"

#if (defined(__SSE2__) || defined(_M_X64)) && !defined(TIFF_PLAIN)
#define TIFF_SSE2
#include <emmintrin.h>
#endif

namespace tiff {

#ifdef TIFF_SSE2

using Sixteen = __m128i;

inline Sixteen LoadSixteen(const void* bytes)
{
    return _mm_loadu_si128(static_cast<const __m128i*>(bytes));
}

inline void StoreSixteen(void* bytes, Sixteen value)
{
    _mm_storeu_si128(static_cast<__m128i*>(bytes), value);
}

inline Sixteen SixteenOf(uint8_t byte)
{
    return _mm_set1_epi8(static_cast<char>(byte));
}

inline Sixteen And(Sixteen one, Sixteen other)
{
    return _mm_and_si128(one, other);
}

// The bits of one that the other does not have.
inline Sixteen Without(Sixteen one, Sixteen other)
{
    return _mm_andnot_si128(other, one);
}

inline Sixteen Or(Sixteen one, Sixteen other)
{
    return _mm_or_si128(one, other);
}

inline Sixteen Xor(Sixteen one, Sixteen other)
{
    return _mm_xor_si128(one, other);
}

inline Sixteen AddBytes(Sixteen one, Sixteen other)
{
    return _mm_add_epi8(one, other);
}

// Each byte's bits moved to its higher or lower end, by 0 to 7.
inline Sixteen RaiseBits(Sixteen value, uint32_t bits)
{
    const Sixteen moved = _mm_sll_epi16(value, _mm_cvtsi32_si128(static_cast<int>(bits)));
    return And(moved, SixteenOf(static_cast<uint8_t>(0xFF << bits)));
}

inline Sixteen LowerBits(Sixteen value, uint32_t bits)
{
    const Sixteen moved = _mm_srl_epi16(value, _mm_cvtsi32_si128(static_cast<int>(bits)));
    return And(moved, SixteenOf(static_cast<uint8_t>(0xFF >> bits)));
}

inline Sixteen SubtractBytes(Sixteen one, Sixteen other)
{
    return _mm_sub_epi8(one, other);
}

// A bit for each byte that is equal in both, the lowest bit for the first byte.
inline uint32_t EqualBytes(Sixteen one, Sixteen other)
{
    return static_cast<uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(one, other)));
}

// Moves all bytes towards the last or the first, and fills with zeros.
template <int PLACES>
Sixteen ShiftUp(Sixteen value)
{
    return _mm_slli_si128(value, PLACES);
}

template <int PLACES>
Sixteen ShiftDown(Sixteen value)
{
    return _mm_srli_si128(value, PLACES);
}

// The last one, two or four bytes repeated.
template <int BYTES>
Sixteen RepeatLast(Sixteen value)
{
    static_assert(BYTES == 1 || BYTES == 2 || BYTES == 4);
    if constexpr (BYTES == 1)
        value = _mm_unpackhi_epi8(value, value);
    if constexpr (BYTES <= 2)
        value = _mm_shufflehi_epi16(value, 0xFF);
    return _mm_shuffle_epi32(value, 0xFF);
}

// Four numbers out of four signed bytes.
inline Sixteen WidenToColumns(const int8_t* bytes)
{
    int32_t packed;
    std::memcpy(&packed, bytes, sizeof(packed));
    Sixteen value = _mm_cvtsi32_si128(packed);
    value = _mm_unpacklo_epi8(value, value);
    return _mm_srai_epi32(_mm_unpacklo_epi16(value, value), 24);
}

// One number, and zeros behind it.
inline Sixteen FirstColumn(int32_t column)
{
    return _mm_cvtsi32_si128(column);
}

inline Sixteen AddColumns(Sixteen one, Sixteen other)
{
    return _mm_add_epi32(one, other);
}

// All bits set in each number that is greater than its partner.
inline Sixteen GreaterColumns(Sixteen one, Sixteen other)
{
    return _mm_cmpgt_epi32(one, other);
}

// The highest bit of each number, the lowest bit for the first.
inline uint32_t ColumnBits(Sixteen columns)
{
    return static_cast<uint32_t>(_mm_movemask_ps(_mm_castsi128_ps(columns)));
}

inline void AskForMemory(const uint8_t* address)
{
    _mm_prefetch(reinterpret_cast<const char*>(address), _MM_HINT_T0);
}

#else

using namespace plain;

#endif

inline void CopySixteen(uint8_t* target, const uint8_t* source)
{
    StoreSixteen(target, LoadSixteen(source));
}

} // namespace tiff
