#include "codecs/predictor.h"

#include "core/byte_order.h"

namespace tiff {

// The sums stay in registers: read back from the line, each would wait for the store before.
template <uint32_t CHANNELS>
static void SumBytes(uint8_t* line, uint32_t bytes)
{
    uint8_t sums[CHANNELS] = {};
    size_t at = 0;
    for (; at + CHANNELS <= bytes; at += CHANNELS)
        for (size_t channel = 0; channel < CHANNELS; ++channel)
            line[at + channel] = sums[channel] = static_cast<uint8_t>(sums[channel] + line[at + channel]);
    for (size_t channel = 0; at < bytes; ++at, ++channel)
        line[at] = static_cast<uint8_t>(sums[channel] + line[at]);
}

static void SumNibbles(uint8_t* line, uint32_t bytes)
{
    uint32_t sum = 0;
    for (uint32_t at = 0; at < bytes; ++at) {
        const uint32_t high = sum + (line[at] >> 4);
        sum = high + line[at];
        line[at] = static_cast<uint8_t>(high << 4 | (sum & 0x0F));
    }
}

static void SumWords(uint8_t* line, uint32_t bytes)
{
    uint16_t sum = 0;
    for (uint32_t at = 0; at + 2 <= bytes; at += 2) {
        sum = static_cast<uint16_t>(sum + Load16(line + at, TIFF_INTEL));
        std::memcpy(line + at, &sum, sizeof(sum));
    }
}

// Differences are taken from the end, where the sample before is still whole.
template <uint32_t CHANNELS>
static void SubtractBytes(uint8_t* line, uint32_t bytes)
{
    for (uint32_t at = bytes; at > CHANNELS; --at)
        line[at - 1] = static_cast<uint8_t>(line[at - 1] - line[at - 1 - CHANNELS]);
}

static void SubtractNibbles(uint8_t* line, uint32_t bytes)
{
    for (uint32_t at = bytes; at-- > 0;) {
        const uint32_t high = line[at] >> 4, before = at > 0 ? line[at - 1] : 0;
        line[at] = static_cast<uint8_t>((high - before) << 4 | ((line[at] - high) & 0x0F));
    }
}

static void SubtractWords(uint8_t* line, uint32_t bytes)
{
    for (uint32_t at = bytes / 2 * 2; at > 2; at -= 2) {
        const auto difference =
            static_cast<uint16_t>(Load16(line + at - 2, TIFF_INTEL) - Load16(line + at - 4, TIFF_INTEL));
        std::memcpy(line + at - 2, &difference, sizeof(difference));
    }
}

namespace {

using LineRoutine = void (*)(uint8_t* line, uint32_t bytes);

// How samples of a width follow one another in a line; other widths are left as they are.
struct Differencing {
    uint32_t pixelBits, sampleBits; // 0 for any
    LineRoutine undo, apply;
};

constexpr Differencing differencings[] = {
    {4, 0, SumNibbles, SubtractNibbles},    {8, 0, SumBytes<1>, SubtractBytes<1>},
    {16, 8, SumBytes<2>, SubtractBytes<2>}, {16, 0, SumWords, SubtractWords},
    {24, 0, SumBytes<3>, SubtractBytes<3>}, {32, 0, SumBytes<4>, SubtractBytes<4>},
};

void RunRoutine(const CodecContext* context, LineRoutine Differencing::*routine)
{
    for (const Differencing& row : differencings)
        if (row.pixelBits == context->lineFormat.biBitCount &&
            (row.sampleBits == 0 || row.sampleBits == SampleBits(context)))
            return (row.*routine)(context->lineBuffer, context->bytesPerLine);
}

} // namespace

void UndoDifferencing(const CodecContext* context)
{
    RunRoutine(context, &Differencing::undo);
}

void ApplyDifferencing(const CodecContext* context)
{
    RunRoutine(context, &Differencing::apply);
}

} // namespace tiff
