// Strings are kept where they were decoded, not in a table: decoded bytes go into a history and from there
// into the lines, and an entry is the place and length of a string in the history. It is opened as soon as
// its prefix is written; its last byte is the first of the next string. Counting entries that early makes the
// widths switch at 511, 1023 and 2047.
#include "codecs/bytes/lzw_decoder.h"

#include "codecs/buffers.h"
#include "codecs/bytes/predictor.h"
#include "core/byte_order.h"
#include "core/copy_row.h"
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
constexpr uint32_t NO_ENTRY = TABLE_CODES; // opened instead when the table is full

constexpr uint32_t WORD_BYTES = SIXTEEN; // strings are copied in words, the shortest as one
constexpr uint32_t GROUP_CODES = 4;      // fit into any eight bytes, at any bit offset
constexpr uint32_t FIRST_PLACE = 256;    // below it lies each byte once, the strings of the codes to 255
constexpr uint32_t END_PLACE = 0xF000;

// A string: its length above, its place in the low 16 bits. No string is as long as NOT_IN_HISTORY, whose
// length stops the fast loop.
constexpr uint32_t PLACE_BITS = 16;
constexpr uint32_t ONE_BYTE = 1 << PLACE_BITS; // of length
constexpr uint32_t NOT_IN_HISTORY = 0xFFFF * ONE_BYTE;

struct LzwTable {
    uint32_t strings[TABLE_CODES + 1];
    uint16_t prefix[TABLE_CODES + 1];
    // Length and last byte of entries whose strings have left the history.
    uint16_t lostLength[TABLE_CODES];
    uint8_t lostLast[TABLE_CODES];
    uint8_t history[END_PLACE + WORD_BYTES];
};

struct LzwDecoder {
    CodecCall* context;
    LzwTable* table;
    uint64_t stripLeft = 0;             // bytes that the strip still needs
    uint32_t lineLeft = 0;              // the part of them in the current line, beyond the drained bytes
    uint32_t end = FIRST_PLACE;         // of the history
    uint32_t drained = FIRST_PLACE;     // up to here the lines have it
    uint32_t open = END_OF_INFORMATION; // the newest entry
    uint32_t uniform = CLEAR;           // an entry that is one byte repeated
    uint32_t width = LEAST_WIDTH;
    uint32_t bits = 0; // the low bitCount bits are not yet used
    uint32_t bitCount = 0;
};

constexpr uint32_t String(uint32_t place, uint32_t length)
{
    return length << PLACE_BITS | place;
}

constexpr uint32_t PlaceOf(uint32_t string)
{
    return string % ONE_BYTE;
}

constexpr uint32_t LengthOf(uint32_t string)
{
    return string >> PLACE_BITS;
}

void ResetTable(LzwDecoder& decoder)
{
    decoder.open = END_OF_INFORMATION;
    decoder.uniform = CLEAR;
    decoder.width = LEAST_WIDTH;
}

void BeginStrip(LzwDecoder& decoder)
{
    const CodecCall* context = decoder.context;
    ResetTable(decoder);
    decoder.bits = 0;
    decoder.bitCount = 0;
    decoder.end = decoder.drained = FIRST_PLACE;
    decoder.lineLeft = context->lineBytes;
    decoder.stripLeft = (uint64_t{context->stripLastRow - context->row} + 1) * context->lineBytes;
}

// 16-bit samples are put in order before they are summed.
Status FinishLine(LzwDecoder& decoder)
{
    CodecCall* context = decoder.context;
    if (HasSwappedSamples(context))
        SwapElements({context->lineBuffer, context->bytesPerLine}, fieldtype::Short);
    if (context->compression & compression::HorizontalDifferencing)
        UndoDifferencing(context);
    const Status status = FlushDataBuffer(context);
    decoder.lineLeft = context->lineBytes;
    return status;
}

