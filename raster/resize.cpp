// One pass over the part. Smooth pixels are sums of whole numbers: a pixel of the picture, cut into as many
// pieces as the result has pixels on that axis, gives each pixel of the result its pieces.
#include "raster/resize.h"

#include "core/byte_order.h"
#include "core/global_block.h"

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
        : denominator(2 * uint64_t{size}), step(2 * uint64_t{part}), pixel(part / denominator),
          rest(part % denominator)
    {
    }
    uint32_t Pixel() const
    {
        return static_cast<uint32_t>(pixel);
    }
    void Next()
    {
        pixel += step / denominator;
        rest += step % denominator;
        if (rest >= denominator) {
            rest -= denominator;
            ++pixel;
        }
    }

private:
    uint64_t denominator, step, pixel, rest;
};

// The pixels of a part under each pixel of the result, with their pieces: `first` of pixel `begin`, all of
// the `whole` pixels behind it, `last` of the next. An axis that is not reduced has its pixels repeated.
class Covers {
public:
    Covers(uint32_t part, uint32_t size) : part(part), size(size), reduces(size < part), centre(part, size)
    {
        Measure();
    }
    void Next()
    {
        begin += reduces ? whole + 1 : 0;
        used = last;
        centre.Next();
        Measure();
    }
    bool Reduces() const
    {
        return reduces;
    }

    uint32_t begin = 0, whole = 0;
    uint64_t first = 0, last = 0;

private:
    void Measure()
    {
        if (!reduces) {
            begin = centre.Pixel();
            first = part;
            return;
        }
        first = size - used;
        const uint64_t rest = part - first;
        whole = static_cast<uint32_t>(rest / size);
        last = rest % size;
    }

    uint32_t part, size;
    bool reduces;
    Centres centre;
    uint64_t used = 0; // pieces of pixel `begin` that the pixel before has
};

// What a result is made of.
struct Job {
    const DibView& view;
    const ResizeOrder& order;
    uint8_t* pixels; // of the result
    uint64_t stride;

    const uint8_t* SourceRow(uint32_t row) const
    {
        const uint32_t stored = order.top + row;
        return view.pixels + uint64_t{view.stride} * (view.topDown ? stored : view.height - 1 - stored);
    }
    uint8_t* ResultRow(uint32_t row) const
    {
        return pixels + stride * (order.height - 1 - row);
    }
};

uint32_t BitAt(const uint8_t* row, uint32_t pixel)
{
    return row[pixel / 8] >> (7 - pixel % 8) & 1u;
}

uint32_t NibbleAt(const uint8_t* row, uint32_t pixel)
{
    return row[pixel / 2] >> (pixel % 2 ? 0 : 4) & 15u;
}

// Pixels from any bit on, to the beginning of a row. The bits behind the last pixel become 0.
void CopyBits(uint8_t* target, const uint8_t* row, uint64_t firstBit, uint64_t bitCount)
{
    const uint8_t* from = row + firstBit / 8;
    const auto shift = static_cast<uint32_t>(firstBit % 8);
    const uint64_t bytes = (bitCount + 7) / 8;
    if (shift == 0) {
        std::memcpy(target, from, static_cast<size_t>(bytes));
    } else {
        // The last byte may take all of its bits from the last one of the row.
        const uint64_t sourceBytes = (shift + bitCount + 7) / 8;
        for (uint64_t at = 0; at < bytes; ++at) {
            const uint32_t next = at + 1 < sourceBytes ? from[at + 1] : 0;
            target[at] = static_cast<uint8_t>((uint32_t{from[at]} << 8 | next) >> (8 - shift));
        }
    }
    if (bitCount % 8 != 0)
        target[bytes - 1] = static_cast<uint8_t>(target[bytes - 1] & 0xFF00u >> bitCount % 8);
}

