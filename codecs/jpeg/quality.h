// The tables that pages are coded with.
#pragma once

#include "codecs/jpeg/standard_tables.h"

#include <cstddef>
#include <span>

namespace tiff::jpeg {

inline constexpr uint32_t LEAST_QUALITY = 1, USUAL_QUALITY = 75, MOST_QUALITY = 100;

// The standard's quantisers scaled by quality, in the order of the code: 50 leaves them as they are.
Quantisers ScaleQuantisers(const std::array<uint8_t, BLOCK_SIZE>& standard, uint32_t quality);

inline constexpr size_t MOST_TABLE_BYTES = 574;

// Writes a stream of tables alone: those of grey pages, or of coloured ones. Gives its length.
size_t WriteTables(bool isColour, uint32_t quality, std::span<uint8_t, MOST_TABLE_BYTES> target);

// The quality of the calling thread.
uint32_t ThreadQuality();

} // namespace tiff::jpeg
