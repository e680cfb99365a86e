// The fast loops of the CCITT decoders. They decode the common codes from the bytes held and stop, between
// two codes, before anything else: the edge of those bytes, EOLs, damage and empty runs. The careful coder
// then decodes the next code, and may call them again.
#pragma once

#include "codecs/ccitt/line.h"

namespace tiff::ccitt {

// Continues a line of modes over a reference in order. The line is complete when its change is the width.
void DecodeModesFast(CcittDecoder& decoder, ModeLine& line);

// Continues a line of runs before a white run. The line is complete when the position is the width.
void DecodeRunsFast(CcittDecoder& decoder, int64_t& position);

} // namespace tiff::ccitt
