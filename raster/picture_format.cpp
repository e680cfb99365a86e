#include "raster/picture_format.h"

#include "core/image_description.h"

namespace tiff {

namespace {

constexpr uint32_t TWELVE_BIT_SAMPLES = 4096; // grey levels below this are reduced by 4 bits

bool IsColourSpace(uint32_t photometric)
{
    return photometric >= photometric::FirstColourSpace && photometric <= photometric::LastColourSpace;
}

// 16-bit samples are reduced; of two 8-bit samples the first, the grey, is used.
uint32_t GreyShift(const PageTags& tags)
{
    if (tags.Value(tag::BitsPerSample, 1) != 16)
        return 0;
    return tags.Value(tag::MaxSampleValue, 0) < TWELVE_BIT_SAMPLES ? 4 : 8;
}

// JPEG codecs expand shared chroma themselves.
bool SharesChroma(const PageTags& tags)
{
    return tags.Value(tag::Compression, compression::Stored) != compression::Jpeg &&
           (tags.Value(tag::YCbCrSubSampling, 1, 0) != 1 || tags.Value(tag::YCbCrSubSampling, 1, 1) != 1);
}

void ChooseConversion(const PageTags& tags, uint32_t photometric, PictureFormat& format)
{
    BITMAPINFOHEADER& dib = format.dib;
    if (dib.biBitCount == 16 && photometric <= photometric::BlackIsZero) {
        dib.biBitCount = 8;
        format.conversion = Conversion::ReduceGrey;
        format.sampleShift = GreyShift(tags);
        return;
    }
    if (dib.biBitCount == 32)
        dib.biBitCount = 24;
    if (dib.biBitCount <= 8)
        format.conversion = Conversion::Copy;
    else if (photometric == photometric::Separated)
        format.conversion = Conversion::Cmyk;
    else if (photometric == photometric::YCbCr)
        format.conversion = Conversion::YCbCr;
    else
        format.conversion = Conversion::SwapRedBlue;
}

uint32_t LineBytes(const BITMAPINFOHEADER& header)
{
    return static_cast<uint32_t>((uint64_t{static_cast<uint32_t>(header.biWidth)} * header.biBitCount + 7) /
                                 8);
}

} // namespace

Status FormatOfPage(const PageTags& tags, bool keepColourSpace, PictureFormat& format)
{
    if (const Status status = DescribeImage(tags, format.stored); status != error::None)
        return status;
    if (const Status status = DescribeColours(tags, format.stored, format.colours); status != error::None)
        return status;
    format.dib = format.stored;
    format.lineBytes = LineBytes(format.stored);
    format.orientation = tags.Value(tag::Orientation, 1);
    uint32_t photometric = tags.Value(tag::PhotometricInterpretation, 0);
    format.photometric = photometric;
    format.sharesChroma = photometric == photometric::YCbCr && SharesChroma(tags);
    if (keepColourSpace && IsColourSpace(photometric)) {
        format.dib.biCompression = photometric;
        photometric = photometric::Rgb;
    }
    ChooseConversion(tags, photometric, format);
    return error::None;
}

PictureFormat BilevelFormat(uint32_t width, uint32_t height, int32_t dotsPerMetreX, int32_t dotsPerMetreY)
{
    PictureFormat format{};
    BITMAPINFOHEADER& header = format.stored;
    header.biSize = sizeof(header);
    header.biWidth = static_cast<int32_t>(width);
    header.biHeight = static_cast<int32_t>(height);
    header.biPlanes = 1;
    header.biBitCount = 1;
    header.biXPelsPerMeter = dotsPerMetreX;
    header.biYPelsPerMeter = dotsPerMetreY;
    header.biClrUsed = header.biClrImportant = 2;
    format.colours[0] = {255, 255, 255, 0};
    format.dib = header;
    format.lineBytes = LineBytes(header);
    return format;
}

} // namespace tiff
