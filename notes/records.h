// The value that keeps a page's notes, as bytes: records are found, read and written. A value is text before
// the first record, then records back to back: notes and damaged ones, each up to the next. Two "~" stand for
// one wherever records are looked for, so the last of an odd number before ",1," begins a record.
#pragma once

#include "core/global_block.h"
#include "core/vocabulary.h"
#include "tiff/notes.h"

#include <cstddef>
#include <span>

namespace tiff {

// A record where it lies.
struct NoteRecord {
    std::span<const uint8_t> whole; // with its marker, up to the next record
    bool damaged;                   // it has no fields that can be read
    TiffNote fields;                // without a text
    std::span<const uint8_t> text;  // as written
};

// Steps through the records of a value: its part before the first zero.
struct NoteReader {
    std::span<const uint8_t> value;
    size_t at; // of the next record, or the end

    explicit NoteReader(std::span<const uint8_t> bytes);
    // False at the end.
    bool Next(NoteRecord& record);
    // The same with the next note; damaged records are passed over.
    bool NextNote(NoteRecord& record);
};

// The text of a record as it reads, its first bytes into the room. Returns its whole length.
size_t ReadNoteText(std::span<const uint8_t> written, std::span<char> room);

// A text as it is kept: lines end in CR LF, and there are no other control characters. Bytes for which there
// is no room are only counted.
size_t CleanNoteText(std::span<const char> text, std::span<char> room);

enum class NoteChange { Add, Replace, Delete };

struct NoteEdit {
    NoteChange change;
    uint32_t index;       // not for Add
    const TiffNote* note; // not for Delete
};

// A changed value.
struct NoteValue {
    GlobalBlock block;
    size_t bytes = 0;     // of the block
    bool isEmpty = false; // nothing is left in it: the tag goes
};

// 1; 3 without such a note, 29 for a note that cannot be kept, 35 for another program's value. A note in
// another's place may have the kind and the letter height of that one, which no new note may have.
[[nodiscard]] Status ChangeValue(std::span<const uint8_t> old, const NoteEdit& edit, NoteValue& changed);

} // namespace tiff
