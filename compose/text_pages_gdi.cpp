// The device of text pages: GDI measures and draws, and bitmaps or DIBs made of them are handed over.
#include "compose/text_pages_gdi.h"

#include "compose/text_layout.h"
#include "core/desktop.h"
#include "core/global_block.h"
#include "core/handles.h"
#include "raster/convert_gdi.h"
#include "raster/dib.h"
#include "raster/gdi_guards.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <optional>

namespace tiff {

// Applications are compiled against it.
static_assert(offsetof(TiffTextPageSettings, pageWidth) == 256);
static_assert(offsetof(TiffTextPageSettings, faceName) == 272);
static_assert(offsetof(TiffTextPageSettings, fontSize) == 400);
static_assert(offsetof(TiffTextPageSettings, tabStops) == 416);
static_assert(offsetof(TiffTextPageSettings, flags) == 480);
static_assert(offsetof(TiffTextPageSettings, font) == 488 && sizeof(TiffTextPageSettings) == 496);

namespace {

constexpr uint64_t TALLEST_FONT = INT16_MAX; // pixels
constexpr uint32_t POINTS_PER_INCH = 72;
constexpr uint32_t BYTE_VALUES = 256;

struct TextRequest {
    const TiffTextPageSettings* settings;
    uint32_t pageLimit;
    HANDLE* pages;
    uint32_t kind;
    HBITMAP bitmap;
    uint32_t startY;
};

// The members end in reverse order: what is selected leaves the device context before its owners end.
struct Device {
    const TextRequest& request;
    const TextGeometry& geometry;
    GdiObject<HFONT> font;
    GdiObject<HBITMAP> own; // a page made here and not delivered
    HBITMAP bitmap;         // the page: that one, or the caller's
    MemoryDc dc;
    std::optional<Selected> selectedFont, selectedPage;
    int32_t width, height; // of the page
    uint32_t delivered = 0;
    bool lost = false; // a text that GDI did not measure or draw
    LetterWidths letters;
};

// In these code pages a byte is a character, and characters do not depend on their neighbours.
bool IsPlainCodePage(HDC dc)
{
    CHARSETINFO charset;
    const auto number = static_cast<DWORD_PTR>(GetTextCharset(dc));
    if (!TranslateCharsetInfo(reinterpret_cast<DWORD*>(number), &charset, TCI_SRCCHARSET))
        return false;
    constexpr UINT HEBREW = 1255, ARABIC = 1256;
    return charset.ciACP >= 1250 && charset.ciACP <= 1257 && charset.ciACP != HEBREW &&
           charset.ciACP != ARABIC;
}

void MeasureText(void* record, std::span<const char> text, int32_t* widths)
{
    auto& device = *static_cast<Device*>(record);
    device.lost |= !MeasureLetters(device.letters, text, widths);
}

void DrawLine(void* record, int32_t x, int32_t y, std::span<const char> text)
{
    auto& device = *static_cast<Device*>(record);
    device.lost |= !TextOutA(device.dc.Get(), x, y, text.data(), static_cast<int>(text.size()));
}

Status SelectPage(Device& device)
{
    BITMAP described;
    if (!device.bitmap || !GetObjectA(device.bitmap, sizeof(described), &described))
        return TIFF_TEXT_NO_PAGE;
    device.width = described.bmWidth;
    device.height = described.bmHeight;
    device.selectedPage.emplace(device.dc.Get(), device.bitmap);
    return *device.selectedPage ? TIFF_TEXT_DONE : TIFF_TEXT_NO_PAGE;
}

// A new bitmap, or the old one when it was not handed over. The caller's is cleared too: a form is on the
// first page only.
Status BeginPage(void* record)
{
    auto& device = *static_cast<Device*>(record);
    if (!device.bitmap) {
        device.own.Adopt(CreateBitmap(device.geometry.width, device.geometry.height, 1, 1, nullptr));
        device.bitmap = device.own.Get();
    }
    if (const Status status = SelectPage(device); status != TIFF_TEXT_DONE)
        return status;
    const bool cleared = PatBlt(device.dc.Get(), 0, 0, device.width, device.height, WHITENESS);
    return cleared ? TIFF_TEXT_DONE : TIFF_TEXT_NO_PAGE;
}

HGLOBAL PageToDib(const Device& device)
{
    GlobalBlock dib;
    dib.Adopt(BitmapToDib(device.bitmap, nullptr));
    const Locked<BITMAPINFOHEADER> header(dib.Get());
    if (!header)
        return nullptr;
    header->biXPelsPerMeter = ToDotsPerMetre(device.request.settings->horizontalDpi);
    header->biYPelsPerMeter = ToDotsPerMetre(device.request.settings->verticalDpi);
    return dib.Release();
}

Status DeliverPage(void* record)
{
    auto& device = *static_cast<Device*>(record);
    device.selectedPage.reset();
    if (device.lost)
        return TIFF_TEXT_NO_PAGE;
    HANDLE page = device.bitmap;
    if (device.request.kind == TIFF_TEXT_DIB)
        page = PageToDib(device);
    if (!page)
        return TIFF_TEXT_NO_PAGE;
    if (device.request.kind == TIFF_TEXT_BITMAP) {
        device.own.Release();
        device.bitmap = nullptr;
    }
    device.request.pages[device.delivered++] = page;
    return TIFF_TEXT_DONE;
}

// Leaves the device context's own font when the settings name none.
Status SelectFont(Device& device)
{
    const TiffTextPageSettings& settings = *device.request.settings;
    if (!settings.font && settings.faceName[0] == 0)
        return TIFF_TEXT_DONE;
    int32_t height = 0;
    if (!FontHeight(settings.fontSize, settings.verticalDpi, height))
        return TIFF_TEXT_NO_PAGE;
    LOGFONTA described = FontOfFace(settings.faceName, sizeof(settings.faceName), height);
    described.lfWeight = settings.flags & TIFF_TEXT_BOLD ? FW_BOLD : FW_NORMAL;
    described.lfItalic = (settings.flags & TIFF_TEXT_ITALIC) != 0;
    described.lfCharSet = DEFAULT_CHARSET;
    if (settings.font) {
        described = *settings.font;
        described.lfHeight = height;
    }
    device.font.Adopt(CreateFontIndirectA(&described));
    device.selectedFont.emplace(device.dc.Get(), device.font.Get());
    return *device.selectedFont ? TIFF_TEXT_DONE : TIFF_TEXT_NO_PAGE;
}

Status PrepareDevice(Device& device)
{
    const HDC dc = device.dc.Get();
    if (!dc)
        return TIFF_TEXT_NO_PAGE;
    Status status = device.bitmap ? SelectPage(device) : BeginPage(&device);
    if (status == TIFF_TEXT_DONE)
        status = SelectFont(device);
    if (status != TIFF_TEXT_DONE)
        return status;
    SetTextColor(dc, RGB(0, 0, 0));
    SetBkMode(dc, TRANSPARENT);
    ReadLetterWidths(dc, device.letters);
    return TIFF_TEXT_DONE;
}

Status DrawFile(const TextRequest& request, HANDLE file, uint32_t& pages)
{
    TextGeometry geometry;
    if (!PlanGeometry(*request.settings, geometry))
        return TIFF_TEXT_NO_PAGE;
    Device device{.request = request, .geometry = geometry, .bitmap = request.bitmap};
    if (const Status status = PrepareDevice(device); status != TIFF_TEXT_DONE)
        return status;
    const int32_t lineHeight = LineHeightOf(device.dc.Get());
    if (lineHeight == 0)
        return TIFF_TEXT_NO_PAGE;
    const TextDevice routines = {MeasureText, DrawLine,     DeliverPage, BeginPage,
                                 &device,     device.width, lineHeight};
    return LayText(file, geometry, routines, request.startY, request.pageLimit, pages);
}

Status DrawPages(const TextRequest& request, uint32_t& pages)
{
    if (!request.settings || !request.pages || request.pageLimit == 0 ||
        (request.kind != TIFF_TEXT_BITMAP && request.kind != TIFF_TEXT_DIB))
        return TIFF_TEXT_ARGUMENTS;
    const BusyCursor busy;
    char path[sizeof(request.settings->path) + 1] = {};
    std::memcpy(path, request.settings->path, sizeof(request.settings->path));
    const FileHandle file(path, GENERIC_READ, OPEN_EXISTING);
    return file ? DrawFile(request, file.Get(), pages) : Status{TIFF_TEXT_NO_FILE};
}

uint32_t FinishPages(const TextRequest& request, uint32_t* error)
{
    uint32_t pages = 0;
    const Status status = DrawPages(request, pages);
    if (error)
        *error = status;
    return pages;
}

} // namespace

bool FontHeight(uint32_t points, uint32_t dotsPerInch, int32_t& height)
{
    const uint64_t pixels = (uint64_t{points} * dotsPerInch + POINTS_PER_INCH / 2) / POINTS_PER_INCH;
    height = -static_cast<int32_t>(std::min(pixels, TALLEST_FONT));
    return pixels <= TALLEST_FONT;
}

LOGFONTA FontOfFace(const char* face, size_t faceBytes, int32_t height)
{
    LOGFONTA font{};
    font.lfHeight = height;
    std::memcpy(font.lfFaceName, face, std::min(strnlen(face, faceBytes), sizeof(font.lfFaceName) - 1));
    return font;
}

void ReadLetterWidths(HDC dc, LetterWidths& widths)
{
    widths.dc = dc;
    widths.inTable = IsPlainCodePage(dc) && GetCharWidth32A(dc, 0, BYTE_VALUES - 1, widths.table.data());
}

bool MeasureLetters(const LetterWidths& letters, std::span<const char> text, int32_t* widths)
{
    if (letters.inTable) {
        for (size_t index = 0; index < text.size(); ++index)
            widths[index] = letters.table[static_cast<uint8_t>(text[index])];
        return true;
    }
    std::array<INT, MOST_MEASURED> ends{};
    SIZE size;
    const bool measured = GetTextExtentExPointA(letters.dc, text.data(), static_cast<int>(text.size()), 0,
                                                nullptr, ends.data(), &size);
    for (size_t index = 0; index < text.size(); ++index)
        widths[index] = ends[index] - (index ? ends[index - 1] : 0);
    return measured;
}

int32_t LineHeightOf(HDC dc)
{
    SIZE letter{};
    return GetTextExtentPoint32A(dc, "M", 1, &letter) ? std::max<int32_t>(letter.cy, 1) : 0;
}

} // namespace tiff

