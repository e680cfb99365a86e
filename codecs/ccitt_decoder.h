// Decoders of modified Huffman, Group 3 and Group 4 code.
#pragma once

#include "codecs/codec_context.h"

namespace tiff {

[[nodiscard]] Status DecodeModifiedHuffman(CodecContext* context);
[[nodiscard]] Status DecodeGroup3(CodecContext* context);
[[nodiscard]] Status DecodeGroup3TwoDimensional(CodecContext* context);
[[nodiscard]] Status DecodeGroup4(CodecContext* context);

// Group 4 code framed in records; the buffers and the first record are loaded by it.
[[nodiscard]] Status DecodeMmrRecords(CodecContext* context);

} // namespace tiff
