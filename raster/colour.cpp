#include "raster/colour.h"

#include <emmintrin.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace tiff {

// Takes the bytes of one mask from where they are, those of the others from two to the right
// and two to the left.
static __m128i TakeBytes(__m128i before, __m128i bytes, __m128i after, __m128i here, __m128i fromRight,
                         __m128i fromLeft)
{
    const __m128i right = _mm_or_si128(_mm_srli_si128(bytes, 2), _mm_slli_si128(after, 14));
    const __m128i left = _mm_or_si128(_mm_slli_si128(bytes, 2), _mm_srli_si128(before, 14));
    return _mm_or_si128(_mm_and_si128(bytes, here),
                        _mm_or_si128(_mm_and_si128(right, fromRight), _mm_and_si128(left, fromLeft)));
}

void SwapRedAndBlue(uint8_t* row, uint32_t bytes)
{
    // The first bytes of pixels, the second and the third; sixteen pixels are three words, which
    // begin with each of them in turn.
    const __m128i first = _mm_setr_epi8(-1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1);
    const __m128i second = _mm_slli_si128(first, 1), third = _mm_slli_si128(first, 2);
    for (; bytes >= 48; bytes -= 48, row += 48) {
        auto* words = reinterpret_cast<__m128i*>(row);
        const __m128i a = _mm_loadu_si128(words), b = _mm_loadu_si128(words + 1),
                      c = _mm_loadu_si128(words + 2);
        _mm_storeu_si128(words, TakeBytes(a, a, b, second, first, third));
        _mm_storeu_si128(words + 1, TakeBytes(a, b, c, first, third, second));
        _mm_storeu_si128(words + 2, TakeBytes(b, c, c, third, second, first));
    }
    for (; bytes >= 3; bytes -= 3, row += 3)
        std::swap(row[0], row[2]);
}

void ReduceSamples(uint8_t* target, const uint8_t* samples, uint32_t bytes, uint32_t shift)
{
    for (uint32_t at = 0; at + 2 <= bytes; at += 2) {
        uint16_t sample;
        std::memcpy(&sample, samples + at, sizeof(sample));
        *target++ = static_cast<uint8_t>(sample >> shift);
    }
}

static uint8_t LightFrom(uint32_t ink, uint32_t black, double scale)
{
    return static_cast<uint8_t>(255 - static_cast<int32_t>(ink * scale + black + 0.5));
}

void ConvertCmyk(uint8_t* target, const uint8_t* source, uint32_t pixels)
{
    for (; pixels > 0; --pixels, source += 4, target += 3) {
        const uint32_t cyan = source[0], magenta = source[1], yellow = source[2], black = source[3];
        const double scale = 1.0 - black / 255.0;
        target[0] = LightFrom(yellow, black, scale);
        target[1] = LightFrom(magenta, black, scale);
        target[2] = LightFrom(cyan, black, scale);
    }
}

static uint8_t Clamped(double level)
{
    return static_cast<uint8_t>(std::clamp(level, 0.0, 255.0));
}

// Wanted: the four-digit constants and the trace of Cr in blue are those that pages have always
// been converted with.
void ConvertYCbCr(uint8_t* target, const uint8_t* source, uint32_t pixels)
{
    for (; pixels > 0; --pixels, source += 3, target += 3) {
        const double y = source[0] / 255.0 - 0.5, cb = source[1] / 255.0 - 0.5, cr = source[2] / 255.0 - 0.5;
        target[0] = Clamped((y + 1.772 * cb - 0.0001 * cr + 0.5) * 255);
        target[1] = Clamped((y - 0.3441 * cb - 0.7141 * cr + 0.5) * 255);
        target[2] = Clamped((y + 1.402 * cr + 0.5) * 255);
    }
}

void WidenSamples(uint8_t* target, const uint8_t* source, uint32_t samples, uint32_t shift, bool invert)
{
    const uint32_t flip = invert ? 0xFF : 0;
    for (uint32_t at = 0; at < samples; ++at) {
        const auto sample = static_cast<uint16_t>((source[at] ^ flip) << shift);
        std::memcpy(target + size_t{at} * 2, &sample, sizeof(sample));
    }
}

// Wanted: black alone leaves nothing to divide by; its other inks are 0.
static uint8_t Ink(uint32_t light, uint32_t black, double scale)
{
    return black == 255 ? 0 : static_cast<uint8_t>((255.0 - light - black) / scale + 0.5);
}

void ConvertToCmyk(uint8_t* target, const uint8_t* source, uint32_t pixels)
{
    for (; pixels > 0; --pixels, source += 3, target += 4) {
        const uint32_t blue = source[0], green = source[1], red = source[2];
        const uint32_t black = 255 - std::max({red, green, blue});
        const double scale = 1.0 - black / 255.0;
        target[0] = Ink(red, black, scale);
        target[1] = Ink(green, black, scale);
        target[2] = Ink(blue, black, scale);
        target[3] = static_cast<uint8_t>(black);
    }
}

void ConvertToYCbCr(uint8_t* target, const uint8_t* source, uint32_t pixels)
{
    for (; pixels > 0; --pixels, source += 3, target += 3) {
        const double b = source[0] / 255.0 - 0.5, g = source[1] / 255.0 - 0.5, r = source[2] / 255.0 - 0.5;
        target[0] = Clamped((0.299 * r + 0.587 * g + 0.114 * b + 0.5) * 255);
        target[1] = Clamped((-0.1687 * r - 0.3313 * g + 0.5 * b + 0.5) * 255);
        target[2] = Clamped((0.5 * r - 0.4187 * g - 0.0813 * b + 0.5) * 255);
    }
}

} // namespace tiff
