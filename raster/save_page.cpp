#include "raster/save_page.h"

#include "codecs/codec_table.h"
#include "codecs/jpeg/page_encoder.h"
#include "core/desktop.h"
#include "core/error_detail.h"
#include "core/errors.h"
#include "core/open_file.h"
#include "core/page_tags.h"
#include "core/registry.h"
#include "raster/dib.h"
#include "raster/save_dialog.h"
#include "raster/save_settings.h"
#include "tiff/define.h"
#include "tiff/files.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace tiff {

namespace {

constexpr std::string_view SOFTWARE = "TIFF.DLL from Korvane Software, Inc.";
constexpr int32_t VERSION_BYTES = 15;
constexpr uint32_t LARGEST_SHORT = 65535;

// The two resolutions of fax pages, and the limits of the coarse one.
constexpr uint32_t FAX_HORIZONTAL = 204, FAX_COARSE = 98, FAX_FINE = 196;
constexpr uint32_t LEAST_FINE = 148;
constexpr uint32_t LEAST_FINE_ROWS = 1101; // of a page without a resolution

constexpr uint32_t WITH_FILL_BITS = 4;
constexpr uint32_t PAGE_OF_MANY = 2;

constexpr uint32_t GREY_BITS = 8, COLOUR_BITS = 24;

uint32_t WidthOf(const PagePlan& plan)
{
    return static_cast<uint32_t>(plan.format.stored.biWidth);
}

uint32_t HeightOf(const PagePlan& plan)
{
    return static_cast<uint32_t>(plan.format.stored.biHeight);
}

uint32_t BitsOf(const PagePlan& plan)
{
    return plan.format.stored.biBitCount;
}

bool DefineShort(HGLOBAL file, uint32_t page, uint32_t tag, uint32_t value)
{
    return DefineTiffImageInfo(file, page, tag, fieldtype::Short, value);
}

// Empty texts are written too, with their terminating zero.
bool DefineText(HGLOBAL file, uint32_t page, uint32_t tag, const char* text)
{
    return DefineTiffImageInfoBuffer(file, page, tag, text, fieldtype::Ascii,
                                     static_cast<uint32_t>(std::strlen(text)) + 1);
}

bool DefineDateTime(HGLOBAL file, uint32_t page)
{
    SYSTEMTIME now;
    GetLocalTime(&now);
    char text[32];
    std::snprintf(text, sizeof(text), "%04u:%02u:%02u %02u:%02u:%02u", now.wYear % 10000u, now.wMonth % 100u,
                  now.wDay % 100u, now.wHour % 100u, now.wMinute % 100u, now.wSecond % 100u);
    return DefineText(file, page, tag::DateTime, text);
}

bool DefineSoftware(HGLOBAL file, uint32_t page)
{
    char text[SOFTWARE.size() + VERSION_BYTES + 1] = {};
    std::memcpy(text, SOFTWARE.data(), SOFTWARE.size());
    GetTiffVersion(text + SOFTWARE.size(), VERSION_BYTES);
    return DefineText(file, page, tag::Software, text);
}

bool DefineIdentity(HGLOBAL file, uint32_t page)
{
    const SaveSettings& settings = ThreadRaster().save;
    return DefineDateTime(file, page) && DefineSoftware(file, page) &&
           DefineText(file, page, tag::ImageDescription, settings.description) &&
           DefineText(file, page, tag::Artist, settings.artist);
}

uint32_t DotsPerInchOf(int32_t dotsPerMetre, uint32_t screen)
{
    return dotsPerMetre ? ToDotsPerInch(dotsPerMetre) : screen;
}

DotsPerInch OwnResolution(const PagePlan& plan)
{
    DotsPerInch screen{};
    if (plan.format.stored.biXPelsPerMeter == 0 || plan.format.stored.biYPelsPerMeter == 0)
        screen = ScreenResolution();
    return {DotsPerInchOf(plan.format.stored.biXPelsPerMeter, screen.horizontal),
            DotsPerInchOf(plan.format.stored.biYPelsPerMeter, screen.vertical)};
}

DotsPerInch FaxResolution(const PagePlan& plan)
{
    if (plan.format.stored.biYPelsPerMeter == 0)
        return UsualFaxResolution(HeightOf(plan));
    const bool fine = DotsPerInchOf(plan.format.stored.biYPelsPerMeter, 0) >= LEAST_FINE;
    return {FAX_HORIZONTAL, fine ? FAX_FINE : FAX_COARSE};
}

bool DefineResolution(HGLOBAL file, uint32_t page, const PagePlan& plan, Resolution rule)
{
    return DefineDotsPerInch(file, page, rule == Resolution::Fax ? FaxResolution(plan) : OwnResolution(plan));
}

bool DefineOptions(HGLOBAL file, uint32_t page, uint32_t options)
{
    return DefineTiffImageInfo(file, page, tag::T4Options, fieldtype::Long, options);
}

bool DefineFillBits(HGLOBAL file, uint32_t page, const PagePlan& plan, FillBits fillBits)
{
    if (fillBits == FillBits::NotSaid || plan.choice.compression->selector != TIFF_SAVE_GROUP3)
        return true;
    return DefineOptions(file, page, fillBits == FillBits::Always ? WITH_FILL_BITS : 0) &&
           DefineShort(file, page, tag::SamplesPerPixel, 1);
}

// Deliberate: when these cannot be defined, the page is written without them.
void DefinePageTags(HGLOBAL file, uint32_t page)
{
    const uint32_t kind = PAGE_OF_MANY;
    (void)DefineTag(file, page, {tag::NewSubfileType, fieldtype::Long, 1, &kind});
    if (const auto pageCount = CountPages(file)) {
        const uint16_t number[] = {static_cast<uint16_t>(*pageCount - 1), 0};
        (void)DefineTag(file, page, {tag::PageNumber, fieldtype::Short, 2, number});
    }
}

bool DefineCoding(HGLOBAL file, uint32_t page, const PagePlan& plan, const SaveVariant& variant)
{
    const CompressionChoice& compression = *plan.choice.compression;
    return DefineResolution(file, page, plan, variant.resolution) &&
           DefineFillBits(file, page, plan, variant.fillBits) &&
           DefineShort(file, page, tag::ResolutionUnit, unit::Inch) &&
           DefineShort(file, page, tag::Compression, compression.compression) &&
           DefineShort(file, page, tag::FillOrder, plan.fillOrder) &&
           (compression.extraTag == 0 ||
            DefineShort(file, page, compression.extraTag, compression.extraValue));
}

bool DefineQuality(HGLOBAL file, uint32_t page)
{
    const RasterSettings& settings = ThreadRaster();
    return !settings.saysQuality || DefineFaxQuality(file, page, settings.quality);
}

// A size above 65535 is written as a LONG: its low 16 bits would lose the picture.
bool WidenSizes(HGLOBAL file, uint32_t page, const PagePlan& plan)
{
    if (WidthOf(plan) > LARGEST_SHORT &&
        !DefineTiffImageInfo(file, page, tag::ImageWidth, fieldtype::Long, WidthOf(plan)))
        return false;
    if (HeightOf(plan) <= LARGEST_SHORT)
        return true;
    const bool oneStrip = plan.choice.compression->bilevel; // a CCITT page
    return DefineTiffImageInfo(file, page, tag::ImageLength, fieldtype::Long, HeightOf(plan)) &&
           (!oneStrip || DefineTiffImageInfo(file, page, tag::RowsPerStrip, fieldtype::Long, HeightOf(plan)));
}

// A strip of JPEG has as many rows as its stream can say.
bool DefineJpegStrips(HGLOBAL file, uint32_t page, const PagePlan& plan)
{
    return DefineShort(file, page, tag::RowsPerStrip, jpeg::RowsPerStrip(HeightOf(plan)));
}

bool DefineSharedChroma(HGLOBAL file, uint32_t page)
{
    constexpr uint16_t factors[] = {2, 2};
    return DefineTiffImageInfoBuffer(file, page, tag::YCbCrSubSampling, factors, fieldtype::Short, 2) &&
           DefineTiffImageInfoBuffer(file, page, tag::ReferenceBlackWhite, fullRangeReference,
                                     fieldtype::Rational, std::size(fullRangeReference) / 2);
}

bool DefineJpegTags(HGLOBAL file, uint32_t page, const PagePlan& plan)
{
    return DefineJpegStrips(file, page, plan) &&
           (plan.jpegBits != COLOUR_BITS || DefineSharedChroma(file, page));
}

// All reds, then greens, then blues. Colours missing from the table are 0.
bool DefineColourMap(HGLOBAL file, uint32_t page, const PagePlan& plan)
{
    std::array<uint16_t, 3 * 256> map{};
    const uint32_t entries = 1u << BitsOf(plan);
    for (uint32_t channel = 0; channel < 3; ++channel)
        for (uint32_t index = 0; index < entries; ++index) {
            const RGBQUAD& colour = plan.format.colours[index];
            const uint8_t levels[] = {colour.rgbRed, colour.rgbGreen, colour.rgbBlue};
            map[channel * entries + index] = static_cast<uint16_t>(levels[channel] * 257);
        }
    return DefineTiffImageInfoBuffer(file, page, tag::ColorMap, map.data(), fieldtype::Short, 3 * entries);
}

Status DefinePage(HGLOBAL file, uint32_t page, const PagePlan& plan, const SaveVariant& variant)
{
    if (variant.identityTags && !DefineIdentity(file, page))
        return error::NotEnoughMemory;
    if (!DefineCoding(file, page, plan, variant) || !DefineQuality(file, page))
        return error::NotEnoughMemory;

    const TiffPageGeometry geometry = {
        .kind = 0,
        .width = plan.format.stored.biWidth,
        .height = plan.format.stored.biHeight,
        .rowBytes = plan.format.lineBytes,
        .planes = 1,
        .bitsPerPlane = static_cast<uint16_t>(plan.bilevel    ? 1
                                              : plan.jpegBits ? plan.jpegBits
                                                              : BitsOf(plan)),
    };
    if (const Status status = DefineGeneralTags(file, page, &geometry); status != error::None)
        return status;
    if (!WidenSizes(file, page, plan) || (plan.jpegBits && !DefineJpegTags(file, page, plan)))
        return error::NotEnoughMemory;
    const uint32_t kind = plan.choice.samples ? plan.choice.samples->kind : 0;
    if (const Status status = DefineSpecialTags(file, page, kind); status != error::None)
        return status;
    if (!DefineShort(file, page, tag::PhotometricInterpretation, plan.photometric))
        return error::NotEnoughMemory;
    if (plan.photometric == photometric::Palette && !DefineColourMap(file, page, plan))
        return error::NotEnoughMemory;
    // Deliberate: the tag is written twice, first without fill bits and then with them.
    if (variant.fillBits == FillBits::NeverThenAlways &&
        plan.choice.compression->selector == TIFF_SAVE_GROUP3 && !DefineOptions(file, page, WITH_FILL_BITS))
        return error::NotEnoughMemory;
    if (variant.pageTags)
        DefinePageTags(file, page);
    return error::None;
}

uint32_t PhotometricOf(uint32_t bitCount)
{
    if (bitCount == 1)
        return photometric::WhiteIsZero;
    return bitCount <= 8 ? photometric::Palette : photometric::Rgb;
}

uint32_t SelectorOf(const SaveRequest& request)
{
    if (request.variant.fixedSelector)
        return request.variant.fixedSelector;
    const uint32_t low = request.selector & 0xFF;
    if (request.variant.unknownIsStored && (low < TIFF_SAVE_STORED || low > TIFF_SAVE_OLD_JPEG))
        return (request.selector & ~0xFFu) | TIFF_SAVE_STORED;
    return request.selector;
}

// Bilevel and grey pages follow the source's first colour. A source without colours changes nothing.
void MatchFirstColour(const SaveVariant& variant, PagePlan& plan)
{
    constexpr uint32_t LIGHT_LEVEL = 127; // a first colour with a channel this high is light
    if (!variant.followsColours || plan.photometric > photometric::BlackIsZero ||
        plan.format.stored.biClrUsed == 0)
        return;
    const RGBQUAD& first = plan.format.colours[0];
    const bool light = std::max({first.rgbRed, first.rgbGreen, first.rgbBlue}) >= LIGHT_LEVEL;
    const bool widened = plan.choice.samples != nullptr;
    if (variant.faxBoard) {
        // Deliberate: a light first colour leaves the interpretation as chosen, and a dark one of more than 1
        // bit is not inverted.
        plan.invert = !light && BitsOf(plan) == 1;
        if (!light)
            plan.photometric = photometric::WhiteIsZero;
    } else if (light) {
        plan.invert = widened;
        plan.photometric = widened ? photometric::BlackIsZero : photometric::WhiteIsZero;
    } else {
        plan.invert = BitsOf(plan) == 1;
        plan.photometric = plan.invert ? photometric::WhiteIsZero : photometric::BlackIsZero;
    }
}

bool HasGreysAlone(const PictureFormat& format)
{
    return std::all_of(format.colours.begin(), format.colours.begin() + format.stored.biClrUsed,
                       [](const RGBQUAD& colour) {
                           return colour.rgbRed == colour.rgbGreen && colour.rgbGreen == colour.rgbBlue;
                       });
}

// Samples of JPEG are levels: indexes of a colour table become grey, or colour when the table has any. Its
// bytes have one fill order.
Status PlanJpeg(const SaveVariant& variant, PagePlan& plan)
{
    const uint32_t bits = BitsOf(plan);
    if (!variant.jpeg)
        return error::UnknownCompression;
    if (bits > 8 && bits != COLOUR_BITS)
        return error::ColourFormat;
    if (WidthOf(plan) > jpeg::MOST_SIDE)
        return error::TooLarge;
    const bool isGrey = bits <= 8 && HasGreysAlone(plan.format);
    plan.jpegBits = isGrey ? GREY_BITS : COLOUR_BITS;
    plan.photometric = isGrey ? photometric::BlackIsZero : photometric::YCbCr;
    plan.invert = false;
    if (plan.fillOrder == TIFF_LSB_FIRST)
        plan.fillOrder = TIFF_MSB_FIRST;
    return error::None;
}

// Combines the request with the thread's settings and the dialog's answers.
Status ChooseSettings(const SaveRequest& request, const PictureFormat& format, SaveSettings& settings)
{
    const SaveVariant& variant = request.variant;
    settings.colourCount = variant.bilevelStart ? 2 : format.stored.biClrUsed;
    settings.fillOrder = variant.fixedFillOrder ? variant.fixedFillOrder : request.fillOrder;
    settings.selector = SelectorOf(request);
    settings.photometric =
        variant.bilevelStart ? photometric::WhiteIsZero : PhotometricOf(format.stored.biBitCount);
    if (!request.dialog)
        return error::None;
    if (!request.path)
        return error::InvalidParameters;
    if (const Status status = ShowSaveDialog(request.path, format, settings); status != error::None)
        return status;
    if (settings.photometric == photometric::Palette && format.stored.biBitCount > 8)
        settings.photometric = photometric::Rgb;
    return error::None;
}

} // namespace

