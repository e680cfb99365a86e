#include "compose/overlay_lines.h"

#include <algorithm>
#include <cstring>

namespace tiff {

static bool IsLineEnd(char byte)
{
    return byte == '\r' || byte == '\n';
}

// Deliberate: an LF moves down only behind another line end, so a single one puts the next line over the
// last.
bool TakeLine(const char*& text, OverlayLine& line)
{
    line.linesDown = 0;
    while (IsLineEnd(*text))
        line.linesDown += *++text == '\n';
    const char* const begin = text;
    text += std::strcspn(text, "\r\n");
    line.text = {begin, text};
    return !line.text.empty();
}

int32_t ScaleDistance(int32_t distance, uint32_t dotsPerInch, uint32_t screenDotsPerInch)
{
    if (dotsPerInch == 0 || screenDotsPerInch == 0)
        return distance;
    // Single precision, as programs that place text expect.
    const float scale = static_cast<float>(dotsPerInch) / static_cast<float>(screenDotsPerInch);
    const float scaled = scale * static_cast<float>(distance) + 0.5f;
    constexpr double LEAST = INT32_MIN, MOST = INT32_MAX;
    return static_cast<int32_t>(std::clamp<double>(scaled, LEAST, MOST));
}

} // namespace tiff
