#include "codecs/jpeg/page_decoder.h"

#include "codecs/buffers.h"
#include "codecs/jpeg/decoder.h"
#include "core/error_detail.h"
#include "core/image_description.h"
#include "core/open_file.h"
#include "core/registry.h"
#include "core/stream.h"

#include <algorithm>
#include <cstring>

namespace tiff::jpeg {

namespace {

constexpr uint32_t SAMPLE_BITS = 8;

struct Page {
    const PageTags& tags;
    StripForm form; // of each strip, the last may have fewer rows
    uint32_t rows;
    uint32_t rowsPerStrip;
};

// The rows of a page on their way to a line routine or into the picture.
struct PageRows {
    const LineTarget& target;
    uint8_t* line;
    uint32_t lineBytes;
    uint32_t row;
    bool inPlace;
};

uint8_t* PlaceOfRow(void* record)
{
    const auto& rows = *static_cast<const PageRows*>(record);
    return rows.inPlace ? rows.target.rows->first + int64_t{rows.row} * rows.target.rows->step : rows.line;
}

Status TakeRow(void* record)
{
    auto& rows = *static_cast<PageRows*>(record);
    const uint32_t row = rows.row++;
    return rows.inPlace ? Status{error::None}
                        : static_cast<Status>(rows.target.routine(rows.line, row, rows.target.userData));
}

Colours ColoursOf(uint32_t samples, uint32_t photometric)
{
    if (samples != 3)
        return Colours::Plain;
    return photometric == photometric::YCbCr ? Colours::YCbCr : Colours::Reversed;
}

Status DescribePage(const PageTags& tags, Page& page)
{
    BITMAPINFOHEADER header{};
    if (const Status status = DescribeImage(tags, header); status != error::None)
        return status;
    if (!tags.Find(tag::StripOffsets) || header.biWidth <= 0)
        return MissingTag(header.biWidth <= 0 ? tag::ImageWidth : tag::StripOffsets);
    const uint32_t samples = header.biBitCount / SAMPLE_BITS;
    if (tags.Value(tag::BitsPerSample, 1) != SAMPLE_BITS || samples == 0 || samples > MOST_COMPONENTS)
        return error::BadCode;
    page.rows = static_cast<uint32_t>(header.biHeight);
    const uint32_t rowsPerStrip = tags.Value(tag::RowsPerStrip, 0);
    page.rowsPerStrip = rowsPerStrip == 0 ? page.rows : std::min(rowsPerStrip, page.rows);
    const uint32_t photometric = tags.Value(tag::PhotometricInterpretation, 0);
    page.form = {.width = static_cast<uint32_t>(header.biWidth),
                 .rows = 0,
                 .samples = samples,
                 .colours = ColoursOf(samples, photometric),
                 .asksAdobe = photometric == photometric::Separated && samples == 4};
    return error::None;
}

Status ReadPageTables(const PageTags& tags, Decoder& decoder)
{
    const auto found = tags.Find(tag::JpegTables);
    return found ? ReadTableStream(found->values, decoder.sources[0], decoder.pageTables) : error::None;
}

// A count of 0, or none, says nothing: the strip ends with the file.
Status MoveToStrip(const Page& page, uint32_t strip, ByteSource& source)
{
    const auto offset = page.tags.Find(tag::StripOffsets)->Number(strip);
    if (!offset)
        return error::UnexpectedEndOfFile;
    const uint32_t bytes = page.tags.Value(tag::StripByteCounts, 0, strip);
    MoveTo(source, *offset, bytes ? uint64_t{*offset} + bytes : UINT32_MAX);
    return error::None;
}

Status DecodeStrips(Page& page, Decoder& decoder, PageRows& rows)
{
    DecoderLines lines;
    const RowTaker taker = {PlaceOfRow, TakeRow, &rows};
    Status status = error::None;
    for (uint32_t strip = 0; rows.row < page.rows && status == error::None; ++strip) {
        page.form.rows = std::min(page.rowsPerStrip, page.rows - rows.row);
        uint32_t taken = 0;
        status = MoveToStrip(page, strip, decoder.sources[0]);
        if (status == error::None)
            status = DecodeStream(decoder, lines, page.form, taker, taken);
    }
    return status;
}

// The rest of the picture. New memory is zero already.
Status ClearRows(const Page& page, PageRows& rows)
{
    if (rows.target.rows && rows.target.rows->zeros)
        return error::UnexpectedEndOfFile;
    while (rows.row < page.rows) {
        std::memset(PlaceOfRow(&rows), 0, rows.lineBytes);
        if (const Status status = TakeRow(&rows); status != error::None)
            return status;
    }
    return error::UnexpectedEndOfFile;
}

} // namespace

Status DecodePage(HGLOBAL file, uint32_t number, const LineTarget& target)
{
    const PageTags tags(file, number);
    Locked<TiffFileRecord> record(file);
    if (!tags || !record)
        return error::NotEnoughMemory;
    Page page{.tags = tags};
    if (const Status status = DescribePage(tags, page); status != error::None)
        return status;
    GlobalBlock state(sizeof(Decoder));
    const Locked<Decoder> decoder(state.Get());
    const uint32_t lineBytes = page.form.width * page.form.samples;
    GlobalBlock lineBlock(uint64_t{lineBytes} + SPARE_LINE_BYTES);
    const Locked<uint8_t> line(lineBlock.Get());
    if (!decoder || !line)
        return error::NotEnoughMemory;
    const Stream stream(OpenRecord(*record));
    uint32_t fileEnd = 0;
    if (!SizeToRead(stream.Get(), fileEnd))
        return error::InputOutput;
    if (const Status status = ReadPageTables(tags, *decoder); status != error::None)
        return status;
    OpenSource(decoder->sources[0], stream.Get(), fileEnd);
    const bool inPlace = target.rows && target.bytesRead == lineBytes && page.rows <= target.rows->count;
    PageRows rows = {target, line.Get(), lineBytes, 0, inPlace};
    const Status status = DecodeStrips(page, *decoder, rows);
    return status == error::UnexpectedEndOfFile ? ClearRows(page, rows) : status;
}

} // namespace tiff::jpeg
