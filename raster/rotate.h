// Rows of pixels, turned. Rows begin on 32-bit words, their first pixel in the first byte.
#pragma once

#include "raster/screen_geometry.h"

namespace tiff {

enum class PixelForm { Bits, Bytes, Triples };

constexpr uint32_t BitsOf(PixelForm form)
{
    return form == PixelForm::Bits ? 1 : form == PixelForm::Bytes ? 8 : 24;
}

struct PixelRows {
    uint32_t width, count; // pixels of a row, rows
    uint32_t stride;       // bytes from one row to the next
    const uint8_t* first;
};

// By a quarter, `width` rows of `count` pixels come of it. The target's rows have this stride; what lies
// behind their pixels is not defined. The two must not overlap.
void TurnRows(Turn turn, PixelForm form, const PixelRows& rows, uint8_t* target, uint32_t targetStride);

} // namespace tiff
