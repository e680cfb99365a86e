// Run lists to pixels.
#pragma once

#include "codecs/ccitt/runs.h"

namespace tiff {

// Bytes behind a line that are read and written back unchanged.
inline constexpr uint32_t PAINT_MARGIN = 8;

// Paints a finished list over a line of zeros, 1 for black. In a list out of order, a black run that
// ends before it begins still shows as one pixel.
void PaintRuns(const RunList& list, uint8_t* line);

} // namespace tiff
