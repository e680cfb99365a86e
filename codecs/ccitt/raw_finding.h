// Finds out how raw fax code is to be read.
#pragma once

#include "codecs/line_target.h"
#include "tiff/raw_fax.h"

#include <span>

namespace tiff {

// Fills the unknown values of the record and its results. Fails with 1, with 12 when no row can be decoded,
// and with 6 when there is no stream for the bytes.
[[nodiscard]] Status FindOutRawFax(std::span<const uint8_t> code, TiffRawFax& fax);

// Decodes as many rows as were found out.
[[nodiscard]] Status DecodeRawFax(std::span<const uint8_t> code, const TiffRawFax& fax,
                                  const LineTarget& target);

} // namespace tiff
