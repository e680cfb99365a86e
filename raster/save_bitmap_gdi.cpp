// GDI bitmaps to new pages and to bare CCITT code, and the bitmap on the clipboard. The device
// fetches the rows; from there on a bitmap is saved like a DIB.
#include "core/desktop.h"
#include "core/errors.h"
#include "core/global_block.h"
#include "core/handles.h"
#include "core/thread_state.h"
#include "raster/convert_gdi.h"
#include "raster/dib.h"
#include "raster/palette_gdi.h"
#include "raster/save_page.h"
#include "raster/whole_jpeg.h"
#include "tiff/ccitt.h"
#include "tiff/codecs.h"
#include "tiff/directory.h"
#include "tiff/files.h"
#include "tiff/lines.h"
#include "tiff/save.h"

#include <array>

namespace tiff {

namespace {

constexpr uint32_t MSB_FIRST = 1;
constexpr uint32_t LSB_FIRST_ON_CLIPBOARD = 2;
constexpr uint32_t CCITT_FILL_ORDER = 2;

// The colours that the device's rows will index: fetching one row fills them in.
struct BitmapColours {
    BITMAPINFOHEADER header;
    std::array<RGBQUAD, 256> colours;
};

void FetchColours(HBITMAP bitmap, uint32_t bits, BitmapColours& info)
{
    info.header = {};
    info.header.biSize = sizeof(info.header);
    info.header.biPlanes = 1;
    info.header.biBitCount = static_cast<WORD>(bits);
    BITMAP described;
    GetObjectA(bitmap, sizeof(described), &described);
    info.header.biWidth = described.bmWidth;
    info.header.biHeight = described.bmHeight;
    GlobalBlock row(DibStride(static_cast<uint32_t>(described.bmWidth), bits));
    Locked<uint8_t> bytes(row.Get());
    const WindowDc screen(nullptr);
    if (bytes && screen)
        GetDIBits(screen.Get(), bitmap, 0, 1, bytes.Get(), reinterpret_cast<BITMAPINFO*>(&info),
                  DIB_RGB_COLORS);
}

Status PlanBitmap(const SaveRequest& request, HBITMAP bitmap, BitmapColours& info, PagePlan& plan)
{
    BITMAP described;
    if (!GetObjectA(bitmap, sizeof(described), &described))
        return error::InvalidHandle;
    plan.width = static_cast<uint32_t>(described.bmWidth);
    plan.height = static_cast<uint32_t>(described.bmHeight);
    plan.bitCount = DibDepth(described);
    plan.colourCount = 1u << plan.bitCount;
    if (plan.bitCount == 4 || plan.bitCount == 8) {
        FetchColours(bitmap, plan.bitCount, info);
        plan.colours = {reinterpret_cast<const uint8_t*>(info.colours.data()), size_t{plan.colourCount} * 4};
        plan.colourBytes = sizeof(RGBQUAD);
    }
    return PlanPage(request, plan);
}

TiffLineCallback RoutineFor(uint32_t colours)
{
    return colours == 2 ? DllFillMonoTiffLine : colours != 0 ? DllFillTiffLine : DllFillTiffLineBitmap24Bit;
}

Status EncodeBitmap(HGLOBAL file, uint32_t page, const PagePlan& /*plan*/, const void* source)
{
    GlobalBlock block;
    block.Adopt(GetTiffRGBQuad(file, page));
    Locked<BITMAPINFO> info(block.Get());
    if (!info)
        return TiffError();
    const WindowDc window(GetActiveWindow());
    if (!window)
        return error::NotEnoughMemory;
    const GdiObject<HPALETTE> palette(MakePalette(*info));
    const SelectedPalette selected(window.Get(), palette.Get());
    const BusyCursor busy;
    TiffEncodeLineContext context{};
    context.deviceContext = window.Get();
    context.bitmap = static_cast<HBITMAP>(const_cast<void*>(source));
    context.bitmapInfo = info.Get();
    context.strideOrColourUse = DIB_RGB_COLORS;
    const TiffLineCallback routine = RoutineFor(info->bmiHeader.biClrUsed);
    return EncodeTiffImage(file, page, &context, routine) ? error::None : TiffError();
}

int32_t SaveBitmap(HBITMAP bitmap, const SaveRequest& request)
{
    BitmapColours info;
    PagePlan plan{};
    Status status = PlanBitmap(request, bitmap, info, plan);
    if (status != error::None)
        return FinishSave(status);
    if (plan.choice.compression->selector == selector::Jpeg)
        status = SaveWholeJpegBitmap(bitmap, request.path, NextPageOfFile(request.path));
    else
        status = AppendPageToFile(request, plan, EncodeBitmap, bitmap);
    return FinishSave(status);
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

// Lends the thread what DllFillCcittLine fetches lines with, for a scope.
class CcittSource {
public:
    explicit CcittSource(BITMAPINFO* info)
    {
        ThreadState().ccittSource = info;
    }
    CcittSource(const CcittSource&) = delete;
    CcittSource& operator=(const CcittSource&) = delete;
    ~CcittSource()
    {
        ThreadState().ccittSource = nullptr;
    }
};

int32_t EncodeBareBitmap(HANDLE file, HBITMAP bitmap, uint32_t compression)
{
    BitmapColours info;
    FetchColours(bitmap, 1, info);
    const WindowDc screen(nullptr);
    if (!screen)
        return FinishSave(error::NotEnoughMemory);
    const CcittSource lent(reinterpret_cast<BITMAPINFO*>(&info));
    const BusyCursor busy;
    TiffEncodeLineContext context{};
    context.deviceContext = screen.Get();
    context.bitmap = bitmap;
    return EncodeCcittImageTo(reinterpret_cast<intptr_t>(file), static_cast<uint32_t>(info.header.biWidth),
                              static_cast<uint32_t>(info.header.biHeight), CCITT_FILL_ORDER, TIFF_INTEL,
                              compression, &context, DllFillCcittLine);
}

// The clipboard keeps the bitmap; it only has to be closed again before the bitmap is used.
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
    return SaveBitmapInTiffFileExt(path, bitmap, selector, dialog, MSB_FIRST);
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
    return SaveBitmapInTiffFileExt(path, bitmap, selector, dialog, LSB_FIRST_ON_CLIPBOARD);
}

extern "C" int32_t SaveBitmapInCcittFile(const char* path, HBITMAP bitmap, uint32_t type) noexcept
{
    const uint32_t compression = CcittCompression(type);
    if (compression == 0)
        return 0;
    BITMAP described;
    if (!GetObjectA(bitmap, sizeof(described), &described))
        return FinishSave(error::InvalidHandle);
    const FileHandle file(path, GENERIC_READ | GENERIC_WRITE, CREATE_ALWAYS);
    return file ? EncodeBareBitmap(file.Get(), bitmap, compression) : FinishSave(error::InputOutput);
}
