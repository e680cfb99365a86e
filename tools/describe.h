/* Words for the numbers in a TIFF file. */
#ifndef TOOLS_DESCRIBE_H
#define TOOLS_DESCRIBE_H

#include "tiff/tiff.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tifftool {

// Tags that the commands ask for by name.
namespace tag {
inline constexpr uint32_t NewSubfileType = 254;
inline constexpr uint32_t BitsPerSample = 258;
inline constexpr uint32_t Compression = 259;
inline constexpr uint32_t PhotometricInterpretation = 262;
inline constexpr uint32_t FillOrder = 266;
inline constexpr uint32_t StripOffsets = 273;
inline constexpr uint32_t Orientation = 274;
inline constexpr uint32_t SamplesPerPixel = 277;
inline constexpr uint32_t ImageWidth = 256;
inline constexpr uint32_t ImageLength = 257;
inline constexpr uint32_t XResolution = 282;
inline constexpr uint32_t YResolution = 283;
inline constexpr uint32_t PlanarConfiguration = 284;
inline constexpr uint32_t Group3Options = 292;
inline constexpr uint32_t Predictor = 317;
inline constexpr uint32_t PageNumber = 297;
inline constexpr uint32_t TileWidth = 322;
} // namespace tag

// The facts in a page's tags, with the format's defaults for missing tags.
struct PageFacts {
    uint32_t width, length;
    uint32_t bitsPerSample, samplesPerPixel;
    uint32_t compression, group3Options, predictor;
    uint32_t photometric;
    uint32_t planarConfiguration;
    uint32_t fillOrder, orientation, newSubfileType;
    bool hasPhotometric, hasResolution, isTiled, hasStrips;
    bool hasFractions; // samples that are no whole numbers
    bool sharesChroma; // YCbCr with fewer samples of colour than of light, outside JPEG
};

// Whole numbers of two or four bytes of a loaded page's tag; none without it, and of other types.
std::vector<uint32_t> NumbersOf(HGLOBAL file, uint32_t page, uint32_t tag);

// The page must be loaded.
PageFacts ReadPageFacts(HGLOBAL file, uint32_t page);

std::string TagName(uint32_t tag);

// A tag by its name, in any case; 0 for none.
uint32_t TagByName(const char* name);

std::string FieldTypeName(uint32_t type);
std::string DescribeCompression(const PageFacts& facts);
std::string DescribePhotometric(uint32_t photometric);
std::string DescribeOrientation(uint32_t orientation);
std::string DescribeSubfileType(uint32_t newSubfileType);

// Why this library cannot decode the page, in a few words; empty when no reason is known.
std::string WhyNotSupported(const PageFacts& facts);

// The library's text, with the code in brackets.
std::string DescribeError(uint32_t code);

} // namespace tifftool

#endif
