#include "notes/records.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace tiff {

namespace {

constexpr std::string_view MARKER = "~,1,";
constexpr uint8_t TILDE = '~', RETURN = '\r', FEED = '\n', FIRST_LETTER = ' ';

bool BeginsRecord(std::span<const uint8_t> bytes)
{
    return bytes.size() >= MARKER.size() && std::memcmp(bytes.data(), MARKER.data(), MARKER.size()) == 0;
}

// From a place outside any pair of "~" on.
size_t FindRecord(std::span<const uint8_t> value, size_t at)
{
    while (at < value.size()) {
        const void* const found = std::memchr(&value[at], TILDE, value.size() - at);
        if (!found)
            break;
        at = static_cast<size_t>(static_cast<const uint8_t*>(found) - value.data());
        if (BeginsRecord(value.subspan(at)))
            return at;
        at += at + 1 < value.size() && value[at + 1] == TILDE ? 2 : 1;
    }
    return value.size();
}

// A number of 32 bits and its comma. Zeros before it do not count.
bool TakeNumber(std::span<const uint8_t>& rest, int32_t& number)
{
    const auto* const begin = reinterpret_cast<const char*>(rest.data());
    const auto* const end = begin + rest.size();
    const auto [behind, fault] = std::from_chars(begin, end, number);
    if (fault != std::errc() || behind == end || *behind != ',')
        return false;
    rest = rest.subspan(static_cast<size_t>(behind - begin) + 1);
    return true;
}

bool IsKind(uint8_t byte)
{
    return byte != TILDE && byte != ',';
}

bool TakeFields(std::span<const uint8_t>& rest, TiffNote& fields)
{
    if (rest.size() < 2 || !IsKind(rest[0]) || rest[1] != ',')
        return false;
    fields = {};
    fields.kind = rest[0];
    rest = rest.subspan(2);
    for (int32_t* field : {&fields.left, &fields.top, &fields.right, &fields.bottom, &fields.letterHeight})
        if (!TakeNumber(rest, *field))
            return false;
    return true;
}

// Copies bytes as long as there is room, and counts all of them.
struct Cut {
    std::span<char> room;
    size_t length = 0;

    void Put(uint8_t byte)
    {
        if (length < room.size())
            room[length] = static_cast<char>(byte);
        ++length;
    }
};

// Every byte of a clean text.
template <class Put>
void ForEachClean(std::span<const char> text, Put put)
{
    for (size_t at = 0; at < text.size(); ++at) {
        const auto byte = static_cast<uint8_t>(text[at]);
        if (byte == RETURN || byte == FEED) {
            put(RETURN);
            put(FEED);
            at += byte == RETURN && at + 1 < text.size() && text[at + 1] == FEED;
        } else if (byte >= FIRST_LETTER) {
            put(byte);
        }
    }
}

bool IsPrintable(uint32_t kind)
{
    return kind >= FIRST_LETTER && kind < TILDE && kind != '%' && kind != ',';
}

// A record whose last "~" has no other.
bool EndsInSingleTilde(std::span<const uint8_t> record)
{
    const auto other =
        std::find_if(record.rbegin(), record.rend(), [](uint8_t byte) { return byte != TILDE; });
    return (other - record.rbegin()) % 2 != 0;
}

// Where to change a value: bytes [from, to) give way.
struct NotePlace {
    size_t from, to;
    bool doubleLast; // the byte before it is a "~" that would be taken with the new record's
};

constexpr size_t HEAD_BYTES = 80; // marker and fields take less

size_t MostRecordBytes(const TiffNote& note)
{
    return HEAD_BYTES + size_t{note.textBytes} * 2;
}

// Returns its bytes.
size_t WriteRecord(const TiffNote& note, uint8_t* room)
{
    const int head = std::snprintf(reinterpret_cast<char*>(room), HEAD_BYTES, "~,1,%c,%d,%d,%d,%d,%d,",
                                   static_cast<char>(note.kind), static_cast<int>(note.left),
                                   static_cast<int>(note.top), static_cast<int>(note.right),
                                   static_cast<int>(note.bottom), static_cast<int>(note.letterHeight));
    uint8_t* end = room + head;
    ForEachClean({note.text, note.textBytes}, [&](uint8_t byte) {
        *end++ = byte;
        if (byte == TILDE)
            *end++ = byte;
    });
    return static_cast<size_t>(end - room);
}

// `old`, if any, is the note in whose place it goes.
bool CanBeWritten(const TiffNote& note, const TiffNote* old)
{
    return (IsPrintable(note.kind) || (old && note.kind == old->kind)) &&
           (note.letterHeight >= 0 || (old && note.letterHeight == old->letterHeight)) &&
           note.right > note.left && note.bottom > note.top && (note.text || note.textBytes == 0);
}

// A new note comes behind all others. Deliberate: it goes before damaged records at the end when the last of
// them ends in a single "~": that one and the new record's would be read as a pair, and it must not be
// changed.
Status FindEnd(std::span<const uint8_t> value, NotePlace& place)
{
    place = {value.size(), value.size(), false};
    NoteReader reader(value);
    if (reader.at == value.size())
        return value.empty() ? error::None : error::MixedByteOrders;
    size_t firstDamaged = reader.at;
    NoteRecord last{};
    while (reader.Next(last))
        if (!last.damaged)
            firstDamaged = reader.at;
    if (!EndsInSingleTilde(last.whole))
        return error::None;
    place.doubleLast = !last.damaged;
    if (last.damaged)
        place.from = place.to = firstDamaged;
    return error::None;
}

Status FindNotePlace(std::span<const uint8_t> value, const NoteEdit& edit, NotePlace& place)
{
    if (edit.change == NoteChange::Add)
        return CanBeWritten(*edit.note, nullptr) ? FindEnd(value, place) : Status{error::InvalidParameters};
    NoteReader reader(value);
    NoteRecord found{};
    for (uint64_t count = uint64_t{edit.index} + 1; count != 0; --count)
        if (!reader.NextNote(found))
            return error::IndexOutOfRange;
    place = {reader.at - found.whole.size(), reader.at, false};
    const bool writable = edit.change == NoteChange::Delete || CanBeWritten(*edit.note, &found.fields);
    return writable ? error::None : error::InvalidParameters;
}

} // namespace

