#include "codecs/packbits.h"

#include "codecs/buffers.h"

#include <algorithm>
#include <cstring>

namespace tiff {

static_assert(SPARE_LINE_BYTES >= 129, "a packet may begin at the last byte of a line");

static Status NextByte(CodecContext* context, uint8_t& byte)
{
    if (context->codeBytesLeft == 0)
        if (const Status status = FillCodeBuffer(context); status != error::None)
            return status;
    byte = *context->codeCursor++;
    --context->codeBytesLeft;
    return error::None;
}

static Status CopyLiteral(CodecContext* context, uint32_t count)
{
    while (count > 0) {
        if (context->codeBytesLeft == 0)
            if (const Status status = FillCodeBuffer(context); status != error::None)
                return status;
        const uint32_t part = std::min(count, context->codeBytesLeft);
        std::memcpy(context->lineCursor, context->codeCursor, part);
        context->lineCursor += part;
        context->codeCursor += part;
        context->codeBytesLeft -= part;
        count -= part;
    }
    return error::None;
}

// Wanted: there is no packet without effect, -128 repeats its byte 129 times.
static Status DecodePacket(CodecContext* context, uint32_t& written)
{
    uint8_t header = 0;
    if (const Status status = NextByte(context, header); status != error::None)
        return status;
    if (header < 0x80) {
        written = header + 1u;
        return CopyLiteral(context, written);
    }
    uint8_t byte = 0;
    if (const Status status = NextByte(context, byte); status != error::None)
        return status;
    written = 257u - header;
    std::memset(context->lineCursor, byte, written);
    context->lineCursor += written;
    return error::None;
}

Status DecodePackBits(CodecContext* context)
{
    Status status = InitDecodeBuffers(context);
    int64_t missing = context->lineBytes;
    while (status == error::None) {
        uint32_t written = 0;
        status = DecodePacket(context, written);
        missing -= written;
        // What a packet holds beyond the line lies in the spare bytes and is lost there.
        if (status == error::None && missing <= 0) {
            status = HandOverSamples(context);
            missing = context->lineBytes;
        }
    }
    return CodecResult(status);
}

} // namespace tiff
