// The processor's functions for sixteen bytes against the plain ones.
#include "core/sixteen.h"
#include "core/sixteen_shorts.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <random>

namespace {

using Bytes16 = std::array<uint8_t, tiff::SIXTEEN>;

template <class Value>
Bytes16 BytesOf(const Value& value)
{
    Bytes16 bytes;
    std::memcpy(bytes.data(), &value, sizeof(bytes));
    return bytes;
}

} // namespace

TEST(Sixteen, IsTheSameByPlainCode)
{
    namespace plain = tiff::plain;
    std::mt19937 random(1);
    for (int round = 0; round < 1000; ++round) {
        Bytes16 one, other;
        for (uint32_t at = 0; at < tiff::SIXTEEN; ++at) {
            one[at] = static_cast<uint8_t>(random());
            other[at] = random() % 2 ? one[at] : static_cast<uint8_t>(random());
        }
        const auto a = tiff::LoadSixteen(one.data()), b = tiff::LoadSixteen(other.data());
        const auto c = plain::LoadSixteen(one.data()), d = plain::LoadSixteen(other.data());
        EXPECT_EQ(BytesOf(tiff::And(a, b)), BytesOf(plain::And(c, d)));
        EXPECT_EQ(BytesOf(tiff::Without(a, b)), BytesOf(plain::Without(c, d)));
        EXPECT_EQ(BytesOf(tiff::Or(a, b)), BytesOf(plain::Or(c, d)));
        EXPECT_EQ(BytesOf(tiff::Xor(a, b)), BytesOf(plain::Xor(c, d)));
        EXPECT_EQ(BytesOf(tiff::AddBytes(a, b)), BytesOf(plain::AddBytes(c, d)));
        EXPECT_EQ(BytesOf(tiff::SubtractBytes(a, b)), BytesOf(plain::SubtractBytes(c, d)));
        for (uint32_t bits = 0; bits < 8; ++bits) {
            EXPECT_EQ(BytesOf(tiff::RaiseBits(a, bits)), BytesOf(plain::RaiseBits(c, bits)));
            EXPECT_EQ(BytesOf(tiff::LowerBits(a, bits)), BytesOf(plain::LowerBits(c, bits)));
        }
        EXPECT_EQ(BytesOf(tiff::AddColumns(a, b)), BytesOf(plain::AddColumns(c, d)));
        EXPECT_EQ(BytesOf(tiff::GreaterColumns(a, b)), BytesOf(plain::GreaterColumns(c, d)));
        EXPECT_EQ(BytesOf(tiff::ShiftUp<3>(a)), BytesOf(plain::ShiftUp<3>(c)));
        EXPECT_EQ(BytesOf(tiff::ShiftDown<13>(a)), BytesOf(plain::ShiftDown<13>(c)));
        EXPECT_EQ(BytesOf(tiff::RepeatLast<1>(a)), BytesOf(plain::RepeatLast<1>(c)));
        EXPECT_EQ(BytesOf(tiff::RepeatLast<2>(a)), BytesOf(plain::RepeatLast<2>(c)));
        EXPECT_EQ(BytesOf(tiff::RepeatLast<4>(a)), BytesOf(plain::RepeatLast<4>(c)));
        EXPECT_EQ(BytesOf(tiff::SixteenOf(one[0])), BytesOf(plain::SixteenOf(one[0])));
        const auto deltas = std::bit_cast<std::array<int8_t, 16>>(one);
        EXPECT_EQ(BytesOf(tiff::WidenToColumns(&deltas[3])), BytesOf(plain::WidenToColumns(&deltas[3])));
        EXPECT_EQ(BytesOf(tiff::FirstColumn(-7)), BytesOf(plain::FirstColumn(-7)));
        EXPECT_EQ(tiff::EqualBytes(a, b), plain::EqualBytes(c, d));
        EXPECT_EQ(tiff::ColumnBits(a), plain::ColumnBits(c));
    }
}

TEST(SixteenShorts, AreTheSameByPlainCode)
{
    namespace plain = tiff::plain;
    std::mt19937 random(2);
    for (int round = 0; round < 1000; ++round) {
        Bytes16 one, other;
        for (uint32_t at = 0; at < tiff::SIXTEEN; ++at) {
            one[at] = static_cast<uint8_t>(random());
            other[at] = static_cast<uint8_t>(round % 2 ? random() : at % 2 * 0x80u);
        }
        const auto a = tiff::LoadSixteen(one.data()), b = tiff::LoadSixteen(other.data());
        const auto c = plain::LoadSixteen(one.data()), d = plain::LoadSixteen(other.data());
        EXPECT_EQ(BytesOf(tiff::AddShorts(a, b)), BytesOf(plain::AddShorts(c, d)));
        EXPECT_EQ(BytesOf(tiff::SubtractShorts(a, b)), BytesOf(plain::SubtractShorts(c, d)));
        EXPECT_EQ(BytesOf(tiff::SubtractColumns(a, b)), BytesOf(plain::SubtractColumns(c, d)));
        EXPECT_EQ(BytesOf(tiff::MultiplyHigh(a, b)), BytesOf(plain::MultiplyHigh(c, d)));
        EXPECT_EQ(BytesOf(tiff::MultiplyHighUnsigned(a, b)), BytesOf(plain::MultiplyHighUnsigned(c, d)));
        EXPECT_EQ(BytesOf(tiff::MultiplyAddPairs(a, b)), BytesOf(plain::MultiplyAddPairs(c, d)));
        EXPECT_EQ(BytesOf(tiff::ShiftShortsRight<3>(a)), BytesOf(plain::ShiftShortsRight<3>(c)));
        EXPECT_EQ(BytesOf(tiff::ShiftColumnsRight<11>(a)), BytesOf(plain::ShiftColumnsRight<11>(c)));
        EXPECT_EQ(BytesOf(tiff::ShiftHalvesDown<8>(a)), BytesOf(plain::ShiftHalvesDown<8>(c)));
        EXPECT_EQ(BytesOf(tiff::NarrowColumns(a, b)), BytesOf(plain::NarrowColumns(c, d)));
        EXPECT_EQ(BytesOf(tiff::NarrowToBytes(a, b)), BytesOf(plain::NarrowToBytes(c, d)));
        EXPECT_EQ(BytesOf(tiff::NarrowToSignedBytes(a, b)), BytesOf(plain::NarrowToSignedBytes(c, d)));
        EXPECT_EQ(BytesOf(tiff::InterleaveLow<1>(a, b)), BytesOf(plain::InterleaveLow<1>(c, d)));
        EXPECT_EQ(BytesOf(tiff::InterleaveHigh<2>(a, b)), BytesOf(plain::InterleaveHigh<2>(c, d)));
        EXPECT_EQ(BytesOf(tiff::InterleaveLow<4>(a, b)), BytesOf(plain::InterleaveLow<4>(c, d)));
        EXPECT_EQ(BytesOf(tiff::InterleaveHigh<8>(a, b)), BytesOf(plain::InterleaveHigh<8>(c, d)));
        EXPECT_EQ(BytesOf(tiff::ShortsOf(-300)), BytesOf(plain::ShortsOf(-300)));
        EXPECT_EQ(BytesOf(tiff::ColumnsOf(-70000)), BytesOf(plain::ColumnsOf(-70000)));
        EXPECT_EQ(BytesOf(tiff::LoadHalf(one.data())), BytesOf(plain::LoadHalf(one.data())));
    }
}
