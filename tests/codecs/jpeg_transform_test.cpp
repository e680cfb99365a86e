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
        int16_t mixed[2][64 / 2];
        for (uint32_t chroma = 0; chroma < 2; ++chroma)
            for (uint32_t at = 0; at < 32; ++at)
                mixed[chroma][at] = static_cast<int16_t>((planes[1 + chroma][at] - 128) * 64);
        JoinWidened(planes[0], mixed[0] + 1, mixed[1] + 1, pixels, 33);
        for (uint32_t at = 0; at < 33; ++at) {
            const auto chroma = [&](uint32_t plane) {
                const uint32_t middle = 1 + at / 2, neighbour = middle + (at % 2 ? 1 : -1);
                return (3 * planes[plane][middle] + planes[plane][neighbour]) / 4.0 - 128;
            };
            const double y = planes[0][at], cb = chroma(1), cr = chroma(2);
            const double wanted[] = {y + 1.772 * cb, y - 0.344136 * cb - 0.714136 * cr, y + 1.402 * cr};
            for (uint32_t channel = 0; channel < 3; ++channel)
                ASSERT_NEAR(pixels[3 * at + channel], std::clamp(wanted[channel], 0.0, 255.0), 0.53);
        }
    }
}

TEST(JpegColour, IsSplitAsTheDefinitionSays)
{
    constexpr uint32_t WIDTH = 33;
    std::mt19937 random(10);
    uint8_t rows[2][3 * WIDTH], luminance[2][48], kept[3][48], chroma[2][24];
    uint8_t* const keeping[] = {kept[0], kept[1], kept[2]};
    for (int round = 0; round < 500; ++round) {
        for (auto& row : rows)
            for (uint8_t& sample : row)
                sample = static_cast<uint8_t>(round % 2 ? random() : random() % 2 * 255);
        SplitUpper(rows[0], WIDTH, luminance[0], keeping);
        SplitLower(rows[1], WIDTH, luminance[1], keeping, chroma[0], chroma[1]);
        const auto weigh = [&](uint32_t row, uint32_t at, double blue, double green, double red) {
            const uint8_t* pixel = rows[row] + 3 * std::min(at, WIDTH - 1);
            return blue * pixel[0] + green * pixel[1] + red * pixel[2];
        };
        for (uint32_t at = 0; at < 2 * WIDTH; ++at)
            ASSERT_NEAR(luminance[at / WIDTH][at % WIDTH], weigh(at / WIDTH, at % WIDTH, 0.114, 0.587, 0.299),
                        0.52);
        for (uint32_t at = 0; at < (WIDTH + 1) / 2; ++at) {
            const auto mean = [&](double blue, double green, double red) {
                double sum = 0;
                for (uint32_t part = 0; part < 4; ++part)
                    sum += weigh(part / 2, 2 * at + part % 2, blue, green, red);
                return std::min(128 + sum / 4, 255.0);
            };
            ASSERT_NEAR(chroma[0][at], mean(0.5, -0.331264, -0.168736), 0.52);
            ASSERT_NEAR(chroma[1][at], mean(-0.081312, -0.418688, 0.5), 0.52);
        }
    }
}
