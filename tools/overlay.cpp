/* tifftool overlay and stamp: a text on pages, and header lines as fax machines print them. */
#include "lengths.h"
#include "redraw.h"
#include "system_text.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace tifftool {

namespace {

constexpr char DEFAULT_FACE[] = "Arial";
constexpr char GAP[] = "      ";
constexpr size_t MOST_CHARACTERS = 120;

uint32_t ResolutionOf(LONG dotsPerMetre)
{
    return static_cast<uint32_t>(std::max<LONG>(dotsPerMetre, 0) / 39.37 + 0.5);
}

const BITMAPINFOHEADER& HeaderOf(const DrawnPage& page)
{
    return *reinterpret_cast<const BITMAPINFOHEADER*>(page.dib.bytes);
}

int RunOverlay(Arguments arguments)
{
    const Options options = ParseOptions(arguments, {"--at", "--pages", "--font", "--size", "-o"}, {});
    std::vector<RedrawOrder> orders;
    const std::span all(options.others);
    if (!CheckOptions(overlayCommand, options, 2, SIZE_MAX) ||
        !ReadRedrawOrders(overlayCommand, options, all.first(all.size() - 1), orders)) {
        return WRONG_USAGE;
    }
    uint32_t place[2];
    if (ParseLengths(options.Value("--at", ""), ',', place, 2) != 2) {
        return UsageError(overlayCommand, "--at takes two lengths such as 20,30 or 0.5in,1in");
    }
    const uint32_t points = NumberOption(overlayCommand, options, "--size", MOST_POINTS, "12");
    if (points == 0) {
        return WRONG_USAGE;
    }
    std::string text;
    if (!TakeText(all.back(), text)) {
        return WRONG_USAGE;
    }
    return Redraw(orders, [&](const DrawnPage& page) {
        const BITMAPINFOHEADER& header = HeaderOf(page);
        return DrawString(page.dib.handle, {PixelsOf(place[0], ResolutionOf(header.biXPelsPerMeter)),
                                            PixelsOf(place[1], ResolutionOf(header.biYPelsPerMeter)),
                                            text.c_str(), options.Value("--font", DEFAULT_FACE), points});
    });
}

struct Stamp {
    std::string date, sender;
    const char* face;
    uint32_t points;
    bool over;
};

std::string Now()
{
    SYSTEMTIME now;
    GetLocalTime(&now);
    char text[32];
    snprintf(text, sizeof text, "%04u-%02u-%02u %02u:%02u", now.wYear, now.wMonth, now.wDay, now.wHour,
             now.wMinute);
    return text;
}

// A byte of a row that is all white.
uint8_t WhiteByte(const DibParts& dib)
{
    const auto light = [](const RGBQUAD& colour) { return colour.rgbRed + colour.rgbGreen + colour.rgbBlue; };
    RGBQUAD* const end = dib.colours + dib.colourCount;
    const auto whitest = std::max_element(dib.colours, end, [&](const RGBQUAD& left, const RGBQUAD& right) {
        return light(left) < light(right);
    });
    const auto index = static_cast<uint32_t>(whitest - dib.colours);
    switch (dib.header->biBitCount) {
    case 1:
        return static_cast<uint8_t>(index * 0xFF);
    case 4:
        return static_cast<uint8_t>(index * 0x11);
    case 8:
        return static_cast<uint8_t>(index);
    default:
        return 0xFF;
    }
}

// A copy with white rows at the top, added to the picture's or in their place.
HGLOBAL WithBand(const OwnedBlock& dib, size_t rows, bool over)
{
    const DibParts from = PartsOf(const_cast<uint8_t*>(dib.bytes));
    const auto height = static_cast<size_t>(from.header->biHeight);
    const size_t kept = over ? height - std::min(rows, height) : height;
    const size_t tall = over ? height : height + rows;
    const auto before = static_cast<size_t>(from.rows - dib.bytes);
    const HGLOBAL made = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, before + tall * from.stride);
    void* const target = made ? GlobalLock(made) : nullptr;
    if (!target) {
        return nullptr;
    }
    memcpy(target, dib.bytes, before + kept * from.stride);
    const DibParts to = PartsOf(target);
    to.header->biHeight = static_cast<LONG>(tall);
    to.header->biSizeImage = static_cast<DWORD>(tall * to.stride);
    memset(to.rows + kept * to.stride, WhiteByte(to), (tall - kept) * to.stride);
    GlobalUnlock(made);
    return made;
}

