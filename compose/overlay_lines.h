// The lines of a short text, and where they begin.
#pragma once

#include <cstdint>
#include <span>

namespace tiff {

struct OverlayLine {
    std::span<const char> text;
    uint32_t linesDown; // from the line before
};

// Takes the next line off a zero-terminated text; false at its end.
bool TakeLine(const char*& text, OverlayLine& line);

// A distance in dots of the screen as one in dots of a picture, rounded. Resolutions of 0 are the screen's.
int32_t ScaleDistance(int32_t distance, uint32_t dotsPerInch, uint32_t screenDotsPerInch);

} // namespace tiff
