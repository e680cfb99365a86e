// A bilevel line is kept as the columns where its colour changes, white first. Pixels are painted
// only when the line is finished, and the finished list is the reference for the next line.
//
// a0 is the column that coding has reached, a1 and a2 the next two changes on the line coded;
// b1 is the first change of the reference line right of a0 to the colour opposite to a0's,
// b2 the change after it.
#pragma once

#include <cstdint>

namespace tiff {

struct RunList {
    int32_t* ends; // columns, at most the width
    uint32_t count;
    uint32_t room;
    bool ordered = true;    // false when damage made a column lie left of the one before it
    bool emptyRuns = false; // a column occurs twice: encoders that work run by run write such lines
};

// Entries of the width behind every finished list, so that finding b1 and b2 needs no test for the end. Only
// the parity of b1 matters there: it is moved back to the second of them, and reads reach at most two passes,
// a neighbour and b2 farther.
inline constexpr uint32_t END_SENTINELS = 8;
inline constexpr uint32_t LAST_B1 = 2;

// Columns before a list, to the left of everything. Together with entries behind the sentinels, which are
// read but never count, they let four entries be compared with their neighbours anywhere in a list.
inline constexpr uint32_t LIST_MARGIN = 4;

constexpr uint64_t RoomOfList(uint32_t room)
{
    return uint64_t{room} + END_SENTINELS + 2 * LIST_MARGIN;
}

inline RunList MakeRunList(int32_t* memory, uint32_t room)
{
    for (uint32_t index = 0; index < LIST_MARGIN; ++index)
        memory[index] = -1;
    return {memory + LIST_MARGIN, 0, room};
}

inline void ClearRunList(RunList& list)
{
    list.count = 0;
    list.ordered = true;
    list.emptyRuns = false;
}

// Whether the list is in order and has no empty run, except perhaps the first white one.
inline bool HasOnlyChanges(const RunList& list)
{
    return list.ordered && !list.emptyRuns;
}

// Ends the current run. Empty runs stay as they were coded, because the next line counts them too. In a full
// list they join their neighbours; any other run returns false there.
inline bool AppendRunEnd(RunList& list, int64_t end, int32_t width)
{
    const auto column = static_cast<int32_t>(end < 0 ? 0 : end > width ? width : end);
    const bool isFull = list.count == list.room;
    if (list.count > 0 && column <= list.ends[list.count - 1]) {
        const bool isEmpty = column == list.ends[list.count - 1];
        list.emptyRuns |= isEmpty;
        list.ordered &= isEmpty;
        if (isEmpty && isFull) {
            --list.count;
            return true;
        }
    }
    if (isFull)
        return false;
    list.ends[list.count++] = column;
    return true;
}

inline void FinishRunList(RunList& list, int32_t width)
{
    for (uint32_t index = 0; index < END_SENTINELS; ++index)
        list.ends[list.count + index] = width;
}

} // namespace tiff
