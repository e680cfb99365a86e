// Pages that are being defined: their entry in the page table, single tags, and the sets of tags that
// pictures share.
#include "core/page_tags.h"
#include "core/errors.h"
#include "core/global_block.h"
#include "core/registry.h"
#include "core/scheme_tags.h"
#include "core/tag_block.h"
#include "tiff/define.h"
#include "tiff/files.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <initializer_list>
#include <iterator>

namespace tiff {

namespace {

constexpr uint32_t FIRST_CAPACITY = 100;
constexpr uint32_t BLOCK_SLACK = 1;
constexpr uint32_t STRIP_BYTES = 8192;
static_assert(sizeof(TiffPageGeometry) == 20);

GlobalBlock MakeTagBlock()
{
    GlobalBlock block(sizeof(TagBlock) + FIRST_CAPACITY + BLOCK_SLACK);
    if (Locked<TagBlock> tags(block.Get()); tags)
        tags->capacity = FIRST_CAPACITY;
    return block;
}

// Deliberate: the first entry that never had tags, even that of a page in the file. Callers that number their
// pages otherwise load them first.
uint32_t FirstFreePage(const PageEntry* pages, uint32_t pageCount)
{
    const auto* found =
        std::find_if(pages, pages + pageCount, [](const PageEntry& entry) { return !entry.tagBlock; });
    return static_cast<uint32_t>(found - pages);
}

int32_t AddPage(HGLOBAL file)
{
    uint32_t page;
    {
        Locked<TiffFileRecord> record(file);
        if (!record) {
            SetTiffError(error::InvalidHandle);
            return -1;
        }
        page = FirstFreePage(Pages(record.Get()), record->pageCount);
    }
    GlobalBlock block = MakeTagBlock();
    if (!block || !MakeRoomForPage(file)) {
        SetTiffError(error::NotEnoughMemory);
        return -1;
    }
    Locked<TiffFileRecord> record(file);
    if (!record || !RegisterPage(file, page, block.Get())) {
        SetTiffError(error::NotEnoughMemory);
        return -1;
    }
    ++record->pageCount;
    block.Release();
    return static_cast<int32_t>(page);
}

// Bytes of a page's records when a new one replaces that with the same tag, and whether they fit. A block
// never shrinks.
struct Need {
    uint64_t bytes;
    bool fits;
    bool tooManyTags;
};

Need Measure(HGLOBAL tagBlock, const TagRecord& record, uint64_t recordBytes)
{
    Locked<TagBlock> block(tagBlock);
    if (!block)
        return {UINT64_MAX, false, false};
    const size_t replaced = FindRecord(block.Get(), record.tag).size();
    const uint64_t bytes = block->used - replaced + recordBytes;
    return {bytes, bytes <= block->capacity, block->tagCount == UINT16_MAX && !replaced};
}

bool PutRecord(HGLOBAL file, uint32_t page, TagRecord record, const void* values)
{
    const auto entry = FindPage(file, page);
    if (!entry)
        return false;
    HGLOBAL tagBlock = entry->tagBlock;
    const uint64_t recordBytes = sizeof(record) + uint64_t{record.count} * ElementBytes(record.type);
    const Need need = Measure(tagBlock, record, recordBytes);
    if (need.tooManyTags || need.bytes > INT32_MAX)
        return false;
    // Room is made before the old record goes, so that a failure costs the page nothing.
    if (!need.fits) {
        HGLOBAL grown =
            GlobalReAlloc(tagBlock, static_cast<SIZE_T>(sizeof(TagBlock) + need.bytes + BLOCK_SLACK),
                          GMEM_MOVEABLE | GMEM_ZEROINIT);
        if (!grown || (grown != tagBlock && !RegisterPage(file, page, grown)))
            return false;
        tagBlock = grown;
    }
    Locked<TagBlock> block(tagBlock);
    if (!block)
        return false;
    if (!need.fits)
        block->capacity = static_cast<uint32_t>(need.bytes);
    record.length = static_cast<uint32_t>(recordBytes);
    RemoveRecord(block.Get(), record.tag);
    AppendRecord(block.Get(), record, values);
    return true;
}

// A page whose tags are being defined; after a failure no more are defined.
struct Definition {
    HGLOBAL file;
    uint32_t page;
    bool failed;
};

void Put(Definition& definition, uint16_t tag, uint16_t type, const void* values, size_t count)
{
    if (!definition.failed)
        definition.failed = !DefineTiffImageInfoBuffer(definition.file, definition.page, tag, values, type,
                                                       static_cast<uint32_t>(count));
}

// Deliberate: numbers above 65535 lose their high bits. Only the caller knows whether a page of that size is
// acceptable; it then defines the tag again.
void PutShorts(Definition& definition, uint16_t tag, std::initializer_list<uint32_t> values)
{
    std::array<uint16_t, 4> shorts;
    std::transform(values.begin(), values.end(), shorts.begin(),
                   [](uint32_t value) { return static_cast<uint16_t>(value); });
    Put(definition, tag, fieldtype::Short, shorts.data(), values.size());
}

void PutReferenceBlackWhite(Definition& definition)
{
    Put(definition, tag::ReferenceBlackWhite, fieldtype::Rational, fullRangeReference,
        std::size(fullRangeReference) / 2);
}

// Samples of 8 bits.
void PutSamples(Definition& definition, uint32_t count)
{
    if (count == 1)
        PutShorts(definition, tag::BitsPerSample, {8});
    else if (count == 3)
        PutShorts(definition, tag::BitsPerSample, {8, 8, 8});
    else
        PutShorts(definition, tag::BitsPerSample, {8, 8, 8, 8});
    PutShorts(definition, tag::SamplesPerPixel, {count});
}

struct Picture {
    uint32_t width, height, bits;
};

uint32_t RowsPerStrip(const Picture& picture)
{
    const uint64_t rowBytes = (uint64_t{picture.width} * picture.bits + 7) / 8;
    return std::max(std::min(static_cast<uint32_t>(STRIP_BYTES / rowBytes), picture.height), 1u);
}

void PutTiledPicture(Definition& definition, const Picture& picture)
{
    const uint32_t samples = picture.bits == 24 ? 3 : 1;
    PutShorts(definition, tag::ImageWidth, {picture.width});
    PutShorts(definition, tag::ImageLength, {picture.height});
    PutSamples(definition, samples);
    PutShorts(definition, tag::PlanarConfiguration, {1});
    PutShorts(definition, tag::TileWidth, {picture.width});
    PutShorts(definition, tag::TileLength, {picture.height});
    PutShorts(definition, tag::JpegProc, {1});
    PutShorts(definition, tag::JpegRestartInterval, {0});
    if (samples == 3) {
        PutShorts(definition, tag::YCbCrSubSampling, {2, 2});
        PutReferenceBlackWhite(definition);
    }
}

void PutPicture(Definition& definition, const Picture& picture, uint32_t rowsPerStrip)
{
    PutShorts(definition, tag::ImageWidth, {picture.width});
    PutShorts(definition, tag::ImageLength, {picture.height});
    PutShorts(definition, tag::RowsPerStrip, {rowsPerStrip});
    if (picture.bits == 24) {
        PutSamples(definition, 3);
        PutShorts(definition, tag::PlanarConfiguration, {1});
    } else {
        PutShorts(definition, tag::BitsPerSample, {picture.bits});
    }
}

void PutGrey16(Definition& definition, uint32_t largest)
{
    PutShorts(definition, tag::BitsPerSample, {16});
    PutShorts(definition, tag::SamplesPerPixel, {1});
    PutShorts(definition, tag::PlanarConfiguration, {1});
    PutShorts(definition, tag::MinSampleValue, {0});
    PutShorts(definition, tag::MaxSampleValue, {largest});
}

bool IsPictureDepth(uint32_t bits)
{
    return bits == 1 || bits == 4 || bits == 8 || bits == 16 || bits == 24;
}

} // namespace

Status DefineTag(HGLOBAL file, uint32_t page, const TagDefinition& defined)
{
    if (const Status status = PageStatus(file, page); status != error::None)
        return status;
    if ((!defined.values && defined.count > 0) || defined.tag > UINT16_MAX)
        return error::InvalidParameters;
    const TagRecord record{0, static_cast<uint16_t>(defined.tag), static_cast<uint16_t>(defined.type),
                           defined.count};
    return PutRecord(file, page, record, defined.values) ? error::None : error::NotEnoughMemory;
}

} // namespace tiff