NoteReader::NoteReader(std::span<const uint8_t> bytes)
    : value(bytes.first(static_cast<size_t>(std::find(bytes.begin(), bytes.end(), 0) - bytes.begin()))),
      at(FindRecord(value, 0))
{
}

bool NoteReader::Next(NoteRecord& record)
{
    if (at == value.size())
        return false;
    const size_t behindMarker = at + MARKER.size(), end = FindRecord(value, behindMarker);
    record.whole = value.subspan(at, end - at);
    record.text = record.whole.subspan(MARKER.size());
    record.damaged = !TakeFields(record.text, record.fields);
    at = end;
    return true;
}

bool NoteReader::NextNote(NoteRecord& record)
{
    while (Next(record))
        if (!record.damaged)
            return true;
    return false;
}

size_t ReadNoteText(std::span<const uint8_t> written, std::span<char> room)
{
    Cut text{room};
    for (size_t at = 0; at < written.size(); ++at) {
        text.Put(written[at]);
        at += written[at] == TILDE && at + 1 < written.size() && written[at + 1] == TILDE;
    }
    return text.length;
}

size_t CleanNoteText(std::span<const char> text, std::span<char> room)
{
    Cut clean{room};
    ForEachClean(text, [&](uint8_t byte) { clean.Put(byte); });
    return clean.length;
}

// What stands behind the first zero belongs to the value as well, though not to its notes.
Status ChangeValue(std::span<const uint8_t> old, const NoteEdit& edit, NoteValue& changed)
{
    const auto zero = std::find(old.begin(), old.end(), 0);
    const std::span notes(old.begin(), zero), behind(zero, old.end());
    NotePlace place{};
    if (const Status status = FindNotePlace(notes, edit, place); status != error::None)
        return status;
    const uint64_t most = uint64_t{old.size()} + 2 + (edit.note ? MostRecordBytes(*edit.note) : 0);
    changed.block = GlobalBlock(most);
    const Locked<uint8_t> block(changed.block.Get());
    if (!block)
        return error::NotEnoughMemory;
    uint8_t* end = std::copy_n(notes.begin(), place.from, block.Get());
    if (place.doubleLast)
        *end++ = '~';
    if (edit.note)
        end += WriteRecord(*edit.note, end);
    end = std::copy(notes.begin() + static_cast<ptrdiff_t>(place.to), notes.end(), end);
    const bool onlyZeros =
        std::find_if(behind.begin(), behind.end(), [](uint8_t byte) { return byte != 0; }) == behind.end();
    changed.isEmpty = onlyZeros && end == block.Get();
    if (onlyZeros)
        *end++ = 0;
    else
        end = std::copy(behind.begin(), behind.end(), end);
    changed.bytes = static_cast<size_t>(end - block.Get());
    return changed.bytes <= UINT32_MAX ? error::None : error::NotEnoughMemory;
}

} // namespace tiff
