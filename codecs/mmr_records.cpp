#include "codecs/mmr_records.h"

#include "codecs/buffers.h"
#include "core/byte_order.h"

#include <algorithm>

namespace tiff {

static constexpr uint32_t HEADER_BYTES = 4;

Status FillFromRecord(CodecContext* context)
{
    uint8_t header[HEADER_BYTES];
    context->codeCursor = CodeBuffer(context);
    context->codeBytesLeft = 0;
    if (mRead(context->stream, header, HEADER_BYTES) != HEADER_BYTES || header[0] != 0xFE ||
        header[1] != 0x92)
        return error::UnexpectedEndOfFile;
    uint32_t length = Load16(header + 2, TIFF_MOTOROLA);
    if (length == 0)
        length = context->codeBufferSize;
    if (length > context->codeBufferSize)
        return error::UnexpectedEndOfFile;
    const uint32_t arrived = mRead(context->stream, context->codeCursor, length);
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

} // namespace tiff