// Copies the decoded bytes into the lines. The history does not reach beyond a strip.
Status Drain(LzwDecoder& decoder)
{
    CodecCall* context = decoder.context;
    const bool passes = PassesLines(context) && !(context->compression & compression::HorizontalDifferencing);
    while (decoder.drained < decoder.end) {
        if (passes && decoder.lineLeft == context->lineBytes &&
            decoder.end - decoder.drained >= decoder.lineLeft) {
            uint8_t* line = &decoder.table->history[decoder.drained];
            decoder.drained += decoder.lineLeft;
            if (const Status status = HandOverLine(context, line); status != error::None)
                return status;
            continue;
        }
        const uint32_t part = std::min(decoder.end - decoder.drained, decoder.lineLeft);
        CopyRow(context->lineCursor, &decoder.table->history[decoder.drained], part);
        context->lineCursor += part;
        decoder.drained += part;
        decoder.lineLeft -= part;
        if (decoder.lineLeft > 0)
            break;
        if (const Status status = FinishLine(decoder); status != error::None)
            return status;
    }
    return error::None;
}

// Hands lines over before it asks for more code.
Status Refill(LzwDecoder& decoder)
{
    if (const Status status = Drain(decoder); status != error::None)
        return status;
    const Status status = FillCodeBuffer(decoder.context);
    return status == error::UnexpectedEndOfFile ? error::BadCode : status;
}

Status NextCode(LzwDecoder& decoder, uint32_t& code)
{
    CodecCall* context = decoder.context;
    while (decoder.bitCount < decoder.width) {
        if (context->codeBytesLeft == 0)
            if (const Status status = Refill(decoder); status != error::None)
                return status;
        decoder.bits = decoder.bits << 8 | *context->codeCursor++;
        --context->codeBytesLeft;
        decoder.bitCount += 8;
    }
    decoder.bitCount -= decoder.width;
    code = decoder.bits >> decoder.bitCount & ((1u << decoder.width) - 1);
    return error::None;
}

// Opens the entry whose prefix is this string. A full table opens no more.
inline void OpenEntry(LzwTable& table, uint32_t& open, uint32_t& width, uint32_t prefix, uint32_t string)
{
    open += open < NO_ENTRY;
    table.strings[open] = string + ONE_BYTE;
    table.prefix[open] = static_cast<uint16_t>(prefix);
    if (open + 1 >= 1u << width && width < MOST_WIDTH)
        ++width;
}

// Copies a string to the end of the history; may overwrite up to 15 bytes more.
inline void CopyString(uint8_t* target, const uint8_t* source, uint32_t length)
{
    CopySixteen(target, source);
    for (uint32_t at = WORD_BYTES; at < length; at += WORD_BYTES)
        CopySixteen(target + at, source + at);
}

// The same for the open entry: it begins length - 1 bytes before the end, and its last byte is its first.
// That byte is put into the word: stored by itself, it would delay the next load.
void CopyOpenString(uint8_t* target, uint32_t length)
{
    static constexpr uint8_t LAST_OF_WORD[2 * WORD_BYTES - 1] = {0, 0, 0, 0, 0, 0, 0, 0,
                                                                 0, 0, 0, 0, 0, 0, 0, 0xFF};
    const uint8_t* source = target - (length - 1);
    uint32_t at = 0;
    for (; at + WORD_BYTES < length; at += WORD_BYTES)
        CopySixteen(target + at, source + at);
    const Sixteen last = LoadSixteen(&LAST_OF_WORD[at + WORD_BYTES - length]);
    const Sixteen known = LoadSixteen(source + at), first = SixteenOf(*source);
    StoreSixteen(target + at, Or(Without(known, last), And(first, last)));
}

// As CopyOpenString, for an open entry behind a string of one byte repeated. Areas of one colour give such
// strings, each a byte longer than the last; a copy would have to wait for the one before.
void FillOpenString(uint8_t* target, uint32_t length)
{
    const Sixteen bytes = SixteenOf(target[-1]);
    for (uint32_t at = 0; at < length; at += WORD_BYTES)
        StoreSixteen(target + at, bytes);
}

// Continues the string in front of the target. Returns the newest entry known to be uniform.
uint32_t WriteOpenString(const LzwTable& table, uint32_t open, uint32_t uniform, uint8_t* target,
                         uint32_t length)
{
    const uint32_t prefix = table.prefix[open];
    if (prefix < CLEAR || prefix == uniform) {
        FillOpenString(target, length);
        return open;
    }
    CopyOpenString(target, length);
    return uniform;
}

