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

// The same for YCbCr whose Cb and Cr are half as wide, in one go; they come from MixChroma.
void JoinWidened(const uint8_t* luminance, const int16_t* cb, const int16_t* cr, uint8_t* pixels,
                 uint32_t width);

// B, G, R to Y. The pixels are kept in three rows until the row below comes.
void SplitUpper(const uint8_t* pixels, uint32_t width, uint8_t* luminance, uint8_t* const kept[3]);

// B, G, R to Y, and to Cb and Cr of every 2 x 2 pixels of this row and the kept one.
void SplitLower(const uint8_t* pixels, uint32_t width, uint8_t* luminance, const uint8_t* const kept[3],
                uint8_t* cb, uint8_t* cr);

} // namespace tiff::jpeg
