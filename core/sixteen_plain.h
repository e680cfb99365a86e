// The functions of core/sixteen.h for any processor. That file describes each.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tiff {

inline constexpr uint32_t SIXTEEN = 16;

namespace plain {

struct Sixteen {
    uint8_t bytes[SIXTEEN];
};

inline Sixteen LoadSixteen(const void* bytes)
{
    Sixteen value;
    std::memcpy(value.bytes, bytes, SIXTEEN);
    return value;
}

inline void StoreSixteen(void* bytes, Sixteen value)
{
    std::memcpy(bytes, value.bytes, SIXTEEN);
}

template <class Element, class Make>
Sixteen MakeElements(Make make)
{
    Element elements[SIXTEEN / sizeof(Element)];
    for (size_t index = 0; index < SIXTEEN / sizeof(Element); ++index)
        elements[index] = static_cast<Element>(make(index));
    return LoadSixteen(elements);
}

template <class Element, class Combine>
Sixteen CombineElements(Sixteen one, Sixteen other, Combine combine)
{
    Element ones[SIXTEEN / sizeof(Element)], others[SIXTEEN / sizeof(Element)];
    std::memcpy(ones, one.bytes, SIXTEEN);
    std::memcpy(others, other.bytes, SIXTEEN);
    return MakeElements<Element>([&](size_t index) { return combine(ones[index], others[index]); });
}

inline Sixteen SixteenOf(uint8_t byte)
{
    return MakeElements<uint8_t>([=](size_t) { return byte; });
}

inline Sixteen And(Sixteen one, Sixteen other)
{
    return CombineElements<uint64_t>(one, other, [](uint64_t a, uint64_t b) { return a & b; });
}

inline Sixteen Without(Sixteen one, Sixteen other)
{
    return CombineElements<uint64_t>(one, other, [](uint64_t a, uint64_t b) { return a & ~b; });
}

inline Sixteen Or(Sixteen one, Sixteen other)
{
    return CombineElements<uint64_t>(one, other, [](uint64_t a, uint64_t b) { return a | b; });
}

inline Sixteen Xor(Sixteen one, Sixteen other)
{
    return CombineElements<uint64_t>(one, other, [](uint64_t a, uint64_t b) { return a ^ b; });
}

inline Sixteen AddBytes(Sixteen one, Sixteen other)
{
    return CombineElements<uint8_t>(one, other, [](uint8_t a, uint8_t b) { return a + b; });
}

inline Sixteen RaiseBits(Sixteen value, uint32_t bits)
{
    return CombineElements<uint8_t>(value, value, [bits](uint8_t a, uint8_t) { return a << bits; });
}

inline Sixteen LowerBits(Sixteen value, uint32_t bits)
{
    return CombineElements<uint8_t>(value, value, [bits](uint8_t a, uint8_t) { return a >> bits; });
}

inline Sixteen SubtractBytes(Sixteen one, Sixteen other)
{
    return CombineElements<uint8_t>(one, other, [](uint8_t a, uint8_t b) { return a - b; });
}

inline uint32_t EqualBytes(Sixteen one, Sixteen other)
{
    uint32_t bits = 0;
    for (uint32_t index = 0; index < SIXTEEN; ++index)
        bits |= uint32_t{one.bytes[index] == other.bytes[index]} << index;
    return bits;
}

template <int PLACES>
Sixteen ShiftUp(Sixteen value)
{
    return MakeElements<uint8_t>(
        [&](size_t index) { return index < PLACES ? 0 : value.bytes[index - PLACES]; });
}

template <int PLACES>
Sixteen ShiftDown(Sixteen value)
{
    return MakeElements<uint8_t>(
        [&](size_t index) { return index + PLACES < SIXTEEN ? value.bytes[index + PLACES] : 0; });
}

template <int BYTES>
Sixteen RepeatLast(Sixteen value)
{
    return MakeElements<uint8_t>([&](size_t index) { return value.bytes[SIXTEEN - BYTES + index % BYTES]; });
}

inline Sixteen WidenToColumns(const int8_t* bytes)
{
    return MakeElements<int32_t>([=](size_t index) { return bytes[index]; });
}

inline Sixteen FirstColumn(int32_t column)
{
    return MakeElements<int32_t>([=](size_t index) { return index == 0 ? column : 0; });
}

inline Sixteen AddColumns(Sixteen one, Sixteen other)
{
    return CombineElements<uint32_t>(one, other, [](uint32_t a, uint32_t b) { return a + b; });
}

inline Sixteen GreaterColumns(Sixteen one, Sixteen other)
{
    return CombineElements<int32_t>(one, other, [](int32_t a, int32_t b) { return a > b ? -1 : 0; });
}

inline uint32_t ColumnBits(Sixteen columns)
{
    uint32_t bits = 0;
    for (uint32_t index = 0; index < 4; ++index)
        bits |= uint32_t{columns.bytes[4 * index + 3]} >> 7 << index;
    return bits;
}

inline void AskForMemory(const uint8_t*)
{
}

} // namespace plain

} // namespace tiff
