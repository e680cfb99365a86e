// Pages on the screen: the window's room and scroll bars, and bands of finished pixels to its device context.
#include "core/byte_order.h"
#include "core/desktop.h"
#include "core/errors.h"
#include "core/stream.h"
#include "raster/gdi_guards.h"
#include "raster/loaded_page.h"
#include "raster/palette_gdi.h"
#include "raster/screen.h"
#include "raster/screen_lines.h"
#include "tiff/cals.h"
#include "tiff/screen.h"

#include <algorithm>
#include <optional>

namespace tiff {

namespace {

// A BITMAPINFO of up to 256 colours.
struct BandInfo {
    BITMAPINFOHEADER header;
    std::array<RGBQUAD, 256> colours;
};

struct Drawing {
    const ScreenOrder& order;
    ScreenRows rows{};
    ShownPicture shown{};
    bool barsChanged = false;
    bool lost = false; // rows that GDI did not show
    BandInfo band{};
    std::optional<DevicePixels> pixels{};
    GdiObject<HPALETTE> palette{};
    std::optional<SelectedPalette> selected{};
    std::optional<ThreadDrawing> ofThread{};
};

Placement PlacementOf(uint32_t flags)
{
    return flags & TIFF_FIT         ? Placement::Fit
           : flags & TIFF_TRUE_SIZE ? Placement::TrueSize
                                    : Placement::Plain;
}

bool HasBar(HWND window, LONG_PTR style)
{
    return window && (GetWindowLongPtrA(window, GWL_STYLE) & style) != 0;
}

ScrollBar ScrollBarOf(HWND window, int bar)
{
    INT least = 0, most = 0;
    if (!window || !GetScrollRange(window, bar, &least, &most))
        return {};
    return {least, most, GetScrollPos(window, bar)};
}

// Nothing when GDI does not say.
std::optional<SIZE> RoomOf(const ScreenOrder& order)
{
    RECT room{};
    if (order.window ? !GetClientRect(order.window, &room) : GetClipBox(order.dc, &room) == ERROR)
        return std::nullopt;
    return SIZE{std::max<LONG>(room.right, 0), std::max<LONG>(room.bottom, 0)};
}

SIZE Room(const ScreenOrder& order)
{
    return RoomOf(order).value_or(SIZE{});
}

// The axes of the request. A turned picture has the other resolution on each.
ShownPicture Place(const ScreenOrder& order, const SIZE& room, const BITMAPINFOHEADER& header, Turn turn)
{
    ScreenAxis x{}, y{};
    x.pixels = static_cast<uint32_t>(header.biWidth);
    y.pixels = static_cast<uint32_t>(header.biHeight);
    x.picturePerInch = header.biXPelsPerMeter / INCHES_PER_METRE;
    y.picturePerInch = header.biYPelsPerMeter / INCHES_PER_METRE;
    if (AxesOf(turn).rowsAreColumns) {
        std::swap(x.pixels, y.pixels);
        std::swap(x.picturePerInch, y.picturePerInch);
    }
    x.devicePerInch = std::max(GetDeviceCaps(order.dc, LOGPIXELSX), 1);
    y.devicePerInch = std::max(GetDeviceCaps(order.dc, LOGPIXELSY), 1);
    x.zoom = ZoomRatio(order.zoom);
    y.zoom = ZoomRatio(order.zoom ? order.zoom + 2 : nullptr);
    x.scroll = ScrollBarOf(order.window, SB_HORZ);
    y.scroll = ScrollBarOf(order.window, SB_VERT);
    if (order.window) {
        x.taken = static_cast<uint32_t>(GetSystemMetrics(SM_CXVSCROLL));
        y.taken = static_cast<uint32_t>(GetSystemMetrics(SM_CYHSCROLL));
    }
    x.room = static_cast<uint32_t>(room.cx) + (HasBar(order.window, WS_VSCROLL) ? x.taken : 0);
    y.room = static_cast<uint32_t>(room.cy) + (HasBar(order.window, WS_HSCROLL) ? y.taken : 0);
    return PlaceOnScreen(PlacementOf(order.flags), x, y);
}

// True when the client area has changed.
bool ShowBar(HWND window, int bar, LONG_PTR style, bool scrolls)
{
    if (!scrolls)
        SetScrollPos(window, bar, 0, FALSE);
    if (HasBar(window, style) == scrolls)
        return false;
    ShowScrollBar(window, bar, scrolls);
    return true;
}

void ShowPixels(void* user, const ScreenBand& pixels)
{
    auto& drawing = *static_cast<Drawing*>(user);
    BITMAPINFOHEADER& header = drawing.band.header;
    // The width that gives the rows their stride.
    header.biWidth = static_cast<LONG>(pixels.stride * 8 / header.biBitCount);
    header.biHeight = -static_cast<LONG>(pixels.height);
    const int shown = SetDIBitsToDevice(
        drawing.order.dc, static_cast<int>(pixels.x), static_cast<int>(pixels.y), pixels.width, pixels.height,
        0, 0, 0, pixels.height, pixels.rows, reinterpret_cast<BITMAPINFO*>(&drawing.band), DIB_RGB_COLORS);
    const auto x = static_cast<LONG>(pixels.x), y = static_cast<LONG>(pixels.y);
    const RECT band = {x, y, x + static_cast<LONG>(pixels.width), y + static_cast<LONG>(pixels.height)};
    // None are shown where the device context lets nothing through.
    drawing.lost |= shown == 0 && RectVisible(drawing.order.dc, &band);
}

BandInfo DescribeBand(const ScreenRows& rows)
{
    BandInfo band{.header = {}, .colours = rows.colours};
    band.header.biSize = sizeof(band.header);
    band.header.biPlanes = 1;
    band.header.biBitCount = static_cast<WORD>(BitsOf(rows.form));
    band.header.biClrUsed = rows.colourCount;
    return band;
}

// A window without a brush of its class gets the system's window colour.
HBRUSH BackgroundOf(HWND window)
{
    const ULONG_PTR brush = window ? GetClassLongPtrA(window, GCLP_HBRBACKGROUND) : 0;
    return reinterpret_cast<HBRUSH>(brush ? brush : ULONG_PTR{COLOR_WINDOW + 1});
}

void PaintBesidePicture(const Drawing& drawing)
{
    const SIZE room = Room(drawing.order);
    const auto right = static_cast<LONG>(drawing.shown.x.shown),
               bottom = static_cast<LONG>(drawing.shown.y.shown);
    const RECT strips[] = {{right, 0, room.cx, room.cy}, {0, bottom, right, room.cy}};
    for (const RECT& strip : strips)
        if (strip.left < strip.right && strip.top < strip.bottom)
            FillRect(drawing.order.dc, &strip, BackgroundOf(drawing.order.window));
}

// A device context of BeginPaint does not reach what a hidden scroll bar has left: that is drawn next time.
void ValidateDrawn(const Drawing& drawing)
{
    HWND window = drawing.order.window;
    if (!window)
        return;
    ValidateRect(window, nullptr);
    RECT clip;
    if (!drawing.barsChanged || GetClipBox(drawing.order.dc, &clip) == ERROR)
        return;
    const SIZE room = Room(drawing.order);
    const RECT strips[] = {{clip.right, 0, room.cx, room.cy}, {0, clip.bottom, room.cx, room.cy}};
    for (const RECT& strip : strips)
        if (strip.left < strip.right && strip.top < strip.bottom)
            InvalidateRect(window, &strip, FALSE);
}

Status BeginDrawing(void* record, const PictureFormat& format, LineTarget& target)
{
    auto& drawing = *static_cast<Drawing*>(record);
    const ScreenOrder& order = drawing.order;
    const auto turn = static_cast<Turn>(order.flags & 3);
    if (!ShowsOnScreen(format))
        return error::ColourFormat;
    if (format.stored.biWidth <= 0 || format.stored.biHeight <= 0)
        return error::TagsMissing;
    drawing.pixels.emplace(order.dc);
    const std::optional<SIZE> room = RoomOf(order);
    if (!*drawing.pixels || !room)
        return error::NotEnoughMemory;
    drawing.shown = Place(order, *room, format.stored, turn);
    const ScreenRowsOrder rows{.shown = drawing.shown,
                               .turn = turn,
                               .grey = (order.flags & TIFF_GREY_SCREEN) != 0 &&
                                       PlacementOf(order.flags) != Placement::Plain,
                               .inverted = (order.flags & TIFF_INVERT_SCREEN) != 0};
    drawing.rows.show = ShowPixels;
    drawing.rows.user = &drawing;
    if (const Status status = BeginScreenRows(drawing.rows, format, rows); status != error::None)
        return status;
    drawing.band = DescribeBand(drawing.rows);
    if (order.window) {
        const bool across = ShowBar(order.window, SB_HORZ, WS_HSCROLL, drawing.shown.x.scrolls);
        const bool down = ShowBar(order.window, SB_VERT, WS_VSCROLL, drawing.shown.y.scrolls);
        drawing.barsChanged = across || down;
    }
    drawing.palette.Adopt(MakePalette({reinterpret_cast<const uint8_t*>(drawing.rows.colours.data()),
                                       drawing.rows.colourCount * sizeof(RGBQUAD)},
                                      sizeof(RGBQUAD)));
    drawing.selected.emplace(order.dc, drawing.palette.Get());
    drawing.ofThread.emplace(drawing.rows);
    target = {ScreenRoutine(format.stored.biBitCount, turn), &drawing.rows, format.lineBytes};
    return error::None;
}

Status EndDrawing(void* record, Status status)
{
    auto& drawing = *static_cast<Drawing*>(record);
    if (!drawing.ofThread)
        return status;
    EndScreenRows(drawing.rows);
    if (PlacementOf(drawing.order.flags) != Placement::Fit)
        PaintBesidePicture(drawing);
    ValidateDrawn(drawing);
    return status == error::None && drawing.lost ? Status{error::NotEnoughMemory} : status;
}

Status DrawPage(const ScreenOrder& order, const char* path, uint32_t page)
{
    if (!path || !*path || !order.dc)
        return error::InvalidParameters;
    const LoadedPage loaded(path, page);
    if (loaded.LoadStatus() != error::None)
        return loaded.LoadStatus();
    const BusyCursor busy;
    RowSource source{};
    const Status status = OpenPageRows(loaded.File(), page, PageRows::Any, source);
    return status == error::None ? DrawRows(source, order) : status;
}

constexpr uint32_t VERSION = 42; // behind the byte order

bool BeginsAsTiff(const char* path)
{
    if (!path || !*path)
        return false;
    const Stream file(OpenForReading(path));
    std::array<uint8_t, 4> mark;
    if (!file || ReadStream(file.Get(), mark.data(), mark.size()) != mark.size())
        return false;
    const uint32_t byteOrder = Load16(mark.data(), TIFF_INTEL);
    return (byteOrder == TIFF_INTEL || byteOrder == TIFF_MOTOROLA) && Load16(&mark[2], byteOrder) == VERSION;
}

uint32_t FormatOfFile(const char* path)
{
    if (BeginsAsTiff(path))
        return TIFF_FORMAT_TIFF;
    GlobalBlock header;
    header.Adopt(ReadCALSHead(path));
    return header ? TIFF_FORMAT_CALS : TIFF_FORMAT_ANY;
}

} // namespace

Status DrawRows(const RowSource& source, const ScreenOrder& order)
{
    Drawing drawing{order};
    RowSink sink{.begin = BeginDrawing, .end = EndDrawing, .record = &drawing, .lines = {}};
    return SendRows(source, sink);
}

} // namespace tiff

using namespace tiff;

extern "C" int32_t DecompressToScreen(uint32_t format, HWND window, HDC dc, const char* path, uint32_t page,
                                      const int32_t* zoom, uint32_t flags) noexcept
{
    if (format == TIFF_FORMAT_ANY)
        format = FormatOfFile(path);
    if (format == TIFF_FORMAT_CALS)
        return DecompressCALSToScreen(window, dc, path, zoom, flags);
    if (format == TIFF_FORMAT_ANY)
        return 0;
    const Status status = format == TIFF_FORMAT_TIFF ? DrawPage({window, dc, zoom, flags}, path, page)
                                                     : Status{error::InvalidParameters};
    StoreLastError(status);
    return status == error::None;
}
