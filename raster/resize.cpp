// One pass over the part. Smooth pixels are sums of whole numbers: a pixel of the picture, cut into as many
// pieces as the result has pixels on that axis, gives each pixel of the result its pieces.
#include "raster/resize.h"

#include "core/byte_order.h"
#include "core/global_block.h"
#include "core/sixteen.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace tiff {

namespace {

constexpr uint32_t GREYS = 256;

// Where the pixels of a result lie in a part along one axis: floor((2x + 1) * part / (2 * size)).
class Centres {
public:
    Centres(uint32_t part, uint32_t size)
        : denominator(2 * uint64_t{size}), step(part / size), stepRest(2 * uint64_t{part % size}),
          pixel(part / denominator), rest(part % denominator)
    {
    }
    uint32_t Pixel() const
    {
        return static_cast<uint32_t>(pixel);
    }
    void Next()
    {
        pixel += step;
        rest += stepRest;
        if (rest >= denominator) {
            rest -= denominator;
            ++pixel;
        }
    }

private:
    uint64_t denominator, step, stepRest, pixel, rest;
};

// The pixels of a part under each pixel of the result, with their pieces: `first` of pixel `begin`, all of
// the `whole` pixels behind it, `last` of the next. An axis that is not reduced has its pixels repeated.
class Covers {
public:
    Covers(uint32_t part, uint32_t size)
        : first(size < part ? size : part), part(part), size(size), reduces(size < part), centre(part, size)
    {
        Measure();
    }
    void Next()
    {
        if (reduces) {
            begin += whole + 1;
            first = size - last;
        }
        Measure();
    }
    bool Reduces() const
    {
        return reduces;
    }

    uint32_t begin = 0, whole = 0;
    uint64_t first, last = 0;

private:
    void Measure()
    {
        if (reduces) {
            const auto rest = static_cast<uint32_t>(part - first);
            whole = rest / size;
            last = rest % size;
        } else {
            begin = centre.Pixel();
            centre.Next();
        }
    }

    uint32_t part, size;
    bool reduces;
    Centres centre;
};

// What a result is made of.
struct Job {
    const DibView& view;
    const ResizeOrder& order;
    uint8_t* pixels; // of the result
    uint64_t stride;

