// Decoders of modified Huffman, Group 3 and Group 4 code.
#pragma once

#include "codecs/codec_context.h"

namespace tiff {

[[nodiscard]] Status DecodeModifiedHuffman(CodecCall* context);
[[nodiscard]] Status DecodeGroup3(CodecCall* context);
[[nodiscard]] Status DecodeGroup3TwoDimensional(CodecCall* context);
[[nodiscard]] Status DecodeGroup4(CodecCall* context);

// Group 4 code in records. Loads the buffers and the first record itself.
[[nodiscard]] Status DecodeMmrRecords(CodecCall* context);

// The same by scheme. CarefulOnly switches the fast loops off; rows and status must not change. For tests
// and fuzzers.
enum class CcittScheme {
    ModifiedHuffman,
    Group3,
    Group3TwoDimensional,
    Group4,
    MmrRecords,
    Group4Aligned, // every row begins on a byte, which no page of a TIFF file can say
};
enum class CcittLoops { All, CarefulOnly };

[[nodiscard]] Status DecodeCcitt(CodecCall* context, CcittScheme scheme, CcittLoops loops = CcittLoops::All);

} // namespace tiff
