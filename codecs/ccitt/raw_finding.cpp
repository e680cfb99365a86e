// Every way to read raw fax code that is not ruled out is tried, and the one with the least damage is taken.
// Code that is read in a wrong way falls to pieces within a few rows.
#include "codecs/ccitt/raw_finding.h"

#include "codecs/buffers.h"
#include "codecs/ccitt/raw.h"
#include "codecs/codec_table.h"
#include "core/byte_order.h"
#include "core/stream.h"

#include <algorithm>

namespace tiff {

namespace {

constexpr uint32_t MOST_ROWS = 1000000; // a roll of paper 125 metres long
constexpr uint32_t WIDEST = 0xFFFF;

// In the order of preference, for code that several ways read alike.
constexpr uint32_t schemes[] = {TIFF_RAW_GROUP3, TIFF_RAW_GROUP3_TWO_DIMENSIONAL, TIFF_RAW_GROUP4,
                                TIFF_RAW_HUFFMAN};
constexpr uint32_t fillOrders[] = {TIFF_MSB_FIRST, TIFF_LSB_FIRST};
// A4, B4 and A3 at 200, 300 and 400 dots per inch.
constexpr uint32_t widths[] = {1728, 2048, 2432, 2592, 3072, 3648, 3456, 4096, 4864};

struct Eols {
    bool any;
    // All end on a byte, those apart that follow another, as behind the last row. Some encoders of
    // two-dimensional code let the tag bit behind an EOL end there.
    bool aligned, alignedWithTag;
};

struct Code {
    std::span<const uint8_t> bytes;
    Eols eols[2]; // by fill order
};

struct Way {
    uint32_t scheme, fillOrder, width;
};

struct Reading {
    Way way;
    LineDamage damage;
    uint32_t rows = 0;
    uint64_t cost = UINT64_MAX;
};

intptr_t CountRow(void*, uint32_t, void*)
{
    return error::None;
}

bool IsGroup3(uint32_t scheme)
{
    return (scheme & 0xFFFF) == compression::Group3;
}

const Eols& EolsOf(const Code& code, uint32_t fillOrder)
{
    return code.eols[fillOrder == TIFF_LSB_FIRST];
}

Eols FindEols(std::span<const uint8_t> code, uint32_t fillOrder)
{
    constexpr uint32_t EOL_ZEROS = 11, TAG_BITS = 1;
    Eols eols = {false, true, true};
    uint64_t zeros = 0, position = 0, lastEol = 0;
    for (const uint8_t stored : code) {
        const uint8_t byte = fillOrder == TIFF_LSB_FIRST ? reversedBits[stored] : stored;
        for (uint32_t mask = 0x80; mask != 0; mask >>= 1) {
            ++position;
            if ((byte & mask) == 0) {
                ++zeros;
                continue;
            }
            if (zeros >= EOL_ZEROS) {
                const bool follows = eols.any && position - zeros - 1 <= lastEol + TAG_BITS;
                eols.aligned &= follows || mask == 1;
                eols.alignedWithTag &= follows || mask == 2;
                eols.any = true;
                lastEol = position;
            }
            zeros = 0;
        }
    }
    return eols;
}

// A damaged row counts as one. Code that is left unread counts as the rows that it could have had, one in
// every byte, but for what may stand behind a picture. Group 3 without any EOL is likely to be something
// else.
uint64_t CostOf(const CodecCall& call, Status status, const Code& code, const Way& way)
{
    constexpr uint64_t END_BYTES = 16;
    if (call.row == 0)
        return UINT64_MAX;
    const uint64_t left = code.bytes.size() - (call.stripPos - call.codeBytesLeft);
    const bool readAll = status == error::UnexpectedEndOfFile || left <= END_BYTES;
    const bool lacksEols = IsGroup3(way.scheme) && !EolsOf(code, way.fillOrder).any;
    return call.damage.badRows + (readAll ? 0 : left) + (status == error::BadCode) + lacksEols;
}

Status Read(const Code& code, const Way& way, Reading& reading)
{
    const auto size = static_cast<uint32_t>(code.bytes.size());
    const Stream stream(OpenByteStream(code.bytes.data(), size));
    if (!stream)
        return error::InputOutput;
    CodecCall call{};
    const ContextBlocks blocks(&call);
    const RawImage image = {stream.Get(), way.width, MOST_ROWS, way.scheme, way.fillOrder, TIFF_INTEL};
    if (const Status status = DescribeRawImage(&call, image); status != error::None)
        return status;
    call.dataEnd = size;
    call.endsAtEols = true;
    call.readsLines = true;
    call.lineCallback = CountRow;
    const Status status = Decode(&call);
    if (status == error::NotEnoughMemory)
        return status;
    reading = {way, call.damage, call.row, CostOf(call, status, code, way)};
    return error::None;
}

Status ReadIfBetter(const Code& code, const Way& way, Reading& best)
{
    Reading reading;
    const Status status = Read(code, way, reading);
    if (status == error::None && reading.cost < best.cost)
        best = reading;
    return status;
}

// The width that the rows of Group 3 code have, or 0: with room for any row, EOLs cut all of them short.
Status MeasureWidth(const Code& code, Way way, uint32_t& width)
{
    width = 0;
    if (!IsGroup3(way.scheme))
        return error::None;
    way.width = WIDEST;
    Reading reading;
    const Status status = Read(code, way, reading);
    width = reading.damage.cutColumn;
    return status;
}

Status TryWidths(const Code& code, Way way, Reading& best)
{
    if (way.width != 0)
        return ReadIfBetter(code, way, best);
    uint32_t measured;
    Status status = MeasureWidth(code, way, measured);
    if (status == error::None && measured != 0) {
        way.width = measured;
        status = ReadIfBetter(code, way, best);
    }
    for (const uint32_t width : widths) {
        if (status != error::None || best.cost == 0)
            return status;
        way.width = width;
        status = ReadIfBetter(code, way, best);
    }
    return status;
}

} // namespace

Status FindOutRawFax(std::span<const uint8_t> code, TiffRawFax& fax)
{
    const Code read = {code, {FindEols(code, TIFF_MSB_FIRST), FindEols(code, TIFF_LSB_FIRST)}};
    Reading best;
    for (const uint32_t scheme : schemes)
        for (const uint32_t fillOrder : fillOrders) {
            if ((fax.scheme != TIFF_RAW_FIND_OUT && fax.scheme != scheme) ||
                (fax.fillOrder != 0 && fax.fillOrder != fillOrder) || best.cost == 0)
                continue;
            if (const Status status = TryWidths(read, {scheme, fillOrder, fax.width}, best);
                status != error::None)
                return status;
        }
    if (best.rows == 0)
        return error::BadCode;
    if (best.rows == MOST_ROWS)
        return error::TooLarge;
    fax.scheme = best.way.scheme;
    fax.fillOrder = best.way.fillOrder;
    fax.width = best.way.width;
    fax.rows = best.rows;
    fax.badRows = IsGroup3(fax.scheme) ? best.damage.badRows : 0;
    fax.longestBadRun = IsGroup3(fax.scheme) ? best.damage.longestRun : 0;
    const Eols& eols = EolsOf(read, fax.fillOrder);
    const bool withTag = fax.scheme == TIFF_RAW_GROUP3_TWO_DIMENSIONAL && eols.alignedWithTag;
    const bool aligned = IsGroup3(fax.scheme) && eols.any && (eols.aligned || withTag);
    if (fax.alignment == 0)
        fax.alignment = aligned ? TIFF_RAW_ALIGNED : TIFF_RAW_UNALIGNED;
    return error::None;
}

} // namespace tiff
