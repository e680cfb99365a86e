/* tifftool cals: CALS raster files, what their headers say and their pictures as TIFF pages and back. */
#include "cals.h"
#include "bmp.h"
#include "describe.h"
#include "diagnosis.h"
#include "extension.h"
#include "options.h"
#include "pages.h"
#include "standard_streams.h"
#include "whole_file.h"

#include <algorithm>
#include <cstdio>

namespace tifftool {

namespace {

constexpr size_t HEADER_BYTES = 2048, RECORD_BYTES = 128;

// A record without the blanks behind it; a terminal would act upon other bytes.
std::string Printable(const uint8_t* record)
{
    std::string text;
    for (size_t index = 0; index < RECORD_BYTES; ++index) {
        const uint8_t byte = record[index];
        text += byte >= ' ' && byte != 0x7F ? static_cast<char>(byte) : byte == 0 ? ' ' : '.';
    }
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

// What can be decoded of a damaged picture is written, as a page that is rendered is.
int AddPage(const std::string& input, const char* output, const char* unfinished, uint32_t selector,
            int& warned)
{
    const OwnedBlock dib(LoadCALSIntoDIB(input.c_str(), 0));
    const uint32_t error = TiffError();
    if (!dib.bytes) {
        return ReportCals(input, error);
    }
    if (!SaveDIBInTiffFile(unfinished, dib.handle, selector, 0)) {
        return ReportError(output, TiffError());
    }
    if (error != 0) {
        warned = ReportError(input + ": warning, the picture is not whole", error);
    }
    return ALL_FINE;
}

int WriteTiff(std::span<const Input> inputs, const char* output, uint32_t selector)
{
    int warned = ALL_FINE;
    const int result = WriteWhole(output, false, [&](const char* unfinished) {
        int added = ALL_FINE;
        for (size_t index = 0; index < inputs.size() && added == ALL_FINE; ++index) {
            added = AddPage(inputs[index].path, output, unfinished, selector, warned);
        }
        return added;
    });
    return result == ALL_FINE ? warned : result;
}

// Other programs take no file with a density of 0.
void GiveResolution(HGLOBAL dib)
{
    constexpr LONG USUAL_DOTS_PER_METRE = 7874; // 200 dots per inch
    auto* header = static_cast<BITMAPINFOHEADER*>(GlobalLock(dib));
    if (header && header->biSize >= sizeof(BITMAPINFOHEADER) && header->biXPelsPerMeter == 0) {
        header->biXPelsPerMeter = USUAL_DOTS_PER_METRE;
    }
    GlobalUnlock(dib);
}

int WriteCals(const char* output, const Picture& picture)
{
    const uint32_t depth = DepthOf({picture.dib.bytes, picture.dib.size});
    if (depth != 1) {
        return ReportSentence(picture.where, "has " + std::to_string(depth) +
                                                 " bits per pixel; CALS files are black and white");
    }
    GiveResolution(picture.dib.handle);
    return WriteWhole(output, false, [&](const char* unfinished) {
        return SaveDIBInCALSFormat(unfinished, picture.dib.handle, nullptr, nullptr, 0)
                   ? int{ALL_FINE}
                   : ReportError(output, TiffError());
    });
}

int RunToTiff(const Options& options)
{
    if (options.Has("--page")) {
        return UsageError(calsCommand, "--page goes with from-tiff");
    }
    const uint32_t selector = CompressionOption(calsCommand, options, "g4");
    const std::span all(options.others);
    std::vector<Input> inputs;
    if (selector == 0 || !ReadWholeInputs(calsCommand, options, all.subspan(1, all.size() - 2), inputs)) {
        return WRONG_USAGE;
    }
    return SuitsContent(all.back(), ".tif") && MayReplace(options, all.back(), inputs)
               ? WriteTiff(inputs, all.back(), selector)
               : int{FAILED};
}

int RunInfo(const Options& options)
{
    std::vector<Input> inputs;
    if (!options.values.empty()) {
        return UsageError(calsCommand, "info takes files alone");
    }
    if (!ReadWholeInputs(calsCommand, options, std::span(options.others).subspan(1), inputs)) {
        return WRONG_USAGE;
    }
    int result = ALL_FINE;
    for (const Input& input : inputs) {
        result = std::max(result, PrintCals(input.path.c_str()));
    }
    return result;
}

int RunFromTiff(const Options& options)
{
    if (options.others.size() != 3) {
        return UsageError(calsCommand, "from-tiff takes two files");
    }
    if (options.Has("--compression")) {
        return UsageError(calsCommand, "--compression goes with to-tiff; CALS files are Group 4");
    }
    Input input;
    if (!ReadOnePage(calsCommand, options, options.others[1], input)) {
        return WRONG_USAGE;
    }
    const char* const output = options.others[2];
    if (!SuitsContent(output, ".cal") || !CheckOutput(output)) {
        return FAILED;
    }
    if (IsSameFile(input.path, output)) {
        return ReportSentence(output, "the picture would take the place of the file that it is in");
    }
    return ForEachPicture(input, Damage::Refused,
                          [&](const Picture& picture) { return WriteCals(output, picture); });
}

int RunCals(Arguments arguments)
{
    const Options options = ParseOptions(arguments, {"--compression", "--page"}, {"--force"});
    if (!CheckOptions(calsCommand, options, 2, SIZE_MAX)) {
        return WRONG_USAGE;
    }
    const std::string verb = options.others[0];
    if (verb == "info") {
        return RunInfo(options);
    }
    if (verb != "to-tiff" && verb != "from-tiff") {
        return UsageError(calsCommand, "unknown verb \"" + verb + "\"; there are info, to-tiff, from-tiff");
    }
    if (options.others.size() < 3) {
        return UsageError(calsCommand, verb + " takes two files");
    }
    return verb == "to-tiff" ? RunToTiff(options) : RunFromTiff(options);
}

} // namespace

bool IsCals(const char* path)
{
    return !WhyNotTiff(path).empty() && OwnedBlock(ReadCALSHead(path)).bytes;
}

// The library says of every file that it cannot open that reading failed.
int ReportCals(const std::string& path, uint32_t code)
{
    if (GetFileAttributesA(path.c_str()) == INVALID_FILE_ATTRIBUTES) {
        return ReportSentence(path, "cannot be opened: " + SystemCause(GetLastError()));
    }
    return ReportError(path, code);
}

int PrintCals(const char* path)
{
    const OwnedBlock head(ReadCALSHead(path));
    if (!head.bytes) {
        return ReportCals(path, TiffError());
    }
    TiffCalsInformation facts{};
    const bool isPicture = ReadCALSInfo(path, &facts);
    const uint32_t error = TiffError();
    if (isPicture) {
        printf("%s: CALS, %u x %u, 1 bit, Group 4, %u dpi\n", ShownName(path).c_str(), facts.pixelsPerLine,
               facts.lines, facts.dotsPerInch);
    }
    for (size_t at = 0; at < HEADER_BYTES; at += RECORD_BYTES) {
        if (const std::string text = Printable(head.bytes + at); !text.empty()) {
            printf("  %s\n", text.c_str());
        }
    }
    return isPicture ? int{ALL_FINE} : ReportCals(path, error);
}

const Command calsCommand = {
    .name = "cals",
    .arguments = "info FILE.cal... | to-tiff IN.cal... OUT.tif | from-tiff IN.tif|IN.bmp OUT.cal",
    .summary = "Shows CALS raster files, makes TIFF pages of them and them of pages.",
    .details = "  info                prints the size and the records of the header\n"
               "  to-tiff             writes the pictures as the pages of OUT.tif\n"
               "  --compression NAME  of the pages; without it g4\n"
               "  --force             lets several files replace OUT.tif\n"
               "  from-tiff           writes a black and white page as OUT.cal\n"
               "  --page N            that page, counted from 1; without it the first\n"
               "                      a picture without a resolution gets 200 dots per inch\n"
               "\n"
               "The rows of a damaged CALS file that can be decoded are written, with a warning and exit\n"
               "code 1; a damaged page is not. The output changes when the result is whole.\n",
    .example = "tifftool cals to-tiff plan.cal plan.tif",
    .run = RunCals,
};

} // namespace tifftool
