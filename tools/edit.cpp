/* tifftool cat, split, cut, insert, delete, reorder, append-raw and number: pages moved about without
 * being decoded.
 */
#include "choices.h"
#include "diagnosis.h"
#include "options.h"
#include "pages.h"
#include "progress.h"
#include "whole_file.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace tifftool {

namespace {

constexpr size_t ANY_NUMBER = SIZE_MAX;

int Result(int32_t succeeded, const std::string& where)
{
    return succeeded ? ALL_FINE : ReportError(where, TiffError());
}

// The number of pages, or 0 with a line that says why.
uint32_t CountPages(const char* path)
{
    const uint32_t pages = GetNumberOfImagesInTiffFile(path);
    const uint32_t error = TiffError();
    if (pages != 0xFFFFFFFF && pages != 0 && error == 0) {
        return pages;
    }
    if (pages == 0) {
        ReportSentence(path, "has no pages");
    } else {
        ReportOpenFailure(path, error);
    }
    return 0;
}

bool IsNumber(const char* text, int32_t& number)
{
    char* end = nullptr;
    const long value = strtol(text, &end, 10);
    number = static_cast<int32_t>(value);
    return *text != '\0' && *end == '\0' && value >= INT32_MIN && value <= INT32_MAX;
}

uint16_t ByteOrder(HGLOBAL file)
{
    TiffFileInformation facts{};
    GetTiffFileInfo(file, &facts);
    return facts.byteOrder;
}

// The target stays open: looking for its end anew for each file would take ever longer.
int AppendPages(HGLOBAL target, const char* path)
{
    constexpr uint32_t MIXED_BYTE_ORDERS = 35;
    const uint32_t pages = CountPages(path);
    if (pages == 0) {
        return FAILED;
    }
    const OpenFile source(OpenTiffFile(path, T_READ));
    if (!source.handle) {
        return ReportError(path, TiffError());
    }
    const bool isNew = NumberOfTiffImages(target, TIFF_ALL_PAGES) == 0;
    if (!isNew && ByteOrder(source.handle) != ByteOrder(target)) {
        return ReportError(path, MIXED_BYTE_ORDERS);
    }
    for (uint32_t page = 0; page < pages; ++page) {
        if (!CopyTiffImage(source.handle, page, target)) {
            return ReportError(path, TiffError());
        }
        DrawProgress(pages, page + 1, 0);
    }
    return ALL_FINE;
}

int RunCat(Arguments arguments)
{
    const Options options = ParseOptions(arguments, {"-o"}, {"--append"});
    if (!CheckOptions(catCommand, options, 1, ANY_NUMBER)) {
        return WRONG_USAGE;
    }
    if (!options.Has("-o")) {
        return UsageError(catCommand, "needs -o and a file");
    }
    return WriteWhole(options.Value("-o", ""), options.Has("--append"), [&](const char* target) {
        const OpenFile whole(OpenTiffFile(target, T_APPEND));
        if (!whole.handle || TiffError() != 0) {
            return ReportError(options.Value("-o", ""), TiffError());
        }
        for (const char* path : options.others) {
            if (const int result = AppendPages(whole.handle, path); result != ALL_FINE) {
                return result;
            }
        }
        return int{ALL_FINE};
    });
}

// What would be done is said instead of being done.
int DryRun(const std::string& sentence)
{
    printf("would %s\n", sentence.c_str());
    return ALL_FINE;
}

std::string PagesText(uint32_t first, uint32_t last)
{
    return first == last ? "page " + std::to_string(first)
                         : "pages " + std::to_string(first) + " to " + std::to_string(last);
}

bool IsPageOf(const char* path, uint32_t page, uint32_t pages)
{
    if (page <= pages) {
        return true;
    }
    ReportSentence(path, "has " + std::to_string(pages) + (pages == 1 ? " page" : " pages"));
    return false;
}

int RunSplit(Arguments arguments)
{
    const Options options = ParseOptions(arguments, {"--page"}, {"--dry-run"});
    if (!CheckOptions(splitCommand, options, 2, 2)) {
        return WRONG_USAGE;
    }
    const uint32_t page = PageOption(splitCommand, options, "--page");
    if (page == 0) {
        return WRONG_USAGE;
    }
    const char *source = options.others[0], *target = options.others[1];
    const uint32_t pages = CountPages(source);
    if (pages == 0 || !IsPageOf(source, page, pages)) {
        return FAILED;
    }
    // The library would rename the file, or find too few pages in it.
    if (page == 1) {
        return ReportSentence(source, "nothing would be left; rename the file instead");
    }
    if (options.Has("--dry-run")) {
        return DryRun("move " + PagesText(page, pages) + " of " + source + " to " + target);
    }
    return Result(SplitTiffFile(source, target, static_cast<int32_t>(page - 1), DrawProgress, 0), source);
}

int RunCut(Arguments arguments)
{
    const Options options = ParseOptions(arguments, {"--pages"}, {"--dry-run"});
    if (!CheckOptions(cutCommand, options, 2, 2)) {
        return WRONG_USAGE;
    }
    const uint32_t count = PageOption(cutCommand, options, "--pages");
    if (count == 0) {
        return WRONG_USAGE;
    }
    const char *source = options.others[0], *base = options.others[1];
    const uint32_t pages = CountPages(source);
    if (pages == 0 || !IsPageOf(source, count, pages)) {
        return FAILED;
    }
    if (pages == 1) {
        return ReportSentence(source, "has a single page already");
    }
    if (options.Has("--dry-run")) {
        return DryRun("move " + PagesText(1, count) + " of " + source + " to files " + base +
                      "0001.tif and on" + (count == pages ? ", and delete " + std::string(source) : ""));
    }
    return Result(CutTiffFile(source, base, static_cast<int32_t>(count), DrawProgress, 0), source);
}

int RunInsert(Arguments arguments)
{
    const Options options = ParseOptions(arguments, {"--page", "--from", "--compression", "--fill-order"},
                                         {"--replace", "--in-place", "--dry-run"});
    if (!CheckOptions(insertCommand, options, 2, 2)) {
        return WRONG_USAGE;
    }
    const uint32_t page = PageOption(insertCommand, options, "--page");
    const uint32_t from = ParsePage(options.Value("--from", "1"));
    const uint32_t selector = FindCompression(options.Value("--compression", "lzw"));
    const char* order = options.Value("--fill-order", "1");
    if (page == 0) {
        return WRONG_USAGE;
    }
    if (from == 0 || selector == 0 || (strcmp(order, "1") != 0 && strcmp(order, "2") != 0)) {
        return UsageError(insertCommand, "a value cannot be used");
    }
    const char *target = options.others[0], *picture = options.others[1];
    return WithPicture(picture, from, [&](const OwnedBlock& dib, const std::string& where) {
        if (const int result = CheckDepth(dib, selector, where); result != ALL_FINE) {
            return result;
        }
        const bool replace = options.Has("--replace");
        if (options.Has("--dry-run")) {
            return DryRun(std::string(replace ? "replace page " : "insert before page ") +
                          std::to_string(page) + " of " + target);
        }
        return Result(InsertTiffImage(target, dib.handle, selector, 0, static_cast<uint32_t>(order[0] - '0'),
                                      static_cast<int32_t>(page - 1), options.Has("--in-place"), replace),
                      target);
    });
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
    const uint32_t pages = CountPages(path);
    if (pages == 0 || !IsPageOf(path, page, pages)) {
        return FAILED;
    }
    if (options.Has("--dry-run")) {
        return DryRun(pages == 1 ? "delete " + std::string(path) + " with its only page"
                                 : "delete page " + std::to_string(page ? page : pages) + " of " + path);
    }
    return Result(DeleteTiffImage(path, static_cast<int32_t>(page) - 1, options.Has("--in-place")), path);
}

int RunReorder(Arguments arguments)
{
    const Options options = ParseOptions(arguments, {}, {});
    if (!CheckOptions(reorderCommand, options, 1, 1)) {
        return WRONG_USAGE;
    }
    return Result(ReorderTiffFile(options.others[0]), options.others[0]);
}

int RunAppendRaw(Arguments arguments)
{
    const Options options = ParseOptions(arguments, {"--page", "--offset"}, {"--dry-run"});
    if (!CheckOptions(appendRawCommand, options, 2, 2)) {
        return WRONG_USAGE;
    }
    const uint32_t page = PageOption(appendRawCommand, options, "--page");
    int32_t offset = 0;
    if (page == 0) {
        return WRONG_USAGE;
    }
    if (!IsNumber(options.Value("--offset", "0"), offset)) {
        return UsageError(appendRawCommand, "--offset is not a number");
    }
    const char *raw = options.others[0], *source = options.others[1];
    if (options.Has("--dry-run")) {
        return DryRun("write page " + std::to_string(page) + " of " + source + " to " + raw +
                      (offset < 0 ? ", over its last " + std::to_string(-int64_t{offset}) + " bytes" : ""));
    }
    return Result(AppendCCITTImageFile(raw, source, page - 1, offset) != nullptr, raw);
}

int RunNumber(Arguments arguments)
{
    const Options options = ParseOptions(arguments, {"--total"}, {});
    if (!CheckOptions(numberCommand, options, 1, 1)) {
        return WRONG_USAGE;
    }
    const char* path = options.others[0];
    const uint32_t pages = CountPages(path);
    const uint32_t total = options.Has("--total") ? PageOption(numberCommand, options, "--total") : pages;
    if (total == 0) {
        return options.Has("--total") ? WRONG_USAGE : FAILED;
    }
    if (pages == 0) {
        return FAILED;
    }
    // The library takes every file to be in Intel order.
    {
        TiffFileInformation info = {};
        const OpenFile file(OpenTiffFile(path, T_READ));
        if (GetTiffFileInfo(file.handle, &info) && info.byteOrder == TIFF_MOTOROLA) {
            return ReportSentence(path, "is in Motorola byte order, in which totals are not written");
        }
    }
    return Result(UpdatePageNumbers(path, total), path);
}

} // namespace

