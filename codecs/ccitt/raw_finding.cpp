// Every way to read raw fax code that is not ruled out is tried, and the one with the least damage is taken.
// Code that is read in a wrong way falls to pieces within a few rows.
#include "codecs/ccitt/raw_finding.h"

#include "codecs/buffers.h"
#include "codecs/ccitt/decoder.h"
#include "codecs/ccitt/raw.h"
#include "core/byte_order.h"
#include "core/stream.h"

#include <algorithm>

namespace tiff {

namespace {

constexpr uint32_t MOST_ROWS = 1000000; // a roll of paper 125 metres long
constexpr uint32_t ROWS_READ = MOST_ROWS + 1;
constexpr uint32_t WIDEST = 0xFFFF;

struct Kind {
    uint32_t scheme;
    uint32_t alignment; // of rows; 0 when it makes no difference to reading
    CcittScheme decoder;
};

// In the order of preference, for code that several ways read alike. Group 3 is read with or without EOLs.
constexpr Kind kinds[] = {
    {TIFF_RAW_GROUP3, 0, CcittScheme::Group3},
    {TIFF_RAW_GROUP3_TWO_DIMENSIONAL, 0, CcittScheme::Group3TwoDimensional},
    {TIFF_RAW_GROUP4, TIFF_RAW_UNALIGNED, CcittScheme::Group4},
    {TIFF_RAW_HUFFMAN, 0, CcittScheme::ModifiedHuffman},
    {TIFF_RAW_GROUP4, TIFF_RAW_ALIGNED, CcittScheme::Group4Aligned},
};
constexpr uint32_t fillOrders[] = {TIFF_MSB_FIRST, TIFF_LSB_FIRST};
// A4, B4 and A3 at 200, 300 and 400 dots per inch.
constexpr uint32_t widths[] = {1728, 2048, 2432, 2592, 3072, 3648, 3456, 4096, 4864};

struct Eols {
    uint32_t count; // but for those that follow another
    // All end on a byte, those apart that follow another, as behind the last row. Some encoders of
    // two-dimensional code let the tag bit behind an EOL end there.
    bool aligned, alignedWithTag;
};

struct Code {
    std::span<const uint8_t> bytes;
    Eols eols[2]; // by fill order
};

struct Way {
    const Kind* kind;
    uint32_t fillOrder, width;
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
    Eols eols = {0, true, true};
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
                const bool follows = eols.count != 0 && position - zeros - 1 <= lastEol + TAG_BITS;
                eols.aligned &= follows || mask == 1;
                eols.alignedWithTag &= follows || mask == 2;
                eols.count += !follows;
                lastEol = position;
            }
            zeros = 0;
        }
    }
    return eols;
}

// Damage may have cost some rows their EOL.
bool LacksEols(const Eols& eols, uint32_t rows)
{
    return eols.count < (rows + 1) / 2;
}

// The bytes that are not read well: those of the damaged rows, as long as the others, and those left unread,
// but for what may stand behind a picture: anything when its end is marked. Group 3 without EOLs is likely to
// be something else.
uint64_t CostOf(const CodecCall& call, Status status, const Code& code, const Way& way)
{
    constexpr uint64_t END_BYTES = 16;
    if (call.row == 0)
        return UINT64_MAX;
    const uint64_t read = call.stripPos - call.codeBytesLeft, left = code.bytes.size() - read;
    const bool ended = status == error::EofbUnexpected || (status == error::None && call.row < ROWS_READ);
    const bool readAll = ended || status == error::UnexpectedEndOfFile || left <= END_BYTES;
    const bool lacksEols = IsGroup3(way.kind->scheme) && LacksEols(EolsOf(code, way.fillOrder), call.row);
    const uint64_t damagedRows = uint64_t{call.damage.badRows} + call.damage.strayFills;
    return (damagedRows * read + call.row - 1) / call.row + (readAll ? 0 : left) +
           (status == error::BadCode) + lacksEols;
}

