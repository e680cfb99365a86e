#include "codecs/old_jpeg.h"

#include "codecs/strips.h"
#include "core/error_detail.h"
#include "core/global_block.h"
#include "core/sibling_library.h"
#include "tiff/directory.h"

#include <algorithm>
#include <cstring>

namespace tiff {

namespace {

constexpr uint32_t UNKNOWN_PROCESS = UINT32_MAX;
constexpr uint32_t LAST_PROCESS = 1; // 0 and 1 are known

void MeasureTiles(CodecContext* context, const PageTags& tags)
{
    context->tileWidth = tags.Value(tag::TileWidth, 0);
    context->tileLength = tags.Value(tag::TileLength, 0);
    context->tilesAcross = static_cast<uint32_t>(PartsOf(Width(context), context->tileWidth));
    context->tilesDown = static_cast<uint32_t>(PartsOf(Rows(context), context->tileLength));
    context->planarConfiguration = tags.Value(tag::PlanarConfiguration, 1);
    context->restartInterval = tags.Value(tag::JpegRestartInterval, 0);
}

void ReadColourTags(CodecContext* context, const PageTags& tags)
{
    for (uint32_t axis = 0; axis < 2; ++axis)
        context->subSampling[axis] = tags.Value(tag::YCbCrSubSampling, 2, axis);
    for (uint32_t index = 0; index < std::size(fullRangeReference); ++index)
        context->referenceBlackWhite[index] =
            tags.Value(tag::ReferenceBlackWhite, fullRangeReference[index], index);
}

} // namespace

bool HasNoTiles(const PageTags& tags)
{
    return !tags.Find(tag::TileWidth);
}

Status DescribeTilesToDecode(CodecContext* context, HGLOBAL file, uint32_t page, RowRange)
{
    const PageTags tags(file, page);
    if (!tags.Find(tag::JpegProc) || !tags.Find(tag::TileWidth) || !tags.Find(tag::TileLength))
        return tags ? error::TagsMissing : error::NotEnoughMemory;
    context->jpegProcess = tags.Value(tag::JpegProc, UNKNOWN_PROCESS);
    if (context->jpegProcess > LAST_PROCESS)
        return error::UnknownCompression;
    MeasureTiles(context, tags);
    context->rowsPerStrip = context->tileLength;

    const struct {
        uint16_t tag;
        HGLOBAL& block;
        uint32_t* type;
    } lists[] = {{tag::TileOffsets, context->stripOffsets, &context->stripOffsetsType},
                 {tag::TileByteCounts, context->stripByteCounts, nullptr},
                 {tag::JpegQTables, context->quantisationTables, nullptr},
                 {tag::JpegAcTables, context->acTables, nullptr},
                 {tag::JpegDcTables, context->dcTables, nullptr}};
    for (const auto& list : lists) {
        if (!tags.Find(list.tag))
            return MissingTag(list.tag);
        if (!GetTiffImageInfoBuffer(file, page, list.tag, &list.block, list.type, nullptr))
            return error::NotEnoughMemory;
    }
    // Never more tiles than offsets, whatever size the page claims. SHORTs are read as 16-bit numbers, any
    // other type as 32-bit ones.
    const auto offsets = tags.Find(tag::TileOffsets);
    const uint64_t offsetCount =
        offsets->type == fieldtype::Short ? offsets->count : offsets->values.size() / sizeof(uint32_t);
    context->stripCount =
        static_cast<uint32_t>(std::min(uint64_t{context->tilesAcross} * context->tilesDown, offsetCount));
    if (context->lineFormat.biBitCount > 8)
        ReadColourTags(context, tags);
    return error::None;
}

Status DescribeTilesToEncode(CodecContext* context, HGLOBAL file, uint32_t page)
{
    const PageTags tags(file, page);
    if (!tags)
        return error::NotEnoughMemory;
    MeasureTiles(context, tags);
    context->rowsPerStrip = context->tileLength ? context->tileLength : Rows(context);
    context->jpegProcess = tags.Value(tag::JpegProc, 1);
    for (uint32_t axis = 0; axis < 2; ++axis) {
        const uint32_t factor = tags.Value(tag::YCbCrSubSampling, 2, axis);
        context->subSampling[axis] = factor ? factor : 2;
    }
    return MakeLists(context, uint64_t{context->tilesAcross} * context->tilesDown);
}

// One offset for each sample, of the tables that the JPEG library put into the context.
static bool DefineTables(const CodecContext* context, HGLOBAL file, uint32_t page)
{
    const struct {
        uint16_t tag;
        HGLOBAL block;
    } tables[] = {{tag::JpegQTables, context->quantisationTables},
                  {tag::JpegAcTables, context->acTables},
                  {tag::JpegDcTables, context->dcTables}};
    uint32_t samples = 0;
    if (const PageTags tags(file, page); tags)
        samples = tags.Value(tag::SamplesPerPixel, 1);
    else
        return false;
    return std::all_of(std::begin(tables), std::end(tables), [=](const auto& table) {
        const uint64_t held = table.block ? GlobalSize(table.block) / 4 : 0;
        const auto count = static_cast<uint32_t>(std::min<uint64_t>(samples, held));
        return count == 0 || DefineList(file, page, table.tag, table.block, count);
    });
}

Status DefineTiles(const CodecContext* context, HGLOBAL file, uint32_t page)
{
    const bool defined =
        DefineList(file, page, tag::TileOffsets, context->stripOffsets, context->stripCount) &&
        DefineList(file, page, tag::TileByteCounts, context->stripByteCounts, context->stripCount) &&
        DefineTables(context, file, page);
    return defined ? error::None : error::NotEnoughMemory;
}

static Status RunJpegFunction(const char* name, CodecContext* context)
{
    Status status = error::None;
    Module held;
    const FARPROC function = FindJpegFunction(name, held, status);
    if (!function)
        return status;
    using JpegCodec = uint32_t (*)(CodecContext*);
    return reinterpret_cast<JpegCodec>(reinterpret_cast<void*>(function))(context);
}

Status DecodeOldJpeg(CodecCall* call)
{
    return RunJpegFunction("JPEGDecoder", call);
}

Status EncodeOldJpeg(CodecCall* call)
{
    return RunJpegFunction("JPEGEncoder", call);
}

} // namespace tiff
