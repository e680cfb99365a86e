// The content of a directory besides its tags: its place in the source, and its place in a copy. Nothing is
// written here.
#pragma once

#include "core/scheme_tags.h"

#include "core/tag_block.h"
#include "pages/raw_entries.h"

#include <span>

namespace tiff {

// Bytes of the source that follow each other.
struct Segment {
    uint32_t offset, bytes;
};

// A tag whose values are offsets of data, and the lengths of that data.
struct Reference {
    uint16_t offsets;
    uint16_t lengths;           // the tag with the lengths; 0 for tables
    std::span<uint32_t> values; // first counted from where the data begins; then the final offsets
    const TableTag* table = nullptr;
};

inline constexpr Reference stripReference = {tag::StripOffsets, tag::StripByteCounts, {}};

// All pointers lead into the source's scratch or the page's tags.
struct PageContent {
    std::span<DirectoryTag> tags; // in order
    std::span<Segment> segments;
    uint64_t dataBytes;
    std::array<Reference, 5> references;
    size_t referenceCount;
    DirectoryLayout layout;
};

// Collects the tags of a page, with their types in the file. A single strip without a byte count gets one of
// 0. Returns 1 or 6.
[[nodiscard]] Status DescribePage(CopySource& source, uint32_t page, const PageTags& tags,
                                  PageContent& content);

// Finds the data of a directory. Returns 1; 6 for data that no file can hold; 9 for offsets and lengths that
// differ in number, are empty or cannot be found out; 10 when one of them is missing.
[[nodiscard]] Status FindContent(CopySource& source, PageContent& content);

// Finds only the data of one pair of tags.
[[nodiscard]] Status FindReference(CopySource& source, PageContent& content, const Reference& reference);

// Removes a tag.
void RemoveTag(PageContent& content, uint32_t number);

// Lays a directory out at a file position and sets the offsets of its data, which follows directly. Returns 6
// when it would reach beyond 4 GiB.
[[nodiscard]] Status PlaceContent(PageContent& content, uint32_t start);

} // namespace tiff
