#include "view_layout.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tiffview {

namespace {

constexpr double LEAST_ZOOM = 0.02, MOST_ZOOM = 16;

struct Size {
    double width, height;
};

// As turned. The library draws in the same size.
Size TrueSize(const Document& document, const View& view, const Room& room)
{
    Size size{static_cast<double>(document.width), static_cast<double>(document.height)};
    double across = document.horizontalDpi, down = document.verticalDpi;
    if (view.turn % 2 != 0) {
        std::swap(size.width, size.height);
        std::swap(across, down);
    }
    if (view.mode != Mode::Pixels) {
        size.width *= across > 0 ? room.horizontalDpi / across : 1;
        size.height *= down > 0 ? room.verticalDpi / down : 1;
    }
    return size;
}

double ScaleOf(const View& view, Size size, const Room& room)
{
    const double widthScale = room.width / size.width, heightScale = room.height / size.height;
    switch (view.mode) {
    case Mode::FitPage:
        return std::min(widthScale, heightScale);
    case Mode::FitWidth:
        return size.height * widthScale > room.height ? (room.width - room.verticalBar) / size.width
                                                      : widthScale;
    case Mode::Zoomed:
        return view.zoom;
    default:
        return 1;
    }
}

int32_t Whole(double pixels)
{
    return static_cast<int32_t>(std::clamp(std::floor(pixels + 0.5), 1.0, 1e9));
}

} // namespace

Layout LayOut(const Document& document, const View& view, const Room& room)
{
    Layout layout;
    if (document.width == 0 || document.height == 0) {
        return layout;
    }
    const Size size = TrueSize(document, view, room);
    layout.scale = std::max(ScaleOf(view, size, room), 1e-6);
    layout.width = Whole(size.width * layout.scale);
    layout.height = Whole(size.height * layout.scale);
    // One bar may make the other necessary.
    bool down = layout.height > room.height;
    const bool across = layout.width > room.width - (down ? room.verticalBar : 0);
    down = layout.height > room.height - (across ? room.horizontalBar : 0);
    layout.hiddenWidth = std::max(layout.width - (room.width - (down ? room.verticalBar : 0)), 0);
    layout.hiddenHeight = std::max(layout.height - (room.height - (across ? room.horizontalBar : 0)), 0);
    return layout;
}

double ZoomStep(double scale, bool in)
{
    constexpr double STEP = 1.25;
    return std::clamp(in ? scale * STEP : scale / STEP, LEAST_ZOOM, MOST_ZOOM);
}

} // namespace tiffview