// Begins the history anew with the string that the open entry continues. Other entries keep their length,
// prefix and last byte, from which RestoreString rebuilds them.
void RenewHistory(LzwDecoder& decoder)
{
    LzwTable& table = *decoder.table;
    decoder.end = decoder.drained = FIRST_PLACE;
    if (decoder.open < FIRST_FREE)
        return;
    for (uint32_t code = FIRST_FREE; code < decoder.open; ++code) {
        const uint32_t string = table.strings[code], length = LengthOf(string);
        if (string == NOT_IN_HISTORY)
            continue;
        table.lostLength[code] = static_cast<uint16_t>(length);
        table.lostLast[code] = table.history[PlaceOf(string) + length - 1];
        table.strings[code] = NOT_IN_HISTORY;
    }
    const uint32_t open = table.strings[decoder.open], length = LengthOf(open) - 1;
    std::memmove(&table.history[FIRST_PLACE], &table.history[PlaceOf(open)], length);
    table.strings[decoder.open] = String(FIRST_PLACE, length + 1);
    decoder.end = decoder.drained = FIRST_PLACE + length;
}

// Rebuilds a string that has left the history, from its end to its start, and sets its place.
void RestoreString(LzwDecoder& decoder, uint32_t code)
{
    LzwTable& table = *decoder.table;
    const uint32_t length = table.lostLength[code];
    uint32_t at = decoder.end + length;
    for (uint32_t rest = code; at > decoder.end; rest = table.prefix[rest])
        table.history[--at] = rest < CLEAR ? static_cast<uint8_t>(rest) : table.lostLast[rest];
    table.strings[code] = String(decoder.end, length);
}

// A string that reaches the end of its strip is dropped with the table.
Status WriteString(LzwDecoder& decoder, uint32_t code)
{
    LzwTable& table = *decoder.table;
    if (decoder.end + TABLE_CODES > END_PLACE) {
        if (const Status status = Drain(decoder); status != error::None)
            return status;
        RenewHistory(decoder);
    }
    if (table.strings[code] == NOT_IN_HISTORY)
        RestoreString(decoder, code);
    const uint32_t string = table.strings[code], length = LengthOf(string);
    if (code == decoder.open)
        decoder.uniform = WriteOpenString(table, code, decoder.uniform, &table.history[decoder.end], length);
    else
        CopyString(&table.history[decoder.end], &table.history[PlaceOf(string)], length);
    OpenEntry(table, decoder.open, decoder.width, code, String(decoder.end, length));
    const auto written = static_cast<uint32_t>(std::min<uint64_t>(length, decoder.stripLeft));
    decoder.end += written;
    decoder.stripLeft -= written;
    if (decoder.stripLeft > 0)
        return error::None;
    const Status status = Drain(decoder);
    if (status == error::None)
        BeginStrip(decoder);
    return status;
}

// Only the last line of a strip may end here; its missing bytes are zero.
Status EndOfInformation(LzwDecoder& decoder)
{
    if (const Status status = Drain(decoder); status != error::None)
        return status;
    std::memset(decoder.context->lineCursor, 0, decoder.lineLeft);
    if (const Status status = FinishLine(decoder); status != error::None)
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
    if (code == END_OF_INFORMATION)
        return EndOfInformation(decoder);
    if (code != CLEAR && code <= decoder.open)
        return WriteString(decoder, code);
    if (const Status status = Drain(decoder); status != error::None)
        return status;
    if (code != CLEAR)
        return error::BadCode;
    ResetTable(decoder);
    decoder.end = decoder.drained = FIRST_PLACE;
    return error::None;
}

// Four codes from a bit position on, the first in the highest bits. Reads eight bytes.
inline uint64_t GroupAt(const uint8_t* bytes, uint64_t bit)
{
    uint64_t word;
    std::memcpy(&word, bytes + bit / 8, sizeof(word));
    return Swap64(word) << bit % 8;
}

