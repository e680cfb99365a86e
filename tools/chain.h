/* The chain of directories as it stands in a file, for what the library's handles do not tell: whether
 * it comes back to itself, and values of the types that pages in memory hold only in part.
 */
#ifndef TOOLS_CHAIN_H
#define TOOLS_CHAIN_H

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace tifftool {

struct Chain {
    std::vector<uint32_t> directories; // offsets, up to where the chain breaks or comes back
    uint32_t comesBackTo = 0;          // the page, counted from 1, that follows the last; 0 for none
};

// An entry of a directory: where it lies in the file, and what it says.
struct TagEntry {
    uint64_t position = 0;
    uint32_t type = 0, count = 0;
    uint64_t valuesAt = 0;
};

// A classic TIFF file read field by field.
struct RawFile {
    std::unique_ptr<FILE, int (*)(FILE*)> file;
    bool motorola;

    explicit RawFile(const std::string& path, const char* mode = "rb");
};

Chain WalkChain(RawFile& raw);

// False when the directory has no such entry.
bool FindEntry(RawFile& raw, uint32_t directory, uint32_t tag, TagEntry& entry);

// Bytes as they stand in the file; fewer when it ends before.
std::vector<uint8_t> ReadBytes(RawFile& raw, uint64_t position, size_t count);

// Writes a count in the place of an entry's own.
bool WriteCount(RawFile& raw, const TagEntry& entry, uint32_t count);

} // namespace tifftool

#endif
