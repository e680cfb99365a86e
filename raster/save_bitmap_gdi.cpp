// GDI bitmaps to new pages and to bare CCITT code, and the bitmap on the clipboard. The device fetches the
// rows; all later steps are those of a DIB.
#include "core/desktop.h"
#include "core/errors.h"
#include "core/file_rewrite.h"
#include "core/global_block.h"
#include "core/handles.h"
#include "core/image_description.h"
#include "raster/bitmap_lines_gdi.h"
#include "raster/convert_gdi.h"
#include "raster/dib.h"
#include "raster/palette_gdi.h"
#include "raster/save_page.h"
#include "raster/save_settings.h"
#include "tiff/ccitt.h"
#include "tiff/codecs.h"
#include "tiff/files.h"
#include "tiff/lines.h"
#include "tiff/save.h"

#include <algorithm>
#include <array>

namespace tiff {

namespace {

// The colours that the device's rows will index. Fetching one row fills them in.
struct BitmapColours {
    BITMAPINFOHEADER header;
    std::array<RGBQUAD, 256> colours;
};

Status FetchColours(HBITMAP bitmap, uint32_t bits, BitmapColours& info)
{
    info.header = {};
    info.header.biSize = sizeof(info.header);
    info.header.biPlanes = 1;
    info.header.biBitCount = static_cast<WORD>(bits);
    BITMAP described;
    if (!GetObjectA(bitmap, sizeof(described), &described))
        return error::InvalidHandle;
    info.header.biWidth = described.bmWidth;
    info.header.biHeight = described.bmHeight;
    GlobalBlock row(DibStride(static_cast<uint32_t>(described.bmWidth), bits));
    Locked<uint8_t> bytes(row.Get());
    const WindowDc screen(nullptr);
    const bool fetched = bytes && screen &&
                         GetDIBits(screen.Get(), bitmap, 0, 1, bytes.Get(),
                                   reinterpret_cast<BITMAPINFO*>(&info), DIB_RGB_COLORS);
    return fetched ? error::None : error::NotEnoughMemory;
}

Status FormatOfBitmap(HBITMAP bitmap, PictureFormat& format)
{
    BITMAP described;
    if (!GetObjectA(bitmap, sizeof(described), &described))
        return error::InvalidHandle;
    BITMAPINFOHEADER& header = format.stored;
    header.biSize = sizeof(header);
    header.biWidth = described.bmWidth;
    header.biHeight = described.bmHeight;
    header.biPlanes = 1;
    header.biBitCount = static_cast<WORD>(DibDepth(described));
    header.biClrUsed = 1u << header.biBitCount;
    format.lineBytes =
        static_cast<uint32_t>((uint64_t{static_cast<uint32_t>(header.biWidth)} * header.biBitCount + 7) / 8);
    if (header.biBitCount > 8)
        return error::None;
    BitmapColours info;
    if (const Status status = FetchColours(bitmap, header.biBitCount, info); status != error::None)
        return status;
    std::copy_n(info.colours.begin(), header.biClrUsed, format.colours.begin());
    return error::None;
}

// The form in which GDI gives the bitmap's rows: that of the page.
BitmapColours InfoOfPage(const PagePlan& plan)
{
    BitmapColours info{};
    info.header = plan.format.stored;
    info.header.biBitCount = static_cast<WORD>(WrittenBits(plan));
    info.header.biClrUsed = info.header.biClrImportant = StandardColours(info.header.biBitCount);
    const std::span colours(info.colours.data(), info.header.biClrUsed);
    if (plan.photometric == photometric::Palette)
        info.colours = plan.format.colours;
    else
        FillPlainColours(colours, info.header.biClrImportant, plan.photometric);
    return info;
}

TiffLineCallback RoutineFor(uint32_t colours)
{
    return colours == 2 ? FillMonoBitmapLine : colours != 0 ? FillBitmapLine : FillSwappedBitmapLine;
}

// Rows of a bitmap as levels: GDI gives them in true colour, whatever the bitmap's depth.
struct LevelRows {
    TiffEncodeLineContext context;
    uint8_t* row; // of blue, green and red
    uint32_t width;
};

intptr_t FillGreyLevels(void* line, uint32_t row, void* record)
{
    auto& rows = *static_cast<LevelRows*>(record);
    const intptr_t status = FillBitmapLine(rows.row, row, &rows.context);
    auto* const levels = static_cast<uint8_t*>(line);
    for (uint32_t column = 0; column < rows.width; ++column)
        levels[column] = rows.row[size_t{column} * 3 + 1];
    return status;
}

Status AppendLevels(const SaveRequest& request, const PagePlan& plan, BITMAPINFO* info,
                    TiffEncodeLineContext& lines)
{
    info->bmiHeader.biBitCount = 24;
    info->bmiHeader.biClrUsed = info->bmiHeader.biClrImportant = 0;
    if (plan.jpegBits == 24)
        return AppendPageToFile(request, plan, {FillBitmapLine, &lines});
    const auto width = static_cast<uint32_t>(info->bmiHeader.biWidth);
    const GlobalBlock block(DibStride(width, 24));
    const Locked<uint8_t> row(block.Get());
    if (!row)
        return error::NotEnoughMemory;
    LevelRows rows = {lines, row.Get(), width};
    return AppendPageToFile(request, plan, {FillGreyLevels, &rows});
}

Status AppendBitmap(HBITMAP bitmap, const SaveRequest& request, const PagePlan& plan)
{
    BitmapColours info = InfoOfPage(plan);
    auto* const described = reinterpret_cast<BITMAPINFO*>(&info);
    const WindowDc window(GetActiveWindow());
    if (!window)
        return error::NotEnoughMemory;
    const GdiObject<HPALETTE> palette(MakePalette(*described));
    const SelectedPalette selected(window.Get(), palette.Get());
    TiffEncodeLineContext lines{};
    lines.deviceContext = window.Get();
    lines.bitmap = bitmap;
    lines.bitmapInfo = described;
    lines.strideOrColourUse = DIB_RGB_COLORS;
    if (plan.jpegBits)
        return AppendLevels(request, plan, described, lines);
    return AppendPageToFile(request, plan, {RoutineFor(info.header.biClrUsed), &lines});
}

int32_t SaveBitmap(HBITMAP bitmap, const SaveRequest& request)
{
    PictureFormat format{};
    PagePlan plan;
    Status status = FormatOfBitmap(bitmap, format);
    if (status == error::None)
        status = PlanPage(request, format, plan);
    return FinishSave(status == error::None ? AppendBitmap(bitmap, request, plan) : status);
}

struct CcittType {
    uint32_t type, compression;
};

constexpr CcittType ccittTypes[] = {
    {5, compression::Group3},
    {6, compression::ModifiedHuffman},
    {7, compression::Group3 | compression::TwoDimensional},
    {8, compression::Group4},
    {9, compression::Stored},
};

uint32_t CcittCompression(uint32_t type)
{
    for (const CcittType& known : ccittTypes)
        if (known.type == type)
            return known.compression;
    return 0;
}

// Gives DllFillCcittLine the bitmap information of this thread, for a scope.
class CcittSource {
public:
    explicit CcittSource(BITMAPINFO* info)
    {
        ThreadRaster().ccittSource = info;
    }
    CcittSource(const CcittSource&) = delete;
    CcittSource& operator=(const CcittSource&) = delete;
    ~CcittSource()
    {
        ThreadRaster().ccittSource = nullptr;
    }
};

int32_t EncodeBareBitmap(HANDLE file, HBITMAP bitmap, uint32_t compression)
{
    BitmapColours info;
    if (const Status status = FetchColours(bitmap, 1, info); status != error::None)
        return FinishSave(status);
    const WindowDc screen(nullptr);
    if (!screen)
        return FinishSave(error::NotEnoughMemory);
    const CcittSource lent(reinterpret_cast<BITMAPINFO*>(&info));
    const BusyCursor busy;
    TiffEncodeLineContext context{};
    context.deviceContext = screen.Get();
    context.bitmap = bitmap;
    return EncodeCcittImageTo(reinterpret_cast<intptr_t>(file), static_cast<uint32_t>(info.header.biWidth),
                              static_cast<uint32_t>(info.header.biHeight), TIFF_LSB_FIRST, TIFF_INTEL,
                              compression, &context, FillCcittLine);
}

// An old file goes when the new one is whole.
int32_t ReplaceWithCode(const char* path, HBITMAP bitmap, uint32_t compression)
{
    Replacement rewritten(path, Naming::InFolder, OnFailure::DeleteNew);
    if (!rewritten)
        return FinishSave(rewritten.NameStatus());
    {
        const FileHandle file(rewritten.Name(), GENERIC_READ | GENERIC_WRITE, CREATE_ALWAYS);
        if (!file)
            return FinishSave(error::InputOutput);
        if (!EncodeBareBitmap(file.Get(), bitmap, compression))
            return 0;
    }
    const Status status = rewritten.Commit();
    return status == error::None ? 1 : FinishSave(status);
}

// The clipboard keeps the bitmap; it must only be closed again before the bitmap is used.
Status BitmapOnClipboard(HBITMAP& bitmap)
{
    if (!IsClipboardFormatAvailable(CF_BITMAP))
        return error::ClipboardNotBitmap;
    const OpenedClipboard clipboard;
    if (!clipboard)
        return error::ClipboardNotOpened;
    bitmap = static_cast<HBITMAP>(GetClipboardData(CF_BITMAP));
    return bitmap ? error::None : error::ClipboardNoBitmap;
}

} // namespace

} // namespace tiff

