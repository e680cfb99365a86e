#include "tag_values.h"

#include "options.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

namespace tifftool {

namespace {

constexpr uint32_t RATIONAL = 5, SRATIONAL = 10;

constexpr FieldType fieldTypes[] = {
    {"byte", 1, ValueKind::Whole, false},
    {"ascii", 2, ValueKind::Text, false},
    {"short", 3, ValueKind::Whole, false},
    {"long", 4, ValueKind::Whole, false},
    {"rational", RATIONAL, ValueKind::Fraction, false},
    {"sbyte", 6, ValueKind::Signed, false},
    {"undefined", 7, ValueKind::Whole, false},
    {"sshort", 8, ValueKind::Signed, true},
    {"slong", 9, ValueKind::Signed, false},
    {"srational", SRATIONAL, ValueKind::SignedFraction, true},
    {"float", 11, ValueKind::Real, true},
    {"double", 12, ValueKind::Real, true},
};

// By type, from 0 on.
constexpr size_t elementBytes[] = {1, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4};

struct Limits {
    int64_t least, most;
};

Limits LimitsOf(ValueKind kind, size_t bytes)
{
    const int64_t values = int64_t{1} << 8 * bytes;
    const bool isSigned = kind == ValueKind::Signed || kind == ValueKind::SignedFraction;
    return isSigned ? Limits{-values / 2, values / 2 - 1} : Limits{0, values - 1};
}

void AppendLow(std::vector<uint8_t>& bytes, uint64_t value, size_t count)
{
    for (size_t index = 0; index < count; ++index) {
        bytes.push_back(static_cast<uint8_t>(value >> 8 * index));
    }
}

bool AppendWhole(std::vector<uint8_t>& bytes, const std::string& text, Limits limits, size_t count)
{
    int64_t number = 0;
    const bool good = ParseNumber(text.c_str(), limits.least, limits.most, number);
    AppendLow(bytes, static_cast<uint64_t>(number), count);
    return good;
}

bool AppendReal(std::vector<uint8_t>& bytes, const std::string& text, size_t count)
{
    double number = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    const auto narrow = static_cast<float>(number);
    uint64_t bits = 0;
    memcpy(&bits, count == sizeof narrow ? static_cast<const void*>(&narrow) : &number, count);
    AppendLow(bytes, bits, count);
    return error == std::errc() && rest == end && (count != sizeof narrow || std::isfinite(narrow));
}

// "3/4", or "2" for 2/1.
bool AppendFraction(std::vector<uint8_t>& bytes, const std::string& text, Limits limits)
{
    const size_t slash = text.find('/');
    const std::string denominator = slash == std::string::npos ? "1" : text.substr(slash + 1);
    return AppendWhole(bytes, text.substr(0, slash), limits, 4) && AppendWhole(bytes, denominator, limits, 4);
}

bool AppendValue(std::vector<uint8_t>& bytes, const FieldType& type, const std::string& text)
{
    const size_t count = ElementBytes(type.code);
    switch (type.kind) {
    case ValueKind::Real:
        return AppendReal(bytes, text, count);
    case ValueKind::Fraction:
    case ValueKind::SignedFraction:
        return AppendFraction(bytes, text, LimitsOf(type.kind, 4));
    default:
        return AppendWhole(bytes, text, LimitsOf(type.kind, count), count);
    }
}

std::string DescribeRange(const FieldType& type)
{
    const bool fraction = type.kind == ValueKind::Fraction || type.kind == ValueKind::SignedFraction;
    const Limits limits = LimitsOf(type.kind, fraction ? 4 : std::min<size_t>(ElementBytes(type.code), 4));
    const std::string range = std::to_string(limits.least) + " to " + std::to_string(limits.most);
    return type.kind == ValueKind::Real ? "numbers such as 1.5"
           : fraction                   ? "fractions such as 3/4 of numbers from " + range
                                        : "whole numbers from " + range;
}

std::string ParseText(std::span<const char* const> texts, std::vector<uint8_t>& bytes)
{
    if (texts.size() > 1) {
        std::string all;
        for (const char* text : texts) {
            all += (all.empty() ? "" : " ") + std::string(text);
        }
        return "a text of several words needs quotes: \"" + all + "\"";
    }
    bytes.assign(texts[0], texts[0] + strlen(texts[0]) + 1);
    return "";
}

} // namespace

const FieldType* FindFieldType(const char* name)
{
    const auto found = std::ranges::find_if(
        fieldTypes, [name](const FieldType& type) { return strcmp(type.name, name) == 0; });
    return found == std::end(fieldTypes) ? nullptr : &*found;
}

std::string FieldTypeNames()
{
    std::string names;
    for (const FieldType& type : fieldTypes) {
        names += (names.empty() ? "" : ", ") + std::string(type.name);
    }
    return names;
}

size_t ElementBytes(uint32_t type)
{
    return type < std::size(elementBytes) ? elementBytes[type] : 1;
}

void ReverseElements(uint32_t type, std::span<uint8_t> bytes)
{
    const size_t size = type == RATIONAL || type == SRATIONAL ? 4 : ElementBytes(type);
    for (size_t at = 0; at + size <= bytes.size(); at += size) {
        std::ranges::reverse(bytes.subspan(at, size));
    }
}

std::string ParseValues(const FieldType& type, std::span<const char* const> texts,
                        std::vector<uint8_t>& bytes)
{
    if (type.kind == ValueKind::Text) {
        return ParseText(texts, bytes);
    }
    for (const char* text : texts) {
        if (!AppendValue(bytes, type, text)) {
            return std::string("\"") + text + "\" is no " + type.name + "; these are " + DescribeRange(type);
        }
    }
    return "";
}

} // namespace tifftool
