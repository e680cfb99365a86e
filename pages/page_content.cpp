#include "pages/page_content.h"

#include "core/error_detail.h"
#include "core/registry.h"
#include "core/scheme_tags.h"
#include "pages/foreign_values.h"

#include <algorithm>
#include <numeric>

namespace tiff {

namespace {

constexpr Reference tiles = {tag::TileOffsets, tag::TileByteCounts, {}};
constexpr Reference wholeStream = {tag::JpegStream, tag::JpegStreamLength, {}};

// The value for missing data; its offset is 0.
constexpr uint32_t ABSENT = UINT32_MAX;

constexpr uint8_t zeros[4] = {};

std::span<Reference> References(PageContent& content)
{
    return std::span(content.references).first(content.referenceCount);
}

// The first value of a tag, or `fallback` when it is missing.
uint32_t ValueOf(const CopySource& source, PageContent& content, uint32_t number, uint32_t fallback)
{
    const DirectoryTag* tag = FindTag(content.tags, number);
    return tag ? WholeNumber(tag->view, 0, source.window.byteOrder).value_or(fallback) : fallback;
}

// Makes a tag of LONGs with these values.
void SetLongs(DirectoryTag& tag, std::span<const uint32_t> values)
{
    tag.view.type = fieldtype::Long;
    tag.view.count = static_cast<uint32_t>(values.size());
    tag.view.values = {reinterpret_cast<const uint8_t*>(values.data()), values.size_bytes()};
    tag.valueBytes = static_cast<uint32_t>(values.size_bytes());
}

uint64_t TableBytes(CopySource& source, const Reference& reference, uint32_t offset)
{
    const TableTag& table = *reference.table;
    uint64_t bytes = table.bytes;
    const uint8_t* counts = table.beginsWithCounts ? Fetch(source.window, offset, table.bytes) : nullptr;
    if (counts)
        bytes = std::accumulate(counts, counts + table.bytes, bytes);
    return bytes;
}

// Of data that reaches beyond the end of the source, the existing part is copied. The next data follows
// directly, so that its offset is right. Neighbours are copied in one piece.
void AddSegment(PageContent& content, const CopySource& source, uint32_t offset, uint64_t bytes)
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

// One pair of tags, handled value by value.
struct ReferenceWork {
    CopySource& source;
    PageContent& content;
    Reference& reference;
    DirectoryTag* offsets;
    DirectoryTag* lengths;             // null for tables
    std::span<uint32_t> foundLengths;  // to write instead of those in the file, when some must differ
    std::span<const Segment> inStream; // the whole JPEG stream, which may contain the data
};

// Makes room for lengths when some must differ from those in the file.
Status TakeLengths(ReferenceWork& work)
{
    if (!work.foundLengths.empty())
        return error::None;
    work.foundLengths = work.source.scratch.TakeSpan<uint32_t>(work.lengths->view.count);
    for (uint32_t index = 0; index < work.foundLengths.size(); ++index)
        work.foundLengths[index] =
            WholeNumber(work.lengths->view, index, work.source.window.byteOrder).value_or(0);
    return work.foundLengths.empty() ? error::NotEnoughMemory : error::None;
}

// Finds the length of data whose length is 0 in the file; it is written in its place.
Status FindLength(ReferenceWork& work, uint32_t index, uint32_t offset, uint32_t& bytes)
{
    Status status = BytesToNext(work.source, offset, bytes);
    if (status == error::None)
        status = TakeLengths(work);
    if (status == error::None)
        work.foundLengths[index] = bytes;
    return status;
}

// In pages with many strips or tiles some may have no data, with offset 0.
bool IsAbsent(const ReferenceWork& work, uint32_t offset, uint32_t length)
{
    return offset == 0 && length == 0 && work.lengths->view.values.data() != zeros;
}

Status AddValue(ReferenceWork& work, uint32_t index)
{
    const uint32_t byteOrder = work.source.window.byteOrder;
    const auto offset = WholeNumber(work.offsets->view, index, byteOrder);
    auto length = work.lengths ? WholeNumber(work.lengths->view, index, byteOrder) : 0;
    if (!offset || !length)
        return error::BadTag;
    uint32_t& value = work.reference.values[index];
    value = ABSENT;
    if (work.lengths && IsAbsent(work, *offset, *length))
        return error::None;
    if (work.lengths && *length == 0)
        if (const Status status = FindLength(work, index, *offset, *length); status != error::None)
            return status;
    if (work.content.dataBytes > UINT32_MAX)
        return error::InputOutput;
    const uint64_t bytes = work.lengths ? *length : TableBytes(work.source, work.reference, *offset);
    for (const Segment& stream : work.inStream)
        if (*offset >= stream.offset && *offset + bytes <= uint64_t{stream.offset} + stream.bytes) {
            value = *offset - stream.offset;
            return error::None;
        }
    value = static_cast<uint32_t>(work.content.dataBytes);
    AddSegment(work.content, work.source, *offset, bytes);
    return error::None;
}

Status AddReference(CopySource& source, PageContent& content, Reference& reference,
                    std::span<const Segment> inStream)
{
    DirectoryTag* offsets = FindTag(content.tags, reference.offsets);
    DirectoryTag* lengths = reference.lengths ? FindTag(content.tags, reference.lengths) : nullptr;
    if (!offsets || (reference.lengths && !lengths))
        return MissingTag(offsets ? reference.lengths : reference.offsets);
    if (offsets->view.count == 0 || (lengths && lengths->view.count != offsets->view.count))
        return error::BadTag;
    // The count matches the values that were loaded, or this first look fails.
    if (!WholeNumber(offsets->view, offsets->view.count - 1, source.window.byteOrder))
        return error::BadTag;
    reference.values = source.scratch.TakeSpan<uint32_t>(offsets->view.count);
    if (reference.values.empty())
        return error::NotEnoughMemory;
    ReferenceWork work{source, content, reference, offsets, lengths, {}, inStream};
    // Lengths of types that readers may not expect become LONGs, like offsets.
    if (lengths && lengths->view.type > fieldtype::Long)
        if (const Status status = TakeLengths(work); status != error::None)
            return status;
    for (uint32_t index = 0; index < offsets->view.count; ++index)
        if (const Status status = AddValue(work, index); status != error::None)
            return status;
    if (!work.foundLengths.empty())
        SetLongs(*lengths, work.foundLengths);
    return error::None;
}

// A whole stream is cut at the end of the file. Without a length it goes up to the next item. Finds nothing
// where there is no such stream.
Status FindStream(CopySource& source, PageContent& content, uint32_t offset, std::optional<Segment>& stream)
{
    uint32_t bytes = ValueOf(source, content, tag::JpegStreamLength, 0);
    if (offset >= source.bytes)
        return error::None;
    const Status status = bytes == 0 ? BytesToNext(source, offset, bytes) : Status{error::None};
    if (status == error::None)
        stream = {offset, std::min(bytes, source.bytes - offset)};
    return status == error::BadTag ? Status{error::None} : status;
}

// The stream comes first. Strips and tables inside it are not copied again.
Status AddStream(CopySource& source, PageContent& content, const SchemeTags& scheme)
{
    DirectoryTag* offsets = FindTag(content.tags, tag::JpegStream);
    if (!offsets)
        return error::None;
    const uint32_t offset = ValueOf(source, content, tag::JpegStream, 0);
    if (offset == 0)
        return error::None;
    std::optional<Segment> stream;
    if (const Status status = FindStream(source, content, offset, stream); status != error::None)
        return status;
    if (!stream && scheme.dataInTiles && offset < source.bytes)
        return error::BadTag;
    if (!stream) {
        RemoveTag(content, tag::JpegStream);
        RemoveTag(content, tag::JpegStreamLength);
        return error::None;
    }
    const auto values = source.scratch.TakeSpan<uint32_t>(2);
    if (values.empty())
        return error::NotEnoughMemory;
    Reference& reference = content.references[content.referenceCount++] = wholeStream;
    reference.values = values.first(1);
    reference.values[0] = 0;
    if (offsets->view.count != 1)
        SetLongs(*offsets, reference.values);
    values[1] = stream->bytes;
    DirectoryTag* length = FindTag(content.tags, tag::JpegStreamLength);
    if (length && ValueOf(source, content, tag::JpegStreamLength, 0) != stream->bytes)
        SetLongs(*length, values.last(1));
    AddSegment(content, source, stream->offset, stream->bytes);
    return error::None;
}

// At most one segment for each value.
Status TakeSegments(CopySource& source, PageContent& content)
{
    uint64_t count = 1;
    for (const uint32_t number :
         {tag::StripOffsets, tag::TileOffsets, tag::JpegQTables, tag::JpegDcTables, tag::JpegAcTables})
        if (const DirectoryTag* tag = FindTag(content.tags, number))
            count += std::min<uint64_t>(tag->view.count, tag->view.values.size());
    content.segments = {source.scratch.TakeSpan<Segment>(count).data(), 0};
    content.dataBytes = 0;
    content.referenceCount = 0;
    return content.segments.data() ? error::None : error::NotEnoughMemory;
}

uint32_t LargestValue(const Reference& reference)
{
    uint32_t largest = 0;
    for (const uint32_t value : reference.values)
        largest = value == ABSENT ? largest : std::max(largest, value);
    return largest;
}

// Offsets become LONGs unless they are LONGs, or SHORTs that stay large enough; true when some did.
bool WidenOffsets(PageContent& content)
{
    bool widened = false;
    for (const Reference& reference : References(content)) {
        DirectoryTag& tag = *FindTag(content.tags, reference.offsets);
        const bool fits = tag.view.type == fieldtype::Short &&
                          uint64_t{content.layout.end} + LargestValue(reference) <= UINT16_MAX;
        if (tag.view.type == fieldtype::Long || fits)
            continue;
        tag.view.type = fieldtype::Long;
        tag.valueBytes = static_cast<uint32_t>(reference.values.size_bytes());
        widened = true;
    }
    return widened;
}

// Sets the offsets to the new places of the data, in the type of their tag.
void RebaseOffsets(PageContent& content)
{
    for (const Reference& reference : References(content)) {
        DirectoryTag& tag = *FindTag(content.tags, reference.offsets);
        auto* bytes = reinterpret_cast<uint8_t*>(reference.values.data());
        const uint32_t step = ElementBytes(tag.view.type);
        for (size_t index = 0; index < reference.values.size(); ++index) {
            const uint32_t value = reference.values[index];
            const uint32_t offset = value == ABSENT ? 0 : content.layout.end + value;
            std::memcpy(bytes + index * step, &offset, step);
        }
        tag.view.values = {bytes, tag.valueBytes};
    }
}

// Gives a single strip or tile without a byte count one of 0, whose true value is found later.
void AddMissingLength(const PageTags& tags, const Reference& reference, DirectoryTag*& end)
{
    const auto offsets = tags.Find(reference.offsets);
    if (offsets && offsets->count == 1 && !tags.Find(reference.lengths) && tags.Count() < UINT16_MAX)
        *end++ = Described({reference.lengths, fieldtype::Long, 1, zeros});
}

} // namespace

Status DescribePage(CopySource& source, uint32_t page, const PageTags& tags, PageContent& content)
{
    content.tags = source.scratch.TakeSpan<DirectoryTag>(tags.Count() + uint64_t{1});
    if (content.tags.empty())
        return error::NotEnoughMemory;
    DirectoryTag* end = content.tags.data();
    uint32_t position = 0;
    for (uint32_t left = tags.Count(); left > 0; --left)
        if (const auto view = tags.Next(position))
            *end++ = Described(*view);
    AddMissingLength(tags, tags.Find(tag::StripOffsets) ? stripReference : tiles, end);
    content.tags = {content.tags.data(), end};
    SortTags(content.tags);
    const auto entry = FindPage(source.file, page);
    if (!entry)
        return error::NotEnoughMemory;
    const uint32_t directory = entry->directoryOffset;
    const Status status = directory != 0 ? RestoreForeignTypes(source, directory, content.tags) : error::None;
    return status == error::None && source.window.failed ? error::InputOutput : status;
}

// Tiles are copied when the scheme keeps its data in tiles, or when there are tiles and no strips.
Status FindContent(CopySource& source, PageContent& content)
{
    const SchemeTags scheme = SchemeTagsOf(ValueOf(source, content, tag::Compression, compression::Stored));
    Status status = TakeSegments(source, content);
    if (status == error::None)
        status = AddStream(source, content, scheme);
    Segment first{};
    std::span<const Segment> inStream;
    if (content.referenceCount > 0) {
        first = content.segments[0];
        inStream = {&first, 1};
    }
    const auto add = [&](bool wanted, const Reference& reference) {
        if (status != error::None || !wanted)
            return;
        Reference& added = content.references[content.referenceCount++] = reference;
        status = AddReference(source, content, added, inStream);
    };
    const bool inTiles = FindTag(content.tags, tag::TileOffsets) &&
                         (scheme.dataInTiles || !FindTag(content.tags, tag::StripOffsets));
    const Reference& data = inTiles ? tiles : stripReference;
    add(FindTag(content.tags, data.offsets) || FindTag(content.tags, data.lengths), data);
    for (const TableTag& table : scheme.tables)
        add(FindTag(content.tags, table.tag), {table.tag, 0, {}, &table});
    return status == error::None && source.window.failed ? error::InputOutput : status;
}

Status FindReference(CopySource& source, PageContent& content, const Reference& reference)
{
    if (const Status status = TakeSegments(source, content); status != error::None)
        return status;
    Reference& added = content.references[content.referenceCount++] = reference;
    return AddReference(source, content, added, {});
}

void RemoveTag(PageContent& content, uint32_t number)
{
    DirectoryTag* tag = FindTag(content.tags, number);
    if (!tag)
        return;
    std::move(tag + 1, content.tags.data() + content.tags.size(), tag);
    content.tags = content.tags.first(content.tags.size() - 1);
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
