// A hundred pages of text from a file, beside the same lines in memory, drawn one after the other.
#include "bench/windows/text_bench.h"
#include "bench/windows/timing.h"
#include "tiff/tiff.h"

#include <cstdio>
#include <cstring>

namespace {

constexpr uint32_t PAGES = 100;
constexpr int32_t WIDTH = 1685, HEIGHT = 2291, LEFT = 124, TOP = 115;

std::vector<std::string> lines;

LOGFONTA Font()
{
    LOGFONTA font{};
    font.lfHeight = -33;
    font.lfWeight = FW_NORMAL;
    font.lfCharSet = DEFAULT_CHARSET;
    std::strcpy(font.lfFaceName, "Arial");
    return font;
}

// A device context with the font, for a scope.
struct Drawing {
    HDC dc = CreateCompatibleDC(nullptr);
    HFONT font;
    HGDIOBJ oldFont;

    Drawing()
    {
        const LOGFONTA described = Font();
        font = CreateFontIndirectA(&described);
        oldFont = SelectObject(dc, font);
        SetBkMode(dc, TRANSPARENT);
    }
    ~Drawing()
    {
        SelectObject(dc, oldFont);
        DeleteObject(font);
        DeleteDC(dc);
    }
    int32_t LineHeight() const
    {
        SIZE size;
        GetTextExtentPoint32A(dc, "M", 1, &size);
        return size.cy;
    }
};

uint32_t LinesOfPage()
{
    const int32_t height = Drawing().LineHeight();
    return static_cast<uint32_t>((HEIGHT - 2 * TOP + height - 1) / height);
}

void DrawByLibrary(const std::string& path)
{
    TiffTextPageSettings settings{};
    std::strcpy(settings.path, path.c_str());
    std::strcpy(settings.faceName, "Arial");
    settings.fontSize = 12;
    settings.pageWidth = 210;
    settings.pageHeight = 297;
    settings.leftMargin = settings.topMargin = 15;
    settings.horizontalDpi = 204;
    settings.verticalDpi = 196;
    std::vector<HANDLE> pages(PAGES + 1);
    uint32_t error = 0;
    if (CreateBMPFaxPageFromASCII(&settings, PAGES + 1, pages.data(), &error) != PAGES || error != 0)
        timing::Fail("drawing text", path);
    for (HANDLE page : pages)
        DeleteObject(page);
}

// All pages are there at the end, as those of the library are.
void DrawByHand(const std::string&)
{
    static const uint32_t linesOfPage = LinesOfPage();
    const Drawing drawing;
    const int32_t height = drawing.LineHeight();
    std::vector<HBITMAP> pages;
    for (size_t first = 0; first < lines.size(); first += linesOfPage) {
        pages.push_back(CreateBitmap(WIDTH, HEIGHT, 1, 1, nullptr));
        const HGDIOBJ oldBitmap = SelectObject(drawing.dc, pages.back());
        PatBlt(drawing.dc, 0, 0, WIDTH, HEIGHT, WHITENESS);
        int32_t y = TOP;
        for (size_t line = first; line < lines.size() && line < first + linesOfPage; ++line, y += height)
            TextOutA(drawing.dc, LEFT, y, lines[line].data(), static_cast<int>(lines[line].size()));
        SelectObject(drawing.dc, oldBitmap);
    }
    for (const HBITMAP page : pages)
        DeleteObject(page);
}

} // namespace

void TimeText(const std::string& folder)
{
    const std::string path = folder + "text.txt";
    FILE* file = std::fopen(path.c_str(), "wb");
    if (!file)
        timing::Fail("writing", path);
    const uint32_t count = PAGES * LinesOfPage() - 1; // one more would begin another page
    for (uint32_t line = 0; line < count; ++line) {
        lines.push_back("Line " + std::to_string(line) +
                        " of a letter, as long as the margins of it let it be.");
        std::fprintf(file, "%s\r\n", lines.back().c_str());
    }
    std::fclose(file);
    timing::TimeJobs({{"tiff", [&] { DrawByLibrary(path); }}, {"TextOut", [&] { DrawByHand(path); }}},
                     "wine text/12 points/" + std::to_string(PAGES));
    DeleteFileA(path.c_str());
}
