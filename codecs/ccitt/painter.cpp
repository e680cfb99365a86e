#include "codecs/ccitt/painter.h"

#include "core/byte_order.h"

#include <array>
#include <cstring>

namespace tiff {

// The pixels from a column to the end of its 64-pixel word, as they lie in memory.
static constexpr auto fromColumn = [] {
    std::array<uint64_t, 64> masks{};
    for (uint32_t column = 0; column < 64; ++column)
        masks[column] = Swap64(UINT64_MAX >> column);
    return masks;
}();

static void FlipWord(uint8_t* line, uint32_t word, uint64_t pixels)
{
    uint64_t value;
    std::memcpy(&value, line + size_t{word} * 8, 8);
    value ^= pixels;
    std::memcpy(line + size_t{word} * 8, &value, 8);
}

// Most runs lie inside a word, where one flip does both ends.
static inline void FlipRun(uint8_t* line, uint32_t start, uint32_t end)
{
    const uint32_t first = start / 64, last = end / 64;
    if (first == last) {
        FlipWord(line, first, fromColumn[start % 64] ^ fromColumn[end % 64]);
        return;
    }
    FlipWord(line, first, fromColumn[start % 64]);
    for (uint32_t word = first + 1; word < last; ++word)
        FlipWord(line, word, UINT64_MAX);
    FlipWord(line, last, ~fromColumn[end % 64]);
}

// Neighbouring runs mostly share a word, and each flip waits for the one before it. Painting the two halves
// of the line in turns lets two flips run side by side. The last run of the second half may come from the
// entries behind the list; it is empty.
static void PaintOrdered(const RunList& list, uint8_t* line)
{
    const uint32_t half = (list.count + 3) / 4;
    const int32_t* left = list.ends;
    const int32_t* const middle = list.ends + size_t{half} * 2;
    for (const int32_t* right = middle; left != middle; left += 2, right += 2) {
        FlipRun(line, static_cast<uint32_t>(left[0]), static_cast<uint32_t>(left[1]));
        FlipRun(line, static_cast<uint32_t>(right[0]), static_cast<uint32_t>(right[1]));
    }
}

static void PaintBlack(uint8_t* line, uint32_t start, uint32_t end)
{
    const uint32_t firstByte = start / 8, lastByte = end / 8;
    const auto firstMask = static_cast<uint8_t>(0xFF >> start % 8);
    const auto lastMask = static_cast<uint8_t>(~(0xFF >> end % 8));
    if (firstByte == lastByte) {
        line[firstByte] |= firstMask & lastMask;
        return;
    }
    line[firstByte] |= firstMask;
    std::memset(line + firstByte + 1, 0xFF, lastByte - firstByte - 1);
    if (lastMask)
        line[lastByte] |= lastMask;
}

// Black runs may overlap here.
static void PaintDisordered(const RunList& list, uint8_t* line)
{
    const int32_t width = list.ends[list.count];
    for (uint32_t index = 0; index < list.count; index += 2) {
        const int32_t start = list.ends[index];
        const int32_t end = list.ends[index + 1];
        if (start < width)
            PaintBlack(line, static_cast<uint32_t>(start),
                       static_cast<uint32_t>(end < start ? start + 1 : end));
    }
}

void PaintRuns(const RunList& list, uint8_t* line)
{
    if (list.ordered)
        PaintOrdered(list, line);
    else
        PaintDisordered(list, line);
}

} // namespace tiff
