#include "raster/screen_rows.h"

#include "core/byte_order.h"
#include "raster/colour.h"
#include "raster/dib.h"

#include <algorithm>
#include <bit>

namespace tiff {

// How page rows become a device row. Both see the whole line; only the columns shown count.
struct RowKind {
    PixelForm form;
    uint64_t (*collectorBytes)(uint32_t width); // null: the first row makes the device row
    void (*collect)(ScreenRows& rows, const uint8_t* line);
    void (*finish)(ScreenRows& rows, uint8_t* target);
};

namespace {

constexpr uint32_t BAND_BYTES = 64 * 1024;
constexpr uint32_t GREYS = 256;

// The part of a bilevel line that is shown, in bytes.
struct ByteRange {
    uint32_t first, end;
};

ByteRange ShownBytes(const ScreenRows& rows)
{
    const PixelSpan& last = rows.columns.back();
    return {rows.columns.front().first / 8, (last.first + last.count + 7) / 8};
}

// Bits: the union of the rows. Eight bytes behind it may be read.
constexpr uint32_t WINDOW_BYTES = 8;

uint64_t UnionBytes(uint32_t width)
{
    return (width + 7) / 8 + WINDOW_BYTES;
}

void CollectUnion(ScreenRows& rows, const uint8_t* line)
{
    const ByteRange range = ShownBytes(rows);
    if (rows.collectedRows == 0)
        std::memcpy(rows.collected + range.first, line + range.first, range.end - range.first);
    else
        for (uint32_t at = range.first; at < range.end; ++at)
            rows.collected[at] = static_cast<uint8_t>(rows.collected[at] | line[at]);
}

// 57 bits or more, from this pixel on.
uint64_t PixelsFrom(const uint8_t* line, uint32_t pixel)
{
    uint64_t word;
    std::memcpy(&word, line + pixel / 8, sizeof(word));
    if constexpr (std::endian::native == std::endian::little)
        word = Swap64(word);
    return word << pixel % 8;
}

bool AnySet(const uint8_t* line, PixelSpan span)
{
    constexpr uint32_t READABLE = 57;
    for (; span.count > READABLE; span.first += READABLE, span.count -= READABLE)
        if (PixelsFrom(line, span.first) >> (64 - READABLE) != 0)
            return true;
    return PixelsFrom(line, span.first) >> (64 - span.count) != 0;
}

void FinishCopied(ScreenRows& rows, uint8_t* target)
{
    const auto width = static_cast<uint32_t>(rows.columns.size());
    const uint32_t first = rows.columns.front().first, bytes = (width + 7) / 8;
    for (uint32_t at = 0; at < bytes; ++at)
        target[at] = static_cast<uint8_t>(PixelsFrom(rows.collected, first + at * 8) >> 56);
}

void FinishUnion(ScreenRows& rows, uint8_t* target)
{
    const uint8_t* line = rows.collected;
    const PixelSpan* span = rows.columns.data();
    size_t rest = rows.columns.size();
    for (; rest >= 8; rest -= 8, span += 8) {
        uint32_t byte = 0;
        for (uint32_t bit = 0; bit < 8; ++bit)
            byte = byte << 1 | AnySet(line, span[bit]);
        *target++ = static_cast<uint8_t>(byte);
    }
    uint32_t byte = 0;
    for (size_t bit = 0; bit < rest; ++bit)
        byte |= uint32_t{AnySet(line, span[bit])} << (7 - bit);
    if (rest != 0)
        *target = static_cast<uint8_t>(byte);
}

// Grey: the count of set pixels in each column, four columns of 16 bits in a word.
constexpr uint32_t COUNTED_TOGETHER = 4;
constexpr uint32_t MOST_COUNTED = UINT16_MAX; // rows; more behind one device row change no grey

constexpr auto countsOfNibble = [] {
    std::array<uint64_t, 16> table{};
    for (uint32_t nibble = 0; nibble < table.size(); ++nibble)
        for (uint32_t column = 0; column < COUNTED_TOGETHER; ++column)
            table[nibble] |= uint64_t{nibble >> (3 - column) & 1} << (16 * column);
    return table;
}();

uint64_t CountBytes(uint32_t width)
{
    return (uint64_t{width} + 7) / 8 * 2 * sizeof(uint64_t);
}

void CollectCounts(ScreenRows& rows, const uint8_t* line)
{
    const ByteRange range = ShownBytes(rows);
    auto* counts = reinterpret_cast<uint64_t*>(rows.collected);
    if (rows.collectedRows == 0)
        std::memset(counts + 2 * range.first, 0, size_t{range.end - range.first} * 2 * sizeof(uint64_t));
    if (rows.collectedRows >= MOST_COUNTED)
        return;
    for (uint32_t at = range.first; at < range.end; ++at) {
        const uint32_t byte = line[at];
        if (byte == 0)
            continue;
        counts[2 * at] += countsOfNibble[byte >> 4];
        counts[2 * at + 1] += countsOfNibble[byte & 15];
    }
}

void FinishCounts(ScreenRows& rows, uint8_t* target)
{
    const auto* counts = reinterpret_cast<const uint64_t*>(rows.collected);
    const uint32_t height = std::min(rows.collectedRows, MOST_COUNTED);
    for (const PixelSpan& span : rows.columns) {
        uint64_t set = 0;
        for (uint32_t column = span.first; column < span.first + span.count; ++column)
            set += counts[column / COUNTED_TOGETHER] >> (16 * (column % COUNTED_TOGETHER)) & 0xFFFF;
        const uint64_t all = uint64_t{span.count} * height;
        *target++ = static_cast<uint8_t>(set == 0 ? 0 : (set * (GREYS - 1) + all / 2) / all);
    }
}

// Colours: one pixel of one row.
void PickNibbles(ScreenRows& rows, uint8_t* target)
{
    const uint8_t* line = rows.collected;
    for (const PixelSpan& span : rows.columns)
        *target++ = static_cast<uint8_t>(line[span.first / 2] >> (span.first % 2 ? 0 : 4) & 15);
}

void PickBytes(ScreenRows& rows, uint8_t* target)
{
    for (const PixelSpan& span : rows.columns)
        *target++ = rows.collected[span.first];
}

void PickTriples(ScreenRows& rows, uint8_t* target)
{
    uint8_t* const begin = target;
    for (const PixelSpan& span : rows.columns) {
        const uint8_t* pixel = rows.collected + size_t{span.first} * 3;
        *target++ = pixel[0];
        *target++ = pixel[1];
        *target++ = pixel[2];
    }
    const auto width = static_cast<uint32_t>(rows.columns.size());
    if (rows.conversion == Conversion::YCbCr)
        ConvertYCbCr(begin, begin, width);
    else if (rows.conversion != Conversion::Copy)
        SwapRedAndBlue(begin, width * 3);
    if (rows.inverted)
        std::transform(begin, target, begin, [](uint8_t level) { return static_cast<uint8_t>(~level); });
}

constexpr RowKind copiedBits = {PixelForm::Bits, UnionBytes, CollectUnion, FinishCopied};
constexpr RowKind unitedBits = {PixelForm::Bits, UnionBytes, CollectUnion, FinishUnion};
constexpr RowKind countedBits = {PixelForm::Bytes, CountBytes, CollectCounts, FinishCounts};
constexpr RowKind nibbles = {PixelForm::Bytes, nullptr, nullptr, PickNibbles};
constexpr RowKind bytes = {PixelForm::Bytes, nullptr, nullptr, PickBytes};
constexpr RowKind triples = {PixelForm::Triples, nullptr, nullptr, PickTriples};

bool IsReduced(const ShownAxis& axis)
{
    return axis.scaled < axis.pixels;
}

const RowKind* KindOf(const PictureFormat& format, const ScreenRowsOrder& order, const ShownAxis& columns)
{
    switch (format.stored.biBitCount) {
    case 1:
        if (order.grey && (IsReduced(order.shown.x) || IsReduced(order.shown.y)))
            return &countedBits;
        return columns.scaled == columns.pixels ? &copiedBits : &unitedBits;
    case 4:
        return &nibbles;
    case 8:
        return &bytes;
    default:
        return &triples;
    }
}

RGBQUAD Between(RGBQUAD clear, RGBQUAD set, uint32_t share)
{
    const auto level = [share](uint32_t from, uint32_t to) {
        return static_cast<uint8_t>((from * (GREYS - 1 - share) + to * share) / (GREYS - 1));
    };
    return {level(clear.rgbBlue, set.rgbBlue), level(clear.rgbGreen, set.rgbGreen),
            level(clear.rgbRed, set.rgbRed), 0};
}

// Deliberate: a bilevel page has no other colours than black and white, and any photometric value but
// WhiteIsZero makes 0 black.
void ChooseColours(ScreenRows& rows, const PictureFormat& format)
{
    if (format.stored.biBitCount != 1) {
        rows.colourCount = std::min<uint32_t>(format.stored.biClrUsed, GREYS);
        rows.colours = format.colours;
    } else {
        const RGBQUAD black{}, white{255, 255, 255, 0};
        const bool whiteIsZero = format.photometric == photometric::WhiteIsZero;
        rows.colourCount = rows.form == PixelForm::Bits ? 2 : GREYS;
        for (uint32_t index = 0; index < rows.colourCount; ++index)
            rows.colours[index] = Between(whiteIsZero ? white : black, whiteIsZero ? black : white,
                                          index * (GREYS - 1) / (rows.colourCount - 1));
    }
    if (rows.inverted)
        for (RGBQUAD& colour : std::span(rows.colours).first(rows.colourCount))
            colour = {static_cast<uint8_t>(~colour.rgbBlue), static_cast<uint8_t>(~colour.rgbGreen),
                      static_cast<uint8_t>(~colour.rgbRed), 0};
}

// Colours are not mixed: the first pixel on the screen stands for all behind the same device pixel.
void PickFirst(std::span<PixelSpan> spans, bool mirrored)
{
    for (PixelSpan& span : spans)
        span = {mirrored ? span.first + span.count - 1 : span.first, 1};
}

// Rows of a band. Rows that become columns of bits come in whole words.
uint32_t BandRows(uint32_t stride, uint32_t rows, bool words)
{
    const uint32_t fitting = std::max(BAND_BYTES / std::max(stride, 1u), 1u);
    return std::min(words && fitting > 32 ? fitting / 32 * 32 : fitting, rows);
}

constexpr uint64_t Aligned(uint64_t bytes)
{
    return (bytes + 15) / 16 * 16;
}

// One block, since a drawing may not fail between its parts.
Status GetMemory(ScreenRows& rows, uint32_t deviceRows, uint32_t deviceColumns, uint32_t width)
{
    const uint32_t bits = BitsOf(rows.form);
    const bool columns = AxesOf(rows.turn).rowsAreColumns;
    rows.stride = static_cast<uint32_t>(DibStride(deviceColumns, bits));
    rows.bandRows = BandRows(rows.stride, deviceRows, columns && rows.form == PixelForm::Bits);
    rows.turnedStride = columns ? static_cast<uint32_t>(DibStride(rows.bandRows, bits)) : rows.stride;
    const uint64_t spanBytes = Aligned((uint64_t{deviceRows} + deviceColumns) * sizeof(PixelSpan));
    const uint64_t collectorBytes = rows.kind->collectorBytes ? Aligned(rows.kind->collectorBytes(width)) : 0;
    const uint64_t bandBytes = Aligned(uint64_t{rows.stride} * rows.bandRows);
    const uint64_t turnedBytes = uint64_t{rows.turnedStride} * (columns ? deviceColumns : rows.bandRows);
    rows.block =
        GlobalBlock(spanBytes + collectorBytes + bandBytes + (rows.turn == Turn::None ? 0 : turnedBytes));
    rows.memory.emplace(rows.block.Get());
    uint8_t* at = rows.memory->Get();
    if (!at)
        return error::NotEnoughMemory;
    auto* spans = reinterpret_cast<PixelSpan*>(at);
    rows.rows = {spans, deviceRows};
    rows.columns = {spans + deviceRows, deviceColumns};
    rows.collected = at + spanBytes;
    rows.band = rows.collected + collectorBytes;
    rows.turned = rows.band + bandBytes;
    return error::None;
}

// Where the held rows stand on the screen.
ScreenBand BandOnScreen(const ScreenRows& rows)
{
    const PageAxes axes = AxesOf(rows.turn);
    const auto all = static_cast<uint32_t>(rows.rows.size());
    const auto width = static_cast<uint32_t>(rows.columns.size());
    const uint32_t at = axes.rowsMirrored ? all - rows.next : rows.next - rows.held;
    if (axes.rowsAreColumns)
        return {at, 0, rows.held, width, rows.turnedStride, rows.turned};
    return {0, at, width, rows.held, rows.stride, rows.turn == Turn::None ? rows.band : rows.turned};
}

void ShowBand(ScreenRows& rows)
{
    if (rows.held == 0)
        return;
    if (rows.turn != Turn::None)
        TurnRows(rows.turn, rows.form,
                 {static_cast<uint32_t>(rows.columns.size()), rows.held, rows.stride, rows.band}, rows.turned,
                 rows.turnedStride);
    rows.show(rows.user, BandOnScreen(rows));
    rows.held = 0;
}

void FinishRow(ScreenRows& rows)
{
    rows.kind->finish(rows, rows.band + size_t{rows.held} * rows.stride);
    rows.collectedRows = 0;
    ++rows.next;
    if (++rows.held == rows.bandRows)
        ShowBand(rows);
}

} // namespace

bool ShowsOnScreen(const PictureFormat& format)
{
    const uint32_t bits = format.stored.biBitCount;
    return (bits == 1 || bits == 4 || bits == 8 || bits == 24) && !format.sharesChroma;
}

Status BeginScreenRows(ScreenRows& rows, const PictureFormat& format, const ScreenRowsOrder& order)
{
    const PageAxes axes = AxesOf(order.turn);
    const ShownAxis& down = axes.rowsAreColumns ? order.shown.x : order.shown.y;
    const ShownAxis& along = axes.rowsAreColumns ? order.shown.y : order.shown.x;
    if (!ShowsOnScreen(format))
        return error::ColourFormat;
    rows.kind = KindOf(format, order, along);
    rows.bitCount = format.stored.biBitCount;
    rows.form = rows.kind->form;
    rows.turn = order.turn;
    rows.inverted = order.inverted;
    rows.conversion = format.conversion;
    ChooseColours(rows, format);
    // A picture without a column shown has no rows either.
    const uint32_t deviceRows = along.shown ? down.shown : 0;
    if (const Status status = GetMemory(rows, deviceRows, along.shown, along.pixels); status != error::None)
        return status;
    FillSpans(down, axes.rowsMirrored, rows.rows);
    FillSpans(along, axes.columnsMirrored, rows.columns);
    if (!rows.kind->collect) {
        PickFirst(rows.rows, axes.rowsMirrored);
        PickFirst(rows.columns, axes.columnsMirrored);
    }
    return error::None;
}

void TakeScreenRow(ScreenRows& rows, const uint8_t* line, uint32_t row)
{
    while (rows.next < rows.rows.size()) {
        const PixelSpan& span = rows.rows[rows.next];
        if (row < span.first)
            return;
        const uint32_t behind = span.first + span.count;
        if (rows.kind->collect) {
            rows.kind->collect(rows, line);
            ++rows.collectedRows;
            if (row + 1 < behind)
                return;
        } else {
            rows.collected = const_cast<uint8_t*>(line);
        }
        FinishRow(rows);
    }
}

void EndScreenRows(ScreenRows& rows)
{
    if (rows.collectedRows != 0)
        FinishRow(rows);
    ShowBand(rows);
}

} // namespace tiff
