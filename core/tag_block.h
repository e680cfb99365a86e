// A page's tags in memory: one record after the other, in directory order.
#pragma once

#include "core/byte_order.h"
#include "core/global_block.h"
#include "core/records.h"

#include <optional>
#include <span>

namespace tiff {

// A record's fields, copied out, and its values where they lie.
struct TagView {
    uint16_t tag;
    uint16_t type;
    uint32_t count;
    std::span<const uint8_t> values;

    // A BYTE, SHORT or LONG as a number, or a part of a RATIONAL. Nothing for other types and for an index
    // beyond the values.
    std::optional<uint32_t> Number(uint32_t index) const;
};

inline uint8_t* Records(TagBlock* block)
{
    return reinterpret_cast<uint8_t*>(block + 1);
}

// The first record with the tag, header and values; empty without one.
std::span<uint8_t> FindRecord(TagBlock* block, uint32_t tag);

// Removes that record; the records behind it move down. Does nothing without one.
void RemoveRecord(TagBlock* block, uint32_t tag);

// Appends a record. The block must have room for it.
void AppendRecord(TagBlock* block, const TagRecord& record, const void* values);

// The tags of a loaded page, locked for a scope.
class PageTags {
public:
    // False for a page that is not loaded.
    PageTags(HGLOBAL file, uint32_t page);

    explicit operator bool() const
    {
        return static_cast<bool>(block);
    }
    uint16_t Count() const
    {
        return block ? block->tagCount : uint16_t{0};
    }
    // The first record with the tag; a missing one sets no error.
    std::optional<TagView> Find(uint32_t tag) const;
    // The first value of a tag, or `fallback` when it is missing.
    uint32_t Value(uint32_t tag, uint32_t fallback, uint32_t index = 0) const;

    // Steps through all records: position starts at 0 and is moved on.
    std::optional<TagView> Next(uint32_t& position) const;

private:
    Locked<TagBlock> block;
};

} // namespace tiff