    const uint8_t* SourceRow(uint32_t row) const
    {
        return view.Row(order.top + row);
    }
    uint8_t* ResultRow(uint32_t row) const
    {
        return pixels + stride * (order.height - 1 - row);
    }
};

// Pixels from any bit on, to the beginning of a row. The bits behind the last pixel become 0.
void CopyBits(uint8_t* target, const uint8_t* row, uint64_t firstBit, uint64_t bitCount)
{
    const uint8_t* from = row + firstBit / 8;
    const auto shift = static_cast<uint32_t>(firstBit % 8);
    const uint64_t bytes = (bitCount + 7) / 8;
    if (shift == 0) {
        std::memcpy(target, from, static_cast<size_t>(bytes));
    } else {
        const uint64_t sourceBytes = (shift + bitCount + 7) / 8;
        uint64_t at = 0;
        for (; at + SIXTEEN < sourceBytes; at += SIXTEEN)
            StoreSixteen(target + at, Or(RaiseBits(LoadSixteen(from + at), shift),
                                         LowerBits(LoadSixteen(from + at + 1), 8 - shift)));
        if (at != 0) {
            // Most of the last word is made twice.
            at = sourceBytes - 1 - SIXTEEN;
            StoreSixteen(target + at, Or(RaiseBits(LoadSixteen(from + at), shift),
                                         LowerBits(LoadSixteen(from + at + 1), 8 - shift)));
            at += SIXTEEN;
        }
        // The last byte may take all of its bits from the last one of the row.
        for (; at < bytes; ++at) {
            const uint32_t next = at + 1 < sourceBytes ? from[at + 1] : 0;
            target[at] = static_cast<uint8_t>((uint32_t{from[at]} << 8 | next) >> (8 - shift));
        }
    }
    if (bitCount % 8 != 0)
        target[bytes - 1] = static_cast<uint8_t>(target[bytes - 1] & 0xFF00u >> bitCount % 8);
}

// Up to the end of the row, whose padding is zero.
void ClearBehind(const Job& job, uint8_t* target, uint64_t bytes)
{
    std::memset(target + bytes, 0, static_cast<size_t>(job.stride - bytes));
}

void CopyPixels(const Job& job, const uint8_t* row, uint8_t* target)
{
    const uint64_t bits = job.view.bitCount, copied = job.order.width * bits;
    CopyBits(target, row, job.order.left * bits, copied);
    ClearBehind(job, target, (copied + 7) / 8);
}

void PickRow(const Job& job, const uint8_t* row, uint8_t* target)
{
    const uint32_t bits = job.view.bitCount, left = job.order.left;
    std::memset(target, 0, static_cast<size_t>(job.stride));
    Centres column(job.order.partWidth, job.order.width);
    for (uint32_t x = 0; x < job.order.width; ++x, column.Next()) {
        const uint32_t pixel = left + column.Pixel();
        if (bits == 24)
            std::memcpy(target + size_t{x} * 3, row + size_t{pixel} * 3, 3);
        else if (bits == 8)
            target[x] = row[pixel];
        else if (bits == 4)
            target[x / 2] = static_cast<uint8_t>(target[x / 2] | NibbleAt(row, pixel) << (x % 2 ? 0 : 4));
        else
            target[x / 8] = static_cast<uint8_t>(target[x / 8] | BitAt(row, pixel) << (7 - x % 8));
    }
}

// A row that repeats the one before is copied.
void Pick(const Job& job)
{
    const ResizeOrder& order = job.order;
    Centres row(order.partHeight, order.height);
    uint32_t before = UINT32_MAX;
    for (uint32_t y = 0; y < order.height; ++y, row.Next()) {
        uint8_t* target = job.ResultRow(y);
        if (row.Pixel() == before)
            std::memcpy(target, job.ResultRow(y - 1), static_cast<size_t>(job.stride));
        else if (order.width == order.partWidth)
            CopyPixels(job, job.SourceRow(row.Pixel()), target);
        else
            PickRow(job, job.SourceRow(row.Pixel()), target);
        before = row.Pixel();
    }
}

// How the pixels of a row are added up: levels are the values of a channel by index, or the bytes themselves.
struct Levels {
    uint8_t channel[3][GREYS];
};

Levels LevelsOf(const DibView& view)
{
    Levels levels{};
    for (uint32_t index = 0; index < view.ColourCount(); ++index)
        for (uint32_t channel = 0; channel < 3; ++channel)
            levels.channel[channel][index] = view.colours[size_t{index} * view.colourBytes + channel];
    return levels;
}

// Adds one channel of a row, so many times, to the sums of its pixels.
template <class LevelAt>
void AddRow(const ResizeOrder& order, uint64_t times, uint64_t* sums, size_t channels, LevelAt level)
{
    Covers cover(order.partWidth, order.width);
    for (uint32_t x = 0; x < order.width; ++x, cover.Next(), sums += channels) {
        const uint32_t begin = order.left + cover.begin;
        uint64_t sum = cover.first * level(begin);
        if (cover.Reduces()) {
            uint64_t between = 0;
            for (uint32_t pixel = begin + 1; pixel <= begin + cover.whole; ++pixel)
                between += level(pixel);
            sum += order.width * between;
            sum += cover.last ? cover.last * level(begin + cover.whole + 1) : 0;
        }
        *sums += times * sum;
    }
}

// Up to 57 pixels of a bilevel row, the first in the highest bit. The row has so many bytes.
constexpr uint32_t WINDOW = 57;

uint64_t PixelsFrom(const uint8_t* row, uint32_t rowBytes, uint32_t first)
{
    const uint32_t byte = first / 8;
    uint64_t word = 0;
    if (byte + sizeof(word) <= rowBytes) {
        std::memcpy(&word, row + byte, sizeof(word));
        if constexpr (std::endian::native == std::endian::little)
            word = Swap64(word);
    } else {
        for (uint32_t at = byte; at < rowBytes; ++at)
            word |= uint64_t{row[at]} << (56 - 8 * (at - byte));
    }
    return word << first % 8;
}

uint32_t CountSet(const uint8_t* row, uint32_t rowBytes, uint32_t first, uint32_t count)
{
    uint32_t set = 0;
    for (; count > WINDOW; first += WINDOW, count -= WINDOW)
        set += static_cast<uint32_t>(std::popcount(PixelsFrom(row, rowBytes, first) >> (64 - WINDOW)));
    return count
               ? set + static_cast<uint32_t>(std::popcount(PixelsFrom(row, rowBytes, first) >> (64 - count)))
               : set;
}

// The pieces of the set pixels under a pixel of the result. Nearly always the pixels are all alike.
uint64_t PiecesSet(const uint8_t* row, uint32_t rowBytes, const Covers& cover, uint32_t begin,
                   uint64_t pieces, uint64_t all)
{
    const uint32_t behind = begin + cover.whole + 1;
    const uint32_t count = 1 + cover.whole + (cover.last != 0);
    if (count > WINDOW)
        return cover.first * BitAt(row, begin) + pieces * CountSet(row, rowBytes, begin + 1, cover.whole) +
               (cover.last ? cover.last * BitAt(row, behind) : 0);
    const uint64_t pixels = PixelsFrom(row, rowBytes, begin);
    const uint64_t alike = pixels >> (64 - count);
    if (alike == 0)
        return 0;
    if (alike == UINT64_MAX >> (64 - count))
        return all;
    const uint64_t between = cover.whole ? pixels << 1 >> (64 - cover.whole) : 0;
    const uint64_t last = cover.last ? pixels << (count - 1) >> 63 : 0;
    return cover.first * (pixels >> 63) + pieces * static_cast<uint64_t>(std::popcount(between)) +
           cover.last * last;
}

// Whether the bytes of a row's part are all 00 or all FF.
bool IsUniform(const uint8_t* row, uint32_t left, uint32_t width)
{
    const uint8_t* first = row + left / 8;
    const size_t more = (left + width - 1) / 8 - left / 8;
    return (*first == 0 || *first == 0xFF) && std::memcmp(first, first + 1, more) == 0;
}

// The sums of a bilevel row count its set pixels.
void AddBits(const Job& job, const uint8_t* row, uint64_t times, uint64_t* sums)
{
    const ResizeOrder& order = job.order;
    const uint64_t all = order.partWidth;
    if (IsUniform(row, order.left, order.partWidth)) {
        if (BitAt(row, order.left))
            for (uint32_t x = 0; x < order.width; ++x)
                sums[x] += times * all;
        return;
    }
    Covers cover(order.partWidth, order.width);
    for (uint32_t x = 0; x < order.width; ++x, cover.Next())
        sums[x] += times * PiecesSet(row, job.view.stride, cover, order.left + cover.begin, order.width, all);
}

// What the sums of a result hold, and how its pixels are made of them.
struct Smoothing {
    uint32_t channels; // 1 for greys, 3 for colours
    bool counts;       // the sums count the set pixels of a bilevel picture
    Levels levels;
};

void AddSourceRow(const Job& job, const Smoothing& smoothing, const uint8_t* row, uint64_t times,
                  uint64_t* sums)
{
    if (smoothing.counts)
        return AddBits(job, row, times, sums);
    for (uint32_t channel = 0; channel < smoothing.channels; ++channel) {
        const uint8_t* levels = smoothing.levels.channel[channel];
        const auto add = [&](auto level) {
            AddRow(job.order, times, sums + channel, smoothing.channels, level);
        };
        switch (job.view.bitCount) {
        case 1:
            add([=](uint32_t pixel) { return levels[BitAt(row, pixel)]; });
            break;
        case 4:
            add([=](uint32_t pixel) { return levels[NibbleAt(row, pixel)]; });
            break;
        case 8:
            add([=](uint32_t pixel) { return levels[row[pixel]]; });
            break;
        default:
            add([=](uint32_t pixel) { return row[size_t{pixel} * 3 + channel]; });
        }
    }
}

// The quotients are exact: a sum and its rounding stay far below 53 bits.
void FinishRow(const Job& job, const Smoothing& smoothing, const uint64_t* sums, uint8_t* target)
{
    const uint64_t all = uint64_t{job.order.partWidth} * job.order.partHeight;
    const auto total = static_cast<double>(all);
    const size_t count = size_t{job.order.width} * smoothing.channels;
    const uint64_t clear = smoothing.levels.channel[0][0], set = smoothing.levels.channel[0][1];
    for (size_t at = 0; at < count; ++at) {
        const uint64_t sum = smoothing.counts ? clear * (all - sums[at]) + set * sums[at] : sums[at];
        target[at] = static_cast<uint8_t>(static_cast<double>(sum + all / 2) / total);
    }
    ClearBehind(job, target, count);
}

void Smooth(const Job& job, const Smoothing& smoothing, std::span<uint64_t> sums)
{
    Covers rows(job.order.partHeight, job.order.height);
    for (uint32_t y = 0; y < job.order.height; ++y, rows.Next()) {
        std::ranges::fill(sums, 0);
        AddSourceRow(job, smoothing, job.SourceRow(rows.begin), rows.first, sums.data());
        if (rows.Reduces()) {
            for (uint32_t row = rows.begin + 1; row <= rows.begin + rows.whole; ++row)
                AddSourceRow(job, smoothing, job.SourceRow(row), job.order.height, sums.data());
            if (rows.last)
                AddSourceRow(job, smoothing, job.SourceRow(rows.begin + rows.whole + 1), rows.last,
                             sums.data());
        }
        FinishRow(job, smoothing, sums.data(), job.ResultRow(y));
    }
}

bool HasGreysAlone(const DibView& view, const Levels& levels)
{
    for (uint32_t index = 0; index < view.ColourCount(); ++index)
        if (levels.channel[0][index] != levels.channel[1][index] ||
            levels.channel[0][index] != levels.channel[2][index])
            return false;
    return true;
}

int32_t InProportion(int32_t dotsPerMetre, uint32_t size, uint32_t part)
{
    const double dots = static_cast<double>(dotsPerMetre) * size / part;
    return static_cast<int32_t>(std::clamp<double>(dots + (dots < 0 ? -0.5 : 0.5), INT32_MIN, INT32_MAX));
}

BITMAPINFOHEADER HeaderOf(const DibView& view, const ResizeOrder& order, uint32_t bitCount, uint32_t colours)
{
    BITMAPINFOHEADER header = DibHeader(order.width, order.height, bitCount, colours);
    header.biXPelsPerMeter = InProportion(view.dotsPerMetreX, order.width, order.partWidth);
    header.biYPelsPerMeter = InProportion(view.dotsPerMetreY, order.height, order.partHeight);
    return header;
}

void FillColours(RGBQUAD* colours, const DibView& view, bool greys, uint32_t count)
{
    for (uint32_t index = 0; index < count; ++index) {
        const auto grey = static_cast<uint8_t>(index);
        const uint8_t* from = greys ? nullptr : &view.colours[size_t{index} * view.colourBytes];
        colours[index] = from ? RGBQUAD{from[0], from[1], from[2], 0} : RGBQUAD{grey, grey, grey, 0};
    }
}

} // namespace