// The context's buffers are the caller's.
Status DecodeAs(CodecCall& call, std::span<const uint8_t> code, const Way& way, uint32_t rows,
                const LineTarget& target)
{
    const auto size = static_cast<uint32_t>(code.size());
    const Stream stream(OpenByteStream(code.data(), size));
    if (!stream)
        return error::InputOutput;
    const RawImage image = {stream.Get(), way.width, rows, way.kind->scheme, way.fillOrder, TIFF_INTEL};
    if (const Status status = DescribeRawImage(&call, image); status != error::None)
        return status;
    call.dataEnd = size;
    call.endsAtEols = true;
    call.readsLines = true;
    call.lineCallback = target.routine;
    call.userData = target.userData;
    return DecodeCcitt(&call, way.kind->decoder);
}

Status Read(const Code& code, const Way& way, Reading& reading)
{
    CodecCall call{};
    const ContextBlocks blocks(&call);
    const Status status = DecodeAs(call, code.bytes, way, ROWS_READ, {CountRow, nullptr});
    if (status == error::NotEnoughMemory || call.stream == 0) // no stream could be opened
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
    if (!IsGroup3(way.kind->scheme))
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

bool Suits(const Kind& kind, const TiffRawFax& fax)
{
    const uint32_t wanted =
        fax.scheme == TIFF_RAW_GROUP3_WITHOUT_EOLS ? uint32_t{TIFF_RAW_GROUP3} : fax.scheme;
    return (wanted == TIFF_RAW_FIND_OUT || wanted == kind.scheme) &&
           (fax.alignment == 0 || kind.alignment == 0 || fax.alignment == kind.alignment);
}

Status FindBest(const Code& code, const TiffRawFax& fax, Reading& best)
{
    for (const Kind& kind : kinds)
        for (const uint32_t fillOrder : fillOrders) {
            if (!Suits(kind, fax) || (fax.fillOrder != 0 && fax.fillOrder != fillOrder) || best.cost == 0)
                continue;
            if (const Status status = TryWidths(code, {&kind, fillOrder, fax.width}, best);
                status != error::None)
                return status;
        }
    if (best.rows == 0)
        return error::BadCode;
    return best.rows > MOST_ROWS ? error::TooLarge : error::None;
}

uint32_t AlignmentOf(const Kind& kind, const Eols& eols)
{
    const bool withTag = kind.scheme == TIFF_RAW_GROUP3_TWO_DIMENSIONAL && eols.alignedWithTag;
    const bool aligned = IsGroup3(kind.scheme) && eols.count != 0 && (eols.aligned || withTag);
    return kind.alignment ? kind.alignment : aligned ? TIFF_RAW_ALIGNED : TIFF_RAW_UNALIGNED;
}

} // namespace

Status FindOutRawFax(std::span<const uint8_t> code, TiffRawFax& fax)
{
    const Code read = {code, {FindEols(code, TIFF_MSB_FIRST), FindEols(code, TIFF_LSB_FIRST)}};
    Reading best;
    if (const Status status = FindBest(read, fax, best); status != error::None)
        return status;
    const Kind& kind = *best.way.kind;
    const Eols& eols = EolsOf(read, best.way.fillOrder);
    fax.scheme = kind.scheme == TIFF_RAW_GROUP3 && LacksEols(eols, best.rows)
                     ? uint32_t{TIFF_RAW_GROUP3_WITHOUT_EOLS}
                     : kind.scheme;
    fax.fillOrder = best.way.fillOrder;
    fax.width = best.way.width;
    fax.rows = best.rows;
    fax.badRows = IsGroup3(fax.scheme) ? best.damage.badRows : 0;
    fax.longestBadRun = IsGroup3(fax.scheme) ? best.damage.longestRun : 0;
    if (fax.alignment == 0)
        fax.alignment = AlignmentOf(kind, eols);
    return error::None;
}

Status DecodeRawFax(std::span<const uint8_t> code, const TiffRawFax& fax, const LineTarget& target)
{
    const auto* kind = std::ranges::find_if(kinds, [&](const Kind& known) { return Suits(known, fax); });
    CodecCall call{};
    const ContextBlocks blocks(&call);
    const Status status = DecodeAs(call, code, {kind, fax.fillOrder, fax.width}, fax.rows, target);
    return call.row == fax.rows ? Status{error::None} : status;
}

} // namespace tiff
