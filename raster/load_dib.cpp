// Pages to packed DIBs: the page's header and colour table, grown by its rows, and the decode
// driver with the line routine that suits the samples.
#include "codecs/decode_driver.h"
#include "core/desktop.h"
#include "core/errors.h"
#include "core/global_block.h"
#include "core/tag_block.h"
#include "raster/dib.h"
#include "raster/dib_lines.h"
#include "raster/load_dialog.h"
#include "raster/loaded_page.h"
#include "raster/whole_jpeg.h"
#include "tiff/codecs.h"
#include "tiff/load.h"

#include <algorithm>
#include <cstddef>

namespace tiff {

namespace {

constexpr uint32_t TWELVE_BIT_SAMPLES = 4096; // grey levels below this are reduced by 4 bits

// How a page's rows become DIB rows.
struct DibPlan {
    BITMAPINFOHEADER header;
    TiffLineCallback routine = nullptr;
    bool readsLines = false; // the routine, and leaves them as they are
    uint32_t lineBytes = 0;
    uint32_t sampleShift = 0;
    uint32_t orientation = 1;
};

bool IsColourSpace(uint32_t photometric)
{
    return photometric >= photometric::FirstColourSpace && photometric <= photometric::LastColourSpace;
}

// 16-bit samples are reduced; of two 8-bit samples the first, the grey, is taken.
uint32_t GreyShift(const PageTags& tags)
{
    if (tags.Value(tag::BitsPerSample, 1) != 16)
        return 0;
    return tags.Value(tag::MaxSampleValue, 0) < TWELVE_BIT_SAMPLES ? 4 : 8;
}

Status PlanRows(const PageTags& tags, bool keepColourSpace, DibPlan& plan)
{
    BITMAPINFOHEADER& header = plan.header;
    if (header.biWidth <= 0)
        return error::TagsMissing;
    plan.lineBytes =
        static_cast<uint32_t>((uint64_t{static_cast<uint32_t>(header.biWidth)} * header.biBitCount + 7) / 8);
    plan.orientation = tags.Value(tag::Orientation, 1);

    uint32_t photometric = tags.Value(tag::PhotometricInterpretation, 0);
    if (keepColourSpace && IsColourSpace(photometric)) {
        header.biCompression = photometric;
        photometric = photometric::Rgb;
    }
    if (header.biBitCount == 16 && photometric <= photometric::BlackIsZero) {
        header.biBitCount = 8;
        plan.routine = DllFlushTiffLine16DIB;
        plan.readsLines = true;
        plan.sampleShift = GreyShift(tags);
        return error::None;
    }
    if (header.biBitCount == 32)
        header.biBitCount = 24;
    if (header.biBitCount <= 8)
        plan.routine = DllFlushTiffLineDIB;
    else if (photometric == photometric::Separated)
        plan.routine = DllFlushTiffLineCMYKDIB;
    else if (photometric == photometric::YCbCr)
        plan.routine = DllFlushTiffLineYCbCrDIB;
    else
        plan.routine = FlushSwappedLine;
    plan.readsLines = plan.routine == DllFlushTiffLineDIB || plan.routine == FlushSwappedLine;
    return SharesChroma(tags) ? error::ColourFormat : error::None;
}

// Room for the rows behind the header and colours. The picture's size is a 32-bit field.
bool GrowByRows(GlobalBlock& block, DibPlan& plan)
{
    BITMAPINFOHEADER& header = plan.header;
    const uint64_t imageBytes = DibStride(static_cast<uint32_t>(header.biWidth), header.biBitCount) *
                                static_cast<uint32_t>(header.biHeight);
    if (imageBytes > UINT32_MAX)
        return false;
    header.biSizeImage = static_cast<uint32_t>(imageBytes);
    return block.Resize(header.biSize + DibColours(header) * sizeof(RGBQUAD) + imageBytes);
}

bool KeepsPicture(Status status)
{
    return status == error::None || status == error::UnexpectedEndOfFile || status == error::EofbMissing ||
           status == error::EofbUnexpected;
}

// Rows that nobody has seen yet. Memory that comes fresh from the system is fetched page by page when
// it is first written to. To do that for many pages in a row takes less time than for one now and then,
// between other work: so rows to come are fetched together with the one in hand.
struct NewRows {
    TiffDecodeLineContext dib{}; // first: the routine may be given all of this
    TiffLineCallback routine;
    RowsInPlace rows{};
    uint8_t *begin = nullptr, *end = nullptr; // of the memory that is not fetched yet
};

static_assert(offsetof(NewRows, dib) == 0);

constexpr ptrdiff_t FETCHED_TOGETHER = 64 * 1024, LEAST_PAGE = 4096;

// Zeros go where zeros are: where no row has been written yet.
void Fetch(uint8_t* memory, ptrdiff_t bytes)
{
    volatile uint8_t* touched = memory;
    for (ptrdiff_t at = 0; at < bytes; at += LEAST_PAGE)
        touched[at] = 0;
}

// Rows come from the end of the memory to its beginning, or the other way.
void FetchRow(NewRows& target, uint8_t* row)
{
    uint8_t* const behind = row + target.dib.strideOrColourUse;
    if (row >= target.end || behind <= target.begin)
        return;
    if (target.rows.step < 0) {
        const ptrdiff_t bytes = std::min(behind - target.begin, FETCHED_TOGETHER);
        target.end = behind - bytes;
        Fetch(target.end, bytes);
    } else {
        const ptrdiff_t bytes = std::min(target.end - row, FETCHED_TOGETHER);
        target.begin = row + bytes;
        Fetch(row, bytes);
    }
}

intptr_t WriteNewRow(void* line, uint32_t row, void* userData)
{
    auto& target = *static_cast<NewRows*>(userData);
    FetchRow(target, target.rows.first + int64_t{row} * target.rows.step);
    return target.routine(line, row, &target.dib);
}

// Decodes into the grown block; what the driver reports is the last error.
Status DecodeRows(HGLOBAL file, uint32_t page, GlobalBlock& block, const DibPlan& plan)
{
    Locked<uint8_t> dib(block.Get());
    if (!dib)
        return error::NotEnoughMemory;
    *reinterpret_cast<BITMAPINFOHEADER*>(dib.Get()) = plan.header;
    NewRows target{.routine = plan.routine};
    TiffDecodeLineContext& context = target.dib;
    context.dib = block.Get();
    context.pixelBits = dib.Get() + plan.header.biSize + DibColours(plan.header) * sizeof(RGBQUAD);
    context.height = static_cast<uint32_t>(plan.header.biHeight);
    context.lineBytes = plan.lineBytes;
    context.strideOrColourUse =
        static_cast<uint32_t>(DibStride(static_cast<uint32_t>(plan.header.biWidth), plan.header.biBitCount));
    context.sampleShift = plan.sampleShift;
    context.orientation = plan.orientation;
    target.rows = DibRows(context, true);
    target.begin = context.pixelBits;
    target.end = context.pixelBits + plan.header.biSizeImage;
    // Rows of a bit a pixel are too short to gain by it.
    const TiffLineCallback routine = plan.header.biBitCount > 1 ? WriteNewRow : plan.routine;
    const bool copies = plan.routine == DllFlushTiffLineDIB;
    DecodePage(file, page, 0, 0,
               {routine, &target, plan.readsLines ? plan.lineBytes : 0, copies ? &target.rows : nullptr});
    return TiffError();
}

// A loaded page as a DIB, or null; the last error tells how it went.
HGLOBAL LoadPage(HGLOBAL file, uint32_t page, bool keepColourSpace)
{
    GlobalBlock block;
    block.Adopt(GetTiffRGBQuad(file, page));
    if (!block)
        return nullptr;
    DibPlan plan{.header = *Locked<BITMAPINFOHEADER>(block.Get())};
    Status status = PlanRows(PageTags(file, page), keepColourSpace, plan);
    if (status == error::None && !GrowByRows(block, plan))
        status = error::NotEnoughMemory;
    if (status == error::None)
        status = DecodeRows(file, page, block, plan);
    StoreLastError(status);
    return KeepsPicture(status) ? block.Release() : nullptr;
}

// A page that the driver leaves to the JPEG codec is loaded by that, under the same wait cursor.
HGLOBAL LoadPageOrJpeg(HGLOBAL file, uint32_t page)
{
    const BusyCursor busy;
    HGLOBAL dib = LoadPage(file, page, false);
    if (dib || !IsLeftToJpegCodec())
        return dib;
    const NamedTiff named(file);
    if (!named) {
        SetTiffError(error::BadDib);
        return nullptr;
    }
    Status status = error::None;
    dib = LoadWholeJpegDib(named.Path(), page, status);
    StoreLastError(status);
    return dib;
}

} // namespace

} // namespace tiff

