#include "codecs/decode_driver.h"

#include "codecs/buffers.h"
#include "codecs/codec_table.h"
#include "codecs/jpeg_bridge.h"
#include "core/errors.h"
#include "core/open_file.h"
#include "core/registry.h"
#include "core/tag_block.h"
#include "tiff/directory.h"

#include <algorithm>

namespace tiff {

namespace {

uint32_t CompressionCode(const PageTags& tags)
{
    const uint32_t scheme = tags.Value(tag::Compression, compression::Stored);
    switch (scheme) {
    case compression::ModifiedHuffman:
        return scheme | compression::ByteAligned;
    case compression::Group3:
        return scheme | tags.Value(tag::T4Options, 0) << 16;
    case compression::Lzw:
        return scheme | tags.Value(tag::Predictor, 1) << 16;
    default:
        return scheme;
    }
}

// The strips' offsets, and the rows from the first strip wanted.
Status ChooseStrips(CodecContext* context, HGLOBAL file, uint32_t page, uint32_t firstStrip,
                    uint32_t rowCount)
{
    if (!PageTags(file, page).Find(tag::StripOffsets))
        return error::TagsMissing;
    if (!GetTiffImageInfoBuffer(file, page, tag::StripOffsets, &context->stripOffsets,
                                &context->stripOffsetsType, &context->stripCount))
        return error::NotEnoughMemory;
    // Offsets of another type are read as 32-bit numbers too, as many as their bytes make.
    const uint32_t type = context->stripOffsetsType;
    if (type != fieldtype::Short && type != fieldtype::Long)
        context->stripCount = static_cast<uint32_t>(uint64_t{context->stripCount} * ElementBytes(type) / 4);

    const uint32_t rows = Rows(context);
    const uint32_t rowsPerStrip = PageTags(file, page).Value(tag::RowsPerStrip, rows);
    context->rowsPerStrip = rowsPerStrip == 0 || rowsPerStrip >= rows ? rows : rowsPerStrip;
    if (firstStrip >= context->stripCount)
        return error::IndexOutOfRange;
    const uint64_t firstRow = uint64_t{firstStrip} * context->rowsPerStrip;
    context->strip = firstStrip;
    context->row = static_cast<uint32_t>(std::min<uint64_t>(firstRow, rows));
    if (rowCount != 0 && firstRow + rowCount < rows)
        context->lineFormat.biHeight = static_cast<int32_t>(firstRow + rowCount);
    return error::None;
}

Status PrepareContext(CodecContext* context, HGLOBAL file, uint32_t page, uint32_t firstStrip,
                      uint32_t rowCount)
{
    if (const Status status = DescribeLines(context, file, page); status != error::None)
        return status;
    switch (context->compression & 0xFFFF) {
    case compression::Jpeg:
        return error::JpegPage;
    case compression::OldJpeg:
        if (!PageTags(file, page).Find(tag::TileWidth))
            return error::OldJpegPage;
        return ReadOldJpegTags(context, file, page);
    default:
        return ChooseStrips(context, file, page, firstStrip, rowCount);
    }
}

// Lines may be read where they lie, and put where they belong, if line and routine agree on how long
// they are. Of the rows' memory nothing is touched that the routine would not have written to.
void ChooseShortWays(CodecContext* context, const LineTarget& target, RowsInPlace& rows)
{
    context->readsLines = target.bytesRead != 0 && target.bytesRead <= context->bytesPerLine;
    if (!target.rows || target.bytesRead != context->bytesPerLine || Rows(context) > target.rows->count)
        return;
    rows = *target.rows;
    const uint32_t highest = rows.step > 0 ? Rows(context) - 1 : context->row;
    rows.end = rows.first + int64_t{highest} * rows.step + context->bytesPerLine;
    context->rowsInPlace = &rows;
}

Status RunDecoder(CodecContext* context, HGLOBAL file)
{
    Locked<TiffFileRecord> record(file);
    const Stream stream(OpenRecord(*record));
    context->stream = stream.Get();
    if (!SizeToRead(context->stream, context->dataEnd) || mSeek(context->stream, 0, 0) == STREAM_FAILED)
        return error::InputOutput;
    return Decode(context);
}

} // namespace

Status DescribeLines(CodecContext* context, HGLOBAL file, uint32_t page)
{
    if (const Status status = GetTiffDimensions(file, page, &context->lineFormat); status != error::None)
        return status;
    const PageTags tags(file, page);
    const uint64_t lineBits = uint64_t{Width(context)} * context->lineFormat.biBitCount;
    if (context->lineFormat.biWidth <= 0)
        return error::TagsMissing;
    context->bytesPerLine = static_cast<uint32_t>((lineBits + 7) / 8);
    if (lineBits > uint64_t{UINT32_MAX - SPARE_LINE_BYTES} * 8)
        return error::NotEnoughMemory;
    context->bitsPerSample = tags.Value(tag::BitsPerSample, 1);
    context->byteOrder = Locked<TiffFileRecord>(file)->byteOrder;
    context->compression = CompressionCode(tags);
    context->fillOrder = tags.Value(tag::FillOrder, 1);
    return context->fillOrder == 1 || context->fillOrder == LSB_FIRST ? error::None : error::BadBitOrder;
}

int32_t DecodePage(HGLOBAL file, uint32_t page, uint32_t firstStrip, uint32_t rowCount,
                   const LineTarget& target)
{
    // Wanted: without a loaded page the thread's previous outcome is reported again.
    if (!IsRegistered(file, page))
        return TiffError() == error::None;
    CodecContext context{};
    const ContextBlocks blocks(&context);
    context.userData = target.userData;
    context.lineCallback = target.routine;
    Status status = target.routine ? PrepareContext(&context, file, page, firstStrip, rowCount)
                                   : Status{error::InvalidParameters};
    const bool hasRows = context.row < Rows(&context);
    RowsInPlace rows;
    if (status == error::None && hasRows) {
        ChooseShortWays(&context, target, rows);
        status = RunDecoder(&context, file);
    }
    StoreLastError(status);
    return status == error::None;
}

} // namespace tiff
