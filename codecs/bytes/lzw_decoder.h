// TIFF's LZW: codes of 9 to 12 bits, most significant bit first, widths growing one code early.
#pragma once

#include "codecs/codec_context.h"

namespace tiff {

[[nodiscard]] Status DecodeLzw(CodecCall* context);

} // namespace tiff
