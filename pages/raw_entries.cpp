#include "pages/raw_entries.h"

#include <algorithm>

namespace tiff {

namespace {

constexpr uint8_t elementBytes[] = {1, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4, 1, 1, 8, 8, 8};
static_assert(std::size(elementBytes) == fieldtype::Ifd8 + 1);

// How values of an integer type lie in a tag that is to be written: SHORTs and LONGs are in the processor's
// order, because the directory writer swaps them; others are as in the file.
struct Integer {
    uint16_t type;
    uint32_t bytes;
    bool isSigned, swapped;
};
constexpr Integer integers[] = {
    {fieldtype::Byte, 1, false, true},   {fieldtype::Short, 2, false, true},
    {fieldtype::Long, 4, false, true},   {fieldtype::SByte, 1, true, true},
    {fieldtype::SShort, 2, true, false}, {fieldtype::SLong, 4, true, true},
    {fieldtype::Ifd, 4, false, false},   {fieldtype::Long8, 8, false, false},
    {fieldtype::SLong8, 8, true, false}, {fieldtype::Ifd8, 8, false, false},
};

uint64_t Load(const uint8_t* value, uint32_t bytes, uint32_t byteOrder)
{
    uint64_t number = 0;
    for (uint32_t index = 0; index < bytes; ++index)
        number = number << 8 | value[byteOrder == TIFF_MOTOROLA ? index : bytes - 1 - index];
    return number;
}

} // namespace

uint32_t TrueElementBytes(uint32_t type)
{
    return type < std::size(elementBytes) ? elementBytes[type] : 1;
}

DirectoryTag* FindTag(std::span<DirectoryTag> tags, uint32_t number)
{
    const auto numberOf = [](const DirectoryTag& tag) { return tag.view.tag; };
    const auto found = std::ranges::lower_bound(tags, number, {}, numberOf);
    return found != tags.end() && found->view.tag == number ? &*found : nullptr;
}

std::optional<uint32_t> FetchEntryCount(CopySource& source, uint32_t directory)
{
    const uint8_t* counted = Fetch(source.window, directory, 2);
    if (!counted)
        return std::nullopt;
    return Load16(counted, source.window.byteOrder);
}

bool FetchRawEntry(CopySource& source, uint32_t directory, uint32_t index, RawEntry& entry)
{
    const uint64_t position = directory + 2 + uint64_t{index} * ENTRY_BYTES;
    const uint8_t* raw = Fetch(source.window, position, ENTRY_BYTES);
    if (!raw)
        return false;
    const uint32_t byteOrder = source.window.byteOrder;
    entry.tag = Load16(raw, byteOrder);
    entry.type = Load16(raw + 2, byteOrder);
    entry.count = Load32(raw + 4, byteOrder);
    entry.valueBytes = uint64_t{entry.count} * TrueElementBytes(entry.type);
    entry.valuePosition =
        entry.valueBytes > 4 ? Load32(raw + 8, byteOrder) : static_cast<uint32_t>(position + 8);
    std::memcpy(entry.field.data(), raw + 8, 4);
    return true;
}

bool HasValues(const CopySource& source, const RawEntry& entry)
{
    return entry.valuePosition + entry.valueBytes <= source.bytes;
}

bool ReadAt(CopySource& source, uint32_t position, std::span<uint8_t> bytes)
{
    const TiffStream stream = source.window.stream;
    if (mSeek(stream, position, 0) != STREAM_FAILED &&
        ReadStream(stream, bytes.data(), static_cast<uint32_t>(bytes.size())) == bytes.size())
        return true;
    source.window.failed |= IsInFile(stream, position, bytes.size());
    return false;
}

bool ReadValues(CopySource& source, const RawEntry& entry, std::span<uint8_t> values)
{
    if (entry.valueBytes > 4)
        return ReadAt(source, entry.valuePosition, values);
    std::copy_n(entry.field.begin(), values.size(), values.begin());
    return true;
}

std::optional<uint32_t> WholeNumber(const TagView& view, uint32_t index, uint32_t byteOrder)
{
    const auto* integer = std::ranges::find(integers, view.type, &Integer::type);
    if (integer == std::end(integers))
        return std::nullopt;
    const uint64_t at = uint64_t{index} * integer->bytes;
    if (at + integer->bytes > view.values.size())
        return std::nullopt;
    const uint64_t number =
        Load(view.values.data() + at, integer->bytes, integer->swapped ? uint32_t{TIFF_INTEL} : byteOrder);
    const bool negative = integer->isSigned && number >> (integer->bytes * 8 - 1);
    if (negative || number > UINT32_MAX)
        return std::nullopt;
    return static_cast<uint32_t>(number);
}

void StoreOffset(uint8_t* value, uint16_t type, uint32_t offset, uint32_t byteOrder)
{
    Store32(value, offset, type == fieldtype::Ifd ? byteOrder : uint32_t{TIFF_INTEL});
}

} // namespace tiff
