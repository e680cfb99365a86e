// Opens any bytes as a TIFF and asks every question about every page. What is told about a page is the same
// after it was dropped and loaded again.
#include "made_tiff.h"

using namespace fuzz;

namespace {

constexpr uint32_t PAGES = 6;
constexpr uint64_t LARGEST_BLOCK = 16 << 20;

struct Answers {
    BITMAPINFOHEADER header{};
    uint32_t results[6] = {};
    Bytes colours;
    PageTags tags;
};

Answers Ask(HGLOBAL file, uint32_t page)
{
    Answers answers;
    answers.results[0] = GetTiffDimensions(file, page, &answers.header);
    answers.results[1] = GetTiffImageDPI(file, page, &answers.results[2]);
    answers.results[3] = GetTiffRowsPerStrip(file, page);
    answers.results[4] = GetTiffStripCount(file, page);
    answers.colours = TakeBlock(GetTiffRGBQuad(file, page));
    const int32_t notes = GetTiffNoteCount(file, page);
    answers.results[5] = static_cast<uint32_t>(notes);
    for (int32_t index = 0; index < std::min(notes, 4); ++index) {
        TiffNote note{};
        char text[64];
        Demand(GetTiffNote(file, page, static_cast<uint32_t>(index), &note, text, sizeof(text)) ||
               TiffError() == TIFF_ERROR_MEMORY);
    }
    answers.tags = TagsOf(file, page);
    for (const auto& [tag, values] : answers.tags) {
        uint32_t value[2];
        GetTiffImageInfo(file, page, tag, value);
    }
    return answers;
}

bool Same(const Answers& one, const Answers& other)
{
    return std::memcmp(&one.header, &other.header, sizeof(one.header)) == 0 &&
           std::ranges::equal(one.results, other.results) && one.colours == other.colours &&
           one.tags == other.tags;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const Run run(LARGEST_BLOCK);
    Choices choices{{data, size}};
    const Bytes bytes = TiffOf(choices);
    const OpenTiff tiff(bytes);
    if (!tiff.handle)
        return 0;
    TiffFileInformation information;
    Demand(GetTiffFileInfo(tiff.handle, &information));
    const uint32_t pages = NumberOfTiffImages(tiff.handle, TIFF_ALL_PAGES);
    Demand(pages == information.pageCount);
    for (uint32_t page = 0; page < pages && page < PAGES; ++page) {
        if (!GetTiffImage(tiff.handle, page)) {
            Demand(TiffError() != 0);
            continue;
        }
        const Answers first = Ask(tiff.handle, page);
        Demand(IsTiffImageRegistered(tiff.handle, page) && DropTiffImage(tiff.handle, page));
        Demand(GetTiffImage(tiff.handle, page) && Same(first, Ask(tiff.handle, page)));
    }
    Demand(!GetTiffImage(tiff.handle, pages) && TiffError() != 0);
    return 0;
}
