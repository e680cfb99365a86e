// Lookups computed from the code lists. A run code is found in two steps of eight bits: the reader looks no
// farther ahead at the end of the data.
#pragma once

#include "codecs/ccitt/codes.h"

namespace tiff::ccitt {

struct RunLookup {
    uint16_t run;
    uint8_t length; // bits of the code; 0 without one
};

inline constexpr uint32_t LOOKUP_BITS = 8;
inline constexpr uint32_t LONG_BITS = 5;       // bits of a code beyond the first eight, at most
inline constexpr uint32_t LONG_PREFIXES = 128; // no long code begins with a larger byte

struct RunTable {
    std::array<RunLookup, 256> first;
    std::array<std::array<RunLookup, 1 << LONG_BITS>, LONG_PREFIXES> second;
};

// Not constexpr: a call stops the build.
void ReportOverlappingCodes();

// Fills every entry that a code covers; a filled one stops the build.
template <size_t SIZE>
constexpr void FillLookup(std::array<RunLookup, SIZE>& table, uint32_t indexBits, uint32_t bits,
                          uint32_t length, RunLookup entry)
{
    const uint32_t spare = indexBits - length;
    for (uint32_t index = bits << spare; index < (bits + 1) << spare; ++index) {
        if (table[index].length != 0)
            ReportOverlappingCodes();
        table[index] = entry;
    }
}

template <size_t SIZE>
constexpr void AddCodes(RunTable& table, const std::array<RunCode, SIZE>& codes)
{
    for (const auto& [run, code] : codes) {
        const RunLookup entry = {run, code.length};
        if (code.length <= LOOKUP_BITS) {
            FillLookup(table.first, LOOKUP_BITS, code.bits, code.length, entry);
            continue;
        }
        const uint32_t rest = code.length - LOOKUP_BITS;
        const uint32_t prefix = code.bits >> rest;
        const uint32_t restBits = code.bits & ((1u << rest) - 1);
        FillLookup(table.second[prefix], LONG_BITS, restBits, rest, entry);
    }
}

template <size_t SIZE>
constexpr RunTable BuildRunTable(const std::array<RunCode, SIZE>& codes)
{
    RunTable table{};
    AddCodes(table, codes);
    AddCodes(table, extendedCodes);
    return table;
}

inline constexpr RunTable runTables[2] = {BuildRunTable(whiteCodes), BuildRunTable(blackCodes)};

// Every byte but the one that begins an EOL leads to a code.
static_assert([] {
    for (const RunTable& table : runTables)
        for (uint32_t byte = 1; byte < 256; ++byte)
            if (table.first[byte].length == 0)
                for (const RunLookup& entry : table.second[byte])
                    if (entry.length == 0)
                        return false;
    return true;
}());

inline constexpr uint32_t LONGEST_MODE = 7;

inline constexpr auto modeTable = [] {
    std::array<ModeCode, 1 << LONGEST_MODE> table{};
    for (const ModeCode& mode : modeCodes) {
        const uint32_t spare = LONGEST_MODE - mode.code.length;
        for (uint32_t index = 0; index < 1u << spare; ++index)
            table[static_cast<uint32_t>(mode.code.bits << spare) + index] = mode;
    }
    return table;
}();

} // namespace tiff::ccitt
