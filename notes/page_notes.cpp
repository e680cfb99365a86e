// The notes of pages: read where the page's tags are loaded, changed by giving the page another value.
#include "core/errors.h"
#include "core/registry.h"
#include "core/tag_block.h"
#include "notes/records.h"
#include "notes/tag_value.h"
#include "pages/page_edit.h"
#include "tiff/editing.h"

#include <algorithm>
#include <cstring>

namespace tiff {

static_assert(offsetof(TiffNote, left) == 4 && offsetof(TiffNote, letterHeight) == 20);
static_assert(offsetof(TiffNote, textBytes) == 24 && offsetof(TiffNote, text) == 32 &&
              sizeof(TiffNote) == 40);

namespace {

// The tag as the file has it: a value that cannot be read must not count as missing.
Status PlanChange(const char* path, uint32_t page, const NoteEdit& edit, NoteValue& changed)
{
    const OpenedTiff file(path, T_READ);
    if (!file)
        return file.OpenStatus();
    CopySource source(file.Get(), BrokenBranch::Refused);
    if (const Status status = LoadForCopy(source, page); status != error::None)
        return status;
    const PageTags tags(file.Get(), page);
    if (!tags)
        return error::NotEnoughMemory;
    const auto found = tags.Find(NOTES_TAG);
    if (edit.change == NoteChange::Add && found && found->type != fieldtype::Ascii)
        return error::MixedByteOrders;
    return ChangeValue(NotesOf(tags), edit, changed);
}

int32_t ChangeNotes(const char* path, uint32_t page, const NoteEdit& edit)
{
    const bool complete = path && (edit.note || edit.change == NoteChange::Delete);
    NoteValue changed;
    const Status status = complete ? PlanChange(path, page, edit, changed) : Status{error::InvalidParameters};
    if (status != error::None)
        return FinishEdit(status);
    const auto number = static_cast<int32_t>(page);
    if (changed.isEmpty)
        return DeleteTiffTagOfImage(path, number, NOTES_TAG);
    const Locked<const uint8_t> bytes(changed.block.Get());
    if (!bytes)
        return FinishEdit(error::NotEnoughMemory);
    return AddTiffTagToImage(path, number, NOTES_TAG, fieldtype::Ascii, bytes.Get(),
                             static_cast<uint32_t>(changed.bytes));
}

Status CountNotes(HGLOBAL file, uint32_t page, int32_t& count)
{
    if (const Status status = PageStatus(file, page); status != error::None)
        return status;
    const PageTags tags(file, page);
    NoteReader reader(NotesOf(tags));
    NoteRecord record{};
    while (reader.NextNote(record))
        ++count;
    return tags ? error::None : error::NotEnoughMemory;
}

Status ReadNote(HGLOBAL file, uint32_t page, uint32_t index, TiffNote* note, std::span<char> room)
{
    if (!note)
        return error::InvalidParameters;
    if (const Status status = PageStatus(file, page); status != error::None)
        return status;
    const PageTags tags(file, page);
    if (!tags)
        return error::NotEnoughMemory;
    NoteReader reader(NotesOf(tags));
    NoteRecord record{};
    for (uint64_t count = uint64_t{index} + 1; count != 0; --count)
        if (!reader.NextNote(record))
            return error::IndexOutOfRange;
    *note = record.fields;
    note->text = room.data();
    const std::span<char> letters = room.first(room.empty() ? 0 : room.size() - 1);
    const size_t length = ReadNoteText(record.text, letters);
    note->textBytes = static_cast<uint32_t>(length);
    if (!room.empty())
        room[std::min(length, letters.size())] = 0;
    return error::None;
}

} // namespace

std::span<const uint8_t> NotesOf(const PageTags& tags)
{
    const auto found = tags ? tags.Find(NOTES_TAG) : std::nullopt;
    return found && found->type == fieldtype::Ascii ? found->values : std::span<const uint8_t>();
}

} // namespace tiff

using namespace tiff;

extern "C" int32_t GetTiffNoteCount(HGLOBAL file, uint32_t page) noexcept
{
    int32_t count = 0;
    StoreLastError(CountNotes(file, page, count));
    return count;
}

extern "C" int32_t GetTiffNote(HGLOBAL file, uint32_t page, uint32_t index, TiffNote* note, char* text,
                               uint32_t textSize) noexcept
{
    return FinishEdit(ReadNote(file, page, index, note, {text, text ? textSize : 0}));
}

extern "C" int32_t AddTiffNote(const char* path, uint32_t page, const TiffNote* note) noexcept
{
    return ChangeNotes(path, page, {NoteChange::Add, 0, note});
}

extern "C" int32_t ReplaceTiffNote(const char* path, uint32_t page, uint32_t index,
                                   const TiffNote* note) noexcept
{
    return ChangeNotes(path, page, {NoteChange::Replace, index, note});
}

extern "C" int32_t DeleteTiffNote(const char* path, uint32_t page, uint32_t index) noexcept
{
    return ChangeNotes(path, page, {NoteChange::Delete, index, nullptr});
}
