// Pages of JPEG streams, one for each strip.
#pragma once

#include "codecs/line_target.h"
#include "core/win32.h"

namespace tiff::jpeg {

// Decodes a loaded page. Lines have a byte for each sample, colours as B, G, R. When data end early all rows
// behind the last that is known are zero, and the status is 5. Fails as DecodeStream, and with 10 without
// strips.
[[nodiscard]] Status DecodePage(HGLOBAL file, uint32_t page, const LineTarget& target);

} // namespace tiff::jpeg
