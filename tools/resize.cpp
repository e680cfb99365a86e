/* tifftool crop and tifftool scale: parts of pages, and pages in other sizes, as a new file. */
#include "bmp.h"
#include "extension.h"
#include "options.h"
#include "page_target.h"
#include "pages.h"
#include "whole_file.h"

#include <algorithm>
#include <cmath>
#include <functional>

namespace tifftool {

namespace {

// Makes a new packed DIB of a page's; null when that fails.
using Change = std::function<HGLOBAL(HGLOBAL dib)>;

struct Size {
    int32_t width, height;
};

Size SizeOf(HGLOBAL dib)
{
    const auto* header = static_cast<const BITMAPINFOHEADER*>(GlobalLock(dib));
    Size size = {header->biWidth, std::abs(header->biHeight)};
    if (header->biSize == sizeof(BITMAPCOREHEADER)) {
        const auto* core = reinterpret_cast<const BITMAPCOREHEADER*>(header);
        size = {core->bcWidth, core->bcHeight};
    }
    GlobalUnlock(dib);
    return size;
}

// Bilevel pages go into Group 4, others into LZW, unless the user says otherwise.
int SavePicture(PageTarget& target, const Picture& picture, const Change& change, uint32_t selector)
{
    const OwnedBlock changed(change(picture.dib.handle));
    if (!changed.bytes) {
        return ReportError(picture.where, TiffError());
    }
    const bool bilevel = DepthOf({changed.bytes, changed.size}) == 1;
    if (selector == 0) {
        selector = bilevel ? TIFF_SAVE_GROUP4 : TIFF_SAVE_LZW;
    }
    if (IsBilevel(selector) && !bilevel) {
        return ReportSentence(picture.where,
                              "is not black and white then; this compression takes such pages only");
    }
    return AppendDib(target, changed, picture.where, selector, TIFF_MSB_FIRST);
}

int ChangePages(const Command& command, const Options& options, const Change& change)
{
    const uint32_t selector = options.Has("--compression") ? CompressionOption(command, options) : 0;
    if (options.Has("--compression") && selector == 0) {
        return WRONG_USAGE;
    }
    const char* const output = options.others.back();
    std::vector<Input> inputs;
    if (!SuitsContent(output, ".tif") || !ReadInputsBefore(command, options, output, inputs)) {
        return FAILED;
    }
    return WriteWhole(output, false, [&](const char* unfinished) {
        PageTarget target = {output, unfinished};
        return ForEachPicture(inputs, Damage::Refused, [&](const Picture& picture) {
            return SavePicture(target, picture, change, selector);
        });
    });
}

// "LEFT,TOP,WIDTH,HEIGHT"
bool ParseBox(const std::string& text, int32_t (&box)[4])
{
    size_t at = 0;
    for (size_t index = 0; index < std::size(box); ++index) {
        const size_t end = index + 1 < std::size(box) ? text.find(',', at) : text.size();
        int64_t number = 0;
        if (end == std::string::npos ||
            !ParseNumber(text.substr(at, end - at).c_str(), 0, INT32_MAX, number)) {
            return false;
        }
        box[index] = static_cast<int32_t>(number);
        at = end + 1;
    }
    return true;
}

int RunCrop(Arguments arguments)
{
    const Options options =
        ParseOptions(arguments, {"--box", "--compression", "--pages", "--page"}, {"--force"});
    if (!CheckOptions(cropCommand, options, 2, SIZE_MAX)) {
        return WRONG_USAGE;
    }
    int32_t box[4];
    if (!ParseBox(options.Value("--box", ""), box)) {
        return UsageError(cropCommand, "--box takes LEFT,TOP,WIDTH,HEIGHT in pixels");
    }
    return ChangePages(cropCommand, options,
                       [&box](HGLOBAL dib) { return CropDIB(dib, box[0], box[1], box[2], box[3]); });
}

int32_t InProportion(double size, double factor)
{
    return static_cast<int32_t>(std::clamp(std::floor(size * factor + 0.5), 1.0, 2147483647.0));
}

// A side that is not given follows from the other one.
Size ScaledSize(Size page, uint32_t width, uint32_t height, uint32_t percent)
{
    if (percent != 0) {
        return {InProportion(page.width, percent / 100.0), InProportion(page.height, percent / 100.0)};
    }
    return {width ? static_cast<int32_t>(width)
                  : InProportion(page.width, height / static_cast<double>(page.height)),
            height ? static_cast<int32_t>(height)
                   : InProportion(page.height, width / static_cast<double>(page.width))};
}

int RunScale(Arguments arguments)
{
    const Options options =
        ParseOptions(arguments, {"--width", "--height", "--percent", "--compression", "--pages", "--page"},
                     {"--smooth", "--force"});
    if (!CheckOptions(scaleCommand, options, 2, SIZE_MAX)) {
        return WRONG_USAGE;
    }
    const bool percent = options.Has("--percent"), sides = options.Has("--width") || options.Has("--height");
    if (percent == sides) {
        return UsageError(scaleCommand, "takes --percent, or --width, --height or both");
    }
    uint32_t numbers[3] = {};
    constexpr const char* names[] = {"--width", "--height", "--percent"};
    for (size_t index = 0; index < std::size(names); ++index) {
        if (options.Has(names[index]) &&
            (numbers[index] = NumberOption(scaleCommand, options, names[index], 1'000'000)) == 0) {
            return WRONG_USAGE;
        }
    }
    return ChangePages(scaleCommand, options, [&](HGLOBAL dib) {
        const Size size = ScaledSize(SizeOf(dib), numbers[0], numbers[1], numbers[2]);
        return StretchDIB(dib, size.width, size.height, options.Has("--smooth") ? TIFF_SMOOTH : 0u);
    });
}

} // namespace

const Command cropCommand = {
    .name = "crop",
    .arguments = "IN... OUT.tif --box LEFT,TOP,WIDTH,HEIGHT [OPTION...]",
    .summary = "Saves a part of pages as a new file.",
    .details = "  --box LEFT,TOP,WIDTH,HEIGHT  the part, in pixels from the upper left\n"
               "  --page N                     that page alone, counted from 1\n"
               "  --compression NAME           of all pages; without it g4 for black and white, else lzw\n"
               "\n"
               "The part must lie inside every page. OUT.tif changes when the result is whole.\n",
    .example = "tifftool crop scan.tif head.tif --box 0,0,1728,300",
    .run = RunCrop,
};

const Command scaleCommand = {
    .name = "scale",
    .arguments = "IN... OUT.tif --width N|--height N|--percent N [OPTION...]",
    .summary = "Saves pages in another size as a new file.",
    .details = "  --width N, --height N  pixels; a side that is not given keeps the page's proportions\n"
               "  --percent N            of both sides\n"
               "  --smooth               makes greys of black and white pages, and averages\n"
               "  --page N               that page alone, counted from 1\n"
               "  --compression NAME     of all pages; without it g4 for black and white, else lzw\n"
               "\n"
               "Pages stay as large on paper: the resolution changes with the size. OUT.tif changes when\n"
               "the result is whole.\n",
    .example = "tifftool scale scan.tif small.tif --percent 25 --smooth",
    .run = RunScale,
};

} // namespace tifftool
