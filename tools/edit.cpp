/* tifftool cat, split, cut, delete, reorder, append-raw and number: pages moved without decoding. */
#include "describe.h"
#include "diagnosis.h"
#include "extension.h"
#include "options.h"
#include "progress.h"
#include "source.h"
#include "whole_file.h"

#include <cstdio>

namespace tifftool {

namespace {

constexpr size_t ANY_NUMBER = SIZE_MAX;

int Result(int32_t succeeded, const std::string& where)
{
    return succeeded ? ALL_FINE : ReportError(where, TiffError());
}

// The number of pages of a file that can be read to its end; otherwise prints the reason and returns 0.
uint32_t CountPages(const char* path)
{
    const Source source(path);
    return IsWhole(source) ? source.pages : 0;
}

// The target stays open: walking to its end for each file would take longer and longer.
int AppendPages(HGLOBAL target, const Input& input)
{
    constexpr uint32_t MIXED_BYTE_ORDERS = 35;
    const std::string& path = input.path;
    const Source source(path.c_str());
    std::vector<uint32_t> pages;
    if (!IsWhole(source) || !SelectPages(source, input.pages, pages)) {
        return FAILED;
    }
    TiffFileInformation facts{};
    if (GetTiffFileInfo(target, &facts) && facts.pageCount != 0 &&
        (facts.byteOrder == TIFF_MOTOROLA) != IsMotorola(source)) {
        return ReportError(path, MIXED_BYTE_ORDERS);
    }
    uint32_t done = 0;
    for (const uint32_t page : pages) {
        if (!CopyTiffImage(source.file.handle, page - 1, target)) {
            return ReportError(PageName(path, page), TiffError());
        }
        if (!DrawProgress(static_cast<uint32_t>(pages.size()), ++done, 0)) {
            return FAILED;
        }
    }
    return ALL_FINE;
}

int RunCat(Arguments arguments)
{
    const Options options = ParseOptions(arguments, {"-o", "--pages", "--page"}, {"--append"});
    if (!CheckOptions(catCommand, options, 1, ANY_NUMBER)) {
        return WRONG_USAGE;
    }
    if (!options.Has("-o")) {
        return UsageError(catCommand, "needs -o and a file");
    }
    const char* const output = options.Value("-o", "");
    std::vector<Input> inputs;
    if (!SuitsContent(output, ".tif") || !ReadInputs(catCommand, options, options.others, inputs)) {
        return WRONG_USAGE;
    }
    const bool append = options.Has("--append");
    if (append && !CanBeAddedTo(output)) {
        return FAILED;
    }
    return WriteWhole(output, append, [&](const char* unfinished) {
        const OpenFile whole(OpenTiffFile(unfinished, T_APPEND));
        if (!whole.handle || TiffError() != 0) {
            return ReportError(output, TiffError());
        }
        for (const Input& input : inputs) {
            if (const int result = AppendPages(whole.handle, input); result != ALL_FINE) {
                return result;
            }
        }
        return int{ALL_FINE};
    });
}

std::string PagesText(uint32_t first, uint32_t last)
{
    return first == last ? "page " + std::to_string(first)
                         : "pages " + std::to_string(first) + " to " + std::to_string(last);
}

// False, with a message, for an existing file that must not be replaced.
bool MayWrite(const std::string& path, const Options& options)
{
    if (!CheckOutput(path)) {
        return false;
    }
    if (!Exists(path) || options.Has("--force")) {
        return true;
    }
    ReportSentence(path, "is there already; --force replaces it");
    return false;
}

int RunSplit(Arguments arguments)
{
    const Options options = ParseOptions(arguments, {"--page"}, {"--force", "--dry-run"});
    if (!CheckOptions(splitCommand, options, 2, 2)) {
        return WRONG_USAGE;
    }
    const uint32_t page = PageOption(splitCommand, options, "--page");
    if (page == 0) {
        return WRONG_USAGE;
    }
    const char *path = options.others[0], *target = options.others[1];
    uint32_t pages = 0;
    {
        const Source source(path);
        if (!IsWholeWith(source, page)) {
            return FAILED;
        }
        pages = source.pages;
    }
    // For page 1 the library would rename the file, or refuse one with a single page.
    if (page == 1) {
        return ReportSentence(path, "nothing would be left; rename the file instead");
    }
    if (IsSameFile(path, target)) {
        return ReportSentence(target, "is the file that is to be split");
    }
    if (!MayWrite(target, options)) {
        return FAILED;
    }
    if (options.Has("--dry-run")) {
        return DryRun("move " + PagesText(page, pages) + " of " + path + " to " + target);
    }
    return Result(SplitTiffFile(path, target, static_cast<int32_t>(page - 1), DrawProgress, 0), path);
}

// In a folder the library chooses free names.
bool MayCut(const std::string& base, uint32_t count, const Options& options)
{
    for (uint32_t page = 1; page <= count && !IsFolder(base); ++page) {
        char number[24];
        snprintf(number, sizeof number, "%04u.tif", page);
        if (!MayWrite(base + number, options)) {
            return false;
        }
    }
    return true;
}

int RunCut(Arguments arguments)
{
    const Options options = ParseOptions(arguments, {"--pages"}, {"--force", "--dry-run"});
    if (!CheckOptions(cutCommand, options, 2, 2)) {
        return WRONG_USAGE;
    }
    const uint32_t count = PageOption(cutCommand, options, "--pages");
    if (count == 0) {
        return WRONG_USAGE;
    }
    const char *path = options.others[0], *base = options.others[1];
    uint32_t pages = 0;
    {
        const Source source(path);
        if (!IsWholeWith(source, count)) {
            return FAILED;
        }
        pages = source.pages;
    }
    if (pages == 1) {
        return ReportSentence(path, "has a single page already");
    }
    if (!MayCut(base, count, options)) {
        return FAILED;
    }
    if (options.Has("--dry-run")) {
        return DryRun("move " + PagesText(1, count) + " of " + path + " to files " + base +
                      "0001.tif and on" + (count == pages ? ", and delete " + std::string(path) : ""));
    }
    return Result(CutTiffFile(path, base, static_cast<int32_t>(count), DrawProgress, 0), path);
}

int RunDelete(Arguments arguments)
{
    const Options options = ParseOptions(arguments, {"--page"}, {"--last", "--in-place", "--dry-run"});
    if (!CheckOptions(deleteCommand, options, 1, 1)) {
        return WRONG_USAGE;
    }
    if (options.Has("--last") == options.Has("--page")) {
        return UsageError(deleteCommand, "needs --page and a number, or --last");
    }
    uint32_t page = 0;
    if (!options.Has("--last") && (page = PageOption(deleteCommand, options, "--page")) == 0) {
        return WRONG_USAGE;
    }
    const char* path = options.others[0];
    uint32_t pages = 0;
    {
        const Source source(path);
        if (!IsWholeWith(source, page)) {
            return FAILED;
        }
        pages = source.pages;
    }
    if (options.Has("--dry-run")) {
        return DryRun(pages == 1 ? "delete " + std::string(path) + " with its only page"
                                 : "delete page " + std::to_string(page ? page : pages) + " of " + path);
    }
    const int32_t deleted = WithClock(std::string("rewriting ") + path, [&] {
        return DeleteTiffImage(path, static_cast<int32_t>(page) - 1, options.Has("--in-place"));
    });
    return Result(deleted, path);
}

int RunReorder(Arguments arguments)
{
    const Options options = ParseOptions(arguments, {}, {});
    if (!CheckOptions(reorderCommand, options, 1, 1)) {
        return WRONG_USAGE;
    }
    const char* path = options.others[0];
    if (CountPages(path) == 0) {
        return FAILED;
    }
    return Result(WithClock(std::string("rewriting ") + path, [path] { return ReorderTiffFile(path); }),
                  path);
}

int RunAppendRaw(Arguments arguments)
{
    const Options options = ParseOptions(arguments, {"--page", "--offset"}, {"--dry-run"});
    if (!CheckOptions(appendRawCommand, options, 2, 2)) {
        return WRONG_USAGE;
    }
    const uint32_t page = PageOption(appendRawCommand, options, "--page");
    int64_t offset = 0;
    if (page == 0) {
        return WRONG_USAGE;
    }
    if (!ParseNumber(options.Value("--offset", "0"), INT32_MIN, INT32_MAX, offset)) {
        return UsageError(appendRawCommand, "--offset takes a number of bytes, such as -2");
    }
    const char *raw = options.others[0], *path = options.others[1];
    {
        const Source source(path);
        if (!HasPages(source) || !HasPage(source, page)) {
            return FAILED;
        }
    }
    if (!Exists(raw)) {
        return ReportSentence(raw, "there is no such file");
    }
    if (!CheckOutput(raw)) {
        return FAILED;
    }
    if (options.Has("--dry-run")) {
        return DryRun("write page " + std::to_string(page) + " of " + path + " to " + raw +
                      (offset < 0 ? ", over its last " + std::to_string(-offset) + " bytes" : ""));
    }
    return Result(AppendCCITTImageFile(raw, path, page - 1, static_cast<int32_t>(offset)) != nullptr, raw);
}

// The library itself reports pages that cannot be loaded.
bool HasNumberedPage(const Source& source)
{
    for (uint32_t page = 0; page < source.pages; ++page) {
        const bool numbered = GetTiffImage(source.file.handle, page) &&
                              GetTiffImageInfo(source.file.handle, page, tag::PageNumber, nullptr);
        DropTiffImage(source.file.handle, page);
        if (numbered) {
            return true;
        }
    }
    return false;
}

int RunNumber(Arguments arguments)
{
    const Options options = ParseOptions(arguments, {"--total"}, {});
    if (!CheckOptions(numberCommand, options, 1, 1)) {
        return WRONG_USAGE;
    }
    const char* path = options.others[0];
    uint32_t total = 0;
    if (options.Has("--total") &&
        (total = NumberOption(numberCommand, options, "--total", UINT16_MAX)) == 0) {
        return WRONG_USAGE;
    }
    {
        const Source source(path);
        if (!IsWhole(source)) {
            return FAILED;
        }
        // The library assumes Intel order.
        if (IsMotorola(source)) {
            return ReportSentence(path, "is in Motorola byte order, in which totals are not written");
        }
        if (!HasNumberedPage(source)) {
            return ReportSentence(path, "no page has a PageNumber tag");
        }
        total = total ? total : source.pages;
    }
    if (total > UINT16_MAX) {
        return ReportSentence(path, "has " + std::to_string(total) + " pages; a total is 65535 at most");
    }
    return Result(UpdatePageNumbers(path, total), path);
}

} // namespace

const Command catCommand = {
    .name = "cat",
    .arguments = "IN.tif... -o OUT.tif [--pages LIST] [--append]",
    .summary = "Writes the pages of several files into one.",
    .details = "  --pages LIST  such as 1,3-5,last, of all files; also behind a name: IN.tif:1,3-5\n"
               "  --append      adds them to OUT.tif instead of replacing it\n"
               "\n"
               "Pages are copied as they are. OUT.tif changes when all of them have been copied.\n",
    .example = "tifftool cat cover.tif letter.tif:2-last -o fax.tif",
    .run = RunCat,
};

const Command splitCommand = {
    .name = "split",
    .arguments = "FILE.tif OUT.tif --page N [--force] [--dry-run]",
    .summary = "Moves the pages from one to the last into a new file.",
    .details = "  --page N   the first page to move, counted from 1\n"
               "  --force    replaces OUT.tif\n"
               "  --dry-run  says what would be done\n",
    .example = "tifftool split inbox.tif second.tif --page 4",
    .run = RunSplit,
};

const Command cutCommand = {
    .name = "cut",
    .arguments = "FILE.tif BASE --pages N [--force] [--dry-run]",
    .summary = "Moves the first pages into files of one page each.",
    .details = "  --pages N  how many\n"
               "  --force    replaces files of the new names\n"
               "  --dry-run  says what would be done\n"
               "\n"
               "The files are BASE0001.tif, BASE0002.tif and so on.\n"
               "A folder, ending in a backslash, gets names beginning with ~ and a number.\n",
    .example = "tifftool cut inbox.tif page --pages 3",
    .run = RunCut,
};

const Command deleteCommand = {
    .name = "delete",
    .arguments = "FILE.tif --page N|--last [--in-place] [--dry-run]",
    .summary = "Deletes a page; the only page goes with its file.",
    .details = "  --page N    the page, counted from 1\n"
               "  --last      the last page\n"
               "  --in-place  relinks the file instead of writing it anew; the page's bytes stay in it\n"
               "  --dry-run   says what would be done\n",
    .example = "tifftool delete fax.tif --last",
    .run = RunDelete,
};

const Command reorderCommand = {
    .name = "reorder",
    .arguments = "FILE.tif",
    .summary = "Rewrites a file page after page, without what no page needs.",
    .details = "Each page's directory comes directly before its data.\n",
    .example = "tifftool reorder fax.tif",
    .run = RunReorder,
};

const Command appendRawCommand = {
    .name = "append-raw",
    .arguments = "RAW.g3 FILE.tif --page N [--offset K] [--dry-run]",
    .summary = "Adds a page's code to a file of bare fax code.",
    .details = "  --page N    the page, counted from 1\n"
               "  --offset K  writes at the end plus K bytes; below 0 over what is there\n"
               "  --dry-run   says what would be done\n"
               "\n"
               "RAW.g3 must exist. When it cannot be written to the end it is deleted.\n",
    .example = "tifftool append-raw line.g3 fax.tif --page 1",
    .run = RunAppendRaw,
};

const Command numberCommand = {
    .name = "number",
    .arguments = "FILE.tif [--total N]",
    .summary = "Sets the page total in every PageNumber tag.",
    .details = "  --total N  up to 65535; without it the number of pages in the file\n",
    .example = "tifftool number fax.tif --total 12",
    .run = RunNumber,
};

} // namespace tifftool
