// Line routines for bitmaps. GDI transfers one line at a time in whole 32-bit words, for which the line
// buffer has room.
#include "raster/bitmap_lines_gdi.h"
#include "core/global_block.h"
#include "core/vocabulary.h"
#include "raster/colour.h"
#include "raster/save_settings.h"
#include "tiff/lines.h"

#include <algorithm>

namespace tiff {

namespace {

const TiffDecodeLineContext* TargetOf(void* context)
{
    return static_cast<const TiffDecodeLineContext*>(context);
}

const TiffEncodeLineContext* SourceOf(void* context)
{
    return static_cast<const TiffEncodeLineContext*>(context);
}

// A bitmap counts scan lines from the bottom, a page counts rows from the top.
UINT ScanLine(const BITMAPINFO* info, uint32_t row)
{
    return static_cast<UINT>(info->bmiHeader.biHeight) - row - 1;
}

intptr_t LineStatus(bool transferred)
{
    return static_cast<intptr_t>(transferred ? error::None : error::NotEnoughMemory);
}

// Deliberate: orientation is ignored, so pages of orientation 4 come upside down.
intptr_t PutLine(const TiffDecodeLineContext* context, const void* line, uint32_t row, UINT colourUse)
{
    const Locked<BITMAPINFO> info(context->dib);
    return LineStatus(info && SetDIBits(context->deviceContext, context->bitmap, ScanLine(info.Get(), row), 1,
                                        line, info.Get(), colourUse));
}

intptr_t GetLine(const TiffEncodeLineContext* context, BITMAPINFO* info, void* line, uint32_t row,
                 UINT colourUse)
{
    return LineStatus(
        GetDIBits(context->deviceContext, context->bitmap, ScanLine(info, row), 1, line, info, colourUse));
}

size_t WidthOf(const TiffEncodeLineContext* context)
{
    return static_cast<size_t>(context->bitmapInfo->bmiHeader.biWidth);
}

} // namespace

intptr_t FlushBitmapLine(void* line, uint32_t row, void* context)
{
    return PutLine(TargetOf(context), line, row, TargetOf(context)->strideOrColourUse);
}

intptr_t FlushSwappedBitmapLine(void* line, uint32_t row, void* context)
{
    SwapRedAndBlue(static_cast<uint8_t*>(line), TargetOf(context)->lineBytes);
    return PutLine(TargetOf(context), line, row, DIB_RGB_COLORS);
}

intptr_t FlushYCbCrLine(void* line, uint32_t row, void* context)
{
    auto* bytes = static_cast<uint8_t*>(line);
    ConvertYCbCr(bytes, bytes, TargetOf(context)->lineBytes / 3);
    return PutLine(TargetOf(context), line, row, DIB_RGB_COLORS);
}

intptr_t FillBitmapLine(void* line, uint32_t row, void* context)
{
    const auto* source = SourceOf(context);
    return GetLine(source, source->bitmapInfo, line, row, source->strideOrColourUse);
}

intptr_t FillMonoBitmapLine(void* line, uint32_t row, void* context)
{
    const intptr_t status = FillBitmapLine(line, row, context);
    auto* bytes = static_cast<uint8_t*>(line);
    const size_t wordBytes = (WidthOf(SourceOf(context)) + 15) / 16 * 2;
    std::transform(bytes, bytes + wordBytes, bytes, [](uint8_t byte) { return static_cast<uint8_t>(~byte); });
    return status;
}

intptr_t FillSwappedBitmapLine(void* line, uint32_t row, void* context)
{
    const intptr_t status = FillBitmapLine(line, row, context);
    SwapRedAndBlue(static_cast<uint8_t*>(line), static_cast<uint32_t>(WidthOf(SourceOf(context)) * 3));
    return status;
}

intptr_t FillCcittLine(void* line, uint32_t row, void* context)
{
    BITMAPINFO* info = ThreadRaster().ccittSource;
    return info ? GetLine(SourceOf(context), info, line, row, DIB_RGB_COLORS) : 0;
}

} // namespace tiff

using namespace tiff;

extern "C" intptr_t DllFlushTiffLine(void* line, uint32_t row, void* context) noexcept
{
    FlushBitmapLine(line, row, context);
    return 0;
}

extern "C" intptr_t DllFlushTiffLine24(void* line, uint32_t row, void* context) noexcept
{
    FlushSwappedBitmapLine(line, row, context);
    return 0;
}

extern "C" intptr_t DllFillTiffLine(void* line, uint32_t row, void* context) noexcept
{
    FillBitmapLine(line, row, context);
    return 0;
}

extern "C" intptr_t DllFillMonoTiffLine(void* line, uint32_t row, void* context) noexcept
{
    FillMonoBitmapLine(line, row, context);
    return 0;
}

extern "C" intptr_t DllFillTiffLineBitmap24Bit(void* line, uint32_t row, void* context) noexcept
{
    FillSwappedBitmapLine(line, row, context);
    return 0;
}

extern "C" intptr_t DllFillCcittLine(void* line, uint32_t row, void* context) noexcept
{
    FillCcittLine(line, row, context);
    return 0;
}
