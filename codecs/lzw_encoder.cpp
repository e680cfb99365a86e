// Strings are found through a hash of their prefix's code and last byte. Before that the byte is
// compared with the one that followed the prefix last: in runs, which are most of a page, each
// byte waits for one look into a small table and nothing else.
#include "codecs/lzw_encoder.h"

#include "codecs/buffers.h"
#include "codecs/ccitt_writer.h"
#include "codecs/predictor.h"
#include "core/global_block.h"

#include <algorithm>
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

// A slot: the prefix's code, the byte and in the low bits the string's own code; 0 is empty.
constexpr uint32_t CODE_BITS = 12;
constexpr uint32_t CODES = 1u << CODE_BITS;
constexpr uint32_t SLOT_BITS = 13;
constexpr uint32_t SLOTS = 1u << SLOT_BITS;

// The byte that followed a string last, above the code of what they make together.
constexpr uint32_t NO_FOLLOWER = UINT32_MAX;

struct StringTable {
    uint32_t slots[SLOTS];
    uint32_t latest[CODES];
};

struct LzwEncoder {
    BitWriter bits;
    StringTable* table;
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

inline void Restart(LzwEncoder& encoder)
{
    Put(encoder.bits, CLEAR, encoder.width);
    encoder.nextFree = FIRST_FREE;
    encoder.width = LEAST_WIDTH;
    encoder.stretchRows = 0;
    std::memset(encoder.table->slots, 0, sizeof(encoder.table->slots));
    std::fill_n(encoder.table->latest, CLEAR, NO_FOLLOWER);
}

// The slot that holds a key, a prefix's code and a byte, or the empty one where it belongs. At
// most half of the slots are taken.
inline uint32_t FindSlot(const StringTable& table, uint32_t string, uint32_t byte)
{
    const uint32_t key = string << 8 | byte;
    uint32_t slot = key * 0x9E3779B1u >> (32 - SLOT_BITS);
    while (table.slots[slot] >> CODE_BITS != key && table.slots[slot] != 0)
        slot = (slot + 1) % SLOTS;
    return slot;
}

void EncodeBytes(LzwEncoder& shared, std::span<const uint8_t> bytes)
{
    LzwEncoder encoder = shared;
    StringTable& table = *encoder.table;
    auto next = bytes.begin();
    uint32_t string = encoder.string; // what each byte waits for: not to be looked for in memory
    if (string == NO_STRING && next != bytes.end())
        string = *next++;
    for (; next != bytes.end(); ++next) {
        const uint32_t byte = *next;
        uint32_t& latest = table.latest[string];
        if (latest >> CODE_BITS == byte) {
            string = latest % CODES;
            continue;
        }
        uint32_t& slot = table.slots[FindSlot(table, string, byte)];
        if (slot != 0) {
            string = slot % CODES;
            latest = byte << CODE_BITS | string;
            continue;
        }
        slot = (string << 8 | byte) << CODE_BITS | encoder.nextFree;
        latest = byte << CODE_BITS | encoder.nextFree;
        table.latest[encoder.nextFree] = NO_FOLLOWER;
        PutCode(encoder, string);
        string = byte;
        if (encoder.nextFree == FULL_TABLE)
            Restart(encoder);
    }
    shared = encoder;
    shared.string = string;
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
