// Rows that are not compressed.
#pragma once

#include "codecs/codec_context.h"

namespace tiff {

[[nodiscard]] Status DecodeStored(CodecContext* context);
[[nodiscard]] Status EncodeStored(CodecContext* context);

} // namespace tiff
