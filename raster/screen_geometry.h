// Where a picture stands in a window: its size on the screen, the part shown, and the pixels of the picture
// behind each pixel of the screen.
#pragma once

#include <cstdint>
#include <span>

namespace tiff {

// Clockwise.
enum class Turn { None, Quarter, Half, ThreeQuarters };

enum class Placement { Plain, TrueSize, Fit };

struct ScrollBar {
    int32_t least, most, position;
};

// One axis of the screen; the picture as turned.
struct ScreenAxis {
    uint32_t pixels; // of the picture
    double picturePerInch, devicePerInch;
    double zoom;      // true size is divided by it
    uint32_t room;    // device pixels of the window without scroll bars
    uint32_t taken;   // of them by a scroll bar of the other axis
    ScrollBar scroll; // of this axis
};

struct ShownAxis {
    uint32_t pixels, scaled; // of the picture, and the device pixels that it has in full
    uint32_t room;           // device pixels of the window beside its scroll bars
    uint32_t first;          // pixel of the picture at the beginning of the window
    uint32_t shown;          // device pixels
    bool scrolls;            // the picture is larger than the room
};

struct ShownPicture {
    ShownAxis x, y;
};

ShownPicture PlaceOnScreen(Placement placement, const ScreenAxis& x, const ScreenAxis& y);

// The second number divided by the first; 1 without a positive ratio.
double ZoomRatio(const int32_t* zoom);

// Pixels of the picture that share one device pixel.
struct PixelSpan {
    uint32_t first, count;
};

// The spans of an axis by device pixel. With `mirrored` they run the other way, from the last device pixel,
// and count the picture's pixels from its other end.
void FillSpans(const ShownAxis& axis, bool mirrored, std::span<PixelSpan> spans);

// The axes as the page has them: a row of the page, turned by a quarter, is a column of the screen.
struct PageAxes {
    bool rowsAreColumns, rowsMirrored, columnsMirrored;
};

constexpr PageAxes AxesOf(Turn turn)
{
    switch (turn) {
    case Turn::Quarter:
        return {true, true, false};
    case Turn::Half:
        return {false, true, true};
    case Turn::ThreeQuarters:
        return {true, false, true};
    default:
        return {false, false, false};
    }
}

} // namespace tiff
