#include "codecs/jpeg/colour.h"

#include "core/copy_row.h"
#include "core/sixteen_shorts.h"

#include <algorithm>

namespace tiff::jpeg {

namespace {

constexpr uint32_t LANES = SIXTEEN;

// Sixteen samples of three planes.
struct Triple {
    Sixteen first, second, third;
};

// Eight pixels' worth of shorts.
struct ShortTriple {
    Sixteen first, second, third;
};

constexpr int32_t Fixed16(double factor)
{
    return static_cast<int32_t>(factor * 65536 + (factor < 0 ? -0.5 : 0.5));
}

inline Sixteen PairOf(int32_t one, int32_t other)
{
    return ColumnsOf(static_cast<int32_t>((one & 0xFFFF) | static_cast<uint32_t>(other) << 16));
}

// The product with a factor below 1/2, rounded: half of twice the product, itself rounded down.
inline Sixteen Fraction(Sixteen values, int32_t factor)
{
    const Sixteen twice = MultiplyHigh(AddShorts(values, values), ShortsOf(static_cast<int16_t>(factor)));
    return ShiftShortsRight<1>(AddShorts(twice, ShortsOf(1)));
}

// Factors of 1 and more are taken apart into whole parts and a fraction.
inline ShortTriple ToBgr(Sixteen y, Sixteen cb, Sixteen cr)
{
    const Sixteen blue = AddShorts(AddShorts(cb, cb), Fraction(cb, Fixed16(1.772 - 2)));
    const Sixteen red = AddShorts(cr, Fraction(cr, Fixed16(0.402)));
    const Sixteen factors = PairOf(Fixed16(-0.344136), Fixed16(1 - 0.714136)), half = ColumnsOf(1 << 15);
    const Sixteen low = AddColumns(MultiplyAddPairs(InterleaveLow<2>(cb, cr), factors), half);
    const Sixteen high = AddColumns(MultiplyAddPairs(InterleaveHigh<2>(cb, cr), factors), half);
    const Sixteen green =
        SubtractShorts(NarrowColumns(ShiftColumnsRight<16>(low), ShiftColumnsRight<16>(high)), cr);
    return {AddShorts(y, blue), AddShorts(y, green), AddShorts(y, red)};
}

inline Triple ConvertToBgr(const PlaneRows& planes, uint32_t at)
{
    const Sixteen zero = SixteenOf(0), middle = ShortsOf(128);
    const Sixteen y = LoadSixteen(planes.rows[0] + at), cb = LoadSixteen(planes.rows[1] + at),
                  cr = LoadSixteen(planes.rows[2] + at);
    const ShortTriple low =
        ToBgr(InterleaveLow<1>(y, zero), SubtractShorts(InterleaveLow<1>(cb, zero), middle),
              SubtractShorts(InterleaveLow<1>(cr, zero), middle));
    const ShortTriple high =
        ToBgr(InterleaveHigh<1>(y, zero), SubtractShorts(InterleaveHigh<1>(cb, zero), middle),
              SubtractShorts(InterleaveHigh<1>(cr, zero), middle));
    return {NarrowToBytes(low.first, high.first), NarrowToBytes(low.second, high.second),
            NarrowToBytes(low.third, high.third)};
}

// Four pixels of three bytes and an empty one, packed: eight bytes are written, and six bytes on eight more.
inline void StorePacked(uint8_t* target, Sixteen pixels)
{
    const Sixteen firsts = ShiftHalvesDown<8>(InterleaveLow<4>(SixteenOf(0xFF), SixteenOf(0)));
    const Sixteen lower = And(pixels, firsts);
    const Sixteen upper = ShiftHalvesDown<8>(Without(pixels, firsts));
    const Sixteen packed = Or(lower, upper);
    StoreHalf(target, packed);
    StoreHalf(target + 6, InterleaveHigh<8>(packed, packed));
}

// Writes two bytes more than sixteen pixels need.
inline void StoreTriples(uint8_t* target, const Triple& planes)
{
    const Sixteen zero = SixteenOf(0);
    const Sixteen lowPairs = InterleaveLow<1>(planes.first, planes.second),
                  highPairs = InterleaveHigh<1>(planes.first, planes.second),
                  lowThirds = InterleaveLow<1>(planes.third, zero),
                  highThirds = InterleaveHigh<1>(planes.third, zero);
    StorePacked(target, InterleaveLow<2>(lowPairs, lowThirds));
    StorePacked(target + 12, InterleaveHigh<2>(lowPairs, lowThirds));
    StorePacked(target + 24, InterleaveLow<2>(highPairs, highThirds));
    StorePacked(target + 36, InterleaveHigh<2>(highPairs, highThirds));
}

// Calls load(at) for every sixteen pixels. The last ones go through a buffer, as more than a row is written.
template <class Load>
void StoreRow(uint8_t* pixels, uint32_t width, Load load)
{
    uint32_t at = 0;
    for (; at + LANES < width; at += LANES)
        StoreTriples(pixels + size_t{at} * 3, load(at));
    uint8_t last[3 * LANES + 2];
    StoreTriples(last, load(at));
    std::memcpy(pixels + size_t{at} * 3, last, size_t{width - at} * 3);
}

// Inks are what is missing of light.
void JoinYcck(const PlaneRows& planes, uint8_t* pixels, uint32_t width)
{
    for (uint32_t at = 0; at < width; at += LANES) {
        const Triple light = ConvertToBgr(planes, at);
        uint8_t bytes[3][LANES];
        StoreSixteen(bytes[0], light.third);
        StoreSixteen(bytes[1], light.second);
        StoreSixteen(bytes[2], light.first);
        for (uint32_t lane = 0; lane < LANES && at + lane < width; ++lane) {
            for (const auto& ink : bytes)
                *pixels++ = static_cast<uint8_t>(255 - ink[lane]);
            *pixels++ = planes.rows[3][at + lane];
        }
    }
}

void JoinPlain(const PlaneRows& planes, uint32_t count, uint8_t* pixels, uint32_t width)
{
    if (count == 1)
        return CopyRow(pixels, planes.rows[0], width);
    for (uint32_t at = 0; at < width; ++at)
        for (uint32_t plane = 0; plane < count; ++plane)
            *pixels++ = planes.rows[plane][at];
}

} // namespace

void JoinPlanes(const PlaneRows& planes, uint32_t count, Colours colours, uint8_t* pixels, uint32_t width)
{
    switch (colours) {
    case Colours::YCbCr:
        return StoreRow(pixels, width, [&](uint32_t at) { return ConvertToBgr(planes, at); });
    case Colours::Reversed:
        return StoreRow(pixels, width, [&](uint32_t at) {
            return Triple{LoadSixteen(planes.rows[2] + at), LoadSixteen(planes.rows[1] + at),
                          LoadSixteen(planes.rows[0] + at)};
        });
    case Colours::Ycck:
        return JoinYcck(planes, pixels, width);
    case Colours::Plain:
        return JoinPlain(planes, count, pixels, width);
    }
}

namespace {

// 256 times the chroma of sixteen pixels, less 128.
struct Chroma {
    Sixteen low, high;
};

// Three parts of a sample, one of its neighbour.
inline Chroma WidenChroma(const int16_t* mixed)
{
    const Sixteen middle = LoadSixteen(mixed), triple = AddShorts(AddShorts(middle, middle), middle);
    const Sixteen left = AddShorts(triple, LoadSixteen(mixed - 1)),
                  right = AddShorts(triple, LoadSixteen(mixed + 1));
    return {InterleaveLow<2>(left, right), InterleaveHigh<2>(left, right)};
}

// Products and sums have six bits behind the point. A product is rounded down: green, which has two, gets as
// much more.
inline ShortTriple WidenedToBgr(Sixteen y, Sixteen cb, Sixteen cr)
{
    constexpr int POINT = 6;
    const auto product = [](Sixteen chroma, double factor) {
        return MultiplyHigh(chroma, ShortsOf(static_cast<int16_t>(Fixed16(factor / 4))));
    };
    const Sixteen rounded = AddShorts(ShiftShortsLeft<POINT>(y), ShortsOf(1 << (POINT - 1)));
    const Sixteen green = AddShorts(AddShorts(product(cb, -0.344136), product(cr, -0.714136)), ShortsOf(1));
    return {ShiftShortsRight<POINT>(AddShorts(rounded, product(cb, 1.772))),
            ShiftShortsRight<POINT>(AddShorts(rounded, green)),
            ShiftShortsRight<POINT>(AddShorts(rounded, product(cr, 1.402)))};
}

} // namespace

void JoinWidened(const uint8_t* luminance, const int16_t* cb, const int16_t* cr, uint8_t* pixels,
                 uint32_t width)
{
    StoreRow(pixels, width, [&](uint32_t at) {
        const Sixteen zero = SixteenOf(0), y = LoadSixteen(luminance + at);
        const Chroma blue = WidenChroma(cb + at / 2), red = WidenChroma(cr + at / 2);
        const ShortTriple low = WidenedToBgr(InterleaveLow<1>(y, zero), blue.low, red.low);
        const ShortTriple high = WidenedToBgr(InterleaveHigh<1>(y, zero), blue.high, red.high);
        return Triple{NarrowToBytes(low.first, high.first), NarrowToBytes(low.second, high.second),
                      NarrowToBytes(low.third, high.third)};
    });
}

namespace {

constexpr int FRACTION_BITS = 15;

constexpr int32_t Fixed15(double factor)
{
    return static_cast<int32_t>(factor * (1 << FRACTION_BITS) + (factor < 0 ? -0.5 : 0.5));
}

// Sixteen pixels of three bytes to three planes: the halves of 48 bytes are shuffled into each other four
// times.
inline Triple LoadTriples(const uint8_t* pixels)
{
    Triple bytes = {LoadSixteen(pixels), LoadSixteen(pixels + 16), LoadSixteen(pixels + 32)};
    for (int round = 0; round < 4; ++round)
        bytes = {InterleaveLow<1>(bytes.first, InterleaveHigh<8>(bytes.second, bytes.second)),
                 InterleaveLow<1>(InterleaveHigh<8>(bytes.first, bytes.first), bytes.third),
                 InterleaveLow<1>(bytes.second, InterleaveHigh<8>(bytes.third, bytes.third))};
    return bytes;
}

// The luminance of eight pixels, of which each short has 256 times the sample. Three products are rounded
// down, on average by 1 in all.
inline Sixteen Luminance(Sixteen blue, Sixteen green, Sixteen red)
{
    const auto product = [](Sixteen samples, double factor) {
        return MultiplyHighUnsigned(samples, ShortsOf(static_cast<int16_t>(Fixed16(factor))));
    };
    const Sixteen sum =
        AddShorts(AddShorts(product(blue, 0.114), product(green, 0.587)), product(red, 0.299));
    return MultiplyHighUnsigned(AddShorts(sum, ShortsOf(128 + 1)), ShortsOf(256));
}

inline Sixteen Luminance(const Triple& bgr)
{
    const Sixteen zero = SixteenOf(0);
    return NarrowToBytes(Luminance(InterleaveLow<1>(zero, bgr.first), InterleaveLow<1>(zero, bgr.second),
                                   InterleaveLow<1>(zero, bgr.third)),
                         Luminance(InterleaveHigh<1>(zero, bgr.first), InterleaveHigh<1>(zero, bgr.second),
                                   InterleaveHigh<1>(zero, bgr.third)));
}

// The sums of eight times 2 x 2 samples.
inline Sixteen SumSquares(Sixteen upper, Sixteen lower)
{
    const Sixteen bytes = ShortsOf(0xFF);
    const auto pairs = [&](Sixteen row) { return AddShorts(And(row, bytes), And(ShiftDown<1>(row), bytes)); };
    return AddShorts(pairs(upper), pairs(lower));
}

// A weighted sum of sums of four samples, in eight places.
inline Sixteen Weigh(const ShortTriple& bgr, double blue, double green, double red)
{
    constexpr int BITS = FRACTION_BITS + 2;
    const Sixteen first = PairOf(Fixed15(blue), Fixed15(green)), second = PairOf(Fixed15(red), 0);
    const Sixteen added = ColumnsOf((128 << BITS) + (1 << (BITS - 1)));
    const Sixteen zero = SixteenOf(0);
    const auto half = [&](Sixteen blueGreen, Sixteen redOnly) {
        return ShiftColumnsRight<BITS>(AddColumns(
            AddColumns(MultiplyAddPairs(blueGreen, first), MultiplyAddPairs(redOnly, second)), added));
    };
    return NarrowColumns(half(InterleaveLow<2>(bgr.first, bgr.second), InterleaveLow<2>(bgr.third, zero)),
                         half(InterleaveHigh<2>(bgr.first, bgr.second), InterleaveHigh<2>(bgr.third, zero)));
}

// Calls take(at, pixels) for every sixteen pixels. The last ones go through a buffer that repeats the last.
template <class Take>
void ForSixteens(const uint8_t* pixels, uint32_t width, Take take)
{
    uint32_t at = 0;
    for (; at + LANES <= width; at += LANES)
        take(at, LoadTriples(pixels + size_t{at} * 3));
    if (at == width)
        return;
    uint8_t last[3 * LANES];
    for (uint32_t lane = 0; lane < LANES; ++lane)
        std::memcpy(last + 3 * lane, pixels + size_t{std::min(at + lane, width - 1)} * 3, 3);
    take(at, LoadTriples(last));
}

} // namespace

void SplitUpper(const uint8_t* pixels, uint32_t width, uint8_t* luminance, uint8_t* const kept[3])
{
    ForSixteens(pixels, width, [&](uint32_t at, const Triple& bgr) {
        StoreSixteen(luminance + at, Luminance(bgr));
        StoreSixteen(kept[0] + at, bgr.first);
        StoreSixteen(kept[1] + at, bgr.second);
        StoreSixteen(kept[2] + at, bgr.third);
    });
}

void SplitLower(const uint8_t* pixels, uint32_t width, uint8_t* luminance, const uint8_t* const kept[3],
                uint8_t* cb, uint8_t* cr)
{
    ForSixteens(pixels, width, [&](uint32_t at, const Triple& bgr) {
        StoreSixteen(luminance + at, Luminance(bgr));
        const ShortTriple sums = {SumSquares(LoadSixteen(kept[0] + at), bgr.first),
                                  SumSquares(LoadSixteen(kept[1] + at), bgr.second),
                                  SumSquares(LoadSixteen(kept[2] + at), bgr.third)};
        const Sixteen both =
            NarrowToBytes(Weigh(sums, 0.5, -0.331264, -0.168736), Weigh(sums, -0.081312, -0.418688, 0.5));
        StoreHalf(cb + at / 2, both);
        StoreHalf(cr + at / 2, InterleaveHigh<8>(both, both));
    });
}

} // namespace tiff::jpeg