HGLOBAL StampPage(const DrawnPage& page, const Stamp& stamp)
{
    const BITMAPINFOHEADER& header = HeaderOf(page);
    const uint32_t dpi = ResolutionOf(header.biYPelsPerMeter);
    const std::string text = stamp.date + GAP + (stamp.sender.empty() ? "" : stamp.sender + GAP) + "Page " +
                             std::to_string(page.page) + " of " + std::to_string(page.pages);
    // The lines of most fonts are a quarter higher than their letters.
    const OwnedBlock banded(WithBand(page.dib, size_t{stamp.points} * dpi * 3 / 2 / 72 + 1, stamp.over));
    const auto left = static_cast<int32_t>(ResolutionOf(header.biXPelsPerMeter) / 4);
    return banded.handle ? DrawString(banded.handle, {left, 0, text.c_str(), stamp.face, stamp.points})
                         : nullptr;
}

int RunStamp(Arguments arguments)
{
    const Options options =
        ParseOptions(arguments, {"--from", "--date", "--pages", "--font", "--size", "-o"}, {"--over"});
    std::vector<RedrawOrder> orders;
    if (!CheckOptions(stampCommand, options, 1, SIZE_MAX) ||
        !ReadRedrawOrders(stampCommand, options, options.others, orders)) {
        return WRONG_USAGE;
    }
    Stamp stamp = {{},
                   {},
                   options.Value("--font", DEFAULT_FACE),
                   NumberOption(stampCommand, options, "--size", MOST_POINTS, "9"),
                   options.Has("--over")};
    if (stamp.points == 0 || !TakeText(options.Value("--from", ""), stamp.sender) ||
        !TakeText(options.Value("--date", Now().c_str()), stamp.date)) {
        return WRONG_USAGE;
    }
    if (stamp.sender.size() + stamp.date.size() > MOST_CHARACTERS) {
        return UsageError(stampCommand, "--from and --date are longer than a line");
    }
    return Redraw(orders, [&](const DrawnPage& page) { return StampPage(page, stamp); });
}

} // namespace

const Command overlayCommand = {
    .name = "overlay",
    .arguments = "FILE.tif... TEXT --at X,Y [OPTION...]",
    .summary = "Draws a text on pages.",
    .details =
        "  --at X,Y      from the top left corner, in millimetres, or in inches with \"in\" behind them\n"
        "  --pages LIST  such as 1,4-6; without it all pages\n"
        "  --font NAME   without it Arial; --size POINTS, without it 12\n"
        "  -o OUT.tif    leaves FILE.tif as it is; with one file\n"
        "\n"
        "The other pages keep their bytes, and the pages drawn upon their compression and tags. All\n"
        "pages are written, or nothing is.\n",
    .example = "tifftool overlay fax.tif \"Received\" --at 120,10",
    .run = RunOverlay,
};

const Command stampCommand = {
    .name = "stamp",
    .arguments = "FILE.tif... [OPTION...]",
    .summary = "Prints a header line on pages, as fax machines do.",
    .details =
        "  --from SENDER  printed between the date and \"Page 1 of 3\"\n"
        "  --date TEXT    without it the time now, such as 2025-06-30 17:05\n"
        "  --over         covers the first rows; without it the pages become higher\n"
        "  --pages LIST   such as 1,4-6; without it all pages\n"
        "  --font NAME    without it Arial; --size POINTS, without it 9\n"
        "  -o OUT.tif     leaves FILE.tif as it is; with one file\n"
        "\n"
        "The other pages keep their bytes, and the stamped ones their compression and tags. All pages\n"
        "are written, or nothing is. Pages with notes take --over only.\n",
    .example = "tifftool stamp fax.tif --from \"Records office\" --pages 2-last",
    .run = RunStamp,
};

} // namespace tifftool