void PickRow(const Job& job, const uint8_t* row, uint8_t* target)
{
    const uint32_t bits = job.view.bitCount, left = job.order.left;
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

// The result is new memory, still zero. A row that repeats the one before is copied.
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
            CopyBits(target, job.SourceRow(row.Pixel()), uint64_t{order.left} * job.view.bitCount,
                     uint64_t{order.width} * job.view.bitCount);
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

// Set pixels of a bilevel row, which has so many bytes.
uint32_t CountSet(const uint8_t* row, uint32_t rowBytes, uint32_t first, uint32_t count)
{
    constexpr uint32_t READABLE = 57;
    uint32_t set = 0;
    while (count != 0) {
        const uint32_t byte = first / 8, taken = std::min(count, READABLE);
        uint64_t word = 0;
        if (byte + sizeof(word) <= rowBytes) {
            std::memcpy(&word, row + byte, sizeof(word));
            word = Swap64(word);
        } else {
            for (uint32_t at = byte; at < rowBytes; ++at)
                word |= uint64_t{row[at]} << (56 - 8 * (at - byte));
        }
        word = word << first % 8 >> (64 - taken);
        set += word ? static_cast<uint32_t>(std::popcount(word)) : 0;
        first += taken;
        count -= taken;
    }
    return set;
}

bool IsClear(const uint8_t* row, uint32_t rowBytes)
{
    return std::all_of(row, row + rowBytes, [](uint8_t byte) { return byte == 0; });
}

// The sums of a bilevel row count its set pixels.
void AddBits(const Job& job, const uint8_t* row, uint64_t times, uint64_t* sums)
{
    const ResizeOrder& order = job.order;
    if (IsClear(row, job.view.stride))
        return;
    Covers cover(order.partWidth, order.width);
    for (uint32_t x = 0; x < order.width; ++x, cover.Next()) {
        const uint32_t begin = order.left + cover.begin;
        const bool ends = cover.last != 0;
        if (CountSet(row, job.view.stride, begin, 1 + cover.whole + ends) == 0)
            continue;
        uint64_t sum = cover.first * BitAt(row, begin);
        sum += uint64_t{order.width} * CountSet(row, job.view.stride, begin + 1, cover.whole);
        sum += ends ? cover.last * BitAt(row, begin + cover.whole + 1) : 0;
        sums[x] += times * sum;
    }
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
    BITMAPINFOHEADER header{};
    header.biSize = sizeof(header);
    header.biWidth = static_cast<int32_t>(order.width);
    header.biHeight = static_cast<int32_t>(order.height);
    header.biPlanes = 1;
    header.biBitCount = static_cast<WORD>(bitCount);
    header.biSizeImage = static_cast<uint32_t>(DibStride(order.width, bitCount) * order.height);
    header.biXPelsPerMeter = InProportion(view.dotsPerMetreX, order.width, order.partWidth);
    header.biYPelsPerMeter = InProportion(view.dotsPerMetreY, order.height, order.partHeight);
    header.biClrUsed = colours;
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
    const uint64_t stride = DibStride(order.width, bitCount), imageBytes = stride * order.height;
    const uint64_t pixelsAt = sizeof(BITMAPINFOHEADER) + uint64_t{colours} * sizeof(RGBQUAD);
    const size_t sumCount = order.smooth ? size_t{order.width} * smoothing.channels : 0;
    GlobalBlock result(imageBytes <= UINT32_MAX ? pixelsAt + imageBytes : UINT64_MAX);
    GlobalBlock sumBlock(sumCount * sizeof(uint64_t));
    Locked<uint8_t> dib(result.Get());
    const Locked<uint64_t> sums(sumBlock.Get());
    status = dib && sums ? error::None : error::NotEnoughMemory;
    if (status != error::None)
        return nullptr;
    const BITMAPINFOHEADER header = HeaderOf(view, order, bitCount, colours);
    std::memcpy(dib.Get(), &header, sizeof(header));
    FillColours(reinterpret_cast<RGBQUAD*>(dib.Get() + sizeof(header)), view, greys, colours);
    const Job job{view, order, dib.Get() + pixelsAt, stride};
    if (order.smooth)
        Smooth(job, smoothing, {sums.Get(), sumCount});
    else
        Pick(job);
    dib.Unlock();
    return result.Release();
}

} // namespace tiff
