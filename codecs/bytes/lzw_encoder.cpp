// Bytes are followed two at a time. A string of odd length is found through a hash of the string two bytes
// shorter and those two bytes. One of even length is always the end of a match, found through the string one
// byte shorter. The codes of a stretch, from one Clear to the next, are kept and packed together: finding
// strings and shifting bits each need all registers.
#include "codecs/bytes/lzw_encoder.h"

#include "codecs/buffers.h"
#include "codecs/bytes/predictor.h"
#include "core/byte_order.h"
#include "core/global_block.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace tiff {

namespace {

constexpr uint32_t CLEAR = 256;
constexpr uint32_t END_OF_INFORMATION = 257;
constexpr uint32_t FIRST_FREE = 258;
constexpr uint32_t FULL_TABLE = 4095; // the code that is never used
constexpr uint32_t LEAST_WIDTH = 9;
constexpr uint32_t KEPT_ROWS = 3; // the least length of a stretch, however badly it compresses
constexpr uint32_t NO_STRING = UINT32_MAX;

// The continuation of a string: a byte, or two with PAIR above them, the first one lowest. A key is a
// string's code above its continuation.
constexpr uint32_t PAIR = 1u << 16;
constexpr uint32_t KEY_SHIFT = 17;
constexpr uint32_t NO_KEY = UINT32_MAX;

constexpr uint32_t CODES = 4096;
constexpr uint32_t SLOT_BITS = 14;
constexpr uint32_t SLOTS = 1u << SLOT_BITS;
// Codes are given in order, so keys with one continuation lie close together: probing takes large steps.
constexpr uint32_t NEXT_SLOT = 2741;

struct StringTable {
    uint16_t slots[SLOTS]; // strings' codes; 0 is empty
    uint32_t keys[CODES];
    uint16_t codes[CODES]; // of the stretch, each at the code of the string that was added with it
};

struct LzwEncoder {
    CodecContext* context;
    StringTable* table;
    uint32_t nextFree = FIRST_FREE;
    uint32_t string = NO_STRING; // code of the bytes read and not yet coded
    uint32_t anchor = NO_STRING; // the string, or all but its last byte when its length is even
    uint8_t lastByte = 0;        // the byte that the anchor lacks
    uint32_t stretchRows = 0;    // whole rows since the last Clear
    uint32_t lineCodes = 0;      // found during the current line
    uint32_t held = 0;           // bits in the window, below 8 between two calls
    uint64_t window = 0;         // left-aligned
    Status failed = error::None; // the status of the flush that failed; nothing is written after it
};

// Appends up to 48 bits. Always stores eight bytes and advances by the whole ones, so that no branch depends
// on their number.
void PutBits(LzwEncoder& encoder, uint64_t bits, uint32_t length)
{
    CodecContext* context = encoder.context;
    encoder.held += length;
    encoder.window |= bits << (64 - encoder.held);
    const uint32_t bytes = encoder.held / 8;
    uint8_t word[sizeof(uint64_t)];
    const uint64_t swapped = Swap64(encoder.window);
    std::memcpy(word, &swapped, sizeof(word));
    if (context->codeBytesLeft >= sizeof(word)) {
        std::memcpy(context->codeCursor, word, sizeof(word));
        context->codeCursor += bytes;
        context->codeBytesLeft -= bytes;
    } else if (encoder.failed == error::None) {
        encoder.failed = PutBytes(context, {word, bytes});
    }
    encoder.window <<= bytes * 8;
    encoder.held %= 8;
}

// A code is as wide as the code of the string that was added with it: the reader adds the same one.
void PutStretch(LzwEncoder& encoder, uint32_t last)
{
    const uint16_t* codes = encoder.table->codes;
    for (uint32_t at = FIRST_FREE; at < encoder.nextFree;) {
        const auto width = static_cast<uint32_t>(std::bit_width(at));
        const uint32_t end = std::min(encoder.nextFree, 1u << width);
        for (; at + 4 <= end; at += 4) {
            const uint64_t first = uint64_t{codes[at]} << width | codes[at + 1];
            const uint64_t second = uint64_t{codes[at + 2]} << width | codes[at + 3];
            PutBits(encoder, first << 2 * width | second, 4 * width);
        }
        for (; at < end; ++at)
            PutBits(encoder, codes[at], width);
    }
    PutBits(encoder, last, static_cast<uint32_t>(std::bit_width(encoder.nextFree)));
}

void BeginStretch(LzwEncoder& encoder)
{
    encoder.nextFree = FIRST_FREE;
    encoder.stretchRows = 0;
    std::memset(encoder.table->slots, 0, sizeof(encoder.table->slots));
}

void Restart(LzwEncoder& encoder)
{
    PutStretch(encoder, CLEAR);
    BeginStretch(encoder);
}

struct Place {
    uint32_t key, slot, code;
};

// The slot of a string and its continuation, or the empty slot (code 0) for them.
inline Place Find(const StringTable& table, uint32_t string, uint32_t continuation)
{
    Place place{.key = string << KEY_SHIFT | continuation,
                .slot = (continuation * 0x9E3779B1u >> (32 - SLOT_BITS)) ^ string};
    for (;;) {
        place.code = table.slots[place.slot];
        if (table.keys[place.code] == place.key || place.code == 0)
            return place;
        place.slot = (place.slot + NEXT_SLOT) % SLOTS;
    }
}

inline void AddString(StringTable& table, const Place& place, uint32_t& nextFree, uint32_t code)
{
    table.slots[place.slot] = static_cast<uint16_t>(nextFree);
    table.keys[nextFree] = place.key;
    table.codes[nextFree] = static_cast<uint16_t>(code);
    ++nextFree;
}

inline uint32_t PairAt(const uint8_t* bytes)
{
    return PAIR | Load16(bytes, TIFF_INTEL);
}

// Adds the string with both bytes of the pair, or with the first when even that was unknown. Returns how many
// of the two bytes the added string has; the last of these begins the next string.
inline uint32_t EndString(StringTable& table, uint32_t& string, uint32_t& nextFree, const Place& pair)
{
    const uint32_t first = pair.key % 256, second = pair.key / 256 % 256;
    const Place single = Find(table, string, first);
    const bool known = single.code != 0;
    if (known)
        AddString(table, pair, nextFree, single.code);
    else
        AddString(table, single, nextFree, string);
    string = known ? second : first;
    return known ? 2 : 1;
}

// Takes all bytes but the last, or until the table is full. A string of one byte is first looked up with the
// next byte alone: in photographs that mostly settles it.
inline const uint8_t* TakePairs(StringTable& table, uint32_t& shared, uint32_t& nextFree, const uint8_t* next,
                                const uint8_t* end)
{
    uint32_t string = shared;
    while (end - next >= 2 && nextFree < FULL_TABLE) {
        if (string < CLEAR) {
            const Place single = Find(table, string, *next);
            if (single.code == 0) {
                AddString(table, single, nextFree, string);
                string = *next++;
                continue;
            }
        }
        Place pair = Find(table, string, PairAt(next));
        while (pair.code != 0) {
            string = pair.code;
            next += 2;
            if (end - next < 2)
                break;
            pair = Find(table, string, PairAt(next));
        }
        if (pair.code == 0)
            next += EndString(table, string, nextFree, pair);
    }
    shared = string;
    return next;
}

// Stops when the table is full; returns the position.
const uint8_t* EncodePart(LzwEncoder& encoder, const uint8_t* next, const uint8_t* end)
{
    StringTable& table = *encoder.table;
    uint32_t string = encoder.anchor, nextFree = encoder.nextFree;
    if (encoder.string == NO_STRING) {
        string = *next++;
    } else if (encoder.string != string) {
        const uint8_t bytes[] = {encoder.lastByte, *next++};
        const Place pair = Find(table, string, PairAt(bytes));
        if (pair.code != 0)
            string = pair.code;
        else
            EndString(table, string, nextFree, pair);
    }
    next = TakePairs(table, string, nextFree, next, end);
    encoder.string = string;
    if (end - next == 1 && nextFree < FULL_TABLE) {
        encoder.lastByte = *next;
        const Place single = Find(table, string, *next);
        encoder.string = single.code;
        if (single.code == 0) {
            AddString(table, single, nextFree, string);
            encoder.string = string = *next;
        }
        ++next;
    }
    encoder.anchor = string;
    encoder.nextFree = nextFree;
    return next;
}

void EncodeBytes(LzwEncoder& encoder, std::span<const uint8_t> bytes)
{
    const uint8_t* next = bytes.data();
    const uint8_t* const end = next + bytes.size();
    while (next < end) {
        const uint32_t before = encoder.nextFree;
        next = EncodePart(encoder, next, end);
        encoder.lineCodes += encoder.nextFree - before;
        if (encoder.nextFree == FULL_TABLE)
            Restart(encoder);
    }
}

void PutString(LzwEncoder& encoder)
{
    if (encoder.string != NO_STRING)
        encoder.table->codes[encoder.nextFree++] = static_cast<uint16_t>(encoder.string);
    encoder.string = NO_STRING;
}

// A line whose code is longer than the line gives up the table.
void FinishLine(LzwEncoder& encoder, const CodecContext* context)
{
    ++encoder.stretchRows;
    const uint64_t codeBits = uint64_t{encoder.lineCodes} * std::bit_width(encoder.nextFree);
    encoder.lineCodes = 0;
    if (codeBits > uint64_t{context->bytesPerLine} * 8 && encoder.stretchRows >= KEPT_ROWS) {
        PutString(encoder);
        Restart(encoder);
    }
}

void FinishStrip(LzwEncoder& encoder)
{
    PutString(encoder);
    PutStretch(encoder, END_OF_INFORMATION);
    if (encoder.held > 0)
        PutBits(encoder, 0, 8 - encoder.held);
    encoder.lineCodes = 0;
}

void BeginStrip(LzwEncoder& encoder)
{
    PutBits(encoder, CLEAR, LEAST_WIDTH);
    BeginStretch(encoder);
}

Status EncodeLines(LzwEncoder& encoder, CodecContext* context)
{
    Status status = error::None;
    BeginStrip(encoder);
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
        status = encoder.failed;
        if (status == error::None)
            status = FillDataBuffer(context);
        if (status == error::None && endsStrip)
            BeginStrip(encoder);
    }
    return status;
}

} // namespace

Status EncodeLzw(CodecCall* context)
{
    if (const Status status = InitEncodeBuffers(context); status != error::None)
        return CodecResult(status);
    GlobalBlock block(sizeof(StringTable));
    Locked<StringTable> table(block.Get());
    if (!table)
        return error::NotEnoughMemory;
    table->keys[0] = NO_KEY;
    LzwEncoder encoder{.context = context, .table = table.Get()};
    return CodecResult(EncodeLines(encoder, context));
}

} // namespace tiff
