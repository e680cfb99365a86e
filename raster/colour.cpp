#include "raster/colour.h"

#include "core/sixteen.h"

#include <algorithm>
#include <cstring>

namespace tiff {

// A word holds five whole pixels; the byte behind them stays as it is.
static void StoreSwapped(uint8_t* bytes, Sixteen word)
{
    static constexpr uint8_t FIRST[SIXTEEN] = {0xFF, 0, 0, 0xFF, 0, 0, 0xFF, 0, 0, 0xFF, 0, 0, 0xFF, 0, 0, 0};
    // The bits in which first and third bytes differ are flipped in both.
    const Sixteen turned = And(Xor(word, ShiftDown<2>(word)), LoadSixteen(FIRST));
    StoreSixteen(bytes, Xor(word, Or(turned, ShiftUp<2>(turned))));
}

// The next word is loaded before the current one is stored: in place, a load of bytes just stored in part
// would have to wait.
void CopySwapped(uint8_t* target, const uint8_t* source, uint32_t bytes)
{
    constexpr size_t WORD = SIXTEEN, PIXELS_OF_WORD = 15;
    size_t at = 0;
    if (bytes >= WORD) {
        Sixteen word = LoadSixteen(source);
        for (; at + PIXELS_OF_WORD + WORD <= bytes; at += PIXELS_OF_WORD) {
            const Sixteen next = LoadSixteen(source + at + PIXELS_OF_WORD);
            StoreSwapped(target + at, word);
            word = next;
        }
        StoreSwapped(target + at, word);
        at += PIXELS_OF_WORD;
    }
    for (; at + 3 <= bytes; at += 3) {
        const uint8_t red = source[at];
        target[at] = source[at + 2];
        target[at + 1] = source[at + 1];
        target[at + 2] = red;
    }
    for (; at < bytes; ++at)
        target[at] = source[at];
}

void SwapRedAndBlue(uint8_t* row, uint32_t bytes)
{
    CopySwapped(row, row, bytes);
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

// Deliberate: pages have always been converted with these four-digit constants and the trace of Cr in blue.
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

// Deliberate: pure black leaves nothing to divide by, so its other inks are 0.
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
