// Four columns at a time. SSE2 is part of every 64-bit x86 processor; elsewhere plain code.
#pragma once

#include <cstdint>
#include <cstring>

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#endif

namespace tiff {

// Stores b[i] + deltas[i] as four columns. Returns a bit for each lane whose column does not lie
// right of the one before it, of which the first is given, or lies left of b[i - 1], or does not
// lie left of b[i + 1].
#if defined(__SSE2__) || defined(_M_X64)
inline uint32_t PlaceColumns(const int32_t* b, const int8_t* deltas, int32_t before, int32_t* columns)
{
    int32_t packed;
    std::memcpy(&packed, deltas, sizeof(packed));
    const auto load = [](const int32_t* from) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    };
    __m128i steps = _mm_cvtsi32_si128(packed);
    steps = _mm_unpacklo_epi8(steps, steps);
    steps = _mm_srai_epi32(_mm_unpacklo_epi16(steps, steps), 24);
    const __m128i placed = _mm_add_epi32(load(b), steps);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(columns), placed);
    const __m128i left = _mm_or_si128(_mm_slli_si128(placed, 4), _mm_cvtsi32_si128(before));
    const __m128i inside = _mm_and_si128(_mm_cmpgt_epi32(placed, left), _mm_cmplt_epi32(placed, load(b + 1)));
    const __m128i good = _mm_andnot_si128(_mm_cmplt_epi32(placed, load(b - 1)), inside);
    return static_cast<uint32_t>(_mm_movemask_ps(_mm_castsi128_ps(good))) ^ 15;
}
#else
inline uint32_t PlaceColumns(const int32_t* b, const int8_t* deltas, int32_t before, int32_t* columns)
{
    uint32_t outside = 0;
    for (uint32_t lane = 0; lane < 4; ++lane) {
        const int32_t column = b[lane] + deltas[lane];
        const bool inside =
            column > before && column >= b[static_cast<int32_t>(lane) - 1] && column < b[lane + 1];
        outside |= uint32_t{!inside} << lane;
        columns[lane] = before = column;
    }
    return outside;
}
#endif

} // namespace tiff
