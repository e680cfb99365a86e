#include "raster/convert_gdi.h"

#include "core/errors.h"
#include "core/global_block.h"
#include "raster/dib.h"
#include "raster/palette_gdi.h"

#include <algorithm>

namespace tiff {

static constexpr uint32_t BILEVEL_COLOURS = 2;

HBITMAP CreateBitmapFor(HDC dc, uint32_t colourCount, int32_t width, int32_t height)
{
    if (width <= 0 || height <= 0)
        return nullptr;
    return colourCount == BILEVEL_COLOURS ? CreateBitmap(width, height, 1, 1, nullptr)
                                          : CreateCompatibleBitmap(dc, width, height);
}

uint32_t DibDepth(const BITMAP& bitmap)
{
    const uint32_t bits = uint32_t{bitmap.bmPlanes} * bitmap.bmBitsPixel;
    return bits == 1 ? 1 : bits <= 4 ? 4 : bits <= 8 ? 8 : 24;
}

// Fetches the rows and, up to 8 bits, the colours.
static bool FetchRows(HBITMAP bitmap, HPALETTE palette, BITMAPINFO& info, uint8_t* pixels)
{
    const WindowDc screen(nullptr);
    if (!screen)
        return false;
    const SelectedPalette selected(screen.Get(), palette);
    const auto rows = static_cast<UINT>(info.bmiHeader.biHeight);
    return GetDIBits(screen.Get(), bitmap, 0, rows, pixels, &info, DIB_RGB_COLORS) == static_cast<int>(rows);
}

HGLOBAL BitmapToDib(HBITMAP bitmap, HPALETTE palette)
{
    BITMAP description;
    if (!GetObjectA(bitmap, sizeof(description), &description)) {
        SetTiffError(error::InvalidHandle);
        return nullptr;
    }
    BITMAPINFOHEADER header{};
    header.biSize = sizeof(header);
    header.biWidth = description.bmWidth;
    header.biHeight = description.bmHeight;
    header.biPlanes = 1;
    header.biBitCount = static_cast<WORD>(DibDepth(description));
    const uint64_t imageBytes = DibStride(static_cast<uint32_t>(header.biWidth), header.biBitCount) *
                                static_cast<uint32_t>(header.biHeight);
    const uint32_t colours = StandardColours(header.biBitCount);
    const uint64_t pixelsAt = sizeof(header) + colours * sizeof(RGBQUAD);
    GlobalBlock block(imageBytes <= UINT32_MAX ? pixelsAt + imageBytes : UINT64_MAX);
    Locked<uint8_t> dib(block.Get());
    auto* info = reinterpret_cast<BITMAPINFO*>(dib.Get());
    if (dib)
        info->bmiHeader = header;
    if (!dib || !FetchRows(bitmap, palette, *info, dib.Get() + pixelsAt)) {
        SetTiffError(error::NotEnoughMemory);
        return nullptr;
    }
    // GDI leaves its own counts in the header.
    header.biSizeImage = static_cast<uint32_t>(imageBytes);
    header.biClrUsed = header.biClrImportant = colours;
    info->bmiHeader = header;
    dib.Unlock();
    return block.Release();
}

static Status PutRows(const DibView& view, const BITMAPINFO* info, GdiObject<HBITMAP>& bitmap,
                      HPALETTE palette)
{
    const WindowDc screen(nullptr);
    if (!screen)
        return error::NotEnoughMemory;
    const SelectedPalette selected(screen.Get(), palette);
    bitmap.Adopt(CreateBitmapFor(screen.Get(), view.ColourCount(), static_cast<int32_t>(view.width),
                                 static_cast<int32_t>(view.height)));
    if (!bitmap)
        return error::NotEnoughMemory;
    return SetDIBits(screen.Get(), bitmap.Get(), 0, view.height, view.pixels, info, DIB_RGB_COLORS)
               ? error::None
               : error::ColourFormat;
}

HBITMAP DibToBitmap(HGLOBAL dib, GdiObject<HPALETTE>& palette)
{
    const Locked<const uint8_t> block(dib);
    if (!block) {
        SetTiffError(error::NotEnoughMemory);
        return nullptr;
    }
    DibView view;
    Status status = ViewDib({block.Get(), GlobalSize(dib)}, view);
    if (status == error::None && view.compression != BI_RGB)
        status = error::BadDib; // the field holds a colour space
    GdiObject<HBITMAP> bitmap;
    if (status == error::None) {
        palette.Adopt(MakePalette(view.colours, view.colourBytes));
        status = PutRows(view, reinterpret_cast<const BITMAPINFO*>(block.Get()), bitmap, palette.Get());
    }
    if (status == error::None)
        return bitmap.Release();
    SetTiffError(status);
    return nullptr;
}

} // namespace tiff
