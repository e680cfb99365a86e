// The cosine transform of blocks of 8 x 8 samples, both ways, and division by quantisers.
#pragma once

#include "codecs/jpeg/standard_tables.h"

#include <cstddef>

namespace tiff::jpeg {

// Coefficients column by column: so each direction turns a block only once.
struct Block {
    std::array<int16_t, BLOCK_SIZE> coefficients;
};

// The place in such a block of the n-th coefficient of the code.
inline constexpr auto placeInBlock = [] {
    std::array<uint8_t, BLOCK_SIZE> places{};
    for (uint32_t at = 0; at < BLOCK_SIZE; ++at)
        places[at] = static_cast<uint8_t>(zigzag[at] % BLOCK_SIDE * BLOCK_SIDE + zigzag[at] / BLOCK_SIDE);
    return places;
}();

// Multiplied coefficients to samples, `stride` bytes from line to line. `places` has all bits of the places
// whose coefficients may not be 0.
void ToSamples(const Block& block, uint32_t places, uint8_t* samples, size_t stride);

// Division of coefficients by quantisers, rounded to the nearest.
struct Divisors {
    std::array<uint16_t, BLOCK_SIZE> half, reciprocal, scale; // as a block
};

Divisors MakeDivisors(const Quantisers& quantisers);

// Samples to coefficients divided by the quantisers.
void ToCoefficients(const uint8_t* samples, size_t stride, const Divisors& divisors, Block& block);

} // namespace tiff::jpeg