using namespace tiff;

extern "C" int32_t DefineTiffImage(HGLOBAL file) noexcept
{
    return AddPage(file);
}

extern "C" int32_t DefineTiffImageInfoBuffer(HGLOBAL file, uint32_t page, uint32_t tag, const void* values,
                                             uint32_t type, uint32_t count) noexcept
{
    if (!IsTiffImageRegistered(file, page))
        return 0;
    const Status status = DefineTag(file, page, {tag, type, count, values});
    if (status != error::None)
        SetTiffError(status);
    return status == error::None;
}

extern "C" int32_t DefineTiffImageInfo(HGLOBAL file, uint32_t page, uint32_t tag, uint32_t type,
                                       uint64_t value) noexcept
{
    return DefineTiffImageInfoBuffer(file, page, tag, &value, type, 1);
}

extern "C" uint32_t DefineGeneralTags(HGLOBAL file, uint32_t page, const TiffPageGeometry* geometry) noexcept
{
    if (!geometry)
        return error::InvalidParameters;
    if (geometry->width <= 0)
        return error::TagsMissing;
    const Picture picture = {static_cast<uint32_t>(geometry->width),
                             static_cast<uint32_t>(std::abs(int64_t{geometry->height})),
                             uint32_t{geometry->planes} * geometry->bitsPerPlane};
    if (!IsPictureDepth(picture.bits))
        return error::ColourFormat;
    uint32_t compression = compression::Stored;
    if (const PageTags tags(file, page); tags)
        compression = tags.Value(tag::Compression, compression);
    else if (IsTiffImageRegistered(file, page))
        return Fail(error::NotEnoughMemory);
    Definition definition{file, page, false};
    switch (SchemeTagsOf(compression).picture) {
    case PictureTags::Strips:
        PutPicture(definition, picture, RowsPerStrip(picture));
        break;
    case PictureTags::OneStrip:
        PutPicture(definition, picture, picture.height);
        break;
    case PictureTags::Tiles:
        PutTiledPicture(definition, picture);
        break;
    }
    return definition.failed ? error::NotEnoughMemory : error::None;
}

