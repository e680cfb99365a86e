// Packed DIBs to new pages. Every saver is a row of the variant table over one routine.
#include "raster/save_dib.h"
#include "core/errors.h"
#include "core/global_block.h"
#include "raster/dib.h"
#include "raster/dib_lines.h"
#include "raster/whole_jpeg.h"
#include "tiff/codecs.h"
#include "tiff/files.h"
#include "tiff/save.h"

#include <algorithm>

namespace tiff {

namespace {

constexpr uint32_t LIGHT_LEVEL = 127; // a first colour with a channel of this much is light
constexpr uint32_t FIRST_SAVED_SPACE = 10;
constexpr uint32_t MSB_FIRST = 1;

struct DibSource {
    DibView view;
    bool invert;
    bool faxBoard;
};

// Rows from the top are asked for in the other order.
struct RowSource {
    TiffEncodeLineContext context;
    TiffLineCallback routine;
    bool topDown;
};

intptr_t FillFromSource(void* line, uint32_t row, void* source)
{
    auto* from = static_cast<RowSource*>(source);
    return from->routine(line, from->topDown ? from->context.height - 1 - row : row, &from->context);
}

// Bilevel and grey pages follow the DIB's first colour; one without colours is taken as it is.
void MatchFirstColour(DibSource& source, PagePlan& plan)
{
    if (plan.photometric > photometric::BlackIsZero || plan.colours.empty())
        return;
    const auto first = plan.colours.first(3);
    const bool light =
        std::any_of(first.begin(), first.end(), [](uint8_t level) { return level >= LIGHT_LEVEL; });
    const bool widened = plan.choice.samples != nullptr;
    if (source.faxBoard) {
        // Wanted: a light first colour leaves the interpretation as it was chosen, and a dark one of
        // more than a bit is not turned round.
        source.invert = !light && plan.bitCount == 1;
        if (!light)
            plan.photometric = photometric::WhiteIsZero;
    } else if (light) {
        source.invert = widened;
        plan.photometric = widened ? photometric::BlackIsZero : photometric::WhiteIsZero;
    } else {
        source.invert = plan.bitCount == 1;
        plan.photometric = source.invert ? photometric::WhiteIsZero : photometric::BlackIsZero;
    }
}

Status PlanDib(const SaveRequest& request, DibSource& source, PagePlan& plan)
{
    const DibView& view = source.view;
    source.faxBoard = request.variant.faxBoard;
    plan.width = view.width;
    plan.height = view.height;
    plan.bitCount = view.bitCount;
    plan.colourCount = view.ColourCount();
    plan.colours = view.colours;
    plan.colourBytes = view.colourBytes;
    plan.dotsPerMetreX = view.dotsPerMetreX;
    plan.dotsPerMetreY = view.dotsPerMetreY;
    if (const Status status = PlanPage(request, plan); status != error::None)
        return status;
    if (request.variant.keepsColourSpace)
        plan.photometric = view.compression;
    MatchFirstColour(source, plan);
    return error::None;
}

// What the line routine takes from a DIB row, cut to what a line of the page holds.
void DescribeRows(const DibSource& source, const PagePlan& plan, RowSource& rows)
{
    const DibView& view = source.view;
    TiffEncodeLineContext& context = rows.context;
    context.pixelBits = view.pixels;
    context.height = view.height;
    context.strideOrColourUse = view.stride;
    context.invert = source.invert;
    rows.topDown = view.topDown;
    const uint64_t bits = uint64_t{view.width} * view.bitCount;
    if (plan.choice.samples) {
        rows.routine = plan.choice.samples->routine;
        context.sampleShift = plan.choice.samples->sampleShift;
        context.lineBytes = static_cast<uint32_t>((bits + 7) / 8);
        return;
    }
    const bool words = view.bitCount > 8 && (view.bitCount != 16 || source.faxBoard);
    const uint64_t rowBytes = words ? (bits + 15) / 16 * 2 : (bits + 7) / 8;
    rows.routine = words ? DllFillTiffLineDIB24Bit : DllFillTiffLineDIB;
    // An even count, and a pixel that a line of fewer bits ends in, may reach into the line
    // buffer's spare bytes.
    context.lineBytes = static_cast<uint32_t>(std::min(rowBytes, WrittenRowBytes(plan) + 2));
}

Status EncodeDib(HGLOBAL file, uint32_t page, const PagePlan& plan, const void* source)
{
    RowSource rows{};
    DescribeRows(*static_cast<const DibSource*>(source), plan, rows);
    return EncodeTiffImage(file, page, &rows, FillFromSource) ? error::None : TiffError();
}

// Plans the page of a locked DIB and hands it to the saver that knows where it goes.
template <class Save>
Status WithDib(HGLOBAL dib, const SaveRequest& request, Save save)
{
    Locked<uint8_t> block(dib);
    if (!block)
        return error::NotEnoughMemory;
    DibSource source{};
    PagePlan plan{};
    Status status = ViewDib({block.Get(), GlobalSize(dib)}, source.view);
    if (status == error::None)
        status = PlanDib(request, source, plan);
    return status == error::None ? save(plan, source) : status;
}

bool IsForJpegCodec(const PagePlan& plan)
{
    return plan.choice.compression->selector == selector::Jpeg;
}

// A new block is freed under its present handle when the save fails: growing may replace it.
Status SaveInMemory(HGLOBAL memory, const PagePlan& plan, const DibSource& source, HGLOBAL& saved)
{
    if (IsForJpegCodec(plan))
        return error::UnknownCompression; // the codec knows files only
    GlobalBlock fresh;
    if (!memory)
        fresh = GlobalBlock(1);
    if (!memory && !fresh)
        return error::NotEnoughMemory;
    HGLOBAL file = memory ? OpenTiffInMemory(memory, static_cast<uint32_t>(GlobalSize(memory)), T_APPEND)
                          : OpenTiffInMemory(fresh.Get(), 0, T_CREAT);
    if (!file)
        return error::CannotOpen;
    const Status status = AppendPage(file, plan, memorySave, EncodeDib, &source);
    HGLOBAL block = GetMemoryTiffHandle(file);
    CloseTiffFile(file);
    if (fresh) {
        fresh.Release();
        fresh.Adopt(block);
    }
    if (status == error::None)
        saved = memory ? block : fresh.Release();
    return status;
}

} // namespace

int32_t SaveDibInFile(HGLOBAL dib, const SaveRequest& request)
{
    bool jpeg = false;
    const Status status = WithDib(dib, request, [&](const PagePlan& plan, const DibSource& source) -> Status {
        jpeg = IsForJpegCodec(plan);
        return jpeg ? error::None : AppendPageToFile(request, plan, EncodeDib, &source);
    });
    // The codec locks the DIB itself.
    return FinishSave(jpeg ? SaveWholeJpegDib(dib, request.path, NextPageOfFile(request.path)) : status);
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
    return SaveDIBInTiffFileExt(path, dib, selector, dialog, MSB_FIRST);
}

extern "C" int32_t SaveDIBInTiffFormat(const char* path, HGLOBAL dib, uint32_t selector,
                                       int32_t dialog) noexcept
{
    return SaveDIBInTiffFile(path, dib, selector, dialog);
}

// Wanted: fewer colour spaces are saved than are loaded.
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
    return SaveDibInFile(dib, {path, 0, 0, MSB_FIRST, colourSpaceSave});
}

extern "C" HGLOBAL SaveTiffToMemory(HGLOBAL memory, HGLOBAL dib, uint32_t selector,
                                    uint32_t fillOrder) noexcept
{
    if (!dib)
        return nullptr;
    HGLOBAL saved = nullptr;
    FinishSave(WithDib(dib, {nullptr, selector, 0, fillOrder, memorySave},
                       [memory, &saved](const PagePlan& plan, const DibSource& source) {
                           return SaveInMemory(memory, plan, source, saved);
                       }));
    return saved;
}
