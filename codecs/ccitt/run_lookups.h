// The fast loops' tables for whole run codes and pairs of them, computed from the code list.
#pragma once

#include "codecs/ccitt/codes.h"

namespace tiff::ccitt {

// Codes of more than nine bits begin with four zeros. So an index of thirteen bits serves those, and nine
// bits serve all others, in a table that leaves room in the nearest cache.
inline constexpr uint32_t LONG_INDEX_BITS = 13, SHORT_INDEX_BITS = 9, LONG_ZEROS = 4;
inline constexpr uint32_t LONG_ENTRIES = 1 << (LONG_INDEX_BITS - LONG_ZEROS);

// The run above, the length of its code in the low four bits; 0 without a code.
using WholeRun = uint16_t;
inline constexpr uint32_t RUN_LENGTH_BITS = 4;

using WholeRuns = std::array<WholeRun, LONG_ENTRIES + (1 << SHORT_INDEX_BITS)>;

constexpr uint32_t WholeRunIndex(uint64_t window)
{
    const auto longIndex = static_cast<uint32_t>(window >> (64 - LONG_INDEX_BITS));
    const auto shortIndex = static_cast<uint32_t>(window >> (64 - SHORT_INDEX_BITS)) + LONG_ENTRIES;
    return longIndex < LONG_ENTRIES ? longIndex : shortIndex;
}

template <size_t SIZE>
constexpr void AddWholeRuns(WholeRuns& table, const std::array<RunCode, SIZE>& codes)
{
    for (const auto& [run, code] : codes) {
        const uint32_t spare = LONG_INDEX_BITS - code.length;
        for (uint32_t tail = 0; tail < 1u << spare; ++tail) {
            const uint64_t bits = (uint64_t{code.bits} << spare | tail) << (64 - LONG_INDEX_BITS);
            table[WholeRunIndex(bits)] = static_cast<WholeRun>(run << RUN_LENGTH_BITS | code.length);
        }
    }
}

template <size_t SIZE>
constexpr WholeRuns BuildWholeRuns(const std::array<RunCode, SIZE>& codes)
{
    WholeRuns table{};
    AddWholeRuns(table, codes);
    AddWholeRuns(table, extendedCodes);
    return table;
}

inline constexpr WholeRuns wholeRuns[2] = {BuildWholeRuns(whiteCodes), BuildWholeRuns(blackCodes)};

inline constexpr uint32_t PAIR_INDEX_BITS = 12;

// Two runs, the first of the given colour: its length in the highest six bits, that of the second in the next
// six, and the bits of both codes in the low four. 0 when the bits do not hold two runs below 64.
using RunPair = uint16_t;
inline constexpr uint32_t PAIR_LENGTH_BITS = 4, PAIR_RUN_BITS = 6;

using RunPairs = std::array<RunPair, 1 << PAIR_INDEX_BITS>;

constexpr RunPairs BuildRunPairs(const WholeRuns& first, const WholeRuns& second)
{
    constexpr uint32_t LENGTH_MASK = (1u << RUN_LENGTH_BITS) - 1;
    RunPairs pairs{};
    for (uint32_t index = 0; index < pairs.size(); ++index) {
        uint64_t window = uint64_t{index} << (64 - PAIR_INDEX_BITS);
        const uint32_t one = first[WholeRunIndex(window)];
        window <<= one & LENGTH_MASK;
        const uint32_t other = second[WholeRunIndex(window)];
        const uint32_t length = (one & LENGTH_MASK) + (other & LENGTH_MASK);
        const uint32_t firstRun = one >> RUN_LENGTH_BITS, secondRun = other >> RUN_LENGTH_BITS;
        const bool whole = one != 0 && other != 0 && length <= PAIR_INDEX_BITS;
        if (whole && firstRun < FIRST_MAKE_UP && secondRun < FIRST_MAKE_UP)
            pairs[index] =
                static_cast<RunPair>((firstRun << PAIR_RUN_BITS | secondRun) << PAIR_LENGTH_BITS | length);
    }
    return pairs;
}

inline constexpr RunPairs runPairs[2] = {BuildRunPairs(wholeRuns[0], wholeRuns[1]),
                                         BuildRunPairs(wholeRuns[1], wholeRuns[0])};

} // namespace tiff::ccitt
