/* tifftool info: the tags of a file, page by page, without decoding. */
#include "cals.h"
#include "chain.h"
#include "describe.h"
#include "diagnosis.h"
#include "jpeg_stream.h"
#include "options.h"
#include "source.h"
#include "tag_values.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <vector>

namespace tifftool {

namespace {

constexpr size_t MAX_TEXT = 64;  // characters shown of an ASCII tag
constexpr size_t MAX_VALUES = 8; // values shown of any other
constexpr uint32_t BYTE_TYPE = 1, JPEG = 7;

// In double quotes, up to the first zero, with escapes for control characters.
std::string QuoteText(std::span<const uint8_t> bytes)
{
    const auto end = std::ranges::find(bytes, uint8_t{0});
    const auto length = static_cast<size_t>(end - bytes.begin());
    std::string quoted = "\"";
    for (const uint8_t byte : bytes.first(std::min(length, MAX_TEXT))) {
        char escape[8] = {};
        if (byte == '"' || byte == '\\') {
            quoted += '\\';
        }
        if (byte < 0x20 || byte >= 0x7F) {
            snprintf(escape, sizeof escape, "\\x%02X", unsigned{byte});
            quoted += escape;
        } else {
            quoted += static_cast<char>(byte);
        }
    }
    return quoted + (length > MAX_TEXT ? "\"..." : "\"");
}

template <typename Element>
Element ElementAt(const uint8_t* values, size_t index)
{
    Element element;
    memcpy(&element, values + index * sizeof element, sizeof element);
    return element;
}

std::string FormatReal(double value)
{
    char text[32];
    snprintf(text, sizeof text, "%.9g", value);
    return text;
}

template <typename Element>
std::string FormatFraction(const uint8_t* values, size_t index)
{
    return std::to_string(ElementAt<Element>(values, 2 * index)) + "/" +
           std::to_string(ElementAt<Element>(values, 2 * index + 1));
}

std::string FormatValue(uint32_t type, const uint8_t* values, size_t index)
{
    switch (type) {
    case 3:
        return std::to_string(ElementAt<uint16_t>(values, index));
    case 4:
    case 13:
        return std::to_string(ElementAt<uint32_t>(values, index));
    case 5:
        return FormatFraction<uint32_t>(values, index);
    case 6:
        return std::to_string(ElementAt<int8_t>(values, index));
    case 8:
        return std::to_string(ElementAt<int16_t>(values, index));
    case 9:
        return std::to_string(ElementAt<int32_t>(values, index));
    case 10:
        return FormatFraction<int32_t>(values, index);
    case 11:
        return FormatReal(ElementAt<float>(values, index));
    case 12:
        return FormatReal(ElementAt<double>(values, index));
    default:
        return std::to_string(values[index]);
    }
}

// Never reads past the bytes given, whatever count the file claims.
std::string FormatValues(uint32_t type, uint32_t count, std::span<const uint8_t> bytes)
{
    const size_t held = std::min<size_t>(count, bytes.size() / ElementBytes(type));
    if (type == 2) {
        return QuoteText(bytes.first(held));
    }
    std::string values;
    for (size_t i = 0; i < std::min(held, MAX_VALUES); ++i) {
        values += (i ? " " : "") + FormatValue(type, bytes.data(), i);
    }
    return values + (count > MAX_VALUES ? " ..." : "");
}

struct FirstValues {
    uint32_t type, count;
    std::vector<uint8_t> bytes; // of the values to show, in the processor's order
};

// Values that memory holds as single bytes may have any type in the file.
FirstValues ReadFromFile(Source& source, uint32_t page, uint32_t tag)
{
    RawFile raw(source.path);
    TagEntry entry;
    if (!FindEntry(raw, DirectoryOf(source, page), tag, entry)) {
        return {};
    }
    const size_t size = ElementBytes(entry.type);
    const uint64_t all = uint64_t{entry.count} * size;
    const auto shown = static_cast<size_t>(std::min<uint64_t>(all, MAX_VALUES * size));
    FirstValues values = {entry.type, entry.count,
                          ReadBytes(raw, all <= 4 ? entry.position + 8 : entry.valuesAt, shown)};
    if (raw.motorola) {
        ReverseElements(entry.type, values.bytes);
    }
    return values;
}

int PrintTag(Source& source, uint32_t page, uint32_t tag)
{
    HGLOBAL handle = nullptr;
    uint32_t type = 0, count = 0;
    if (!GetTiffImageInfoBuffer(source.file.handle, page, tag, &handle, &type, &count)) {
        return ReportError(PageName(source.path, page + 1) + ", tag " + std::to_string(tag), TiffError());
    }
    const OwnedBlock block(handle);
    std::span<const uint8_t> bytes(block.bytes, block.size);
    FirstValues inFile = {};
    if (type == BYTE_TYPE && (inFile = ReadFromFile(source, page, tag)).type > BYTE_TYPE) {
        type = inFile.type;
        count = inFile.count;
        bytes = inFile.bytes;
    }
    printf("    %5u  %-26s %-9s %6u  %s\n", tag, TagName(tag).c_str(), FieldTypeName(type).c_str(), count,
           FormatValues(type, count, bytes).c_str());
    return ALL_FINE;
}

} // namespace

int PrintTags(Source& source, uint32_t page)
{
    HGLOBAL handle = nullptr;
    uint32_t count = 0;
    if (!GetTiffImageInfoBuffer(source.file.handle, page, 0, &handle, nullptr, &count)) {
        return ReportError(PageName(source.path, page + 1), TiffError());
    }
    const OwnedBlock numbers(handle);
    int result = ALL_FINE;
    for (size_t i = 0; i < std::min<size_t>(count, numbers.size / 4); ++i) {
        result = std::max(result, PrintTag(source, page, ElementAt<uint32_t>(numbers.bytes, i)));
    }
    return result;
}

namespace {

std::string DescribeResolution(HGLOBAL file, uint32_t page, const PageFacts& facts)
{
    // Without the tag the library returns the screen's resolution, which says nothing of the page.
    uint32_t dpi = 0;
    if (!facts.hasResolution || GetTiffImageDPI(file, page, &dpi) != 0) {
        return "no resolution";
    }
    return std::to_string(dpi & 0xFFFF) + " x " + std::to_string(dpi >> 16) + " dpi";
}

std::string DescribePage(HGLOBAL file, const std::string& path, uint32_t page, const PageFacts& facts)
{
    std::string fault;
    const std::string jpeg =
        facts.compression == JPEG && facts.hasStrips ? DescribeJpeg(file, path, page, fault) : "";
    const uint64_t bits = uint64_t{facts.bitsPerSample} * facts.samplesPerPixel;
    std::string line = std::to_string(facts.width) + " x " + std::to_string(facts.length) + ", " +
                       Counted(bits, "bit") + ", " + DescribeCompression(facts) + jpeg + ", " +
                       (facts.hasPhotometric ? DescribePhotometric(facts.photometric) : "no photometric");
    if (facts.hasStrips) {
        line += ", " + Counted(GetTiffStripCount(file, page), "strip") + " x " +
                Counted(GetTiffRowsPerStrip(file, page), "row");
    }
    line += ", " + DescribeResolution(file, page, facts) + ", fill order " + std::to_string(facts.fillOrder);
    if (facts.orientation != 1) {
        line += ", " + DescribeOrientation(facts.orientation);
    }
    if (facts.newSubfileType != 0) {
        line += ", " + DescribeSubfileType(facts.newSubfileType);
    }
    const std::string reason = fault.empty() ? WhyNotSupported(facts) : fault;
    return reason.empty() ? line : line + "; not supported: " + reason;
}

int PrintPage(Source& source, uint32_t page, bool withTags)
{
    const HGLOBAL file = source.file.handle;
    if (!GetTiffImage(file, page)) {
        return ReportError(PageName(source.path, page + 1), TiffError());
    }
    BITMAPINFOHEADER header = {};
    const uint32_t failure = GetTiffDimensions(file, page, &header);
    printf("  page %u: %s%s\n", page + 1,
           DescribePage(file, source.path, page, ReadPageFacts(file, page)).c_str(),
           failure ? (" - " + DescribeError(failure)).c_str() : "");
    const int result = withTags ? PrintTags(source, page) : ALL_FINE;
    DropTiffImage(file, page);
    return failure ? FAILED : result;
}

int PrintFile(const char* path, bool withTags)
{
    Source source(path);
    if (!source.file.handle) {
        return IsCals(path) ? PrintCals(path) : ReportOpenFailure(path, source.openError);
    }
    printf("%s: %s, %s\n", path, IsMotorola(source) ? "Motorola (MM)" : "Intel (II)",
           Counted(source.pages, "page").c_str());
    int result = ALL_FINE;
    for (uint32_t page = 0; page < source.pages; ++page) {
        result = std::max(result, PrintPage(source, page, withTags));
    }
    if (!source.chainFault.empty()) {
        printf("  %s\n", source.chainFault.c_str());
    }
    return std::max(result, ReportChain(source));
}

int RunInfo(Arguments arguments)
{
    const Options options = ParseOptions(arguments, {}, {"--tags"});
    if (!CheckOptions(infoCommand, options, 1, SIZE_MAX)) {
        return WRONG_USAGE;
    }
    int result = ALL_FINE;
    for (const char* path : options.others) {
        result = std::max(result, PrintFile(path, options.Has("--tags")));
    }
    return result;
}

} // namespace

const Command infoCommand = {
    .name = "info",
    .arguments = "[--tags] FILE...",
    .summary = "Describes files and their pages.",
    .details = "  --tags  lists every tag of a page: number, name, type, count, first values\n"
               "\n"
               "A page that the library cannot decode says so at the end of its line. The exit code\n"
               "is 1 when a file or page cannot be read or described, or the chain of pages is broken.\n"
               "FILE may be a CALS file too.\n",
    .run = RunInfo,
};

} // namespace tifftool