using namespace tiff;

extern "C" int32_t SaveBitmapInTiffFileExt(const char* path, HBITMAP bitmap, uint32_t selector,
                                           int32_t dialog, uint32_t fillOrder) noexcept
{
    return SaveBitmap(bitmap, {path, selector, dialog, fillOrder, bitmapSave});
}

extern "C" int32_t SaveBitmapInTiffFile(const char* path, HBITMAP bitmap, uint32_t selector,
                                        int32_t dialog) noexcept
{
    return SaveBitmapInTiffFileExt(path, bitmap, selector, dialog, TIFF_MSB_FIRST);
}

extern "C" int32_t SaveBitmapInTiffFormat(const char* path, HBITMAP bitmap, uint32_t selector,
                                          int32_t dialog) noexcept
{
    return SaveBitmapInTiffFile(path, bitmap, selector, dialog);
}

extern "C" int32_t SaveTiffFileFromClipboard(const char* path, uint32_t selector, int32_t dialog) noexcept
{
    HBITMAP bitmap = nullptr;
    if (const Status status = BitmapOnClipboard(bitmap); status != error::None)
        return FinishSave(status);
    return SaveBitmapInTiffFileExt(path, bitmap, selector, dialog, TIFF_LSB_FIRST);
}

extern "C" int32_t SaveBitmapInCcittFile(const char* path, HBITMAP bitmap, uint32_t type) noexcept
{
    const uint32_t compression = CcittCompression(type);
    if (compression == 0)
        return 0;
    if (!path)
        return FinishSave(error::InvalidParameters);
    BITMAP described;
    if (!GetObjectA(bitmap, sizeof(described), &described))
        return FinishSave(error::InvalidHandle);
    return ReplaceWithCode(path, bitmap, compression);
}