using namespace tiff;

extern "C" HGLOBAL LoadTiffIntoDIB(const char* path, uint32_t page, int32_t dialog) noexcept
{
    const LoadedPage loaded(path, page);
    if (!loaded || !PassLoadDialog(dialog, loaded.File(), page))
        return nullptr;
    return LoadPageOrJpeg(loaded.File(), page);
}

extern "C" HGLOBAL LoadTiffChainIntoDIB(HGLOBAL file, uint32_t page) noexcept
{
    return file && GetTiffImage(file, page) ? LoadPageOrJpeg(file, page) : nullptr;
}

extern "C" HGLOBAL LoadNonRGBTiffIntoDIB(const char* path, uint32_t page) noexcept
{
    const LoadedPage loaded(path, page);
    if (!loaded)
        return nullptr;
    const BusyCursor busy;
    return LoadPage(loaded.File(), page, true);
}

extern "C" uint32_t GetTiffColorSpace(const char* path, int32_t page) noexcept
{
    static constexpr uint32_t UNKNOWN = 0xFFFFFFFF;
    if (!path || page < 0)
        return UNKNOWN;
    GlobalBlock block;
    block.Adopt(LoadNonRGBTiffIntoDIB(path, static_cast<uint32_t>(page)));
    Locked<BITMAPINFOHEADER> header(block.Get());
    return header ? header->biCompression : UNKNOWN;
}
