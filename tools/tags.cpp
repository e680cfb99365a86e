/* tifftool tag: lists, sets and removes the tags of a page. */
#include "choices.h"
#include "describe.h"
#include "diagnosis.h"
#include "options.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace tifftool {

namespace {

struct FieldType {
    const char* name;
    uint32_t code;
    uint32_t bytes;
};

constexpr FieldType fieldTypes[] = {
    {"byte", 1, 1}, {"ascii", 2, 1}, {"short", 3, 2}, {"long", 4, 4}, {"rational", 5, 4}, {"undefined", 7, 1},
};

const FieldType* FindType(const char* name)
{
    for (const FieldType& type : fieldTypes) {
        if (strcmp(type.name, name) == 0) {
            return &type;
        }
    }
    return nullptr;
}

bool IsNumber(const char* text, uint64_t most, uint64_t& number, const char** rest = nullptr)
{
    char* end = nullptr;
    number = strtoull(text, &end, 0);
    if (rest) {
        *rest = end;
    }
    return text[0] >= '0' && text[0] <= '9' && (rest || *end == '\0') && number <= most;
}

void Append(std::vector<uint8_t>& bytes, uint64_t value, uint32_t count)
{
    for (uint32_t index = 0; index < count; ++index) {
        bytes.push_back(static_cast<uint8_t>(value >> 8 * index));
    }
}

// One value as it was typed; a rational is "2" or "3/4".
bool AppendValue(std::vector<uint8_t>& bytes, const FieldType& type, const char* text)
{
    const uint64_t most = (uint64_t{1} << 8 * type.bytes) - 1;
    uint64_t number = 0, denominator = 1;
    const char* rest = nullptr;
    if (!IsNumber(text, most, number, &rest)) {
        return false;
    }
    if (*rest != '\0' && (type.code != 5 || *rest != '/' || !IsNumber(rest + 1, most, denominator))) {
        return false;
    }
    Append(bytes, number, type.bytes);
    if (type.code == 5) {
        Append(bytes, denominator, type.bytes);
    }
    return true;
}

// The values of a tag from the command line; false when one of them is none of its type.
bool ParseValues(const FieldType& type, std::span<const char* const> texts, std::vector<uint8_t>& bytes)
{
    if (type.code == 2) {
        bytes.assign(texts[0], texts[0] + strlen(texts[0]) + 1);
        return texts.size() == 1;
    }
    for (const char* text : texts) {
        if (!AppendValue(bytes, type, text)) {
            return false;
        }
    }
    return true;
}

int List(const char* path, uint32_t page)
{
    const std::string where = std::string(path) + ", page " + std::to_string(page);
    const OpenFile file(OpenTiffFile(path, T_READ));
    if (!file.handle) {
        return ReportOpenFailure(path, TiffError());
    }
    return GetTiffImage(file.handle, page - 1) ? PrintTags(file.handle, page - 1, where)
                                               : ReportError(where, TiffError());
}

int Add(const char* path, uint32_t page, uint32_t tag, const FieldType& type,
        std::span<const char* const> texts)
{
    std::vector<uint8_t> bytes;
    if (!ParseValues(type, texts, bytes)) {
        return UsageError(tagCommand, std::string("not a value of type ") + type.name);
    }
    const size_t elements = bytes.size() / (type.code == 5 ? 8 : type.bytes);
    return AddTiffTagToImage(path, static_cast<int32_t>(page - 1), tag, type.code, bytes.data(),
                             static_cast<uint32_t>(elements))
               ? ALL_FINE
               : ReportError(path, TiffError());
}

bool HasTag(const char* path, uint32_t page, uint32_t tag)
{
    const OpenFile file(OpenTiffFile(path, T_READ));
    return file.handle && GetTiffImage(file.handle, page - 1) &&
           GetTiffImageInfo(file.handle, page - 1, tag, nullptr);
}

// The library rewrites a file also for a tag that is not there.
int Delete(const char* path, uint32_t page, uint32_t tag, bool dryRun)
{
    const std::string what = "tag " + std::to_string(tag) + " of page " + std::to_string(page);
    if (!HasTag(path, page, tag)) {
        return ReportSentence(path, "has no " + what);
    }
    if (dryRun) {
        printf("would remove %s of %s\n", what.c_str(), path);
        return ALL_FINE;
    }
    return DeleteTiffTagOfImage(path, static_cast<int32_t>(page - 1), tag) ? ALL_FINE
                                                                           : ReportError(path, TiffError());
}

int RunTag(Arguments arguments)
{
    const Options options = ParseOptions(arguments, {"--page"}, {"--dry-run"});
    if (!CheckOptions(tagCommand, options, 2, SIZE_MAX)) {
        return WRONG_USAGE;
    }
    const std::string verb = options.others[0];
    const char* path = options.others[1];
    const uint32_t page = ParsePage(options.Value("--page", "1"));
    const std::span others(options.others);
    uint64_t tag = 0;
    if (page == 0) {
        return UsageError(tagCommand, "not a page number");
    }
    if (verb == "list" && others.size() == 2) {
        return List(path, page);
    }
    if (others.size() < 3 || !IsNumber(others[2], UINT16_MAX, tag) || tag == 0) {
        return UsageError(tagCommand, "needs list, add or delete, a file, and the tag's number");
    }
    if (verb == "delete" && others.size() == 3) {
        return Delete(path, page, static_cast<uint32_t>(tag), options.Has("--dry-run"));
    }
    const FieldType* type = others.size() > 4 ? FindType(others[3]) : nullptr;
    if (verb != "add" || !type) {
        return UsageError(tagCommand, "needs add, a file, the tag's number, a type and values");
    }
    return Add(path, page, static_cast<uint32_t>(tag), *type, others.subspan(4));
}

} // namespace

const Command tagCommand = {
    .name = "tag",
    .arguments = "list FILE.tif [--page N]\n"
                 "       tifftool tag add FILE.tif [--page N] TAG TYPE VALUE...\n"
                 "       tifftool tag delete FILE.tif [--page N] TAG [--dry-run]",
    .summary = "Lists, sets or removes the tags of a page.",
    .details = "  --page N   the page, counted from 1; without it the first\n"
               "  TAG        the tag's number\n"
               "  TYPE       byte, ascii, short, long, rational (as 3/4) or undefined\n"
               "  --dry-run  says what would be removed\n",
    .run = RunTag,
};

} // namespace tifftool
