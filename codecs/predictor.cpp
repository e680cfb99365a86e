#include "codecs/predictor.h"

#include "core/byte_order.h"

#include <emmintrin.h>

#include <algorithm>
#include <cstring>

namespace tiff {

static constexpr uint32_t WORD_BYTES = 16;

static __m128i LoadWord(const uint8_t* bytes)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
}

static void StoreWord(uint8_t* bytes, __m128i word)
{
    _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), word);
}

// Of pixels of three bytes a word holds four; what is behind them means nothing.
template <uint32_t CHANNELS>
static constexpr uint32_t PIXEL_BYTES_OF_WORD = CHANNELS == 3 ? 12 : 16;

template <uint32_t CHANNELS>
static __m128i SumInsideWord(__m128i word)
{
    if constexpr (CHANNELS == 3) {
        word = _mm_add_epi8(word, _mm_slli_si128(word, 3));
        return _mm_add_epi8(word, _mm_slli_si128(word, 6));
    }
    if constexpr (CHANNELS == 1)
        word = _mm_add_epi8(word, _mm_slli_si128(word, 1));
    if constexpr (CHANNELS <= 2)
        word = _mm_add_epi8(word, _mm_slli_si128(word, 2));
    word = _mm_add_epi8(word, _mm_slli_si128(word, 4));
    return _mm_add_epi8(word, _mm_slli_si128(word, 8));
}

// A word of its last pixel alone.
template <uint32_t CHANNELS>
static __m128i SpreadLastPixel(__m128i word)
{
    if constexpr (CHANNELS == 3) {
        word = _mm_srli_si128(_mm_slli_si128(word, 4), 13);
        word = _mm_or_si128(word, _mm_slli_si128(word, 3));
        return _mm_or_si128(word, _mm_slli_si128(word, 6));
    }
    if constexpr (CHANNELS == 1)
        word = _mm_unpackhi_epi8(word, word);
    if constexpr (CHANNELS <= 2)
        word = _mm_shufflehi_epi16(word, 0xFF);
    return _mm_shuffle_epi32(word, 0xFF);
}

// What comes before a word is added to all of it at once, so that words wait for one addition only.
// The next word is loaded before the one in hand is stored over its beginning; the last is put back.
template <uint32_t CHANNELS>
static void SumBytes(uint8_t* line, uint32_t bytes)
{
    constexpr uint32_t STEP = PIXEL_BYTES_OF_WORD<CHANNELS>;
    __m128i before = _mm_setzero_si128();
    size_t at = 0;
    if (bytes >= WORD_BYTES) {
        __m128i word = LoadWord(line);
        for (; at + STEP + WORD_BYTES <= bytes; at += STEP) {
            const __m128i next = LoadWord(line + at + STEP);
            const __m128i sums = SumInsideWord<CHANNELS>(word);
            StoreWord(line + at, _mm_add_epi8(sums, before));
            before = _mm_add_epi8(before, SpreadLastPixel<CHANNELS>(sums));
            word = next;
        }
        StoreWord(line + at, word);
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

// Differences are taken from the end, where the sample before is still whole.
template <uint32_t CHANNELS>
static void SubtractBytes(uint8_t* line, uint32_t bytes)
{
    uint32_t at = bytes;
    for (; at >= CHANNELS + WORD_BYTES; at -= WORD_BYTES) {
        uint8_t* word = line + at - WORD_BYTES;
        StoreWord(word, _mm_sub_epi8(LoadWord(word), LoadWord(word - CHANNELS)));
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
