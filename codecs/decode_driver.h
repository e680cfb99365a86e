// From a page's tags to the calls of a line routine.
#pragma once

#include "codecs/line_target.h"
#include "core/win32.h"

namespace tiff {

// Fills in the fields that both directions need: line format, sample size, byte order, compression code and
// fill order.
[[nodiscard]] Status DescribeLines(CodecContext* context, HGLOBAL file, uint32_t page);

// Decodes rows of a loaded page as DecodeTiffImage does; 29 without a routine.
[[nodiscard]] Status DecodePage(HGLOBAL file, uint32_t page, uint32_t firstStrip, uint32_t rowCount,
                                const LineTarget& target);

} // namespace tiff
