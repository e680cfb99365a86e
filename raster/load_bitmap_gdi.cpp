// Pages to bitmaps: the page's header unchanged, and the decode driver with GDI at its end.
#include "codecs/buffers.h"
#include "codecs/decode_quality.h"
#include "core/desktop.h"
#include "core/errors.h"
#include "core/global_block.h"
#include "raster/bitmap_lines_gdi.h"
#include "raster/convert_gdi.h"
#include "raster/load_dialog.h"
#include "raster/loaded_page.h"
#include "raster/palette_gdi.h"
#include "raster/row_source.h"
#include "tiff/lines.h"
#include "tiff/load.h"

#include <cstring>
#include <optional>

namespace tiff {

namespace {

// GDI reads up to three bytes behind a row.
static_assert(SPARE_LINE_BYTES >= sizeof(uint32_t) - 1);

// Deliberate: a page without a header leaves the wait cursor behind.
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

// Rows go to GDI as the page stores them; GDI converts them by the header.
struct BitmapRecord {
    HDC screen;
    GlobalBlock info;
    GdiObject<HPALETTE> palette;
    GdiObject<HBITMAP> bitmap;
    std::optional<SelectedPalette> selected;
    TiffDecodeLineContext lines{};
};

Status MakeBitmap(BitmapRecord& record, const PictureFormat& format)
{
    const BITMAPINFOHEADER& header = format.stored;
    record.info = GlobalBlock(sizeof(header) + sizeof(format.colours));
    const Locked<BITMAPINFO> info(record.info.Get());
    if (!info)
        return error::NotEnoughMemory;
    info->bmiHeader = header;
    std::memcpy(info->bmiColors, format.colours.data(), sizeof(format.colours));
    record.palette.Adopt(MakePalette(*info));
    record.bitmap.Adopt(CreateBitmapFor(record.screen, header.biClrUsed, header.biWidth, header.biHeight));
    record.selected.emplace(record.screen, record.palette.Get());
    return record.bitmap ? error::None : error::NotEnoughMemory;
}

// GDI wants the bitmap selected nowhere.
Status BeginBitmap(void* sink, const PictureFormat& format, LineTarget& target)
{
    auto& record = *static_cast<BitmapRecord*>(sink);
    if (const Status status = MakeBitmap(record, format); status != error::None)
        return status;
    if (format.sharesChroma)
        return error::ColourFormat;
    record.lines.deviceContext = record.screen;
    record.lines.bitmap = record.bitmap.Get();
    record.lines.dib = record.info.Get();
    record.lines.height = static_cast<uint32_t>(format.stored.biHeight);
    record.lines.lineBytes = LineBytes(format.stored);
    record.lines.strideOrColourUse = DIB_RGB_COLORS;
    target = {FlushBitmapLine, &record.lines};
    if (format.stored.biBitCount == 24 && format.conversion != Conversion::Copy)
        target.routine = format.conversion == Conversion::YCbCr ? FlushYCbCrLine : FlushSwappedBitmapLine;
    return error::None;
}

// Deliberate: unlike DIBs, bitmaps are not kept with errors 19 and 20.
Status EndBitmap(void* sink, Status status)
{
    if (status != error::None && status != error::UnexpectedEndOfFile)
        static_cast<BitmapRecord*>(sink)->bitmap.Adopt(nullptr);
    return status;
}

HBITMAP RowsToBitmap(const RowSource& source, HDC screen)
{
    const BusyCursor busy;
    BitmapRecord record{.screen = screen};
    RowSink sink{.begin = BeginBitmap, .end = EndBitmap, .record = &record, .lines = {}};
    StoreLastError(SendRows(source, sink));
    return record.bitmap.Release();
}

} // namespace

} // namespace tiff

using namespace tiff;

extern "C" HBITMAP LoadTiffChainIntoBitmap(HGLOBAL file, uint32_t page) noexcept
{
    if (!file)
        return nullptr;
    const WindowDc screen(nullptr);
    if (!screen) {
        SetTiffError(error::NotEnoughMemory);
        return nullptr;
    }
    RowSource source{};
    if (const Status status = OpenPageRows(file, page, PageRows::Any, source); status != error::None) {
        SetTiffError(status);
        LeaveWaitCursor();
        return nullptr;
    }
    return RowsToBitmap(source, screen.Get());
}

extern "C" HBITMAP LoadTiffIntoBitmap(const char* path, uint32_t page, int32_t dialog) noexcept
{
    const LoadedPage loaded(path, page);
    Status status = loaded.LoadStatus();
    if (status == error::None)
        status = ShowLoadDialog(dialog, loaded.File(), page);
    if (status == error::None)
        return LoadTiffChainIntoBitmap(loaded.File(), page);
    ForgetQuality(); // of a page before
    RefuseLoad(status);
    return nullptr;
}

extern "C" HBITMAP LoadTiffFileIntoBitmap(const char* path, uint32_t page, int32_t dialog) noexcept
{
    return LoadTiffIntoBitmap(path, page, dialog);
}
