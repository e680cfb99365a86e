// The arrangement of text, over a device whose letters are 10 pixels wide and whose lines are 20 high.
#include "compose/text_layout.h"
#include "core/handles.h"
#include "support/bytes.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace tiff;

namespace {

// What was drawn: "x,y text", "/" at the end of a page, "+" at the beginning of another.
struct Paper {
    std::string drawn;
    uint64_t measured = 0;
    uint32_t pagesBeforeFailure = UINT32_MAX;
    int32_t width = 300;
};

void Measure(void* record, std::span<const char> text, int32_t* widths)
{
    static_cast<Paper*>(record)->measured += text.size();
    std::fill_n(widths, text.size(), 10);
}

void Write(void* record, int32_t x, int32_t y, std::span<const char> text)
{
    std::string& drawn = static_cast<Paper*>(record)->drawn;
    drawn +=
        '[' + std::to_string(x) + ',' + std::to_string(y) + ' ' + std::string(text.begin(), text.end()) + ']';
}

Status Deliver(void* record)
{
    auto* paper = static_cast<Paper*>(record);
    if (paper->pagesBeforeFailure-- == 0)
        return TIFF_TEXT_NO_PAGE;
    paper->drawn += '/';
    return TIFF_TEXT_DONE;
}

Status Begin(void* record)
{
    static_cast<Paper*>(record)->drawn += '+';
    return TIFF_TEXT_DONE;
}

// Pixels are hundredths of an inch: 10 letters and 3 lines between the margins.
TiffTextPageSettings SmallPage()
{
    TiffTextPageSettings settings{};
    settings.flags = TIFF_TEXT_INCHES;
    settings.horizontalDpi = settings.verticalDpi = 100;
    settings.pageWidth = 5 + 100 + 5;
    settings.pageHeight = 7 + 60 + 7;
    settings.leftMargin = 5;
    settings.topMargin = 7;
    settings.tabStops[0] = 30;
    settings.tabStops[1] = 20;
    settings.tabStops[2] = 60;
    settings.tabStops[3] = 200;
    return settings;
}

struct Result {
    Status status;
    uint32_t pages;
};

Result Lay(Paper& paper, std::string_view text, uint32_t limit = 9, uint32_t startY = 0,
           const TiffTextPageSettings& settings = SmallPage())
{
    const TempFile file(Bytes(text.begin(), text.end()));
    const FileHandle opened(file.Path(), GENERIC_READ, OPEN_EXISTING);
    TextGeometry page;
    EXPECT_TRUE(PlanGeometry(settings, page));
    const TextDevice device = {Measure, Write, Deliver, Begin, &paper, paper.width, 20};
    Result result{};
    result.status = LayText(opened.Get(), page, device, startY, limit, result.pages);
    return result;
}

} // namespace

TEST(TextLayout, LinesTabsAndPages)
{
    static constexpr struct {
        const char* row;
        std::string_view text;
        const char* drawn;
    } rows[] = {
        {"nothing", "", "/"},
        {"lines", "one\r\ntwo\r\n\r\n", "[5,7 one][5,27 two]/+/"},
        {"any byte behind a CR is skipped", "one\rXtwo\r\r\rY",
         "[5,7 one][5,27 two]/+"
         "/"},
        {"other control bytes are left out",
         "a\nb\x0C\x1B"
         "c",
         "[5,7 abc]/"},
        {"behind the last break", "aaa bbb ccc ddd", "[5,7 aaa bbb ][5,27 ccc ddd]/"},
        {"the break character at the margin", "aaa bbbbb.ccc", "[5,7 aaa bbbbb.][5,27 ccc]/"},
        {"every break character", "aaa!bbbbbbbb,ccccccc-ddddddd.eeeeeee:fffffff;ggggggg?hhhhh",
         "[5,7 aaa!][5,27 bbbbbbbb,][5,47 ccccccc-]/+[5,7 ddddddd.][5,27 eeeeeee:][5,47 fffffff;]/+"
         "[5,7 ggggggg?][5,27 hhhhh]/"},
        {"a long word stays whole", "a 01234567890123 b", "[5,7 a ][5,27 01234567890123 ][5,47 b]/"},
        {"a long word ends with its line", "012345678901234\r\nb", "[5,7 012345678901234][5,27 b]/"},
        {"tab stops, and one that is passed", "a\tb\tc\td", "[5,7 a][35,7 b][45,7 c][65,7 d]/"},
        {"a stop behind the margin, and a new count", "\t\t\t\ta\tb", "[5,27 a][35,27 b]/"},
        {"a wrap begins the count anew", "\t\taaa bbbb\tc", "[35,7 aaa ][5,27 bbbb][45,27 c]/"},
        {"many tabs", "\t\t\t\r\n\t\t\t\r\n\t\t\ta", "[65,47 a]/"},
    };
    for (const auto& [row, text, drawn] : rows) {
        SCOPED_TRACE(row);
        Paper paper;
        EXPECT_EQ(Lay(paper, text).status, Status{TIFF_TEXT_DONE});
        EXPECT_EQ(paper.drawn, drawn);
    }
}

