// What a page's tags say: single values, arrays, size, resolution and colours.
#include "core/image_description.h"
#include "core/desktop.h"
#include "core/error_detail.h"
#include "core/errors.h"
#include "core/registry.h"
#include "tiff/directory.h"

#include <algorithm>
#include <cmath>

namespace tiff {

namespace {

constexpr uint32_t LENGTH_OF_UNMEASURED_PAGE = 1000;
constexpr double CENTIMETRES_PER_METRE = 100.0;
constexpr double CENTIMETRES_PER_INCH = 2.54;

struct Resolution {
    float horizontal, vertical; // dots per unit
    uint32_t unit;
};

float Ratio(const PageTags& tags, uint32_t tag, uint32_t screen)
{
    const auto found = tags.Find(tag);
    if (!found)
        return static_cast<float>(screen);
    const uint32_t denominator = found->type == fieldtype::Rational ? found->Number(1).value_or(1) : 1;
    return static_cast<float>(found->Number(0).value_or(0)) /
           static_cast<float>(denominator ? denominator : 1);
}

Resolution ResolutionOf(const PageTags& tags)
{
    DotsPerInch screen{};
    if (!tags.Find(tag::XResolution) || !tags.Find(tag::YResolution))
        screen = ScreenResolution();
    return {Ratio(tags, tag::XResolution, screen.horizontal), Ratio(tags, tag::YResolution, screen.vertical),
            tags.Value(tag::ResolutionUnit, unit::Inch)};
}

int32_t Round(double value)
{
    return static_cast<int32_t>(std::min(value + 0.5, 2147483647.0));
}

int32_t DotsPerMetre(float resolution, uint32_t in)
{
    return Round(resolution * (in == unit::Centimetre ? CENTIMETRES_PER_METRE : INCHES_PER_METRE));
}

uint32_t RoundedDotsPerInch(float resolution, uint32_t in)
{
    const double dots = in == unit::Centimetre ? resolution * CENTIMETRES_PER_INCH : double{resolution};
    return static_cast<uint32_t>(std::min(dots + 0.5, 4294967295.0)) & 0xFFFF;
}

// The number of colours in a page's header; 16-bit grey is shown in 256 greys.
uint32_t ColourCount(uint32_t bitCount, uint32_t photometric)
{
    if (bitCount <= 8)
        return 1u << bitCount;
    return bitCount == 16 && photometric <= photometric::BlackIsZero ? 256 : 0;
}

bool IsBitCount(uint64_t bits)
{
    return bits == 1 || bits == 4 || bits == 8 || bits == 16 || bits == 24 || bits == 32;
}

Status Describe(const PageTags& tags, BITMAPINFOHEADER& header)
{
    header.biSize = sizeof(header);
    header.biPlanes = 1;
    header.biCompression = 0;
    header.biSizeImage = 0;
    if (!tags)
        return error::NotRegistered;
    const auto width = tags.Find(tag::ImageWidth);
    const auto length = tags.Find(tag::ImageLength);
    if (!width || !length)
        return MissingTag(width ? tag::ImageLength : tag::ImageWidth);
    header.biWidth = static_cast<int32_t>(width->Number(0).value_or(0));
    header.biHeight = static_cast<int32_t>(length->Number(0).value_or(0));
    if (header.biHeight == 0)
        header.biHeight = LENGTH_OF_UNMEASURED_PAGE; // some fax software leaves it out
    if (tags.Value(tag::PlanarConfiguration, 1) != 1) {
        NoteTag(error::ColourFormat, tag::PlanarConfiguration);
        return error::ColourFormat;
    }
    const uint32_t sampleBits = tags.Value(tag::BitsPerSample, 1);
    const uint64_t bits = uint64_t{sampleBits} * tags.Value(tag::SamplesPerPixel, 1);
    if (!IsBitCount(bits)) {
        NoteTag(error::ColourFormat, IsBitCount(sampleBits) ? tag::SamplesPerPixel : tag::BitsPerSample);
        return error::ColourFormat;
    }
    header.biBitCount = static_cast<uint16_t>(bits);
    header.biClrUsed = header.biClrImportant =
        ColourCount(header.biBitCount, tags.Value(tag::PhotometricInterpretation, 0));

    const Resolution resolution = ResolutionOf(tags);
    header.biXPelsPerMeter = DotsPerMetre(resolution.horizontal, resolution.unit);
    header.biYPelsPerMeter = DotsPerMetre(resolution.vertical, resolution.unit);
    return error::None;
}

RGBQUAD Grey(uint32_t level)
{
    const auto byte = static_cast<uint8_t>(level);
    return {byte, byte, byte, 0};
}

void FillGreys(std::span<RGBQUAD> colours, uint32_t important, bool whiteFirst)
{
    const auto count = static_cast<uint32_t>(colours.size());
    const uint32_t step = count == 2 ? 255 : important / count * (256 / important);
    for (uint32_t index = 0; index < count; ++index)
        colours[index] = Grey(whiteFirst ? 255 - index * step : index * step);
}

// Colours that a short map lacks stay black.
bool FillFromMap(std::span<RGBQUAD> colours, const PageTags& tags)
{
    const auto map = tags.Find(tag::ColorMap);
    if (!map || map->type != fieldtype::Short)
        return false;
    const uint32_t mapped = std::min(static_cast<uint32_t>(colours.size()), map->count / 3);
    const auto level = [&](uint32_t index) {
        return static_cast<uint8_t>(map->Number(index).value_or(0) >> 8);
    };
    for (uint32_t index = 0; index < mapped; ++index)
        colours[index] = {level(2 * mapped + index), level(mapped + index), level(index), 0};
    return true;
}

// The list of tags as 32-bit numbers.
GlobalBlock ListTags(const PageTags& tags)
{
    GlobalBlock block(uint64_t{tags.Count()} * sizeof(uint32_t));
    Locked<uint32_t> numbers(block.Get());
    if (!numbers)
        return {};
    uint32_t position = 0;
    for (uint32_t index = 0; index < tags.Count(); ++index)
        if (const auto record = tags.Next(position))
            numbers[index] = record->tag;
    numbers.Unlock();
    return block;
}

GlobalBlock CopyValues(std::span<const uint8_t> values)
{
    GlobalBlock block(values.size());
    Locked<uint8_t> target(block.Get());
    if (!target)
        return {};
    std::memcpy(target.Get(), values.data(), values.size());
    target.Unlock();
    return block;
}

} // namespace

void FillPlainColours(std::span<RGBQUAD> colours, uint32_t important, uint32_t photometric)
{
    switch (photometric) {
    case photometric::Rgb:
    case photometric::Separated:
    case photometric::YCbCr:
        return;
    case photometric::WhiteIsZero:
    case photometric::Mask:
        return FillGreys(colours, important, true);
    case photometric::BlackIsZero:
        return FillGreys(colours, important, false);
    default:
        if (colours.size() == 2)
            FillGreys(colours, important, true);
    }
}

Status DescribeImage(const PageTags& tags, BITMAPINFOHEADER& header)
{
    return Describe(tags, header);
}

Status DescribeColours(const PageTags& tags, const BITMAPINFOHEADER& header, std::span<RGBQUAD> colours)
{
    uint32_t photometric = tags.Value(tag::PhotometricInterpretation, UINT32_MAX);
    if (header.biBitCount == 32 && photometric != photometric::Separated)
        return error::ColourFormat;
    if (header.biClrUsed == 0 && photometric != photometric::Separated && photometric != photometric::YCbCr)
        photometric = photometric::Rgb;
    colours = colours.first(header.biClrUsed);
    // Deliberate: two colours are white and black whatever the map holds, but the map must exist.
    if (photometric == photometric::Palette && !FillFromMap(colours, tags))
        return MissingTag(tag::ColorMap);
    FillPlainColours(colours, header.biClrImportant, photometric);
    return error::None;
}

static int32_t MissTag(HGLOBAL file, uint32_t page, Status status, uint32_t tag)
{
    NoteTag(status, tag);
    NotePage(status, file, page);
    SetTiffError(status);
    return 0;
}

} // namespace tiff

