#include "raster/dib_lines.h"

#include "core/copy_row.h"
#include "core/vocabulary.h"
#include "raster/colour.h"

#include <algorithm>
#include <cstring>

namespace tiff {

// Only this function knows which way up a picture is: DIBs store their bottom row first, and so do pages of
// orientation 4.
static uint8_t* DibRow(const TiffDecodeLineContext* context, uint32_t row)
{
    const uint32_t dibRow = context->orientation == ORIENTATION_BOTTOM_LEFT ? row : context->height - row - 1;
    return context->pixelBits + size_t{dibRow} * context->strideOrColourUse;
}

RowsInPlace DibRows(const TiffDecodeLineContext& context, bool zeros)
{
    const int64_t stride = context.strideOrColourUse;
    return {.first = DibRow(&context, 0),
            .step = context.orientation == ORIENTATION_BOTTOM_LEFT ? stride : -stride,
            .count = context.height,
            .zeros = zeros,
            .end = nullptr};
}

// Pixels for which both the row and the DIB have room; a part of a pixel at the end counts as one.
static uint32_t PixelsOf(const TiffDecodeLineContext* context, uint32_t bytesPerPixel)
{
    const uint32_t begun = (context->lineBytes + bytesPerPixel - 1) / bytesPerPixel;
    return std::min(begun, context->strideOrColourUse / 3);
}

static const TiffDecodeLineContext* ContextOf(void* context)
{
    return static_cast<const TiffDecodeLineContext*>(context);
}

intptr_t FlushSwappedLine(void* line, uint32_t row, void* context)
{
    const auto* target = ContextOf(context);
    CopySwapped(DibRow(target, row), static_cast<const uint8_t*>(line), target->lineBytes);
    return 0;
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

// By Conversion.
constexpr DibRoutine dibRoutines[] = {
    {DllFlushTiffLineDIB, DllFlushTiffLineDIB, true, true},
    {FlushSwappedLine, DllFlushTiffLine24DIB, true, false},
    {DllFlushTiffLine16DIB, nullptr, true, false},
    {DllFlushTiffLineCMYKDIB, nullptr, false, false},
    {DllFlushTiffLineYCbCrDIB, nullptr, false, false},
};

const DibRoutine& RoutineOf(Conversion conversion)
{
    return dibRoutines[static_cast<size_t>(conversion)];
}

const DibRoutine* BehindExport(TiffLineCallback exported)
{
    const auto* found = std::ranges::find(dibRoutines, exported, &DibRoutine::exported);
    return exported && found != std::end(dibRoutines) ? found : nullptr;
}

static const TiffEncodeLineContext* SourceOf(void* context)
{
    return static_cast<const TiffEncodeLineContext*>(context);
}

// Pages are saved from the top, whatever order the DIB had.
static const uint8_t* SourceRow(const TiffEncodeLineContext* context, uint32_t row)
{
    return context->pixelBits + size_t{context->height - row - 1} * context->strideOrColourUse;
}

intptr_t DllFillTiffLine16DIB(void* line, uint32_t row, void* context)
{
    const auto* source = SourceOf(context);
    WidenSamples(static_cast<uint8_t*>(line), SourceRow(source, row), source->lineBytes, source->sampleShift,
                 source->invert != 0);
    return 0;
}

intptr_t DllFillTiffLineCMYKDIB(void* line, uint32_t row, void* context)
{
    const auto* source = SourceOf(context);
    ConvertToCmyk(static_cast<uint8_t*>(line), SourceRow(source, row), source->lineBytes / 3);
    return 0;
}

intptr_t DllFillTiffLineYCbCrDIB(void* line, uint32_t row, void* context)
{
    const auto* source = SourceOf(context);
    ConvertToYCbCr(static_cast<uint8_t*>(line), SourceRow(source, row), source->lineBytes / 3);
    return 0;
}

} // namespace tiff

using namespace tiff;

extern "C" intptr_t DllFillTiffLineDIB(void* line, uint32_t row, void* context) noexcept
{
    const auto* source = SourceOf(context);
    const uint8_t* from = SourceRow(source, row);
    AskForRow(from - source->strideOrColourUse, source->lineBytes);
    auto* target = static_cast<uint8_t*>(line);
    if (source->invert)
        std::transform(from, from + source->lineBytes, target,
                       [](uint8_t byte) { return static_cast<uint8_t>(~byte); });
    else
        CopyRow(target, from, source->lineBytes);
    return 0;
}

extern "C" intptr_t DllFillTiffLineDIB24Bit(void* line, uint32_t row, void* context) noexcept
{
    const auto* source = SourceOf(context);
    const uint8_t* from = SourceRow(source, row);
    AskForRow(from - source->strideOrColourUse, source->lineBytes);
    CopySwapped(static_cast<uint8_t*>(line), from, source->lineBytes);
    return 0;
}

extern "C" intptr_t DllFlushTiffLineDIB(void* line, uint32_t row, void* context) noexcept
{
    const auto* target = ContextOf(context);
    AskForRow(DibRow(target, row) - target->strideOrColourUse, target->lineBytes);
    CopyRow(DibRow(target, row), static_cast<const uint8_t*>(line), target->lineBytes);
    return 0;
}

extern "C" intptr_t DllFlushTiffLine24DIB(void* line, uint32_t row, void* context) noexcept
{
    SwapRedAndBlue(static_cast<uint8_t*>(line), ContextOf(context)->lineBytes);
    return DllFlushTiffLineDIB(line, row, context);
}
