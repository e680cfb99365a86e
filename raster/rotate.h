// Rows of pixels, turned. Rows begin on 32-bit words, their first pixel in the first byte.
#pragma once

#include "raster/screen_geometry.h"

#include <cstddef>

namespace tiff {

enum class PixelForm { Bits, Bytes, Triples, Nibbles, Pairs, Quads };

constexpr uint32_t BitsOf(PixelForm form)
{
    constexpr uint32_t bits[] = {1, 8, 24, 4, 16, 32};
    return bits[static_cast<uint32_t>(form)];
}

struct PixelRows {
    uint32_t width, count; // pixels of a row, rows
    ptrdiff_t stride;      // bytes from one row to the next
    const uint8_t* first;

    const uint8_t* Row(uint32_t row) const
    {
        return first + static_cast<ptrdiff_t>(row) * stride;
    }
};

// By a quarter, `width` rows of `count` pixels come of it. The target's rows have this stride; what lies
// behind their pixels is not defined. The two must not overlap.
void TurnRows(Turn turn, PixelForm form, const PixelRows& rows, uint8_t* target, uint32_t targetStride);

} // namespace tiff
