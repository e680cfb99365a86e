// What both directions need to run codecs over a bare stream.
#pragma once

#include "codecs/codec_context.h"

namespace tiff {

struct RawImage {
    TiffStream stream;
    uint32_t width, rows;
    uint32_t compression;
    uint32_t fillOrder, byteOrder; // any values: unknown ones mean 1 and Intel
    void* userData;
    TiffLineCallback lineCallback;
};

// Describes the image to a context as one strip of bilevel rows.
[[nodiscard]] Status DescribeRawImage(CodecContext* context, const RawImage& image);

} // namespace tiff
