// The strips of a page: from its tags to a call, and from a call to its tags.
#pragma once

#include "codecs/codec_table.h"

namespace tiff {

// Finds the strips' offsets and the rows to decode. Fails with 1, 3 or 10.
[[nodiscard]] Status DescribeStripsToDecode(CodecContext* context, HGLOBAL file, uint32_t page,
                                            RowRange range);

// Defines the rows of a strip where the page has none, and makes empty lists for the strips to write. Fails
// with 1.
[[nodiscard]] Status DescribeStripsToEncode(CodecContext* context, HGLOBAL file, uint32_t page);

// Writes the lists to the tags. Fails with 1.
[[nodiscard]] Status DefineStrips(const CodecContext* context, HGLOBAL file, uint32_t page);

// Steps that tiles share: making empty lists for a count of parts, and writing one list to a tag.
[[nodiscard]] Status MakeLists(CodecContext* context, uint64_t count);
[[nodiscard]] bool DefineList(HGLOBAL file, uint32_t page, uint16_t tag, HGLOBAL block, uint32_t count);

// The number of parts of this size in a whole; 1 for a size of 0.
constexpr uint64_t PartsOf(uint32_t whole, uint32_t part)
{
    return part ? (uint64_t{whole} + part - 1) / part : 1;
}

} // namespace tiff
