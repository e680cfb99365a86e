// Encoders of modified Huffman, Group 3 and Group 4 code.
#pragma once

#include "codecs/codec_context.h"

namespace tiff {

[[nodiscard]] Status EncodeModifiedHuffman(CodecContext* context);
[[nodiscard]] Status EncodeGroup3(CodecContext* context);
[[nodiscard]] Status EncodeGroup3TwoDimensional(CodecContext* context);
[[nodiscard]] Status EncodeGroup4(CodecContext* context);

// Group 4 code framed in records, the last one written too.
[[nodiscard]] Status EncodeMmrRecords(CodecContext* context);

} // namespace tiff
