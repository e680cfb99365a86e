// Text files on forms, and strings on copies of pictures.
#include "compose/overlay_lines.h"
#include "compose/text_pages_gdi.h"
#include "core/desktop.h"
#include "core/errors.h"
#include "core/global_block.h"
#include "raster/convert_gdi.h"
#include "raster/dib.h"
#include "raster/gdi_guards.h"
#include "tiff/load.h"
#include "tiff/overlays.h"

#include <algorithm>
#include <cstring>

namespace tiff {

namespace {

struct OverlayText {
    int32_t x, y;
    const char* text;
    const char* faceName;
    uint32_t fontSize;
    DotsPerInch resolution; // 0 for the screen's
};

// Draws on the first page of the form. As a bitmap the form itself is delivered, else it is deleted.
uint32_t DrawOnForm(const char* formPath, const TiffTextPageSettings* settings, uint32_t pageLimit,
                    HANDLE* pages, uint32_t kind, uint32_t startY)
{
    if (!formPath)
        SetTiffError(error::InvalidParameters);
    if (!formPath || !settings || !pages)
        return 0;
    const BusyCursor busy;
    GdiObject<HBITMAP> form(LoadTiffIntoBitmap(formPath, 0, 0));
    if (!form)
        return 0;
    const uint32_t count =
        CreateMultiPageFromASCII(settings, pageLimit, pages, kind, form.Get(), startY, nullptr);
    if (count != 0 && kind == TIFF_TEXT_BITMAP)
        form.Release();
    return count;
}

HANDLE DrawFirstPage(const char* formPath, const TiffTextPageSettings* settings, uint32_t kind)
{
    HANDLE page = nullptr;
    return DrawOnForm(formPath, settings, 1, &page, kind, 0) ? page : nullptr;
}

// Deliberate: the clip rectangle begins at the unscaled position, and from the second line on at the line.
bool DrawLines(HDC dc, const OverlayText& overlay, DotsPerInch screen, RECT clip, int32_t lineHeight)
{
    const int32_t x = ScaleDistance(overlay.x, overlay.resolution.horizontal, screen.horizontal);
    int64_t y = ScaleDistance(overlay.y, overlay.resolution.vertical, screen.vertical);
    const char* rest = overlay.text;
    for (OverlayLine line; TakeLine(rest, line);) {
        y += int64_t{line.linesDown} * lineHeight;
        if (y >= clip.bottom)
            return true;
        if (line.linesDown != 0)
            clip.top = static_cast<LONG>(y);
        if (!ExtTextOutA(dc, x, static_cast<int>(y), ETO_CLIPPED, &clip, line.text.data(),
                         static_cast<UINT>(line.text.size()), nullptr))
            return false;
    }
    return true;
}

bool DrawOverlay(HBITMAP bitmap, const OverlayText& overlay)
{
    BITMAP described;
    const MemoryDc dc;
    if (!dc || !GetObjectA(bitmap, sizeof(described), &described))
        return false;
    const DotsPerInch screen = ScreenResolution();
    const uint32_t down = overlay.resolution.vertical ? overlay.resolution.vertical : screen.vertical;
    int32_t height = 0;
    if (!FontHeight(overlay.fontSize, down, height))
        return false;
    const LOGFONTA face = FontOfFace(overlay.faceName, std::strlen(overlay.faceName), height);
    const GdiObject<HFONT> font(CreateFontIndirectA(&face));
    const Selected selectedPage(dc.Get(), bitmap), selectedFont(dc.Get(), font.Get());
    TEXTMETRICA metrics;
    if (!selectedPage || !selectedFont || !GetTextMetricsA(dc.Get(), &metrics))
        return false;
    const RECT clip = {std::max(overlay.x, 0), std::max(overlay.y, 0), described.bmWidth, described.bmHeight};
    SetBkMode(dc.Get(), TRANSPARENT);
    return clip.left >= clip.right || clip.top >= clip.bottom ||
           DrawLines(dc.Get(), overlay, screen, clip, metrics.tmHeight + metrics.tmExternalLeading);
}

// Works for bitmaps that are selected somewhere, too.
HBITMAP CopyBitmap(HBITMAP bitmap)
{
    BITMAP described;
    if (!GetObjectA(bitmap, sizeof(described), &described) || described.bmWidth <= 0 ||
        described.bmHeight <= 0)
        return nullptr;
    const uint64_t rowBytes =
        (uint64_t{static_cast<uint32_t>(described.bmWidth)} * described.bmBitsPixel + 15) / 16 * 2;
    const uint64_t bytes = rowBytes * static_cast<uint32_t>(described.bmHeight) * described.bmPlanes;
    if (bytes > INT32_MAX)
        return nullptr;
    const GlobalBlock block(bytes);
    const Locked<uint8_t> bits(block.Get());
    if (!bits || GetBitmapBits(bitmap, static_cast<LONG>(bytes), bits.Get()) != static_cast<LONG>(bytes))
        return nullptr;
    described.bmWidthBytes = static_cast<LONG>(rowBytes);
    described.bmBits = bits.Get();
    return CreateBitmapIndirect(&described);
}

HGLOBAL DrawOnCopy(HGLOBAL dib, OverlayText overlay)
{
    GdiObject<HPALETTE> palette;
    const GdiObject<HBITMAP> bitmap(DibToBitmap(dib, palette));
    const Locked<const uint8_t> block(dib);
    DibView view;
    if (!bitmap || !block || ViewDib({block.Get(), GlobalSize(dib)}, view) != error::None)
        return nullptr;
    overlay.resolution = {ToDotsPerInch(view.dotsPerMetreX), ToDotsPerInch(view.dotsPerMetreY)};
    if (!DrawOverlay(bitmap.Get(), overlay))
        return nullptr;
    GlobalBlock drawn;
    drawn.Adopt(BitmapToDib(bitmap.Get(), palette.Get()));
    const Locked<BITMAPINFOHEADER> header(drawn.Get());
    if (!header)
        return nullptr;
    header->biXPelsPerMeter = view.dotsPerMetreX;
    header->biYPelsPerMeter = view.dotsPerMetreY;
    return drawn.Release();
}

} // namespace

} // namespace tiff

