// Colours of whole rows: planes of samples to pixels of bytes and back. Rows of planes are read and written
// in steps of sixteen, so they need room for that many samples behind their last; rows of pixels do not.
#pragma once

#include <cstdint>

namespace tiff::jpeg {

inline constexpr uint32_t MOST_PLANES = 4;

// One row of each component.
struct PlaneRows {
    const uint8_t* rows[MOST_PLANES];
};

// How planes become pixels.
enum class Colours {
    Plain,    // as they are, the first plane first
    Reversed, // R, G, B to B, G, R
    YCbCr,    // to B, G, R
    Ycck      // to C, M, Y, K
};

// Writes pixels of as many bytes as there are planes.
void JoinPlanes(const PlaneRows& planes, uint32_t count, Colours colours, uint8_t* pixels, uint32_t width);

// B, G, R to Y, Cb and Cr.
void SplitColours(const uint8_t* pixels, uint32_t width, uint8_t* const planes[3]);

} // namespace tiff::jpeg
