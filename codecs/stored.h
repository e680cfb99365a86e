// Rows that are not compressed.
#pragma once

#include "codecs/codec_context.h"

namespace tiff {

[[nodiscard]] Status DecodeStored(CodecCall* context);
[[nodiscard]] Status EncodeStored(CodecCall* context);

} // namespace tiff
