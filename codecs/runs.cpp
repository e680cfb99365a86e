#include "codecs/runs.h"

#include <algorithm>
#include <cstring>

namespace tiff {

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

void PaintRuns(const RunList& list, std::span<uint8_t> line)
{
    std::memset(line.data(), 0, line.size());
    const int32_t width = list.ends[list.count];
    for (uint32_t index = 0; index < list.count; index += 2) {
        const int32_t start = list.ends[index];
        const int32_t end = list.ends[index + 1];
        if (start < width)
            PaintBlack(line.data(), static_cast<uint32_t>(start),
                       static_cast<uint32_t>(end < start ? start + 1 : end));
    }
}

} // namespace tiff
