// Two line coders, one over runs and one over modes, append to a list of run ends. What the
// five schemes differ in is a Framing record; one loop decodes the rows of all of them.
#include "codecs/ccitt_decoder.h"

#include "codecs/buffers.h"
#include "codecs/ccitt_bits.h"
#include "codecs/ccitt_tables.h"
#include "codecs/mmr_records.h"
#include "codecs/runs.h"
#include "core/global_block.h"

#include <algorithm>

namespace tiff {

namespace {

using namespace ccitt;

// What eight zero bits mean where a run is expected.
enum class ZeroRun { EndsRun, EndsLine, BadCode };

struct Framing {
    bool beginsWithModes; // the first line of a strip is two-dimensional
    bool tagAfterEol;     // every line is followed by an EOL and a bit that tells the next coder
    bool alignedRows;     // every row begins on a byte
    ZeroRun zeroRun;
    bool endsWithEofb; // seven zero bits for a mode are an EOFB or wrong; else an EOL
    bool skipsExtensions;
    Refill refill;
    Status (*init)(CodecContext*);
};

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

// What a line coder met. Ended stands for the status that the reader ended with.
enum class Met { LineEnd, Eol, Ended, BadCode, Eofb, Run };

static_assert(SPARE_LINE_BYTES >= PAINT_MARGIN);

struct CcittDecoder {
    const Framing& framing;
    BitReader bits;
    RunList coding;
    RunList reference;
    int32_t width;
    bool decodedAny = false; // something of the line in hand, an EOL apart
};

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
        met = Met::Run;
    }
    if (met != Met::Run)
        return met;
    decoder.decodedAny = true;
    return AppendRunEnd(decoder.coding, position, decoder.width) ? Met::Run : Met::BadCode;
}

// Cuts the line short: the run in hand goes on to its end.
Met EndAtEol(CcittDecoder& decoder)
{
    return AppendRunEnd(decoder.coding, decoder.width, decoder.width) ? Met::LineEnd : Met::BadCode;
}

Met DecodeRunLine(CcittDecoder& decoder)
{
    int64_t position = 0;
    for (uint32_t colour = 0; position < decoder.width; colour ^= 1) {
        const Met met = AppendRun(decoder, colour, position);
        if (met == Met::Run)
            continue;
        if (met != Met::Eol)
            return met;
        if (!decoder.framing.tagAfterEol && !TakeThroughOne(decoder.bits))
            return Met::Ended;
        return EndAtEol(decoder);
    }
    return Met::LineEnd;
}

// The place in the reference line: an index of the entry that is b1.
struct ReferencePoint {
    const RunList& line;
    uint32_t index = 0;

    int32_t B1() const
    {
        return line.ends[index];
    }
    int32_t B2() const
    {
        return line.ends[index + 1];
    }
    // Behind the list everything is the width, so only the index's parity matters there.
    void Advance(uint32_t count)
    {
        index += count;
        while (index > line.count + END_SENTINELS - 2)
            index -= 2;
    }
    void SkipThrough(int32_t column, int32_t width)
    {
        while (column < width && B1() <= column)
            Advance(2);
    }
    bool PreviousIsRightOf(int32_t column) const
    {
        return index > 1 && line.ends[index - 2] > column;
    }
};

int32_t VerticalChange(int32_t delta, ReferencePoint& reference, int32_t width)
{
    const int32_t a1 = std::clamp(reference.B1() + delta, 0, width);
    reference.Advance(1);
    if (delta < 0) {
        while (reference.PreviousIsRightOf(a1))
            reference.index -= 2;
    } else if (delta > 0) {
        if (reference.PreviousIsRightOf(a1))
            reference.index -= 2;
        else
            reference.SkipThrough(a1, width);
    }
    return a1;
}

// Wanted: an early EOFB is reported only when the bytes held show it whole. When the buffer had
// to be refilled on the way, decoding ends as the refill did, with success.
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
Met DecodeHorizontal(CcittDecoder& decoder, ReferencePoint& reference, int32_t a0, int32_t& a2)
{
    int64_t position = a0;
    const uint32_t colour = decoder.coding.count & 1;
    for (const uint32_t each : {colour, colour ^ 1})
        if (const Met met = AppendRun(decoder, each, position); met != Met::Run)
            return met;
    a2 = static_cast<int32_t>(std::min<int64_t>(position, decoder.width));
    reference.SkipThrough(a2, decoder.width);
    return Met::Run;
}

