// Pages of text beside the same text drawn by GDI without the library.
#include "gdi/hand.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

// A text file, and the settings of an A4 page at 204 by 196 dots per inch in 12 points.
struct TextFile {
    TempFile file;
    TiffTextPageSettings settings{};

    explicit TextFile(std::string_view text) : file(Bytes(text.begin(), text.end()))
    {
        std::strcpy(settings.path, file.Path());
        std::strcpy(settings.faceName, FACE);
        settings.pageWidth = 210;
        settings.pageHeight = 297;
        settings.leftMargin = 20;
        settings.topMargin = 25;
        settings.fontSize = 12;
        settings.horizontalDpi = 204;
        settings.verticalDpi = 196;
    }
};

constexpr int32_t WIDTH = 1685, HEIGHT = 2291, LEFT = 78 * 204 / 100, TOP = 98 * 196 / 100;
constexpr int32_t TWELVE_POINTS = -33; // 12 * 196 / 72, rounded

struct Made {
    uint32_t count = 0, error = 99;
    std::vector<HANDLE> handles = std::vector<HANDLE>(9);
    std::vector<Picture> Pictures(uint32_t kind) const
    {
        std::vector<Picture> pictures;
        for (uint32_t page = 0; page < count; ++page)
            pictures.push_back(kind == TIFF_TEXT_DIB ? TakeDib(handles[page])
                                                     : TakeBitmap(static_cast<HBITMAP>(handles[page])));
        return pictures;
    }
};

Made Make(const TextFile& text, uint32_t kind, uint32_t limit = 9)
{
    Made made;
    made.count =
        CreateFaxPageFromASCII(&text.settings, limit, made.handles.data(), kind, nullptr, &made.error);
    return made;
}

} // namespace

TEST(TextPages, LookAsDrawnByHand)
{
    const LOGFONTA own = Font(-99, 700, true);
    LOGFONTA ownTaken = own;
    ownTaken.lfHeight = TWELVE_POINTS;
    const LOGFONTA plain = Font(TWELVE_POINTS), bold = Font(TWELVE_POINTS, 700),
                   italic = Font(TWELVE_POINTS, 400, true);
    LOGFONTA arabic = plain; // without a table of widths
    arabic.lfCharSet = ARABIC_CHARSET;
    const struct {
        const char* row;
        const char* face;
        uint32_t flags;
        const LOGFONTA* given;
        const LOGFONTA* font;
    } rows[] = {
        {"face", FACE, 0, nullptr, &plain},
        {"bold", FACE, TIFF_TEXT_BOLD, nullptr, &bold},
        {"italic", FACE, TIFF_TEXT_ITALIC, nullptr, &italic},
        {"a font of its own", "", 0, &own, &ownTaken},
        {"measured by GDI", FACE, 0, &arabic, &arabic},
        {"no font", "", TIFF_TEXT_BOLD, nullptr, nullptr},
    };
    for (const auto& [row, face, flags, given, font] : rows) {
        SCOPED_TRACE(row);
        TextFile text("Dear Sir,\r\n\tyours \xE4nd\tmine\r\nend");
        std::strcpy(text.settings.faceName, face);
        text.settings.flags = flags;
        text.settings.font = given;
        text.settings.tabStops[0] = 30;
        text.settings.lineSpacing = 2;
        Hand hand(WIDTH, HEIGHT, font);
        const int32_t tab = LEFT + 118 * 204 / 100;
        const int32_t down = hand.Size("M").cy + 7 * 196 / 100;
        hand.Text(LEFT, TOP, "Dear Sir,").Text(tab, TOP + down, "yours \xE4nd");
        hand.Text(tab + hand.Size("yours \xE4nd").cx, TOP + down, "mine").Text(LEFT, TOP + 2 * down, "end");
        const Picture expected = hand.Taken();
        EXPECT_GT(std::count(expected.pixels.begin(), expected.pixels.end(), 0u), 400);
        for (const uint32_t kind : {TIFF_TEXT_BITMAP, TIFF_TEXT_DIB}) {
            const Made made = Make(text, kind);
            EXPECT_EQ(made.error, 0u);
            ASSERT_EQ(made.count, 1u);
            EXPECT_TRUE(made.Pictures(kind)[0] == expected);
        }
    }
}