DotsPerInch UsualFaxResolution(uint32_t rows)
{
    return {FAX_HORIZONTAL, rows >= LEAST_FINE_ROWS ? FAX_FINE : FAX_COARSE};
}

bool DefineDotsPerInch(HGLOBAL file, uint32_t page, DotsPerInch dots)
{
    const uint32_t horizontal[] = {dots.horizontal, 1};
    const uint32_t vertical[] = {dots.vertical, 1};
    return DefineTiffImageInfoBuffer(file, page, tag::XResolution, horizontal, fieldtype::Rational, 1) &&
           DefineTiffImageInfoBuffer(file, page, tag::YResolution, vertical, fieldtype::Rational, 1);
}

bool DefineFaxQuality(HGLOBAL file, uint32_t page, const TiffFaxQuality& quality)
{
    return DefineTiffImageInfo(file, page, tag::BadFaxLines, fieldtype::Long, quality.badRows) &&
           DefineShort(file, page, tag::CleanFaxData, quality.cleanFaxData) &&
           DefineTiffImageInfo(file, page, tag::ConsecutiveBadFaxLines, fieldtype::Long,
                               quality.longestBadRun);
}

uint32_t WrittenBits(const PagePlan& plan)
{
    if (plan.bilevel)
        return 1;
    if (plan.jpegBits)
        return plan.jpegBits;
    return plan.choice.samples ? plan.choice.samples->bitsPerPixel : BitsOf(plan);
}

