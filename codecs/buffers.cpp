#include "codecs/buffers.h"

#include "codecs/old_jpeg.h"
#include "core/byte_order.h"
#include "core/global_block.h"
#include "core/stream.h"

#include <algorithm>
#include <cstring>

namespace tiff {

static constexpr uint32_t NOTHING_LOADED = 0xFFFFFF;
static constexpr uint32_t BUFFER_SLACK = 100;

void SetStripLastRow(CodecContext* context)
{
    const uint64_t last = uint64_t{context->row} + context->rowsPerStrip - 1;
    context->stripLastRow = static_cast<uint32_t>(std::min<uint64_t>(last, Rows(context) - 1));
}

void BeginLine(CodecContext* context)
{
    context->lineBytes = context->bytesPerLine;
    context->linePixels = Width(context);
    context->lineCursor = context->lineBuffer;
}

Status AllocateBuffers(CodecContext* context, uint32_t codeBytes)
{
    const uint64_t lineBytes = uint64_t{context->bytesPerLine} + SPARE_LINE_BYTES;
    GlobalBlock block(lineBytes + codeBytes + BUFFER_SLACK);
    auto* line = block ? static_cast<uint8_t*>(GlobalLock(block.Get())) : nullptr;
    if (!line || lineBytes > UINT32_MAX) {
        if (line)
            GlobalUnlock(block.Get());
        return error::NotEnoughMemory;
    }
    context->bufferBlock = block.Release();
    context->lineBuffer = line;
    context->lineBufferSize = static_cast<uint32_t>(lineBytes);
    context->codeBufferSize = codeBytes;
    context->stripPos = 0;
    context->lastLineOfStrip = 0;
    SetStripLastRow(context);
    return error::None;
}

// New memory of the system is zero, and costs nothing until it is used. For a white line that is millions of
// pixels wide that is cheaper than clearing.
static bool RenewBuffers(CodecContext* context)
{
    const size_t codeBytes = context->codeBufferSize + BUFFER_SLACK;
    const auto read = context->codeCursor - CodeBuffer(context);
    GlobalBlock block(context->lineBufferSize + codeBytes);
    auto* line = block ? static_cast<uint8_t*>(GlobalLock(block.Get())) : nullptr;
    if (!line)
        return false;
    std::memcpy(line + context->lineBufferSize, CodeBuffer(context), codeBytes);
    GlobalUnlock(context->bufferBlock);
    GlobalFree(context->bufferBlock);
    context->bufferBlock = block.Release();
    context->lineBuffer = context->lineCursor = line;
    context->codeCursor = CodeBuffer(context) + read;
    return true;
}

void ClearLine(CodecContext* context)
{
    constexpr uint32_t WIDE_LINE = 1 << 20;
    if (context->bytesPerLine < WIDE_LINE || !RenewBuffers(context))
        std::memset(context->lineBuffer, 0, context->bytesPerLine);
}

static Status StripOffset(const CodecContext* context, uint32_t strip, uint32_t& offset)
{
    if (!context->stripOffsets || strip >= context->stripCount)
        return error::InputOutput;
    Locked<uint8_t> offsets(context->stripOffsets);
    if (!offsets)
        return error::NotEnoughMemory;
    offset = context->stripOffsetsType == fieldtype::Short ? Load16(&offsets[size_t{strip} * 2], TIFF_INTEL)
                                                           : Load32(&offsets[size_t{strip} * 4], TIFF_INTEL);
    offset += TileHeaderBytes(context);
    return error::None;
}

// A strip that begins inside the bytes held needs no read.
static Status PositionOnStrip(CodecContext* context)
{
    uint32_t offset = 0;
    if (const Status status = StripOffset(context, context->strip, offset); status != error::None)
        return status;
    const uint32_t loaded = context->stripPos - context->bufferFilePos;
    const bool held = context->bufferFilePos != NOTHING_LOADED && offset >= context->bufferFilePos &&
                      offset - context->bufferFilePos <= loaded;
    if (held) {
        const uint32_t skipped = offset - context->bufferFilePos;
        context->codeCursor = CodeBuffer(context) + skipped;
        context->codeBytesLeft = loaded - skipped;
        return error::None;
    }
    context->stripPos = offset;
    if (mSeek(context->stream, offset, 0) == STREAM_FAILED || FillCodeBuffer(context) != error::None)
        return error::InputOutput;
    return error::None;
}

Status HandOverLine(CodecContext* context, uint8_t* line)
{
    const auto status = static_cast<Status>(context->lineCallback(line, context->row, context->userData));
    if (status != error::None)
        return status;
    BeginLine(context);
    return CountLine(context);
}

Status BeginNextStrip(CodecContext* context)
{
    if (context->row >= Rows(context))
        return ALL_ROWS_DONE;
    ++context->strip;
    SetStripLastRow(context);
    return PositionOnStrip(context);
}

Status HandOverSamples(CodecContext* context)
{
    if (HasSwappedSamples(context))
        SwapElements({context->lineBuffer, context->bytesPerLine}, fieldtype::Short);
    return FlushDataBuffer(context);
}

static void Release(HGLOBAL& block)
{
    if (block)
        GlobalFree(block);
    block = nullptr;
}

void ReleaseBlocks(CodecContext* context)
{
    if (context->bufferBlock)
        GlobalUnlock(context->bufferBlock);
    Release(context->bufferBlock);
    Release(context->stripOffsets);
    Release(context->stripByteCounts);
    Release(context->quantisationTables);
    Release(context->acTables);
    Release(context->dcTables);
}

} // namespace tiff

using namespace tiff;

extern "C" uint32_t InitDecodeBuffers(CodecContext* context) noexcept
{
    const Status status = AllocateBuffers(context, std::min(context->dataEnd, CODE_BUFFER_LIMIT));
    if (status != error::None)
        return status;
    context->bufferFilePos = NOTHING_LOADED;
    const Status loaded = context->stripOffsets ? PositionOnStrip(context) : FillCodeBuffer(context);
    if (loaded != error::None)
        return loaded == error::NotEnoughMemory ? loaded : Status{error::InputOutput};
    BeginLine(context);
    return error::None;
}

extern "C" uint32_t FillCodeBuffer(CodecContext* context) noexcept
{
    context->bufferFilePos = context->stripPos;
    const uint32_t available =
        context->dataEnd > context->bufferFilePos ? context->dataEnd - context->bufferFilePos : 0;
    const uint32_t count = std::min(context->codeBufferSize, available) & 0xFFFF;
    context->codeCursor = CodeBuffer(context);
    context->codeBytesLeft = 0;
    if (count == 0)
        return error::UnexpectedEndOfFile;
    context->stripPos += count;
    if (!ReadArray(context->stream, fieldtype::Byte, count, context->codeCursor, TIFF_INTEL,
                   context->fillOrder))
        return error::InputOutput;
    context->codeBytesLeft = count;
    return error::None;
}

extern "C" uint32_t FlushDataBuffer(CodecContext* context) noexcept
{
    return HandOverLine(context, context->lineBuffer);
}
