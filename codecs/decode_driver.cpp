#include "codecs/decode_driver.h"

#include "codecs/buffers.h"
#include "codecs/codec_table.h"
#include "codecs/decode_quality.h"
#include "core/error_detail.h"
#include "core/image_description.h"
#include "core/open_file.h"
#include "core/registry.h"

namespace tiff {

namespace {

Status PrepareCall(CodecCall* call, HGLOBAL file, uint32_t page, RowRange range)
{
    if (const Status status = DescribeLines(call, file, page); status != error::None)
        return status;
    const PageTags tags(file, page);
    if (!tags)
        return TagsStatus(file, page);
    const PageScheme& scheme = SchemeOf(tags);
    return scheme.isLeft(tags) ? scheme.notDecoded : scheme.describeDecoding(call, file, page, range);
}

Status RunDecoder(CodecCall* context, HGLOBAL file)
{
    Locked<TiffFileRecord> record(file);
    if (!record)
        return error::NotEnoughMemory;
    const Stream stream(OpenRecord(*record));
    context->stream = stream.Get();
    if (!SizeToRead(context->stream, context->dataEnd) || mSeek(context->stream, 0, 0) == STREAM_FAILED)
        return error::InputOutput;
    return Decode(context);
}

} // namespace

Status DescribeLines(CodecContext* context, HGLOBAL file, uint32_t page)
{
    const PageTags tags(file, page);
    if (!tags)
        return TagsStatus(file, page);
    if (const Status status = DescribeImage(tags, context->lineFormat); status != error::None)
        return status;
    const uint64_t lineBits = uint64_t{Width(context)} * context->lineFormat.biBitCount;
    if (context->lineFormat.biWidth <= 0)
        return MissingTag(tag::ImageWidth);
    context->bytesPerLine = static_cast<uint32_t>((lineBits + 7) / 8);
    if (lineBits > uint64_t{UINT32_MAX - SPARE_LINE_BYTES} * 8)
        return error::NotEnoughMemory;
    context->bitsPerSample = tags.Value(tag::BitsPerSample, 1);
    const Locked<TiffFileRecord> record(file);
    if (!record)
        return error::NotEnoughMemory;
    context->byteOrder = record->byteOrder;
    context->compression = CompressionCode(tags);
    context->fillOrder = tags.Value(tag::FillOrder, 1);
    if (context->fillOrder == TIFF_MSB_FIRST || context->fillOrder == TIFF_LSB_FIRST)
        return error::None;
    NoteTag(error::BadBitOrder, tag::FillOrder);
    return error::BadBitOrder;
}

static Status DecodeRange(HGLOBAL file, uint32_t page, RowRange range, const LineTarget& target)
{
    if (!target.routine)
        return error::InvalidParameters;
    CodecCall call{};
    const ContextBlocks blocks(&call);
    if (const Status status = PrepareCall(&call, file, page, range); status != error::None)
        return status;
    if (call.row >= Rows(&call))
        return error::None;
    RowsInPlace rows;
    TakeTarget(&call, target, rows);
    const uint32_t firstRow = call.row;
    const Status status = RunDecoder(&call, file);
    NoteQuality(call, firstRow);
    return status;
}

Status DecodePage(HGLOBAL file, uint32_t page, uint32_t firstStrip, uint32_t rowCount,
                  const LineTarget& target)
{
    ForgetFacts();
    ForgetQuality();
    const Status status = DecodeRange(file, page, {firstStrip, rowCount}, target);
    NotePage(status, file, page);
    return status;
}

} // namespace tiff
