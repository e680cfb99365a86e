// Packed DIBs to new pages. Every saver is a row of the variant table over one routine.
#include "raster/save_dib.h"
#include "core/errors.h"
#include "core/global_block.h"
#include "raster/dib.h"
#include "raster/dib_lines.h"
#include "tiff/codecs.h"
#include "tiff/files.h"
#include "tiff/save.h"

#include <algorithm>

namespace tiff {

namespace {

constexpr uint32_t FIRST_SAVED_SPACE = 10;

// For rows from the top the order is reversed.
struct DibRows {
    TiffEncodeLineContext context;
    TiffLineCallback routine;
    bool topDown;
    const PagePlan* plan = nullptr; // of a page whose samples are the colours of a table
};

// The colours that a row's indexes stand for: one level each for grey, else blue, green and red.
intptr_t FillLevels(void* line, uint32_t row, const DibRows& rows)
{
    const PictureFormat& format = rows.plan->format;
    const uint8_t* const from =
        rows.context.pixelBits + size_t{rows.context.height - row - 1} * rows.context.strideOrColourUse;
    const uint32_t bits = format.stored.biBitCount, mask = (1u << bits) - 1;
    auto* target = static_cast<uint8_t*>(line);
    for (uint32_t column = 0; column < static_cast<uint32_t>(format.stored.biWidth); ++column) {
        const uint64_t bit = uint64_t{column} * bits;
        const RGBQUAD& colour = format.colours[from[bit / 8] >> (8 - bits - bit % 8) & mask];
        *target++ = colour.rgbBlue;
        if (rows.plan->jpegBits == 8)
            continue;
        *target++ = colour.rgbGreen;
        *target++ = colour.rgbRed;
    }
    return 0;
}

bool IsGreyRamp(const PictureFormat& format)
{
    for (uint32_t level = 0; level < format.colours.size(); ++level)
        if (format.colours[level].rgbBlue != level)
            return false;
    return true;
}

// Levels are coded as a DIB stores them, blue first.
void DescribeLevels(const DibView& view, const PagePlan& plan, DibRows& rows)
{
    rows.routine = DllFillTiffLineDIB;
    rows.context.lineBytes = static_cast<uint32_t>(WrittenRowBytes(plan));
    const bool areLevels =
        view.bitCount == 24 || (plan.jpegBits == 8 && view.bitCount == 8 && IsGreyRamp(plan.format));
    rows.plan = areLevels ? nullptr : &plan;
}

intptr_t FillFromDib(void* line, uint32_t row, void* rows)
{
    auto* from = static_cast<DibRows*>(rows);
    if (from->plan)
        return FillLevels(line, from->topDown ? from->context.height - 1 - row : row, *from);
    return from->routine(line, from->topDown ? from->context.height - 1 - row : row, &from->context);
}

// The part of a DIB row that the line routine uses, cut to the length of the page's line.
void DescribeRows(const DibView& view, const PagePlan& plan, bool faxBoard, DibRows& rows)
{
    TiffEncodeLineContext& context = rows.context;
    context.pixelBits = view.pixels;
    context.height = view.height;
    context.strideOrColourUse = view.stride;
    context.invert = plan.invert;
    rows.topDown = view.topDown;
    if (plan.jpegBits)
        return DescribeLevels(view, plan, rows);
    const uint64_t bits = uint64_t{view.width} * view.bitCount;
    if (plan.choice.samples) {
        rows.routine = plan.choice.samples->routine;
        context.sampleShift = plan.choice.samples->sampleShift;
        context.lineBytes = static_cast<uint32_t>((bits + 7) / 8);
        return;
    }
    const bool words = view.bitCount > 8 && (view.bitCount != 16 || faxBoard);
    const uint64_t rowBytes = words ? (bits + 15) / 16 * 2 : (bits + 7) / 8;
    rows.routine = words ? DllFillTiffLineDIB24Bit : DllFillTiffLineDIB;
    // An even count, and a pixel that ends a line of fewer bits, may reach into the line buffer's spare
    // bytes.
    context.lineBytes = static_cast<uint32_t>(std::min(rowBytes, WrittenRowBytes(plan) + 2));
}

// Plans the page of a locked DIB and passes it to the saver for its destination.
template <class Save>
Status WithDib(HGLOBAL dib, const SaveRequest& request, Save save)
{
    Locked<uint8_t> block(dib);
    if (!block)
        return error::NotEnoughMemory;
    DibView view;
    PagePlan plan;
    Status status = CompleteDib({block.Get(), GlobalSize(dib)}, view);
    if (status == error::None)
        status = PlanPage(request, FormatOfDib(view), plan);
    if (status != error::None)
        return status;
    DibRows rows{};
    DescribeRows(view, plan, request.variant.faxBoard, rows);
    return save(plan, LineFeed{FillFromDib, &rows});
}

// When the save fails, a new block is freed under its present handle: growing may have replaced it.
Status SaveInMemory(HGLOBAL memory, const PagePlan& plan, const LineFeed& feed, HGLOBAL& saved)
{
    GlobalBlock fresh;
    if (!memory)
        fresh = GlobalBlock(1);
    if (!memory && !fresh)
        return error::NotEnoughMemory;
    HGLOBAL file = memory ? OpenTiffInMemory(memory, static_cast<uint32_t>(GlobalSize(memory)), T_APPEND)
                          : OpenTiffInMemory(fresh.Get(), 0, T_CREAT);
    if (!file)
        return memory ? error::CannotOpen : error::NotEnoughMemory;
    const Status status = AppendPage(file, plan, memorySave, feed);
    HGLOBAL block = GetMemoryTiffHandle(file);
    CloseTiffFile(file);
    if (fresh) {
        fresh.Release();
        fresh.Adopt(block);
    }
    if (status == error::None)
        saved = memory ? block : fresh.Release();
    return status == error::None && !saved ? Status{error::NotEnoughMemory} : status;
}

} // namespace

Status SaveDib(HGLOBAL dib, const SaveRequest& request)
{
    return WithDib(dib, request, [&](const PagePlan& plan, const LineFeed& feed) {
        return AppendPageToFile(request, plan, feed);
    });
}

} // namespace tiff

