// A line is kept as its bytes, their width so far, and the place behind its last break character with the
// width there. So each byte is measured once, however often lines are wrapped.
#include "compose/text_layout.h"

#include "core/global_block.h"
#include "raster/dib.h"
#include "tiff/files.h"

#include <algorithm>
#include <cstring>

namespace tiff {

namespace {

constexpr uint32_t BLOCK_BYTES = 16384;
constexpr uint32_t FIRST_ROOM = 4096;

// What no page can have; sums of a few do not overflow.
constexpr uint64_t TOO_MANY = uint64_t{1} << 40;

uint64_t Pixels(const TiffTextPageSettings& settings, uint32_t length, uint32_t dotsPerInch)
{
    const uint64_t hundredths =
        settings.flags & TIFF_TEXT_INCHES ? uint64_t{length} : uint64_t{length} * 1000 / 254;
    if (dotsPerInch != 0 && hundredths > UINT64_MAX / dotsPerInch)
        return TOO_MANY;
    return std::min(hundredths * dotsPerInch / 100, TOO_MANY);
}

int32_t Narrowed(uint64_t pixels)
{
    return static_cast<int32_t>(std::min<uint64_t>(pixels, INT32_MAX));
}

struct Layout {
    const TextGeometry& page;
    const TextDevice& device;
    uint32_t pageLimit;
    uint32_t& pages;
    int64_t x, y; // of the line
    GlobalBlock line;
    uint32_t room;
    uint32_t length = 0, breakLength = 0; // up to and with the last break character; 0 without one
    int64_t width = 0, breakWidth = 0;
    uint32_t tab = 0;
    bool afterReturn = false;
};

bool IsBreak(char byte)
{
    return byte == ' ' || byte == '!' || byte == ',' || byte == '-' || byte == '.' || byte == ':' ||
           byte == ';' || byte == '?';
}

// Draws the line's first bytes.
Status Draw(const Layout& layout, uint32_t length)
{
    if (length == 0)
        return TIFF_TEXT_DONE;
    const Locked<char> text(layout.line.Get());
    if (!text)
        return TIFF_TEXT_NO_PAGE;
    layout.device.draw(layout.device.record, static_cast<int32_t>(layout.x), static_cast<int32_t>(layout.y),
                       {text.Get(), length});
    return TIFF_TEXT_DONE;
}

void ClearLine(Layout& layout)
{
    layout.length = layout.breakLength = 0;
    layout.width = layout.breakWidth = 0;
}

Status EndPage(Layout& layout)
{
    if (const Status status = layout.device.deliver(layout.device.record); status != TIFF_TEXT_DONE)
        return status;
    // Deliberate: the limit also counts when no text follows, and otherwise a blank page does.
    if (++layout.pages == layout.pageLimit)
        return TIFF_TEXT_PAGE_LIMIT;
    layout.x = layout.page.left;
    layout.y = layout.page.top;
    layout.tab = 0;
    return layout.device.begin(layout.device.record);
}

Status NextLine(Layout& layout)
{
    layout.x = layout.page.left;
    layout.y += int64_t{layout.device.lineHeight} + layout.page.spacing;
    layout.tab = 0;
    return layout.y >= layout.page.bottom ? EndPage(layout) : Status{TIFF_TEXT_DONE};
}

// Draws the line up to its last break character; the rest begins the next line.
Status Wrap(Layout& layout, char* text)
{
    if (const Status status = Draw(layout, layout.breakLength); status != TIFF_TEXT_DONE)
        return status;
    layout.length -= layout.breakLength;
    layout.width -= layout.breakWidth;
    std::memmove(text, text + layout.breakLength, layout.length);
    layout.breakLength = 0;
    layout.breakWidth = 0;
    return NextLine(layout);
}

bool MakeRoom(Layout& layout, size_t bytes)
{
    if (layout.room - layout.length >= bytes)
        return true;
    if (layout.room > UINT32_MAX / 2 || !layout.line.Resize(uint64_t{layout.room} * 2))
        return false;
    layout.room *= 2;
    return true;
}

// Adds text of at most MOST_MEASURED bytes to the line. A line without a break character goes on behind the
// margin until one comes; what lies far behind the page is not kept.
Status AddText(Layout& layout, std::span<const char> added)
{
    static_assert(FIRST_ROOM >= MOST_MEASURED);
    if (!MakeRoom(layout, added.size()))
        return TIFF_TEXT_NO_PAGE;
    const Locked<char> text(layout.line.Get());
    if (!text)
        return TIFF_TEXT_NO_PAGE;
    std::array<int32_t, MOST_MEASURED> widths;
    layout.device.measure(layout.device.record, added, widths.data());
    const int64_t kept = 2 * int64_t{std::max(layout.device.width, layout.page.width)};
    for (size_t index = 0; index < added.size(); ++index) {
        if (layout.width < kept) {
            text[layout.length++] = added[index];
            layout.width += widths[index];
        }
        if (IsBreak(added[index])) {
            layout.breakLength = layout.length;
            layout.breakWidth = layout.width;
        }
        if (layout.x + layout.width >= layout.page.right && layout.breakLength != 0)
            if (const Status status = Wrap(layout, text.Get()); status != TIFF_TEXT_DONE)
                return status;
    }
    return TIFF_TEXT_DONE;
}

// A stop behind the margin is as good as a line end.
Status MoveToTab(Layout& layout)
{
    if (const Status status = Draw(layout, layout.length); status != TIFF_TEXT_DONE)
        return status;
    layout.x += layout.width;
    if (layout.tab < layout.page.tabStops.size())
        layout.x = std::max<int64_t>(layout.x, layout.page.tabStops[layout.tab++]);
    ClearLine(layout);
    return layout.x >= layout.page.right ? NextLine(layout) : Status{TIFF_TEXT_DONE};
}

Status EndLine(Layout& layout)
{
    if (const Status status = Draw(layout, layout.length); status != TIFF_TEXT_DONE)
        return status;
    ClearLine(layout);
    layout.afterReturn = true;
    return NextLine(layout);
}

Status LayBlock(Layout& layout, std::span<const char> bytes)
{
    const auto isText = [](char byte) { return static_cast<uint8_t>(byte) >= ' '; };
    Status status = TIFF_TEXT_DONE;
    while (!bytes.empty() && status == TIFF_TEXT_DONE) {
        // Only where the first page begins: its first byte ends it.
        const bool startsBelow = layout.y >= layout.page.bottom;
        size_t used = 1;
        // Deliberate: the byte behind a CR is skipped without a look at it.
        if (layout.afterReturn) {
            layout.afterReturn = false;
        } else if (isText(bytes[0])) {
            const std::span piece = bytes.first(std::min(bytes.size(), startsBelow ? 1 : MOST_MEASURED));
            used = static_cast<size_t>(std::find_if_not(piece.begin(), piece.end(), isText) - piece.begin());
            status = AddText(layout, bytes.first(used));
        } else if (bytes[0] == '\t') {
            status = MoveToTab(layout);
        } else if (bytes[0] == '\r') {
            status = EndLine(layout);
        }
        if (status == TIFF_TEXT_DONE && layout.y >= layout.page.bottom)
            status = EndPage(layout);
        bytes = bytes.subspan(used);
    }
    return status;
}

Layout BeginLayout(const TextGeometry& geometry, const TextDevice& device, uint32_t pageLimit,
                   uint32_t& pages)
{
    pages = 0;
    return {geometry,  device, pageLimit, pages, geometry.left, geometry.top, GlobalBlock(FIRST_ROOM),
            FIRST_ROOM};
}

Status EndText(const Layout& layout)
{
    Status status = Draw(layout, layout.length);
    if (status == TIFF_TEXT_DONE)
        status = layout.device.deliver(layout.device.record);
    layout.pages += status == TIFF_TEXT_DONE;
    return status;
}

} // namespace

bool PlanGeometry(const TiffTextPageSettings& settings, TextGeometry& geometry)
{
    const uint32_t across = settings.horizontalDpi, down = settings.verticalDpi;
    const uint64_t width = Pixels(settings, settings.pageWidth, across);
    const uint64_t height = Pixels(settings, settings.pageHeight, down);
    const uint64_t left = Pixels(settings, settings.leftMargin, across);
    const uint64_t top = Pixels(settings, settings.topMargin, down);
    if (2 * left >= width || 2 * top >= height || width > INT32_MAX || height > INT32_MAX ||
        DibStride(static_cast<uint32_t>(width), 1) * height > INT32_MAX)
        return false;
    geometry.width = Narrowed(width);
    geometry.height = Narrowed(height);
    geometry.left = Narrowed(left);
    geometry.top = Narrowed(top);
    geometry.right = geometry.width - geometry.left;
    geometry.bottom = geometry.height - geometry.top;
    geometry.spacing = Narrowed(Pixels(settings, settings.lineSpacing, down));
    for (size_t stop = 0; stop < geometry.tabStops.size(); ++stop)
        geometry.tabStops[stop] = Narrowed(left + Pixels(settings, settings.tabStops[stop], across));
    return true;
}

Status LayText(HANDLE file, const TextGeometry& geometry, const TextDevice& device, uint32_t startY,
               uint32_t pageLimit, uint32_t& pages)
{
    Layout layout = BeginLayout(geometry, device, std::min<uint32_t>(pageLimit, TIFF_MAX_PAGES), pages);
    if (startY != 0)
        layout.y = startY;
    if (!layout.line)
        return TIFF_TEXT_NO_PAGE;
    std::array<char, BLOCK_BYTES> block;
    for (;;) {
        DWORD bytes = 0;
        if (!ReadFile(file, block.data(), BLOCK_BYTES, &bytes, nullptr))
            return TIFF_TEXT_NO_FILE;
        if (bytes == 0)
            break;
        if (const Status status = LayBlock(layout, {block.data(), bytes}); status != TIFF_TEXT_DONE)
            return status;
    }
    return EndText(layout);
}

Status LayTextOnPage(std::span<const char> text, const TextGeometry& geometry, const TextDevice& device)
{
    uint32_t pages;
    Layout layout = BeginLayout(geometry, device, 1, pages);
    if (!layout.line)
        return TIFF_TEXT_NO_PAGE;
    const Status status = LayBlock(layout, text);
    return status == TIFF_TEXT_DONE ? EndText(layout) : status;
}

} // namespace tiff
