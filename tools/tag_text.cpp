#include "tag_text.h"

#include "chain.h"
#include "describe.h"
#include "tag_values.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace tifftool {

namespace {

constexpr size_t MAX_TEXT = 64; // characters shown of an ASCII tag
constexpr uint32_t BYTE_TYPE = 1, ASCII_TYPE = 2;

// In double quotes, up to the first zero, with escapes for control characters.
std::string QuoteText(std::span<const uint8_t> bytes)
{
    const auto end = std::ranges::find(bytes, uint8_t{0});
    const auto length = static_cast<size_t>(end - bytes.begin());
    std::string quoted = "\"";
    for (const uint8_t byte : bytes.first(std::min(length, MAX_TEXT))) {
        char escape[8] = {};
        if (byte == '"' || byte == '\\') {
            quoted += '\\';
        }
        if (byte < 0x20 || byte >= 0x7F) {
            snprintf(escape, sizeof escape, "\\x%02X", unsigned{byte});
            quoted += escape;
        } else {
            quoted += static_cast<char>(byte);
        }
    }
    return quoted + (length > MAX_TEXT ? "\"..." : "\"");
}

template <typename Element>
Element ElementAt(const uint8_t* values, size_t index)
{
    Element element;
    memcpy(&element, values + index * sizeof element, sizeof element);
    return element;
}

std::string FormatReal(double value)
{
    char text[32];
    snprintf(text, sizeof text, "%.9g", value);
    return text;
}

template <typename Element>
std::string FormatFraction(const uint8_t* values, size_t index)
{
    return std::to_string(ElementAt<Element>(values, 2 * index)) + "/" +
           std::to_string(ElementAt<Element>(values, 2 * index + 1));
}

std::string FormatValue(uint32_t type, const uint8_t* values, size_t index)
{
    switch (type) {
    case 3:
        return std::to_string(ElementAt<uint16_t>(values, index));
    case 4:
    case 13:
        return std::to_string(ElementAt<uint32_t>(values, index));
    case 5:
        return FormatFraction<uint32_t>(values, index);
    case 6:
        return std::to_string(ElementAt<int8_t>(values, index));
    case 8:
        return std::to_string(ElementAt<int16_t>(values, index));
    case 9:
        return std::to_string(ElementAt<int32_t>(values, index));
    case 10:
        return FormatFraction<int32_t>(values, index);
    case 11:
        return FormatReal(ElementAt<float>(values, index));
    case 12:
        return FormatReal(ElementAt<double>(values, index));
    default:
        return std::to_string(values[index]);
    }
}

// Values that memory holds as single bytes may have any type in the file.
TagContent ReadFromFile(Source& source, uint32_t page, uint32_t tag, size_t most)
{
    RawFile raw(source.path);
    TagEntry entry;
    if (!FindEntry(raw, DirectoryOf(source, page), tag, entry)) {
        return {};
    }
    const size_t size = ElementBytes(entry.type);
    const uint64_t all = uint64_t{entry.count} * size;
    const auto shown = static_cast<size_t>(std::min<uint64_t>(all, uint64_t{most} * size));
    TagContent values = {entry.type, entry.count,
                         ReadBytes(raw, all <= 4 ? entry.position + 8 : entry.valuesAt, shown)};
    if (raw.motorola) {
        ReverseElements(entry.type, values.bytes);
    }
    return values;
}

void WriteValue(Json& json, uint32_t type, const uint8_t* values, size_t index)
{
    switch (type) {
    case 5:
        json.Open('[').Number(ElementAt<uint32_t>(values, 2 * index));
        json.Number(ElementAt<uint32_t>(values, 2 * index + 1)).Close(']');
        break;
    case 10:
        json.Open('[').Number(ElementAt<int32_t>(values, 2 * index));
        json.Number(ElementAt<int32_t>(values, 2 * index + 1)).Close(']');
        break;
    case 11:
        json.Real(double{ElementAt<float>(values, index)});
        break;
    case 12:
        json.Real(ElementAt<double>(values, index));
        break;
    default:
        json.Number(std::stoll(FormatValue(type, values, index)));
    }
}

template <class Handle>
int ForEachTag(Source& source, uint32_t page, size_t most, const Handle& handle)
{
    HGLOBAL list = nullptr;
    uint32_t count = 0;
    if (!GetTiffImageInfoBuffer(source.file.handle, page, 0, &list, nullptr, &count)) {
        return ReportError(PageName(source.path, page + 1), TiffError());
    }
    const OwnedBlock numbers(list);
    int result = ALL_FINE;
    for (size_t index = 0; index < std::min<size_t>(count, numbers.size / 4); ++index) {
        const auto tag = ElementAt<uint32_t>(numbers.bytes, index);
        TagContent content{};
        const int read = ReadTag(source, page, tag, most, content);
        if (read == ALL_FINE) {
            handle(tag, content);
        }
        result = std::max(result, read);
    }
    return result;
}

} // namespace

std::string FormatValues(uint32_t type, uint32_t count, std::span<const uint8_t> bytes)
{
    const size_t held = std::min<size_t>(count, bytes.size() / ElementBytes(type));
    if (type == 2) {
        return QuoteText(bytes.first(held));
    }
    std::string values;
    for (size_t i = 0; i < std::min(held, MAX_SHOWN_VALUES); ++i) {
        values += (i ? " " : "") + FormatValue(type, bytes.data(), i);
    }
    return values + (count > MAX_SHOWN_VALUES ? " ..." : "");
}

int ReadTag(Source& source, uint32_t page, uint32_t tag, size_t most, TagContent& content)
{
    HGLOBAL handle = nullptr;
    if (!GetTiffImageInfoBuffer(source.file.handle, page, tag, &handle, &content.type, &content.count)) {
        return ReportError(PageName(source.path, page + 1) + ", tag " + std::to_string(tag), TiffError());
    }
    const OwnedBlock block(handle);
    content.bytes.assign(block.bytes, block.bytes + block.size);
    TagContent inFile{};
    if (content.type == BYTE_TYPE && (inFile = ReadFromFile(source, page, tag, most)).type > BYTE_TYPE) {
        content = inFile;
    }
    return ALL_FINE;
}

int PrintTags(Source& source, uint32_t page)
{
    return ForEachTag(source, page, MAX_SHOWN_VALUES, [](uint32_t tag, const TagContent& content) {
        printf("    %5u  %-26s %-9s %6u  %s\n", tag, TagName(tag).c_str(),
               FieldTypeName(content.type).c_str(), content.count,
               FormatValues(content.type, content.count, content.bytes).c_str());
    });
}

int WriteTags(Json& json, Source& source, uint32_t page)
{
    constexpr size_t ALL_VALUES = 1u << 20;
    json.Open('[');
    const int result = ForEachTag(source, page, ALL_VALUES, [&](uint32_t tag, const TagContent& content) {
        const auto& [type, count, bytes] = content;
        const size_t held = std::min<size_t>(count, bytes.size() / ElementBytes(type));
        json.Open('{').Key("tag").Number(tag).Key("name").Text(TagName(tag));
        json.Key("type").Text(FieldTypeName(type)).Key("count").Number(count);
        if (type == ASCII_TYPE) {
            const std::string text(bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(held));
            json.Key("text").Text(text.substr(0, text.find('\0'))).Close('}');
            return;
        }
        json.Key("values").Open('[');
        for (size_t index = 0; index < held; ++index) {
            WriteValue(json, type, bytes.data(), index);
        }
        json.Close(']').Close('}');
    });
    json.Close(']');
    return result;
}

} // namespace tifftool
