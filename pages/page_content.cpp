#include "pages/page_content.h"

#include <algorithm>

namespace tiff {

namespace {

constexpr uint32_t QUANTISATION_BYTES = 64;
constexpr uint32_t CODE_LENGTHS = 16;

constexpr Reference strips = {tag::StripOffsets, tag::StripByteCounts, {}};
constexpr Reference tiles = {tag::TileOffsets, tag::TileByteCounts, {}};
constexpr Reference jpegReferences[] = {
    {tag::JpegQTables, 0, {}},
    {tag::JpegDcTables, 0, {}},
    {tag::JpegAcTables, 0, {}},
    {tag::JpegStream, tag::JpegStreamLength, {}},
};

void AddIf(PageContent& content, bool wanted, const Reference& reference)
{
    if (wanted)
        content.references[content.referenceCount++] = reference;
}

// Old-style JPEG keeps its picture in tiles and its tables outside the directory. Tiles of other
// pages are copied only when they stand instead of strips.
void FindReferences(const PageTags& tags, PageContent& content)
{
    const bool oldJpeg = tags.Value(tag::Compression, compression::Stored) == compression::OldJpeg;
    const bool inTiles = tags.Find(tag::TileOffsets) && (oldJpeg || !tags.Find(tag::StripOffsets));
    const Reference& data = inTiles ? tiles : strips;
    content.referenceCount = 0;
    AddIf(content, tags.Find(data.offsets) || tags.Find(data.lengths), data);
    for (const Reference& reference : jpegReferences)
        AddIf(content, oldJpeg && tags.Find(reference.offsets), reference);
}

std::span<Reference> References(PageContent& content)
{
    return std::span(content.references).first(content.referenceCount);
}

size_t CountOf(const PageTags& tags, uint16_t tag)
{
    const auto found = tags.Find(tag);
    return found ? found->count : 0;
}

size_t ValueCount(const PageTags& tags, PageContent& content)
{
    size_t count = 0;
    for (const Reference& reference : References(content))
        count += CountOf(tags, reference.offsets);
    return count;
}

struct Source {
    DirectoryWindow& window;
    uint32_t bytes;
};

uint64_t TableBytes(const Source& source, const Reference& reference, uint32_t offset)
{
    if (reference.offsets == tag::JpegQTables)
        return QUANTISATION_BYTES;
    uint64_t bytes = CODE_LENGTHS;
    if (const uint8_t* counts = Fetch(source.window, offset, CODE_LENGTHS))
        for (uint32_t length = 0; length < CODE_LENGTHS; ++length)
            bytes += counts[length];
    return bytes;
}

// Of data that reaches beyond the end of the source, what is there is copied. What follows comes
// right behind it, so that its offset is true. Neighbours are copied in one piece.
void AddSegment(PageContent& content, const Source& source, uint32_t offset, uint64_t bytes)
{
    const uint32_t there = source.bytes - std::min(offset, source.bytes);
    const auto kept = static_cast<uint32_t>(std::min<uint64_t>(bytes, there));
    if (kept == 0)
        return;
    content.dataBytes += kept;
    const size_t count = content.segments.size();
    Segment* last = count ? &content.segments.back() : nullptr;
    if (last && uint64_t{last->offset} + last->bytes == offset) {
        last->bytes += kept;
        return;
    }
    content.segments = {content.segments.data(), count + 1};
    content.segments.back() = {offset, kept};
}

Status AddReference(PageContent& content, const Source& source, const PageTags& tags, Reference& reference)
{
    const auto offsets = tags.Find(reference.offsets);
    const auto lengths = tags.Find(reference.lengths);
    if (!offsets || (reference.lengths && !lengths))
        return error::TagsMissing;
    if (offsets->count == 0 || (reference.lengths && lengths->count != offsets->count))
        return error::BadTag;
    for (uint32_t index = 0; index < offsets->count; ++index) {
        const auto offset = offsets->Number(index);
        const auto length = reference.lengths ? lengths->Number(index) : 0;
        if (!offset || !length)
            return error::BadTag;
        if (content.dataBytes > UINT32_MAX)
            return error::InputOutput;
        reference.values[index] = static_cast<uint32_t>(content.dataBytes);
        AddSegment(content, source, *offset,
                   reference.lengths ? *length : TableBytes(source, reference, *offset));
    }
    return error::None;
}

DirectoryTag& TagOf(PageContent& content, const Reference& reference)
{
    return *std::ranges::find(content.tags, reference.offsets,
                              [](const DirectoryTag& tag) { return tag.view.tag; });
}

// Offsets that outgrow their type become LONGs; true when one did. The last is the largest.
bool WidenOffsets(PageContent& content)
{
    bool widened = false;
    for (const Reference& reference : References(content)) {
        DirectoryTag& tag = TagOf(content, reference);
        const uint64_t largest = uint64_t{content.layout.end} + reference.values.back();
        if (ElementBytes(tag.view.type) == 4 || (tag.view.type == fieldtype::Short && largest <= UINT16_MAX))
            continue;
        tag.view.type = fieldtype::Long;
        tag.valueBytes = static_cast<uint32_t>(reference.values.size_bytes());
        widened = true;
    }
    return widened;
}

// Moves the offsets to where the data comes to lie, in the type that their tag has.
void RebaseOffsets(PageContent& content)
{
    for (const Reference& reference : References(content)) {
        DirectoryTag& tag = TagOf(content, reference);
        auto* bytes = reinterpret_cast<uint8_t*>(reference.values.data());
        const uint32_t step = ElementBytes(tag.view.type);
        for (size_t index = 0; index < reference.values.size(); ++index) {
            const uint32_t offset = content.layout.end + reference.values[index];
            std::memcpy(bytes + index * step, &offset, step);
        }
        tag.view.values = {bytes, tag.valueBytes};
    }
}

void DescribeTags(const PageTags& tags, PageContent& content)
{
    uint32_t position = 0, count = 0;
    while (const auto view = count < tags.Count() ? tags.Next(position) : std::nullopt)
        content.tags[count++] = Described(*view);
    content.tags = content.tags.first(count);
}

} // namespace

uint64_t ContentBytes(const PageTags& tags)
{
    PageContent content{};
    FindReferences(tags, content);
    return uint64_t{tags.Count()} * sizeof(DirectoryTag) +
           uint64_t{ValueCount(tags, content)} * (sizeof(Segment) + sizeof(uint32_t));
}

Status FindContent(const PageTags& tags, DirectoryWindow& source, uint32_t sourceBytes,
                   std::span<uint8_t> room, PageContent& content)
{
    FindReferences(tags, content);
    content.tags = {reinterpret_cast<DirectoryTag*>(room.data()), tags.Count()};
    content.segments = {reinterpret_cast<Segment*>(content.tags.data() + tags.Count()), 0};
    content.dataBytes = 0;
    auto* values = reinterpret_cast<uint32_t*>(content.segments.data() + ValueCount(tags, content));
    for (Reference& reference : References(content)) {
        reference.values = {values, CountOf(tags, reference.offsets)};
        values += reference.values.size();
        if (const Status status = AddReference(content, {source, sourceBytes}, tags, reference);
            status != error::None)
            return status;
    }
    DescribeTags(tags, content);
    return error::None;
}

Status PlaceContent(PageContent& content, uint32_t start)
{
    do {
        const auto layout = LayOutDirectory(content.tags, start, LayoutOrder::DirectoryFirst);
        if (!layout || layout->end + content.dataBytes > UINT32_MAX)
            return error::InputOutput;
        content.layout = *layout;
    } while (WidenOffsets(content));
    RebaseOffsets(content);
    return error::None;
}

} // namespace tiff
