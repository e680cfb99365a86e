/* Directories as they lie in a file, whatever is wrong with them. */
#ifndef TOOLS_ANATOMY_H
#define TOOLS_ANATOMY_H

#include "chain.h"

#include "tiff/base.h"

namespace tifftool {

struct DirectoryEntry : TagEntry {
    uint32_t tag = 0;
};

struct Directory {
    uint32_t offset = 0;
    uint32_t claimedEntries = 0;
    std::vector<DirectoryEntry> entries; // those that lie in the file
    bool hasLink = false;                // the link behind them does too
    uint32_t link = 0;
};

uint64_t SizeOf(RawFile& raw);

Directory ReadDirectory(RawFile& raw, uint32_t offset);

// Bytes of a known type's value; 0 for unknown types.
size_t KnownElementBytes(uint32_t type);

// Where the values of an entry lie, and how many bytes they take.
struct Extent {
    uint64_t at, bytes;
};
Extent ValuesOf(const DirectoryEntry& entry);

// Up to `most` values in the processor's order, as bytes. Fewer when the file ends.
std::vector<uint8_t> ReadValues(RawFile& raw, const DirectoryEntry& entry, size_t most);

// Whole numbers of a tag; none for other types, and when the file does not have them all.
std::vector<uint32_t> ReadNumbers(RawFile& raw, const DirectoryEntry& entry);

// A block as long as the file that has its header, its directories and their values, and of the rest nothing:
// opened in memory it tells all tags without reading a picture. Null without memory, and when values overlap
// so that there is more to copy than the file is long.
HGLOBAL CopyDirectories(RawFile& raw);

} // namespace tifftool

#endif
