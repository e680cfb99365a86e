// Line routines for bitmaps. GDI transfers one line at a time in whole 32-bit words, for which the line
// buffer has room.
#include "raster/bitmap_lines_gdi.h"
#include "core/global_block.h"
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

// Deliberate: orientation is ignored, so pages of orientation 4 come upside down.
void PutLine(const TiffDecodeLineContext* context, const void* line, uint32_t row, UINT colourUse)
{
    const Locked<BITMAPINFO> info(context->dib);
    if (info)
        SetDIBits(context->deviceContext, context->bitmap, ScanLine(info.Get(), row), 1, line, info.Get(),
                  colourUse);
}

void GetLine(const TiffEncodeLineContext* context, BITMAPINFO* info, void* line, uint32_t row, UINT colourUse)
{
    GetDIBits(context->deviceContext, context->bitmap, ScanLine(info, row), 1, line, info, colourUse);
}

size_t WidthOf(const TiffEncodeLineContext* context)
{
    return static_cast<size_t>(context->bitmapInfo->bmiHeader.biWidth);
}

} // namespace

intptr_t FlushYCbCrLine(void* line, uint32_t row, void* context)
{
    auto* bytes = static_cast<uint8_t*>(line);
    ConvertYCbCr(bytes, bytes, TargetOf(context)->lineBytes / 3);
    PutLine(TargetOf(context), line, row, DIB_RGB_COLORS);
    return 0;
}

} // namespace tiff

using namespace tiff;

extern "C" intptr_t DllFlushTiffLine(void* line, uint32_t row, void* context) noexcept
{
    PutLine(TargetOf(context), line, row, TargetOf(context)->strideOrColourUse);
    return 0;
}

extern "C" intptr_t DllFlushTiffLine24(void* line, uint32_t row, void* context) noexcept
{
    SwapRedAndBlue(static_cast<uint8_t*>(line), TargetOf(context)->lineBytes);
    PutLine(TargetOf(context), line, row, DIB_RGB_COLORS);
    return 0;
}

extern "C" intptr_t DllFillTiffLine(void* line, uint32_t row, void* context) noexcept
{
    const auto* source = SourceOf(context);
    GetLine(source, source->bitmapInfo, line, row, source->strideOrColourUse);
    return 0;
}

extern "C" intptr_t DllFillMonoTiffLine(void* line, uint32_t row, void* context) noexcept
{
    DllFillTiffLine(line, row, context);
    auto* bytes = static_cast<uint8_t*>(line);
    const size_t wordBytes = (WidthOf(SourceOf(context)) + 15) / 16 * 2;
    std::transform(bytes, bytes + wordBytes, bytes, [](uint8_t byte) { return static_cast<uint8_t>(~byte); });
    return 0;
}

extern "C" intptr_t DllFillTiffLineBitmap24Bit(void* line, uint32_t row, void* context) noexcept
{
    DllFillTiffLine(line, row, context);
    SwapRedAndBlue(static_cast<uint8_t*>(line), static_cast<uint32_t>(WidthOf(SourceOf(context)) * 3));
    return 0;
}

extern "C" intptr_t DllFillCcittLine(void* line, uint32_t row, void* context) noexcept
{
    if (BITMAPINFO* info = ThreadRaster().ccittSource)
        GetLine(SourceOf(context), info, line, row, DIB_RGB_COLORS);
    return 0;
}