using namespace tiff;

extern "C" uint32_t CreateFaxPageFromASCII(const TiffTextPageSettings* settings, uint32_t pageLimit,
                                           HANDLE* pages, uint32_t kind, HBITMAP bitmap,
                                           uint32_t* error) noexcept
{
    return FinishPages({settings, pageLimit, pages, kind, bitmap, 0}, error);
}

extern "C" uint32_t CreateMultiPageFromASCII(const TiffTextPageSettings* settings, uint32_t pageLimit,
                                             HANDLE* pages, uint32_t kind, HBITMAP bitmap, uint32_t startY,
                                             uint32_t* error) noexcept
{
    return FinishPages({settings, pageLimit, pages, kind, bitmap, startY}, error);
}

extern "C" uint32_t CreateBMPFaxPageFromASCII(const TiffTextPageSettings* settings, uint32_t pageLimit,
                                              HANDLE* pages, uint32_t* error) noexcept
{
    return CreateFaxPageFromASCII(settings, pageLimit, pages, TIFF_TEXT_BITMAP, nullptr, error);
}

extern "C" uint32_t CreateDIBFaxPageFromASCII(const TiffTextPageSettings* settings, uint32_t pageLimit,
                                              HANDLE* pages, uint32_t* error) noexcept
{
    return CreateFaxPageFromASCII(settings, pageLimit, pages, TIFF_TEXT_DIB, nullptr, error);
}
