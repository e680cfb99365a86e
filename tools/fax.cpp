/* tifftool fax and blank: pages for fax boards, and the numbers of blank pages. */
#include "chain.h"
#include "describe.h"
#include "extension.h"
#include "fax_quality.h"
#include "faxable.h"
#include "json.h"
#include "options.h"
#include "pages.h"
#include "progress.h"
#include "source.h"
#include "standard_streams.h"
#include "whole_file.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace tifftool {

namespace {

constexpr uint32_t MOST_SAVED_DOWN = 196; // dots per inch

struct FaxOrder {
    uint32_t selector;
    uint32_t fillOrder;
    FaxForm form;
};

struct Board {
    const char* name;
    bool ownCode;  // has its own compression and fill order, and takes no other
    bool numbered; // its pages have page numbers; their total is set when all are written
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
    // The file is rewritten once, after all pages are saved.
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

// Errors of the output file are reported with its name, others with the page's.
bool IsOutputError(uint32_t code)
{
    return code == 2 || code == 6 || code == 35;
}

// A picture that is to be made faxable is one before it is saved.
int SavePage(const Picture& picture, const char* unfinished, const char* output, const Board& board,
             const FaxOrder& order)
{
    if (order.form.width != 0 || order.form.dithers) {
        const OwnedBlock made(MakeFaxable(order.form, picture.dib));
        FaxOrder rest = order;
        rest.form = {};
        return made.handle
                   ? SavePage({made, picture.where, picture.page, picture.pages, picture.error, nullptr},
                              unfinished, output, board, rest)
                   : ReportError(picture.where, TiffError());
    }
    SaveQualityOfLast(picture.source, picture.page - 1);
    if (const int result = CheckDepth(picture, order.selector); result != ALL_FINE) {
        return result;
    }
    if (board.save(unfinished, picture.dib.handle, order)) {
        return ALL_FINE;
    }
    const uint32_t error = TiffError();
    return ReportError(IsOutputError(error) ? output : picture.where, error);
}

// The savers know two resolutions of rows. Pages whose rows are closer are marked anew in the file, or they
// would be shown too long.
bool MarkResolution(const char* unfinished, size_t firstPage, uint32_t down)
{
    RawFile raw(unfinished, "r+b");
    const std::vector<uint32_t> directories = WalkChain(raw).directories;
    for (size_t page = firstPage; page < directories.size(); ++page) {
        TagEntry entry;
        const uint32_t rational[] = {down, 1};
        if (!FindEntry(raw, directories[page], tag::YResolution, entry) ||
            !WriteNumbers(raw, entry.valuesAt, rational)) {
            return false;
        }
    }
    return true;
}

int WritePages(std::span<const Input> inputs, const char* output, const char* unfinished, const Board& board,
               const FaxOrder& order)
{
    size_t before = 0;
    {
        RawFile raw(unfinished);
        before = WalkChain(raw).directories.size();
    }
    const int result = ForEachPicture(inputs, Damage::Refused, [&](const Picture& picture) {
        return SavePage(picture, unfinished, output, board, order);
    });
    if (result != ALL_FINE) {
        return result;
    }
    const bool isMarked = order.form.width == 0 || order.form.down <= MOST_SAVED_DOWN ||
                          MarkResolution(unfinished, before, order.form.down);
    if (!isMarked) {
        return ReportUnwritten(output);
    }
    if (board.numbered && !UpdatePageNumbers(unfinished, GetNumberOfImagesInTiffFile(unfinished))) {
        return ReportError(output, TiffError());
    }
    return !board.finish || board.finish(unfinished) ? int{ALL_FINE} : ReportError(output, TiffError());
}

std::string BoardNames()
{
    std::string names;
    for (const Board& board : boards) {
        names += (names.empty() ? "" : ", ") + std::string(board.name);
    }
    return names;
}

int RunFax(Arguments arguments)
{
    const Options options = ParseOptions(arguments,
                                         {"--board", "--compression", "--fill-order", "--fit", "--resolution",
                                          "--threshold", "--pages", "--page"},
                                         {"--append", "--dither=", "--force"});
    if (!CheckOptions(faxCommand, options, 2, SIZE_MAX)) {
        return WRONG_USAGE;
    }
    const Board* board = FindBoard(options.Value("--board", ""));
    if (!board) {
        return UsageError(faxCommand, (options.Has("--board") ? std::string("unknown board \"") +
                                                                    options.Value("--board", "") + "\""
                                                              : "needs --board") +
                                          "; there are " + BoardNames());
    }
    if (board->ownCode && (options.Has("--compression") || options.Has("--fill-order"))) {
        return UsageError(faxCommand,
                          std::string(board->name) + " has a compression and fill order of its own");
    }
    if (strcmp(board->name, "dialogic") == 0 && options.Has("--fill-order")) {
        return UsageError(faxCommand, "dialogic has a fill order of its own");
    }
    FaxOrder order = {CompressionOption(faxCommand, options, "g3"), FillOrderOption(faxCommand, options), {}};
    if (order.selector == 0 || order.fillOrder == 0 || !ReadFaxForm(faxCommand, options, order.form)) {
        return WRONG_USAGE;
    }
    const char* const output = options.others.back();
    std::vector<Input> inputs;
    if (!SuitsContent(output, ".tif") || !ReadInputsBefore(faxCommand, options, output, inputs)) {
        return FAILED;
    }
    const bool append = options.Has("--append");
    if (append && !CanBeAddedTo(output)) {
        return FAILED;
    }
    return WriteWhole(output, append, [&](const char* unfinished) {
        return WritePages(inputs, output, unfinished, *board, order);
    });
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

struct BlankOrder {
    uint32_t threshold;
    uint8_t levels[3];
    bool black;
    Json* json; // null for lines of words
    bool named; // several files: numbers come with the file's name
};

void ShowBlank(const BlankOrder& order, const Source& source, uint32_t page)
{
    if (order.json) {
        order.json->Number(page);
    } else if (order.named) {
        printf("%s:%u\n", ShownName(source.path).c_str(), page);
    } else {
        printf("%u\n", page);
    }
}

// The library finds one page after the other; those that are not selected are passed over.
int FindBlanks(const Input& input, BlankOrder& order)
{
    const Source source(input.path.c_str());
    std::vector<uint32_t> pages;
    if (!HasPages(source) || !SelectPages(source, input.pages, pages)) {
        return FAILED;
    }
    const auto find = order.black ? FindBlackPage : FindBlankPage;
    for (uint32_t next = 0; next < source.pages;) {
        const int32_t page = WithClock("searching " + source.path, [&] {
            return static_cast<int32_t>(find(source.path.c_str(), static_cast<int32_t>(order.threshold),
                                             static_cast<int32_t>(next), order.levels));
        });
        if (page < 0) {
            return ReportError(source.path, TiffError());
        }
        next = static_cast<uint32_t>(page);
        if (page == 0 || next > source.pages) {
            break;
        }
        if (std::ranges::find(pages, next) != pages.end()) {
            ShowBlank(order, source, next);
        }
        if (!DrawProgress(source.pages, next, 0)) {
            return FAILED;
        }
    }
    return ReportChain(source);
}

int FindAllBlanks(std::span<const Input> inputs, BlankOrder& order, Json& json)
{
    int result = ALL_FINE;
    json.Open('[');
    for (const Input& input : inputs) {
        json.Open('{').Key("file").Text(ShownName(input.path)).Key("pages").Open('[');
        result = std::max(result, FindBlanks(input, order));
        json.Close(']').Close('}');
    }
    json.Close(']');
    if (order.json) {
        Print(json);
    }
    return result;
}

int RunBlank(Arguments arguments)
{
    const Options options =
        ParseOptions(arguments, {"--threshold", "--colour", "--pages", "--page"}, {"--black", "--json"});
    std::vector<Input> inputs;
    if (!CheckOptions(blankCommand, options, 1, SIZE_MAX) ||
        !ReadInputs(blankCommand, options, options.others, inputs)) {
        return WRONG_USAGE;
    }
    Json json;
    BlankOrder order = {NumberOption(blankCommand, options, "--threshold", 1000, "10"),
                        {},
                        options.Has("--black"),
                        options.Has("--json") ? &json : nullptr,
                        inputs.size() > 1};
    if (order.threshold == 0) {
        return WRONG_USAGE;
    }
    if (!ParseLevels(options.Value("--colour", "128,128,128"), order.levels)) {
        return UsageError(blankCommand, "--colour takes three numbers from 0 to 255, such as 128,128,128");
    }
    return FindAllBlanks(inputs, order, json);
}

} // namespace

const Command faxCommand = {
    .name = "fax",
    .arguments = "IN... OUT.tif --board NAME [OPTION...]",
    .summary = "Saves pages in the form that a fax board reads.",
    .details =
        "  --board gamma|bicom|nms|dialogic|cisco\n"
        "  --compression NAME  none|packbits|lzw|lzw-pred|mh|g3|g3-2d|g4, not for bicom and nms;\n"
        "                      without it g3\n"
        "  --fill-order 1|2    for gamma and cisco; without it 1\n"
        "  --fit WIDTH         scales each picture to so many pixels, such as 1728, in its proportions\n"
        "  --resolution R      of the rows then: standard|fine|superfine; without it fine\n"
        "  --dither[=METHOD]   makes black and white of greys and colours: diffusion|ordered|threshold;\n"
        "                      without a method diffusion\n"
        "  --threshold N       the least grey that becomes white, 1 to 255; without it 128\n"
        "  --append            adds the pages to OUT.tif instead of replacing it\n"
        "\n"
        "All pages are saved, or nothing is: OUT.tif changes when the result is whole.\n",
    .example = "tifftool fax photo.png out.tif --board dialogic --fit 1728 --dither",
    .run = RunFax,
};

const Command blankCommand = {
    .name = "blank",
    .arguments = "FILE.tif... [--threshold T] [--colour B,G,R] [--black] [--pages LIST] [--json]",
    .summary = "Lists the blank pages of a file, or the black ones.",
    .details = "  --threshold T   tenths of a percent of the pixels, 1 to 1000; without it 10. A page is\n"
               "                  blank when fewer are not light, black when more are dark.\n"
               "  --colour B,G,R  levels that part light and dark; without it 128,128,128\n"
               "  --black         lists black pages\n"
               "  --pages LIST    looks among these, such as 1,3-5,last\n"
               "  --json          lists for programs\n"
               "\n"
               "Prints the numbers of the pages, counted from 1, one to the line; of several files as "
               "NAME:NUMBER.\n",
    .example = "tifftool blank scan.tif --threshold 5",
    .run = RunBlank,
};

} // namespace tifftool
