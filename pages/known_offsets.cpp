#include "pages/known_offsets.h"

#include "core/registry.h"
#include "pages/page_copy.h"
#include "pages/raw_entries.h"
#include "tiff/files.h"

#include <algorithm>

namespace tiff {

namespace {

constexpr uint32_t HEADER_BYTES = 8;
constexpr uint32_t BATCH_BYTES = 2048;

constexpr uint16_t offsetTags[] = {
    tag::StripOffsets, tag::TileOffsets,  tag::SubIfds, tag::JpegStream, tag::JpegQTables,
    tag::JpegDcTables, tag::JpegAcTables, tag::ExifIfd, tag::GpsIfd,     tag::InteroperabilityIfd,
};

bool HasOffsets(const RawEntry& entry)
{
    return std::ranges::find(offsetTags, entry.tag) != std::end(offsetTags);
}

// Calls back for each page's directory and for each entry whose values lie in the file.
template <class Directory, class Entry>
void ForEachEntry(CopySource& source, uint32_t pageCount, Directory directory, Entry entry)
{
    for (uint32_t page = 0; page < pageCount; ++page) {
        const auto found = FindPage(source.file, page);
        source.window.failed |= !found;
        const uint32_t offset = found ? found->directoryOffset : 0;
        if (offset == 0)
            continue;
        directory(offset);
        const uint32_t entryCount = FetchEntryCount(source, offset).value_or(0);
        RawEntry raw;
        for (uint32_t index = 0; index < entryCount && FetchRawEntry(source, offset, index, raw); ++index)
            if (HasValues(source, raw))
                entry(raw);
    }
}

// Offsets that do not overlap are fewer than the bytes of the file; more are not collected.
uint64_t Measure(CopySource& source, uint32_t pageCount)
{
    uint64_t count = 0;
    ForEachEntry(
        source, pageCount, [&](uint32_t) { ++count; },
        [&](const RawEntry& entry) {
            count += (entry.valueBytes > 4) + (HasOffsets(entry) ? entry.count : 0);
        });
    return std::min<uint64_t>(count, source.bytes);
}

struct Filling {
    uint32_t* offsets;
    uint64_t room;
    uint32_t count;
    bool complete;
};

void Add(Filling& filling, uint32_t offset)
{
    if (filling.count < filling.room)
        filling.offsets[filling.count++] = offset;
    else
        filling.complete = false;
}

void AddValues(CopySource& source, const RawEntry& entry, Filling& filling)
{
    const uint32_t step = TrueElementBytes(entry.type);
    std::array<uint8_t, BATCH_BYTES> batch;
    for (uint64_t done = 0; done < entry.valueBytes && filling.complete; done += BATCH_BYTES) {
        const auto bytes = static_cast<size_t>(std::min<uint64_t>(BATCH_BYTES, entry.valueBytes - done));
        const auto values = std::span(batch).first(bytes);
        if (!ReadAt(source, static_cast<uint32_t>(entry.valuePosition + done), values))
            return;
        if (source.window.byteOrder == TIFF_MOTOROLA)
            SwapElements(values, entry.type);
        const TagView view{entry.tag, entry.type, entry.count, values};
        for (uint32_t index = 0; index < bytes / step; ++index)
            if (const auto offset = WholeNumber(view, index, source.window.byteOrder))
                Add(filling, *offset);
    }
}

Status Collect(CopySource& source)
{
    const uint32_t pageCount = PagesBeforeRepeat(source.file);
    if (pageCount == 0)
        return error::NotEnoughMemory;
    const uint64_t room = Measure(source, pageCount);
    GlobalBlock block(room * sizeof(uint32_t));
    const Locked<uint32_t> offsets(block.Get());
    if (!offsets)
        return error::NotEnoughMemory;
    Filling filling{offsets.Get(), room, 0, true};
    ForEachEntry(
        source, pageCount, [&](uint32_t directory) { Add(filling, directory); },
        [&](const RawEntry& entry) {
            if (entry.valueBytes > 4)
                Add(filling, entry.valuePosition);
            if (HasOffsets(entry))
                AddValues(source, entry, filling);
        });
    if (source.window.failed)
        return error::InputOutput;
    source.known.overlap = !filling.complete;
    if (source.known.overlap)
        return error::BadTag;
    std::sort(filling.offsets, filling.offsets + filling.count);
    source.known = {std::move(block), filling.count, false};
    return error::None;
}

} // namespace

Status BytesToNext(CopySource& source, uint32_t offset, uint32_t& bytes)
{
    if (offset < HEADER_BYTES || offset >= source.bytes || source.known.overlap)
        return error::BadTag;
    if (!source.known.offsets)
        if (const Status status = Collect(source); status != error::None)
            return status;
    const Locked<uint32_t> offsets(source.known.offsets.Get());
    if (!offsets)
        return error::NotEnoughMemory;
    const uint32_t *begin = offsets.Get(), *end = begin + source.known.count;
    const uint32_t* next = std::upper_bound(begin, end, offset);
    bytes = (next == end ? source.bytes : std::min(*next, source.bytes)) - offset;
    return error::None;
}

} // namespace tiff
