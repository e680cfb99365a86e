/* The chain of directories as it is in the file. The library's handles do not say whether it has a loop,
 * and hold values of some types only in part.
 */
#ifndef TOOLS_CHAIN_H
#define TOOLS_CHAIN_H

#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace tifftool {

struct Chain {
    std::vector<uint32_t> directories; // offsets, up to where the chain breaks or loops
    uint32_t comesBackTo = 0;          // the page, counted from 1, that follows the last; 0 for none
};

// An entry of a directory: its place in the file, and its content.
struct TagEntry {
    uint64_t position = 0;
    uint32_t type = 0, count = 0;
    uint64_t valuesAt = 0;
};

// A classic TIFF file that is read field by field.
struct RawFile {
    std::unique_ptr<FILE, int (*)(FILE*)> file;
    std::vector<uint8_t> window; // a part of it, for small fields that lie close together
    uint64_t windowAt = 0;
    bool motorola;

    explicit RawFile(const std::string& path, const char* mode = "rb");
};

Chain WalkChain(RawFile& raw);

// False when the directory has no entry with this tag.
bool FindEntry(RawFile& raw, uint32_t directory, uint32_t tag, TagEntry& entry);

// Bytes as they are in the file; fewer when it ends before.
std::vector<uint8_t> ReadBytes(RawFile& raw, uint64_t position, size_t count);

// False when not all of them could be written.
bool WriteBytes(RawFile& raw, uint64_t position, std::span<const uint8_t> bytes);

// Overwrites numbers of four bytes.
bool WriteNumbers(RawFile& raw, uint64_t position, std::span<const uint32_t> numbers);

// Overwrites the count in an entry.
bool WriteCount(RawFile& raw, const TagEntry& entry, uint32_t count);

} // namespace tifftool

#endif
