#include "pdf.h"

#include <array>
#include <span>
#include <utility>

namespace tifftool {

namespace {

constexpr uint32_t CATALOG = 1, PAGE_TREE = 2;
constexpr size_t BUFFER_BYTES = 1u << 14; // longer code goes past the buffer

// The place is counted: asking the system for it would take a call for each object.
void WriteBytes(PdfFile& pdf, std::span<const uint8_t> bytes)
{
    pdf.good = pdf.good && fwrite(bytes.data(), 1, bytes.size(), pdf.file.get()) == bytes.size();
    pdf.size += bytes.size();
}

void Write(PdfFile& pdf, const std::string& text)
{
    WriteBytes(pdf, {reinterpret_cast<const uint8_t*>(text.data()), text.size()});
}

void Begin(PdfFile& pdf, uint32_t number)
{
    pdf.offsets[number] = pdf.size;
    Write(pdf, std::to_string(number) + " 0 obj\n");
}

uint32_t NewObject(PdfFile& pdf)
{
    pdf.offsets.push_back(0);
    const auto number = static_cast<uint32_t>(pdf.offsets.size() - 1);
    Begin(pdf, number);
    return number;
}

uint32_t AddStream(PdfFile& pdf, const std::string& entries, std::span<const uint8_t> bytes)
{
    const uint32_t number = NewObject(pdf);
    Write(pdf, "<<" + entries + "/Length " + std::to_string(bytes.size()) + ">>\nstream\n");
    WriteBytes(pdf, bytes);
    Write(pdf, "\nendstream\nendobj\n");
    return number;
}

std::string Decimal(double number, int digits = 6)
{
    char text[40];
    snprintf(text, sizeof text, "%.*f", digits, number);
    return text;
}

// A length of the page that is never above the given one: readers round a page's pixels up.
double RoundedDown(double points)
{
    constexpr double STEP = 1e-6; // of Decimal
    return points > 3 * STEP ? points - 1.5 * STEP : points;
}

// Readers count a pixel that a picture's edge merely touches as covered. So the edges lie a little inside:
// at the page's own resolution each pixel is then one of the reader's.
std::string PlaceOfStrip(const PdfPage& page, uint32_t rows, uint32_t endRow)
{
    constexpr double INSET = 0.001; // of a pixel
    constexpr int DIGITS = 9;
    const double width = page.width, height = page.height;
    return Decimal((width - 2 * INSET) / width, DIGITS) + " 0 0 " +
           Decimal((rows - 2 * INSET) / height, DIGITS) + " " + Decimal(INSET / width, DIGITS) + " " +
           Decimal(1 - (endRow - INSET) / height, DIGITS);
}

std::string Reference(uint32_t number)
{
    return std::to_string(number) + " 0 R";
}

// Where the stored picture's right, its top and its lower left corner come to lie on a page of size 1 x 1.
std::array<double, 6> MatrixOf(uint32_t orientation)
{
    switch (orientation) {
    case 2:
        return {-1, 0, 0, 1, 1, 0};
    case 3:
        return {-1, 0, 0, -1, 1, 1};
    case 4:
        return {1, 0, 0, -1, 0, 1};
    case 5:
        return {0, -1, -1, 0, 1, 1};
    case 6:
        return {0, -1, 1, 0, 0, 1};
    case 7:
        return {0, 1, 1, 0, 0, 0};
    case 8:
        return {0, 1, -1, 0, 1, 0};
    default:
        return {1, 0, 0, 1, 0, 0};
    }
}

} // namespace

PdfFile::PdfFile(const char* path) : file(fopen(path, "wb"), fclose), offsets(PAGE_TREE + 1)
{
    good = file != nullptr && setvbuf(file.get(), nullptr, _IOFBF, BUFFER_BYTES) == 0;
    // Four bytes beyond ASCII tell other programs that the file is binary.
    Write(*this, "%PDF-1.4\n%\xE2\xE3\xCF\xD3\n");
}

void AddPage(PdfFile& pdf, const PdfPage& page)
{
    const bool turned = page.orientation >= 5 && page.orientation <= 8;
    double across = page.width * page.pointsPerColumn, down = page.height * page.pointsPerRow;
    if (turned) {
        std::swap(across, down);
    }
    across = RoundedDown(across);
    down = RoundedDown(down);
    std::string content = "q " + Decimal(across) + " 0 0 " + Decimal(down) + " 0 0 cm\n", images;
    for (const double part : MatrixOf(page.orientation)) {
        content += Decimal(part) + " ";
    }
    content += "cm\n";
    uint32_t row = 0;
    for (const PdfStrip& strip : page.strips) {
        const uint32_t image = AddStream(pdf,
                                         "/Type/XObject/Subtype/Image/Width " + std::to_string(page.width) +
                                             "/Height " + std::to_string(strip.rows) + strip.form,
                                         strip.code);
        const std::string name = "/I" + std::to_string(image);
        row += strip.rows;
        content += "q " + PlaceOfStrip(page, strip.rows, row) + " cm " + name + " Do Q\n";
        images += name + " " + Reference(image);
    }
    content += "Q\n";
    const uint32_t drawing =
        AddStream(pdf, "", {reinterpret_cast<const uint8_t*>(content.data()), content.size()});
    pdf.pages.push_back(NewObject(pdf));
    Write(pdf, "<</Type/Page/Parent " + Reference(PAGE_TREE) + "/MediaBox[0 0 " + Decimal(across) + " " +
                   Decimal(down) + "]/Contents " + Reference(drawing) + "/Resources<</XObject<<" + images +
                   ">>>>>>\nendobj\n");
}

bool FinishPdf(PdfFile& pdf)
{
    std::string kids;
    for (const uint32_t page : pdf.pages) {
        kids += Reference(page) + "\n";
    }
    Begin(pdf, PAGE_TREE);
    Write(pdf, "<</Type/Pages/Count " + std::to_string(pdf.pages.size()) + "/Kids[" + kids + "]>>\nendobj\n");
    Begin(pdf, CATALOG);
    Write(pdf, "<</Type/Catalog/Pages " + Reference(PAGE_TREE) + ">>\nendobj\n");
    const uint64_t table = pdf.size;
    const std::string count = std::to_string(pdf.offsets.size());
    Write(pdf, "xref\n0 " + count + "\n0000000000 65535 f \n");
    for (size_t number = 1; number < pdf.offsets.size(); ++number) {
        char line[24];
        snprintf(line, sizeof line, "%010llu 00000 n \n",
                 static_cast<unsigned long long>(pdf.offsets[number]));
        Write(pdf, line);
    }
    Write(pdf, "trailer\n<</Size " + count + "/Root " + Reference(CATALOG) + ">>\nstartxref\n" +
                   std::to_string(table) + "\n%%EOF\n");
    return pdf.good && table <= 9'999'999'999 && fclose(pdf.file.release()) == 0;
}

} // namespace tifftool
