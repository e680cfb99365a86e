/* The pixels of a packed DIB, row by row from the top, in red, green and blue. */
#ifndef TOOLS_PIXELS_H
#define TOOLS_PIXELS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tifftool {

using Rgb = std::array<uint8_t, 3>;

struct Pixels {
    uint32_t width, height;
    uint32_t depth;      // 1, 4, 8, 24 or 32; 0 for a DIB that cannot be read
    uint32_t dotsAcross; // per metre; 0 when unknown
    uint32_t dotsDown;
    std::vector<Rgb> colours; // of depths up to 8
    bool fromTop;
    size_t stride;
    const uint8_t* rows;
};

Pixels ReadPixels(std::span<const uint8_t> dib);

// A row as it is stored.
std::span<const uint8_t> StoredRow(const Pixels& pixels, uint32_t row);

// The index of a pixel in the colours, for depths up to 8.
uint8_t IndexAt(const Pixels& pixels, std::span<const uint8_t> stored, uint32_t column);

void ReadRow(const Pixels& pixels, uint32_t row, std::span<Rgb> colours);

// Depths up to 8 whose colours are all grey.
bool IsGrey(const Pixels& pixels);

} // namespace tifftool

#endif
