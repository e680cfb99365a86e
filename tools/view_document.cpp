#include "view_document.h"

#include "describe.h"
#include "diagnosis.h"

#include <algorithm>
#include <cmath>

namespace tiffview {

namespace {

constexpr double INCHES_PER_METRE = 39.37;

// An open file for a scope.
struct OpenTiff {
    HGLOBAL file;

    explicit OpenTiff(const std::string& path) : file(OpenTiffFile(path.c_str(), T_READ))
    {
    }
    OpenTiff(const OpenTiff&) = delete;
    OpenTiff& operator=(const OpenTiff&) = delete;
    ~OpenTiff()
    {
        CloseTiffFile(file);
    }
};

std::string FileName(const std::string& path)
{
    return path.substr(path.find_last_of("/\\:") + 1);
}

void ReadNotes(Document& document, HGLOBAL file)
{
    const int32_t count = GetTiffNoteCount(file, document.page);
    document.notes.resize(count > 0 ? static_cast<size_t>(count) : 0);
    uint32_t index = 0;
    for (TiffNote& note : document.notes) {
        GetTiffNote(file, document.page, index++, &note, nullptr, 0);
    }
}

std::string WhyNoteFailed()
{
    constexpr uint32_t FOREIGN_TAG = 35;
    return TiffError() == FOREIGN_TAG ? "Another program uses the tag in which the page would keep its notes."
                                      : ErrorText(TiffError());
}

void DescribePage(Document& document)
{
    const OpenTiff opened(document.path);
    document.notes.clear();
    BITMAPINFOHEADER header = {};
    if (!opened.file || !GetTiffImage(opened.file, document.page)) {
        document.fault = ErrorText(TiffError());
        return;
    }
    const uint32_t failure = GetTiffDimensions(opened.file, document.page, &header);
    const tifftool::PageFacts facts = tifftool::ReadPageFacts(opened.file, document.page);
    document.width = facts.width;
    document.height = facts.length;
    document.horizontalDpi = facts.hasResolution ? header.biXPelsPerMeter / INCHES_PER_METRE : 0;
    document.verticalDpi = facts.hasResolution ? header.biYPelsPerMeter / INCHES_PER_METRE : 0;
    document.coding = tifftool::DescribeCompression(facts);
    document.fault = failure ? ErrorText(failure) : "";
    ReadNotes(document, opened.file);
}

std::string Dpi(const Document& document)
{
    if (document.horizontalDpi <= 0 || document.verticalDpi <= 0) {
        return "no resolution";
    }
    const std::string across = std::to_string(std::lround(document.horizontalDpi));
    const std::string down = std::to_string(std::lround(document.verticalDpi));
    return (across == down ? across : across + " x " + down) + " dpi";
}

bool DescribeCals(Document& document)
{
    TiffCalsInformation facts{};
    if (!ReadCALSInfo(document.path.c_str(), &facts)) {
        return false;
    }
    document.format = TIFF_FORMAT_CALS;
    document.pages = 1;
    document.width = facts.pixelsPerLine;
    document.height = facts.lines;
    document.horizontalDpi = document.verticalDpi = facts.dotsPerInch;
    document.coding = "CALS Group 4";
    return true;
}

} // namespace

Document OpenDocument(const std::string& path)
{
    Document document{.path = path};
    if (const std::string why = tifftool::WhyNotTiff(path); !why.empty()) {
        if (!DescribeCals(document)) {
            document.fault = why;
        }
        return document;
    }
    {
        const OpenTiff opened(path);
        document.pages = opened.file ? NumberOfTiffImages(opened.file, TIFF_ALL_PAGES) : 0;
        document.fault = opened.file ? "The file has no pages." : ErrorText(TiffError());
    }
    if (document.pages != 0) {
        document.format = TIFF_FORMAT_TIFF;
        DescribePage(document);
    }
    return document;
}

void GoToPage(Document& document, uint32_t page)
{
    if (document.format == TIFF_FORMAT_TIFF) {
        document.page = std::min(page, document.pages - 1);
        DescribePage(document);
    }
}

std::string Title(const Document& document)
{
    return document.path.empty() ? "tiffview" : FileName(document.path) + " - tiffview";
}

std::string Describe(const Document& document)
{
    if (document.pages == 0) {
        return "";
    }
    std::string words = "Page " + std::to_string(document.page + 1) + " of " + std::to_string(document.pages);
    if (document.width != 0) {
        words += ": " + std::to_string(document.width) + " x " + std::to_string(document.height) + ", " +
                 document.coding + ", " + Dpi(document);
    }
    return words;
}

HGLOBAL LoadPage(const Document& document)
{
    return document.format == TIFF_FORMAT_CALS ? LoadCALSIntoDIB(document.path.c_str(), 0)
                                               : LoadTiffIntoDIB(document.path.c_str(), document.page, 0);
}

void DrawNotes(const Document& document, HDC dc, const RECT& picture)
{
    if (document.notes.empty()) {
        return;
    }
    const OpenTiff opened(document.path);
    if (opened.file && GetTiffImage(opened.file, document.page)) {
        DrawTiffNotes(dc, opened.file, document.page, &picture);
    }
}

std::string EditNote(Document& document, HWND window, size_t index, TiffNote note)
{
    constexpr size_t LEAST_ROOM = 65536;
    const bool isNew = index >= document.notes.size();
    const auto number = static_cast<uint32_t>(index);
    // Line ends may grow in the dialog.
    std::vector<char> text(std::max(LEAST_ROOM, size_t{note.textBytes} * 2 + 1));
    const auto room = static_cast<uint32_t>(text.size());
    if (!isNew) {
        const OpenTiff opened(document.path);
        if (!opened.file || !GetTiffImage(opened.file, document.page) ||
            !GetTiffNote(opened.file, document.page, number, &note, text.data(), room)) {
            return ErrorText(TiffError());
        }
    }
    const int32_t button = EditTiffNote(window, &note, text.data(), room);
    if (button != IDOK) {
        return button == IDCANCEL ? "" : ErrorText(TiffError());
    }
    const char* const path = document.path.c_str();
    const bool saved =
        isNew ? AddTiffNote(path, document.page, &note) : ReplaceTiffNote(path, document.page, number, &note);
    const std::string failure = saved ? "" : WhyNoteFailed();
    DescribePage(document);
    return failure;
}

std::string DeleteNote(Document& document, size_t index)
{
    const bool deleted = DeleteTiffNote(document.path.c_str(), document.page, static_cast<uint32_t>(index));
    const std::string failure = deleted ? "" : WhyNoteFailed();
    DescribePage(document);
    return failure;
}

std::string ErrorText(uint32_t code)
{
    char text[64] = {};
    TiffErrorString(text, static_cast<int32_t>(code));
    return text;
}

} // namespace tiffview