using namespace tiff;

extern "C" HBITMAP BitmapFormOverlay(const char* formPath, const TiffTextPageSettings* settings) noexcept
{
    return static_cast<HBITMAP>(DrawFirstPage(formPath, settings, TIFF_TEXT_BITMAP));
}

extern "C" HGLOBAL DIBFormOverlay(const char* formPath, const TiffTextPageSettings* settings) noexcept
{
    return DrawFirstPage(formPath, settings, TIFF_TEXT_DIB);
}

extern "C" uint32_t DIBFormOverlayExt(const char* formPath, const TiffTextPageSettings* settings,
                                      HANDLE* pages, uint32_t pageLimit, uint32_t startY) noexcept
{
    return DrawOnForm(formPath, settings, pageLimit, pages, TIFF_TEXT_DIB, startY);
}

extern "C" HBITMAP BitmapTextOverlay(HBITMAP bitmap, int32_t x, int32_t y, const char* text,
                                     const char* faceName, uint32_t fontSize, uint32_t horizontalDpi,
                                     uint32_t verticalDpi) noexcept
{
    if (!bitmap || !text || !faceName)
        return nullptr;
    const BusyCursor busy;
    GdiObject<HBITMAP> copy(CopyBitmap(bitmap));
    const bool drawn =
        copy && DrawOverlay(copy.Get(), {x, y, text, faceName, fontSize, {horizontalDpi, verticalDpi}});
    return drawn ? copy.Release() : nullptr;
}

extern "C" HGLOBAL DIBTextOverlay(HGLOBAL dib, int32_t x, int32_t y, const char* text, const char* faceName,
                                  uint32_t fontSize) noexcept
{
    if (!dib || !text || !faceName)
        return nullptr;
    const BusyCursor busy;
    return DrawOnCopy(dib, {x, y, text, faceName, fontSize, {}});
}
