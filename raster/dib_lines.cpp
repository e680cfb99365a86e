#include "raster/dib_lines.h"

#include "core/vocabulary.h"
#include "raster/colour.h"

#include <algorithm>
#include <cstring>

namespace tiff {

// The only place that knows which way up a picture is: DIBs store their bottom row first, and
// so do pages of orientation 4.
static uint8_t* DibRow(const TiffDecodeLineContext* context, uint32_t row)
{
    const uint32_t dibRow = context->orientation == ORIENTATION_BOTTOM_LEFT ? row : context->height - row - 1;
    return context->pixelBits + size_t{dibRow} * context->strideOrColourUse;
}

// Pixels that both the row and the DIB have room for, the last one counted when it has begun.
static uint32_t PixelsOf(const TiffDecodeLineContext* context, uint32_t bytesPerPixel)
{
    const uint32_t begun = (context->lineBytes + bytesPerPixel - 1) / bytesPerPixel;
    return std::min(begun, context->strideOrColourUse / 3);
}

static const TiffDecodeLineContext* ContextOf(void* context)
{
    return static_cast<const TiffDecodeLineContext*>(context);
}

intptr_t DllFlushTiffLine16DIB(void* line, uint32_t row, void* context)
{
    const auto* target = ContextOf(context);
    ReduceSamples(DibRow(target, row), static_cast<uint8_t*>(line), target->lineBytes, target->sampleShift);
    return 0;
}

intptr_t DllFlushTiffLineCMYKDIB(void* line, uint32_t row, void* context)
{
    const auto* target = ContextOf(context);
    ConvertCmyk(DibRow(target, row), static_cast<uint8_t*>(line), PixelsOf(target, 4));
    return 0;
}

intptr_t DllFlushTiffLineYCbCrDIB(void* line, uint32_t row, void* context)
{
    const auto* target = ContextOf(context);
    ConvertYCbCr(DibRow(target, row), static_cast<uint8_t*>(line), PixelsOf(target, 3));
    return 0;
}

} // namespace tiff

using namespace tiff;

extern "C" intptr_t DllFlushTiffLineDIB(void* line, uint32_t row, void* context) noexcept
{
    const auto* target = ContextOf(context);
    std::memcpy(DibRow(target, row), line, target->lineBytes);
    return 0;
}

extern "C" intptr_t DllFlushTiffLine24DIB(void* line, uint32_t row, void* context) noexcept
{
    SwapRedAndBlue(static_cast<uint8_t*>(line), ContextOf(context)->lineBytes);
    return DllFlushTiffLineDIB(line, row, context);
}
