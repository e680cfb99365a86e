// The page table behind an open file's record.
#pragma once

#include "core/global_block.h"
#include "core/records.h"
#include "core/vocabulary.h"

#include <optional>

namespace tiff {

// The room is a function of the page count, so it needs no field of its own.
uint32_t PageRoom(uint32_t pageCount);

constexpr uint64_t FileRecordBytes(uint32_t room)
{
    return sizeof(TiffFileRecord) + uint64_t{room} * sizeof(PageEntry);
}

// Valid below PageRoom(pageCount), while the record is locked.
inline PageEntry* Pages(TiffFileRecord* record)
{
    return reinterpret_cast<PageEntry*>(record + 1);
}

// Makes room for one more page. The handle is the caller's name for the file and stays the same. False when
// memory is missing or the file has all its pages; the table must not be locked.
[[nodiscard]] bool MakeRoomForPage(HGLOBAL file);

// A copy of a page's entry in any state; nothing for a page outside the file.
std::optional<PageEntry> FindPage(HGLOBAL file, uint32_t page);

// Nothing when the record cannot be locked: such a file must not pass for one without pages.
std::optional<uint32_t> CountPages(HGLOBAL file);

// 0 for a page whose tags are loaded or defined; 3 no such page, 27 not loaded, 34 no such file.
[[nodiscard]] Status PageStatus(HGLOBAL file, uint32_t page);

// Why the tags of a page could not be had: as PageStatus, and 1 for a loaded page.
[[nodiscard]] Status TagsStatus(HGLOBAL file, uint32_t page);

inline bool IsRegistered(HGLOBAL file, uint32_t page)
{
    return PageStatus(file, page) == error::None;
}

// Frees the tags of all pages.
void DropPages(HGLOBAL file);

// Registers a page with this block of tags.
[[nodiscard]] bool RegisterPage(HGLOBAL file, uint32_t page, HGLOBAL tagBlock);

} // namespace tiff