// The lines are found by measuring each from its beginning, byte by byte.
TEST(TextPages, WrapWhereMeasuringSaysSo)
{
    static constexpr char words[] = "Incomprehensibilities, WAVE To. ill-lit: quay? ";
    std::string text;
    while (text.size() < 9000)
        text += words + text.size() % 7;
    const LOGFONTA font = Font(TWELVE_POINTS);
    std::vector<Picture> expected;
    std::string line;
    size_t at = 0;
    while (at < text.size()) {
        Hand hand(WIDTH, HEIGHT, &font);
        for (int32_t y = TOP; y < HEIGHT - TOP && at < text.size(); y += hand.Size("M").cy) {
            while (at < text.size() && LEFT + hand.Size(line).cx < WIDTH - LEFT)
                line += text[at++];
            size_t end = line.size();
            if (LEFT + hand.Size(line).cx >= WIDTH - LEFT)
                end = line.find_last_of(" !,-.:;?") + 1;
            hand.Text(LEFT, y, line.substr(0, end));
            line.erase(0, end);
        }
        expected.push_back(hand.Taken());
    }
    ASSERT_GT(expected.size(), 2u);
    const Made made = Make(TextFile(text), TIFF_TEXT_BITMAP);
    EXPECT_EQ(made.error, 0u);
    EXPECT_TRUE(made.Pictures(TIFF_TEXT_BITMAP) == expected);
}

TEST(TextPages, FailuresHaveTheirNumbers)
{
    TextFile text("a\r\nb"), missing(""), folder(""), wide("a"), tall("a");
    std::strcpy(missing.settings.path, "no such file.txt");
    std::strcpy(folder.settings.path, ".");
    wide.settings.pageWidth = UINT32_MAX;
    tall.settings.fontSize = UINT32_MAX;
    HANDLE page = nullptr;
    uint32_t error = 99;
    EXPECT_EQ(CreateFaxPageFromASCII(nullptr, 1, &page, 10, nullptr, &error), 0u);
    EXPECT_EQ(error, 1u);
    EXPECT_EQ(CreateDIBFaxPageFromASCII(&text.settings, 1, nullptr, nullptr), 0u);
    const struct {
        const TextFile& text;
        uint32_t limit, kind, error, pages;
    } rows[] = {{text, 0, 10, 1, 0},   {text, 1, 12, 1, 0}, {missing, 1, 10, 3, 0},
                {folder, 1, 11, 3, 0}, {wide, 1, 10, 4, 0}, {tall, 1, 11, 4, 0}};
    for (const auto& row : rows) {
        const Made made = Make(row.text, row.kind, row.limit);
        EXPECT_EQ(made.error, row.error);
        EXPECT_EQ(made.count, row.pages);
    }
    text.settings.lineSpacing = 300;
    const Made made = Make(text, TIFF_TEXT_DIB, 1);
    EXPECT_EQ(made.error, 2u);
    EXPECT_EQ(made.Pictures(TIFF_TEXT_DIB).size(), 1u);
}

TEST(TextPages, DrawOnTheCallersBitmap)
{
    TextFile text("a\r\nb");
    text.settings.lineSpacing = 300;
    const LOGFONTA font = Font(TWELVE_POINTS);
    constexpr int32_t LEFT_OF_FORM = 3 * 204 / 100;
    // A form is as large as it is. Only its first page is not blank.
    const Bytes stripes = Repeat(Hex("F0F0F0F0F0F0F0F0"), 2400);
    const HBITMAP form = CreateBitmap(50, 2400, 1, 1, stripes.data());
    text.settings.leftMargin = 1;
    Made made;
    made.count = CreateMultiPageFromASCII(&text.settings, 9, made.handles.data(), TIFF_TEXT_DIB, form, 500,
                                          &made.error);
    EXPECT_EQ(made.error, 0u);
    ASSERT_EQ(made.count, 2u);
    std::array<int32_t, 2> resolution;
    std::memcpy(resolution.data(), &Content(made.handles[0], 32)[24], sizeof(resolution));
    EXPECT_EQ(resolution, (std::array<int32_t, 2>{8031, 7717}));
    const std::vector<Picture> pages = made.Pictures(TIFF_TEXT_DIB);
    EXPECT_TRUE(pages[0] == Hand(50, 2400, &font, stripes.data()).Text(LEFT_OF_FORM, 500, "a").Taken());
    EXPECT_TRUE(pages[1] == Hand(50, 2400, &font).Text(LEFT_OF_FORM, TOP, "b").Taken());
    // Delivered itself, it counts as the first page.
    HANDLE delivered[2] = {};
    EXPECT_EQ(CreateFaxPageFromASCII(&text.settings, 2, delivered, TIFF_TEXT_BITMAP, form, nullptr), 2u);
    EXPECT_EQ(delivered[0], form);
    EXPECT_EQ(Look(static_cast<HBITMAP>(delivered[1])).width, WIDTH);
    DeleteObject(delivered[0]);
    DeleteObject(delivered[1]);
}
