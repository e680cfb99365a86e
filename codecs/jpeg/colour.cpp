#include "codecs/jpeg/colour.h"

#include "core/copy_row.h"
#include "core/sixteen_shorts.h"

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

// A weighted sum of B, G and R, in eight pixels.
inline Sixteen Weigh(const ShortTriple& bgr, double blue, double green, double red, int32_t offset)
{
    const Sixteen first = PairOf(Fixed15(blue), Fixed15(green)), second = PairOf(Fixed15(red), 0);
    const Sixteen added = ColumnsOf((offset << FRACTION_BITS) + (1 << (FRACTION_BITS - 1)));
    const Sixteen zero = SixteenOf(0);
    const auto half = [&](Sixteen blueGreen, Sixteen redOnly) {
        return ShiftColumnsRight<FRACTION_BITS>(AddColumns(
            AddColumns(MultiplyAddPairs(blueGreen, first), MultiplyAddPairs(redOnly, second)), added));
    };
    return NarrowColumns(half(InterleaveLow<2>(bgr.first, bgr.second), InterleaveLow<2>(bgr.third, zero)),
                         half(InterleaveHigh<2>(bgr.first, bgr.second), InterleaveHigh<2>(bgr.third, zero)));
}

inline Triple ConvertFromBgr(const Triple& bgr)
{
    const Sixteen zero = SixteenOf(0);
    const ShortTriple low = {InterleaveLow<1>(bgr.first, zero), InterleaveLow<1>(bgr.second, zero),
                             InterleaveLow<1>(bgr.third, zero)};
    const ShortTriple high = {InterleaveHigh<1>(bgr.first, zero), InterleaveHigh<1>(bgr.second, zero),
                              InterleaveHigh<1>(bgr.third, zero)};
    const auto weigh = [&](double blue, double green, double red, int32_t offset) {
        return NarrowToBytes(Weigh(low, blue, green, red, offset), Weigh(high, blue, green, red, offset));
    };
    return {weigh(0.114, 0.587, 0.299, 0), weigh(0.5, -0.331264, -0.168736, 128),
            weigh(-0.081312, -0.418688, 0.5, 128)};
}

} // namespace

void SplitColours(const uint8_t* pixels, uint32_t width, uint8_t* const planes[3])
{
    const auto store = [&](uint32_t at, const uint8_t* from) {
        const Triple converted = ConvertFromBgr(LoadTriples(from));
        StoreSixteen(planes[0] + at, converted.first);
        StoreSixteen(planes[1] + at, converted.second);
        StoreSixteen(planes[2] + at, converted.third);
    };
    uint32_t at = 0;
    for (; at + LANES <= width; at += LANES)
        store(at, pixels + size_t{at} * 3);
    if (at == width)
        return;
    uint8_t last[3 * LANES] = {};
    std::memcpy(last, pixels + size_t{at} * 3, size_t{width - at} * 3);
    store(at, last);
}

} // namespace tiff::jpeg
