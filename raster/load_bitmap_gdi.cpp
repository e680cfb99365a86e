// Pages to bitmaps: the page's header as it is, and the decode driver with GDI at its end.
#include "codecs/buffers.h"
#include "core/desktop.h"
#include "core/errors.h"
#include "core/global_block.h"
#include "raster/bitmap_lines_gdi.h"
#include "raster/convert_gdi.h"
#include "raster/load_dialog.h"
#include "raster/loaded_page.h"
#include "raster/palette_gdi.h"
#include "raster/whole_jpeg.h"
#include "tiff/lines.h"
#include "tiff/load.h"

namespace tiff {

namespace {

// GDI reads up to three bytes behind a row.
static_assert(SPARE_LINE_BYTES >= sizeof(uint32_t) - 1);

// Wanted: a page without a header leaves the wait cursor behind.
void LeaveWaitCursor()
{
    SetCursor(LoadCursorA(nullptr, MAKEINTRESOURCEA(32514)));
}

// Whole 16-bit words.
uint32_t LineBytes(const BITMAPINFOHEADER& header)
{
    const uint64_t bits = uint64_t{static_cast<uint32_t>(header.biWidth)} * header.biBitCount;
    return static_cast<uint32_t>((bits + 15) / 8) & ~1u;
}

// Decodes a page into the bitmap; what the driver reports is the last error. GDI wants a bitmap
// that is selected nowhere.
void DecodeRows(HGLOBAL file, uint32_t page, HDC screen, HBITMAP bitmap, HGLOBAL block)
{
    const BITMAPINFOHEADER header = *Locked<BITMAPINFOHEADER>(block);
    TiffDecodeLineContext context{};
    context.deviceContext = screen;
    context.bitmap = bitmap;
    context.dib = block;
    context.height = static_cast<uint32_t>(header.biHeight);
    context.lineBytes = LineBytes(header);
    context.strideOrColourUse = DIB_RGB_COLORS;
    TiffLineCallback routine = DllFlushTiffLine;
    if (header.biBitCount == 24)
        routine = IsYCbCr(PageTags(file, page)) ? FlushYCbCrLine : DllFlushTiffLine24;
    DecodeTiffImage(file, page, 0, 0, &context, routine);
}

HBITMAP LoadJpegPage(HGLOBAL file, uint32_t page, GdiObject<HBITMAP>& begun)
{
    const NamedTiff named(file);
    if (!named) {
        // Wanted: the empty bitmap goes out with this error standing.
        SetTiffError(error::BadDib);
        return begun.Release();
    }
    Status status = error::None;
    HBITMAP whole = LoadWholeJpegBitmap(named.Path(), page, status);
    StoreLastError(status);
    return whole;
}

HBITMAP LoadBitmap(HGLOBAL file, uint32_t page, HDC screen, HGLOBAL block)
{
    const BusyCursor busy;
    SetTiffError(error::NotEnoughMemory); // stands until the driver has run
    GdiObject<HPALETTE> palette;
    GdiObject<HBITMAP> bitmap;
    {
        const Locked<BITMAPINFO> info(block);
        const BITMAPINFOHEADER& header = info->bmiHeader;
        palette.Adopt(MakePalette(*info));
        bitmap.Adopt(CreateBitmapFor(screen, header.biClrUsed, header.biWidth, header.biHeight));
    }
    const SelectedPalette selected(screen, palette.Get());
    if (!bitmap)
        return nullptr;
    if (SharesChroma(PageTags(file, page))) {
        SetTiffError(error::ColourFormat);
        return nullptr;
    }
    DecodeRows(file, page, screen, bitmap.Get(), block);
    if (IsLeftToJpegCodec())
        return LoadJpegPage(file, page, bitmap);
    // Wanted: unlike DIBs, bitmaps are not kept with errors 19 and 20.
    const Status status = TiffError();
    return status == error::None || status == error::UnexpectedEndOfFile ? bitmap.Release() : nullptr;
}

} // namespace

} // namespace tiff

using namespace tiff;

extern "C" HBITMAP LoadTiffChainIntoBitmap(HGLOBAL file, uint32_t page) noexcept
{
    if (!file)
        return nullptr;
    const WindowDc screen(nullptr);
    if (!screen)
        return nullptr;
    GlobalBlock block;
    block.Adopt(GetTiffRGBQuad(file, page));
    if (!block) {
        LeaveWaitCursor();
        return nullptr;
    }
    return LoadBitmap(file, page, screen.Get(), block.Get());
}

extern "C" HBITMAP LoadTiffIntoBitmap(const char* path, uint32_t page, int32_t dialog) noexcept
{
    const LoadedPage loaded(path, page);
    if (!loaded || !PassLoadDialog(dialog, loaded.File(), page))
        return nullptr;
    return LoadTiffChainIntoBitmap(loaded.File(), page);
}

extern "C" HBITMAP LoadTiffFileIntoBitmap(const char* path, uint32_t page, int32_t dialog) noexcept
{
    return LoadTiffIntoBitmap(path, page, dialog);
}