HGLOBAL ResizeDib(const DibView& view, const ResizeOrder& order, Status& status)
{
    Smoothing smoothing{.channels = 3, .counts = false, .levels = {}};
    uint32_t bitCount = view.bitCount;
    if (order.smooth && bitCount <= 8) {
        smoothing.levels = LevelsOf(view);
        smoothing.channels = HasGreysAlone(view, smoothing.levels) ? 1 : 3;
        smoothing.counts = bitCount == 1 && smoothing.channels == 1;
        bitCount = 8 * smoothing.channels;
    }
    const bool greys = order.smooth && bitCount == 8;
    const uint32_t colours = bitCount > 8 ? 0 : greys ? GREYS : view.ColourCount();
    const size_t sumCount = order.smooth ? size_t{order.width} * smoothing.channels : 0;
    FreshDib result(HeaderOf(view, order, bitCount, colours));
    GlobalBlock sumBlock(sumCount * sizeof(uint64_t));
    const Locked<uint64_t> sums(sumBlock.Get());
    status = result.made && sums ? error::None : error::NotEnoughMemory;
    if (status != error::None)
        return nullptr;
    FillColours(result.colours, view, greys, colours);
    const Job job{view, order, result.rows, result.stride};
    if (order.smooth)
        Smooth(job, smoothing, {sums.Get(), sumCount});
    else
        Pick(job);
    return result.Release();
}

} // namespace tiff
