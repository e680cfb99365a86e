// The fast loops of the CCITT decoders. They take what lines are mostly made of out of the bytes
// held and stop, between two codes, before anything else: at the edge of those bytes, at EOLs,
// damage and empty runs. The careful coder does the next code then, and may call them again.
#pragma once

#include "codecs/ccitt/line.h"

namespace tiff::ccitt {

// Goes on with a line of modes over a reference in order. The line is whole when its change is the
// width.
void DecodeModesFast(CcittDecoder& decoder, ModeLine& line);

// Goes on with a line of runs before a run of white. The line is whole when the position is the
// width.
void DecodeRunsFast(CcittDecoder& decoder, int64_t& position);

} // namespace tiff::ccitt
