#include "containers/cals_header.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdio>
#include <cstring>

namespace tiff::cals {

namespace {

using Numbers = std::array<uint32_t, sizeof(TiffCalsInformation) / sizeof(uint32_t)>;
using Texts = std::array<const char*, sizeof(TiffCalsNotes) / sizeof(const char*)>;

struct FieldForm {
    std::string_view keyword, otherKeyword;
    size_t first; // of its numbers, or its note
    size_t count; // of numbers; 0 for a note
    int digits;
};

// By Field.
constexpr FieldForm fields[] = {
    {"srcdocid: ", "", 0, 0, 0},
    {"dstdocis: ", "dstdocid: ", 1, 0, 0},
    {"txtfileid: ", "txtfilid: ", 2, 0, 0},
    {"figid: ", "", 3, 0, 0},
    {"scrgph: ", "srcgph: ", 4, 0, 0},
    {"doccls: ", "docls: ", 5, 0, 0},
    {"rtype: ", "dtype: ", 0, 1, 1},
    {"rorient: ", "", 1, 2, 3},
    {"rpelcnt: ", "", 3, 2, 6},
    {"rdensty: ", "rdensity: ", 5, 1, 4},
    {"notes: ", "", 6, 0, 0},
};

constexpr size_t NO_RECORD = HEADER_BYTES;

const FieldForm& FormOf(Field field)
{
    return fields[static_cast<size_t>(field)];
}

bool IsBlank(uint8_t byte)
{
    return byte == ' ' || byte == 0;
}

// A record without its last byte, which is none of the text.
std::string_view RecordText(Header header, size_t at)
{
    return {reinterpret_cast<const char*>(header.data()) + at, RECORD_BYTES - 1};
}

// A decimal number behind blanks, and the one character that parts it from the next. What is no number
// reads as 0, what does not fit as the largest.
uint32_t TakeNumber(std::string_view& text)
{
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    uint64_t number = 0;
    size_t digits = 0;
    for (; digits < text.size() && text[digits] >= '0' && text[digits] <= '9'; ++digits)
        number = std::min<uint64_t>(number * 10 + static_cast<uint64_t>(text[digits] - '0'), UINT32_MAX);
    text.remove_prefix(std::min(digits + 1, text.size()));
    return static_cast<uint32_t>(number);
}

void WriteNumbers(NewRecord record, const FieldForm& form, const Numbers& numbers)
{
    char text[32] = {};
    int length = 0;
    for (size_t index = 0; index < form.count; ++index)
        length += std::snprintf(text + length, sizeof(text) - static_cast<size_t>(length), "%s%0*u",
                                index ? "," : "", form.digits, numbers[form.first + index]);
    WriteRecord(record, form.keyword, {text, static_cast<size_t>(length)});
}

void WriteNote(NewRecord record, const FieldForm& form, const Texts& texts)
{
    const char* text = texts[form.first] ? texts[form.first] : "NONE";
    WriteRecord(record, form.keyword, {text, strnlen(text, RECORD_BYTES)});
}

} // namespace

bool IsHeader(Header header)
{
    for (size_t last = RECORD_BYTES - 1; last < HEADER_BYTES; last += RECORD_BYTES)
        if (!IsBlank(header[last]))
            return false;
    return true;
}

size_t FindRecord(Header header, std::string_view keyword)
{
    if (keyword.size() > RECORD_BYTES)
        return NO_RECORD;
    for (size_t at = 0; at < HEADER_BYTES; at += RECORD_BYTES)
        if (!IsBlank(header[at]) && std::memcmp(&header[at], keyword.data(), keyword.size()) == 0)
            return at;
    return NO_RECORD;
}

size_t FindRecord(Header header, Field field, std::string_view& keyword)
{
    const FieldForm& form = FormOf(field);
    keyword = form.keyword;
    size_t at = FindRecord(header, keyword);
    if (at == NO_RECORD && !form.otherKeyword.empty()) {
        keyword = form.otherKeyword;
        at = FindRecord(header, keyword);
    }
    return at;
}

bool ReadInformation(Header header, TiffCalsInformation& information)
{
    Numbers numbers{};
    bool complete = true;
    for (const Field field : {Field::RasterType, Field::Orientation, Field::PixelCount, Field::Density}) {
        std::string_view keyword;
        const size_t at = FindRecord(header, field, keyword);
        complete = complete && at != NO_RECORD;
        if (at == NO_RECORD)
            continue;
        const FieldForm& form = FormOf(field);
        std::string_view text = RecordText(header, at).substr(keyword.size());
        for (size_t index = 0; index < form.count; ++index)
            numbers[form.first + index] = TakeNumber(text);
    }
    information = std::bit_cast<TiffCalsInformation>(numbers);
    return complete && information.rasterType == 1 && information.pixelsPerLine && information.lines;
}

std::string_view ReadValue(Header header, size_t at, size_t keywordBytes)
{
    std::string_view text = RecordText(header, at);
    while (!text.empty() && IsBlank(static_cast<uint8_t>(text.back())))
        text.remove_suffix(1);
    return text.substr(std::min(keywordBytes, text.size()));
}

// Deliberate: one line end goes from the end of the text, and blanks that stand before it stay.
std::string_view ReadNote(Header header, Field field)
{
    std::string_view keyword;
    const size_t at = FindRecord(header, field, keyword);
    if (at == NO_RECORD)
        return {};
    std::string_view text = RecordText(header, at);
    size_t length = text.size();
    while (IsBlank(static_cast<uint8_t>(text[length - 1]))) // ends at the keyword
        --length;
    if (text[length - 1] == '\r' || text[length - 1] == '\n')
        --length;
    text = text.substr(0, length);
    text = text.substr(0, text.find('\0'));
    return text.size() > keyword.size() ? text.substr(keyword.size()) : std::string_view();
}

// Deliberate: a text begins where the zero of the one before it would stand, so that each reads on
// through all that follow. Programs expect it so.
void ReadNotes(Header header, char* memory, TiffCalsNotes& notes)
{
    Texts texts{};
    for (size_t index = 0; index < std::size(fields); ++index) {
        const std::string_view text =
            fields[index].count ? std::string_view() : ReadNote(header, static_cast<Field>(index));
        if (text.empty())
            continue;
        std::memcpy(memory, text.data(), text.size());
        texts[fields[index].first] = memory;
        memory += text.size();
    }
    notes = std::bit_cast<TiffCalsNotes>(texts);
}

void WriteHeader(NewHeader header, const TiffCalsInformation& information, const TiffCalsNotes& notes)
{
    const auto numbers = std::bit_cast<Numbers>(information);
    const auto texts = std::bit_cast<Texts>(notes);
    std::ranges::fill(header, uint8_t{' '});
    for (size_t index = 0; index < std::size(fields); ++index) {
        const NewRecord record(&header[index * RECORD_BYTES], RECORD_BYTES);
        if (fields[index].count)
            WriteNumbers(record, fields[index], numbers);
        else
            WriteNote(record, fields[index], texts);
    }
}

void WriteRecord(NewRecord record, std::string_view keyword, std::string_view text)
{
    text = text.substr(0, RECORD_BYTES - 1 - keyword.size());
    std::ranges::fill(record, uint8_t{' '});
    std::memcpy(record.data(), keyword.data(), keyword.size());
    std::memcpy(record.data() + keyword.size(), text.data(), text.size());
}

} // namespace tiff::cals
