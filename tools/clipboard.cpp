/* tifftool copy and paste: a page to the clipboard as a bitmap, and the clipboard's bitmap as a
 * new page.
 */
#include "extension.h"
#include "options.h"
#include "source.h"
#include "whole_file.h"

namespace tifftool {

namespace {

// The library reports success for a missing page, so the page is checked first.
int Copy(const Input& input)
{
    const char* const path = input.path.c_str();
    std::vector<uint32_t> pages;
    std::string where;
    {
        const Source source(path);
        if (!HasPages(source) || !SelectPages(source, input.pages, pages)) {
            return FAILED;
        }
        where = PageName(path, pages[0]);
        if (!GetTiffImage(source.file.handle, pages[0] - 1)) {
            return ReportError(where, TiffError());
        }
    }
    SetTiffError(0);
    if (!LoadTiffFileIntoClipboard(path, pages[0] - 1, 0)) {
        return ReportSentence(where, "the clipboard cannot be opened");
    }
    return TiffError() == 0 ? ALL_FINE : ReportError(where, TiffError());
}

int RunCopy(Arguments arguments)
{
    const Options options = ParseOptions(arguments, {"--page"}, {});
    if (!CheckOptions(copyCommand, options, 1, 1)) {
        return WRONG_USAGE;
    }
    Input input;
    return ReadOnePage(copyCommand, options, options.others[0], input) ? Copy(input) : WRONG_USAGE;
}

int RunPaste(Arguments arguments)
{
    const Options options = ParseOptions(arguments, {"--compression"}, {});
    if (!CheckOptions(pasteCommand, options, 1, 1)) {
        return WRONG_USAGE;
    }
    const char* path = options.others[0];
    const uint32_t compression = CompressionOption(pasteCommand, options, "lzw");
    if (compression == 0) {
        return WRONG_USAGE;
    }
    if (!SuitsContent(path, ".tif") || !CheckOutput(path) || !CanBeAddedTo(path)) {
        return FAILED;
    }
    return SaveTiffFileFromClipboard(path, compression, 0) ? ALL_FINE : ReportError(path, TiffError());
}

} // namespace

const Command copyCommand = {
    .name = "copy",
    .arguments = "FILE [--page N]",
    .summary = "Puts a page on the clipboard as a bitmap.",
    .details = "  --page N  the page, counted from 1; without it the first\n",
    .example = "tifftool copy fax.tif --page 2",
    .run = RunCopy,
};

const Command pasteCommand = {
    .name = "paste",
    .arguments = "OUT.tif [--compression NAME]",
    .summary = "Adds the clipboard's bitmap to a file as a new page.",
    .details = "  --compression none|packbits|lzw|lzw-pred|mh|g3|g3-2d|g4  lzw without it; the last four\n"
               "                                                           make a black and white page\n",
    .example = "tifftool paste album.tif --compression lzw",
    .run = RunPaste,
};

} // namespace tifftool
