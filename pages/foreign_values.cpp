#include "pages/foreign_values.h"

#include <algorithm>

namespace tiff {

namespace {

// Values may overlap, but not without limit.
constexpr uint64_t VALUE_SLACK = 65536;

bool IsForeign(const RawEntry& entry)
{
    return entry.type < fieldtype::Byte || entry.type > fieldtype::Rational;
}

// The tag in memory, if it still holds the bytes loaded from this entry; else null. Memory holds a foreign
// value as `count` single bytes, at least one.
DirectoryTag* FindUnchanged(std::span<DirectoryTag> tags, const RawEntry& entry,
                            std::span<const uint8_t> values)
{
    const uint32_t count = std::max(entry.count, 1u);
    const uint8_t* read = count <= 4 ? entry.field.data() : values.data();
    DirectoryTag* tag = FindTag(tags, entry.tag);
    const uint32_t type = IsForeign(entry) ? fieldtype::Byte : entry.type;
    return tag && tag->view.type == type && tag->view.count == count &&
                   std::equal(read, read + count, tag->view.values.begin())
               ? tag
               : nullptr;
}

Status Restore(CopySource& source, const RawEntry& entry, std::span<DirectoryTag> tags)
{
    const auto values = source.scratch.TakeSpan<uint8_t>(entry.valueBytes);
    if (!values.data())
        return error::NotEnoughMemory;
    DirectoryTag* tag = ReadValues(source, entry, values) ? FindUnchanged(tags, entry, values) : nullptr;
    if (!tag)
        return error::None;
    // The writer swaps the elements that it knows into the file's order.
    if (source.window.byteOrder == TIFF_MOTOROLA)
        SwapElements(values, entry.type);
    tag->view.type = IsKnownType(entry.type) ? entry.type : fieldtype::Undefined;
    tag->view.count = entry.count;
    tag->view.values = values;
    tag->valueBytes = static_cast<uint32_t>(values.size());
    return error::None;
}

} // namespace

Status RestoreForeignTypes(CopySource& source, uint32_t directory, std::span<DirectoryTag> tags)
{
    uint64_t budget = uint64_t{source.bytes} * 2 + VALUE_SLACK;
    const uint32_t entryCount = FetchEntryCount(source, directory).value_or(0);
    RawEntry entry;
    for (uint32_t index = 0; index < entryCount; ++index) {
        if (!FetchRawEntry(source, directory, index, entry))
            break;
        const bool isEmptyText = entry.type == fieldtype::Ascii && entry.count == 0;
        if ((!IsForeign(entry) && !isEmptyText) || !HasValues(source, entry) || entry.valueBytes > budget)
            continue;
        budget -= entry.valueBytes;
        if (const Status status = Restore(source, entry, tags); status != error::None)
            return status;
    }
    return error::None;
}

} // namespace tiff
