#include "codecs/stored.h"

#include "codecs/buffers.h"
#include "core/copy_row.h"

namespace tiff {

Status DecodeStored(CodecCall* context)
{
    Status status = InitDecodeBuffers(context);
    uint32_t missing = context->lineBytes;
    while (status == error::None) {
        if (PassesLines(context) && missing == context->lineBytes && context->codeBytesLeft >= missing) {
            uint8_t* line = context->codeCursor;
            context->codeCursor += missing;
            context->codeBytesLeft -= missing;
            status = HandOverLine(context, line);
            continue;
        }
        const bool complete = context->codeBytesLeft >= missing;
        const uint32_t bytes = complete ? missing : context->codeBytesLeft;
        CopyRow(context->lineCursor, context->codeCursor, bytes);
        context->codeCursor += bytes;
        context->codeBytesLeft -= bytes;
        if (complete) {
            status = HandOverSamples(context);
            missing = context->lineBytes;
        } else {
            context->lineCursor += bytes;
            missing -= bytes;
            status = FillCodeBuffer(context);
        }
    }
    return CodecResult(status);
}

Status EncodeStored(CodecCall* context)
{
    Status status = InitEncodeBuffers(context);
    while (status == error::None) {
        OrderSamples(context);
        status = PutBytes(context, {context->lineBuffer, context->lineBytes});
        if (status == error::None)
            status = FillDataBuffer(context);
    }
    return CodecResult(status);
}

} // namespace tiff
