#include "support/leaks.h"
#include "support/numbered_pages.h"
#include "support/tiff_dump.h"

#include <functional>
#include <gtest/gtest.h>

namespace {

const std::vector<uint32_t> whiteBlack = {0xFFFFFF, 0x000000}, blackWhite = {0x000000, 0xFFFFFF};

DibPicture Bilevel(uint32_t rows, int32_t dotsPerMetre, std::vector<uint32_t> colours = whiteBlack)
{
    return {8, rows, 1, std::move(colours), Repeat(Hex("A5000000"), rows), {0, dotsPerMetre}};
}

// The lines of a page's description for these tags, separated by blanks.
std::string Tags(const std::string& page, std::initializer_list<int> tags)
{
    std::string found;
    for (const int tag : tags) {
        const std::string name = "\n" + std::to_string(tag) + ' ';
        const size_t at = ("\n" + page).find(name);
        found += at == std::string::npos ? std::to_string(tag) + " missing"
                                         : page.substr(at, page.find('\n', at) - at);
        found += "; ";
    }
    return found;
}

std::string SavedPage(const std::function<int32_t(const char*, HGLOBAL)>& save, const DibPicture& picture,
                      std::initializer_list<int> tags)
{
    NewFile file;
    Block dib(PackedDib(picture));
    if (!save(file.Path(), dib.Get()))
        return "error " + std::to_string(TiffError());
    const Bytes bytes = ReadFileBytes(file.Path());
    EXPECT_EQ(Complaints(bytes), "");
    return Tags(PagesOf(bytes).at(0), tags);
}

const auto bicom = SaveDIBInBicomTiffFile;
const auto nms = SaveDIBInNMSTiffFile;

auto Gamma(uint32_t selector, uint32_t fillOrder = 1)
{
    return [=](const char* path, HGLOBAL dib) {
        return SaveDIBInGammaTiffFile(path, dib, selector, 0, fillOrder);
    };
}

auto Dialogic(uint32_t selector)
{
    return [=](const char* path, HGLOBAL dib) { return SaveDIBInDialogicTiffFile(path, dib, selector); };
}

} // namespace

TEST(FaxBoards, WriteTheTagsThatTheirReadersWant)
{
    const DibPicture page = Bilevel(2, 7700), dark = Bilevel(2, 7700, blackWhite);
    const auto coding = {259, 292, 277, 266, 262};
    const auto identity = {305, 306, 270, 315};
    const auto paging = {254, 297};
    const struct {
        const char* row;
        std::function<int32_t(const char*, HGLOBAL)> save;
        std::string coding, paging;
    } rows[] = {
        {"Gamma, Group 3", Gamma(206, 2), "259 3 1: 3; 292 4 1: 0; 277 3 1: 1; 266 3 1: 2; 262 3 1: 0; ",
         "254 missing; 297 missing; "},
        {"Gamma, two-dimensional", Gamma(207),
         "259 3 1: 3; 292 3 1: 1; 277 missing; 266 3 1: 1; 262 3 1: 0; ", "254 missing; 297 missing; "},
        {"Gamma, Group 4", Gamma(208), "259 3 1: 4; 292 missing; 277 missing; 266 3 1: 1; 262 3 1: 0; ",
         "254 missing; 297 missing; "},
        {"Bicom", bicom, "259 3 1: 3; 292 4 1: 4; 277 3 1: 1; 266 3 1: 1; 262 3 1: 0; ",
         "254 4 1: 2; 297 3 2: 0 0; "},
        {"NMS", nms, "259 3 1: 3; 292 4 1: 4; 277 3 1: 1; 266 3 1: 1; 262 3 1: 0; ",
         "254 4 1: 2; 297 3 2: 0 0; "},
        {"Dialogic, Group 3", Dialogic(206), "259 3 1: 3; 292 4 1: 4; 277 3 1: 1; 266 3 1: 2; 262 3 1: 0; ",
         "254 4 1: 2; 297 3 2: 0 0; "},
        {"Dialogic, none", Dialogic(201), "259 3 1: 1; 292 missing; 277 missing; 266 3 1: 2; 262 3 1: 0; ",
         "254 4 1: 2; 297 3 2: 0 0; "},
    };
    for (const auto& [row, save, tags, pages] : rows) {
        SCOPED_TRACE(row);
        NoLeaks leaks;
        EXPECT_EQ(SavedPage(save, page, coding), tags);
        EXPECT_EQ(SavedPage(save, dark, coding), tags) << "a dark first colour";
        EXPECT_EQ(SavedPage(save, page, paging), pages);
        EXPECT_EQ(SavedPage(save, page, identity), "305 missing; 306 missing; 270 missing; 315 missing; ");
    }
    EXPECT_EQ(SavedPage(Gamma(206 + 256), page, coding), "error 11");
    EXPECT_EQ(SavedPage(Dialogic(200), page, coding), "error 11");
}

