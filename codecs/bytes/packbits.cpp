#include "codecs/bytes/packbits.h"

#include "codecs/buffers.h"
#include "core/sixteen.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace tiff {

static constexpr uint32_t MOST_BYTES = 129;      // that a packet repeats
static constexpr uint32_t MOST_CODE_BYTES = 129; // of a literal, with its header

// Most packets are short: this many bytes are always written, so that their length needs no branch.
static constexpr uint32_t COPIED_BYTES = 32;
static constexpr uint32_t FILLED_BYTES = 64;

static_assert(SPARE_LINE_BYTES >= MOST_BYTES + FILLED_BYTES, "a packet may begin at a line's last byte");

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

// Deliberate: there is no packet without effect, -128 repeats its byte 129 times.
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

// Copies in steps of 32 bytes; may overwrite up to 31 more.
static void CopyBytes(uint8_t* target, const uint8_t* source, uint32_t count)
{
    for (uint32_t at = 0;; at += COPIED_BYTES) {
        std::memcpy(target + at, source + at, COPIED_BYTES);
        if (at + COPIED_BYTES >= count)
            return;
    }
}

// Fills in steps of 64 bytes; may overwrite up to 63 more.
static void FillBytes(uint8_t* target, uint8_t byte, uint32_t count)
{
    for (uint32_t at = 0;; at += FILLED_BYTES) {
        std::memset(target + at, byte, FILLED_BYTES);
        if (at + FILLED_BYTES >= count)
            return;
    }
}

// Decodes packets of a line while the bytes held suffice for any packet.
static void DecodePacketsInside(CodecContext* context, int64_t& missing)
{
    const uint8_t* code = context->codeCursor;
    const uint8_t* const end = code + context->codeBytesLeft;
    uint8_t* line = context->lineCursor;
    uint8_t* const lineEnd = line + missing;
    while (line < lineEnd && end - code >= MOST_CODE_BYTES) {
        const uint32_t header = *code;
        if (header < 0x80) {
            CopyBytes(line, code + 1, header + 1);
            line += header + 1;
            code += header + 2;
        } else {
            FillBytes(line, code[1], 257 - header);
            line += 257 - header;
            code += 2;
        }
    }
    missing = lineEnd - line;
    context->lineCursor = line;
    context->codeCursor += code - context->codeCursor;
    context->codeBytesLeft = static_cast<uint32_t>(end - code);
}

Status DecodePackBits(CodecCall* context)
{
    Status status = InitDecodeBuffers(context);
    const bool swaps = HasSwappedSamples(context);
    int64_t missing = context->lineBytes;
    while (status == error::None) {
        DecodePacketsInside(context, missing);
        if (missing > 0) {
            uint32_t written = 0;
            status = DecodePacket(context, written);
            missing -= written;
        }
        // The bytes of a packet beyond the line lie in the spare bytes and are dropped.
        if (status == error::None && missing <= 0) {
            status = swaps ? HandOverSamples(context) : HandOverLine(context, context->lineBuffer);
            missing = context->lineBytes;
        }
    }
    return CodecResult(status);
}

static constexpr uint32_t MOST_ADDED = 127; // bytes of a packet beyond its first

// Lines are packed in parts. Two bit masks per part, computed first, say which bytes equal their successor
// and where that changes, so that the end of each packet is one bit search.
static constexpr uint32_t PART_BYTES = 2048; // that a packet may begin in
static constexpr uint32_t WORD_BYTES = 64;
static constexpr uint32_t SCANNED_BYTES = PART_BYTES + 2 * WORD_BYTES;

static_assert(SCANNED_BYTES - PART_BYTES >= MOST_ADDED && SPARE_LINE_BYTES >= 2 * WORD_BYTES);

// A bit for each byte, the lowest first, with a word to spare.
struct Neighbours {
    uint64_t equal[SCANNED_BYTES / WORD_BYTES + 1];
    uint64_t changes[SCANNED_BYTES / WORD_BYTES + 1];
};

static uint64_t CompareWord(const uint8_t* bytes)
{
    uint64_t equal = 0;
    for (uint32_t at = 0; at < WORD_BYTES; at += SIXTEEN)
        equal |= uint64_t{EqualBytes(LoadSixteen(bytes + at), LoadSixteen(bytes + at + 1))} << at;
    return equal;
}