TEST(TextLayout, TheLimitTheStartAndTheSpacing)
{
    auto spaced = SmallPage(), huge = SmallPage();
    spaced.lineSpacing = 5;
    huge.lineSpacing = UINT32_MAX;
    static const struct {
        const char* row;
        std::string_view text;
        uint32_t limit, startY;
        TiffTextPageSettings settings;
        Status status;
        uint32_t pages;
        const char* drawn;
    } rows[] = {
        {"a full page reaches the limit", "a\r\nb\r\nc\r\n", 1, 0, SmallPage(), 2, 1,
         "[5,7 a][5,27 b][5,47 c]/"},
        {"one line less does not", "a\r\nb\r\nc", 1, 0, SmallPage(), 0, 1, "[5,7 a][5,27 b][5,47 c]/"},
        {"text is left", "a\r\nb\r\nc\r\nd", 1, 0, SmallPage(), 2, 1, "[5,7 a][5,27 b][5,47 c]/"},
        {"from the middle", "a\r\nb\r\n", 9, 30, SmallPage(), 0, 2, "[5,30 a][5,50 b]/+/"},
        {"from the margin on, its first byte ends the page", "\r\na", 9, 67, SmallPage(), 0, 2, "/+[5,7 a]/"},
        {"from nowhere", "a", 9, UINT32_MAX, SmallPage(), 0, 2, "/+[5,7 a]/"},
        {"from nowhere, without text", "", 9, UINT32_MAX, SmallPage(), 0, 1, "/"},
        {"spacing", "a\r\nb\r\nc\r\nd", 9, 0, spaced, 0, 2, "[5,7 a][5,32 b][5,57 c]/+[5,7 d]/"},
        {"a page for each line", "a\r\nb", 9, 0, huge, 0, 2, "[5,7 a]/+[5,7 b]/"},
    };
    for (const auto& [row, text, limit, startY, settings, status, pages, drawn] : rows) {
        SCOPED_TRACE(row);
        Paper paper;
        const Result result = Lay(paper, text, limit, startY, settings);
        EXPECT_EQ(result.status, status);
        EXPECT_EQ(result.pages, pages);
        EXPECT_EQ(paper.drawn, drawn);
    }
    Paper paper;
    EXPECT_EQ(Lay(paper, std::string(400'000, '\r'), UINT32_MAX, 0, huge).pages, 100'000u);
    Paper failing{.pagesBeforeFailure = 1};
    const Result result = Lay(failing, "a\r\nb\r\nc\r\nd\r\ne\r\nf\r\ng");
    EXPECT_EQ(result.status, Status{TIFF_TEXT_NO_PAGE});
    EXPECT_EQ(result.pages, 1u);
}

TEST(TextLayout, LongTextsAreMeasuredOnce)
{
    std::string words;
    while (words.size() < 1'000'000)
        words += "word number ";
    Paper paper;
    EXPECT_EQ(Lay(paper, words, 100'000).status, Status{TIFF_TEXT_DONE});
    EXPECT_EQ(paper.measured, words.size());
    // Of a word only what may be seen is drawn; the break behind it still ends its line.
    Paper narrow{.width = 1};
    Lay(narrow, "aaa bbb ccc ddd");
    EXPECT_EQ(narrow.drawn, "[5,7 aaa bbb ][5,27 ccc ddd]/");
    Paper one;
    EXPECT_EQ(Lay(one, std::string(1'000'000, 'x') + " y").status, Status{TIFF_TEXT_DONE});
    EXPECT_EQ(one.drawn, "[5,7 " + std::string(60, 'x') + "][5,27 y]/");
}

TEST(TextLayout, LengthsBecomePixels)
{
    TiffTextPageSettings fax{};
    fax.pageWidth = 210;
    fax.pageHeight = 297;
    fax.leftMargin = 20;
    fax.topMargin = 10;
    fax.lineSpacing = 1;
    fax.tabStops[0] = 50;
    fax.tabStops[1] = UINT32_MAX;
    fax.horizontalDpi = 204;
    fax.verticalDpi = 196;
    TextGeometry page;
    ASSERT_TRUE(PlanGeometry(fax, page));
    const std::vector<int32_t> pixels = {page.width,   page.height,      page.left,
                                         page.top,     page.right,       page.bottom,
                                         page.spacing, page.tabStops[0], page.tabStops[1]};
    EXPECT_EQ(pixels, (std::vector<int32_t>{1685, 2291, 159, 76, 1526, 2215, 5, 558, INT32_MAX}));

    using Page = TiffTextPageSettings;
    static constexpr std::pair<uint32_t Page::*, uint32_t> impossible[] = {
        {&Page::pageWidth, 0},           {&Page::pageWidth, UINT32_MAX}, {&Page::pageHeight, UINT32_MAX},
        {&Page::horizontalDpi, 0},       {&Page::verticalDpi, 0},        {&Page::leftMargin, 106},
        {&Page::leftMargin, UINT32_MAX}, {&Page::topMargin, 149},        {&Page::horizontalDpi, UINT32_MAX},
        {&Page::verticalDpi, 100000000}};
    for (const auto& [member, value] : impossible) {
        SCOPED_TRACE(value);
        TiffTextPageSettings settings = fax;
        settings.*member = value;
        EXPECT_FALSE(PlanGeometry(settings, page));
    }
}
