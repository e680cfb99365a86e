#include "codecs/ccitt/mode_groups.h"

#include <algorithm>

namespace tiff::ccitt {

// No step is longer than three pixels, so inside a list in order b1 moves at most one pair to the left or two
// to the right. A branch on that would often be predicted wrong.
uint32_t PlaceSingly(const ModeGroup& group, uint32_t lane, ModePlaces& places, int32_t width)
{
    const int32_t* b = places.b + lane;
    int32_t* columns = places.columns + lane;
    int32_t outside = 0; // below zero once a mode left the line
    for (; lane < group.count && columns[-1] < width; ++lane) {
        const int32_t wanted = *b + group.deltas[lane];
        const int32_t column = std::clamp(wanted, 0, width);
        if (column <= columns[-1])
            break;
        outside |= wanted | (width - wanted);
        *columns++ = column;
        ++b;
        b -= 2 * int{b[-2] > column};
        while (b[-2] > column) // behind the list, where everything is the width
            b -= 2;
        b += 2 * int{b[0] <= column && column < width};
        b += 2 * int{b[0] <= column && column < width};
    }
    places = {b, columns, places.overran || outside < 0};
    return lane;
}

uint32_t BitsOf(const ModeGroup& group, uint32_t modes)
{
    uint32_t bits = group.passed * PASS_BITS / 2;
    for (uint32_t lane = 0; lane < modes; ++lane)
        bits += verticalLengths[static_cast<uint32_t>(group.deltas[lane] + 3)];
    return bits;
}

} // namespace tiff::ccitt