// Reads up to 128 bytes behind the last.
static void CompareNeighbours(Neighbours& neighbours, std::span<const uint8_t> bytes)
{
    const size_t count = std::min<size_t>(bytes.size(), SCANNED_BYTES);
    uint64_t equal = CompareWord(bytes.data());
    size_t word = 0;
    for (size_t at = 0; at < count; at += WORD_BYTES, ++word) {
        const uint64_t next = CompareWord(&bytes[at] + WORD_BYTES);
        neighbours.equal[word] = equal;
        neighbours.changes[word] = equal ^ (equal >> 1 | next << 63);
        equal = next;
    }
    neighbours.changes[word] = 0;
}

// The bits from one on: at least 57 of them.
static uint64_t BitsAt(const uint64_t* words, uint32_t first)
{
    uint64_t bits;
    std::memcpy(&bits, reinterpret_cast<const uint8_t*>(words) + first / 8, sizeof(bits));
    return bits >> first % 8;
}

// Counts bytes, at most limit, that are like the first: all equal to their successors, or all different from
// them.
static uint32_t CountAlike(const Neighbours& neighbours, uint32_t first, uint32_t limit)
{
    constexpr uint32_t AT_ONCE = 56;
    for (uint32_t at = 0; at < limit; at += AT_ONCE) {
        const uint64_t changes = BitsAt(neighbours.changes, first + at);
        if (changes == 0)
            continue;
        const uint32_t alike = at + static_cast<uint32_t>(std::countr_zero(changes)) + 1;
        // This branch is always predicted right; a minimum would be one more step to wait for.
        if (alike < limit) [[likely]]
            return alike;
        break;
    }
    return limit;
}

// As many bytes must follow these as a line has spare ones.
static Status PutPacket(CodecContext* context, uint8_t header, std::span<const uint8_t> bytes)
{
    if (context->codeBytesLeft <= MOST_CODE_BYTES) {
        const Status status = PutBytes(context, {&header, 1});
        return status == error::None ? PutBytes(context, bytes) : status;
    }
    const auto count = static_cast<uint32_t>(bytes.size());
    uint8_t* code = context->codeCursor;
    *code = header;
    CopyBytes(code + 1, bytes.data(), count);
    context->codeCursor = code + count + 1;
    context->codeBytesLeft -= count + 1;
    return error::None;
}

// The packets that begin in the first part of a line. Deliberate: the literal takes in the byte that
// starts the repeat, so 41 42 42 42 packs to 01 41 42 FF 42. A tidier split would change every
// file we write.
static Status EncodePart(CodecContext* context, std::span<const uint8_t>& line)
{
    Neighbours neighbours;
    CompareNeighbours(neighbours, line);
    const auto lineBytes = static_cast<uint32_t>(line.size());
    const uint32_t end = std::min(lineBytes, PART_BYTES);
    uint32_t at = 0;
    while (at < end) {
        const uint32_t limit = std::min(lineBytes - at - 1, MOST_ADDED);
        const uint32_t added = CountAlike(neighbours, at, limit);
        const bool repeats = neighbours.equal[at / WORD_BYTES] >> at % WORD_BYTES & 1;
        const uint32_t header = repeats ? 0u - added : added;
        const Status status =
            PutPacket(context, static_cast<uint8_t>(header), line.subspan(at, repeats ? 1 : added + 1));
        if (status != error::None)
            return status;
        at += added + 1;
    }
    line = line.subspan(at);
    return error::None;
}

static Status EncodePackets(CodecContext* context, std::span<const uint8_t> line)
{
    Status status = error::None;
    while (status == error::None && !line.empty())
        status = EncodePart(context, line);
    return status;
}

Status EncodePackBits(CodecCall* context)
{
    Status status = InitEncodeBuffers(context);
    while (status == error::None) {
        OrderSamples(context);
        status = EncodePackets(context, {context->lineBuffer, context->lineBytes});
        if (status == error::None)
            status = FillDataBuffer(context);
    }
    return CodecResult(status);
}

} // namespace tiff
