#include "codecs/ccitt/mmr_records.h"

#include "codecs/buffers.h"
#include "core/byte_order.h"
#include "core/stream.h"

#include <algorithm>

namespace tiff {

Status FillFromRecord(CodecContext* context)
{
    uint8_t header[RECORD_HEADER_BYTES];
    context->codeCursor = CodeBuffer(context);
    context->codeBytesLeft = 0;
    if (ReadStream(context->stream, header, RECORD_HEADER_BYTES) != RECORD_HEADER_BYTES ||
        header[0] != RECORD_MARK[0] || header[1] != RECORD_MARK[1])
        return error::UnexpectedEndOfFile;
    uint32_t length = Load16(header + 2, TIFF_MOTOROLA);
    if (length == 0)
        length = context->codeBufferSize;
    if (length > context->codeBufferSize)
        return error::UnexpectedEndOfFile;
    const uint32_t arrived = ReadStream(context->stream, context->codeCursor, length);
    if (arrived == 0 || arrived == STREAM_FAILED)
        return error::UnexpectedEndOfFile;
    context->codeBytesLeft = arrived;
    return error::None;
}

Status InitRecordBuffers(CodecContext* context)
{
    Status status = AllocateBuffers(context, std::min(context->dataEnd, RECORD_BUFFER_LIMIT));
    if (status == error::None)
        status = FillFromRecord(context);
    if (status == error::None)
        BeginLine(context);
    return status;
}

// An empty record is not written: a length of 0 would mean another length.
Status FlushToRecord(CodecContext* context)
{
    const uint32_t bytes = context->codeBufferSize - context->codeBytesLeft;
    EmptyCodeBuffer(context);
    if (bytes == 0)
        return error::None;
    uint8_t header[RECORD_HEADER_BYTES] = {RECORD_MARK[0], RECORD_MARK[1], static_cast<uint8_t>(bytes >> 8),
                                           static_cast<uint8_t>(bytes)};
    const bool written =
        WriteArray(context->stream, fieldtype::Byte, RECORD_HEADER_BYTES, header, TIFF_INTEL, 1) &&
        WriteArray(context->stream, fieldtype::Byte, bytes, context->codeCursor, TIFF_INTEL, 1);
    return written ? error::None : error::InputOutput;
}

} // namespace tiff
