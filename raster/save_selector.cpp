#include "raster/save_selector.h"

#include "raster/dib_lines.h"

#include <algorithm>
#include <iterator>

namespace tiff {

namespace {

constexpr CompressionChoice compressions[] = {
    {TIFF_SAVE_STORED, compression::Stored, 0, 0, false},
    {TIFF_SAVE_PACKBITS, compression::PackBits, 0, 0, false},
    {TIFF_SAVE_LZW, compression::Lzw, 0, 0, false},
    {TIFF_SAVE_LZW_DIFFERENCES, compression::Lzw, tag::Predictor, 2, false},
    {TIFF_SAVE_MODIFIED_HUFFMAN, compression::ModifiedHuffman, 0, 0, true},
    {TIFF_SAVE_GROUP3, compression::Group3, 0, 0, true},
    {TIFF_SAVE_GROUP3_TWO_DIMENSIONAL, compression::Group3, tag::T4Options, 1, true},
    {TIFF_SAVE_GROUP4, compression::Group4, 0, 0, true},
    {TIFF_SAVE_JPEG, compression::Jpeg, 0, 0, false},
    {TIFF_SAVE_OLD_JPEG, compression::OldJpeg, 0, 0, false},
};

constexpr SampleChoice samples[] = {
    {TIFF_SAMPLES_GREY_16, 8, photometric::BlackIsZero, 8, 16, DllFillTiffLine16DIB},
    {TIFF_SAMPLES_GREY_12, 8, photometric::BlackIsZero, 4, 16, DllFillTiffLine16DIB},
    {TIFF_SAMPLES_CMYK, 24, photometric::Separated, 0, 32, DllFillTiffLineCMYKDIB},
    {TIFF_SAMPLES_YCBCR, 24, photometric::YCbCr, 0, 24, DllFillTiffLineYCbCrDIB},
};

} // namespace

Status ChooseSave(uint32_t selector, uint32_t bitCount, bool sampleKinds, SaveChoice& choice)
{
    const uint32_t low = selector & 0xFF, high = selector & ~0xFFu;
    const auto* compression = std::ranges::find(compressions, low, &CompressionChoice::selector);
    const auto* widened = std::ranges::find(samples, high, &SampleChoice::kind);
    choice.compression = compression != std::end(compressions) ? compression : nullptr;
    choice.samples = sampleKinds && widened != std::end(samples) ? widened : nullptr;
    if (!choice.compression || (high && (!choice.samples || low >= TIFF_SAVE_MODIFIED_HUFFMAN)))
        return error::UnknownCompression;
    return choice.samples && choice.samples->sourceBits != bitCount ? error::ColourFormat : error::None;
}

} // namespace tiff
