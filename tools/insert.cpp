/* tifftool insert: inserts a picture as a page of a file. */
#include "diagnosis.h"
#include "options.h"
#include "pages.h"
#include "progress.h"
#include "source.h"
#include "whole_file.h"

#include <cstdio>

namespace tifftool {

namespace {

constexpr uint32_t MOTOROLA_FILE = 35;

struct InsertOrder {
    const char* target;
    uint32_t page; // counted from 1
    uint32_t selector, fillOrder;
    bool inPlace, replace, create, dryRun;
};

// Counts the pages of the target; false, with a message, when nothing can be inserted.
bool CountTargetPages(const InsertOrder& order, uint32_t& pages)
{
    pages = 0;
    if (!CheckOutput(order.target)) {
        return false;
    }
    if (!Exists(order.target)) {
        if (!order.create) {
            ReportSentence(order.target, "there is no such file; --create makes it");
        }
        return order.create;
    }
    const Source source(order.target);
    if (!IsWhole(source)) {
        return false;
    }
    if (IsMotorola(source)) {
        ReportError(order.target, MOTOROLA_FILE);
        return false;
    }
    pages = source.pages;
    return true;
}

int Insert(const InsertOrder& order, uint32_t pages, const Picture& picture)
{
    if (const int result = CheckDepth(picture, order.selector); result != ALL_FINE) {
        return result;
    }
    const std::string page = std::to_string(order.page), file = order.target;
    const std::string appended = file + " as page " + std::to_string(pages + 1);
    const bool append = order.page > pages;
    if (order.dryRun) {
        return DryRun(append          ? "append to " + appended
                      : order.replace ? "replace page " + page + " of " + file
                                      : "insert before page " + page + " of " + file);
    }
    const int32_t inserted = WithClock("writing " + file, [&] {
        return InsertTiffImage(order.target, picture.dib.handle, order.selector, 0, order.fillOrder,
                               static_cast<int32_t>(order.page - 1), order.inPlace, order.replace);
    });
    if (!inserted) {
        const uint32_t error = TiffError();
        return ReportError(error == 2 || error == 6 ? file : picture.where, error);
    }
    if (append) {
        printf("appended to %s\n", appended.c_str());
    }
    return ALL_FINE;
}

int RunInsert(Arguments arguments)
{
    const Options options = ParseOptions(arguments, {"--page", "--from", "--compression", "--fill-order"},
                                         {"--replace", "--in-place", "--create", "--dry-run"});
    if (!CheckOptions(insertCommand, options, 2, 2)) {
        return WRONG_USAGE;
    }
    const InsertOrder order = {
        .target = options.others[0],
        .page = PageOption(insertCommand, options, "--page"),
        .selector = CompressionOption(insertCommand, options, "lzw"),
        .fillOrder = FillOrderOption(insertCommand, options),
        .inPlace = options.Has("--in-place"),
        .replace = options.Has("--replace"),
        .create = options.Has("--create"),
        .dryRun = options.Has("--dry-run"),
    };
    const uint32_t from = PageOption(insertCommand, options, "--from", "1");
    Input input;
    if (order.page == 0 || order.selector == 0 || order.fillOrder == 0 || from == 0 ||
        !ReadOnePage(insertCommand, {}, options.others[1], input)) {
        return WRONG_USAGE;
    }
    if (options.Has("--from")) {
        input.pages = {{from, from}};
    }
    uint32_t pages = 0;
    if (!CountTargetPages(order, pages)) {
        return FAILED;
    }
    if (order.replace && order.page > pages) {
        return ReportSentence(order.target, "has no page " + std::to_string(order.page) +
                                                " to replace, only " + Counted(pages, "page"));
    }
    return ForEachPicture(input, Damage::Refused,
                          [&](const Picture& picture) { return Insert(order, pages, picture); });
}

} // namespace

const Command insertCommand = {
    .name = "insert",
    .arguments = "FILE.tif PICTURE.bmp|PICTURE.cal|PICTURE.tif --page P [OPTION...]",
    .summary = "Puts a picture into a file as a new page.",
    .details = "  --page P            the page that it comes before, counted from 1\n"
               "  --from N            the page of PICTURE.tif; without it the first\n"
               "  --replace           drops page P\n"
               "  --in-place          relinks the file instead of writing it anew\n"
               "  --compression NAME  none|packbits|lzw|lzw-pred|mh|g3|g3-2d|g4; without it lzw\n"
               "  --fill-order 1|2    1 stores the most significant bit first, 2 the least\n"
               "  --create            makes FILE.tif when it is not there\n"
               "  --dry-run           says what would be done\n"
               "\n"
               "Beyond the last page the picture is appended.\n",
    .example = "tifftool insert fax.tif cover.bmp --page 1 --compression g4",
    .run = RunInsert,
};

} // namespace tifftool
