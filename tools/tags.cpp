/* tifftool tag: lists, sets and removes the tags of a page. */
#include "chain.h"
#include "describe.h"
#include "options.h"
#include "progress.h"
#include "source.h"
#include "standard_streams.h"
#include "tag_text.h"
#include "tag_values.h"
#include "whole_file.h"

#include <algorithm>
#include <cstdio>

namespace tifftool {

namespace {

// A tag by its number or name; 0 for none.
uint32_t FindTag(const char* text)
{
    int64_t number = 0;
    return ParseNumber(text, 1, UINT16_MAX, number) ? static_cast<uint32_t>(number) : TagByName(text);
}

constexpr size_t ANY_NUMBER = SIZE_MAX;
constexpr uint32_t INPUT_OUTPUT = 6;

// Tags needed to find or decode the picture.
constexpr uint32_t keptTags[] = {259, 273, 279, 324, 325, 347, 513, 514, 519, 520, 521};

// Positions in the file, which a user cannot know.
constexpr uint32_t positionTags[] = {273, 279, 324, 325, 330, 513, 514, 519, 520, 521, 34665, 34853, 40965};

bool IsAmong(uint32_t tag, std::span<const uint32_t> tags)
{
    return std::ranges::find(tags, tag) != tags.end();
}

struct TagOrder {
    const char* path;
    uint32_t page; // counted from 1
    uint32_t tag;
    bool dryRun;
};

std::string Described(uint32_t tag)
{
    const std::string name = TagName(tag), number = std::to_string(tag);
    return "tag " + number + (name == "tag " + number ? "" : " (" + name + ")");
}

int ListPage(Source& source, uint32_t page, Json* json)
{
    if (!GetTiffImage(source.file.handle, page - 1)) {
        return ReportError(PageName(source.path, page), TiffError());
    }
    if (!json) {
        return PrintTags(source, page - 1);
    }
    json->Open('{').Key("file").Text(ShownName(source.path)).Key("page").Number(page).Key("tags");
    const int result = WriteTags(*json, source, page - 1);
    json->Close('}');
    return result;
}

int List(const Options& options)
{
    std::vector<Input> inputs;
    if (!ReadInputs(tagCommand, options, std::span(options.others).subspan(1), inputs)) {
        return WRONG_USAGE;
    }
    Json json;
    json.Open('[');
    int result = ALL_FINE;
    for (Input& input : inputs) {
        const PageSelection first = {{1, 1}};
        Source source(input.path.c_str());
        std::vector<uint32_t> pages;
        if (!HasPages(source) || !SelectPages(source, input.pages.empty() ? first : input.pages, pages)) {
            result = FAILED;
            continue;
        }
        for (const uint32_t page : pages) {
            result = std::max(result, ListPage(source, page, options.Has("--json") ? &json : nullptr));
        }
        result = std::max(result, ReportChain(source));
    }
    if (options.Has("--json")) {
        Print(json.Close(']'));
    }
    return result;
}

// Edits a copy, so that the file keeps its tags until the new ones are right.
template <class Edit>
int EditCopy(const TagOrder& order, Edit edit)
{
    return WriteWhole(order.path, true, [&](const char* unfinished) {
        const int32_t edited =
            WithClock(std::string("rewriting ") + order.path, [&] { return edit(unfinished); });
        return edited ? int{ALL_FINE} : ReportError(PageName(order.path, order.page), TiffError());
    });
}

// The library has counted bytes; the entry gets the number of its values.
bool CorrectCount(const char* path, const TagOrder& order, const FieldType& type, size_t bytes)
{
    RawFile raw(path, "r+b");
    const Chain chain = WalkChain(raw);
    TagEntry entry;
    return order.page <= chain.directories.size() &&
           FindEntry(raw, chain.directories[order.page - 1], order.tag, entry) && entry.type == type.code &&
           entry.count == bytes &&
           WriteCount(raw, entry, static_cast<uint32_t>(bytes / ElementBytes(type.code)));
}

int Add(const TagOrder& order, const FieldType& type, std::span<const char* const> texts)
{
    std::vector<uint8_t> bytes;
    if (const std::string wrong = ParseValues(type, texts, bytes); !wrong.empty()) {
        return UsageError(tagCommand, wrong);
    }
    if (IsAmong(order.tag, positionTags)) {
        return ReportSentence(order.path, Described(order.tag) + " says where data lie in the file; another "
                                                                 "value would lose them");
    }
    {
        const Source source(order.path);
        if (!IsWholeWith(source, order.page)) {
            return FAILED;
        }
        if (type.takenAsBytes && IsMotorola(source)) {
            ReverseElements(type.code, bytes);
        }
    }
    const size_t count = type.takenAsBytes ? bytes.size() : bytes.size() / ElementBytes(type.code);
    return EditCopy(order, [&](const char* copy) {
        const bool added = AddTiffTagToImage(copy, static_cast<int32_t>(order.page - 1), order.tag, type.code,
                                             bytes.data(), static_cast<uint32_t>(count));
        if (!added || !type.takenAsBytes || CorrectCount(copy, order, type, bytes.size())) {
            return int32_t{added};
        }
        SetTiffError(INPUT_OUTPUT);
        return int32_t{0};
    });
}

// The library would rewrite the file even without the tag.
int Delete(const TagOrder& order)
{
    const std::string what = Described(order.tag) + " of page " + std::to_string(order.page);
    {
        const Source source(order.path);
        if (!IsWholeWith(source, order.page)) {
            return FAILED;
        }
        if (!GetTiffImage(source.file.handle, order.page - 1)) {
            return ReportError(PageName(order.path, order.page), TiffError());
        }
        if (!GetTiffImageInfo(source.file.handle, order.page - 1, order.tag, nullptr)) {
            return ReportSentence(order.path, "has no " + what);
        }
    }
    if (IsAmong(order.tag, keptTags)) {
        return ReportSentence(order.path, "the picture would be lost without " + what);
    }
    if (order.dryRun) {
        printf("would remove %s of %s\n", what.c_str(), order.path);
        return ALL_FINE;
    }
    return EditCopy(order, [&](const char* copy) {
        return DeleteTiffTagOfImage(copy, static_cast<int32_t>(order.page - 1), order.tag);
    });
}

int RunTag(Arguments arguments)
{
    const Options options = ParseOptions(arguments, {"--pages", "--page"}, {"--dry-run", "--json"});
    if (!CheckOptions(tagCommand, options, 2, ANY_NUMBER)) {
        return WRONG_USAGE;
    }
    const std::span others(options.others);
    const std::string verb = others[0];
    if (verb == "list") {
        return List(options);
    }
    if (options.Has("--pages") || options.Has("--json")) {
        return UsageError(tagCommand, "--pages and --json go with list only");
    }
    TagOrder order = {others[1], PageOption(tagCommand, options, "--page", "1"), 0, options.Has("--dry-run")};
    if (order.page == 0) {
        return WRONG_USAGE;
    }
    if (verb != "add" && verb != "delete") {
        return UsageError(tagCommand, "unknown verb \"" + verb + "\"; there are list, add, delete");
    }
    if (order.dryRun && verb != "delete") {
        return UsageError(tagCommand, "--dry-run goes with delete only");
    }
    const size_t wanted = verb == "delete" ? 3 : 5;
    if (others.size() < wanted || (others.size() > wanted && verb != "add")) {
        return UsageError(tagCommand, verb == "delete" ? "delete takes a file and a tag"
                                                       : "add takes a file, a tag, a type and values");
    }
    order.tag = FindTag(others[2]);
    if (order.tag == 0) {
        return UsageError(tagCommand,
                          std::string("unknown tag \"") + others[2] +
                              "\"; a tag is a number from 1 to 65535, or a name as tag list shows it");
    }
    if (verb == "delete") {
        return Delete(order);
    }
    const FieldType* const type = FindFieldType(others[3]);
    return type ? Add(order, *type, others.subspan(4))
                : UsageError(tagCommand, std::string("unknown type \"") + others[3] + "\"; there are " +
                                             FieldTypeNames());
}

} // namespace

const Command tagCommand = {
    .name = "tag",
    .arguments = "list FILE.tif... [--pages LIST] [--json]\n"
                 "       tifftool tag add FILE.tif [--page N] TAG TYPE VALUE...\n"
                 "       tifftool tag delete FILE.tif [--page N] TAG [--dry-run]",
    .summary = "Lists, sets or removes the tags of a page.",
    .details = "  --page N   the page, counted from 1; without it the first\n"
               "  --pages L  several, such as 1,3-5,last\n"
               "  --json     lists for programs, with all values\n"
               "  TAG        the tag's number, or its name, such as Artist\n"
               "  TYPE       byte, ascii, short, long, rational (as 3/4), sbyte, undefined, sshort, slong,\n"
               "             srational, float or double\n"
               "  VALUE      a number; for ascii one text, in quotes when it has several words\n"
               "  --dry-run  says what would be removed\n",
    .example = "tifftool tag add fax.tif Artist ascii \"Records office\"",
    .run = RunTag,
};

} // namespace tifftool
