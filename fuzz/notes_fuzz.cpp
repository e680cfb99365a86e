// Takes any bytes for the value that keeps a page's notes, and changes it. All other notes read as before,
// and all other bytes are still there.
#include "notes/records.h"
#include "scaffold.h"

namespace {

using fuzz::Demand, fuzz::Input;
using namespace tiff;

struct Content {
    std::vector<std::string> notes, damaged; // notes as fields and text
    std::string before;

    bool operator==(const Content&) const = default;
};

Content Read(Input value)
{
    Content content;
    NoteReader reader(value);
    content.before.assign(value.begin(), value.begin() + static_cast<ptrdiff_t>(reader.at));
    for (NoteRecord record{}; reader.Next(record);) {
        const TiffNote& note = record.fields;
        std::string text(ReadNoteText(record.text, {}), '?');
        ReadNoteText(record.text, text);
        for (const int64_t field : {int64_t{note.kind}, int64_t{note.left}, int64_t{note.top},
                                    int64_t{note.right}, int64_t{note.bottom}, int64_t{note.letterHeight}})
            text += ' ' + std::to_string(field);
        if (record.damaged)
            content.damaged.emplace_back(record.whole.begin(), record.whole.end());
        else
            content.notes.push_back(text);
    }
    return content;
}

void Change(Input value, const NoteEdit& edit, const Content& expected)
{
    NoteValue changed;
    if (ChangeValue(value, edit, changed) != error::None)
        return;
    const Locked<const uint8_t> block(changed.block.Get());
    Demand(Read({block.Get(), changed.bytes}) == expected);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0)
        return 0;
    const fuzz::Run run(64u << 20);
    const Input value(data, size);
    const Content content = Read(value);
    // The input is a text, too.
    const TiffNote note = {
        'T', 1, 2, 3, 4, 5, static_cast<uint32_t>(size), reinterpret_cast<const char*>(data)};
    std::string added(CleanNoteText({note.text, size}, {}), '?');
    CleanNoteText({note.text, size}, added);
    added += " 84 1 2 3 4 5";
    Content expected = content;
    expected.notes.push_back(added);
    Change(value, {NoteChange::Add, 0, &note}, expected);
    for (const size_t index : {size_t{0}, content.notes.size() / 2, content.notes.size() - 1}) {
        if (index >= content.notes.size())
            continue;
        const auto number = static_cast<uint32_t>(index);
        expected = content;
        expected.notes[index] = added;
        Change(value, {NoteChange::Replace, number, &note}, expected);
        expected.notes.erase(expected.notes.begin() + static_cast<ptrdiff_t>(index));
        Change(value, {NoteChange::Delete, number, nullptr}, expected);
    }
    return 0;
}
