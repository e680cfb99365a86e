// What a page consists of besides its tags, where it lies in its file, and where it goes in a
// copy. Nothing is written here.
#pragma once

#include "core/directory_layout.h"
#include "core/directory_window.h"

#include <span>

namespace tiff {

// Bytes of the source that follow each other.
struct Segment {
    uint32_t offset, bytes;
};

// Tags whose values are offsets of data, and how long the data is.
struct Reference {
    uint16_t offsets;
    uint16_t lengths;           // the tag that tells; 0 for tables that tell themselves
    std::span<uint32_t> values; // counted from where the data begins; then the final offsets
};

struct PageContent {
    std::span<DirectoryTag> tags;
    std::span<Segment> segments;
    uint64_t dataBytes;
    std::array<Reference, 5> references;
    size_t referenceCount;
    DirectoryLayout layout;
};

// The room that the content of a page takes.
uint64_t ContentBytes(const PageTags& tags);

// Finds the data of a page. The room is as large as ContentBytes says, on an address for any
// type, and everything in the content points into it or into the tags. Returns 6 for data that no
// file can hold, 9 for offsets and lengths that differ in number or are none, and 10 when one of
// them is missing.
[[nodiscard]] Status FindContent(const PageTags& tags, DirectoryWindow& source, uint32_t sourceBytes,
                                 std::span<uint8_t> room, PageContent& content);

// Lays a page out at a file position and gives its tags the offsets that its data will have right
// behind the directory. Returns 6 for a page that would reach beyond 4 GiB.
[[nodiscard]] Status PlaceContent(PageContent& content, uint32_t start);

} // namespace tiff
