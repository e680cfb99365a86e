// Components with fewer samples than the picture has pixels: rows of them are widened, or made from pairs of
// rows.
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

// Means of 2 x 2 samples. The lines have an even number of samples.
void HalveRows(const uint8_t* upper, const uint8_t* lower, uint32_t samples, uint8_t* target);

} // namespace tiff::jpeg