Met DecodeVerticalMode(CcittDecoder& decoder, ReferencePoint& reference, int32_t delta, int32_t& a1)
{
    decoder.decodedAny = true;
    a1 = VerticalChange(delta, reference, decoder.width);
    return AppendRunEnd(decoder.coding, a1, decoder.width) ? Met::Run : Met::BadCode;
}

// Only a change ends a line: a pass that reaches its end waits for one.
Met DecodeModeLine(CcittDecoder& decoder)
{
    ReferencePoint reference{decoder.reference};
    int32_t a0 = 0, change = 0;
    while (change < decoder.width) {
        const ModeCode& mode = modeTable[PeekByte(decoder.bits) >> 1];
        if (mode.code.length > decoder.bits.held)
            return Met::Ended;
        if (mode.mode == Mode::Zeros)
            return decoder.framing.endsWithEofb ? Met::Eofb : EndAtEol(decoder);
        if (!Take(decoder.bits, mode.code.length))
            return Met::Ended;
        Met met = Met::Run;
        switch (mode.mode) {
        case Mode::Vertical:
            met = DecodeVerticalMode(decoder, reference, mode.delta, change);
            a0 = change;
            break;
        case Mode::Horizontal:
            met = DecodeHorizontal(decoder, reference, a0, change);
            a0 = change;
            break;
        case Mode::Pass:
            decoder.decodedAny = true;
            a0 = reference.B2();
            reference.Advance(2);
            break;
        default:
            met = decoder.framing.skipsExtensions ? Met::Run : Met::BadCode;
            break;
        }
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

// Lists for two lines. A line in order has at most one entry a column, and every entry takes a
// bit of code: a small file gets small lists, whatever width it claims.
GlobalBlock MakeRunLists(const CodecContext* context, uint32_t& room)
{
    const uint64_t codeBits = uint64_t{context->dataEnd} * 8;
    room = static_cast<uint32_t>(std::min<uint64_t>(Width(context), codeBits)) + END_SENTINELS;
    return GlobalBlock(2 * RoomOfList(room) * sizeof(int32_t));
}

void BeginWhiteReference(CcittDecoder& decoder)
{
    ClearRunList(decoder.reference);
    FinishRunList(decoder.reference, decoder.width);
}

// Hands the finished line over and takes it for the next reference; the first line of a strip
// begins afresh.
Status FinishLine(CcittDecoder& decoder, CodecContext* context)
{
    FinishRunList(decoder.coding, decoder.width);
    if (decoder.decodedAny) {
        PaintRuns(decoder.coding, {context->lineBuffer, context->bytesPerLine});
        if (const Status status = FlushDataBuffer(context); status != error::None)
            return status;
    }
    std::swap(decoder.coding, decoder.reference);
    return error::None;
}

Status DecodeLines(CcittDecoder& decoder, CodecContext* context)
{
    const Framing& framing = decoder.framing;
    bool modes = framing.beginsWithModes;
    BeginWhiteReference(decoder);
    for (;;) {
        ClearRunList(decoder.coding);
        decoder.decodedAny = false;
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
            AlignToByte(decoder.bits);
        if (framing.tagAfterEol) {
            if (!TakeThroughOne(decoder.bits))
                return decoder.bits.ended;
            modes = PeekByte(decoder.bits) < 0x80;
            if (!Take(decoder.bits, 1))
                return decoder.bits.ended;
        }
    }
}

Status DecodeRows(CodecContext* context, const Framing& framing)
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
    };
    return CodecResult(DecodeLines(decoder, context));
}

} // namespace

Status DecodeModifiedHuffman(CodecContext* context)
{
    return DecodeRows(context, modifiedHuffman);
}

Status DecodeGroup3(CodecContext* context)
{
    return DecodeRows(context, group3);
}

Status DecodeGroup3TwoDimensional(CodecContext* context)
{
    return DecodeRows(context, group3TwoDimensional);
}

Status DecodeGroup4(CodecContext* context)
{
    return DecodeRows(context, group4);
}

Status DecodeMmrRecords(CodecContext* context)
{
    return DecodeRows(context, mmrRecords);
}

} // namespace tiff
