#include "pages/sub_directories.h"

#include <algorithm>

namespace tiff {

namespace {

// A camera's raw file has five sub-directories, up to three levels deep.
constexpr uint32_t MOST_VISITS = 256;
constexpr uint32_t MOST_DEPTH = 8;
constexpr uint32_t HEADER_BYTES = 8;
constexpr uint32_t LINK_BYTES = 4;

constexpr uint16_t directoryTags[] = {tag::SubIfds, tag::ExifIfd, tag::GpsIfd, tag::InteroperabilityIfd};

// Sub-directories that do not overlap are together no longer than the file.
bool Spend(const CopySource& source, uint64_t& spent, uint64_t bytes)
{
    spent += bytes;
    return spent <= source.bytes;
}

// Takes an entry and its values. An entry whose values are missing from the file is left out.
Status TakeEntry(CopySource& source, CopyPlan& plan, const RawEntry& entry, DirectoryTag*& end)
{
    if (!HasValues(source, entry) || !Spend(source, plan.directoryBytes, entry.valueBytes))
        return error::None;
    const auto values = source.scratch.TakeSpan<uint8_t>(entry.valueBytes);
    if (!values.data())
        return error::NotEnoughMemory;
    if (!ReadValues(source, entry, values))
        return error::InputOutput;
    // The directory writer swaps them back.
    if (source.window.byteOrder == TIFF_MOTOROLA)
        SwapElements(values, entry.type);
    *end++ = {{entry.tag, entry.type, entry.count, values}, static_cast<uint32_t>(values.size()), 0};
    return error::None;
}

// Reads the tags of a directory: first all entries at once, then their values.
Status ReadTags(CopySource& source, CopyPlan& plan, SubDirectory& directory)
{
    const auto entryCount = FetchEntryCount(source, directory.offset);
    const uint64_t bytes = 2 + uint64_t{entryCount.value_or(0)} * ENTRY_BYTES;
    if (!entryCount || directory.offset < HEADER_BYTES || !Spend(source, plan.directoryBytes, bytes))
        return error::BadTag;
    const auto entries = source.scratch.TakeSpan<RawEntry>(*entryCount);
    const auto tags = source.scratch.TakeSpan<DirectoryTag>(*entryCount);
    if (!entries.data() || !tags.data())
        return error::NotEnoughMemory;
    for (uint32_t index = 0; index < entries.size(); ++index)
        if (!FetchRawEntry(source, directory.offset, index, entries[index]))
            return error::BadTag;
    DirectoryTag* end = tags.data();
    for (const RawEntry& entry : entries)
        if (const Status status = TakeEntry(source, plan, entry, end); status != error::None)
            return status;
    directory.content.tags = {tags.data(), end};
    SortTags(directory.content.tags);
    return plan.directoryBytes <= source.bytes ? error::None : error::BadTag;
}

// The link behind a directory; 0 without one.
uint32_t FetchLink(CopySource& source, uint32_t directory)
{
    const uint32_t entryCount = FetchEntryCount(source, directory).value_or(0);
    const uint8_t* link =
        Fetch(source.window, directory + 2 + uint64_t{entryCount} * ENTRY_BYTES, LINK_BYTES);
    return link ? Load32(link, source.window.byteOrder) : 0;
}

Status FollowTags(CopySource& source, CopyPlan& plan, PageContent& content, uint32_t depth);

// Reads a directory and its data, and adds them to the end of the plan.
Status Read(CopySource& source, CopyPlan& plan, uint32_t offset, SubDirectory*& found)
{
    const auto room = source.scratch.TakeSpan<SubDirectory>(1);
    if (room.empty())
        return error::NotEnoughMemory;
    SubDirectory& directory = room[0] = {.offset = offset, .open = true};
    Status status = ReadTags(source, plan, directory);
    if (status == error::None)
        status = FindContent(source, directory.content);
    if (status == error::None && !Spend(source, plan.dataBytes, directory.content.dataBytes))
        status = error::BadTag;
    if (status != error::None)
        return status;
    (plan.last ? plan.last->next : plan.first) = &directory;
    plan.last = found = &directory;
    return error::None;
}

// The plan's directory for an offset in the source; null when the branch ends.
Status Visit(CopySource& source, CopyPlan& plan, uint32_t offset, uint32_t depth, SubDirectory*& found)
{
    found = nullptr;
    if (depth > MOST_DEPTH || ++plan.visits > MOST_VISITS || offset == plan.offset)
        return error::None;
    for (SubDirectory* known = plan.first; known; known = known->next)
        if (known->offset == offset) {
            found = known->open ? nullptr : known;
            return error::None;
        }
    Status status = Read(source, plan, offset, found);
    if (source.window.failed)
        return error::InputOutput;
    if (!found)
        return status == error::NotEnoughMemory ? status : error::None;
    status = FollowTags(source, plan, found->content, depth);
    found->open = false;
    return status;
}

// SubIFDs may be chains. The links of other directories mean nothing.
Status FollowChain(CopySource& source, CopyPlan& plan, SubDirectory* first, uint32_t depth)
{
    Status status = error::None;
    SubDirectory* last = first;
    while (status == error::None && !last->followed) {
        last->followed = true;
        const uint32_t offset = FetchLink(source, last->offset);
        if (offset == 0)
            break;
        last->open = true;
        status = Visit(source, plan, offset, depth, last->follower);
        plan.whole &= last->follower != nullptr;
        if (!last->follower)
            break;
        last = last->follower;
    }
    for (; first; first = first->follower)
        first->open = false;
    return status;
}

Status AddPointer(CopySource& source, CopyPlan& plan, const DirectoryPointer& pointer)
{
    const auto room = source.scratch.TakeSpan<DirectoryPointer>(1);
    if (room.empty())
        return error::NotEnoughMemory;
    room[0] = pointer;
    plan.pointers = &room[0];
    return error::None;
}

// Follows the values of a tag and removes those that lead nowhere. A value of 0 stays.
Status FollowTag(CopySource& source, CopyPlan& plan, DirectoryTag& tag, uint32_t depth)
{
    const auto values = source.scratch.TakeSpan<uint32_t>(std::min(tag.view.count, MOST_VISITS));
    if (!values.data())
        return error::NotEnoughMemory;
    const uint16_t type = tag.view.type == fieldtype::Ifd ? fieldtype::Ifd : fieldtype::Long;
    plan.whole &= tag.view.count <= MOST_VISITS;
    uint32_t kept = 0;
    for (uint32_t index = 0; index < values.size(); ++index) {
        const auto offset = WholeNumber(tag.view, index, source.window.byteOrder);
        SubDirectory* found = nullptr;
        Status status = error::None;
        if (offset && *offset != 0)
            status = Visit(source, plan, *offset, depth, found);
        if (status == error::None && found && tag.view.tag == tag::SubIfds)
            status = FollowChain(source, plan, found, depth);
        auto* value = reinterpret_cast<uint8_t*>(&values[kept]);
        if (status == error::None && found)
            status = AddPointer(source, plan, {value, type, found, plan.pointers});
        if (status != error::None)
            return status;
        values[kept] = 0;
        kept += offset == 0 || found;
        plan.whole &= offset == 0 || found;
    }
    tag.view = {
        tag.view.tag, type, kept, {reinterpret_cast<uint8_t*>(values.data()), kept * sizeof(uint32_t)}};
    tag.valueBytes = kept * static_cast<uint32_t>(sizeof(uint32_t));
    return error::None;
}

Status FollowTags(CopySource& source, CopyPlan& plan, PageContent& content, uint32_t depth)
{
    for (const uint16_t number : directoryTags) {
        DirectoryTag* tag = FindTag(content.tags, number);
        if (!tag || tag->view.count == 0)
            continue;
        if (const Status status = FollowTag(source, plan, *tag, depth + 1); status != error::None)
            return status;
        if (tag->view.count == 0)
            RemoveTag(content, number);
    }
    return error::None;
}

} // namespace

Status FindSubDirectories(CopySource& source, CopyPlan& plan)
{
    plan.first = plan.last = nullptr;
    plan.pointers = nullptr;
    plan.visits = 0;
    plan.directoryBytes = plan.dataBytes = 0;
    plan.whole = true;
    return FollowTags(source, plan, plan.page, 0);
}

Status PlacePlan(CopyPlan& plan, uint32_t start, uint32_t byteOrder)
{
    if (const Status status = PlaceContent(plan.page, start); status != error::None)
        return status;
    // No page reaches beyond 4 GiB, or placing it would have failed.
    auto end = static_cast<uint32_t>(plan.page.layout.end + plan.page.dataBytes);
    for (SubDirectory* directory = plan.first; directory; directory = directory->next) {
        if (const Status status = PlaceContent(directory->content, end); status != error::None)
            return status;
        end = static_cast<uint32_t>(directory->content.layout.end + directory->content.dataBytes);
    }
    for (const DirectoryPointer* pointer = plan.pointers; pointer; pointer = pointer->next)
        StoreOffset(pointer->value, pointer->type, pointer->target->content.layout.directoryOffset,
                    byteOrder);
    return error::None;
}

} // namespace tiff
