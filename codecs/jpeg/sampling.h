// Components with fewer samples than the picture has pixels: rows of them are mixed and widened.
#pragma once

#include <cstdint>

namespace tiff::jpeg {

// A row of a component, and the neighbour that it is mixed with; both lines have room in front of them and
// for sixteen samples behind. The same line twice stands for an unmixed row.
struct MixedLines {
    const uint8_t *line, *neighbour;
};

// Widens a row by a whole factor to `width` pixels. A factor of 2 mixes neighbours 3 to 1; others repeat. The
// target has room for 64 pixels more, `scratch` for 32 samples more than the row.
void WidenRow(const MixedLines& lines, uint32_t samples, uint32_t factor, uint8_t* target, uint32_t width,
              int16_t* scratch);

// The first half of widening a row of Cb or Cr by 2: JoinWidened does the rest. Gives 64 times the samples
// less 128, with the ends repeated; they lie in the scratch.
const int16_t* MixChroma(const MixedLines& lines, uint32_t samples, int16_t* scratch);

} // namespace tiff::jpeg