TEST(FaxBoards, KnowTwoResolutions)
{
    const struct {
        const char* row;
        uint32_t rows;
        int32_t dotsPerMetre;
        const char* vertical;
    } rows[] = {
        {"short page that does not say", 1100, 0, "98"},
        {"tall page that does not say", 1101, 0, "196"},
        {"196 dots", 2, 7700, "196"},
        {"98 dots", 2000, 3850, "98"},
        {"148 dots by rounding", 2, 5808, "196"}, // 147.52
        {"147 dots by rounding", 2, 5806, "98"},  // 147.47
    };
    for (const auto& [row, height, dotsPerMetre, vertical] : rows)
        EXPECT_EQ(SavedPage(bicom, Bilevel(height, dotsPerMetre), {282, 283, 296}),
                  "282 5 1: 204 1; 283 5 1: " + std::string(vertical) + " 1; 296 3 1: 2; ")
            << row;
}

TEST(FaxBoards, PixelsFollowTheFirstColour)
{
    const DibPicture light = Bilevel(1, 0), dark = Bilevel(1, 0, blackWhite);
    const DibPicture grey = {4, 1, 8, {0x101010, 0xFFFFFF}, Hex("00010203"), {0, 0}, 2};
    const DibPicture wide = {8, 1, 24, {}, Hex("A5112233445566778899AABBCCDDEEFF0011223344556677"), {0, 0}};
    const struct {
        const char* row;
        std::function<int32_t(const char*, HGLOBAL)> save;
        DibPicture picture;
        std::string data;
    } rows[] = {
        {"light", Gamma(201), light, "A5"},
        {"dark", Gamma(201), dark, "5A"},
        {"dark, Dialogic", Dialogic(201), dark, "5A"},
        {"8 bits keep their palette", Gamma(201), grey, "00010203"},
        {"8 bits taken for bits",
         Dialogic(201),
         {8, 1, 8, {0x101010}, Hex("A501020304050607"), {0, 0}, 1},
         "A5"},
        {"24 bits taken for bits, red first, bits turned", Dialogic(201), wide, "44"},
    };
    for (const auto& [row, save, picture, data] : rows) {
        SCOPED_TRACE(row);
        NoLeaks leaks;
        NewFile file;
        Block dib(PackedDib(picture));
        EXPECT_EQ(save(file.Path(), dib.Get()), 1);
        const std::string page = PagesOf(ReadFileBytes(file.Path())).at(0);
        EXPECT_NE(page.find("data 273: " + data + "\n"), std::string::npos) << page;
    }
}

TEST(FaxBoards, PagesAreNumberedAsTheyCome)
{
    NewFile file;
    Block dib(PackedDib(Bilevel(3, 0)));
    for (int page = 0; page < 3; ++page)
        EXPECT_EQ(SaveDIBInDialogicTiffFile(file.Path(), dib.Get(), 206), 1);
    const auto pages = PagesOf(ReadFileBytes(file.Path()));
    ASSERT_EQ(pages.size(), 3u);
    for (size_t page = 0; page < 3; ++page)
        EXPECT_EQ(Tags(pages[page], {297}), "297 3 2: " + std::to_string(page) + " 0; ");
    HGLOBAL tiff = OpenTiffFile(file.Path(), T_READ);
    EXPECT_EQ(DecodePage(tiff, 2).Joined(), Hex("A5A5A5"));
    CloseTiffFile(tiff);
}

TEST(FaxBoards, CiscoFilesAreRewrittenOrGone)
{
    NoLeaks leaks;
    const Bytes pages = Pages(3);
    TempFile file(pages);
    EXPECT_EQ(ConvertTiffToCiscoFormat(file.Path()), 1);
    ExpectPages(file.Path(), pages, {0, 1, 2});
    const Bytes converted = ReadFileBytes(file.Path());
    EXPECT_EQ(Refusal(SaveTiffForCiscoFormat(file.Path(), NewDib().Get(), 201, 0, 3)), 29u);
    EXPECT_EQ(SaveTiffForCiscoFormat("", NewDib().Get(), 201, 0, 1), 0);
    EXPECT_EQ(Refusal(ConvertTiffToCiscoFormat(nullptr)), 29u);
    EXPECT_EQ(ReadFileBytes(file.Path()), converted);
    EXPECT_EQ(SaveTiffForCiscoFormat(file.Path(), NewDib().Get(), 201, 0, 1), 1);
    ExpectPages(file.Path(), pages, {0, 1, 2, NEW});

    // Deliberate: when a page cannot be copied, the file is deleted.
    TempFile bad(TiffBuilder().Add(Page(0)).Add(TiffPage::Picture(8, 1, 1, 1).Long(273, {8, 8})).Build());
    EXPECT_EQ(Refusal(ConvertTiffToCiscoFormat(bad.Path())), 10u);
    EXPECT_FALSE(Exists(bad.Path()));

    TempFile text(Hex("6869"));
    EXPECT_EQ(ConvertTiffToCiscoFormat(text.Path()), 0);
    EXPECT_TRUE(Exists(text.Path()));
}
