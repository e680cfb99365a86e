/* How large the viewer draws a page: every mode becomes a scale of the true size, on paper's shape. */
#ifndef TOOLS_VIEW_LAYOUT_H
#define TOOLS_VIEW_LAYOUT_H

#include "view_document.h"

namespace tiffview {

enum class Mode { FitPage, FitWidth, Zoomed, Pixels }; // Zoomed at 1 is true size

struct View {
    Mode mode = Mode::FitPage;
    double zoom = 1;
    uint32_t turn = 0; // quarters, clockwise
    bool inverted = false, grey = true;
};

struct Room {
    int32_t width, height;              // without scroll bars
    int32_t verticalBar, horizontalBar; // their thickness
    int32_t horizontalDpi, verticalDpi; // of the screen
};

struct Layout {
    double scale = 1;                          // of the true size; of pixels in that mode
    int32_t width = 0, height = 0;             // of the page on the screen
    int32_t hiddenWidth = 0, hiddenHeight = 0; // of these outside the room
};

Layout LayOut(const Document& document, const View& view, const Room& room);

// The next step of zooming from a scale.
double ZoomStep(double scale, bool in);

} // namespace tiffview

#endif
