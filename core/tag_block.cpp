#include "core/tag_block.h"

#include "core/registry.h"

namespace tiff {

std::optional<uint32_t> TagView::Number(uint32_t index) const
{
    const uint32_t bytes = type == fieldtype::Rational ? 4 : ElementBytes(type);
    const uint64_t at = uint64_t{index} * bytes;
    if (type == fieldtype::Ascii || type > fieldtype::Rational || at + bytes > values.size())
        return std::nullopt;
    const uint8_t* value = values.data() + at;
    return bytes == 1 ? *value : bytes == 2 ? Load16(value, TIFF_INTEL) : Load32(value, TIFF_INTEL);
}

std::span<uint8_t> FindRecord(TagBlock* block, uint32_t tag)
{
    std::span<uint8_t> left(Records(block), block->used);
    while (left.size() >= sizeof(TagRecord)) {
        TagRecord record;
        std::memcpy(&record, left.data(), sizeof(record));
        if (record.tag == tag)
            return left.first(record.length);
        left = left.subspan(record.length);
    }
    return {};
}

void RemoveRecord(TagBlock* block, uint32_t tag)
{
    const std::span<uint8_t> record = FindRecord(block, tag);
    if (record.empty())
        return;
    const uint8_t* next = record.data() + record.size();
    std::memmove(record.data(), next, static_cast<size_t>(Records(block) + block->used - next));
    block->used -= static_cast<uint32_t>(record.size());
    --block->tagCount;
}

void AppendRecord(TagBlock* block, const TagRecord& record, const void* values)
{
    uint8_t* target = Records(block) + block->used;
    std::memcpy(target, &record, sizeof(record));
    if (record.length > sizeof(record))
        std::memcpy(target + sizeof(record), values, record.length - sizeof(record));
    block->used += record.length;
    ++block->tagCount;
}

static HGLOBAL TagBlockOf(HGLOBAL file, uint32_t page)
{
    const auto entry = FindPage(file, page);
    return entry && entry->kind & PAGE_REGISTERED ? entry->tagBlock : nullptr;
}

PageTags::PageTags(HGLOBAL file, uint32_t page) : block(TagBlockOf(file, page))
{
}

std::optional<TagView> PageTags::Next(uint32_t& position) const
{
    if (!block || position + uint64_t{sizeof(TagRecord)} > block->used)
        return std::nullopt;
    const uint8_t* at = reinterpret_cast<const uint8_t*>(block.Get() + 1) + position;
    TagRecord record;
    std::memcpy(&record, at, sizeof(record));
    position += record.length;
    return TagView{
        record.tag, record.type, record.count, {at + sizeof(record), record.length - sizeof(record)}};
}

std::optional<TagView> PageTags::Find(uint32_t tag) const
{
    uint32_t position = 0;
    for (uint32_t left = Count(); left > 0; --left) {
        const auto record = Next(position);
        if (!record || record->tag == tag)
            return record;
    }
    return std::nullopt;
}

uint32_t PageTags::Value(uint32_t tag, uint32_t fallback, uint32_t index) const
{
    const auto found = Find(tag);
    return found ? found->Number(index).value_or(fallback) : fallback;
}

} // namespace tiff
