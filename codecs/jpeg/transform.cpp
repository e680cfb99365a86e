// One column transform does all: it runs over the columns, the block is turned, and it runs again. Products
// have 32 bits; between the two passes numbers keep two bits behind the point.
#include "codecs/jpeg/transform.h"

#include "core/sixteen_shorts.h"

#include <algorithm>
#include <bit>

namespace tiff::jpeg {

namespace {

constexpr int SCALE_BITS = 13, KEPT_BITS = 2, SIZE_BITS = 3;
constexpr int32_t MIDDLE = 128;

// The bits of places beyond the first four columns or rows.
constexpr uint32_t OUTSIDE_CORNER = 4 * BLOCK_SIDE | 4;

// The square root of 2 times the cosine of so many sixteenths of a half turn, in units of 1 / 8192.
constexpr int32_t ONE = 8192, C1 = 11363, C2 = 10703, C3 = 9633, C5 = 6436, C6 = 4433, C7 = 2260;

struct Columns {
    Sixteen rows[BLOCK_SIDE];
};

// Pairs of numbers from two rows, in 8 columns.
struct Pairs {
    Sixteen low, high;
};

// The sums of the products of 8 pairs.
struct Sums {
    Sixteen low, high;
};

inline Pairs PairUp(Sixteen one, Sixteen other)
{
    return {InterleaveLow<2>(one, other), InterleaveHigh<2>(one, other)};
}

inline Sixteen Factors(int32_t one, int32_t other)
{
    return ColumnsOf(static_cast<int32_t>((one & 0xFFFF) | static_cast<uint32_t>(other) << 16));
}

inline Sums Multiply(const Pairs& pairs, int32_t one, int32_t other)
{
    const Sixteen factors = Factors(one, other);
    return {MultiplyAddPairs(pairs.low, factors), MultiplyAddPairs(pairs.high, factors)};
}

inline Sums Add(const Sums& one, const Sums& other)
{
    return {AddColumns(one.low, other.low), AddColumns(one.high, other.high)};
}

inline Sums Subtract(const Sums& one, const Sums& other)
{
    return {SubtractColumns(one.low, other.low), SubtractColumns(one.high, other.high)};
}

template <int BITS>
Sixteen Descale(const Sums& sums)
{
    return NarrowColumns(ShiftColumnsRight<BITS>(sums.low), ShiftColumnsRight<BITS>(sums.high));
}

// A number of even and one of odd frequencies are joined to two.
template <int BITS>
inline void Join(Columns& block, uint32_t at, const Sums& even, const Sums& odd)
{
    block.rows[at] = Descale<BITS>(Add(even, odd));
    block.rows[7 - at] = Descale<BITS>(Subtract(even, odd));
}

// Eight numbers from coefficients. `added` carries the rounding. Steps are in an order that fits into
// registers.
template <int BITS>
inline void InverseColumns(Columns& block, int32_t added)
{
    const Sixteen* const row = block.rows;
    const Sums rounding = {ColumnsOf(added), ColumnsOf(added)};
    const Pairs first = PairUp(row[1], row[3]), second = PairUp(row[5], row[7]);
    const Pairs outer = PairUp(row[0], row[4]), inner = PairUp(row[2], row[6]);
    const Sums sum04 = Add(Multiply(outer, ONE, ONE), rounding), steep26 = Multiply(inner, C2, C6);
    const Sums even0 = Add(sum04, steep26), even3 = Subtract(sum04, steep26);
    const Sums difference04 = Add(Multiply(outer, ONE, -ONE), rounding), flat26 = Multiply(inner, C6, -C2);
    const Sums even1 = Add(difference04, flat26), even2 = Subtract(difference04, flat26);
    Join<BITS>(block, 0, even0, Add(Multiply(first, C1, C3), Multiply(second, C5, C7)));
    Join<BITS>(block, 1, even1, Add(Multiply(first, C3, -C7), Multiply(second, -C1, -C5)));
    Join<BITS>(block, 2, even2, Add(Multiply(first, C5, -C1), Multiply(second, C7, C3)));
    Join<BITS>(block, 3, even3, Add(Multiply(first, C7, -C5), Multiply(second, C3, -C1)));
}

// The same when only the first four coefficients count.
template <int BITS>
inline void InverseFour(Columns& block, int32_t added)
{
    const Sums rounding = {ColumnsOf(added), ColumnsOf(added)};
    const Pairs even = PairUp(block.rows[0], block.rows[2]), odd = PairUp(block.rows[1], block.rows[3]);
    Join<BITS>(block, 0, Add(Multiply(even, ONE, C2), rounding), Multiply(odd, C1, C3));
    Join<BITS>(block, 1, Add(Multiply(even, ONE, C6), rounding), Multiply(odd, C3, -C7));
    Join<BITS>(block, 2, Add(Multiply(even, ONE, -C6), rounding), Multiply(odd, C5, -C1));
    Join<BITS>(block, 3, Add(Multiply(even, ONE, -C2), rounding), Multiply(odd, C7, -C5));
}

// The same backwards: coefficients from eight numbers.
template <int BITS>
inline void ForwardColumns(Columns& block)
{
    Sixteen* const row = block.rows;
    Sixteen sums[4], differences[4];
    for (uint32_t at = 0; at < 4; ++at) {
        sums[at] = AddShorts(row[at], row[7 - at]);
        differences[at] = SubtractShorts(row[at], row[7 - at]);
    }
    const Sixteen rounding = ColumnsOf(1 << (BITS - 1));
    const Sums rounded = {rounding, rounding};
    const Pairs outer = PairUp(AddShorts(sums[0], sums[3]), AddShorts(sums[1], sums[2]));
    const Pairs inner = PairUp(SubtractShorts(sums[0], sums[3]), SubtractShorts(sums[1], sums[2]));
    const auto even = [&](const Pairs& pairs, int32_t one, int32_t other) {
        return Descale<BITS>(Add(Multiply(pairs, one, other), rounded));
    };
    row[0] = even(outer, ONE, ONE);
    row[4] = even(outer, ONE, -ONE);
    row[2] = even(inner, C2, C6);
    row[6] = even(inner, C6, -C2);
    const Pairs first = PairUp(differences[0], differences[1]),
                second = PairUp(differences[2], differences[3]);
    const auto odd = [&](int32_t a, int32_t b, int32_t c, int32_t d) {
        return Descale<BITS>(Add(Add(Multiply(first, a, b), rounded), Multiply(second, c, d)));
    };
    row[1] = odd(C1, C3, C5, C7);
    row[3] = odd(C3, -C7, -C1, -C5);
    row[5] = odd(C5, -C1, C7, C3);
    row[7] = odd(C7, -C5, C3, -C1);
}

inline void Turn(Columns& block)
{
    Sixteen* const row = block.rows;
    Sixteen pairs[BLOCK_SIDE], fours[BLOCK_SIDE];
    for (uint32_t at = 0; at < 4; ++at) {
        pairs[2 * at] = InterleaveLow<2>(row[at], row[at + 4]);
        pairs[2 * at + 1] = InterleaveHigh<2>(row[at], row[at + 4]);
    }
    for (uint32_t at = 0; at < 4; ++at) {
        fours[2 * at] = InterleaveLow<2>(pairs[at], pairs[at + 4]);
        fours[2 * at + 1] = InterleaveHigh<2>(pairs[at], pairs[at + 4]);
    }
    for (uint32_t at = 0; at < 4; ++at) {
        row[2 * at] = InterleaveLow<2>(fours[at], fours[at + 4]);
        row[2 * at + 1] = InterleaveHigh<2>(fours[at], fours[at + 4]);
    }
}

// The same for four columns, which become four rows.
inline void TurnFour(Columns& block)
{
    Sixteen* const row = block.rows;
    Sixteen pairs[4], fours[4];
    for (uint32_t at = 0; at < 4; ++at)
        pairs[at] = InterleaveLow<2>(row[at], row[at + 4]);
    for (uint32_t at = 0; at < 2; ++at) {
        fours[at] = InterleaveLow<2>(pairs[at], pairs[at + 2]);
        fours[at + 2] = InterleaveHigh<2>(pairs[at], pairs[at + 2]);
    }
    row[0] = InterleaveLow<2>(fours[0], fours[1]);
    row[1] = InterleaveHigh<2>(fours[0], fours[1]);
    row[2] = InterleaveLow<2>(fours[2], fours[3]);
    row[3] = InterleaveHigh<2>(fours[2], fours[3]);
}

// A block of one value.
void FillSamples(int32_t coefficient, uint8_t* samples, size_t stride)
{
    const int32_t level = std::clamp(((coefficient + 4) >> SIZE_BITS) + MIDDLE, 0, 255);
    const Sixteen bytes = SixteenOf(static_cast<uint8_t>(level));
    for (uint32_t at = 0; at < BLOCK_SIDE; ++at, samples += stride)
        StoreHalf(samples, bytes);
}

inline Columns LoadColumns(const Block& block)
{
    Columns columns;
    for (uint32_t at = 0; at < BLOCK_SIDE; ++at)
        columns.rows[at] = LoadSixteen(&block.coefficients[at * BLOCK_SIDE]);
    return columns;
}

inline void StoreSamples(const Columns& columns, uint8_t* samples, size_t stride)
{
    for (uint32_t at = 0; at < BLOCK_SIDE; at += 2) {
        const Sixteen bytes = NarrowToBytes(columns.rows[at], columns.rows[at + 1]);
        StoreHalf(samples, bytes);
        StoreHalf(samples + stride, InterleaveHigh<8>(bytes, bytes));
        samples += 2 * stride;
    }
}

} // namespace

void ToSamples(const Block& block, uint32_t places, uint8_t* samples, size_t stride)
{
    constexpr int FIRST_BITS = SCALE_BITS - KEPT_BITS, LAST_BITS = SCALE_BITS + KEPT_BITS + SIZE_BITS;
    constexpr int32_t FIRST_ADDED = 1 << (FIRST_BITS - 1);
    constexpr int32_t LAST_ADDED = (1 << (LAST_BITS - 1)) + (MIDDLE << LAST_BITS);
    if (places == 0)
        return FillSamples(block.coefficients[0], samples, stride);
    const bool isCorner = (places & OUTSIDE_CORNER) == 0;
    Columns columns = LoadColumns(block);
    if (isCorner) {
        InverseFour<FIRST_BITS>(columns, FIRST_ADDED);
        TurnFour(columns);
        InverseFour<LAST_BITS>(columns, LAST_ADDED);
    } else {
        InverseColumns<FIRST_BITS>(columns, FIRST_ADDED);
        Turn(columns);
        InverseColumns<LAST_BITS>(columns, LAST_ADDED);
    }
    StoreSamples(columns, samples, stride);
}

// A division is a multiplication by the reciprocal, rounded up, and a shift; exact for 15 bits. The transform
// leaves coefficients 8 times too large.
Divisors MakeDivisors(const Quantisers& quantisers)
{
    Divisors made{};
    for (uint32_t at = 0; at < BLOCK_SIZE; ++at) {
        const uint32_t divisor = uint32_t{quantisers[at]} << SIZE_BITS;
        const auto width = static_cast<uint32_t>(std::bit_width(divisor)) - 1;
        const uint32_t shift = std::has_single_bit(divisor) ? 15 + width : 16 + width;
        const uint32_t place = placeInBlock[at];
        made.half[place] = static_cast<uint16_t>(divisor / 2);
        made.reciprocal[place] = static_cast<uint16_t>(((1u << shift) + divisor - 1) / divisor);
        made.scale[place] = static_cast<uint16_t>(1u << (32 - shift));
    }
    return made;
}

static Sixteen Divide(Sixteen coefficients, const Divisors& divisors, uint32_t at)
{
    const Sixteen sign = ShiftShortsRight<15>(coefficients);
    Sixteen size = SubtractShorts(Xor(coefficients, sign), sign);
    size = AddShorts(size, LoadSixteen(&divisors.half[at]));
    size = MultiplyHighUnsigned(size, LoadSixteen(&divisors.reciprocal[at]));
    size = MultiplyHighUnsigned(size, LoadSixteen(&divisors.scale[at]));
    return SubtractShorts(Xor(size, sign), sign);
}

void ToCoefficients(const uint8_t* samples, size_t stride, const Divisors& divisors, Block& block)
{
    const Sixteen zero = ShortsOf(0), middle = ShortsOf(MIDDLE);
    Columns columns;
    for (Sixteen& row : columns.rows) {
        row = SubtractShorts(InterleaveLow<1>(LoadHalf(samples), zero), middle);
        samples += stride;
    }
    ForwardColumns<SCALE_BITS - KEPT_BITS>(columns);
    Turn(columns);
    ForwardColumns<SCALE_BITS + KEPT_BITS>(columns);
    for (uint32_t at = 0; at < BLOCK_SIDE; ++at)
        StoreSixteen(&block.coefficients[at * BLOCK_SIDE],
                     Divide(columns.rows[at], divisors, at * BLOCK_SIDE));
}

} // namespace tiff::jpeg
