// Data shared by the line coders: the lists of the current line and the one above, the reader, and the place
// in the reference line.
#pragma once

#include "codecs/ccitt/bits.h"
#include "codecs/ccitt/runs.h"

#include <algorithm>

namespace tiff::ccitt {

struct Framing;

// The result of a line coder's step. Ended stands for the status that the reader ended with.
enum class Met { LineEnd, Eol, Ended, BadCode, Eofb, Run };

struct CcittDecoder {
    const Framing& framing;
    BitReader bits;
    RunList coding;
    RunList reference;
    int32_t width;
    CodecCall* call;
    bool fastLoops;          // off: the careful coders do everything
    bool decodedAny = false; // a part of the current line, not counting an EOL
    bool damaged = false;    // the current line
    uint32_t eols = 0;       // in a row
    int32_t lastCut = 0;     // column where an EOL cut a line short
};

// The place in the reference line: an index of the entry that is b1.
struct ReferencePoint {
    const int32_t* ends;
    uint32_t count;
    bool emptyRuns;
    uint32_t index = 0;
    uint32_t stepsBack = 0;

    int32_t B1() const
    {
        return ends[index];
    }
    int32_t B2() const
    {
        return ends[index + 1];
    }
    // Behind the list every entry is the width, so only the parity of the index matters there.
    void Advance(uint32_t steps)
    {
        index += steps;
        const uint32_t last = count + LAST_B1;
        if (index > last)
            index = last - ((index - last) & 1);
    }
    void SkipThrough(int32_t column, int32_t width)
    {
        while (column < width && B1() <= column)
            Advance(2);
    }
    bool PreviousIsRightOf(int32_t column) const
    {
        return index > 1 && ends[index - 2] > column;
    }
    void StepBack()
    {
        index -= 2;
        ++stepsBack;
    }
};

// A two-dimensional line that is being decoded.
struct ModeLine {
    ReferencePoint reference;
    int32_t a0 = 0;
    int32_t change = 0; // the last one stored; a line ends with a change, never with a pass
};

inline int32_t VerticalChange(int32_t delta, ReferencePoint& reference, int32_t width)
{
    const auto a1 = static_cast<int32_t>(std::clamp<int64_t>(int64_t{reference.B1()} + delta, 0, width));
    reference.Advance(1);
    if (delta < 0) {
        while (reference.PreviousIsRightOf(a1))
            reference.StepBack();
    } else if (delta > 0 && reference.PreviousIsRightOf(a1)) {
        reference.StepBack();
    } else if (delta > 0 || reference.emptyRuns) {
        reference.SkipThrough(a1, width);
    }
    return a1;
}

// Without damage a0 only moves right, and each change coded makes the reference step back at most once.
// Damaged lines could go back and forth for hours.
inline bool WalksInCircles(const ReferencePoint& reference, const RunList& coding)
{
    return reference.stepsBack > uint64_t{reference.count} + coding.count + END_SENTINELS;
}

} // namespace tiff::ccitt
