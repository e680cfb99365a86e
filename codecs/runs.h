// A bilevel line is kept as the columns where its colour changes, white first. Pixels are
// painted only when the line is finished, and the finished list serves unchanged as the
// reference for the next line.
//
// a0 is the column that coding has reached, a1 and a2 the next two changes on the line coded;
// b1 is the first change of the reference line right of a0 to the colour opposite to a0's,
// b2 the change after it.
#pragma once

#include <cstdint>
#include <span>

namespace tiff {

struct RunList {
    int32_t* ends; // columns, at most the width
    uint32_t count;
    uint32_t room;
};

// Entries of the width that stand behind every finished list, so that looking for b1 and b2
// needs no test for the end.
inline constexpr uint32_t END_SENTINELS = 4;

// Ends the run in hand. A run of no pixels joins its neighbours, so that the list holds real
// changes only; just the first white run may be empty. False when the list is full.
inline bool AppendRunEnd(RunList& list, int64_t end, int32_t width)
{
    const auto column = static_cast<int32_t>(end < 0 ? 0 : end > width ? width : end);
    if (list.count > 0 && column == list.ends[list.count - 1]) {
        --list.count;
        return true;
    }
    if (list.count == list.room)
        return false;
    list.ends[list.count++] = column;
    return true;
}

inline void FinishRunList(RunList& list, int32_t width)
{
    for (uint32_t index = 0; index < END_SENTINELS; ++index)
        list.ends[list.count + index] = width;
}

// Paints a finished list over a line, 1 for black. A black run that ends before it begins
// still shows as one pixel.
void PaintRuns(const RunList& list, std::span<uint8_t> line);

} // namespace tiff