uint64_t WrittenRowBytes(const PagePlan& plan)
{
    return (uint64_t{WidthOf(plan)} * WrittenBits(plan) + 7) / 8;
}

Status PlanPage(const SaveRequest& request, const PictureFormat& format, PagePlan& plan)
{
    SaveSettings& settings = ThreadRaster().save;
    const SaveVariant& variant = request.variant;
    plan = {.format = format};
    if (const Status status = ChooseSettings(request, format, settings); status != error::None)
        return status;
    if (const Status status =
            ChooseSave(settings.selector, format.stored.biBitCount, variant.sampleKinds, plan.choice);
        status != error::None)
        return status;
    if (plan.choice.samples)
        settings.photometric = plan.choice.samples->photometric;
    plan.bilevel = variant.bilevelStart || plan.choice.compression->bilevel;
    if (plan.bilevel) {
        settings.photometric = photometric::WhiteIsZero;
        settings.colourCount = 2;
    }
    plan.photometric = variant.keepsColourSpace ? format.stored.biCompression : settings.photometric;
    plan.fillOrder = settings.fillOrder;
    MatchFirstColour(variant, plan);
    if (plan.choice.compression->compression == compression::Jpeg)
        return PlanJpeg(variant, plan);
    return HasEncoder(plan.choice.compression->compression) ? error::None : error::UnknownCompression;
}

