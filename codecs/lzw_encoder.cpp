// Strings are found through a hash of their prefix's code and last byte. A slot carries the
// number of the stretch between two Clears that it belongs to, so a restart empties the table
// by counting on.
#include "codecs/lzw_encoder.h"

#include "codecs/buffers.h"
#include "codecs/ccitt_writer.h"
#include "codecs/predictor.h"
#include "core/global_block.h"

#include <bit>
#include <cstring>

namespace tiff {

namespace {

constexpr uint32_t CLEAR = 256;
constexpr uint32_t END_OF_INFORMATION = 257;
constexpr uint32_t FIRST_FREE = 258;
constexpr uint32_t FULL_TABLE = 4095; // the code that is never given
constexpr uint32_t LEAST_WIDTH = 9;
constexpr uint32_t KEPT_ROWS = 3; // that a stretch lives at least, however badly it compresses
constexpr uint32_t NO_STRING = UINT32_MAX;

constexpr uint32_t SLOT_BITS = 13;
constexpr uint32_t SLOTS = 1u << SLOT_BITS;
constexpr uint32_t KEY_BITS = 20; // a code of 12 bits and a byte; the stretch's number above
constexpr uint32_t LAST_STRETCH = (1u << (32 - KEY_BITS)) - 1;

struct StringTable {
    uint32_t keys[SLOTS]; // 0 belongs to no stretch
    uint16_t codes[SLOTS];
};

struct LzwEncoder {
    BitWriter bits;
    StringTable* table;
    uint32_t stretch = 0;
    uint32_t nextFree = FIRST_FREE;
    uint32_t width = LEAST_WIDTH;
    uint32_t string = NO_STRING; // code of what is read and not yet coded
    uint32_t stretchRows = 0;    // whole rows since the last Clear
    uint32_t lineCodes = 0;      // put during the line in hand
};

// Counts the entry that the reader makes of it: widths grow with the codes since the Clear.
inline void PutCode(LzwEncoder& encoder, uint32_t code)
{
    Put(encoder.bits, code, encoder.width);
    ++encoder.nextFree;
    ++encoder.lineCodes;
    encoder.width += encoder.nextFree >> encoder.width;
}

void Restart(LzwEncoder& encoder)
{
    Put(encoder.bits, CLEAR, encoder.width);
    encoder.nextFree = FIRST_FREE;
    encoder.width = LEAST_WIDTH;
    encoder.stretchRows = 0;
    if (encoder.stretch++ == LAST_STRETCH) {
        encoder.stretch = 1;
        std::memset(encoder.table->keys, 0, sizeof(encoder.table->keys));
    }
}

// The slot that holds a key, or the empty one where it belongs. Less than half of the slots
// are ever taken.
inline uint32_t FindSlot(const StringTable& table, uint32_t key, uint32_t stretch)
{
    uint32_t slot = key * 0x9E3779B1u >> (32 - SLOT_BITS);
    while (table.keys[slot] != key && table.keys[slot] >> KEY_BITS == stretch)
        slot = (slot + 1) % SLOTS;
    return slot;
}

void EncodeBytes(LzwEncoder& shared, std::span<const uint8_t> bytes)
{
    LzwEncoder encoder = shared;
    StringTable& table = *encoder.table;
    for (const uint8_t byte : bytes) {
        if (encoder.string == NO_STRING) {
            encoder.string = byte;
            continue;
        }
        const uint32_t key = encoder.stretch << KEY_BITS | encoder.string << 8 | byte;
        const uint32_t slot = FindSlot(table, key, encoder.stretch);
        if (table.keys[slot] == key) {
            encoder.string = table.codes[slot];
            continue;
        }
        table.keys[slot] = key;
        table.codes[slot] = static_cast<uint16_t>(encoder.nextFree);
        PutCode(encoder, encoder.string);
        encoder.string = byte;
        if (encoder.nextFree == FULL_TABLE)
            Restart(encoder);
    }
    shared = encoder;
}

void PutString(LzwEncoder& encoder)
{
    if (encoder.string != NO_STRING)
        PutCode(encoder, encoder.string);
    encoder.string = NO_STRING;
}

// A line that grew by being coded gives the table up.
void FinishLine(LzwEncoder& encoder, const CodecContext* context)
{
    ++encoder.stretchRows;
    const uint64_t codeBits = uint64_t{encoder.lineCodes} * std::bit_width(encoder.nextFree);
    encoder.lineCodes = 0;
    if (codeBits > uint64_t{context->bytesPerLine} * 8 && encoder.stretchRows >= KEPT_ROWS) {
        PutString(encoder);
        Restart(encoder);
        encoder.lineCodes = 0;
    }
}

void FinishStrip(LzwEncoder& encoder)
{
    PutString(encoder);
    Put(encoder.bits, END_OF_INFORMATION, encoder.width);
    EndCode(encoder.bits);
    encoder.width = LEAST_WIDTH; // of the Clear that begins the next strip
    encoder.lineCodes = 0;
}

Status EncodeLines(LzwEncoder& encoder, CodecContext* context)
{
    Status status = error::None;
    Restart(encoder);
    while (status == error::None) {
        if (context->compression & compression::HorizontalDifferencing)
            ApplyDifferencing(context);
        OrderSamples(context);
        EncodeBytes(encoder, {context->lineBuffer, context->bytesPerLine});
        const bool endsStrip = context->lastLineOfStrip != 0;
        if (endsStrip)
            FinishStrip(encoder);
        else
            FinishLine(encoder, context);
        status = encoder.bits.failed;
        if (status == error::None)
            status = FillDataBuffer(context);
        if (status == error::None && endsStrip)
            Restart(encoder);
    }
    return status;
}

Status FlushToStrip(CodecContext* context)
{
    return FlushCodeBuffer(context);
}

} // namespace

Status EncodeLzw(CodecContext* context)
{
    if (const Status status = InitEncodeBuffers(context); status != error::None)
        return CodecResult(status);
    GlobalBlock block(sizeof(StringTable));
    Locked<StringTable> table(block.Get());
    if (!table)
        return error::NotEnoughMemory;
    LzwEncoder encoder{.bits = {.context = context, .flush = FlushToStrip}, .table = table.Get()};
    return CodecResult(EncodeLines(encoder, context));
}

} // namespace tiff
