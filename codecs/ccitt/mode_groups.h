// Finds several codes of a two-dimensional line at once, with a table computed from the code list, and places
// them singly where the group does not fit as a whole.
#pragma once

#include "codecs/ccitt/tables.h"

namespace tiff::ccitt {

inline constexpr uint32_t GROUP_CODES = 4;
inline constexpr uint32_t GROUP_BITS = 11;

// The end of a group, other than a vertical mode.
inline constexpr uint8_t HORIZONTAL = 0x80;
inline constexpr uint8_t PASS_BEFORE = 0x40; // the last mode before any horizontal one is a pass
inline constexpr uint8_t NO_GROUP = 0x20;
inline constexpr uint8_t ENDINGS = HORIZONTAL | PASS_BEFORE | NO_GROUP;

// The codes at the start of the next bits: passes, then up to four vertical modes, then the prefix of a
// horizontal mode. Or NO_GROUP with no bits, for codes outside the table and for invalid ones.
struct ModeGroup {
    int8_t deltas[GROUP_CODES];
    uint8_t count;  // number of vertical modes
    uint8_t passed; // changes of the reference line that are passed
    uint8_t bits;   // length of all its codes
    uint8_t flags;  // a bit for each vertical mode, and ENDINGS
};
static_assert(sizeof(ModeGroup) == 8);

constexpr uint32_t LengthOf(Mode wanted)
{
    for (const ModeCode& mode : modeCodes)
        if (mode.mode == wanted)
            return mode.code.length;
    return 0;
}

inline constexpr uint32_t PASS_BITS = LengthOf(Mode::Pass), HORIZONTAL_BITS = LengthOf(Mode::Horizontal);

constexpr bool FitsGroup(const ModeGroup& group, const ModeCode& mode)
{
    if (group.bits + mode.code.length > GROUP_BITS)
        return false;
    switch (mode.mode) {
    case Mode::Pass:
        return group.count == 0;
    case Mode::Vertical:
        return group.count < GROUP_CODES;
    default:
        return mode.mode == Mode::Horizontal;
    }
}

constexpr ModeGroup GroupOf(uint32_t index)
{
    ModeGroup group{};
    while ((group.flags & HORIZONTAL) == 0) {
        const uint32_t rest = index << group.bits & ((1u << GROUP_BITS) - 1);
        const ModeCode mode = modeTable[rest >> (GROUP_BITS - LONGEST_MODE)];
        if (!FitsGroup(group, mode))
            break;
        group.bits = static_cast<uint8_t>(group.bits + mode.code.length);
        if (mode.mode == Mode::Pass) {
            group.passed = static_cast<uint8_t>(group.passed + 2);
        } else if (mode.mode == Mode::Horizontal) {
            group.flags |= HORIZONTAL;
        } else {
            group.deltas[group.count] = mode.delta;
            group.flags = static_cast<uint8_t>(group.flags | 1u << group.count);
            ++group.count;
        }
    }
    if (group.passed != 0 && group.count == 0)
        group.flags |= PASS_BEFORE;
    if (group.bits == 0)
        group.flags |= NO_GROUP;
    return group;
}

inline constexpr auto modeGroups = [] {
    std::array<ModeGroup, 1 << GROUP_BITS> groups{};
    for (uint32_t index = 0; index < groups.size(); ++index)
        groups[index] = GroupOf(index);
    return groups;
}();

// Bits of a vertical mode, from -3.
inline constexpr auto verticalLengths = [] {
    std::array<uint8_t, 7> lengths{};
    for (const ModeCode& mode : modeCodes)
        if (mode.mode == Mode::Vertical)
            lengths[static_cast<uint32_t>(mode.delta + 3)] = mode.code.length;
    return lengths;
}();

struct ModePlaces {
    const int32_t* b;     // b1 in the reference line
    int32_t* columns;     // place of the next change
    bool overran = false; // a mode led out of the line
};

// Places the vertical modes of a group one by one, from the first that needs the place in the reference
// moved, up to the end of the line; notes one that leads out of it. Stops before a change that is not right
// of the last one. Returns the number of modes done. The reference must be in order. Not inline: the loop
// over groups needs the registers.
uint32_t PlaceSingly(const ModeGroup& group, uint32_t lane, ModePlaces& places, int32_t width);

// Length of a group's passes and of some of its vertical modes.
uint32_t BitsOf(const ModeGroup& group, uint32_t modes);

} // namespace tiff::ccitt