using namespace tiff;

extern "C" int32_t GetTiffImageInfo(HGLOBAL file, uint32_t page, uint32_t tag, void* out) noexcept
{
    if (!IsTiffImageRegistered(file, page))
        return 0;
    const PageTags tags(file, page);
    const auto found = tags.Find(tag);
    if (!found) {
        return MissTag(file, page, tags ? error::TagNotDefined : error::NotEnoughMemory, tag);
    }
    if (!out)
        return 1;
    const uint32_t first = found->Number(0).value_or(0), second = found->Number(1).value_or(0);
    auto* target = static_cast<uint8_t*>(out);
    switch (found->type) {
    case fieldtype::Byte:
        *target = static_cast<uint8_t>(first);
        break;
    case fieldtype::Rational:
        std::memcpy(target + sizeof(first), &second, sizeof(second));
        [[fallthrough]];
    case fieldtype::Short:
    case fieldtype::Long:
        std::memcpy(target, &first, sizeof(first));
        break;
    default:
        break;
    }
    return 1;
}

extern "C" int32_t GetTiffImageInfoBuffer(HGLOBAL file, uint32_t page, uint32_t tag, HGLOBAL* outBlock,
                                          uint32_t* outType, uint32_t* outCount) noexcept
{
    if (!IsTiffImageRegistered(file, page))
        return 0;
    const PageTags tags(file, page);
    const auto found = tag ? tags.Find(tag) : std::nullopt;
    if (!tags || (tag && !found)) {
        return MissTag(file, page, tags ? error::TagNotDefined : error::NotEnoughMemory, tag);
    }
    if (outBlock) {
        GlobalBlock block = found ? CopyValues(found->values) : ListTags(tags);
        if (!block) {
            SetTiffError(error::NotEnoughMemory);
            return 0;
        }
        *outBlock = block.Release();
    }
    if (outType)
        *outType = !found ? fieldtype::Long : tag == tag::JpegTables ? fieldtype::Undefined : found->type;
    if (outCount)
        *outCount = found ? found->count : tags.Count();
    return 1;
}

