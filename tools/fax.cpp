/* tifftool fax and blank: pages for fax boards, and pages that need not be sent. */
#include "choices.h"
#include "diagnosis.h"
#include "options.h"
#include "pages.h"
#include "whole_file.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace tifftool {

namespace {

struct FaxOrder {
    uint32_t selector;
    uint32_t fillOrder;
};

struct Board {
    const char* name;
    bool ownCode;  // takes no other compression or fill order
    bool numbered; // its pages have page numbers, and a total to be set when they are all there
    int32_t (*save)(const char* path, HGLOBAL dib, const FaxOrder& order);
    int32_t (*finish)(const char* path);
};

constexpr Board boards[] = {
    {"gamma", false, false,
     [](const char* path, HGLOBAL dib, const FaxOrder& order) {
         return SaveDIBInGammaTiffFile(path, dib, order.selector, 0, order.fillOrder);
     },
     nullptr},
    {"bicom", true, true,
     [](const char* path, HGLOBAL dib, const FaxOrder&) { return SaveDIBInBicomTiffFile(path, dib); },
     nullptr},
    {"nms", true, true,
     [](const char* path, HGLOBAL dib, const FaxOrder&) { return SaveDIBInNMSTiffFile(path, dib); }, nullptr},
    {"dialogic", false, true,
     [](const char* path, HGLOBAL dib, const FaxOrder& order) {
         return SaveDIBInDialogicTiffFile(path, dib, order.selector);
     },
     nullptr},
    // All pages are saved before the file is rewritten once.
    {"cisco", false, false,
     [](const char* path, HGLOBAL dib, const FaxOrder& order) {
         return SaveDIBInTiffFileExt(path, dib, order.selector, 0, order.fillOrder);
     },
     ConvertTiffToCiscoFormat},
};

const Board* FindBoard(const char* name)
{
    for (const Board& board : boards) {
        if (strcmp(board.name, name) == 0) {
            return &board;
        }
    }
    return nullptr;
}

int WritePages(const char* input, const char* target, const Board& board, const FaxOrder& order)
{
    const int result = ForEachPicture(input, [&](const OwnedBlock& dib, const std::string& where) {
        const int depth = CheckDepth(dib, order.selector, where);
        return depth != ALL_FINE                       ? depth
               : board.save(target, dib.handle, order) ? int{ALL_FINE}
                                                       : ReportError(where, TiffError());
    });
    if (result != ALL_FINE) {
        return result;
    }
    if (board.numbered && !UpdatePageNumbers(target, GetNumberOfImagesInTiffFile(target))) {
        return ReportError(target, TiffError());
    }
    return !board.finish || board.finish(target) ? int{ALL_FINE} : ReportError(target, TiffError());
}

int RunFax(Arguments arguments)
{
    const Options options =
        ParseOptions(arguments, {"--board", "--compression", "--fill-order"}, {"--append"});
    if (!CheckOptions(faxCommand, options, 2, 2)) {
        return WRONG_USAGE;
    }
    const Board* board = FindBoard(options.Value("--board", ""));
    const uint32_t selector = FindCompression(options.Value("--compression", "g3"));
    const char* order = options.Value("--fill-order", "1");
    if (!board) {
        return UsageError(faxCommand, "needs --board and gamma, bicom, nms, dialogic or cisco");
    }
    if (selector == 0 || (strcmp(order, "1") != 0 && strcmp(order, "2") != 0)) {
        return UsageError(faxCommand, "a value cannot be used");
    }
    if (board->ownCode && (options.Has("--compression") || options.Has("--fill-order"))) {
        return UsageError(faxCommand,
                          std::string(board->name) + " has a compression and fill order of its own");
    }
    if (strcmp(board->name, "dialogic") == 0 && options.Has("--fill-order")) {
        return UsageError(faxCommand, "dialogic has a fill order of its own");
    }
    const FaxOrder fax = {selector, static_cast<uint32_t>(order[0] - '0')};
    return WriteWhole(options.others[1], options.Has("--append"),
                      [&](const char* target) { return WritePages(options.others[0], target, *board, fax); });
}

bool ParseLevels(const char* text, uint8_t (&levels)[3])
{
    unsigned values[3] = {};
    int read = 0;
    const bool good = sscanf(text, "%u,%u,%u%n", &values[0], &values[1], &values[2], &read) == 3 &&
                      text[read] == '\0' && values[0] < 256 && values[1] < 256 && values[2] < 256;
    for (size_t i = 0; i < 3; ++i) {
        levels[i] = static_cast<uint8_t>(values[i]);
    }
    return good;
}

int RunBlank(Arguments arguments)
{
    const Options options = ParseOptions(arguments, {"--threshold", "--colour"}, {"--black"});
    if (!CheckOptions(blankCommand, options, 1, 1)) {
        return WRONG_USAGE;
    }
    uint8_t levels[3];
    const int threshold = atoi(options.Value("--threshold", "10"));
    if (!ParseLevels(options.Value("--colour", "128,128,128"), levels) || threshold < 1 || threshold > 1000) {
        return UsageError(blankCommand, "a value cannot be used");
    }
    const char* path = options.others[0];
    const auto find = options.Has("--black") ? FindBlackPage : FindBlankPage;
    const uint32_t pages = GetNumberOfImagesInTiffFile(path);
    if (pages == 0xFFFFFFFF) {
        return ReportOpenFailure(path, TiffError());
    }
    for (uint32_t next = 0; next < pages;) {
        const uint32_t page = find(path, threshold, static_cast<int32_t>(next), levels);
        if (page == 0xFFFFFFFF) {
            return ReportError(path, TiffError());
        }
        if (page == 0) {
            break;
        }
        printf("%u\n", page);
        next = page;
    }
    return ALL_FINE;
}

} // namespace

const Command faxCommand = {
    .name = "fax",
    .arguments = "IN.tif|IN.bmp OUT.tif --board NAME [OPTION...]",
    .summary = "Saves pages in the form that a fax board reads.",
    .details = "  --board gamma|bicom|nms|dialogic|cisco\n"
               "  --compression NAME  none|packbits|lzw|lzw-pred|mh|g3|g3-2d|g4, not for bicom and nms;\n"
               "                      without it g3\n"
               "  --fill-order 1|2    for gamma and cisco; without it 1\n"
               "  --append            adds the pages to OUT.tif instead of replacing it\n"
               "\n"
               "All pages are saved, or nothing is: OUT.tif changes when the result is whole.\n",
    .run = RunFax,
};

const Command blankCommand = {
    .name = "blank",
    .arguments = "FILE.tif [--threshold T] [--colour B,G,R] [--black]",
    .summary = "Lists the blank pages of a file, or the black ones.",
    .details = "  --threshold T   tenths of a percent of the pixels, 1 to 1000; without it 10. A page is\n"
               "                  blank when fewer are not light, black when more are dark.\n"
               "  --colour B,G,R  levels that part light and dark; without it 128,128,128\n"
               "  --black         lists black pages\n"
               "\n"
               "Prints the numbers of the pages, counted from 1, one to the line.\n",
    .run = RunBlank,
};

} // namespace tifftool
