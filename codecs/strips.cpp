#include "codecs/strips.h"

#include "core/error_detail.h"
#include "core/global_block.h"
#include "tiff/define.h"
#include "tiff/directory.h"

#include <algorithm>

namespace tiff {

static constexpr uint32_t LIST_SLACK = 110;
static constexpr uint64_t MOST_PARTS = (INT32_MAX - LIST_SLACK) / 4; // that fit into a tag's values

Status DescribeStripsToDecode(CodecContext* context, HGLOBAL file, uint32_t page, RowRange range)
{
    const PageTags tags(file, page);
    if (!tags)
        return error::NotEnoughMemory;
    if (!tags.Find(tag::StripOffsets)) {
        return MissingTag(tag::StripOffsets);
    }
    if (!GetTiffImageInfoBuffer(file, page, tag::StripOffsets, &context->stripOffsets,
                                &context->stripOffsetsType, &context->stripCount))
        return error::NotEnoughMemory;
    // Offsets of other types are also read as 32-bit numbers, as many as their bytes make.
    const uint32_t type = context->stripOffsetsType;
    if (type != fieldtype::Short && type != fieldtype::Long)
        context->stripCount = static_cast<uint32_t>(uint64_t{context->stripCount} * ElementBytes(type) / 4);

    const uint32_t rows = Rows(context);
    const uint32_t rowsPerStrip = tags.Value(tag::RowsPerStrip, rows);
    context->rowsPerStrip = rowsPerStrip == 0 || rowsPerStrip >= rows ? rows : rowsPerStrip;
    if (range.firstStrip >= context->stripCount)
        return error::IndexOutOfRange;
    const uint64_t firstRow = uint64_t{range.firstStrip} * context->rowsPerStrip;
    context->strip = range.firstStrip;
    context->row = static_cast<uint32_t>(std::min<uint64_t>(firstRow, rows));
    if (range.rowCount != 0 && firstRow + range.rowCount < rows)
        context->lineFormat.biHeight = static_cast<int32_t>(firstRow + range.rowCount);
    return error::None;
}

Status MakeLists(CodecContext* context, uint64_t count)
{
    if (count > MOST_PARTS)
        return error::NotEnoughMemory;
    context->stripCount = static_cast<uint32_t>(count);
    context->stripOffsetsType = fieldtype::Long;
    context->stripOffsets = GlobalBlock(count * 4 + LIST_SLACK).Release();
    context->stripByteCounts = GlobalBlock(count * 4 + LIST_SLACK).Release();
    const bool ready = context->stripOffsets && context->stripByteCounts;
    return ready ? error::None : error::NotEnoughMemory;
}

// A strip without rows would never end: such a page becomes one strip.
Status DescribeStripsToEncode(CodecContext* context, HGLOBAL file, uint32_t page)
{
    uint32_t rowsPerStrip = 0;
    bool saysRows = false;
    if (const PageTags tags(file, page); tags) {
        rowsPerStrip = tags.Value(tag::RowsPerStrip, 1);
        saysRows = tags.Value(tag::RowsPerStrip, 0) != 0;
    } else {
        return error::NotEnoughMemory;
    }
    context->rowsPerStrip = rowsPerStrip ? rowsPerStrip : Rows(context);
    if (const Status status = MakeLists(context, PartsOf(Rows(context), context->rowsPerStrip));
        status != error::None || saysRows)
        return status;
    // Readers take a page without RowsPerStrip for one strip, so the tag must be written.
    return DefineTiffImageInfo(file, page, tag::RowsPerStrip, fieldtype::Long, context->rowsPerStrip)
               ? error::None
               : error::NotEnoughMemory;
}

bool DefineList(HGLOBAL file, uint32_t page, uint16_t tag, HGLOBAL block, uint32_t count)
{
    const Locked<uint8_t> values(block);
    return DefineTiffImageInfoBuffer(file, page, tag, values.Get(), fieldtype::Long, count);
}

Status DefineStrips(const CodecContext* context, HGLOBAL file, uint32_t page)
{
    const bool defined =
        DefineList(file, page, tag::StripOffsets, context->stripOffsets, context->stripCount) &&
        DefineList(file, page, tag::StripByteCounts, context->stripByteCounts, context->stripCount);
    return defined ? error::None : error::NotEnoughMemory;
}

} // namespace tiff
