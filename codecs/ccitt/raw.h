// The parts of coding bare streams that both directions share.
#pragma once

#include "codecs/codec_table.h"
#include "codecs/encode_driver.h"
#include "codecs/line_target.h"

namespace tiff {

// Bilevel rows in one strip from the stream's position on.
struct RawImage {
    TiffStream stream;
    uint32_t width, rows;
    uint32_t compression;
    uint32_t fillOrder, byteOrder; // unknown values mean 1 and Intel
    uint32_t offset = 0;           // decoding: start of the code; 0 or beyond the data: current position
};

// Fails with 1 for a picture too wide.
[[nodiscard]] Status DescribeRawImage(CodecContext* context, const RawImage& image);

// Decodes with the scheme of the image, or with another routine. Also fails with 29 without a line
// routine and with 6 when the stream has no size.
[[nodiscard]] Status DecodeRawImage(const RawImage& image, const LineTarget& target,
                                    CodecRoutine decode = Decode);

// Encodes at the stream's position. Also fails with 29 without a line routine; what was written stays.
[[nodiscard]] Status EncodeRawImage(const RawImage& image, const LineFeed& feed,
                                    CodecRoutine encode = Encode);

} // namespace tiff
