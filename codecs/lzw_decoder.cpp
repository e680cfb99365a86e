// An entry is made as soon as its prefix is read and gets its last byte from the code after
// it. Counting entries that early is what makes the widths switch at 511, 1023 and 2047.
#include "codecs/lzw_decoder.h"

#include "codecs/buffers.h"
#include "codecs/predictor.h"
#include "core/byte_order.h"
#include "core/global_block.h"

#include <algorithm>
#include <cstring>

namespace tiff {

namespace {

constexpr uint32_t TABLE_CODES = 4096;
constexpr uint32_t CLEAR = 256;
constexpr uint32_t END_OF_INFORMATION = 257;
constexpr uint32_t FIRST_FREE = 258;
constexpr uint32_t LEAST_WIDTH = 9;
constexpr uint32_t MOST_WIDTH = 12;

struct LzwTable {
    uint16_t prefix[TABLE_CODES];
    uint16_t length[TABLE_CODES];
    uint8_t last[TABLE_CODES];
    uint8_t first[TABLE_CODES];
    uint8_t stack[TABLE_CODES]; // a string that crosses a line end
};

struct LzwDecoder {
    CodecContext* context;
    LzwTable* table;
    uint32_t lineLeft; // bytes missing from the line in hand
    uint32_t nextFree = FIRST_FREE;
    uint32_t width = LEAST_WIDTH;
    bool entryOpen = false; // the newest entry waits for its last byte
    uint32_t bits = 0;      // the low bitCount bits are not yet taken
    uint32_t bitCount = 0;
};

void ResetTable(LzwDecoder& decoder)
{
    decoder.nextFree = FIRST_FREE;
    decoder.width = LEAST_WIDTH;
    decoder.entryOpen = false;
}

void BeginStrip(LzwDecoder& decoder)
{
    ResetTable(decoder);
    decoder.bits = 0;
    decoder.bitCount = 0;
}

Status NextCode(LzwDecoder& decoder, uint32_t& code)
{
    if (decoder.nextFree > (1u << decoder.width) - 1 && decoder.width < MOST_WIDTH)
        ++decoder.width;
    CodecContext* context = decoder.context;
    while (decoder.bitCount < decoder.width) {
        if (context->codeBytesLeft == 0) {
            const Status status = FillCodeBuffer(context);
            if (status != error::None)
                return status == error::UnexpectedEndOfFile ? error::BadCode : status;
        }
        decoder.bits = decoder.bits << 8 | *context->codeCursor++;
        --context->codeBytesLeft;
        decoder.bitCount += 8;
    }
    decoder.bitCount -= decoder.width;
    code = decoder.bits >> decoder.bitCount & ((1u << decoder.width) - 1);
    return error::None;
}

// 16-bit samples are put in order before they are summed.
Status HandOverLine(LzwDecoder& decoder)
{
    CodecContext* context = decoder.context;
    if (HasSwappedSamples(context))
        SwapElements({context->lineBuffer, context->bytesPerLine}, fieldtype::Short);
    if (context->compression & compression::HorizontalDifferencing)
        UndoDifferencing(context);
    const Status status = FlushDataBuffer(context);
    decoder.lineLeft = context->lineBytes;
    return status;
}

void AddEntry(LzwDecoder& decoder, uint32_t prefix)
{
    LzwTable& table = *decoder.table;
    if (decoder.entryOpen)
        table.last[decoder.nextFree - 1] = table.first[prefix];
    decoder.entryOpen = decoder.nextFree < TABLE_CODES;
    if (!decoder.entryOpen)
        return;
    table.prefix[decoder.nextFree] = static_cast<uint16_t>(prefix);
    table.first[decoder.nextFree] = table.first[prefix];
    table.length[decoder.nextFree] = static_cast<uint16_t>(table.length[prefix] + 1);
    ++decoder.nextFree;
}

void Unpack(const LzwTable& table, uint32_t code, uint8_t* target)
{
    for (uint8_t* at = target + table.length[code]; at > target; code = table.prefix[code])
        *--at = table.last[code];
}

// Writes a code's string, over line ends if need be. The rest of a string that reaches the end
// of its strip is dropped with the table.
Status WriteString(LzwDecoder& decoder, uint32_t code)
{
    CodecContext* context = decoder.context;
    LzwTable& table = *decoder.table;
    uint32_t length = table.length[code];
    if (length < decoder.lineLeft) {
        Unpack(table, code, context->lineCursor);
        context->lineCursor += length;
        decoder.lineLeft -= length;
        return error::None;
    }
    Unpack(table, code, table.stack);
    const uint8_t* source = table.stack;
    while (length > 0) {
        const uint32_t part = std::min(length, decoder.lineLeft);
        std::memcpy(context->lineCursor, source, part);
        context->lineCursor += part;
        decoder.lineLeft -= part;
        source += part;
        length -= part;
        if (decoder.lineLeft > 0)
            break;
        if (const Status status = HandOverLine(decoder); status != error::None)
            return status;
        if (context->lastLineOfStrip) {
            BeginStrip(decoder);
            break;
        }
    }
    return error::None;
}

// Only a strip's last line may end here; what it lacks is zero.
Status EndOfInformation(LzwDecoder& decoder)
{
    std::memset(decoder.context->lineCursor, 0, decoder.lineLeft);
    if (const Status status = HandOverLine(decoder); status != error::None)
        return status;
    if (!decoder.context->lastLineOfStrip)
        return error::BadCode;
    BeginStrip(decoder);
    return error::None;
}

Status DecodeCode(LzwDecoder& decoder)
{
    uint32_t code = 0;
    if (const Status status = NextCode(decoder, code); status != error::None)
        return status;
    if (code == CLEAR) {
        ResetTable(decoder);
        return error::None;
    }
    if (code == END_OF_INFORMATION)
        return EndOfInformation(decoder);
    if (code >= decoder.nextFree)
        return error::BadCode;
    AddEntry(decoder, code);
    return WriteString(decoder, code);
}

} // namespace

Status DecodeLzw(CodecContext* context)
{
    Status status = InitDecodeBuffers(context);
    if (status != error::None)
        return status;
    GlobalBlock block(sizeof(LzwTable));
    Locked<LzwTable> table(block.Get());
    if (!table)
        return error::NotEnoughMemory;
    for (uint32_t byte = 0; byte < CLEAR; ++byte) {
        table->first[byte] = table->last[byte] = static_cast<uint8_t>(byte);
        table->length[byte] = 1;
    }
    LzwDecoder decoder{.context = context, .table = table.Get(), .lineLeft = context->lineBytes};
    while (status == error::None)
        status = DecodeCode(decoder);
    return CodecResult(status);
}

} // namespace tiff
