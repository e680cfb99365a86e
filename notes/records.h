// The value that keeps a page's notes, as bytes: records are found, read and written. A value is text before
// the first record, then records back to back: notes and damaged ones, each up to the next. Two "~" stand for
// one wherever records are looked for, so the last of an odd number before ",1," begins a record.
#pragma once

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

inline constexpr size_t NOTE_HEAD_BYTES = 80; // marker and fields take less

// Bytes of a note as a record, at most; and the record itself, which returns its bytes.
size_t MostRecordBytes(const TiffNote& note);
size_t WriteRecord(const TiffNote& note, uint8_t* room);

// What a new note must be; `old`, if any, is the one in whose place it goes.
[[nodiscard]] bool CanBeWritten(const TiffNote& note, const TiffNote* old);

// A change of a value: bytes [from, to) give way to `added`.
enum class NoteChange { Add, Replace, Delete };

struct NoteEdit {
    NoteChange change;
    uint32_t index;       // not for Add
    const TiffNote* note; // not for Delete
};

// Where to change a value, whose bytes have no zero.
struct NotePlace {
    size_t from, to;
    bool doubleLast; // the byte before it is a "~" that would be taken with the new record's
};

// 3 without such a note, 29 for a note that cannot be written, 35 for another program's value.
[[nodiscard]] Status FindNotePlace(std::span<const uint8_t> value, const NoteEdit& edit, NotePlace& place);

} // namespace tiff
