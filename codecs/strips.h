// The strips of a page: from its tags to a call, and from a call to its tags.
#pragma once

#include "codecs/codec_table.h"

namespace tiff {

// The strips' offsets, and the rows from the first strip wanted. 1, 3 or 10.
[[nodiscard]] Status DescribeStripsToDecode(CodecContext* context, HGLOBAL file, uint32_t page,
                                            RowRange range);

// Rows to a strip, defined where the page does not say, and empty lists for what will be written. 1.
[[nodiscard]] Status DescribeStripsToEncode(CodecContext* context, HGLOBAL file, uint32_t page);

// The lists as tags. 1.
[[nodiscard]] Status DefineStrips(const CodecContext* context, HGLOBAL file, uint32_t page);

// Steps that tiles take too: empty lists for a count of parts, and one list as a tag.
[[nodiscard]] Status MakeLists(CodecContext* context, uint64_t count);
[[nodiscard]] bool DefineList(HGLOBAL file, uint32_t page, uint16_t tag, HGLOBAL block, uint32_t count);

// Parts of this size in a whole; 1 for parts of no size.
constexpr uint64_t PartsOf(uint32_t whole, uint32_t part)
{
    return part ? (uint64_t{whole} + part - 1) / part : 1;
}

} // namespace tiff
