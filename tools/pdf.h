/* PDF files of pages that consist of one picture each. */
#ifndef TOOLS_PDF_H
#define TOOLS_PDF_H

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace tifftool {

// A part of a page's picture, as wide as the page: its rows, and its code with what decodes it.
struct PdfStrip {
    uint32_t rows;
    std::string form; // filter, colours and depth, as the entries of a dictionary
    std::vector<uint8_t> code;
};

struct PdfPage {
    uint32_t width, height; // pixels, as stored
    double pointsPerColumn, pointsPerRow;
    uint32_t orientation; // as TIFF counts
    std::vector<PdfStrip> strips;
};

struct PdfFile {
    std::unique_ptr<FILE, int (*)(FILE*)> file;
    std::vector<uint64_t> offsets; // of the objects, by number
    std::vector<uint32_t> pages;   // their numbers
    uint64_t size = 0;             // bytes written
    bool good = true;

    explicit PdfFile(const char* path);
};

void AddPage(PdfFile& pdf, const PdfPage& page);

// False when anything could not be written.
bool FinishPdf(PdfFile& pdf);

} // namespace tifftool

#endif
