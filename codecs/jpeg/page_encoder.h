// Pages to JPEG streams, one for each strip: grey from bytes, or colours from B, G, R.
#pragma once

#include "codecs/codec_table.h"

namespace tiff::jpeg {

// Describes the strips and defines the page's tables. Fails with 1.
[[nodiscard]] Status DescribeToEncode(CodecContext* context, HGLOBAL file, uint32_t page);

[[nodiscard]] Status EncodePage(CodecCall* call);

// The rows of a strip: as many as a stream can have, in whole MCUs.
inline constexpr uint32_t MOST_SIDE = 65535;
constexpr uint32_t RowsPerStrip(uint32_t rows)
{
    return rows <= MOST_SIDE ? rows : MOST_SIDE / 16 * 16;
}

} // namespace tiff::jpeg
