// TIFF's LZW, the writing side; see lzw_decoder.h.
#pragma once

#include "codecs/codec_context.h"

namespace tiff {

[[nodiscard]] Status EncodeLzw(CodecCall* context);

} // namespace tiff