extern "C" uint32_t DefineSpecialTags(HGLOBAL file, uint32_t page, uint32_t kind) noexcept
{
    Definition definition{file, page, false};
    switch (kind) {
    case TIFF_SAMPLES_GREY_16:
        PutGrey16(definition, 65535);
        break;
    case TIFF_SAMPLES_GREY_12:
        PutGrey16(definition, 4095);
        break;
    case TIFF_SAMPLES_CMYK:
        PutSamples(definition, 4);
        break;
    case TIFF_SAMPLES_YCBCR:
        PutShorts(definition, tag::YCbCrSubSampling, {1, 1});
        PutReferenceBlackWhite(definition);
        break;
    default:
        break;
    }
    return definition.failed ? error::NotEnoughMemory : error::None;
}

extern "C" uint32_t SetTiffImageDPI(HGLOBAL file, uint32_t page, uint32_t dpi) noexcept
{
    constexpr uint64_t one = uint64_t{1} << 32;
    const bool defined =
        DefineTiffImageInfo(file, page, tag::XResolution, fieldtype::Rational, one | (dpi & 0xFFFF)) &&
        DefineTiffImageInfo(file, page, tag::YResolution, fieldtype::Rational, one | dpi >> 16);
    if (defined)
        return error::None;
    SetTiffError(error::TagsMissing);
    return error::TagsMissing;
}
