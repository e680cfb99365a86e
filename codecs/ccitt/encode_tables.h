// Codes by run length and by vertical distance, computed from the code lists. A make-up code and the code
// after it are joined into one.
#pragma once

#include "codecs/ccitt/codes.h"

namespace tiff::ccitt {

inline constexpr uint32_t LONGEST_MAKE_UP = 2560;
inline constexpr uint32_t JOINED_RUNS = LONGEST_MAKE_UP + FIRST_MAKE_UP; // a longer run needs three codes
inline constexpr uint32_t JOINED_LENGTH_BITS = 5;

// The code above, its length in the low five bits; at most 26 bits long.
using JoinedCode = uint32_t;
using JoinedCodes = std::array<JoinedCode, JOINED_RUNS>;

constexpr uint32_t LengthOf(JoinedCode code)
{
    return code & ((1u << JOINED_LENGTH_BITS) - 1);
}

constexpr uint32_t BitsOf(JoinedCode code)
{
    return code >> JOINED_LENGTH_BITS;
}

template <size_t SIZE>
constexpr void PlaceCodes(std::array<Code, FIRST_MAKE_UP>& ending,
                          std::array<Code, JOINED_RUNS / FIRST_MAKE_UP>& makeUp,
                          const std::array<RunCode, SIZE>& codes)
{
    for (const auto& [run, code] : codes)
        (run < FIRST_MAKE_UP ? ending[run] : makeUp[run / FIRST_MAKE_UP]) = code;
}

// Not constexpr: a call stops the build.
void ReportMissingCode();

template <size_t SIZE>
constexpr JoinedCodes JoinCodes(const std::array<RunCode, SIZE>& codes)
{
    std::array<Code, FIRST_MAKE_UP> ending{};
    std::array<Code, JOINED_RUNS / FIRST_MAKE_UP> makeUp{};
    PlaceCodes(ending, makeUp, codes);
    PlaceCodes(ending, makeUp, extendedCodes);
    JoinedCodes joined{};
    for (uint32_t run = 0; run < JOINED_RUNS; ++run) {
        const Code first = makeUp[run / FIRST_MAKE_UP], last = ending[run % FIRST_MAKE_UP];
        if (last.length == 0 || (run >= FIRST_MAKE_UP && first.length == 0))
            ReportMissingCode();
        const uint32_t bits = static_cast<uint32_t>(first.bits) << last.length | last.bits;
        joined[run] = bits << JOINED_LENGTH_BITS | static_cast<uint32_t>(first.length + last.length);
    }
    return joined;
}

inline constexpr JoinedCodes joinedCodes[2] = {JoinCodes(whiteCodes), JoinCodes(blackCodes)};

constexpr Code ModeBits(Mode mode, int32_t delta)
{
    for (const ModeCode& entry : modeCodes)
        if (entry.mode == mode && entry.delta == delta)
            return entry.code;
    return {};
}

inline constexpr int32_t FARTHEST_VERTICAL = 3;
inline constexpr Code passCode = ModeBits(Mode::Pass, 0);
inline constexpr Code horizontalCode = ModeBits(Mode::Horizontal, 0);

// Indexed by a1 less b1, from -3.
inline constexpr auto verticalCodes = [] {
    std::array<Code, 2 * FARTHEST_VERTICAL + 1> table{};
    for (int32_t delta = -FARTHEST_VERTICAL; delta <= FARTHEST_VERTICAL; ++delta)
        table[static_cast<uint32_t>(delta + FARTHEST_VERTICAL)] = ModeBits(Mode::Vertical, delta);
    return table;
}();

// An EOL is eleven zeros and a one: fill in front of it makes it a longer code.
inline constexpr uint32_t EOL_LENGTH = 12;

} // namespace tiff::ccitt
