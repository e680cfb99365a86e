#include "anatomy.h"

#include "tag_values.h"

#include <algorithm>
#include <cstring>

namespace tifftool {

namespace {

constexpr size_t ENTRY_BYTES = 12, INLINE_BYTES = 4;
constexpr uint32_t LAST_TYPE = 13;

uint32_t NumberAt(const RawFile& raw, const std::vector<uint8_t>& bytes, size_t at, size_t count)
{
    uint32_t number = 0;
    for (size_t index = 0; index < count; ++index) {
        number = number << 8 | bytes[at + (raw.motorola ? index : count - 1 - index)];
    }
    return number;
}

} // namespace

uint64_t SizeOf(RawFile& raw)
{
    return raw.file && _fseeki64(raw.file.get(), 0, SEEK_END) == 0
               ? static_cast<uint64_t>(_ftelli64(raw.file.get()))
               : 0;
}

Directory ReadDirectory(RawFile& raw, uint32_t offset)
{
    Directory directory = {.offset = offset};
    const std::vector<uint8_t> count = ReadBytes(raw, offset, 2);
    if (count.size() < 2) {
        return directory;
    }
    directory.claimedEntries = NumberAt(raw, count, 0, 2);
    const size_t whole = ENTRY_BYTES * directory.claimedEntries;
    const std::vector<uint8_t> bytes = ReadBytes(raw, uint64_t{offset} + 2, whole + 4);
    for (size_t at = 0; at + ENTRY_BYTES <= std::min(bytes.size(), whole); at += ENTRY_BYTES) {
        DirectoryEntry& entry = directory.entries.emplace_back();
        entry.tag = NumberAt(raw, bytes, at, 2);
        entry.position = uint64_t{offset} + 2 + at;
        entry.type = NumberAt(raw, bytes, at + 2, 2);
        entry.count = NumberAt(raw, bytes, at + 4, 4);
        entry.valuesAt = NumberAt(raw, bytes, at + 8, 4);
    }
    directory.hasLink = bytes.size() == whole + 4;
    directory.link = directory.hasLink ? NumberAt(raw, bytes, whole, 4) : 0;
    return directory;
}

size_t KnownElementBytes(uint32_t type)
{
    return type == 0 || type > LAST_TYPE ? 0 : ElementBytes(type);
}

Extent ValuesOf(const DirectoryEntry& entry)
{
    const uint64_t bytes = uint64_t{entry.count} * KnownElementBytes(entry.type);
    return {bytes <= INLINE_BYTES ? entry.position + 8 : entry.valuesAt, bytes};
}

std::vector<uint8_t> ReadValues(RawFile& raw, const DirectoryEntry& entry, size_t most)
{
    const Extent extent = ValuesOf(entry);
    const uint64_t wanted = std::min<uint64_t>(extent.bytes, uint64_t{most} * KnownElementBytes(entry.type));
    const uint64_t size = SizeOf(raw);
    const uint64_t there = extent.at < size ? size - extent.at : 0;
    std::vector<uint8_t> bytes = ReadBytes(raw, extent.at, static_cast<size_t>(std::min(wanted, there)));
    if (raw.motorola) {
        ReverseElements(entry.type, bytes);
    }
    return bytes;
}

std::vector<uint32_t> ReadNumbers(RawFile& raw, const DirectoryEntry& entry)
{
    const std::vector<uint8_t> bytes = ReadValues(raw, entry, SIZE_MAX / 8);
    const size_t size = entry.type == 13 ? 4 : KnownElementBytes(entry.type);
    if ((entry.type != 1 && entry.type != 3 && entry.type != 4 && entry.type != 13) ||
        bytes.size() != ValuesOf(entry).bytes) {
        return {};
    }
    std::vector<uint32_t> numbers(bytes.size() / size);
    for (size_t index = 0; index < numbers.size(); ++index) {
        memcpy(&numbers[index], &bytes[index * size], size);
    }
    return numbers;
}

namespace {

// Copies a part of a file to where it lies in it, as far as it does. False when that is more than is left.
bool CopyPart(RawFile& raw, std::span<uint8_t> target, Extent part, size_t& left)
{
    if (part.at >= target.size()) {
        return true;
    }
    const auto at = static_cast<size_t>(part.at);
    const auto count = static_cast<size_t>(std::min<uint64_t>(part.bytes, target.size() - at));
    if (count > left) {
        return false;
    }
    left -= count;
    std::ranges::copy(ReadBytes(raw, at, count), target.begin() + static_cast<ptrdiff_t>(at));
    return true;
}

bool CopyDirectory(RawFile& raw, std::span<uint8_t> target, uint32_t offset, size_t& left)
{
    const Directory directory = ReadDirectory(raw, offset);
    return CopyPart(raw, target, {offset, 2 + ENTRY_BYTES * directory.claimedEntries + 4}, left) &&
           std::ranges::all_of(directory.entries, [&](const DirectoryEntry& entry) {
               const Extent values = ValuesOf(entry);
               return values.bytes <= INLINE_BYTES || CopyPart(raw, target, values, left);
           });
}

} // namespace

HGLOBAL CopyDirectories(RawFile& raw)
{
    constexpr uint64_t HEADER_BYTES = 8;
    const uint64_t size = SizeOf(raw);
    if (size < HEADER_BYTES || size > UINT32_MAX) {
        return nullptr;
    }
    const HGLOBAL block = GlobalAlloc(GHND, static_cast<size_t>(size));
    void* const bytes = block ? GlobalLock(block) : nullptr;
    if (!bytes) {
        return GlobalFree(block);
    }
    const std::span target(static_cast<uint8_t*>(bytes), static_cast<size_t>(size));
    size_t left = target.size();
    const bool isCopied = CopyPart(raw, target, {0, HEADER_BYTES}, left) &&
                          std::ranges::all_of(WalkChain(raw).directories, [&](uint32_t offset) {
                              return CopyDirectory(raw, target, offset, left);
                          });
    GlobalUnlock(block);
    return isCopied ? block : GlobalFree(block);
}

} // namespace tifftool
