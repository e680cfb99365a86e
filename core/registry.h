// The page table behind an open file's record.
#pragma once

#include "core/global_block.h"
#include "core/records.h"
#include "core/vocabulary.h"

#include <optional>

namespace tiff {

// The table grows with the page count, so that its room never needs a field of its own.
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

// Makes room for one more page. The handle is the caller's name for the file and stays. False when
// memory is missing or the file takes no more; the table must not be locked.
[[nodiscard]] bool MakeRoomForPage(HGLOBAL file);

// A copy of a page's entry, whatever its state; nothing for a page outside the file.
std::optional<PageEntry> FindPage(HGLOBAL file, uint32_t page);

// 0 for a page whose tags are loaded or defined; 3, 27 or 34 for no such page, file or tags.
[[nodiscard]] Status PageStatus(HGLOBAL file, uint32_t page);

inline bool IsRegistered(HGLOBAL file, uint32_t page)
{
    return PageStatus(file, page) == error::None;
}

// Frees the tags of all pages.
void DropPages(HGLOBAL file);

// A page is registered from here on, with this block of tags.
void RegisterPage(HGLOBAL file, uint32_t page, HGLOBAL tagBlock);

} // namespace tiff
