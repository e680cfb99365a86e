// The changes of a line are found once, 64 pixels at a time, and the list is also the reference for the next
// line. Two line coders, one for runs and one for modes, work on such lists. The differences between the
// schemes are a Framing record; one loop encodes the rows of all.
#include "codecs/ccitt/encoder.h"

#include "codecs/buffers.h"
#include "codecs/ccitt/encode_tables.h"
#include "codecs/ccitt/mmr_records.h"
#include "codecs/ccitt/runs.h"
#include "codecs/ccitt/writer.h"
#include "codecs/coding_settings.h"
#include "core/global_block.h"

#include <algorithm>
#include <bit>

namespace tiff {

Status StoreCodeBytes(CodecContext* context, Flush flush, Status failed, uint32_t bytes, uint32_t count)
{
    for (; count > 0; --count, bytes <<= 8) {
        *context->codeCursor++ = static_cast<uint8_t>(bytes >> 24);
        if (--context->codeBytesLeft != 0)
            continue;
        if (failed == error::None)
            failed = flush(context);
        else
            EmptyCodeBuffer(context);
    }
    return failed;
}

WordWriter PutAtEdge(WordWriter words, uint64_t code, uint32_t length)
{
    constexpr uint32_t HALF = 32;
    BitWriter& bits = *words.bits;
    GiveBack(words);
    if (length > HALF)
        Put(bits, static_cast<uint32_t>(code >> HALF), length - HALF);
    Put(bits, static_cast<uint32_t>(code), std::min(length, HALF));
    return Borrow(bits);
}

namespace {

using namespace ccitt;

constexpr uint32_t WIDEST_MODE_LINE = 32768; // bytes, of a two-dimensional line

enum class Lines { Runs, RunsAndModes, Modes };

// Where EOLs stand; those between lines carry a tag bit that chooses the next coder.
enum class Eols { None, BeforeLines, BetweenLines };

// Zero bits that make an EOL, or its tag, end on a byte.
enum class Fill { None, ToByte, FromNextByte };

struct Framing {
    Lines lines;
    Eols eols;
    Fill fill;
    bool alignedRows;     // every row begins on a byte
    uint32_t closingEols; // at the end of a strip: six are an RTC, two an EOFB
    Flush flush;
};

Status FlushToStrip(CodecContext* context)
{
    return FlushCodeBuffer(context);
}

constexpr Framing modifiedHuffman = {
    .lines = Lines::Runs,
    .eols = Eols::None,
    .fill = Fill::None,
    .alignedRows = true,
    .closingEols = 0,
    .flush = FlushToStrip,
};
constexpr Framing group3 = {
    .lines = Lines::Runs,
    .eols = Eols::BeforeLines,
    .fill = Fill::None,
    .alignedRows = false,
    .closingEols = 6,
    .flush = FlushToStrip,
};
constexpr Framing group3Aligned = {
    .lines = Lines::Runs,
    .eols = Eols::BeforeLines,
    .fill = Fill::FromNextByte,
    .alignedRows = false,
    .closingEols = 6,
    .flush = FlushToStrip,
};
constexpr Framing group3TwoDimensional = {
    .lines = Lines::RunsAndModes,
    .eols = Eols::BetweenLines,
    .fill = Fill::None,
    .alignedRows = false,
    .closingEols = 6,
    .flush = FlushToStrip,
};
constexpr Framing group3TwoDimensionalAligned = {
    .lines = Lines::RunsAndModes,
    .eols = Eols::BetweenLines,
    .fill = Fill::ToByte,
    .alignedRows = false,
    .closingEols = 6,
    .flush = FlushToStrip,
};
constexpr Framing group4 = {
    .lines = Lines::Modes,
    .eols = Eols::None,
    .fill = Fill::None,
    .alignedRows = false,
    .closingEols = 2,
    .flush = FlushToStrip,
};
constexpr Framing mmrRecords = {
    .lines = Lines::Modes,
    .eols = Eols::None,
    .fill = Fill::None,
    .alignedRows = false,
    .closingEols = 2,
    .flush = FlushToRecord,
};

struct CcittEncoder {
    const Framing& framing;
    BitWriter bits;
    int32_t* coding; // changes, then END_SENTINELS entries of the width
    int32_t* reference;
    int32_t width;
    bool endsStrip; // the line in work
    uint32_t kFactor;
    uint32_t linesSinceRuns; // counted from 1 at a one-dimensional line
};

uint64_t LoadPixels(const uint8_t* bytes)
{
    uint64_t word;
    std::memcpy(&word, bytes, sizeof(word));
    return Swap64(word);
}

// Pixels compared at once while the line is white from its start.
constexpr int32_t WIDE_PIXELS = 256;

bool IsWhite(const uint8_t* bytes)
{
    uint64_t words[WIDE_PIXELS / 64];
    std::memcpy(words, bytes, sizeof(words));
    return (words[0] | words[1] | words[2] | words[3]) == 0;
}

constexpr uint64_t Reversed(uint64_t bits)
{
    bits = (bits >> 1 & 0x5555555555555555) | (bits & 0x5555555555555555) << 1;
    bits = (bits >> 2 & 0x3333333333333333) | (bits & 0x3333333333333333) << 2;
    bits = (bits >> 4 & 0x0F0F0F0F0F0F0F0F) | (bits & 0x0F0F0F0F0F0F0F0F) << 4;
    return Swap64(bits);
}

// Stores a column for each bit, the highest first. Every processor finds the lowest bit quickly, but some are
// slow with the highest.
int32_t* StoreColumns(uint64_t bits, int32_t column, int32_t* changes)
{
    if (bits == 0)
        return changes;
    bits = Reversed(bits);
    do {
        *changes++ = column + std::countr_zero(bits);
        bits &= bits - 1;
    } while (bits != 0);
    return changes;
}

// Reads the spare bytes of the line behind its last pixel as white. A black run that reaches the width may
// end in a change there, which needs one more sentinel.
void FindChanges(const uint8_t* line, int32_t width, int32_t* changes)
{
    uint64_t before = 0;
    int32_t column = 0;
    while (width - column >= WIDE_PIXELS && IsWhite(line)) {
        column += WIDE_PIXELS;
        line += WIDE_PIXELS / 8;
    }
    for (; width - column >= 64; column += 64, line += 8) {
        const uint64_t word = LoadPixels(line);
        changes = StoreColumns(word ^ (word >> 1 | before << 63), column, changes);
        before = word;
    }
    if (column < width) {
        const uint64_t word = LoadPixels(line) & ~(UINT64_MAX >> (width - column));
        changes = StoreColumns(word ^ (word >> 1 | before << 63), column, changes);
    }
    std::fill_n(changes, END_SENTINELS, width);
}

// A run that is too long for the table.
WordWriter PutLongRun(WordWriter words, uint32_t colour, uint32_t run)
{
    const Code makeUp = extendedCodes.back().code;
    for (; run >= JOINED_RUNS; run -= LONGEST_MAKE_UP)
        Put(words, makeUp.bits, makeUp.length);
    const JoinedCode last = joinedCodes[colour][run];
    Put(words, BitsOf(last), LengthOf(last));
    return words;
}

inline void PutRun(WordWriter& words, uint32_t colour, int32_t pixels)
{
    const auto run = static_cast<uint32_t>(pixels);
    if (run < JOINED_RUNS)
        Put(words, BitsOf(joinedCodes[colour][run]), LengthOf(joinedCodes[colour][run]));
    else
        words = PutLongRun(words, colour, run);
}

// Two runs, the first of the given colour, after the code that may stand before them.
inline void PutRuns(WordWriter& words, Code prefix, uint32_t colour, int32_t firstRun, int32_t secondRun)
{
    const auto first = static_cast<uint32_t>(firstRun), second = static_cast<uint32_t>(secondRun);
    if (first >= JOINED_RUNS || second >= JOINED_RUNS) {
        if (prefix.length != 0)
            Put(words, prefix.bits, prefix.length);
        words = PutLongRun(words, colour, first);
        words = PutLongRun(words, colour ^ 1, second);
        return;
    }
    const JoinedCode one = joinedCodes[colour][first], other = joinedCodes[colour ^ 1][second];
    const uint64_t start = uint64_t{prefix.bits} << LengthOf(one) | BitsOf(one);
    Put(words, start << LengthOf(other) | BitsOf(other), prefix.length + LengthOf(one) + LengthOf(other));
}

// Deliberate: a line with a white first and a black eighth pixel begins with two empty runs. Not above a line
// of modes: decoders count empty runs as changes there, and would show other pixels than were saved.
bool BeginsWithEmptyRuns(const CcittEncoder& encoder, const uint8_t* line)
{
    const bool isReference = encoder.framing.lines != Lines::Runs && !encoder.endsStrip;
    return encoder.width >= 8 && (line[0] & 1) != 0 && encoder.coding[0] != 0 && !isReference;
}

void EncodeRunLine(CcittEncoder& encoder, const uint8_t* line)
{
    WordWriter words = Borrow(encoder.bits);
    if (BeginsWithEmptyRuns(encoder, line))
        words = PutLongRun(PutLongRun(words, 0, 0), 1, 0);
    const int32_t width = encoder.width;
    const int32_t* change = encoder.coding;
    int32_t position = 0;
    for (; change[0] < width; change += 2) {
        PutRuns(words, {}, 0, change[0] - position, change[1] - change[0]);
        position = change[1];
    }
    if (position < width)
        PutRun(words, 0, width - position);
    GiveBack(words);
}

// The indexes of a1 and b1 agree in their lowest bit, which is a0's colour. After a vertical mode to the
// left, only the change before b1 can also lie right of the new a0.
void EncodeModeLine(CcittEncoder& encoder)
{
    WordWriter words = Borrow(encoder.bits);
    const int32_t* a = encoder.coding;    // at a1
    const int32_t* b = encoder.reference; // at b1
    const int32_t width = encoder.width;
    uint32_t colour = 0;
    int32_t a0 = 0;
    while (a0 < width) {
        const int32_t delta = a[0] - b[0];
        if (b[1] < a[0]) {
            Put(words, passCode.bits, passCode.length);
            a0 = b[1];
            b += 2;
            continue;
        }
        if (delta >= -FARTHEST_VERTICAL && delta <= FARTHEST_VERTICAL) {
            const Code code = verticalCodes[static_cast<uint32_t>(delta + FARTHEST_VERTICAL)];
            Put(words, code.bits, code.length);
            a0 = *a++;
            colour ^= 1;
            b += b > encoder.reference && b[-1] > a0 ? -1 : 1;
        } else {
            PutRuns(words, horizontalCode, colour, a[0] - a0, a[1] - a[0]);
            a0 = a[1];
            a += 2;
        }
        while (b[0] <= a0 && b[0] < width)
            b += 2;
    }
    GiveBack(words);
}

bool NextHasRuns(const CcittEncoder& encoder)
{
    switch (encoder.framing.lines) {
    case Lines::Runs:
        return true;
    case Lines::Modes:
        return false;
    default:
        return encoder.linesSinceRuns >= encoder.kFactor;
    }
}

// Deliberate: filling from the next byte adds a whole byte when the line ends on one.
uint32_t FillBits(const CcittEncoder& encoder)
{
    switch (encoder.framing.fill) {
    case Fill::ToByte:
        return (3 - encoder.bits.held) % 8;
    case Fill::FromNextByte:
        return 12 - encoder.bits.held % 8;
    default:
        return 0;
    }
}

void PutEol(CcittEncoder& encoder, bool nextHasRuns)
{
    const uint32_t length = FillBits(encoder) + EOL_LENGTH;
    if (encoder.framing.eols == Eols::BetweenLines)
        Put(encoder.bits, nextHasRuns ? 3 : 2, length + 1);
    else
        Put(encoder.bits, 1, length);
}

// The first line of a strip has a white line above it, and nothing of the strip before.
void BeginStrip(CcittEncoder& encoder)
{
    std::fill_n(encoder.reference, END_SENTINELS, encoder.width);
    encoder.linesSinceRuns = encoder.kFactor;
}

void EndStrip(CcittEncoder& encoder)
{
    for (uint32_t count = 0; count < encoder.framing.closingEols; ++count)
        PutEol(encoder, true);
    EndCode(encoder.bits);
}

void EncodeLine(CcittEncoder& encoder, const uint8_t* line)
{
    FindChanges(line, encoder.width, encoder.coding);
    const bool hasRuns = NextHasRuns(encoder);
    encoder.linesSinceRuns = hasRuns ? 1 : encoder.linesSinceRuns + 1;
    if (hasRuns)
        EncodeRunLine(encoder, line);
    else
        EncodeModeLine(encoder);
    std::swap(encoder.coding, encoder.reference);
}

// Deliberate: tagged EOLs stand between lines and once before the first of all, so any later strip begins
// without one.
Status EncodeLines(CcittEncoder& encoder, CodecContext* context)
{
    const Framing& framing = encoder.framing;
    if (framing.eols == Eols::BetweenLines)
        PutEol(encoder, true);
    BeginStrip(encoder);
    Status status = error::None;
    while (status == error::None) {
        if (framing.eols == Eols::BeforeLines)
            PutEol(encoder, true);
        encoder.endsStrip = context->lastLineOfStrip != 0;
        EncodeLine(encoder, context->lineBuffer);
        if (framing.alignedRows)
            PadToByte(encoder.bits);
        if (context->lastLineOfStrip) {
            EndStrip(encoder);
            BeginStrip(encoder);
        } else if (framing.eols == Eols::BetweenLines) {
            PutEol(encoder, NextHasRuns(encoder));
        }
        status = encoder.bits.failed;
        if (status == error::None)
            status = FillDataBuffer(context);
    }
    return status == ALL_ROWS_DONE ? framing.flush(context) : status;
}

Status EncodeRows(CodecCall* context, const Framing& framing)
{
    if (framing.lines != Lines::Runs && context->bytesPerLine > WIDEST_MODE_LINE)
        return error::BadCode;
    if (const Status status = InitEncodeBuffers(context); status != error::None)
        return CodecResult(status);
    const uint64_t room = uint64_t{Width(context)} + 1 + END_SENTINELS;
    GlobalBlock block(2 * room * sizeof(int32_t));
    Locked<int32_t> changes(block.Get());
    if (!changes)
        return error::NotEnoughMemory;
    CodingSettings& settings = ThreadCoding();
    const uint32_t kFactor = settings.chosenK ? settings.chosenK : DEFAULT_K_FACTOR;
    CcittEncoder encoder{
        .framing = framing,
        .bits = {.context = context, .flush = framing.flush},
        .coding = changes.Get(),
        .reference = changes.Get() + room,
        .width = context->lineFormat.biWidth,
        .endsStrip = false,
        .kFactor = kFactor,
        .linesSinceRuns = kFactor,
    };
    const Status status = EncodeLines(encoder, context);
    settings.codeMask = 0x80u >> encoder.bits.held % 8;
    return status;
}

bool IsAligned(const CodecContext* context)
{
    return (context->compression & compression::ByteAligned) != 0;
}

} // namespace

Status EncodeModifiedHuffman(CodecCall* context)
{
    return EncodeRows(context, modifiedHuffman);
}

Status EncodeGroup3(CodecCall* context)
{
    return EncodeRows(context, IsAligned(context) ? group3Aligned : group3);
}

Status EncodeGroup3TwoDimensional(CodecCall* context)
{
    return EncodeRows(context, IsAligned(context) ? group3TwoDimensionalAligned : group3TwoDimensional);
}

Status EncodeGroup4(CodecCall* context)
{
    return EncodeRows(context, group4);
}

Status EncodeMmrRecords(CodecCall* context)
{
    return EncodeRows(context, mmrRecords);
}

} // namespace tiff
