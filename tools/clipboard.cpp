/* tifftool copy and paste: a page to the clipboard as a bitmap, and the clipboard's bitmap as a
 * new page.
 */
#include "choices.h"
#include "commands.h"
#include "diagnosis.h"

#include <cstring>

namespace tifftool {

namespace {

// The library takes a page that is not to be had for done: it is looked for here first.
int Copy(const char* path, uint32_t page)
{
    const std::string where = std::string(path) + ", page " + std::to_string(page);
    {
        const OpenFile file(OpenTiffFile(path, T_READ));
        if (!file.handle) {
            return ReportOpenFailure(path, TiffError());
        }
        if (!GetTiffImage(file.handle, page - 1)) {
            return ReportError(where, TiffError());
        }
    }
    SetTiffError(0);
    if (!LoadTiffFileIntoClipboard(path, page - 1, 0)) {
        return ReportSentence(where, "the clipboard cannot be opened");
    }
    return TiffError() == 0 ? ALL_FINE : ReportError(where, TiffError());
}

int RunCopy(Arguments arguments)
{
    const char* path = nullptr;
    uint32_t page = 1;
    for (size_t i = 0; i < arguments.size(); ++i) {
        if (strcmp(arguments[i], "--page") == 0 && i + 1 < arguments.size()) {
            page = ParsePage(arguments[++i]);
        } else if (arguments[i][0] == '-' || path) {
            return UsageError(copyCommand, std::string("cannot use ") + arguments[i]);
        } else {
            path = arguments[i];
        }
    }
    if (!path || page == 0) {
        return UsageError(copyCommand, path ? "not a page number" : "no file given");
    }
    return Copy(path, page);
}

int RunPaste(Arguments arguments)
{
    const char* path = nullptr;
    uint32_t compression = FindCompression("lzw");
    for (size_t i = 0; i < arguments.size(); ++i) {
        if (strcmp(arguments[i], "--compression") == 0 && i + 1 < arguments.size()) {
            compression = FindCompression(arguments[++i]);
        } else if (arguments[i][0] == '-' || path) {
            return UsageError(pasteCommand, std::string("cannot use ") + arguments[i]);
        } else {
            path = arguments[i];
        }
    }
    if (!path || compression == 0) {
        return UsageError(pasteCommand, path ? "unknown compression" : "no file given");
    }
    return SaveTiffFileFromClipboard(path, compression, 0) ? ALL_FINE : ReportError(path, TiffError());
}

} // namespace

const Command copyCommand = {
    .name = "copy",
    .arguments = "FILE [--page N]",
    .summary = "Puts a page on the clipboard as a bitmap.",
    .details = "  --page N  the page, counted from 1; without it the first\n",
    .run = RunCopy,
};

const Command pasteCommand = {
    .name = "paste",
    .arguments = "OUT.tif [--compression NAME]",
    .summary = "Adds the clipboard's bitmap to a file as a new page.",
    .details = "  --compression none|packbits|lzw|lzw-pred|mh|g3|g3-2d|g4  lzw without it; the last four\n"
               "                                                           make a black and white page\n",
    .run = RunPaste,
};

} // namespace tifftool
