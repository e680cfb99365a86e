// Four columns at a time.
#pragma once

#include "core/sixteen.h"

namespace tiff {

// Stores b[i] + deltas[i] as four columns. Returns a mask of misplaced lanes: columns[i] <= columns[i-1]
// (columns[-1] is `before`), columns[i] < b[i-1], or columns[i] >= b[i+1].
inline uint32_t PlaceColumns(const int32_t* b, const int8_t* deltas, int32_t before, int32_t* columns)
{
    const Sixteen placed = AddColumns(LoadSixteen(b), WidenToColumns(deltas));
    StoreSixteen(columns, placed);
    const Sixteen left = Or(ShiftUp<4>(placed), FirstColumn(before));
    const Sixteen inside = And(GreaterColumns(placed, left), GreaterColumns(LoadSixteen(b + 1), placed));
    return ColumnBits(Without(inside, GreaterColumns(LoadSixteen(b - 1), placed))) ^ 15;
}

} // namespace tiff
