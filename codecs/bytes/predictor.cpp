#include "codecs/bytes/predictor.h"

#include "core/byte_order.h"
#include "core/sixteen.h"

#include <algorithm>
#include <cstring>

namespace tiff {

// A word holds four pixels of three bytes; the bytes after them are ignored.
template <uint32_t CHANNELS>
static constexpr uint32_t PIXEL_BYTES_OF_WORD = CHANNELS == 3 ? 12 : 16;

template <uint32_t CHANNELS>
static Sixteen SumInsideWord(Sixteen word)
{
    if constexpr (CHANNELS == 3) {
        word = AddBytes(word, ShiftUp<3>(word));
        return AddBytes(word, ShiftUp<6>(word));
    }
    if constexpr (CHANNELS == 1)
        word = AddBytes(word, ShiftUp<1>(word));
    if constexpr (CHANNELS <= 2)
        word = AddBytes(word, ShiftUp<2>(word));
    word = AddBytes(word, ShiftUp<4>(word));
    return AddBytes(word, ShiftUp<8>(word));
}

// A word with its last pixel alone.
template <uint32_t CHANNELS>
static Sixteen SpreadLastPixel(Sixteen word)
{
    if constexpr (CHANNELS == 3) {
        word = ShiftDown<13>(ShiftUp<4>(word));
        word = Or(word, ShiftUp<3>(word));
        return Or(word, ShiftUp<6>(word));
    } else {
        return RepeatLast<CHANNELS>(word);
    }
}

// The sum before a word is added to all of it at once, so that words wait for one addition only. The next
// word is loaded before the current one is stored over its beginning; the last word is restored.
template <uint32_t CHANNELS>
static void SumBytes(uint8_t* line, uint32_t bytes)
{
    constexpr uint32_t STEP = PIXEL_BYTES_OF_WORD<CHANNELS>;
    Sixteen before = SixteenOf(0);
    size_t at = 0;
    if (bytes >= SIXTEEN) {
        Sixteen word = LoadSixteen(line);
        for (; at + STEP + SIXTEEN <= bytes; at += STEP) {
            const Sixteen next = LoadSixteen(line + at + STEP);
            const Sixteen sums = SumInsideWord<CHANNELS>(word);
            StoreSixteen(line + at, AddBytes(sums, before));
            before = AddBytes(before, SpreadLastPixel<CHANNELS>(sums));
            word = next;
        }
        StoreSixteen(line + at, word);
    }
    for (at = std::max<size_t>(at, CHANNELS); at < bytes; ++at)
        line[at] = static_cast<uint8_t>(line[at] + line[at - CHANNELS]);
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

// Works from the end, so that the sample before each is still unchanged.
template <uint32_t CHANNELS>
static void SubtractBytes(uint8_t* line, uint32_t bytes)
{
    uint32_t at = bytes;
    for (; at >= CHANNELS + SIXTEEN; at -= SIXTEEN) {
        uint8_t* word = line + at - SIXTEEN;
        StoreSixteen(word, SubtractBytes(LoadSixteen(word), LoadSixteen(word - CHANNELS)));
    }
    for (; at > CHANNELS; --at)
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

// The distance between samples of one channel, by depth. Lines of other depths are not changed.
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
