/* tifftool info: the tags of a file, page by page, without decoding. */
#include "cals.h"
#include "describe.h"
#include "diagnosis.h"
#include "jpeg_stream.h"
#include "options.h"
#include "source.h"
#include "standard_streams.h"
#include "tag_text.h"

#include <algorithm>
#include <cstdio>

namespace tifftool {

namespace {

constexpr uint32_t JPEG = 7;

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

// The facts of a page, as the line of words has them.
void WriteFacts(Json& json, HGLOBAL file, uint32_t page, const PageFacts& facts)
{
    const auto number = [&json](const char* name, uint32_t value) { json.Key(name).Number(value); };
    number("width", facts.width);
    number("length", facts.length);
    number("bitsPerSample", facts.bitsPerSample);
    number("samplesPerPixel", facts.samplesPerPixel);
    number("compression", facts.compression);
    json.Key("compressionName").Text(DescribeCompression(facts));
    if (facts.hasPhotometric) {
        number("photometric", facts.photometric);
    }
    if (facts.hasStrips) {
        number("strips", GetTiffStripCount(file, page));
        number("rowsPerStrip", GetTiffRowsPerStrip(file, page));
    }
    uint32_t dpi = 0;
    if (facts.hasResolution && GetTiffImageDPI(file, page, &dpi) == 0) {
        number("dpiAcross", dpi & 0xFFFF);
        number("dpiDown", dpi >> 16);
    }
    number("fillOrder", facts.fillOrder);
    number("orientation", facts.orientation);
    number("newSubfileType", facts.newSubfileType);
    if (const std::string reason = WhyNotSupported(facts); !reason.empty()) {
        json.Key("notSupported").Text(reason);
    }
}

// Prints a line of words, or writes an object when there is a text to write to.
int ShowPage(Source& source, uint32_t page, bool withTags, Json* json)
{
    const HGLOBAL file = source.file.handle;
    if (!GetTiffImage(file, page)) {
        return ReportError(PageName(source.path, page + 1), TiffError());
    }
    BITMAPINFOHEADER header = {};
    const uint32_t failure = GetTiffDimensions(file, page, &header);
    const PageFacts facts = ReadPageFacts(file, page);
    int result = ALL_FINE;
    if (json) {
        json->Open('{').Key("page").Number(page + int64_t{1});
        WriteFacts(*json, file, page, facts);
        if (withTags) {
            json->Key("tags");
            result = WriteTags(*json, source, page);
        }
        json->Close('}');
    } else {
        printf("  page %u: %s%s\n", page + 1, DescribePage(file, source.path, page, facts).c_str(),
               failure ? (" - " + DescribeError(failure)).c_str() : "");
        result = withTags ? PrintTags(source, page) : ALL_FINE;
    }
    DropTiffImage(file, page);
    return failure ? FAILED : result;
}

int ShowFile(const Input& input, bool withTags, Json* json)
{
    Source source(input.path.c_str());
    if (!source.file.handle) {
        return !json && IsCals(input.path.c_str()) ? PrintCals(input.path.c_str())
                                                   : ReportOpenFailure(input.path, source.openError);
    }
    std::vector<uint32_t> pages;
    if (!SelectPages(source, input.pages, pages)) {
        return FAILED;
    }
    const std::string name = ShownName(input.path);
    if (json) {
        json->Open('{').Key("file").Text(name).Key("byteOrder").Text(IsMotorola(source) ? "MM" : "II");
        json->Key("pageCount").Number(source.pages).Key("pages").Open('[');
    } else {
        printf("%s: %s, %s\n", name.c_str(), IsMotorola(source) ? "Motorola (MM)" : "Intel (II)",
               Counted(source.pages, "page").c_str());
    }
    int result = ALL_FINE;
    for (const uint32_t page : pages) {
        result = std::max(result, ShowPage(source, page - 1, withTags, json));
    }
    if (json) {
        json->Close(']');
        if (!source.chainFault.empty()) {
            json->Key("chainFault").Text(source.chainFault);
        }
        json->Close('}');
    } else if (!source.chainFault.empty()) {
        printf("  %s\n", source.chainFault.c_str());
    }
    return std::max(result, ReportChain(source));
}

int RunInfo(Arguments arguments)
{
    const Options options = ParseOptions(arguments, {"--pages", "--page"}, {"--tags", "--json"});
    std::vector<Input> inputs;
    if (!CheckOptions(infoCommand, options, 1, SIZE_MAX) ||
        !ReadInputs(infoCommand, options, options.others, inputs)) {
        return WRONG_USAGE;
    }
    Json json;
    json.Open('[');
    int result = ALL_FINE;
    for (const Input& input : inputs) {
        result =
            std::max(result, ShowFile(input, options.Has("--tags"), options.Has("--json") ? &json : nullptr));
    }
    if (options.Has("--json")) {
        Print(json.Close(']'));
    }
    return result;
}

} // namespace

const Command infoCommand = {
    .name = "info",
    .arguments = "[--tags] [--json] [--pages LIST] FILE...",
    .summary = "Describes files and their pages.",
    .details = "  --tags        lists every tag of a page: number, name, type, count, first values\n"
               "  --json        writes all of it for programs, tags with all values\n"
               "  --pages LIST  such as 1,3-5,last; without it all pages\n"
               "\n"
               "A page that the library cannot decode says so at the end of its line. The exit code\n"
               "is 1 when a file or page cannot be read or described, or the chain of pages is broken.\n"
               "FILE may be a CALS file too.\n",
    .example = "tifftool info --tags fax.tif:1",
    .run = RunInfo,
};

} // namespace tifftool
