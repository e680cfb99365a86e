// Moves lines into the code and the code into the stream. Strips follow each other without a gap, so one code
// buffer may hold the end of one strip and the start of the next.
#include "codecs/buffers.h"

#include "core/byte_order.h"
#include "core/global_block.h"
#include "core/stream.h"

#include <algorithm>

namespace tiff {

static uint32_t FilledBytes(const CodecContext* context)
{
    return context->codeBufferSize - context->codeBytesLeft;
}

void EmptyCodeBuffer(CodecContext* context)
{
    context->bufferFilePos += FilledBytes(context);
    context->stripPos = context->bufferFilePos;
    context->codeCursor = CodeBuffer(context);
    context->codeBytesLeft = context->codeBufferSize;
}

// Strips beyond the list are not noted.
static Status StoreEntry(const CodecContext* context, HGLOBAL block, uint32_t value)
{
    if (!block || context->strip >= context->stripCount)
        return error::None;
    Locked<uint8_t> entries(block);
    if (!entries)
        return error::NotEnoughMemory;
    std::memcpy(&entries[size_t{context->strip} * 4], &value, sizeof(value));
    return error::None;
}

// The next strip begins behind the bytes in the buffer. Its count starts that far below zero, so that
// flushing them brings it to 0.
static Status CloseStrip(CodecContext* context)
{
    const uint32_t filled = FilledBytes(context);
    const uint32_t stripBytes = context->bufferFilePos + filled;
    if (const Status status = StoreEntry(context, context->stripOffsets, context->dataEnd);
        status != error::None)
        return status;
    if (const Status status = StoreEntry(context, context->stripByteCounts, stripBytes);
        status != error::None)
        return status;
    SetStripLastRow(context);
    ++context->strip;
    context->dataEnd += stripBytes;
    context->stripPos = 0;
    context->bufferFilePos = 0u - filled;
    return error::None;
}

void OrderSamples(const CodecContext* context)
{
    if (HasSwappedSamples(context))
        SwapElements({context->lineBuffer, context->bytesPerLine}, fieldtype::Short);
}

Status PutBytes(CodecContext* context, std::span<const uint8_t> bytes)
{
    for (;;) {
        const auto part = static_cast<uint32_t>(std::min<size_t>(bytes.size(), context->codeBytesLeft));
        if (part > 0)
            std::memcpy(context->codeCursor, bytes.data(), part);
        context->codeCursor += part;
        context->codeBytesLeft -= part;
        bytes = bytes.subspan(part);
        if (bytes.empty())
            return error::None;
        if (const Status status = FlushCodeBuffer(context); status != error::None)
            return status;
    }
}

} // namespace tiff

using namespace tiff;

extern "C" uint32_t InitEncodeBuffers(CodecContext* context) noexcept
{
    context->row = 0;
    context->strip = 0;
    if (const Status status = AllocateBuffers(context, CODE_BUFFER_LIMIT); status != error::None)
        return status;
    context->codeCursor = CodeBuffer(context);
    context->codeBytesLeft = context->codeBufferSize;
    context->bufferFilePos = 0;
    context->dataEnd = mTell(context->stream);
    return context->dataEnd == STREAM_FAILED ? error::InputOutput : FillDataBuffer(context);
}

extern "C" uint32_t FillDataBuffer(CodecContext* context) noexcept
{
    if (context->lastLineOfStrip)
        if (const Status status = CloseStrip(context); status != error::None)
            return status;
    if (context->row >= Rows(context))
        return ALL_ROWS_DONE;
    BeginLine(context);
    context->lastLineOfStrip = context->row == context->stripLastRow;
    const uint32_t row = context->row++;
    return static_cast<Status>(context->lineCallback(context->lineBuffer, row, context->userData));
}

// The buffer is empty even after a failure, so that no coder can run out of it.
extern "C" uint32_t FlushCodeBuffer(CodecContext* context) noexcept
{
    const uint32_t bytes = FilledBytes(context);
    EmptyCodeBuffer(context);
    if (bytes == 0)
        return error::None;
    return WriteArray(context->stream, fieldtype::Byte, bytes, context->codeCursor, TIFF_INTEL,
                      context->fillOrder)
               ? error::None
               : error::InputOutput;
}
