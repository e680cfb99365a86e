// A page's way into the file: strips first, then their tags, then the directory, all through
// one open stream. Nothing of the file is locked while the line routine runs.
#include "codecs/buffers.h"
#include "codecs/codec_table.h"
#include "codecs/decode_driver.h"
#include "core/directory_writer.h"
#include "core/errors.h"
#include "core/open_file.h"
#include "core/tag_block.h"
#include "tiff/directory.h"
#include "tiff/pages.h"

#include <algorithm>

namespace tiff {

namespace {

constexpr uint32_t OPEN_RETRIES = 10;
constexpr uint32_t LIST_SLACK = 110;
constexpr uint64_t MOST_STRIPS = (INT32_MAX - LIST_SLACK) / 4; // that a tag's values have room for

bool IsOldJpeg(const CodecContext* context)
{
    return (context->compression & 0xFFFF) == compression::OldJpeg;
}

uint64_t PartsOf(uint32_t whole, uint32_t part)
{
    return part ? (uint64_t{whole} + part - 1) / part : 1;
}

void DescribeTiles(CodecContext* context, const PageTags& tags)
{
    context->tileWidth = tags.Value(tag::TileWidth, 0);
    context->tileLength = tags.Value(tag::TileLength, 0);
    context->tilesAcross = static_cast<uint32_t>(PartsOf(Width(context), context->tileWidth));
    context->tilesDown = static_cast<uint32_t>(PartsOf(Rows(context), context->tileLength));
    context->rowsPerStrip = context->tileLength ? context->tileLength : Rows(context);
    context->jpegProcess = tags.Value(tag::JpegProc, 1);
    context->planarConfiguration = tags.Value(tag::PlanarConfiguration, 1);
    context->restartInterval = tags.Value(tag::JpegRestartInterval, 0);
    for (uint32_t axis = 0; axis < 2; ++axis) {
        const uint32_t factor = tags.Value(tag::YCbCrSubSampling, 2, axis);
        context->subSampling[axis] = factor ? factor : 2;
    }
}

// A strip of no rows would never end: such a page becomes one strip.
uint64_t DescribeStrips(CodecContext* context, const PageTags& tags)
{
    if (IsOldJpeg(context)) {
        DescribeTiles(context, tags);
        return uint64_t{context->tilesAcross} * context->tilesDown;
    }
    const uint32_t rowsPerStrip = tags.Value(tag::RowsPerStrip, 1);
    context->rowsPerStrip = rowsPerStrip ? rowsPerStrip : Rows(context);
    return PartsOf(Rows(context), context->rowsPerStrip);
}

Status PrepareStrips(CodecContext* context, HGLOBAL file, uint32_t page)
{
    bool tellsRows;
    uint64_t count;
    {
        const PageTags tags(file, page);
        if (IsOldJpeg(context) && !tags.Find(tag::TileWidth))
            return error::OldJpegPage;
        tellsRows = IsOldJpeg(context) || tags.Value(tag::RowsPerStrip, 0) != 0;
        count = DescribeStrips(context, tags);
    }
    if (count > MOST_STRIPS)
        return error::NotEnoughMemory;
    // Readers take a page that does not tell for one strip: it must say what is done here.
    if (!tellsRows &&
        !DefineTiffImageInfo(file, page, tag::RowsPerStrip, fieldtype::Long, context->rowsPerStrip))
        return error::NotEnoughMemory;
    context->stripCount = static_cast<uint32_t>(count);
    context->stripOffsetsType = fieldtype::Long;
    context->stripOffsets = GlobalBlock(count * 4 + LIST_SLACK).Release();
    context->stripByteCounts = GlobalBlock(count * 4 + LIST_SLACK).Release();
    const bool ready = context->stripOffsets && context->stripByteCounts;
    return ready ? error::None : error::NotEnoughMemory;
}

bool DefineList(HGLOBAL file, uint32_t page, uint16_t tag, HGLOBAL block, uint32_t count)
{
    const Locked<uint8_t> values(block);
    return DefineTiffImageInfoBuffer(file, page, tag, values.Get(), fieldtype::Long, count);
}

// One offset for each sample, of the tables that the JPEG library has left in the context.
bool DefineJpegTables(const CodecContext* context, HGLOBAL file, uint32_t page)
{
    const struct {
        uint16_t tag;
        HGLOBAL block;
    } tables[] = {{tag::JpegQTables, context->quantisationTables},
                  {tag::JpegAcTables, context->acTables},
                  {tag::JpegDcTables, context->dcTables}};
    const uint32_t samples = PageTags(file, page).Value(tag::SamplesPerPixel, 1);
    return std::all_of(std::begin(tables), std::end(tables), [=](const auto& table) {
        const uint64_t held = table.block ? GlobalSize(table.block) / 4 : 0;
        const auto count = static_cast<uint32_t>(std::min<uint64_t>(samples, held));
        return count == 0 || DefineList(file, page, table.tag, table.block, count);
    });
}

Status DefineStrips(const CodecContext* context, HGLOBAL file, uint32_t page)
{
    const bool tiled = IsOldJpeg(context);
    const uint16_t offsets = tiled ? tag::TileOffsets : tag::StripOffsets;
    const uint16_t byteCounts = tiled ? tag::TileByteCounts : tag::StripByteCounts;
    const bool defined = DefineList(file, page, offsets, context->stripOffsets, context->stripCount) &&
                         DefineList(file, page, byteCounts, context->stripByteCounts, context->stripCount) &&
                         (!tiled || DefineJpegTables(context, file, page));
    return defined ? error::None : error::NotEnoughMemory;
}

Status RunEncoder(CodecContext* context)
{
    if (const Status status = Encode(context); status != error::None)
        return status;
    // A line routine that stops with the very status that says all rows are done ends a codec
    // as if they were. A page with strips missing must not be linked.
    if (!IsOldJpeg(context) && context->strip < context->stripCount)
        return ALL_ROWS_DONE;
    return FlushCodeBuffer(context);
}

// The open flags change only with the directory. A new file that fails here keeps the flag that
// says it has no header, so that the next try begins it afresh.
Status EncodePage(CodecContext* context, HGLOBAL file, uint32_t page)
{
    if (const Status status = DescribeLines(context, file, page); status != error::None)
        return status;
    if (const Status status = PrepareStrips(context, file, page); status != error::None)
        return status;
    WritingStream stream(file, OPEN_RETRIES);
    if (!stream)
        return TiffError();
    context->stream = stream.Get();
    bool linked = false;
    Status status = BeginPage(stream.Get(), file);
    if (status == error::None)
        status = RunEncoder(context);
    if (status == error::None)
        status = DefineStrips(context, file, page);
    if (status == error::None)
        status = WriteDirectory(stream.Get(), file, page, linked);
    if (status == error::None)
        stream.Commit();
    else if (!linked)
        stream.TakeBack();
    return status;
}

} // namespace

} // namespace tiff

using namespace tiff;

extern "C" int32_t EncodeTiffImage(HGLOBAL file, uint32_t page, void* userData,
                                   TiffLineCallback lineCallback) noexcept
{
    CodecContext context{};
    const ContextBlocks blocks(&context);
    context.userData = userData;
    context.lineCallback = lineCallback;
    const Status status = lineCallback ? EncodePage(&context, file, page) : error::InvalidParameters;
    StoreLastError(status);
    return status == error::None;
}
