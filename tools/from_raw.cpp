/* tifftool from-raw: raw fax code becomes pages of a TIFF file. */
#include "extension.h"
#include "fax_quality.h"
#include "options.h"
#include "source.h"
#include "standard_streams.h"
#include "whole_file.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace tifftool {

namespace {

constexpr struct {
    const char* name;
    const char* shown;
    uint32_t scheme;
} schemes[] = {
    {"g31d", "Group 3", TIFF_RAW_GROUP3},
    {"g32d", "Group 3 two-dimensional", TIFF_RAW_GROUP3_TWO_DIMENSIONAL},
    {"g4", "Group 4", TIFF_RAW_GROUP4},
    {"mh", "modified Huffman", TIFF_RAW_HUFFMAN},
    {"g31d-bare", "Group 3 without end-of-line codes", TIFF_RAW_GROUP3_WITHOUT_EOLS},
};

bool ParseScheme(const Options& options, TiffRawFax& fax)
{
    if (!options.Has("--scheme")) {
        return true;
    }
    const char* const wanted = options.Value("--scheme", "");
    for (const auto& known : schemes) {
        if (strcmp(known.name, wanted) == 0) {
            fax.scheme = known.scheme;
            return true;
        }
    }
    UsageError(fromRawCommand,
               std::string("unknown scheme \"") + wanted + "\"; there are g31d, g32d, g4, mh, g31d-bare");
    return false;
}

bool ParseResolution(const Options& options, TiffRawFax& fax)
{
    if (!options.Has("--resolution")) {
        return true;
    }
    const std::string text = options.Value("--resolution", "");
    const size_t cross = text.find('x');
    int64_t across = 0, down = 0;
    if (cross == std::string::npos || !ParseNumber(text.substr(0, cross).c_str(), 1, 65535, across) ||
        !ParseNumber(text.substr(cross + 1).c_str(), 1, 65535, down)) {
        UsageError(fromRawCommand, "--resolution takes dots per inch such as 204x196");
        return false;
    }
    fax.horizontalDpi = static_cast<uint32_t>(across);
    fax.verticalDpi = static_cast<uint32_t>(down);
    return true;
}

bool ReadOrder(const Options& options, TiffRawFax& fax)
{
    if (options.Has("--width") &&
        (fax.width = NumberOption(fromRawCommand, options, "--width", 65535)) == 0) {
        return false;
    }
    if (options.Has("--fill") && (fax.fillOrder = NumberOption(fromRawCommand, options, "--fill", 2)) == 0) {
        return false;
    }
    fax.alignment = options.Has("--align") ? TIFF_RAW_ALIGNED : 0;
    return ParseScheme(options, fax) && ParseResolution(options, fax);
}

bool ReadFile(const std::string& path, std::vector<uint8_t>& bytes)
{
    FILE* const file = fopen(path.c_str(), "rb");
    if (!file) {
        ReportSentence(path, "cannot be opened");
        return false;
    }
    uint8_t part[65536];
    while (const size_t count = fread(part, 1, sizeof part, file)) {
        bytes.insert(bytes.end(), part, part + count);
    }
    const bool whole = ferror(file) == 0;
    fclose(file);
    if (!whole || bytes.empty() || bytes.size() > INT32_MAX) {
        ReportSentence(path, !whole          ? "cannot be read"
                             : bytes.empty() ? "is empty"
                                             : "is larger than 2,147,483,647 bytes");
    }
    return whole && !bytes.empty() && bytes.size() <= INT32_MAX;
}

bool IsTiff(const std::vector<uint8_t>& bytes)
{
    return bytes.size() >= 4 &&
           (memcmp(bytes.data(), "II*\0", 4) == 0 || memcmp(bytes.data(), "MM\0*", 4) == 0);
}

bool IsEncodedAnew(const TiffRawFax& fax)
{
    return fax.scheme == TIFF_RAW_GROUP3_WITHOUT_EOLS ||
           (fax.scheme == TIFF_RAW_GROUP4 && fax.alignment == TIFF_RAW_ALIGNED);
}

void ShowFound(const std::string& path, const TiffRawFax& fax)
{
    const auto* known = std::ranges::find(schemes, fax.scheme, [](const auto& row) { return row.scheme; });
    const std::string damage = DescribeDamage(fax.badRows, fax.longestBadRun);
    printf("%s: %u x %u, %s, fill order %u%s%s%s%s\n", ShownName(path).c_str(), fax.width, fax.rows,
           known->shown, fax.fillOrder, fax.alignment == TIFF_RAW_ALIGNED ? ", with fill bits" : "",
           IsEncodedAnew(fax) ? ", encoded anew in Group 4" : "", damage.empty() ? "" : "; ", damage.c_str());
}

// Each file is one page.
int AppendFile(const std::string& path, const char* output, const char* unfinished, const TiffRawFax& order)
{
    std::vector<uint8_t> bytes;
    if (!ReadFile(path, bytes)) {
        return FAILED;
    }
    if (IsTiff(bytes)) {
        return ReportSentence(path, "is a TIFF file already; cat and convert take it");
    }
    TiffRawFax fax = order;
    if (!AppendRawFaxToTiff(unfinished, bytes.data(), static_cast<uint32_t>(bytes.size()), &fax)) {
        const uint32_t error = TiffError();
        return error == TIFF_ERROR_BAD_CODE
                   ? ReportSentence(path, "no row can be decoded: it is no fax code of this kind")
                   : ReportError(error == TIFF_ERROR_TOO_LARGE ? path : output, error);
    }
    if (strcmp(output, STANDARD_STREAM) != 0) {
        ShowFound(path, fax);
    }
    return ALL_FINE;
}

int RunFromRaw(Arguments arguments)
{
    const Options options = ParseOptions(arguments, {"--width", "--scheme", "--fill", "--resolution"},
                                         {"--align", "--append", "--force"});
    TiffRawFax order = {};
    if (!CheckOptions(fromRawCommand, options, 2, SIZE_MAX) || !ReadOrder(options, order)) {
        return WRONG_USAGE;
    }
    const char* const output = options.others.back();
    const bool append = options.Has("--append");
    std::vector<Input> inputs;
    const std::span all(options.others);
    if (!ReadWholeInputs(fromRawCommand, options, all.first(all.size() - 1), inputs)) {
        return WRONG_USAGE;
    }
    if (!SuitsContent(output, ".tif") || !MayReplace(options, output, inputs) ||
        (append && !CanBeAddedTo(output))) {
        return FAILED;
    }
    return WriteWhole(output, append, [&](const char* unfinished) {
        for (const Input& input : inputs) {
            if (const int result = AppendFile(input.path, output, unfinished, order); result != ALL_FINE) {
                return result;
            }
        }
        return int{ALL_FINE};
    });
}

} // namespace

const Command fromRawCommand = {
    .name = "from-raw",
    .arguments = "RAW... OUT.tif [OPTION...]",
    .summary = "Makes pages of raw fax code, one of each file.",
    .details =
        "  --width W           pixels of a row, 1 to 65535\n"
        "  --scheme NAME       g31d|g32d|g4|mh|g31d-bare, which has no end-of-line codes\n"
        "  --fill 1|2          1: the first pixel is in the highest bit; 2: in the lowest\n"
        "  --align             end-of-line codes end on bytes; in Group 4, rows\n"
        "  --resolution WxH    dots per inch; without it 204x98, and 204x196 from 1101 rows on\n"
        "  --append            adds the pages to OUT.tif instead of replacing it\n"
        "\n"
        "What is not given is found out: of all ways to read the code the one with the fewest damaged rows\n"
        "is taken. The code itself stays as it is, and the tags of the pages say what was damaged. Code "
        "that\n"
        "TIFF has no tags for, aligned g4 and g31d-bare, is encoded anew in Group 4.\n",
    .example = "tifftool from-raw received.g3 out.tif --width 1728 --resolution 204x196",
    .run = RunFromRaw,
};

} // namespace tifftool
