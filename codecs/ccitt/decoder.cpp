// Two line coders, one for runs and one for modes, append to a list of run ends. The differences between the
// five schemes are a Framing record; one loop decodes the rows of all.
#include "codecs/ccitt/decoder.h"

#include "codecs/buffers.h"
#include "codecs/ccitt/fast.h"
#include "codecs/ccitt/mmr_records.h"
#include "codecs/ccitt/painter.h"
#include "codecs/ccitt/tables.h"
#include "core/copy_row.h"
#include "core/global_block.h"

#include <algorithm>
#include <cstring>

namespace tiff {

namespace ccitt {

// The meaning of eight zero bits where a run is expected.
enum class ZeroRun { EndsRun, EndsLine, BadCode };

struct Framing {
    bool beginsWithModes; // the first line of a strip is two-dimensional
    bool tagAfterEol;     // every line is followed by an EOL and a bit that chooses the next coder
    bool alignedRows;     // every row begins on a byte
    ZeroRun zeroRun;
    bool endsWithEofb; // seven zero bits in place of a mode are an EOFB or an error; else an EOL
    bool skipsExtensions;
    Refill refill;
    Status (*init)(CodecContext*);
};

} // namespace ccitt

namespace {

using namespace ccitt;

Status FillFromStrip(CodecContext* context)
{
    return FillCodeBuffer(context);
}

Status InitStripBuffers(CodecContext* context)
{
    return InitDecodeBuffers(context);
}

constexpr Framing modifiedHuffman = {
    .beginsWithModes = false,
    .tagAfterEol = false,
    .alignedRows = true,
    .zeroRun = ZeroRun::EndsRun,
    .endsWithEofb = false,
    .skipsExtensions = false,
    .refill = FillFromStrip,
    .init = InitStripBuffers,
};
constexpr Framing group3 = {
    .beginsWithModes = false,
    .tagAfterEol = false,
    .alignedRows = false,
    .zeroRun = ZeroRun::EndsLine,
    .endsWithEofb = false,
    .skipsExtensions = false,
    .refill = FillFromStrip,
    .init = InitStripBuffers,
};
constexpr Framing group3TwoDimensional = {
    .beginsWithModes = false,
    .tagAfterEol = true,
    .alignedRows = false,
    .zeroRun = ZeroRun::EndsLine,
    .endsWithEofb = false,
    .skipsExtensions = true,
    .refill = FillFromStrip,
    .init = InitStripBuffers,
};
constexpr Framing group4 = {
    .beginsWithModes = true,
    .tagAfterEol = false,
    .alignedRows = false,
    .zeroRun = ZeroRun::BadCode,
    .endsWithEofb = true,
    .skipsExtensions = true,
    .refill = FillFromStrip,
    .init = InitStripBuffers,
};
constexpr Framing group4Aligned = {
    .beginsWithModes = true,
    .tagAfterEol = false,
    .alignedRows = true,
    .zeroRun = ZeroRun::BadCode,
    .endsWithEofb = true,
    .skipsExtensions = true,
    .refill = FillFromStrip,
    .init = InitStripBuffers,
};
constexpr Framing mmrRecords = {
    .beginsWithModes = true,
    .tagAfterEol = false,
    .alignedRows = false,
    .zeroRun = ZeroRun::BadCode,
    .endsWithEofb = true,
    .skipsExtensions = false,
    .refill = FillFromRecord,
    .init = InitRecordBuffers,
};

// The fast loops count columns in 32 bits, also for runs that pass the width.
constexpr int32_t WIDEST_FAST_LINE = INT32_MAX / 2;

static_assert(SPARE_LINE_BYTES >= PAINT_MARGIN);

// By CcittScheme.
constexpr const Framing* framings[] = {&modifiedHuffman, &group3,     &group3TwoDimensional,
                                       &group4,          &mmrRecords, &group4Aligned};

// Adds one run, make-up codes included, to a position.
Met DecodeRun(CcittDecoder& decoder, uint32_t colour, int64_t& position)
{
    const RunTable& table = runTables[colour];
    BitReader& bits = decoder.bits;
    for (;;) {
        const uint32_t byte = PeekByte(bits);
        RunLookup entry = table.first[byte];
        if (entry.length != 0) {
            if (!Take(bits, entry.length))
                return Met::Ended;
        } else {
            if (!Take(bits, LOOKUP_BITS))
                return Met::Ended;
            if (byte == 0)
                return Met::Eol;
            entry = table.second[byte][PeekByte(bits) >> (LOOKUP_BITS - LONG_BITS)];
            if (!Take(bits, entry.length - LOOKUP_BITS))
                return Met::Ended;
        }
        position += entry.run;
        if (entry.run < FIRST_MAKE_UP)
            return Met::Run;
    }
}

// As DecodeRun; then stores the run's end.
Met AppendRun(CcittDecoder& decoder, uint32_t colour, int64_t& position)
{
    Met met = DecodeRun(decoder, colour, position);
    if (met == Met::Eol) {
        if (decoder.framing.zeroRun == ZeroRun::BadCode)
            return Met::BadCode;
        if (decoder.framing.zeroRun == ZeroRun::EndsLine)
            return Met::Eol;
        decoder.damaged = true;
        met = Met::Run;
    }
    if (met != Met::Run)
        return met;
    decoder.decodedAny = true;
    return AppendRunEnd(decoder.coding, position, decoder.width) ? Met::Run : Met::BadCode;
}

// Two lines cut at the same column tell the width of the picture.
void NoteCut(CcittDecoder& decoder)
{
    decoder.damaged = true;
    const int32_t column = decoder.coding.count ? decoder.coding.ends[decoder.coding.count - 1] : 0;
    LineDamage& damage = decoder.call->damage;
    if (column == decoder.lastCut && damage.cutColumn == 0)
        damage.cutColumn = static_cast<uint32_t>(column);
    decoder.lastCut = column;
}

// Cuts the line short: the current run goes on to the end of the line.
Met EndAtEol(CcittDecoder& decoder)
{
    if (decoder.decodedAny)
        NoteCut(decoder);
    return AppendRunEnd(decoder.coding, decoder.width, decoder.width) ? Met::LineEnd : Met::BadCode;
}

// An EOL without fill bits. It is taken only when the bits held suffice for the careful way too, which takes
// it bit by bit and looks at the next code.
bool TakePlainEol(CcittDecoder& decoder)
{
    constexpr uint32_t EOL_BITS = 12;
    return decoder.fastLoops && decoder.bits.held >= EOL_BITS + LOOKUP_BITS &&
           decoder.bits.window >> (64 - EOL_BITS) == 1 && Take(decoder.bits, EOL_BITS);
}

bool TakeEol(CcittDecoder& decoder)
{
    return TakePlainEol(decoder) || TakeThroughOne(decoder.bits);
}

Met DecodeRunLine(CcittDecoder& decoder)
{
    const bool eolBefore = decoder.framing.zeroRun == ZeroRun::EndsLine && !decoder.framing.tagAfterEol;
    if (eolBefore && TakePlainEol(decoder))
        return Met::LineEnd;
    int64_t position = 0;
    for (uint32_t colour = 0; position < decoder.width; colour ^= 1) {
        if (colour == 0 && decoder.fastLoops && HasOnlyChanges(decoder.coding)) {
            DecodeRunsFast(decoder, position);
            if (position >= decoder.width)
                break;
        }
        const Met met = AppendRun(decoder, colour, position);
        if (met == Met::Run)
            continue;
        if (met != Met::Eol)
            return met;
        if (!decoder.framing.tagAfterEol && !TakeThroughOne(decoder.bits))
            return Met::Ended;
        return EndAtEol(decoder);
    }
    decoder.damaged |= position > decoder.width;
    return Met::LineEnd;
}

// Deliberate: an early EOFB is reported only when the bytes held show all of it. When the buffer had to be
// refilled on the way, decoding ends with the status of the refill: success.
Status CheckEofb(BitReader& bits)
{
    static constexpr uint8_t eofb[] = {0x00, 0x10, 0x01};
    bits.refilled = false;
    for (const uint8_t expected : eofb) {
        const uint32_t byte = PeekByte(bits);
        if (bits.held < 8)
            return bits.ended;
        if (byte != expected || !Take(bits, 8))
            return error::BadCode;
    }
    return bits.refilled ? error::None : error::EofbUnexpected;
}

// Two runs from a0; the second one ends at a2, the last change so far.
Met DecodeHorizontal(CcittDecoder& decoder, ModeLine& line)
{
    int64_t position = line.a0;
    const uint32_t colour = decoder.coding.count & 1;
    for (const uint32_t each : {colour, colour ^ 1})
        if (const Met met = AppendRun(decoder, each, position); met != Met::Run)
            return met;
    decoder.damaged |= position > decoder.width;
    line.a0 = line.change = static_cast<int32_t>(std::min<int64_t>(position, decoder.width));
    line.reference.SkipThrough(line.change, decoder.width);
    return Met::Run;
}

Met DecodeVerticalMode(CcittDecoder& decoder, ModeLine& line, int32_t delta)
{
    decoder.decodedAny = true;
    const int64_t wanted = int64_t{line.reference.B1()} + delta;
    decoder.damaged |= wanted < 0 || wanted > decoder.width;
    line.a0 = line.change = VerticalChange(delta, line.reference, decoder.width);
    if (WalksInCircles(line.reference, decoder.coding))
        return Met::BadCode;
    return AppendRunEnd(decoder.coding, line.change, decoder.width) ? Met::Run : Met::BadCode;
}

// Decodes one mode; returns Eol for the zeros that begin one.
Met DecodeMode(CcittDecoder& decoder, ModeLine& line)
{
    const ModeCode& mode = modeTable[PeekByte(decoder.bits) >> 1];
    if (mode.code.length > decoder.bits.held)
        return Met::Ended;
    if (mode.mode == Mode::Zeros)
        return decoder.framing.endsWithEofb ? Met::Eofb : Met::Eol;
    if (!Take(decoder.bits, mode.code.length))
        return Met::Ended;
    switch (mode.mode) {
    case Mode::Vertical:
        return DecodeVerticalMode(decoder, line, mode.delta);
    case Mode::Horizontal:
        return DecodeHorizontal(decoder, line);
    case Mode::Pass:
        decoder.decodedAny = true;
        line.a0 = line.reference.B2();
        line.reference.Advance(2);
        if (line.reference.emptyRuns)
            line.reference.SkipThrough(line.a0, decoder.width);
        return Met::Run;
    default:
        decoder.damaged = true;
        return decoder.framing.skipsExtensions ? Met::Run : Met::BadCode;
    }
}

// A white line under a white one takes a single bit, and most pages have many of them.
bool IsWhiteUnderWhite(CcittDecoder& decoder)
{
    return decoder.fastLoops && decoder.reference.ends[0] == decoder.width &&
           decoder.bits.held >= LOOKUP_BITS && PeekByte(decoder.bits) >= 0x80;
}

Met DecodeModeLine(CcittDecoder& decoder)
{
    if (IsWhiteUnderWhite(decoder) && Take(decoder.bits, 1)) {
        decoder.decodedAny = AppendRunEnd(decoder.coding, decoder.width, decoder.width);
        return Met::LineEnd;
    }
    const RunList& above = decoder.reference;
    ModeLine line{.reference = {above.ends, above.count, above.emptyRuns}};
    while (line.change < decoder.width) {
        if (decoder.fastLoops && HasOnlyChanges(above) && HasOnlyChanges(decoder.coding)) {
            DecodeModesFast(decoder, line);
            if (line.change >= decoder.width)
                break;
        }
        const Met met = DecodeMode(decoder, line);
        if (met == Met::Eol)
            return EndAtEol(decoder);
        if (met != Met::Run)
            return met;
    }
    return Met::LineEnd;
}

Status StatusOf(Met met, BitReader& bits)
{
    switch (met) {
    case Met::Ended:
        return bits.ended;
    case Met::BadCode:
        return error::BadCode;
    case Met::Eofb:
        return CheckEofb(bits);
    default:
        return error::None;
    }
}

// Lists for two lines. A line in order has at most one change a column, and up to as many empty runs. Every
// entry takes a bit of code: a small file gets small lists, whatever width it claims.
GlobalBlock MakeRunLists(const CodecContext* context, uint32_t& room)
{
    constexpr uint64_t MOST_ENTRIES = UINT32_MAX / 2;
    const uint64_t codeBits = uint64_t{context->dataEnd} * 8;
    const uint64_t entries = std::min({uint64_t{Width(context)} * 2, codeBits, MOST_ENTRIES});
    room = static_cast<uint32_t>(entries) + END_SENTINELS;
    return GlobalBlock(2 * RoomOfList(room) * sizeof(int32_t));
}

void BeginWhiteReference(CcittDecoder& decoder)
{
    ClearRunList(decoder.reference);
    FinishRunList(decoder.reference, decoder.width);
}

bool IsWhite(const RunList& list, int32_t width)
{
    return list.ends[0] == width;
}

// The system has to fetch fresh memory twice when it is read before it is written.
void TouchRow(uint8_t* row, uint32_t bytes)
{
    static_cast<volatile uint8_t*>(row)[0] = 0;
    static_cast<volatile uint8_t*>(row)[bytes - 1] = 0;
}

void PaintInPlace(const CcittDecoder& decoder, const CodecCall* context, uint8_t* row)
{
    const RowsInPlace& rows = *context->rowsInPlace;
    if (rows.zeros) {
        TouchRow(row, context->bytesPerLine);
    } else {
        AskForRow(row + rows.step, context->bytesPerLine);
        std::memset(row, 0, context->bytesPerLine);
    }
    PaintRuns(decoder.coding, row);
}

bool HasRowOfZeros(const CodecCall* context)
{
    return RowInPlace(context, 0) && context->rowsInPlace->zeros;
}

// A white line leaves its row as zeros of the system: such memory is not even fetched yet.
Status PutLine(const CcittDecoder& decoder, CodecCall* context)
{
    if (IsWhite(decoder.coding, decoder.width) && HasRowOfZeros(context))
        return CountLine(context);
    if (uint8_t* row = RowInPlace(context, PAINT_MARGIN)) {
        PaintInPlace(decoder, context, row);
        return CountLine(context);
    }
    ClearLine(context);
    PaintRuns(decoder.coding, context->lineBuffer);
    return FlushDataBuffer(context);
}

void CountDamage(LineDamage& damage, uint32_t row)
{
    damage.run = row == damage.nextRow ? damage.run + 1 : 1;
    damage.nextRow = row + 1;
    damage.longestRun = std::max(damage.longestRun, damage.run);
    ++damage.badRows;
}

// Six EOLs end a picture, and some encoders write fewer. A row that was lost leaves two.
bool IsEndOfPicture(CcittDecoder& decoder)
{
    constexpr uint32_t EOLS_AT_END = 4;
    return ++decoder.eols == EOLS_AT_END && decoder.call->endsAtEols && decoder.call->row > 0;
}

// Puts the finished line out and makes it the next reference; the first line of a strip has none.
Status FinishLine(CcittDecoder& decoder, CodecCall* context)
{
    FinishRunList(decoder.coding, decoder.width);
    if (!decoder.decodedAny) {
        if (IsEndOfPicture(decoder))
            return ALL_ROWS_DONE;
    } else {
        decoder.eols = 0;
        if (decoder.damaged || !decoder.coding.ordered) [[unlikely]]
            CountDamage(context->damage, context->row);
        if (const Status status = PutLine(decoder, context); status != error::None)
            return status;
    }
    std::swap(decoder.coding, decoder.reference);
    return error::None;
}

Status DecodeLines(CcittDecoder& decoder, CodecCall* context)
{
    const Framing& framing = decoder.framing;
    bool modes = framing.beginsWithModes;
    BeginWhiteReference(decoder);
    for (;;) {
        ClearRunList(decoder.coding);
        decoder.decodedAny = decoder.damaged = false;
        const Met met = modes ? DecodeModeLine(decoder) : DecodeRunLine(decoder);
        if (met != Met::LineEnd)
            return StatusOf(met, decoder.bits);
        if (const Status status = FinishLine(decoder, context); status != error::None)
            return status;
        if (decoder.decodedAny && context->lastLineOfStrip) {
            Restart(decoder.bits);
            BeginWhiteReference(decoder);
            modes = framing.beginsWithModes;
            continue;
        }
        if (framing.alignedRows)
            context->damage.strayFills += !AlignToByte(decoder.bits);
        if (framing.tagAfterEol) {
            if (!TakeEol(decoder))
                return decoder.bits.ended;
            modes = PeekByte(decoder.bits) < 0x80;
            if (!Take(decoder.bits, 1))
                return decoder.bits.ended;
        }
    }
}

Status DecodeRows(CodecCall* context, const Framing& framing, bool fastLoops)
{
    Status status = framing.init(context);
    if (status != error::None)
        return CodecResult(status);
    uint32_t room = 0;
    GlobalBlock block = MakeRunLists(context, room);
    Locked<int32_t> ends(block.Get());
    if (!ends)
        return error::NotEnoughMemory;
    CcittDecoder decoder{
        .framing = framing,
        .bits = {.context = context, .refill = framing.refill},
        .coding = MakeRunList(ends.Get(), room),
        .reference = MakeRunList(ends.Get() + RoomOfList(room), room),
        .width = context->lineFormat.biWidth,
        .call = context,
        .fastLoops = fastLoops && context->lineFormat.biWidth <= WIDEST_FAST_LINE && room > Width(context),
    };
    return CodecResult(DecodeLines(decoder, context));
}

} // namespace

Status DecodeCcitt(CodecCall* context, CcittScheme scheme, CcittLoops loops)
{
    return DecodeRows(context, *framings[static_cast<size_t>(scheme)], loops == CcittLoops::All);
}

Status DecodeModifiedHuffman(CodecCall* context)
{
    return DecodeCcitt(context, CcittScheme::ModifiedHuffman);
}

Status DecodeGroup3(CodecCall* context)
{
    return DecodeCcitt(context, CcittScheme::Group3);
}

Status DecodeGroup3TwoDimensional(CodecCall* context)
{
    return DecodeCcitt(context, CcittScheme::Group3TwoDimensional);
}

Status DecodeGroup4(CodecCall* context)
{
    return DecodeCcitt(context, CcittScheme::Group4);
}

Status DecodeMmrRecords(CodecCall* context)
{
    return DecodeCcitt(context, CcittScheme::MmrRecords);
}

} // namespace tiff
