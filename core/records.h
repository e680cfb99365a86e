// The container's records in memory: packed, so that their layout is the same everywhere.
#pragma once

#include "core/win32.h"
#include "tiff/files.h"

namespace tiff {

#pragma pack(push, 1)

struct PageEntry {
    uint32_t directoryOffset; // 0 for a page not yet written
    uint32_t tagBlockBytes;   // size of the page's TagRecords
    HGLOBAL tagBlock;         // null until loaded or defined; stays after a drop
    uint16_t kind;            // NewSubfileType, and PAGE_REGISTERED
};

// A TIFF file handle is the block of one of these, with the page table behind it.
struct TiffFileRecord {
    char path[260]; // empty for a TIFF in memory
    uint32_t openFlags;
    uint32_t linkPosition; // of the link that the next new page is written to
    HGLOBAL memoryBlock;
    uint32_t memoryBytes; // as given at open; 0xFFFFFFFF for a disk file
    uint16_t byteOrder;
    uint32_t pageCount;
};

// The records of a page follow it back to back.
struct TagBlock {
    uint16_t tagCount;
    uint32_t capacity;
    uint32_t used;
};

// Its values follow, in the processor's order.
struct TagRecord {
    uint32_t length; // of this header and the values: the distance to the next record
    uint16_t tag;
    uint16_t type;
    uint32_t count;
};

#pragma pack(pop)

static_assert(sizeof(PageEntry) == 18);
static_assert(sizeof(TiffFileRecord) == 286);
static_assert(sizeof(TagBlock) == 10);
static_assert(sizeof(TagRecord) == 12);
static_assert(sizeof(TiffFileInformation) == 270);

inline constexpr uint16_t PAGE_REGISTERED = 0x4000;

namespace openflag {
inline constexpr uint32_t OrCreate = 0x1; // open for writing, create if needed
inline constexpr uint32_t Existing = 0x2; // open for writing, must exist
inline constexpr uint32_t Read = 0x20;
inline constexpr uint32_t Append = 0x32;
inline constexpr uint32_t New = 0x1032;
inline constexpr uint32_t PlainBytes = 0x100; // the memory block is the address of bytes that are only read
inline constexpr uint32_t NoHeader = 0x1000;  // nothing written yet: create or truncate
} // namespace openflag

} // namespace tiff
