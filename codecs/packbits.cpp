#include "codecs/packbits.h"

#include "codecs/buffers.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace tiff {

static constexpr uint32_t MOST_BYTES = 129;      // that a packet repeats
static constexpr uint32_t MOST_CODE_BYTES = 129; // of a literal, with its header

// Packets are mostly short: so much is written of each without asking how long it is.
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

static void CopyBytes(uint8_t* target, const uint8_t* source, uint32_t count)
{
    for (uint32_t at = 0;; at += COPIED_BYTES) {
        std::memcpy(target + at, source + at, COPIED_BYTES);
        if (at + COPIED_BYTES >= count)
            return;
    }
}

static void FillBytes(uint8_t* target, uint8_t byte, uint32_t count)
{
    for (uint32_t at = 0;; at += FILLED_BYTES) {
        std::memset(target + at, byte, FILLED_BYTES);
        if (at + FILLED_BYTES >= count)
            return;
    }
}

// The packets of a line, as long as the bytes held are enough for any packet. Literals and
// repeats take turns, and the loops are laid out for that.
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
    context->codeBytesLeft = static_cast<uint32_t>(end - code);
    context->codeCursor += code - context->codeCursor;
}

Status DecodePackBits(CodecContext* context)
{
    Status status = InitDecodeBuffers(context);
    int64_t missing = context->lineBytes;
    while (status == error::None) {
        DecodePacketsInside(context, missing);
        if (missing > 0) {
            uint32_t written = 0;
            status = DecodePacket(context, written);
            missing -= written;
        }
        // What a packet holds beyond the line lies in the spare bytes and is lost there.
        if (status == error::None && missing <= 0) {
            status = HandOverSamples(context);
            missing = context->lineBytes;
        }
    }
    return CodecResult(status);
}

static constexpr uint32_t MOST_ADDED = 127; // bytes of a packet beyond its first

// How many bytes, at most limit, come before the first one that is equal to its successor, or
// that differs from it. The byte at the limit is there to be read.
template <bool EQUAL>
static uint32_t FindNeighbours(const uint8_t* bytes, uint32_t limit)
{
    constexpr uint64_t ONES = 0x0101010101010101, SIGNS = ONES << 7;
    uint32_t at = 0;
    for (; at + 8 <= limit; at += 8) {
        uint64_t here, next;
        std::memcpy(&here, bytes + at, 8);
        std::memcpy(&next, bytes + at + 1, 8);
        const uint64_t differing = here ^ next;
        const uint64_t found = EQUAL ? (differing - ONES) & ~differing & SIGNS : differing;
        if (found)
            return at + static_cast<uint32_t>(std::countr_zero(found)) / 8;
    }
    while (at < limit && (bytes[at] == bytes[at + 1]) != EQUAL)
        ++at;
    return at;
}

// A packet goes straight into the code buffer as long as it fits.
static Status PutPacket(CodecContext* context, uint8_t header, std::span<const uint8_t> bytes)
{
    if (context->codeBytesLeft <= bytes.size()) {
        const Status status = PutBytes(context, {&header, 1});
        return status == error::None ? PutBytes(context, bytes) : status;
    }
    *context->codeCursor = header;
    std::memcpy(context->codeCursor + 1, bytes.data(), bytes.size());
    context->codeCursor += bytes.size() + 1;
    context->codeBytesLeft -= static_cast<uint32_t>(bytes.size()) + 1;
    return error::None;
}

// Wanted: the literal takes in the byte that starts the repeat, so 41 42 42 42 packs to
// 01 41 42 FF 42. A tidier split would change every file we write.
static Status EncodePackets(CodecContext* context, std::span<const uint8_t> line)
{
    Status status = error::None;
    while (status == error::None && !line.empty()) {
        const auto limit = static_cast<uint32_t>(std::min<size_t>(line.size() - 1, MOST_ADDED));
        uint32_t added = FindNeighbours<false>(line.data(), limit);
        if (added > 0) {
            status = PutPacket(context, static_cast<uint8_t>(0u - added), line.first(1));
        } else {
            added = FindNeighbours<true>(line.data(), limit);
            status = PutPacket(context, static_cast<uint8_t>(added), line.first(added + 1));
        }
        line = line.subspan(added + 1);
    }
    return status;
}

Status EncodePackBits(CodecContext* context)
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
