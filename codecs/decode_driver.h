// From a page's tags to a codec context.
#pragma once

#include "codecs/codec_context.h"
#include "core/win32.h"

namespace tiff {

// Fills in what both directions need: line format, sample size, byte order, compression code
// and fill order.
[[nodiscard]] Status DescribeLines(CodecContext* context, HGLOBAL file, uint32_t page);

} // namespace tiff
