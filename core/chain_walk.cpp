#include "core/chain_walk.h"

#include "core/open_file.h"
#include "core/records.h"
#include "core/stream.h"

#include <algorithm>
#include <bit>

namespace tiff {

namespace {

constexpr uint32_t FIRST_ROOM = 16;
constexpr uint32_t NO_PAGE = UINT32_MAX;

// Finds the page, if any, whose directory lies at an offset. Offsets mostly grow along a chain, and a new
// largest one needs no look-up. The hash table, of page numbers plus one, is built only when an offset turns
// back.
struct SeenOffsets {
    GlobalBlock slots;
    uint32_t slotCount = 0;
    uint32_t entered = 0; // pages in the table
    uint32_t largest = 0;
};

uint32_t SlotOf(uint32_t offset, uint32_t slotCount)
{
    return (offset * 0x9E3779B1u) >> 7 & (slotCount - 1);
}

bool EnterPages(SeenOffsets& seen, const WalkedPage* pages, uint32_t pageCount)
{
    if (pageCount * 2 > seen.slotCount) {
        const uint32_t slotCount = std::bit_ceil(pageCount * 4);
        seen.slots = GlobalBlock(uint64_t{slotCount} * sizeof(uint32_t));
        if (!seen.slots)
            return false;
        seen.slotCount = slotCount;
        seen.entered = 0;
    }
    Locked<uint32_t> slots(seen.slots.Get());
    if (!slots)
        return false;
    for (; seen.entered < pageCount; ++seen.entered) {
        uint32_t slot = SlotOf(pages[seen.entered].directoryOffset, seen.slotCount);
        while (slots[slot] != 0)
            slot = (slot + 1) & (seen.slotCount - 1);
        slots[slot] = seen.entered + 1;
    }
    return true;
}

// False only when memory is missing; found is NO_PAGE for an offset not seen before.
bool FindSeen(SeenOffsets& seen, const WalkedPage* pages, uint32_t pageCount, uint32_t offset,
              uint32_t& found)
{
    found = NO_PAGE;
    if (pageCount == 0 || offset > seen.largest) {
        seen.largest = offset;
        return true;
    }
    if (!EnterPages(seen, pages, pageCount))
        return false;
    Locked<uint32_t> slots(seen.slots.Get());
    if (!slots)
        return false;
    for (uint32_t slot = SlotOf(offset, seen.slotCount); slots[slot] != 0;
         slot = (slot + 1) & (seen.slotCount - 1))
        if (pages[slots[slot] - 1].directoryOffset == offset)
            found = slots[slot] - 1;
    return true;
}

// Adds an entry to what the page's tags will need, and takes the page's kind from it.
void CountEntry(const DirectoryEntry& entry, WalkedPage& page, uint64_t& bytes)
{
    bytes += sizeof(TagRecord) + KeptBytes(entry);
    if (entry.tag != tag::NewSubfileType && entry.tag != tag::SubfileType)
        return;
    const uint32_t value = entry.type == fieldtype::Byte    ? entry.field[0]
                           : entry.type == fieldtype::Short ? entry.Field() & 0xFFFF
                                                            : entry.Field();
    page.kind = entry.tag == tag::NewSubfileType ? value : value - 1;
}

// Fetches no values. A directory that lies whole in the window is parsed where it is.
bool ScanEntries(DirectoryWindow& window, uint32_t entryCount, WalkedPage& page, uint64_t& bytes)
{
    DirectoryEntry entry;
    const uint32_t entryBytes = entryCount * ENTRY_BYTES;
    const uint8_t* raw =
        entryBytes <= WINDOW_BYTES ? Fetch(window, page.directoryOffset + uint64_t{2}, entryBytes) : nullptr;
    for (uint32_t index = 0; index < entryCount; ++index) {
        if (raw)
            ParseEntry(raw + index * ENTRY_BYTES, window.byteOrder, entry);
        else if (!FetchEntry(window, page.directoryOffset, index, entry))
            return false;
        CountEntry(entry, page, bytes);
    }
    return true;
}

bool ScanDirectory(DirectoryWindow& window, WalkedPage& page)
{
    const uint8_t* counted = Fetch(window, page.directoryOffset, 2);
    if (!counted)
        return false;
    const uint32_t entryCount = Load16(counted, window.byteOrder);
    uint64_t bytes = 0;
    page.kind = 0;
    if (!ScanEntries(window, entryCount, page, bytes))
        return false;
    page.tagBlockBytes = static_cast<uint32_t>(std::min<uint64_t>(bytes, UINT32_MAX));
    // A file must not mark its own pages as loaded.
    page.kind &= 0xFFFFu & ~uint32_t{PAGE_REGISTERED};
    const uint64_t nextLink = page.directoryOffset + uint64_t{2} + uint64_t{entryCount} * ENTRY_BYTES;
    page.nextLink = static_cast<uint32_t>(nextLink);
    return nextLink <= UINT32_MAX;
}

// Distinct directories together are no longer than the file. Overlapping ones could make a small file cost
// hours.
bool TakeRoom(ChainWalk& walk, const WalkedPage& page)
{
    walk.directoryBytes += page.nextLink - page.directoryOffset;
    return walk.directoryBytes <= walk.fileBytes;
}

// From the page that the chain came back to, everything repeats.
void RepeatCycle(WalkedPage* pages, uint32_t pageCount, uint32_t target)
{
    const uint32_t period = pageCount - target;
    uint32_t linkPosition = pages[pageCount - 1].nextLink;
    for (uint32_t page = pageCount; page < TIFF_MAX_PAGES; ++page) {
        pages[page] = pages[page - period];
        pages[page].linkPosition = linkPosition;
        linkPosition = pages[page].nextLink;
    }
}

bool MakeRoom(ChainWalk& walk, uint32_t& room, uint32_t wanted)
{
    if (wanted <= room)
        return true;
    const uint32_t larger = std::min(std::bit_ceil(wanted), TIFF_MAX_PAGES);
    const uint64_t bytes = uint64_t{larger} * sizeof(WalkedPage);
    if (room == 0)
        walk.pages = GlobalBlock(bytes);
    if (room == 0 ? !walk.pages : !walk.pages.Resize(bytes))
        return false;
    room = larger;
    return true;
}

enum class Step { Page, End, Broken, Cycle, NoMemory };

// Follows one link and scans the directory behind it into the page's place.
Step FollowLink(DirectoryWindow& window, ChainWalk& walk, WalkedPage* pages, SeenOffsets& seen,
                uint32_t& target)
{
    WalkedPage& page = pages[walk.pageCount];
    const uint8_t* link = Fetch(window, walk.linkPosition, 4);
    if (!link)
        return Step::Broken;
    page.linkPosition = walk.linkPosition;
    page.directoryOffset = Load32(link, window.byteOrder);
    if (page.directoryOffset == 0)
        return Step::End;
    if (!FindSeen(seen, pages, walk.pageCount, page.directoryOffset, target))
        return Step::NoMemory;
    if (target != NO_PAGE)
        return Step::Cycle;
    if (!ScanDirectory(window, page) || !TakeRoom(walk, page))
        return Step::Broken;
    ++walk.pageCount;
    // The last page allowed is not followed further: the link to it stays the last.
    if (walk.pageCount < TIFF_MAX_PAGES)
        walk.linkPosition = page.nextLink;
    return Step::Page;
}

// Goes on until the room is used up or the next link is not to a new page.
Step FollowLinks(DirectoryWindow& window, ChainWalk& walk, uint32_t room, SeenOffsets& seen, uint32_t& target)
{
    Locked<WalkedPage> pages(walk.pages.Get());
    Step step = pages ? Step::Page : Step::NoMemory;
    while (step == Step::Page && walk.pageCount < room)
        step = FollowLink(window, walk, pages.Get(), seen, target);
    return step;
}

} // namespace

Status WalkChain(DirectoryWindow& window, ChainWalk& walk)
{
    SeenOffsets seen;
    uint32_t room = 0;
    walk.linkPosition = FIRST_LINK;
    if (!SizeToRead(window.stream, walk.fileBytes))
        return error::InputOutput;
    while (walk.pageCount < TIFF_MAX_PAGES) {
        if (!MakeRoom(walk, room, std::max(walk.pageCount + 1, FIRST_ROOM)))
            return error::NotEnoughMemory;
        uint32_t target = NO_PAGE;
        switch (FollowLinks(window, walk, room, seen, target)) {
        case Step::Page:
            break;
        case Step::End:
            return error::None;
        case Step::NoMemory:
            return error::NotEnoughMemory;
        case Step::Broken:
            walk.broken = true;
            return walk.pageCount > 0 ? error::None : error::InputOutput;
        case Step::Cycle: {
            if (!MakeRoom(walk, room, TIFF_MAX_PAGES))
                return error::NotEnoughMemory;
            Locked<WalkedPage> pages(walk.pages.Get());
            if (!pages)
                return error::NotEnoughMemory;
            RepeatCycle(pages.Get(), walk.pageCount, target);
            walk.pageCount = TIFF_MAX_PAGES;
            walk.linkPosition = pages[TIFF_MAX_PAGES - 1].linkPosition;
            return error::None;
        }
        }
    }
    return error::None;
}

} // namespace tiff
