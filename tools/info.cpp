/* tifftool info: what stands in a file, page by page, without decoding anything. */
#include "commands.h"
#include "describe.h"
#include "diagnosis.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <vector>

namespace tifftool {

namespace {

constexpr size_t MAX_TEXT = 64;  // characters shown of an ASCII tag
constexpr size_t MAX_VALUES = 8; // values shown of any other

std::string Counted(uint64_t count, const char* noun)
{
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

// In double quotes, up to the first zero, with escapes for what a terminal should not get.
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

std::string FormatValue(uint32_t type, const uint8_t* values, size_t index)
{
    switch (type) {
    case 3:
        return std::to_string(ElementAt<uint16_t>(values, index));
    case 4:
        return std::to_string(ElementAt<uint32_t>(values, index));
    case 5:
        return std::to_string(ElementAt<uint32_t>(values, 2 * index)) + "/" +
               std::to_string(ElementAt<uint32_t>(values, 2 * index + 1));
    default:
        return std::to_string(values[index]);
    }
}

size_t ElementSize(uint32_t type)
{
    return type == 3 ? 2 : type == 4 ? 4 : type == 5 ? 8 : 1;
}

// Never looks beyond the block, whatever count the file claims.
std::string FormatValues(uint32_t type, uint32_t count, const OwnedBlock& block)
{
    const size_t held = std::min<size_t>(count, block.size / ElementSize(type));
    if (type == 2) {
        return QuoteText({block.bytes, held});
    }
    std::string values;
    for (size_t i = 0; i < std::min(held, MAX_VALUES); ++i) {
        values += (i ? " " : "") + FormatValue(type, block.bytes, i);
    }
    return values + (count > MAX_VALUES ? " ..." : "");
}

int PrintTag(HGLOBAL file, uint32_t page, uint32_t tag, const std::string& where)
{
    HGLOBAL handle = nullptr;
    uint32_t type = 0, count = 0;
    if (!GetTiffImageInfoBuffer(file, page, tag, &handle, &type, &count)) {
        return ReportError(where + ", tag " + std::to_string(tag), TiffError());
    }
    const OwnedBlock block(handle);
    printf("    %5u  %-26s %-9s %6u  %s\n", tag, TagName(tag).c_str(), FieldTypeName(type).c_str(), count,
           FormatValues(type, count, block).c_str());
    return ALL_FINE;
}

} // namespace

int PrintTags(HGLOBAL file, uint32_t page, const std::string& where)
{
    HGLOBAL handle = nullptr;
    uint32_t count = 0;
    if (!GetTiffImageInfoBuffer(file, page, 0, &handle, nullptr, &count)) {
        return ReportError(where, TiffError());
    }
    const OwnedBlock numbers(handle);
    int result = ALL_FINE;
    for (size_t i = 0; i < std::min<size_t>(count, numbers.size / 4); ++i) {
        result = std::max(result, PrintTag(file, page, ElementAt<uint32_t>(numbers.bytes, i), where));
    }
    return result;
}

namespace {

std::string DescribeResolution(HGLOBAL file, uint32_t page, const PageFacts& facts)
{
    // Without the tag the library answers with the screen's, which says nothing of the page.
    uint32_t dpi = 0;
    if (!facts.hasResolution || GetTiffImageDPI(file, page, &dpi) != 0) {
        return "no resolution";
    }
    return std::to_string(dpi & 0xFFFF) + " x " + std::to_string(dpi >> 16) + " dpi";
}

std::string DescribePage(HGLOBAL file, uint32_t page, const PageFacts& facts)
{
    const uint64_t bits = uint64_t{facts.bitsPerSample} * facts.samplesPerPixel;
    std::string line = std::to_string(facts.width) + " x " + std::to_string(facts.length) + ", " +
                       Counted(bits, "bit") + ", " + DescribeCompression(facts) + ", " +
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
    const std::string reason = WhyNotSupported(facts);
    return reason.empty() ? line : line + "; not supported: " + reason;
}

int PrintPage(const char* path, HGLOBAL file, uint32_t page, bool withTags)
{
    const std::string where = std::string(path) + ", page " + std::to_string(page + 1);
    if (!GetTiffImage(file, page)) {
        return ReportError(where, TiffError());
    }
    BITMAPINFOHEADER header = {};
    const uint32_t failure = GetTiffDimensions(file, page, &header);
    printf("  page %u: %s%s\n", page + 1, DescribePage(file, page, ReadPageFacts(file, page)).c_str(),
           failure ? (" - " + DescribeError(failure)).c_str() : "");
    const int result = withTags ? PrintTags(file, page, where) : ALL_FINE;
    DropTiffImage(file, page);
    return failure ? FAILED : result;
}

int PrintFile(const char* path, bool withTags)
{
    const OpenFile file(OpenTiffFile(path, T_READ));
    const uint32_t openError = TiffError();
    if (!file.handle) {
        return ReportOpenFailure(path, openError);
    }
    TiffFileInformation information = {};
    if (!GetTiffFileInfo(file.handle, &information)) {
        return ReportError(path, TiffError());
    }
    const uint32_t pages = information.pageCount;
    printf("%s: %s, %s\n", path, information.byteOrder == TIFF_MOTOROLA ? "Motorola (MM)" : "Intel (II)",
           Counted(pages, "page").c_str());
    int result = ALL_FINE;
    for (uint32_t page = 0; page < pages; ++page) {
        result = std::max(result, PrintPage(path, file.handle, page, withTags));
    }
    if (openError == 6) {
        printf("  the chain of pages is broken after page %u\n", pages);
        result = ReportError(path, openError);
    }
    return result;
}

int RunInfo(Arguments arguments)
{
    std::vector<const char*> paths;
    bool withTags = false, optionsEnded = false;
    for (const char* argument : arguments) {
        if (optionsEnded || argument[0] != '-') {
            paths.push_back(argument);
        } else if (strcmp(argument, "--") == 0) {
            optionsEnded = true;
        } else if (strcmp(argument, "--tags") == 0) {
            withTags = true;
        } else {
            return UsageError(infoCommand, std::string("unknown option ") + argument);
        }
    }
    if (paths.empty()) {
        return UsageError(infoCommand, "no file given");
    }
    int result = ALL_FINE;
    for (const char* path : paths) {
        result = std::max(result, PrintFile(path, withTags));
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
               "is 1 when a file or page cannot be read or described, or the chain of pages is broken.\n",
    .run = RunInfo,
};

} // namespace tifftool