Status AppendPage(HGLOBAL file, const PagePlan& plan, const SaveVariant& variant, const LineFeed& feed)
{
    const BusyCursor busy;
    // Pages of one file keep one byte order: a link in the other order would lose the pages behind it.
    TiffFileInformation info;
    if (!GetTiffFileInfo(file, &info))
        return error::InvalidHandle;
    if (info.byteOrder == TIFF_MOTOROLA)
        return error::MixedByteOrders;
    if (!ModiTiffFileInfo(file, nullptr, TIFF_INTEL))
        return error::InvalidHandle;
    const int32_t defined = DefineTiffImage(file);
    if (defined < 0)
        return error::NotEnoughMemory;
    const auto page = static_cast<uint32_t>(defined);
    Status status = DefinePage(file, page, plan, variant);
    if (status == error::None)
        status = EncodePage(file, page, feed, PageCodecs::All);
    DropTiffImage(file, page);
    return status;
}

Status AppendPageToFile(const SaveRequest& request, const PagePlan& plan, const LineFeed& feed)
{
    if (!request.path || !*request.path) // an empty one stands for a TIFF in memory, which nobody would get
        return error::InvalidParameters;
    Status status = error::None;
    HGLOBAL file = OpenFile(request.path, T_APPEND, status);
    if (!file)
        return status == error::NotEnoughMemory ? status : ReportedAs(status, error::CannotOpen);
    status = AppendPage(file, plan, request.variant, feed);
    CloseTiffFile(file);
    return status;
}

int32_t FinishSave(Status status)
{
    StoreLastError(status == CANCELLED ? error::None : status);
    return status == error::None;
}

} // namespace tiff

using namespace tiff;

extern "C" int32_t SetTiffFaxQuality(const TiffFaxQuality* quality) noexcept
{
    if (quality && (quality->cleanFaxData > TIFF_FAX_UNCLEAN ||
                    (quality->cleanFaxData == TIFF_FAX_CLEAN && quality->badRows != 0))) {
        SetTiffError(error::InvalidParameters);
        return 0;
    }
    RasterSettings& settings = ThreadRaster();
    settings.saysQuality = quality != nullptr;
    if (quality)
        settings.quality = *quality;
    return 1;
}
