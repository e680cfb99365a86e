#include "raster/save_selector.h"

#include "raster/dib_lines.h"

#include <algorithm>
#include <iterator>

namespace tiff {

namespace {

constexpr CompressionChoice compressions[] = {
    {201, compression::Stored, 0, 0, false},
    {202, compression::PackBits, 0, 0, false},
    {203, compression::Lzw, 0, 0, false},
    {204, compression::Lzw, tag::Predictor, 2, false},
    {205, compression::ModifiedHuffman, 0, 0, true},
    {206, compression::Group3, 0, 0, true},
    {207, compression::Group3, tag::T4Options, 1, true},
    {208, compression::Group4, 0, 0, true},
    {209, compression::Jpeg, 0, 0, false},
    {210, compression::OldJpeg, 0, 0, false},
};

constexpr SampleChoice samples[] = {
    {256, 8, photometric::BlackIsZero, 8, 16, DllFillTiffLine16DIB},
    {512, 8, photometric::BlackIsZero, 4, 16, DllFillTiffLine16DIB},
    {768, 24, photometric::Separated, 0, 32, DllFillTiffLineCMYKDIB},
    {1024, 24, photometric::YCbCr, 0, 24, DllFillTiffLineYCbCrDIB},
};

} // namespace

Status ChooseSave(uint32_t selector, uint32_t bitCount, bool sampleKinds, SaveChoice& choice)
{
    const uint32_t low = selector & 0xFF, high = selector & ~0xFFu;
    const auto* compression = std::ranges::find(compressions, low, &CompressionChoice::selector);
    const auto* widened = std::ranges::find(samples, high, &SampleChoice::kind);
    choice.compression = compression != std::end(compressions) ? compression : nullptr;
    choice.samples = sampleKinds && widened != std::end(samples) ? widened : nullptr;
    if (!choice.compression || (high && (!choice.samples || low >= selector::ModifiedHuffman)))
        return error::UnknownCompression;
    return choice.samples && choice.samples->sourceBits != bitCount ? error::ColourFormat : error::None;
}

} // namespace tiff
