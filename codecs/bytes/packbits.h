// PackBits: packets of literal bytes and of one byte repeated.
#pragma once

#include "codecs/codec_context.h"

namespace tiff {

[[nodiscard]] Status DecodePackBits(CodecContext* context);
[[nodiscard]] Status EncodePackBits(CodecContext* context);

} // namespace tiff
