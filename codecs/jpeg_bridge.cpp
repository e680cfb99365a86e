#include "codecs/jpeg_bridge.h"

#include "core/global_block.h"
#include "core/sibling_library.h"
#include "core/tag_block.h"
#include "tiff/directory.h"

#include <algorithm>
#include <cstring>

namespace tiff {

namespace {

constexpr uint32_t UNKNOWN_PROCESS = UINT32_MAX;
constexpr uint32_t LAST_PROCESS = 1; // 0 and 1 are known

uint32_t TilesAlong(uint32_t pixels, uint32_t tilePixels)
{
    return tilePixels ? static_cast<uint32_t>((uint64_t{pixels} + tilePixels - 1) / tilePixels) : 1;
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

Status ReadOldJpegTags(CodecContext* context, HGLOBAL file, uint32_t page)
{
    const PageTags tags(file, page);
    if (!tags.Find(tag::JpegProc) || !tags.Find(tag::TileWidth) || !tags.Find(tag::TileLength))
        return error::TagsMissing;
    context->jpegProcess = tags.Value(tag::JpegProc, UNKNOWN_PROCESS);
    if (context->jpegProcess > LAST_PROCESS)
        return error::UnknownCompression;
    context->tileWidth = tags.Value(tag::TileWidth, 0);
    context->tileLength = tags.Value(tag::TileLength, 0);
    context->tilesAcross = TilesAlong(Width(context), context->tileWidth);
    context->tilesDown = TilesAlong(Rows(context), context->tileLength);
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
            return error::TagsMissing;
        if (!GetTiffImageInfoBuffer(file, page, list.tag, &list.block, list.type, nullptr))
            return error::NotEnoughMemory;
    }
    // Never more tiles than there are offsets, whatever the page's size says. They are read as 16-bit
    // numbers under one type only, and as 32-bit ones under any other.
    const auto offsets = tags.Find(tag::TileOffsets);
    const uint64_t offsetCount =
        offsets->type == fieldtype::Short ? offsets->count : offsets->values.size() / sizeof(uint32_t);
    context->stripCount =
        static_cast<uint32_t>(std::min(uint64_t{context->tilesAcross} * context->tilesDown, offsetCount));
    context->planarConfiguration = tags.Value(tag::PlanarConfiguration, 1);
    context->restartInterval = tags.Value(tag::JpegRestartInterval, 0);
    if (context->lineFormat.biBitCount > 8)
        ReadColourTags(context, tags);
    return error::None;
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

Status DecodeOldJpeg(CodecContext* context)
{
    return RunJpegFunction("JPEGDecoder", context);
}

Status EncodeOldJpeg(CodecContext* context)
{
    return RunJpegFunction("JPEGEncoder", context);
}

} // namespace tiff
