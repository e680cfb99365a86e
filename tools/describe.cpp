/* The tables of names and the few rules that turn a page's numbers into words. */
#include "describe.h"

#include "commands.h"

#include <algorithm>
#include <cstring>
#include <span>

namespace tifftool {

namespace {

struct Name {
    uint32_t number;
    const char* text;
};

constexpr Name tagNames[] = {
    {254, "NewSubfileType"},
    {255, "SubfileType"},
    {256, "ImageWidth"},
    {257, "ImageLength"},
    {258, "BitsPerSample"},
    {259, "Compression"},
    {262, "PhotometricInterpretation"},
    {263, "Threshholding"},
    {264, "CellWidth"},
    {265, "CellLength"},
    {266, "FillOrder"},
    {269, "DocumentName"},
    {270, "ImageDescription"},
    {271, "Make"},
    {272, "Model"},
    {273, "StripOffsets"},
    {274, "Orientation"},
    {277, "SamplesPerPixel"},
    {278, "RowsPerStrip"},
    {279, "StripByteCounts"},
    {280, "MinSampleValue"},
    {281, "MaxSampleValue"},
    {282, "XResolution"},
    {283, "YResolution"},
    {284, "PlanarConfiguration"},
    {285, "PageName"},
    {286, "XPosition"},
    {287, "YPosition"},
    {290, "GrayResponseUnit"},
    {291, "GrayResponseCurve"},
    {292, "T4Options"},
    {293, "T6Options"},
    {296, "ResolutionUnit"},
    {297, "PageNumber"},
    {301, "TransferFunction"},
    {305, "Software"},
    {306, "DateTime"},
    {315, "Artist"},
    {316, "HostComputer"},
    {317, "Predictor"},
    {318, "WhitePoint"},
    {319, "PrimaryChromaticities"},
    {320, "ColorMap"},
    {321, "HalftoneHints"},
    {322, "TileWidth"},
    {323, "TileLength"},
    {324, "TileOffsets"},
    {325, "TileByteCounts"},
    {326, "BadFaxLines"},
    {327, "CleanFaxData"},
    {328, "ConsecutiveBadFaxLines"},
    {330, "SubIFDs"},
    {332, "InkSet"},
    {333, "InkNames"},
    {334, "NumberOfInks"},
    {336, "DotRange"},
    {337, "TargetPrinter"},
    {338, "ExtraSamples"},
    {339, "SampleFormat"},
    {340, "SMinSampleValue"},
    {341, "SMaxSampleValue"},
    {342, "TransferRange"},
    {347, "JPEGTables"},
    {512, "JPEGProc"},
    {513, "JPEGInterchangeFormat"},
    {514, "JPEGInterchangeFormatLength"},
    {515, "JPEGRestartInterval"},
    {517, "JPEGLosslessPredictors"},
    {518, "JPEGPointTransforms"},
    {519, "JPEGQTables"},
    {520, "JPEGDCTables"},
    {521, "JPEGACTables"},
    {529, "YCbCrCoefficients"},
    {530, "YCbCrSubSampling"},
    {531, "YCbCrPositioning"},
    {532, "ReferenceBlackWhite"},
    {700, "XMP"},
    {33432, "Copyright"},
    {34377, "Photoshop"},
    {34665, "ExifIFD"},
    {34675, "ICCProfile"},
    {34853, "GPSInfoIFD"},
    {40965, "InteroperabilityIFD"},
};

constexpr Name typeNames[] = {
    {1, "BYTE"},   {2, "ASCII"},     {3, "SHORT"},  {4, "LONG"},  {5, "RATIONAL"},
    {6, "SBYTE"},  {7, "UNDEFINED"}, {8, "SSHORT"}, {9, "SLONG"}, {10, "SRATIONAL"},
    {11, "FLOAT"}, {12, "DOUBLE"},   {13, "IFD"},
};

constexpr Name compressionNames[] = {
    {1, "uncompressed"},
    {2, "modified Huffman"},
    {3, "Group 3"},
    {4, "Group 4"},
    {5, "LZW"},
    {6, "old-style JPEG"},
    {7, "JPEG"},
    {8, "Deflate"},
    {9, "JBIG (T.85)"},
    {10, "JBIG (T.43)"},
    {32766, "NeXT"},
    {32771, "Huffman by words"},
    {32773, "PackBits"},
    {32809, "ThunderScan"},
    {32946, "Deflate (old code)"},
    {34661, "JBIG"},
    {34712, "JPEG 2000"},
    {34925, "LZMA"},
    {50000, "Zstandard"},
    {50001, "WebP"},
};

constexpr Name photometricNames[] = {
    {0, "white is zero"}, {1, "black is zero"}, {2, "RGB"},        {3, "palette"},    {4, "mask"},
    {5, "CMYK"},          {6, "YCbCr"},         {8, "CIE L*a*b*"}, {9, "ICC L*a*b*"}, {10, "ITU L*a*b*"},
};

constexpr Name orientationNames[] = {
    {1, "upright"},
    {2, "mirrored left to right"},
    {3, "turned by 180 degrees"},
    {4, "rows from the bottom"},
    {5, "mirrored, turned left"},
    {6, "turned right"},
    {7, "mirrored, turned right"},
    {8, "turned left"},
};

constexpr Name subfileBits[] = {
    {1, "reduced resolution"},
    {2, "page of several"},
    {4, "transparency mask"},
};

const char* FindName(std::span<const Name> names, uint32_t number)
{
    const auto found = std::ranges::find(names, number, &Name::number);
    return found == names.end() ? nullptr : found->text;
}

std::string NameOr(std::span<const Name> names, uint32_t number, const char* kind)
{
    const char* const name = FindName(names, number);
    return name ? name : std::string(kind) + " " + std::to_string(number);
}

// False when the page does not have the tag. A BYTE fills only one byte, a RATIONAL two words.
bool ReadFirst(HGLOBAL file, uint32_t page, uint32_t number, uint32_t& value)
{
    uint32_t words[2] = {};
    if (!GetTiffImageInfo(file, page, number, words)) {
        return false;
    }
    value = words[0];
    return true;
}

uint32_t ReadOr(HGLOBAL file, uint32_t page, uint32_t number, uint32_t absent)
{
    uint32_t value = absent;
    ReadFirst(file, page, number, value);
    return value;
}

bool SharesChroma(HGLOBAL file, uint32_t page)
{
    constexpr uint32_t YCBCR = 6, JPEG = 7, SUB_SAMPLING = 530;
    return ReadOr(file, page, tag::PhotometricInterpretation, 0) == YCBCR &&
           ReadOr(file, page, tag::Compression, 1) != JPEG &&
           std::ranges::any_of(NumbersOf(file, page, SUB_SAMPLING),
                               [](uint32_t ratio) { return ratio != 1; });
}

constexpr uint64_t depths[] = {1, 4, 8, 16, 24, 32};

bool CanDecode(const PageFacts& facts)
{
    switch (facts.compression) {
    case 1:
    case 2:
    case 4:
    case 7:
    case 32773:
        return true;
    case 3: // 2-D and fill bits, no uncompressed mode
        return (facts.group3Options & ~5u) == 0;
    case 5:
        return facts.predictor == 1 || facts.predictor == 2;
    default:
        return false;
    }
}

} // namespace

std::vector<uint32_t> NumbersOf(HGLOBAL file, uint32_t page, uint32_t tag)
{
    HGLOBAL values = nullptr;
    uint32_t type = 0, count = 0;
    GetTiffImageInfoBuffer(file, page, tag, &values, &type, &count);
    const OwnedBlock block(values);
    const size_t size = type == 3 ? 2 : type == 4 ? 4 : 0;
    std::vector<uint32_t> numbers(size == 0 ? 0 : std::min<size_t>(count, block.size / size));
    for (size_t index = 0; index < numbers.size(); ++index) {
        memcpy(&numbers[index], block.bytes + index * size, size);
    }
    return numbers;
}

PageFacts ReadPageFacts(HGLOBAL file, uint32_t page)
{
    constexpr uint32_t SAMPLE_FORMAT = 339, FLOATING_POINT = 3;
    const auto value = [&](uint32_t number, uint32_t absent) { return ReadOr(file, page, number, absent); };
    const auto has = [&](uint32_t number) { return GetTiffImageInfo(file, page, number, nullptr) != 0; };
    return {
        .width = value(tag::ImageWidth, 0),
        .length = value(tag::ImageLength, 0),
        .bitsPerSample = value(tag::BitsPerSample, 1),
        .samplesPerPixel = value(tag::SamplesPerPixel, 1),
        .compression = value(tag::Compression, 1),
        .group3Options = value(tag::Group3Options, 0),
        .predictor = value(tag::Predictor, 1),
        .photometric = value(tag::PhotometricInterpretation, 0),
        .planarConfiguration = value(tag::PlanarConfiguration, 1),
        .fillOrder = value(tag::FillOrder, 1),
        .orientation = value(tag::Orientation, 1),
        .newSubfileType = value(tag::NewSubfileType, 0),
        .hasPhotometric = has(tag::PhotometricInterpretation),
        .hasResolution = has(tag::XResolution),
        .isTiled = has(tag::TileWidth),
        .hasStrips = has(tag::StripOffsets),
        .hasFractions = value(SAMPLE_FORMAT, 1) == FLOATING_POINT,
        .sharesChroma = SharesChroma(file, page),
    };
}

std::string TagName(uint32_t tag)
{
    return NameOr(tagNames, tag, "tag");
}

uint32_t TagByName(const char* name)
{
    const auto found = std::ranges::find_if(
        tagNames, [name](const Name& known) { return lstrcmpiA(known.text, name) == 0; });
    return found == std::end(tagNames) ? 0 : found->number;
}

std::string FieldTypeName(uint32_t type)
{
    return NameOr(typeNames, type, "type");
}

std::string DescribeCompression(const PageFacts& facts)
{
    std::string words = NameOr(compressionNames, facts.compression, "compression");
    if (facts.compression == 3) {
        words += facts.group3Options & 1 ? " 2-D" : " 1-D";
        words += facts.group3Options & 2 ? ", uncompressed mode" : "";
        words += facts.group3Options & 4 ? ", fill bits" : "";
    }
    if (facts.compression == 5 && facts.predictor != 1) {
        words += facts.predictor == 2 ? ", predictor" : ", predictor " + std::to_string(facts.predictor);
    }
    return words;
}

std::string DescribePhotometric(uint32_t photometric)
{
    return NameOr(photometricNames, photometric, "photometric");
}

std::string DescribeOrientation(uint32_t orientation)
{
    const char* const name = FindName(orientationNames, orientation);
    return "orientation " + std::to_string(orientation) + (name ? std::string(" (") + name + ")" : "");
}

std::string DescribeSubfileType(uint32_t newSubfileType)
{
    std::string words;
    uint32_t rest = newSubfileType;
    for (const auto& [bit, text] : subfileBits) {
        if (rest & bit) {
            words += (words.empty() ? "" : ", ") + std::string(text);
            rest &= ~bit;
        }
    }
    if (rest) {
        words += (words.empty() ? "" : ", ") + std::string("subfile type bits ") + std::to_string(rest);
    }
    return words;
}

std::string WhyNotSupported(const PageFacts& facts)
{
    if (!CanDecode(facts)) {
        return DescribeCompression(facts);
    }
    if (facts.isTiled) {
        return "tiles";
    }
    if (facts.planarConfiguration != 1) {
        return "samples in separate planes";
    }
    if (facts.sharesChroma) {
        return "YCbCr with shared colours outside JPEG";
    }
    if (facts.hasFractions) {
        return "floating-point samples";
    }
    const bool greyAndMore = facts.samplesPerPixel == 2 && facts.photometric <= 1;
    if (facts.samplesPerPixel > 1 &&
        (facts.bitsPerSample != 8 || (facts.samplesPerPixel == 2 && !greyAndMore))) {
        return std::to_string(facts.samplesPerPixel) + " samples of " + std::to_string(facts.bitsPerSample) +
               " bits";
    }
    const uint64_t bitsPerPixel = uint64_t{facts.bitsPerSample} * facts.samplesPerPixel;
    if (std::ranges::find(depths, bitsPerPixel) == std::end(depths)) {
        return std::to_string(bitsPerPixel) + " bits per pixel";
    }
    if (bitsPerPixel == 32 && facts.photometric != 5) {
        return "32 bits per pixel that are not CMYK";
    }
    return facts.fillOrder == 1 || facts.fillOrder == 2 ? ""
                                                        : "fill order " + std::to_string(facts.fillOrder);
}

std::string DescribeError(uint32_t code)
{
    char text[64] = {};
    TiffErrorString(text, static_cast<int32_t>(code));
    return std::string(text) + " (error " + std::to_string(code) + ")";
}

} // namespace tifftool
