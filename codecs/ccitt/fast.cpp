#include "codecs/ccitt/fast.h"

#include "codecs/ccitt/lanes.h"
#include "codecs/ccitt/mode_groups.h"
#include "codecs/ccitt/reservoir.h"
#include "codecs/ccitt/run_lookups.h"

namespace tiff::ccitt {

namespace {

// A run with at most one make-up code. Negative for anything else.
int32_t TakeRun(Reservoir& bits, uint32_t colour)
{
    constexpr uint32_t LENGTH_MASK = (1u << RUN_LENGTH_BITS) - 1;
    const WholeRuns& runs = wholeRuns[colour];
    uint32_t entry = runs[WholeRunIndex(bits.window)];
    uint32_t run = entry >> RUN_LENGTH_BITS;
    Skip(bits, entry & LENGTH_MASK);
    if (run >= FIRST_MAKE_UP) {
        entry = runs[WholeRunIndex(bits.window)];
        run += entry >> RUN_LENGTH_BITS;
        Skip(bits, entry & LENGTH_MASK);
    }
    return entry == 0 || entry >> RUN_LENGTH_BITS >= FIRST_MAKE_UP ? -1 : static_cast<int32_t>(run);
}

struct TwoRuns {
    int32_t first, second; // negative for anything else
};

// Two runs take at most 45 bits: a white one 20, a black one 25.
static_assert(LEAST_FILLED_BITS >= 45);

// All bits of a pair must be held. A failure may leave the reservoir inside the codes: the caller restores
// its copy.
TwoRuns TakeTwoRuns(Reservoir& bits, uint32_t colour, uint32_t& pairsHeld)
{
    const uint32_t pair = runPairs[colour][bits.window >> (64 - PAIR_INDEX_BITS)];
    if (pair == 0) {
        if (!CanFill(bits))
            return {-1, -1};
        Fill(bits);
        pairsHeld = 0;
        const int32_t first = TakeRun(bits, colour);
        return {first, TakeRun(bits, colour ^ 1)};
    }
    constexpr uint32_t LENGTH_MASK = (1u << PAIR_LENGTH_BITS) - 1, RUN_MASK = (1u << PAIR_RUN_BITS) - 1;
    Skip(bits, pair & LENGTH_MASK);
    return {static_cast<int32_t>(pair >> (PAIR_LENGTH_BITS + PAIR_RUN_BITS)),
            static_cast<int32_t>(pair >> PAIR_LENGTH_BITS & RUN_MASK)};
}

// The state before a horizontal mode was taken.
Reservoir PutHorizontalBack(const Reservoir& bits)
{
    Reservoir before = bits;
    before.window = bits.window >> HORIZONTAL_BITS | UINT64_C(1) << (64 - HORIZONTAL_BITS);
    before.held += HORIZONTAL_BITS;
    return before;
}

// a0 is the last column placed, or farther right after a pass. Then it is the change before b1, and no mode
// of a group may step back over it.
struct ModeLoop {
    Reservoir bits;
    ModePlaces places;
    int32_t passedTo;
    const int32_t* const lastB; // behind it only the parity matters
    const int32_t* const firstColumn;
    const int32_t width;
    bool overran = false;
};

void WrapBehindList(ModeLoop& loop)
{
    if (loop.places.b > loop.lastB)
        loop.places.b -= (loop.places.b - loop.lastB + 1) & ~1;
}

// False when the line is complete or the careful coder must go on.
bool PlaceRest(ModeLoop& loop, const ModeGroup& group, uint32_t lane)
{
    ModePlaces places = loop.places;
    const int32_t passedTo = places.b[-1];
    const uint32_t done = PlaceSingly(group, lane, places, loop.width);
    loop.places = places;
    if (done != 0)
        loop.passedTo = places.columns[-1];
    else if (group.passed != 0)
        loop.passedTo = passedTo;
    if (done == group.count && places.columns[-1] < loop.width) {
        Skip(loop.bits, group.bits);
        return true;
    }
    Skip(loop.bits, BitsOf(group, done));
    return false;
}

// Places the group's passes and vertical modes. False as in PlaceRest.
bool PlaceGroup(ModeLoop& loop, const ModeGroup& group)
{
    ModePlaces& places = loop.places;
    places.b += group.passed;
    const uint32_t outside = PlaceColumns(places.b, group.deltas, places.columns[-1], places.columns);
    if ((outside & group.flags) != 0) [[unlikely]]
        return PlaceRest(loop, group, static_cast<uint32_t>(std::countr_zero(outside)));
    places.columns += group.count;
    places.b += group.count;
    Skip(loop.bits, group.bits);
    return true;
}

// The runs of a horizontal mode.
bool PlaceRuns(ModeLoop& loop)
{
    ModePlaces& places = loop.places;
    const Reservoir before = PutHorizontalBack(loop.bits);
    if (!CanFill(loop.bits)) {
        loop.bits = before;
        return false;
    }
    Fill(loop.bits);
    const auto colour = static_cast<uint32_t>(places.columns - loop.firstColumn) & 1;
    uint32_t pairsHeld = 1;
    const auto [first, second] = TakeTwoRuns(loop.bits, colour, pairsHeld);
    const int32_t last = places.columns[-1];
    const int32_t a1 = std::max(last, loop.passedTo) + first, a2 = std::min(a1 + second, loop.width);
    if ((first | second) < 0 || a1 <= last || a2 <= a1) {
        loop.bits = before;
        return false;
    }
    places.columns[0] = a1;
    places.columns[1] = a2;
    places.columns += 2;
    if (a2 == loop.width) {
        loop.overran = a1 + second > a2;
        return false;
    }
    places.b += 2 * int{*places.b <= a2}; // often, and hard to predict
    while (*places.b <= a2)
        places.b += 2;
    return true;
}

// Handles a group that does not end with a vertical mode.
bool PlaceEnding(ModeLoop& loop, uint32_t ending)
{
    if ((ending & NO_GROUP) != 0)
        return false;
    WrapBehindList(loop);
    const int32_t passed = 0 - static_cast<int32_t>(ending / PASS_BEFORE & 1); // no branch
    loop.passedTo = std::max(loop.passedTo, loop.places.b[-1] & passed);
    return (ending & HORIZONTAL) == 0 || PlaceRuns(loop);
}

// The last run may be white. The bits after it may look like a black run.
bool EndsInWhite(const Reservoir& bits, int32_t room, Reservoir& behind)
{
    behind = bits;
    if (!CanFill(behind))
        return false;
    Fill(behind);
    return TakeRun(behind, 0) == room;
}

} // namespace

void DecodeModesFast(CcittDecoder& decoder, ModeLine& line)
{
    const RunList& coding = decoder.coding;
    const ReferencePoint& reference = line.reference;
    ModeLoop loop{
        .bits = Borrow(decoder.bits),
        .places = {reference.ends + reference.index, coding.ends + coding.count},
        .passedTo = line.a0,
        .lastB = reference.ends + reference.count + LAST_B1,
        .firstColumn = coding.ends,
        .width = decoder.width,
    };
    // After empty runs a0 may lie elsewhere; the careful coder goes on then.
    const int32_t last = loop.places.columns[-1];
    if (line.a0 != last && (line.a0 < last || line.a0 > std::max(loop.places.b[-1], 0)))
        return;
    const uint64_t start = PositionOf(loop.bits);
    // Refill after a fixed number of groups: the branch predictor learns a count, but not a bit level.
    constexpr uint32_t GROUPS_HELD = LEAST_FILLED_BITS / GROUP_BITS;
    uint32_t left = 0;
    for (;;) {
        if (left == 0) [[unlikely]] {
            if (!CanFill(loop.bits))
                break;
            Fill(loop.bits);
            left = GROUPS_HELD;
        }
        --left;
        const ModeGroup& group = modeGroups[loop.bits.window >> (64 - GROUP_BITS)];
        if (!PlaceGroup(loop, group)) [[unlikely]]
            break;
        if ((group.flags & ENDINGS) != 0) {
            if (!PlaceEnding(loop, group.flags))
                break;
            left = 0;
        }
    }
    WrapBehindList(loop);
    GiveBack(loop.bits, decoder.bits);
    decoder.decodedAny |= PositionOf(loop.bits) != start;
    decoder.damaged |= loop.overran || loop.places.overran;
    decoder.coding.count = static_cast<uint32_t>(loop.places.columns - coding.ends);
    line.reference.index = static_cast<uint32_t>(loop.places.b - reference.ends);
    line.change = loop.places.columns[-1];
    line.a0 = std::max(line.change, loop.passedTo);
}

void DecodeRunsFast(CcittDecoder& decoder, int64_t& position)
{
    Reservoir bits = Borrow(decoder.bits);
    RunList& coding = decoder.coding;
    const int32_t width = decoder.width;
    int32_t* columns = coding.ends + coding.count;
    const int32_t* const started = columns;
    constexpr uint32_t PAIRS_HELD = LEAST_FILLED_BITS / PAIR_INDEX_BITS;
    uint32_t left = 0;
    auto column = static_cast<int32_t>(position);
    while (column < width) {
        const Reservoir before = bits;
        if (left == 0) [[unlikely]] {
            if (!CanFill(bits))
                break;
            Fill(bits);
            left = PAIRS_HELD;
        }
        --left;
        const auto [white, black] = TakeTwoRuns(bits, 0, left);
        const int32_t start = column + white, end = start + black;
        if ((white | black) < 0 || start <= columns[-1] || end <= start || end > width) {
            if (EndsInWhite(before, width - column, bits))
                *columns++ = column = width;
            else
                bits = before;
            break;
        }
        columns[0] = start;
        columns[1] = column = end;
        columns += 2;
    }
    decoder.decodedAny |= columns != started;
    coding.count = static_cast<uint32_t>(columns - coding.ends);
    position = column;
    GiveBack(bits, decoder.bits);
}

} // namespace tiff::ccitt
