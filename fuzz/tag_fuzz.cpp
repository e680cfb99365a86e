// Gives a page of a TIFF a tag and takes one away. Every other tag of every page stays, and so do the pages.
#include "made_tiff.h"

using namespace fuzz;

namespace {

constexpr uint64_t LARGEST_BLOCK = 16 << 20;

// None for a file of which some page cannot be loaded.
std::vector<PageTags> PagesOf(Input file)
{
    std::vector<PageTags> pages;
    const OpenTiff tiff(file);
    const uint32_t count = tiff.handle ? NumberOfTiffImages(tiff.handle, TIFF_ALL_PAGES) : 0;
    constexpr uint32_t MOST_COMPARED = 500; // a ring repeats its pages
    for (uint32_t page = 0; page < std::min(count, MOST_COMPARED); ++page) {
        if (!GetTiffImage(tiff.handle, page))
            return {};
        pages.push_back(TagsOf(tiff.handle, page));
    }
    return pages;
}

void Remove(PageTags& tags, uint32_t tag)
{
    std::erase_if(tags, [=](const auto& one) { return one.first == tag; });
}

// The numbers of fields are not kept when strips move.
bool Same(std::vector<PageTags> one, std::vector<PageTags> other, uint32_t page, uint32_t tag)
{
    if (page < one.size() && page < other.size()) {
        Remove(one[page], tag);
        Remove(other[page], tag);
    }
    return SameTags(one, other);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const Run run(LARGEST_BLOCK);
    static constexpr uint32_t tags[] = {270, 305, 306, 315, 282, 297, 266, 700, 32000, 65535, 254, 259};
    static constexpr uint32_t types[] = {1, 2, 3, 4, 5, 7, 9, 6, 12, 0};
    static constexpr uint32_t bytesOf[] = {1, 1, 2, 4, 8, 1, 4, 1, 8, 1};
    Choices choices{{data, size}};
    const bool deletes = choices.Below(4) == 0;
    const uint32_t page = choices.Below(4), tag = choices.OneOf(tags), kind = choices.Below(10);
    const Input values = choices.Take(choices.Below(64) + 1u);
    const bool readable =
        choices.Byte() & 1; // else values may be missing, and be nothing but zeros afterwards
    const Bytes bytes = readable ? MakeTiff(choices, Pages::Readable) : TiffOf(choices);
    const std::vector<PageTags> before = PagesOf(bytes);
    const DiskFile file(bytes);
    const auto count = static_cast<uint32_t>(values.size()) / bytesOf[kind];
    const bool done = deletes ? DeleteTiffTagOfImage(file.Path(), static_cast<int32_t>(page), tag)
                              : AddTiffTagToImage(file.Path(), static_cast<int32_t>(page), tag, types[kind],
                                                  values.data(), count);
    const Bytes content = file.Content();
    Keep(content);
    if (!done) {
        Demand(TiffError() != 0 && content == bytes);
        return 0;
    }
    Demand(!readable || page < before.size());
    const std::vector<PageTags> after = PagesOf(content);
    Demand(!readable || Same(before, after, page, tag));
    return 0;
}
