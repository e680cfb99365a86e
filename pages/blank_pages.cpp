// Pages are loaded one by one and their pixels counted up to a limit; counting stops when the answer is
// certain.
#include "tiff/blank_pages.h"
#include "core/desktop.h"
#include "core/directory_reader.h"
#include "core/errors.h"
#include "core/global_block.h"
#include "pages/page_edit.h"
#include "raster/dib.h"
#include "raster/dib_sink.h"

#include <algorithm>
#include <array>
#include <bit>

namespace tiff {

namespace {

constexpr uint32_t SEARCH_FAILED = 0xFFFFFFFF;
constexpr int32_t WHOLE_PAGE = 1000; // the largest threshold

struct Search {
    bool forBlack;
    int32_t threshold;
    const uint8_t* colour;
};

double Pixels(const DibView& view)
{
    return static_cast<double>(view.width) * view.height;
}

double ThresholdPixels(const Search& search, const DibView& view)
{
    return search.threshold / 10.0 / 100.0 * Pixels(view);
}

bool Matches(const Search& search, uint8_t level, uint8_t limit)
{
    return search.forBlack ? level < limit : level > limit;
}

bool IsGrey(std::span<const uint8_t> colour)
{
    return colour[0] == colour[1] && colour[1] == colour[2];
}

// Deliberate: counts one byte more than the whole bytes of a row. When the width is a multiple of 8, that
// byte is padding, and all eight of its bits count.
bool TestBilevel(const Search& search, const DibView& view)
{
    const auto first = view.colours.first(3), second = view.colours.subspan(view.colourBytes, 3);
    if (!IsGrey(first) || !IsGrey(second))
        return false;
    const uint8_t flip = first[0] == 0 ? 0xFF : 0;
    const uint32_t wholeBytes = view.width / 8;
    const uint32_t lastBits = view.width % 8 ? view.width % 8 : 8;
    const auto lastMask = static_cast<uint8_t>(0xFF00 >> lastBits);
    const double limit = ThresholdPixels(search, view);
    uint64_t dark = 0;
    for (uint32_t row = 0; row < view.height; ++row) {
        const uint8_t* line = view.pixels + size_t{row} * view.stride;
        for (uint32_t at = 0; at <= wholeBytes && at < view.stride; ++at) {
            const uint8_t mask = at < wholeBytes ? uint8_t{0xFF} : lastMask;
            dark += static_cast<uint64_t>(std::popcount(static_cast<uint8_t>((line[at] ^ flip) & mask)));
            if (search.forBlack && static_cast<double>(dark) > limit)
                return true;
            if (!search.forBlack && static_cast<double>(dark) >= limit)
                return false;
        }
    }
    return !search.forBlack;
}

// Counts the pixels that match, row by row; true once there are enough.
template <class IsMatch>
bool TestPixels(const Search& search, const DibView& view, uint32_t pixelBytes, IsMatch isMatch)
{
    const double threshold = ThresholdPixels(search, view);
    const double limit = search.forBlack ? threshold : Pixels(view) - threshold;
    uint64_t count = 0;
    for (uint32_t row = 0; row < view.height; ++row) {
        const uint8_t* pixel = view.pixels + size_t{row} * view.stride;
        for (uint32_t column = 0; column < view.width; ++column, pixel += pixelBytes)
            count += isMatch(pixel);
        if (static_cast<double>(count) > limit)
            return true;
    }
    return false;
}

// Deliberate: the levels pair with the colour in the opposite order to that at 24 bits.
bool TestPalette(const Search& search, const DibView& view)
{
    std::array<bool, 256> matches{};
    const uint32_t colours = std::min(view.ColourCount(), 256u);
    for (uint32_t index = 0; index < colours; ++index) {
        const auto colour = view.colours.subspan(size_t{index} * view.colourBytes, 3);
        matches[index] = Matches(search, colour[0], search.colour[2]) &&
                         Matches(search, colour[1], search.colour[1]) &&
                         Matches(search, colour[2], search.colour[0]);
    }
    return TestPixels(search, view, 1, [&matches](const uint8_t* pixel) { return matches[*pixel]; });
}

bool TestTrueColour(const Search& search, const DibView& view)
{
    return TestPixels(search, view, 3, [&search](const uint8_t* pixel) {
        return Matches(search, pixel[0], search.colour[0]) && Matches(search, pixel[1], search.colour[1]) &&
               Matches(search, pixel[2], search.colour[2]);
    });
}

bool IsMatch(const Search& search, const DibView& view)
{
    switch (view.bitCount) {
    case 1:
        return TestBilevel(search, view);
    case 8:
        return TestPalette(search, view);
    case 24:
        return TestTrueColour(search, view);
    default:
        return false;
    }
}

// A picture that was decoded in part is searched too.
Status TestPage(const Search& search, HGLOBAL file, uint32_t page, bool& matches)
{
    RowSource source{};
    Status status = LoadTags(file, page);
    if (status == error::None)
        status = OpenPageRows(file, page, PageRows::Any, source);
    GlobalBlock dib;
    if (status == error::None)
        dib.Adopt(RowsToDib(source, status));
    DropTiffImage(file, page);
    const Locked<uint8_t> block(dib.Get());
    DibView view;
    if (!block || CompleteDib({block.Get(), GlobalSize(dib.Get())}, view) != error::None)
        return error::InputOutput;
    StoreLastError(status); // the caller may want the status of decoding
    matches = IsMatch(search, view);
    return error::None;
}

// The page's number from 1, 0 when none matches, or the failure value and a status.
uint32_t FindPageThat(Search search, const char* path, int32_t firstPage, Status& status)
{
    const OpenedTiff file(path, T_READ);
    status = path ? error::InputOutput : error::InvalidParameters;
    if (!file || file.PageCount() == 0 || !search.colour)
        return SEARCH_FAILED;
    search.threshold = std::clamp(search.threshold, 0, WHOLE_PAGE);
    const auto first = static_cast<uint32_t>(std::max(firstPage, 0));
    if (first >= file.PageCount()) {
        status = error::IndexOutOfRange;
        return SEARCH_FAILED;
    }
    const BusyCursor busy;
    // A chain with a loop or a break is searched once; if no page matches, that is an error.
    const uint32_t pages = PagesBeforeRepeat(file.Get());
    if (pages == 0) {
        status = error::NotEnoughMemory;
        return SEARCH_FAILED;
    }
    for (uint32_t page = first; page < pages; ++page) {
        bool matches = false;
        status = TestPage(search, file.Get(), page, matches);
        if (status != error::None)
            return SEARCH_FAILED;
        if (matches)
            return page + 1;
    }
    status = file.IsWhole() ? error::None : error::InputOutput;
    return status == error::None ? 0 : SEARCH_FAILED;
}

uint32_t SearchForCaller(const Search& search, const char* path, int32_t firstPage)
{
    Status status;
    const uint32_t found = FindPageThat(search, path, firstPage, status);
    if (found == SEARCH_FAILED)
        SetTiffError(status);
    return found;
}

} // namespace

} // namespace tiff

using namespace tiff;

extern "C" uint32_t FindBlankPage(const char* path, int32_t threshold, int32_t firstPage,
                                  const uint8_t* colour) noexcept
{
    return SearchForCaller({false, threshold, colour}, path, firstPage);
}

extern "C" uint32_t FindBlackPage(const char* path, int32_t threshold, int32_t firstPage,
                                  const uint8_t* colour) noexcept
{
    return SearchForCaller({true, threshold, colour}, path, firstPage);
}