using namespace tiff;

extern "C" int32_t SaveDIBInTiffFileExt(const char* path, HGLOBAL dib, uint32_t selector, int32_t dialog,
                                        uint32_t fillOrder) noexcept
{
    return SaveDibInFile(dib, {path, selector, dialog, fillOrder, plainSave});
}

extern "C" int32_t SaveDIBInTiffFile(const char* path, HGLOBAL dib, uint32_t selector,
                                     int32_t dialog) noexcept
{
    return SaveDIBInTiffFileExt(path, dib, selector, dialog, TIFF_MSB_FIRST);
}

extern "C" int32_t SaveDIBInTiffFormat(const char* path, HGLOBAL dib, uint32_t selector,
                                       int32_t dialog) noexcept
{
    return SaveDIBInTiffFile(path, dib, selector, dialog);
}

// Deliberate: fewer colour spaces can be saved than loaded.
extern "C" int32_t SaveNonRGBDIBInTiffFile(const char* path, HGLOBAL dib) noexcept
{
    uint32_t space = 0;
    {
        Locked<BITMAPINFOHEADER> header(dib);
        if (!header)
            return FinishSave(error::NotEnoughMemory);
        if (GlobalSize(dib) >= sizeof(*header))
            space = header->biCompression;
    }
    if (space < FIRST_SAVED_SPACE || space > photometric::LastColourSpace)
        return 0;
    return SaveDibInFile(dib, {path, 0, 0, TIFF_MSB_FIRST, colourSpaceSave});
}

extern "C" HGLOBAL SaveTiffToMemory(HGLOBAL memory, HGLOBAL dib, uint32_t selector,
                                    uint32_t fillOrder) noexcept
{
    if (!dib)
        return nullptr;
    HGLOBAL saved = nullptr;
    FinishSave(WithDib(dib, {nullptr, selector, 0, fillOrder, memorySave},
                       [memory, &saved](const PagePlan& plan, const LineFeed& feed) {
                           return SaveInMemory(memory, plan, feed, saved);
                       }));
    return saved;
}