const Command catCommand = {
    .name = "cat",
    .arguments = "IN.tif... -o OUT.tif [--append]",
    .summary = "Writes the pages of several files into one.",
    .details = "  --append  adds them to OUT.tif instead of replacing it\n"
               "\n"
               "Pages are copied as they are. OUT.tif changes when all of them have been copied.\n",
    .run = RunCat,
};

const Command splitCommand = {
    .name = "split",
    .arguments = "FILE.tif OUT.tif --page N [--dry-run]",
    .summary = "Moves the pages from one to the last into a new file.",
    .details = "  --page N   the first page to move, counted from 1\n"
               "  --dry-run  says what would be done\n",
    .run = RunSplit,
};

const Command cutCommand = {
    .name = "cut",
    .arguments = "FILE.tif BASE --pages N [--dry-run]",
    .summary = "Moves the first pages into files of one page each.",
    .details = "  --pages N  how many\n"
               "  --dry-run  says what would be done\n"
               "\n"
               "The files are BASE0001.tif, BASE0002.tif and so on, and replace files of these names.\n"
               "A folder, ending in a backslash, gets names beginning with ~ and a number.\n",
    .run = RunCut,
};

const Command insertCommand = {
    .name = "insert",
    .arguments = "FILE.tif PICTURE.bmp|PICTURE.tif --page P [OPTION...]",
    .summary = "Puts a picture into a file as a new page.",
    .details = "  --page P            the page that it comes before, counted from 1\n"
               "  --from N            the page of PICTURE.tif; without it the first\n"
               "  --replace           drops page P\n"
               "  --in-place          relinks the file instead of writing it anew\n"
               "  --compression NAME  none|packbits|lzw|lzw-pred|mh|g3|g3-2d|g4; without it lzw\n"
               "  --fill-order 1|2    1 stores the most significant bit first, 2 the least\n"
               "  --dry-run           says what would be done\n",
    .run = RunInsert,
};

const Command deleteCommand = {
    .name = "delete",
    .arguments = "FILE.tif --page N|--last [--in-place] [--dry-run]",
    .summary = "Deletes a page; the only page goes with its file.",
    .details = "  --page N    the page, counted from 1\n"
               "  --last      the last page\n"
               "  --in-place  relinks the file instead of writing it anew; the page's bytes stay in it\n"
               "  --dry-run   says what would be done\n",
    .run = RunDelete,
};

const Command reorderCommand = {
    .name = "reorder",
    .arguments = "FILE.tif",
    .summary = "Rewrites a file page after page, without what no page needs.",
    .details = "Each page's directory comes directly before its data.\n",
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
    .run = RunAppendRaw,
};

const Command numberCommand = {
    .name = "number",
    .arguments = "FILE.tif [--total N]",
    .summary = "Sets the page total in every PageNumber tag.",
    .details = "  --total N  without it the number of pages in the file\n",
    .run = RunNumber,
};

} // namespace tifftool
