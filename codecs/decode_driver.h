// From a page's tags to a codec context.
#pragma once

#include "codecs/codec_context.h"
#include "core/win32.h"

namespace tiff {

// Fills in what both directions need: line format, sample size, byte order, compression code
// and fill order.
[[nodiscard]] Status DescribeLines(CodecContext* context, HGLOBAL file, uint32_t page);

struct LineTarget {
    TiffLineCallback routine;
    void* userData;
    uint32_t bytesRead = 0;            // of a line, by a routine that leaves lines as they are
    const RowsInPlace* rows = nullptr; // that the routine does nothing but copy these bytes to
};

// As DecodeTiffImage.
int32_t DecodePage(HGLOBAL file, uint32_t page, uint32_t firstStrip, uint32_t rowCount,
                   const LineTarget& target);

} // namespace tiff
