#include "core/registry.h"

#include "core/errors.h"

#include <algorithm>
#include <bit>

namespace tiff {

static constexpr uint32_t LEAST_ROOM = 8;

uint32_t PageRoom(uint32_t pageCount)
{
    return std::min(std::max(std::bit_ceil(pageCount), LEAST_ROOM), TIFF_MAX_PAGES);
}

bool MakeRoomForPage(HGLOBAL file)
{
    Locked<TiffFileRecord> record(file);
    if (!record || record->pageCount >= TIFF_MAX_PAGES)
        return false;
    const uint32_t pageCount = record->pageCount;
    record.Unlock();
    const uint32_t room = PageRoom(pageCount + 1);
    if (room == PageRoom(pageCount))
        return true;
    return GlobalReAlloc(file, static_cast<SIZE_T>(FileRecordBytes(room)), GMEM_ZEROINIT) == file;
}

std::optional<PageEntry> FindPage(HGLOBAL file, uint32_t page)
{
    Locked<TiffFileRecord> record(file);
    if (!record || page >= record->pageCount)
        return std::nullopt;
    return Pages(record.Get())[page];
}

std::optional<uint32_t> CountPages(HGLOBAL file)
{
    Locked<TiffFileRecord> record(file);
    return record ? std::optional(uint32_t{record->pageCount}) : std::nullopt;
}

Status PageStatus(HGLOBAL file, uint32_t page)
{
    Locked<TiffFileRecord> record(file);
    if (!record)
        return error::InvalidHandle;
    if (page >= record->pageCount)
        return error::IndexOutOfRange;
    return Pages(record.Get())[page].kind & PAGE_REGISTERED ? error::None : error::NotRegistered;
}

Status TagsStatus(HGLOBAL file, uint32_t page)
{
    const Status status = PageStatus(file, page);
    return status == error::None ? error::NotEnoughMemory : status;
}

bool RegisterPage(HGLOBAL file, uint32_t page, HGLOBAL tagBlock)
{
    Locked<TiffFileRecord> record(file);
    if (!record)
        return false;
    PageEntry& entry = Pages(record.Get())[page];
    entry.tagBlock = tagBlock;
    entry.kind |= PAGE_REGISTERED;
    return true;
}

// Deliberate: the handle's value stays in the entry, so that a new page never takes the slot of one
// that was in use.
static void Drop(PageEntry& entry)
{
    if (!(entry.kind & PAGE_REGISTERED))
        return;
    GlobalFree(entry.tagBlock);
    entry.kind &= static_cast<uint16_t>(~PAGE_REGISTERED);
}

void DropPages(HGLOBAL file)
{
    // Without the record the tags stay in memory for good.
    if (Locked<TiffFileRecord> record(file, 2); record)
        std::for_each_n(Pages(record.Get()), record->pageCount, Drop);
}

} // namespace tiff

using namespace tiff;

extern "C" int32_t IsTiffImageRegistered(HGLOBAL file, uint32_t page) noexcept
{
    const Status status = PageStatus(file, page);
    // Deliberate: a null file sets no error.
    if (status != error::None && file)
        SetTiffError(status);
    return status == error::None;
}

extern "C" int32_t DropTiffImage(HGLOBAL file, uint32_t page) noexcept
{
    Locked<TiffFileRecord> record(file);
    if (!record || page >= record->pageCount) {
        SetTiffError(error::IndexOutOfRange);
        return 0;
    }
    Drop(Pages(record.Get())[page]);
    return 1;
}

extern "C" uint32_t NumberOfTiffImages(HGLOBAL file, uint32_t kind) noexcept
{
    Locked<TiffFileRecord> record(file);
    if (!record) {
        if (file)
            SetTiffError(error::InvalidHandle);
        return 0;
    }
    const uint32_t pageCount = record->pageCount;
    if (kind & TIFF_ALL_PAGES)
        return pageCount;
    const PageEntry* pages = Pages(record.Get());
    const auto matches = std::count_if(pages, pages + pageCount,
                                       [kind](const PageEntry& entry) { return entry.kind == kind; });
    // Deliberate: entries not in use count as pages of kind 0.
    const uint32_t unused = kind == 0 ? TIFF_MAX_PAGES - pageCount : 0;
    return static_cast<uint32_t>(matches) + unused;
}
