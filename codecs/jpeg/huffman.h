// Huffman tables for decoding: most codes are found together with the number behind them in one look-up.
#pragma once

#include "codecs/jpeg/standard_tables.h"

namespace tiff::jpeg {

inline constexpr uint32_t LOOKUP_BITS = 10, LONGEST_CODE = 16;
inline constexpr uint32_t BLOCK_ENDS = 64; // a run that no block has room for

// A code: how many bits it takes, the zeros before its coefficient, and the coefficient itself, or with
// FOLLOWS how many bits of it follow.
struct CodeEntry {
    uint8_t bits; // 0: the code is longer than the look-up
    uint8_t run;
    int16_t value;
};

inline constexpr uint8_t FOLLOWS = 0x80;

// A DC code has no zeros before it.
enum class CodeKind { Dc, Ac };

struct HuffmanLookup {
    std::array<CodeEntry, 1 << LOOKUP_BITS> entries;
    std::array<uint32_t, LONGEST_CODE + 1> ends;   // the first 16 bits that are no code of this length
    std::array<int32_t, LONGEST_CODE + 1> indexes; // of a code's value, less the code
    std::array<uint8_t, 256> values;
};

// The number that these bits of code stand for.
constexpr int32_t Extend(uint32_t bits, uint32_t count)
{
    const auto number = static_cast<int32_t>(bits);
    return count == 0 || bits >> (count - 1) != 0 ? number : number - (1 << count) + 1;
}

// The entry of a code's value, whose coefficient follows.
constexpr CodeEntry EntryOf(uint8_t value, uint32_t bits, CodeKind kind)
{
    const uint32_t run = kind == CodeKind::Dc ? 0 : value >> 4,
                   extraBits = kind == CodeKind::Dc ? value : value & 15;
    const bool ends = kind == CodeKind::Ac && extraBits == 0 && run < 15;
    const uint32_t shown = (ends ? BLOCK_ENDS : run) | (extraBits != 0 ? FOLLOWS : 0u);
    return {static_cast<uint8_t>(bits), static_cast<uint8_t>(shown), static_cast<int16_t>(extraBits)};
}

constexpr bool IsCategory(uint8_t value, CodeKind kind)
{
    return kind == CodeKind::Ac || value <= 15;
}

// The list must be complete.
constexpr void BuildLookup(const HuffmanList& list, CodeKind kind, HuffmanLookup& lookup)
{
    lookup.values = list.values;
    lookup.entries.fill({});
    lookup.ends.fill(0);
    uint32_t index = 0;
    ForEachCode(list, [&](uint32_t code, uint32_t bits, uint8_t value) {
        lookup.indexes[bits] = static_cast<int32_t>(index++) - static_cast<int32_t>(code);
        lookup.ends[bits] = (code + 1) << (LONGEST_CODE - bits);
        if (bits > LOOKUP_BITS || !IsCategory(value, kind))
            return;
        const CodeEntry entry = EntryOf(value, bits, kind);
        const uint32_t behind = LOOKUP_BITS - bits; // bits of the look-up behind the code
        const auto extraBits = static_cast<uint32_t>(entry.value);
        for (uint32_t rest = 0; rest < 1u << behind; ++rest) {
            CodeEntry& filled = lookup.entries[code << behind | rest];
            filled = entry;
            if (extraBits != 0 && extraBits <= behind)
                filled = {static_cast<uint8_t>(bits + extraBits), static_cast<uint8_t>(entry.run & ~FOLLOWS),
                          static_cast<int16_t>(Extend(rest >> (behind - extraBits), extraBits))};
        }
    });
}

// A code that the look-up does not have, from the next 16 bits. Its bits are 0 when there is no such code.
constexpr CodeEntry FindLongCode(const HuffmanLookup& lookup, uint32_t next, CodeKind kind)
{
    for (uint32_t bits = 1; bits <= LONGEST_CODE; ++bits)
        if (next < lookup.ends[bits]) {
            const auto code = static_cast<int32_t>(next >> (LONGEST_CODE - bits));
            const uint8_t value = lookup.values[static_cast<uint32_t>(code + lookup.indexes[bits]) & 255];
            return IsCategory(value, kind) ? EntryOf(value, bits, kind) : CodeEntry{};
        }
    return {};
}

} // namespace tiff::jpeg
