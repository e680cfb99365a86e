// Edits one TIFF with another: merges, splits, cuts, deletes, inserts, reorders. Pages that are not meant
// keep their tags and their place; a failure leaves the files as they were.
#include "made_tiff.h"

using namespace fuzz;

namespace {

constexpr uint64_t LARGEST_BLOCK = 16 << 20;
constexpr uint32_t INSERT = 4;
constexpr size_t LARGEST_FILE = 8192; // each strip may be as long as the file

// A page's tags without its number among the pages; nothing for one that cannot be loaded.
std::vector<PageTags> PagesOf(Input file)
{
    std::vector<PageTags> pages;
    const OpenTiff tiff(file);
    const uint32_t count = tiff.handle ? NumberOfTiffImages(tiff.handle, TIFF_ALL_PAGES) : 0;
    for (uint32_t page = 0; page < count; ++page)
        pages.push_back(GetTiffImage(tiff.handle, page) ? TagsOf(tiff.handle, page) : PageTags());
    return pages;
}

std::vector<PageTags> Part(const std::vector<PageTags>& pages, size_t first, size_t count)
{
    const auto from = pages.begin() + static_cast<ptrdiff_t>(std::min(first, pages.size()));
    return {from,
            from + static_cast<ptrdiff_t>(std::min<size_t>(count, static_cast<size_t>(pages.end() - from)))};
}

std::vector<PageTags> operator+(std::vector<PageTags> one, const std::vector<PageTags>& other)
{
    one.insert(one.end(), other.begin(), other.end());
    return one;
}

Bytes Dib()
{
    BITMAPINFOHEADER header = {
        .biSize = sizeof(header), .biWidth = 8, .biHeight = 2, .biPlanes = 1, .biBitCount = 24};
    Bytes dib(sizeof(header) + 48);
    std::memcpy(dib.data(), &header, sizeof(header));
    return dib;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size > LARGEST_FILE)
        return 0;
    const Run run(LARGEST_BLOCK);
    Choices choices{{data, size}};
    const uint32_t operation = choices.Below(7), page = choices.Below(4);
    const uint8_t form = choices.Byte();
    const bool inPlace = form & 1, readable = form & 2;
    const Bytes bytes = MakeTiff(choices, readable ? Pages::Readable : Pages::Any);
    const Bytes otherBytes = readable ? MakeTiff(choices, Pages::Readable) : TiffOf(choices);
    const std::vector<PageTags> before = PagesOf(bytes), others = PagesOf(otherBytes);
    const DiskFile file(bytes), other(otherBytes);
    const auto number = static_cast<int32_t>(page);
    bool done = false;
    std::vector<PageTags> expected = before, expectedOthers = others;
    switch (operation) {
    case 0:
        done = MergeTiffFiles(file.Path(), other.Path(), nullptr, 0);
        expected = before + others;
        break;
    case 1:
        done = SplitTiffFile(file.Path(), other.Path(), number, nullptr, 0);
        if (page < before.size() && page > 0) {
            expected = Part(before, 0, page);
            expectedOthers = Part(before, page, before.size());
        }
        break;
    case 2:
        done = DeleteTiffImage(file.Path(), number, inPlace);
        expected = Part(before, 0, page) + Part(before, page + 1, before.size());
        break;
    case 3:
        done = ReorderTiffFile(file.Path());
        break;
    case INSERT: {
        const Bytes dib = Dib();
        const Block block(dib);
        done = InsertTiffImage(file.Path(), block.Get(), TIFF_SAVE_STORED, 0, 1, number, inPlace, 0);
        Demand(done || TiffError() != 0);
        const std::vector<PageTags> now = PagesOf(file.Content());
        expected = Part(before, 0, page) + Part(now, page, 1) + Part(before, page, before.size());
        if (page > before.size())
            expected = before + Part(now, before.size(), 1);
        break;
    }
    case 5:
        // Nobody checks that both have the same byte order.
        if (bytes[0] != (otherBytes.empty() ? 0 : otherBytes[0]))
            return 0;
        done = CopyTiffImageInFile(other.Path(), page, file.Path(), T_APPEND);
        expected = before + Part(others, page, 1);
        break;
    default:
        done = UpdatePageNumbers(file.Path(), 7);
        return 0;
    }
    Demand(done || operation == INSERT || TiffError() != 0);
    // What was appended before a failure stays, so only the old pages are held to their place then.
    const std::vector<PageTags> after = PagesOf(file.Content());
    Keep(file.Content());
    if (!readable)
        return 0;
    if (done)
        Demand(SameTags(expected, after) && SameTags(expectedOthers, PagesOf(other.Content())));
    else
        Demand(SameTags(before, Part(after, 0, before.size())) && other.Content() == otherBytes);
    return 0;
}
