#include "codecs/jpeg/sampling.h"

#include "core/sixteen_shorts.h"

namespace tiff::jpeg {

namespace {

constexpr uint32_t LANES = SIXTEEN / 2;
constexpr uint32_t EDGE = 8; // samples in front of the first, so that rows stay in line

inline Sixteen ThreeTimes(Sixteen values)
{
    return AddShorts(AddShorts(values, values), values);
}

// Three parts of the line, one of its neighbour: finish(four times the samples).
template <class Finish>
void MixRows(const MixedLines& lines, uint32_t samples, int16_t* mixed, Finish finish)
{
    const Sixteen zero = SixteenOf(0);
    for (uint32_t at = 0; at < samples; at += 2 * LANES) {
        const Sixteen line = LoadSixteen(lines.line + at), neighbour = LoadSixteen(lines.neighbour + at);
        StoreSixteen(mixed + at, finish(AddShorts(ThreeTimes(InterleaveLow<1>(line, zero)),
                                                  InterleaveLow<1>(neighbour, zero))));
        StoreSixteen(mixed + at + LANES, finish(AddShorts(ThreeTimes(InterleaveHigh<1>(line, zero)),
                                                          InterleaveHigh<1>(neighbour, zero))));
    }
}

void RepeatEnds(int16_t* mixed, uint32_t samples)
{
    mixed[-1] = mixed[0];
    mixed[samples] = mixed[samples - 1];
}

// Sixteen times the samples, at two places each. Exact halves are rounded up and down in turns, so that the
// picture gets no lighter.
void MixColumns(const int16_t* mixed, uint32_t samples, uint8_t* target)
{
    const Sixteen leftRounding = ShortsOf(8), rightRounding = ShortsOf(7);
    for (uint32_t at = 0; at < samples; at += LANES) {
        const Sixteen triple = ThreeTimes(LoadSixteen(mixed + at));
        const Sixteen left =
            ShiftShortsRight<4>(AddShorts(AddShorts(triple, LoadSixteen(mixed + at - 1)), leftRounding));
        const Sixteen right =
            ShiftShortsRight<4>(AddShorts(AddShorts(triple, LoadSixteen(mixed + at + 1)), rightRounding));
        StoreSixteen(target + size_t{at} * 2,
                     NarrowToBytes(InterleaveLow<2>(left, right), InterleaveHigh<2>(left, right)));
    }
}

void RoundRow(const int16_t* mixed, uint32_t samples, uint8_t* target)
{
    const Sixteen rounding = ShortsOf(2);
    const auto rounded = [&](uint32_t at) {
        return ShiftShortsRight<2>(AddShorts(LoadSixteen(mixed + at), rounding));
    };
    for (uint32_t at = 0; at < samples; at += 2 * LANES)
        StoreSixteen(target + at, NarrowToBytes(rounded(at), rounded(at + LANES)));
}

// From the last pixel on, so that a row may be widened where it lies.
void Repeat(const uint8_t* row, uint32_t factor, uint8_t* target, uint32_t width)
{
    for (uint32_t at = width; at-- > 0;)
        target[at] = row[at / factor];
}

} // namespace

void WidenRow(const MixedLines& lines, uint32_t samples, uint32_t factor, uint8_t* target, uint32_t width,
              int16_t* scratch)
{
    if (factor != 2 && lines.line == lines.neighbour)
        return Repeat(lines.line, factor, target, width);
    int16_t* const mixed = scratch + EDGE;
    MixRows(lines, samples, mixed, [](Sixteen fourTimes) { return fourTimes; });
    if (factor == 2) {
        RepeatEnds(mixed, samples);
        MixColumns(mixed, samples, target);
        return;
    }
    RoundRow(mixed, samples, target);
    if (factor != 1)
        Repeat(target, factor, target, width);
}

const int16_t* MixChroma(const MixedLines& lines, uint32_t samples, int16_t* scratch)
{
    constexpr int16_t MIDDLE = 4 * 128;
    int16_t* const mixed = scratch + EDGE;
    MixRows(lines, samples, mixed, [](Sixteen fourTimes) {
        return ShiftShortsLeft<4>(SubtractShorts(fourTimes, ShortsOf(MIDDLE)));
    });
    RepeatEnds(mixed, samples);
    return mixed;
}

} // namespace tiff::jpeg