extern "C" uint32_t GetTiffDimensions(HGLOBAL file, uint32_t page, BITMAPINFOHEADER* header) noexcept
{
    if (!header)
        return Fail(error::InvalidParameters);
    const PageTags tags(file, page);
    const Status described = Describe(tags, *header);
    const Status status = tags ? described : TagsStatus(file, page);
    NotePage(status, file, page);
    return Fail(status);
}

extern "C" uint32_t GetTiffImageDPI(HGLOBAL file, uint32_t page, uint32_t* out) noexcept
{
    if (!out)
        return Fail(error::InvalidParameters);
    *out = 0;
    const PageTags tags(file, page);
    if (!tags)
        return Fail(TagsStatus(file, page));
    const Resolution resolution = ResolutionOf(tags);
    *out = RoundedDotsPerInch(resolution.vertical, resolution.unit) << 16 |
           RoundedDotsPerInch(resolution.horizontal, resolution.unit);
    return Fail(error::None);
}

extern "C" HGLOBAL GetTiffRGBQuad(HGLOBAL file, uint32_t page) noexcept
{
    BITMAPINFOHEADER header{};
    if (GetTiffDimensions(file, page, &header) != error::None)
        return nullptr;
    GlobalBlock block(sizeof(header) + uint64_t{header.biClrUsed} * sizeof(RGBQUAD));
    Locked<BITMAPINFOHEADER> built(block.Get());
    if (!built) {
        SetTiffError(error::NotEnoughMemory);
        return nullptr;
    }
    *built = header;
    const std::span colours(reinterpret_cast<RGBQUAD*>(built.Get() + 1), header.biClrUsed);
    const PageTags tags(file, page);
    const Status status = tags ? DescribeColours(tags, header, colours) : TagsStatus(file, page);
    if (status != error::None) {
        SetTiffError(status);
        return nullptr;
    }
    built.Unlock();
    return block.Release();
}

extern "C" uint32_t GetTiffRowsPerStrip(HGLOBAL file, uint32_t page) noexcept
{
    if (!IsTiffImageRegistered(file, page))
        return 0;
    const PageTags tags(file, page);
    const auto length = tags.Find(tag::ImageLength);
    if (!tags)
        SetTiffError(error::NotEnoughMemory);
    if (!length)
        return 0;
    const uint32_t rows = length->Number(0).value_or(0);
    const uint32_t rowsPerStrip = tags.Value(tag::RowsPerStrip, rows);
    return rowsPerStrip == 0 || rowsPerStrip > rows ? rows : rowsPerStrip;
}

extern "C" uint32_t GetTiffStripCount(HGLOBAL file, uint32_t page) noexcept
{
    if (!IsTiffImageRegistered(file, page))
        return 0;
    const PageTags tags(file, page);
    const auto offsets = tags.Find(tag::StripOffsets);
    if (!tags)
        SetTiffError(error::NotEnoughMemory);
    return offsets ? offsets->count : 0;
}
