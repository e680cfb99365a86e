#include "raster/dib_sink.h"

#include "core/error_detail.h"
#include "core/global_block.h"
#include "raster/dib.h"
#include "raster/dib_lines.h"

#include <algorithm>
#include <optional>

namespace tiff {

namespace {

// The pixels of a new DIB. Fresh memory faults on the first write to each page of memory. Touching 64 KB
// ahead in one go is cheaper than faulting between decoding steps.
struct FreshRows {
    TiffDecodeLineContext lines{};
    TiffLineCallback routine;
    RowsInPlace rows{};
    uint8_t *begin = nullptr, *end = nullptr; // the part that has not been touched
};

struct DibRecord {
    GlobalBlock block;
    std::optional<Locked<uint8_t>> locked;
    FreshRows fresh;
};

constexpr ptrdiff_t TOUCHED_TOGETHER = 64 * 1024, LEAST_PAGE = 4096;

// Writes zeros over zeros: no row has been written here yet.
void Touch(uint8_t* memory, ptrdiff_t bytes)
{
    volatile uint8_t* touched = memory;
    for (ptrdiff_t at = 0; at < bytes; at += LEAST_PAGE)
        touched[at] = 0;
}

// Rows fill the memory from its end to its beginning, or the other way.
void TouchThrough(FreshRows& fresh, uint8_t* row)
{
    uint8_t* const behind = row + fresh.lines.strideOrColourUse;
    if (row >= fresh.end || behind <= fresh.begin)
        return;
    if (fresh.rows.step < 0) {
        const ptrdiff_t bytes = std::min(behind - fresh.begin, TOUCHED_TOGETHER);
        fresh.end = behind - bytes;
        Touch(fresh.end, bytes);
    } else {
        const ptrdiff_t bytes = std::min(fresh.end - row, TOUCHED_TOGETHER);
        fresh.begin = row + bytes;
        Touch(row, bytes);
    }
}

intptr_t WriteFreshRow(void* line, uint32_t row, void* userData)
{
    auto& fresh = *static_cast<FreshRows*>(userData);
    TouchThrough(fresh, fresh.rows.first + int64_t{row} * fresh.rows.step);
    return fresh.routine(line, row, &fresh.lines);
}

// Makes room for header, colours and rows.
Status MakeBlock(DibRecord& sink, const PictureFormat& format)
{
    BITMAPINFOHEADER header = format.dib;
    const uint64_t imageBytes = DibStride(static_cast<uint32_t>(header.biWidth), header.biBitCount) *
                                static_cast<uint32_t>(header.biHeight);
    if (imageBytes > UINT32_MAX)
        return error::NotEnoughMemory;
    header.biSizeImage = static_cast<uint32_t>(imageBytes);
    const uint64_t colourBytes = uint64_t{header.biClrUsed} * sizeof(RGBQUAD);
    sink.block = GlobalBlock(sizeof(header) + colourBytes + imageBytes);
    sink.locked.emplace(sink.block.Get());
    uint8_t* dib = sink.locked->Get();
    if (!dib)
        return error::NotEnoughMemory;
    std::memcpy(dib, &header, sizeof(header));
    std::memcpy(dib + sizeof(header), format.colours.data(), static_cast<size_t>(colourBytes));
    sink.fresh.begin = dib + sizeof(header) + colourBytes;
    sink.fresh.end = sink.fresh.begin + imageBytes;
    return error::None;
}

Status BeginDib(void* record, const PictureFormat& format, LineTarget& target)
{
    auto& sink = *static_cast<DibRecord*>(record);
    if (format.dib.biWidth <= 0)
        return MissingTag(tag::ImageWidth);
    if (format.sharesChroma)
        return error::ColourFormat;
    if (const Status status = MakeBlock(sink, format); status != error::None)
        return status;
    const DibRoutine& conversion = RoutineOf(format.conversion);
    FreshRows& fresh = sink.fresh;
    TiffDecodeLineContext& lines = fresh.lines;
    lines.dib = sink.block.Get();
    lines.pixelBits = fresh.begin;
    lines.height = static_cast<uint32_t>(format.dib.biHeight);
    lines.lineBytes = format.lineBytes;
    lines.strideOrColourUse =
        static_cast<uint32_t>(DibStride(static_cast<uint32_t>(format.dib.biWidth), format.dib.biBitCount));
    lines.sampleShift = format.sampleShift;
    lines.orientation = format.orientation;
    fresh.routine = conversion.routine;
    fresh.rows = DibRows(lines, true);
    // Bilevel rows are too short to gain by it.
    if (format.dib.biBitCount > 1)
        target = {WriteFreshRow, &fresh};
    else
        target = {conversion.routine, &lines};
    target.bytesRead = conversion.leavesLines ? format.lineBytes : 0;
    target.rows = conversion.copies ? &fresh.rows : nullptr;
    return error::None;
}

bool KeepsPicture(Status status)
{
    return status == error::None || status == error::UnexpectedEndOfFile || status == error::EofbMissing ||
           status == error::EofbUnexpected;
}

Status EndDib(void* record, Status status)
{
    auto& sink = *static_cast<DibRecord*>(record);
    sink.locked.reset();
    if (!KeepsPicture(status))
        sink.block = GlobalBlock();
    return status;
}

} // namespace

HGLOBAL RowsToDib(const RowSource& source, Status& status)
{
    DibRecord record;
    RowSink sink{.begin = BeginDib, .end = EndDib, .record = &record, .lines = {}};
    status = SendRows(source, sink);
    return record.block.Release();
}

} // namespace tiff
