// PackBits: packets of literal bytes and of one byte repeated.
#pragma once

#include "codecs/codec_context.h"

namespace tiff {

[[nodiscard]] Status DecodePackBits(CodecCall* context);
[[nodiscard]] Status EncodePackBits(CodecCall* context);

} // namespace tiff
