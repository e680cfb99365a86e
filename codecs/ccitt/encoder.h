// Encoders of modified Huffman, Group 3 and Group 4 code.
#pragma once

#include "codecs/codec_context.h"

namespace tiff {

[[nodiscard]] Status EncodeModifiedHuffman(CodecCall* context);
[[nodiscard]] Status EncodeGroup3(CodecCall* context);
[[nodiscard]] Status EncodeGroup3TwoDimensional(CodecCall* context);
[[nodiscard]] Status EncodeGroup4(CodecCall* context);

// Group 4 code in records, including the last.
[[nodiscard]] Status EncodeMmrRecords(CodecCall* context);

} // namespace tiff
