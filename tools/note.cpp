/* tifftool note: lists, adds, changes and deletes the text notes of a page. */
#include "inputs.h"
#include "progress.h"
#include "source.h"
#include "standard_streams.h"
#include "system_text.h"
#include "whole_file.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace tifftool {

namespace {

constexpr uint32_t FOREIGN_TAG = 35;

struct NoteOrder {
    const char* path;
    uint32_t page;   // counted from 1
    uint32_t number; // the same; 0 for a new note
};

// A note that owns its text.
struct OwnedNote {
    TiffNote note{};
    std::string text;
};

OwnedNote ReadNote(HGLOBAL file, uint32_t page, uint32_t index)
{
    OwnedNote read;
    if (GetTiffNote(file, page, index, &read.note, nullptr, 0)) {
        read.text.resize(size_t{read.note.textBytes} + 1);
        GetTiffNote(file, page, index, &read.note, read.text.data(), read.note.textBytes + 1);
        read.text.pop_back();
    }
    return read;
}

std::string KindName(uint32_t kind)
{
    return kind == TIFF_NOTE_TEXT     ? "text"
           : kind == TIFF_NOTE_FRAMED ? "framed"
                                      : std::string(1, static_cast<char>(kind));
}

// On one line.
std::string Shown(const std::string& text)
{
    std::string shown;
    for (const char letter : text) {
        if (letter == '\n') {
            shown += "\\n";
        } else if (letter != '\r') {
            shown += static_cast<uint8_t>(letter) < ' ' ? '?' : letter;
        }
    }
    return FromSystem(shown);
}

void PrintNote(uint32_t number, const OwnedNote& read)
{
    const TiffNote& note = read.note;
    const std::string height =
        note.letterHeight == 0 ? "12 points" : std::to_string(note.letterHeight) + " pixels high";
    printf("%u: %s in %d,%d,%d,%d, %s: %s\n", static_cast<unsigned>(number), KindName(note.kind).c_str(),
           static_cast<int>(note.left), static_cast<int>(note.top), static_cast<int>(note.right),
           static_cast<int>(note.bottom), height.c_str(), Shown(read.text).c_str());
}

int ListPage(const Source& source, uint32_t page, bool isNamed)
{
    const HGLOBAL file = source.file.handle;
    const std::string where = PageName(source.path, page);
    if (!GetTiffImage(file, page - 1)) {
        return ReportError(where, TiffError());
    }
    SetTiffError(0);
    const auto count = static_cast<uint32_t>(GetTiffNoteCount(file, page - 1));
    const uint32_t error = count == 0 ? TiffError() : 0;
    if (isNamed && count != 0) {
        printf("%s:\n", ShownName(where).c_str());
    }
    for (uint32_t index = 0; index < count; ++index) {
        PrintNote(index + 1, ReadNote(file, page - 1, index));
    }
    DropTiffImage(file, page - 1);
    return error ? ReportError(where, error) : int{ALL_FINE};
}

int ListFile(const Input& input, bool isNamed)
{
    const Source source(input.path.c_str());
    std::vector<uint32_t> pages;
    if (!HasPages(source) || !SelectPages(source, input.pages, pages)) {
        return FAILED;
    }
    int result = ALL_FINE;
    for (const uint32_t page : pages) {
        result = std::max(result, ListPage(source, page, isNamed || pages.size() > 1));
    }
    return std::max(result, ReportChain(source));
}

int RunList(const Options& options)
{
    std::vector<Input> inputs;
    if (!ReadInputs(noteCommand, options, std::span(options.others).subspan(1), inputs)) {
        return WRONG_USAGE;
    }
    int result = ALL_FINE;
    for (Input& input : inputs) {
        if (input.pages.empty()) {
            input.pages = {{1, 1}};
        }
        result = std::max(result, ListFile(input, inputs.size() > 1));
    }
    return result;
}

// False, with a message, unless the page is there and has the note, which is read.
bool FindNote(const NoteOrder& order, OwnedNote& read)
{
    const Source source(order.path);
    if (!IsWholeWith(source, order.page)) {
        return false;
    }
    if (!GetTiffImage(source.file.handle, order.page - 1)) {
        ReportError(PageName(order.path, order.page), TiffError());
        return false;
    }
    const auto count = static_cast<uint32_t>(GetTiffNoteCount(source.file.handle, order.page - 1));
    if (order.number > count) {
        ReportSentence(PageName(order.path, order.page),
                       "has no note " + std::to_string(order.number) + ", only " + Counted(count, "note"));
        return false;
    }
    if (order.number != 0) {
        read = ReadNote(source.file.handle, order.page - 1, order.number - 1);
    }
    return true;
}

// Edits a copy, so that the file keeps its notes until the new ones are right.
template <class Edit>
int EditCopy(const NoteOrder& order, Edit edit)
{
    return WriteWhole(order.path, true, [&](const char* unfinished) {
        if (WithClock(std::string("rewriting ") + order.path, [&] { return edit(unfinished); })) {
            return int{ALL_FINE};
        }
        const std::string where = PageName(order.path, order.page);
        return TiffError() == FOREIGN_TAG
                   ? ReportSentence(where, "its tag 316 (HostComputer), where notes are kept, is in use by "
                                           "another program")
                   : ReportError(where, TiffError());
    });
}

bool ReadBox(const char* text, TiffNote& note)
{
    const std::string list = text;
    size_t begin = 0;
    for (int32_t* side : {&note.left, &note.top, &note.right, &note.bottom}) {
        const size_t end = side == &note.bottom ? list.size() : list.find(',', begin);
        int64_t number = 0;
        if (end == std::string::npos || begin > list.size() ||
            !ParseNumber(list.substr(begin, end - begin).c_str(), INT32_MIN, INT32_MAX, number)) {
            return false;
        }
        *side = static_cast<int32_t>(number);
        begin = end + 1;
    }
    return note.right > note.left && note.bottom > note.top;
}

bool ReadKind(const std::string& text, TiffNote& note)
{
    note.kind = text == "text"     ? uint32_t{TIFF_NOTE_TEXT}
                : text == "framed" ? uint32_t{TIFF_NOTE_FRAMED}
                                   : static_cast<uint8_t>(text[0]);
    return text == "text" || text == "framed" ||
           (text.size() == 1 && text[0] >= ' ' && text[0] < '~' && text[0] != '%' && text[0] != ',');
}

// Takes what was given; the rest stays. False with a message.
bool TakeOptions(const Options& options, OwnedNote& read)
{
    int64_t height = read.note.letterHeight;
    if (options.Has("--box") && !ReadBox(options.Value("--box", ""), read.note)) {
        UsageError(noteCommand, "--box takes the pixels left, top, right and bottom, such as 100,50,600,200");
        return false;
    }
    if (options.Has("--kind") && !ReadKind(options.Value("--kind", ""), read.note)) {
        UsageError(noteCommand, "--kind takes text, framed, or a character other than ~ % ,");
        return false;
    }
    if (options.Has("--height") && !ParseNumber(options.Value("--height", ""), 0, INT32_MAX, height)) {
        UsageError(noteCommand, "--height takes pixels, or 0 for 12 points");
        return false;
    }
    read.note.letterHeight = static_cast<int32_t>(height);
    read.note.text = read.text.data();
    read.note.textBytes = static_cast<uint32_t>(read.text.size());
    return true;
}

int Add(const NoteOrder& order, const Options& options, const char* text)
{
    OwnedNote added;
    added.note.kind = TIFF_NOTE_TEXT;
    if (!TakeText(text, added.text)) {
        return WRONG_USAGE;
    }
    if (!options.Has("--box")) {
        return UsageError(noteCommand, "add needs --box LEFT,TOP,RIGHT,BOTTOM");
    }
    OwnedNote none;
    if (!TakeOptions(options, added)) {
        return WRONG_USAGE;
    }
    if (!FindNote(order, none)) {
        return FAILED;
    }
    return EditCopy(order, [&](const char* copy) { return AddTiffNote(copy, order.page - 1, &added.note); });
}

int Change(const NoteOrder& order, const Options& options, const char* text)
{
    OwnedNote changed;
    if (!text && !options.Has("--box") && !options.Has("--kind") && !options.Has("--height")) {
        return UsageError(noteCommand, "change needs a text, --box, --kind or --height");
    }
    if (!FindNote(order, changed)) {
        return FAILED;
    }
    if (text && !TakeText(text, changed.text)) {
        return WRONG_USAGE;
    }
    if (!TakeOptions(options, changed)) {
        return WRONG_USAGE;
    }
    return EditCopy(order, [&](const char* copy) {
        return ReplaceTiffNote(copy, order.page - 1, order.number - 1, &changed.note);
    });
}

int Delete(const NoteOrder& order, bool dryRun)
{
    OwnedNote deleted;
    if (!FindNote(order, deleted)) {
        return FAILED;
    }
    if (dryRun) {
        return DryRun("delete note " + std::to_string(order.number) + " of " +
                      PageName(order.path, order.page) + ": " + Shown(deleted.text));
    }
    return EditCopy(order,
                    [&](const char* copy) { return DeleteTiffNote(copy, order.page - 1, order.number - 1); });
}

int RunNote(Arguments arguments)
{
    const Options options =
        ParseOptions(arguments, {"--page", "--pages", "--box", "--kind", "--height"}, {"--dry-run"});
    if (!CheckOptions(noteCommand, options, 2, SIZE_MAX)) {
        return WRONG_USAGE;
    }
    const std::span others(options.others);
    const std::string verb = others[0];
    if (options.Has("--dry-run") && verb != "delete") {
        return UsageError(noteCommand, "--dry-run goes with delete only");
    }
    if (verb == "list") {
        return RunList(options);
    }
    if (options.Has("--pages")) {
        return UsageError(noteCommand, "--pages goes with list only");
    }
    const bool numbered = verb == "change" || verb == "delete";
    NoteOrder order = {others[1], PageOption(noteCommand, options, "--page", "1"), 0};
    if (order.page == 0) {
        return WRONG_USAGE;
    }
    if (verb != "add" && !numbered) {
        return UsageError(noteCommand, "unknown verb \"" + verb + "\"; there are list, add, change, delete");
    }
    const size_t most = verb == "change" ? 4 : 3;
    if (others.size() < 3 || others.size() > most) {
        return UsageError(noteCommand, verb == "add" ? "add takes a file and a text"
                                       : verb == "delete"
                                           ? "delete takes a file and a number"
                                           : "change takes a file, a number and perhaps a text");
    }
    int64_t number = 0;
    if (numbered && !ParseNumber(others[2], 1, INT32_MAX, number)) {
        return UsageError(noteCommand, "notes are numbered from 1, as note list shows");
    }
    order.number = static_cast<uint32_t>(number);
    return verb == "add"      ? Add(order, options, others[2])
           : verb == "change" ? Change(order, options, others.size() > 3 ? others[3] : nullptr)
                              : Delete(order, options.Has("--dry-run"));
}

} // namespace

const Command noteCommand = {
    .name = "note",
    .arguments = "list FILE.tif... [--pages LIST]\n"
                 "       tifftool note add FILE.tif [--page N] --box L,T,R,B [OPTION...] TEXT\n"
                 "       tifftool note change FILE.tif [--page N] NUMBER [OPTION...] [TEXT]\n"
                 "       tifftool note delete FILE.tif [--page N] NUMBER [--dry-run]",
    .summary = "Lists, adds, changes or deletes the notes of a page.",
    .details = "  --page N       the page, counted from 1; without it the first\n"
               "  --pages LIST   the pages that list shows, such as 1,4-6; without it the first\n"
               "  NUMBER         the note, counted from 1 as list shows it\n"
               "  --box L,T,R,B  its left, top, right and bottom in pixels of the page\n"
               "  --kind KIND    text, framed, or another character; without it text\n"
               "  --height N     of the letters, in pixels; 0 or nothing for 12 points\n"
               "  --dry-run      says what would be deleted\n"
               "\n"
               "Notes lie over the page and leave its picture as it is; render --notes draws them.\n",
    .example = "tifftool note add fax.tif --box 100,50,900,200 --kind framed \"Call back\"",
    .run = RunNote,
};

} // namespace tifftool
