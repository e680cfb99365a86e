// The transform both ways, the division and the colours, against their definitions in floating point.
#include "codecs/jpeg/colour.h"
#include "codecs/jpeg/transform.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

namespace {

using namespace tiff::jpeg;
using Samples = std::array<double, BLOCK_SIZE>; // row by row

double Basis(uint32_t frequency, uint32_t place)
{
    const double scale = frequency == 0 ? std::sqrt(0.125) : 0.5;
    return scale * std::cos((2 * place + 1) * frequency * std::numbers::pi / 16);
}

// Forwards from samples, or back from coefficients.
Samples Transform(const Samples& from, bool forwards)
{
    Samples to{};
    for (uint32_t target = 0; target < BLOCK_SIZE; ++target)
        for (uint32_t source = 0; source < BLOCK_SIZE; ++source) {
            const uint32_t frequency = forwards ? target : source, place = forwards ? source : target;
            to[target] += from[source] * Basis(frequency / 8, place / 8) * Basis(frequency % 8, place % 8);
        }
    return to;
}

uint32_t PlaceOf(uint32_t natural)
{
    return natural % 8 * 8 + natural / 8;
}

} // namespace

TEST(JpegTransform, SamplesAreWithinOneOfTheExactOnes)
{
    std::mt19937 random(7);
    double bias = 0;
    for (int round = 0; round < 600; ++round) {
        // A corner of 4 x 4, all places, or the first alone.
        const uint32_t side = round % 3 == 0 ? 8 : round % 3 == 1 ? 4 : 1;
        const int range = round % 2 ? 900 : 60;
        Block block{};
        Samples exact{};
        uint32_t places = 0;
        for (uint32_t natural = 0; natural < BLOCK_SIZE; ++natural) {
            if (natural / 8 >= side || natural % 8 >= side || (natural != 0 && random() % 3 == 0))
                continue;
            const int coefficient = static_cast<int>(random() % static_cast<uint32_t>(2 * range)) - range;
            block.coefficients[PlaceOf(natural)] = static_cast<int16_t>(coefficient);
            exact[natural] = coefficient;
            places |= PlaceOf(natural);
        }
        exact = Transform(exact, false);
        uint8_t samples[BLOCK_SIZE];
        ToSamples(block, places, samples, BLOCK_SIDE);
        for (uint32_t at = 0; at < BLOCK_SIZE; ++at) {
            const double wanted = std::clamp(exact[at] + 128, 0.0, 255.0);
            ASSERT_NEAR(samples[at], wanted, 1) << round << ' ' << at;
            bias += samples[at] - wanted;
        }
    }
    EXPECT_NEAR(bias / (600 * BLOCK_SIZE), 0, 0.03) << "exact halves are rounded up";
}

TEST(JpegTransform, CoefficientsAreDividedAndRounded)
{
    std::mt19937 random(8);
    for (int round = 0; round < 255; ++round) {
        Quantisers quantisers;
        quantisers.fill(static_cast<uint16_t>(1 + round));
        Samples exact;
        uint8_t samples[BLOCK_SIZE];
        for (uint32_t at = 0; at < BLOCK_SIZE; ++at) {
            samples[at] = static_cast<uint8_t>(round % 2 ? random() : random() % 2 * 255);
            exact[at] = samples[at] - 128.0;
        }
        exact = Transform(exact, true);
        Block block;
        ToCoefficients(samples, BLOCK_SIDE, MakeDivisors(quantisers), block);
        for (uint32_t at = 0; at < BLOCK_SIZE; ++at)
            ASSERT_NEAR(block.coefficients[PlaceOf(at)], exact[at] / (1 + round), 0.5 + 1.0 / (1 + round));
    }
}

TEST(JpegColour, IsRoundedFromTheDefinition)
{
    std::mt19937 random(9);
    uint8_t planes[3][64], pixels[3 * 33];
    const PlaneRows rows = {{planes[0], planes[1], planes[2]}};
    for (int round = 0; round < 500; ++round) {
        for (auto& plane : planes)
            for (uint8_t& sample : plane)
                sample = static_cast<uint8_t>(random());
        JoinPlanes(rows, 3, Colours::YCbCr, pixels, 33);
        for (uint32_t at = 0; at < 33; ++at) {
            const double y = planes[0][at], cb = planes[1][at] - 128.0, cr = planes[2][at] - 128.0;
            const double wanted[] = {y + 1.772 * cb, y - 0.344136 * cb - 0.714136 * cr, y + 1.402 * cr};
            for (uint32_t channel = 0; channel < 3; ++channel)
                ASSERT_NEAR(pixels[3 * at + channel], std::clamp(wanted[channel], 0.0, 255.0), 0.51);
        }
        uint8_t split[3][64];
        uint8_t* const targets[3] = {split[0], split[1], split[2]};
        SplitColours(pixels, 33, targets);
        for (uint32_t at = 0; at < 33; ++at) {
            const double b = pixels[3 * at], g = pixels[3 * at + 1], r = pixels[3 * at + 2];
            ASSERT_NEAR(split[0][at], 0.299 * r + 0.587 * g + 0.114 * b, 0.52);
            ASSERT_NEAR(split[1][at], std::min(128 - 0.168736 * r - 0.331264 * g + 0.5 * b, 255.0), 0.52);
            ASSERT_NEAR(split[2][at], std::min(128 + 0.5 * r - 0.418688 * g - 0.081312 * b, 255.0), 0.52);
        }
    }
}
