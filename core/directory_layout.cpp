#include "core/directory_layout.h"

#include "core/directory_window.h"

#include <algorithm>

namespace tiff {

// A file may have two entries with one tag; they keep their order.
static bool Precedes(const DirectoryTag& left, const DirectoryTag& right)
{
    return left.view.tag != right.view.tag ? left.view.tag < right.view.tag
                                           : left.view.values.data() < right.view.values.data();
}

static bool HasLowerTag(const DirectoryTag& left, const DirectoryTag& right)
{
    return left.view.tag < right.view.tag;
}

// Gives the values their places and returns where they end.
static uint64_t PlaceValues(std::span<DirectoryTag> tags, uint64_t at)
{
    for (DirectoryTag& tag : tags) {
        tag.valueOffset = LiesInEntry(tag) ? 0 : static_cast<uint32_t>(at);
        if (!LiesInEntry(tag))
            at += tag.valueBytes;
    }
    return at;
}

DirectoryTag Described(TagView view)
{
    if (view.tag == tag::JpegTables)
        view.type = fieldtype::Undefined;
    return {view, view.count * ElementBytes(view.type), 0};
}

void SortTags(std::span<DirectoryTag> tags)
{
    if (!std::is_sorted(tags.begin(), tags.end(), HasLowerTag))
        std::sort(tags.begin(), tags.end(), Precedes);
}

std::optional<DirectoryLayout> LayOutDirectory(std::span<DirectoryTag> tags, uint32_t start,
                                               LayoutOrder order)
{
    SortTags(tags);
    const uint64_t entryBytes = uint64_t{tags.size()} * ENTRY_BYTES;
    const uint64_t directoryBytes = 2 + entryBytes + 4;
    uint64_t directory = start, end, valueBytes;
    if (order == LayoutOrder::ValuesFirst) {
        valueBytes = PlaceValues(tags, start) - start;
        directory += valueBytes;
        directory += directory % 2;
        end = directory + directoryBytes;
    } else {
        directory += directory % 2;
        end = PlaceValues(tags, directory + directoryBytes);
        valueBytes = end - directory - directoryBytes;
    }
    if (end > UINT32_MAX)
        return std::nullopt;
    return DirectoryLayout{.start = start,
                           .valueBytes = static_cast<uint32_t>(valueBytes),
                           .directoryOffset = static_cast<uint32_t>(directory),
                           .entryBytes = static_cast<uint32_t>(entryBytes),
                           .linkPosition = static_cast<uint32_t>(directory + 2 + entryBytes),
                           .end = static_cast<uint32_t>(end)};
}

static void PutValues(uint8_t* target, const DirectoryTag& tag, uint32_t byteOrder)
{
    std::memcpy(target, tag.view.values.data(), tag.valueBytes);
    if (byteOrder == TIFF_MOTOROLA)
        SwapElements({target, tag.valueBytes}, tag.view.type);
}

// Short values stand at the front of their field in either byte order.
static void PutEntry(uint8_t* target, const DirectoryTag& tag, uint32_t byteOrder)
{
    Store16(target, tag.view.tag, byteOrder);
    Store16(target + 2, tag.view.type, byteOrder);
    Store32(target + 4, tag.view.count, byteOrder);
    Store32(target + 8, tag.valueOffset, byteOrder);
    if (LiesInEntry(tag))
        PutValues(target + 8, tag, byteOrder);
}

void AssembleDirectory(std::span<const DirectoryTag> tags, const DirectoryLayout& layout, uint32_t byteOrder,
                       uint8_t* bytes)
{
    std::memset(bytes, 0, layout.end - layout.start);
    uint8_t* directory = &bytes[layout.directoryOffset - layout.start];
    Store16(directory, static_cast<uint16_t>(tags.size()), byteOrder);
    uint8_t* entry = directory + 2;
    for (const DirectoryTag& tag : tags) {
        PutEntry(entry, tag, byteOrder);
        if (!LiesInEntry(tag))
            PutValues(&bytes[tag.valueOffset - layout.start], tag, byteOrder);
        entry += ENTRY_BYTES;
    }
}

} // namespace tiff
