#include "raster/screen_geometry.h"

#include <algorithm>

namespace tiff {

namespace {

constexpr uint32_t LARGEST = INT32_MAX; // of a picture on the screen

// Rounds a product of 31-bit numbers.
uint32_t Scaled(uint64_t value, uint64_t numerator, uint64_t denominator)
{
    return static_cast<uint32_t>(
        std::min<uint64_t>((value * numerator + denominator / 2) / denominator, LARGEST));
}

uint32_t TrueSize(const ScreenAxis& axis)
{
    const double picturePerInch = axis.picturePerInch > 0 ? axis.picturePerInch : axis.devicePerInch;
    const double size = axis.pixels * axis.devicePerInch / picturePerInch / axis.zoom + 0.5;
    return static_cast<uint32_t>(std::clamp<double>(size, 1, LARGEST));
}

// One ratio for both axes: the smaller one, so that the whole picture fits.
void Fit(const ScreenAxis& x, const ScreenAxis& y, ShownPicture& shown)
{
    const bool widthDecides = uint64_t{x.room} * y.pixels <= uint64_t{y.room} * x.pixels;
    const uint64_t room = widthDecides ? x.room : y.room, pixels = widthDecides ? x.pixels : y.pixels;
    shown.x.scaled = std::max(Scaled(x.pixels, room, pixels), 1u);
    shown.y.scaled = std::max(Scaled(y.pixels, room, pixels), 1u);
    shown.x.room = x.room;
    shown.y.room = y.room;
}

uint32_t Beside(uint32_t room, uint32_t taken)
{
    return room - std::min(room, taken);
}

// A scroll bar takes room from the other axis, which may then need one too.
void ChooseBars(const ScreenAxis& x, const ScreenAxis& y, ShownPicture& shown)
{
    shown.x.scrolls = shown.x.scaled > x.room;
    shown.y.scrolls = shown.y.scaled > (shown.x.scrolls ? Beside(y.room, y.taken) : y.room);
    shown.x.scrolls = shown.x.scaled > (shown.y.scrolls ? Beside(x.room, x.taken) : x.room);
    shown.x.room = shown.y.scrolls ? Beside(x.room, x.taken) : x.room;
    shown.y.room = shown.x.scrolls ? Beside(y.room, y.taken) : y.room;
}

// Device pixels before the window: the share of the hidden ones that the scroll bar says.
uint32_t Offset(const ShownAxis& axis, const ScrollBar& bar)
{
    const int64_t range = int64_t{bar.most} - bar.least;
    if (!axis.scrolls || range <= 0)
        return 0;
    const int64_t position = std::clamp<int64_t>(int64_t{bar.position} - bar.least, 0, range);
    const auto hidden = static_cast<double>(axis.scaled - axis.room);
    return static_cast<uint32_t>(hidden * static_cast<double>(position) / static_cast<double>(range) + 0.5);
}

void Scroll(ShownAxis& axis, const ScrollBar& bar)
{
    const uint32_t offset = Offset(axis, bar);
    axis.shown = std::min(axis.scaled - offset, axis.room);
    axis.first = std::min(Scaled(offset, axis.pixels, axis.scaled), axis.pixels - 1);
}

} // namespace

ShownPicture PlaceOnScreen(Placement placement, const ScreenAxis& x, const ScreenAxis& y)
{
    ShownPicture shown{};
    shown.x.pixels = x.pixels;
    shown.y.pixels = y.pixels;
    if (placement == Placement::Fit) {
        Fit(x, y, shown);
    } else {
        shown.x.scaled = placement == Placement::TrueSize ? TrueSize(x) : x.pixels;
        shown.y.scaled = placement == Placement::TrueSize ? TrueSize(y) : y.pixels;
        ChooseBars(x, y, shown);
    }
    Scroll(shown.x, x.scroll);
    Scroll(shown.y, y.scroll);
    return shown;
}

double ZoomRatio(const int32_t* zoom)
{
    if (!zoom || zoom[0] == 0 || zoom[1] == 0)
        return 1;
    const double ratio = static_cast<double>(zoom[1]) / zoom[0];
    return ratio > 0 ? ratio : 1;
}

void FillSpans(const ShownAxis& axis, bool mirrored, std::span<PixelSpan> spans)
{
    const auto beginOf = [&axis](uint64_t device) {
        return std::min<uint64_t>(axis.first + device * axis.pixels / axis.scaled, axis.pixels);
    };
    for (size_t device = 0; device < spans.size(); ++device) {
        const auto first = static_cast<uint32_t>(std::min<uint64_t>(beginOf(device), axis.pixels - 1));
        const auto end = std::max(static_cast<uint32_t>(beginOf(device + 1)), first + 1);
        if (mirrored)
            spans[spans.size() - 1 - device] = {axis.pixels - end, end - first};
        else
            spans[device] = {first, end - first};
    }
}

} // namespace tiff