// Consumes the bits up to a position, counted from the byte before the cursor.
void TakeBits(LzwDecoder& decoder, uint64_t bit)
{
    CodecCall* context = decoder.context;
    const auto taken = static_cast<uint32_t>((bit + 7) / 8 - 1);
    context->codeCursor += taken;
    context->codeBytesLeft -= taken;
    decoder.bits = context->codeCursor[-1];
    decoder.bitCount = static_cast<uint32_t>((8 - bit % 8) % 8);
}

// Decodes as long as strings end inside the strip and the history, and the bytes held reach beyond the group;
// DecodeCode does the rest. Each code of a group has its own copy of the step: the branch predictor then
// learns each by itself. Returns whether codes grow wider now.
bool DecodeInside(LzwDecoder& decoder)
{
    CodecCall* context = decoder.context;
    if (context->codeBytesLeft < sizeof(uint64_t))
        return false;
    LzwTable& table = *decoder.table;
    const uint8_t* bytes = context->codeCursor - 1; // bits of the byte before may be unused
    const uint64_t lastBit = uint64_t{context->codeBytesLeft + 1 - sizeof(uint64_t)} * 8 + 7;
    // The entries of one width; the last of all is for DecodeCode.
    const uint32_t width = decoder.width, before = decoder.open, lastOpen = (1u << width) - 1;
    uint64_t bit = 8 - decoder.bitCount;
    size_t end = decoder.end, open = before;
    const size_t limit = end + std::min<uint64_t>(END_PLACE - end, decoder.stripLeft);
    uint32_t uniform = decoder.uniform;
    uint64_t group = 0; // the next code in the highest bits
    const auto decodeNext = [&, width]() {
        const size_t code = group >> (64 - width);
        const uint32_t string = table.strings[code], length = LengthOf(string);
        if (end + length >= limit) [[unlikely]]
            return false;
        if (code < open) [[likely]]
            CopyString(&table.history[end], &table.history[PlaceOf(string)], length);
        else if (code == open)
            uniform =
                WriteOpenString(table, static_cast<uint32_t>(code), uniform, &table.history[end], length);
        else
            return false;
        ++open;
        table.strings[open] = string - PlaceOf(string) + String(static_cast<uint32_t>(end), 1);
        table.prefix[open] = static_cast<uint16_t>(code);
        end += length;
        group <<= width;
        return true;
    };
    while (open + GROUP_CODES <= lastOpen && bit <= lastBit) {
        group = GroupAt(bytes, bit);
        if (!decodeNext() || !decodeNext() || !decodeNext() || !decodeNext())
            break;
        bit += GROUP_CODES * width;
    }
    for (;;) {
        bit = 8 - decoder.bitCount + (open - before) * width;
        if (open >= lastOpen || bit > lastBit)
            break;
        group = GroupAt(bytes, bit);
        if (!decodeNext())
            break;
    }
    const bool widens = open + 1 == 1u << width && width < MOST_WIDTH;
    decoder.width += widens;
    decoder.stripLeft -= end - decoder.end;
    decoder.end = static_cast<uint32_t>(end);
    decoder.open = static_cast<uint32_t>(open);
    decoder.uniform = uniform;
    TakeBits(decoder, bit);
    return widens;
}

} // namespace

Status DecodeLzw(CodecCall* context)
{
    Status status = InitDecodeBuffers(context);
    if (status != error::None)
        return status;
    GlobalBlock block(sizeof(LzwTable));
    Locked<LzwTable> table(block.Get());
    if (!table)
        return error::NotEnoughMemory;
    for (uint32_t byte = 0; byte < FIRST_PLACE; ++byte) {
        table->history[byte] = static_cast<uint8_t>(byte);
        table->strings[byte] = String(byte, 1);
    }
    table->strings[CLEAR] = table->strings[END_OF_INFORMATION] = NOT_IN_HISTORY;
    LzwDecoder decoder{.context = context, .table = table.Get()};
    BeginStrip(decoder);
    while (status == error::None) {
        while (DecodeInside(decoder)) {
        }
        status = DecodeCode(decoder);
    }
    return CodecResult(status);
}

} // namespace tiff
