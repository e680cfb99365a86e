/* tifftool to-pdf: pages as a PDF document. Strips of Group 3, Group 4 and JPEG code move into it as they
 * are; other black and white pages become Group 4, and the rest is deflated.
 */
#include "anatomy.h"
#include "check_page.h"
#include "deflate.h"
#include "describe.h"
#include "diagnosis.h"
#include "extension.h"
#include "jpeg_stream.h"
#include "pages.h"
#include "pdf.h"
#include "pixels.h"
#include "progress.h"
#include "unfinished.h"
#include "whole_file.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace tifftool {

namespace {

constexpr uint32_t STRIP_BYTE_COUNTS = 279;
constexpr uint32_t GROUP3 = 3, GROUP4 = 4, JPEG = 7;
constexpr uint32_t TWO_DIMENSIONAL = 1, UNCOMPRESSED_MODE = 2;
constexpr uint32_t BLACK_IS_ZERO = 1, RGB = 2, YCBCR = 6;
constexpr uint32_t MOST_STRIPS = 100; // more make viewers slow, and are coded as one
constexpr uint32_t USUAL_DOTS = 200;  // per inch, of pages without a resolution
constexpr double POINTS_PER_INCH = 72, POINTS_PER_METRE = 72 / 0.0254;

// The page's size; its strips are still to come.
PdfPage Measure(HGLOBAL file, uint32_t page, const PageFacts& facts)
{
    uint32_t dpi = 0;
    if (!facts.hasResolution || GetTiffImageDPI(file, page, &dpi) != 0) {
        dpi = 0;
    }
    const uint32_t across = dpi & 0xFFFF, down = dpi >> 16;
    return {.width = facts.width,
            .height = facts.length,
            .pointsPerColumn = POINTS_PER_INCH / (across ? across : USUAL_DOTS),
            .pointsPerRow = POINTS_PER_INCH / (down     ? down
                                               : across ? across
                                                        : USUAL_DOTS),
            .orientation = facts.orientation,
            .strips = {}};
}

std::string FaxForm(const PageFacts& facts, uint32_t rows)
{
    const char* const scheme = facts.compression == GROUP4             ? "-1"
                               : facts.group3Options & TWO_DIMENSIONAL ? "1/EndOfLine true"
                                                                       : "0/EndOfLine true";
    return "/ColorSpace/DeviceGray/BitsPerComponent 1/Filter/CCITTFaxDecode/DecodeParms<</Columns " +
           std::to_string(facts.width) + "/Rows " + std::to_string(rows) + "/K " + scheme +
           (facts.photometric == BLACK_IS_ZERO ? "/BlackIs1 true" : "") + ">>";
}

void ReverseBits(std::span<uint8_t> bytes)
{
    static constexpr auto reversed = [] {
        std::array<uint8_t, 256> table{};
        for (unsigned byte = 0; byte < 256; ++byte) {
            for (unsigned bit = 0; bit < 8; ++bit) {
                table[byte] = static_cast<uint8_t>(table[byte] | (byte >> bit & 1) << (7 - bit));
            }
        }
        return table;
    }();
    for (uint8_t& byte : bytes) {
        byte = reversed[byte];
    }
}

bool HasFaxCode(const PageFacts& facts)
{
    return (facts.compression == GROUP4 ||
            (facts.compression == GROUP3 && !(facts.group3Options & UNCOMPRESSED_MODE))) &&
           facts.bitsPerSample == 1 && facts.samplesPerPixel == 1 && facts.photometric <= BLACK_IS_ZERO;
}

// Reads bytes of a file, wherever the file lies.
using ReadStrip = std::function<std::vector<uint8_t>(uint32_t at, uint32_t count)>;

// False when the strips are not all there, or too many.
bool TakeFaxStrips(HGLOBAL file, uint32_t page, const PageFacts& facts, const ReadStrip& read,
                   PdfPage& pdfPage)
{
    const std::vector<uint32_t> offsets = NumbersOf(file, page, tag::StripOffsets);
    const std::vector<uint32_t> counts = NumbersOf(file, page, STRIP_BYTE_COUNTS);
    const uint32_t most = GetTiffRowsPerStrip(file, page);
    if (offsets.empty() || offsets.size() != counts.size() || offsets.size() > MOST_STRIPS || most == 0) {
        return false;
    }
    uint32_t row = 0;
    for (size_t strip = 0; strip < offsets.size() && row < facts.length; ++strip) {
        const uint32_t rows = std::min(most, facts.length - row);
        std::vector<uint8_t> code = read(offsets[strip], counts[strip]);
        if (code.empty() || code.size() != counts[strip]) {
            return false;
        }
        if (facts.fillOrder == 2) {
            ReverseBits(code);
        }
        pdfPage.strips.push_back({rows, FaxForm(facts, rows), std::move(code)});
        row += rows;
    }
    return row == facts.length;
}

bool TakeJpeg(HGLOBAL file, uint32_t page, const PageFacts& facts, const std::string& path, PdfPage& pdfPage)
{
    const bool isGrey = facts.samplesPerPixel == 1 && facts.photometric == BLACK_IS_ZERO;
    const bool isColour =
        facts.samplesPerPixel == 3 && (facts.photometric == RGB || facts.photometric == YCBCR);
    if (facts.bitsPerSample != 8 || facts.planarConfiguration != 1 || (!isGrey && !isColour) ||
        NumbersOf(file, page, tag::StripOffsets).size() != 1) {
        return false;
    }
    std::vector<uint8_t> code = FirstStream(file, path, page);
    const JpegStream stream = ReadJpeg(code);
    if (!stream.fault.empty() || stream.width != facts.width || stream.height != facts.length) {
        return false;
    }
    pdfPage.strips.push_back({facts.length,
                              std::string("/BitsPerComponent 8/Filter/DCTDecode/ColorSpace") +
                                  (isGrey ? "/DeviceGray"
                                          : "/DeviceRGB/DecodeParms<</ColorTransform " +
                                                std::string(facts.photometric == YCBCR ? "1" : "0") + ">>"),
                              std::move(code)});
    return true;
}

// A file whose code moves. Its directories are in memory, where a page costs no call of the system, unless
// they are odd or pages are decoded too.
struct MovedFile {
    RawFile raw;
    uint64_t size;
    OwnedBlock directories;
    OpenFile opened;
    HGLOBAL file; // for tags

    MovedFile(const PictureFile& pictures, bool decodes)
        : raw(pictures.path), size(SizeOf(raw)),
          directories(pictures.source && !decodes ? CopyDirectories(raw) : nullptr),
          opened(directories.handle
                     ? OpenTiffInMemory(directories.handle, static_cast<uint32_t>(directories.size), T_READ)
                     : nullptr),
          file(opened.handle || !pictures.source ? opened.handle : pictures.source->file.handle)
    {
    }
};

struct PdfOrder {
    bool checks;           // fax code is decoded before it is moved
    int result = ALL_FINE; // FAILED when a page was not whole
};

bool HasAllRows(HGLOBAL file, uint32_t page, const PageFacts& facts)
{
    uint32_t rows = 0;
    return CountRows(file, page, facts, rows) == 0 && rows == facts.length;
}

// Moves the code of a page into the document; false when it must be coded anew.
bool MovePage(const PictureFile& pictures, MovedFile& moved, uint32_t page, PdfOrder& order, PdfPage& pdfPage)
{
    const HGLOBAL file = moved.file;
    if (!GetTiffImage(file, page)) {
        return false;
    }
    const PageFacts facts = ReadPageFacts(file, page);
    pdfPage = Measure(file, page, facts);
    const ReadStrip read = [&moved](uint32_t at, uint32_t count) {
        return uint64_t{at} + count <= moved.size ? ReadBytes(moved.raw, at, count) : std::vector<uint8_t>();
    };
    const bool isPlain = !facts.isTiled && facts.width != 0 && facts.length != 0;
    const bool isMoved =
        isPlain && (HasFaxCode(facts)
                        ? TakeFaxStrips(file, page, facts, read, pdfPage) &&
                              (!order.checks || HasAllRows(file, page, facts))
                        : facts.compression == JPEG && TakeJpeg(file, page, facts, pictures.path, pdfPage));
    DropTiffImage(file, page);
    return isMoved;
}

// Greys in even steps, from black or from white.
bool IsEven(const Pixels& pixels, bool fromWhite)
{
    const size_t last = pixels.colours.size() - 1;
    for (size_t index = 0; index <= last; ++index) {
        const auto grey = static_cast<uint8_t>((fromWhite ? last - index : index) * 255 / last);
        if (pixels.colours[index] != Rgb{grey, grey, grey}) {
            return false;
        }
    }
    return true;
}

std::string Hexadecimal(std::span<const Rgb> colours)
{
    std::string text = "<";
    for (const Rgb& colour : colours) {
        char digits[7];
        snprintf(digits, sizeof digits, "%02X%02X%02X", colour[0], colour[1], colour[2]);
        text += digits;
    }
    return text + ">";
}

// Rows of few colours as they are stored.
PdfStrip DeflatedIndexes(const Pixels& pixels)
{
    const size_t bytes = (size_t{pixels.width} * pixels.depth + 7) / 8;
    Deflater deflater;
    for (uint32_t row = 0; row < pixels.height; ++row) {
        Add(deflater, StoredRow(pixels, row).first(bytes));
    }
    const bool fromWhite = IsEven(pixels, true);
    const std::string colours = fromWhite ? "/DeviceGray/Decode[1 0]"
                                : IsEven(pixels, false)
                                    ? "/DeviceGray"
                                    : "[/Indexed/DeviceRGB " + std::to_string(pixels.colours.size() - 1) +
                                          Hexadecimal(pixels.colours) + "]";
    return {pixels.height,
            "/BitsPerComponent " + std::to_string(pixels.depth) + "/Filter/FlateDecode/ColorSpace" + colours,
            Finish(deflater)};
}

PdfStrip Deflated(const Pixels& pixels)
{
    if (pixels.depth <= 8) {
        return DeflatedIndexes(pixels);
    }
    std::vector<Rgb> row(pixels.width);
    Deflater deflater;
    for (uint32_t index = 0; index < pixels.height; ++index) {
        ReadRow(pixels, index, row);
        Add(deflater, {row.data()->data(), row.size() * sizeof(Rgb)});
    }
    return {pixels.height, "/BitsPerComponent 8/Filter/FlateDecode/ColorSpace/DeviceRGB", Finish(deflater)};
}

// The orientation is that of the page, but loading turns rows that come from the bottom.
int CodeAnew(const Picture& picture, uint32_t orientation, PdfPage& pdfPage)
{
    const Pixels pixels = ReadPixels({picture.dib.bytes, picture.dib.size});
    if (pixels.depth == 0) {
        return ReportSentence(picture.where, "has pixels of an unknown form");
    }
    const double across =
        pixels.dotsAcross ? POINTS_PER_METRE / pixels.dotsAcross : POINTS_PER_INCH / USUAL_DOTS;
    if (pdfPage.pointsPerColumn == 0) {
        pdfPage.pointsPerColumn = across;
        pdfPage.pointsPerRow = pixels.dotsDown ? POINTS_PER_METRE / pixels.dotsDown : across;
    }
    pdfPage.width = pixels.width;
    pdfPage.height = pixels.height;
    pdfPage.orientation = orientation == 4 ? 1 : orientation;
    pdfPage.strips.clear();
    if (pixels.depth != 1) {
        pdfPage.strips.push_back(Deflated(pixels));
        return ALL_FINE;
    }
    const OwnedBlock saved(SaveTiffToMemory(nullptr, picture.dib.handle, TIFF_SAVE_GROUP4, TIFF_MSB_FIRST));
    const OpenFile made(
        saved.handle ? OpenTiffInMemory(saved.handle, static_cast<uint32_t>(saved.size), T_READ) : nullptr);
    const ReadStrip read = [&saved](uint32_t at, uint32_t count) {
        return uint64_t{at} + count <= saved.size
                   ? std::vector<uint8_t>(saved.bytes + at, saved.bytes + at + count)
                   : std::vector<uint8_t>();
    };
    return made.handle && GetTiffImage(made.handle, 0) &&
                   TakeFaxStrips(made.handle, 0, ReadPageFacts(made.handle, 0), read, pdfPage)
               ? int{ALL_FINE}
               : ReportError(picture.where, TiffError());
}

int AddFile(const Input& input, PdfOrder& order, PdfFile& pdf)
{
    PictureFile pictures;
    if (const int result = OpenPictures(input, Damage::Refused, pictures); result != ALL_FINE) {
        return result;
    }
    MovedFile moved(pictures, order.checks);
    const auto count = static_cast<uint32_t>(pictures.pages.size());
    for (uint32_t index = 0; index < count; ++index) {
        PdfPage page = {};
        page.orientation = 1;
        int result = ALL_FINE;
        if (!pictures.source || !MovePage(pictures, moved, pictures.pages[index] - 1, order, page)) {
            const Damage damage = order.checks ? Damage::Tolerated : Damage::Refused;
            result = HandlePicture(pictures, index, damage, [&](const Picture& picture) {
                if (picture.error != 0) {
                    order.result = ReportSentence(picture.where,
                                                  "is not whole; the document has the rows that are there: " +
                                                      DescribeError(picture.error));
                }
                return CodeAnew(picture, page.orientation, page);
            });
        }
        if (result != ALL_FINE || IsInterrupted()) {
            return FAILED;
        }
        AddPage(pdf, page);
        DrawProgress(count, index + 1, 0);
    }
    return ALL_FINE;
}

int RunToPdf(Arguments arguments)
{
    const Options options = ParseOptions(arguments, {"--pages", "--page"}, {"--check", "--force"});
    if (!CheckOptions(toPdfCommand, options, 2, SIZE_MAX)) {
        return WRONG_USAGE;
    }
    const std::string output = options.others.back();
    std::vector<Input> inputs;
    if (!SuitsContent(output, ".pdf") || !ReadInputsBefore(toPdfCommand, options, output.c_str(), inputs)) {
        return FAILED;
    }
    for (const Input& input : inputs) {
        if (IsSameFile(input.path, output)) {
            return ReportSentence(output, "the document would take the place of its pages");
        }
    }
    PdfOrder order = {options.Has("--check")};
    const int result = WriteWhole(output, false, [&](const char* unfinished) {
        PdfFile pdf(unfinished);
        for (const Input& input : inputs) {
            if (const int result = AddFile(input, order, pdf); result != ALL_FINE) {
                return result;
            }
        }
        return FinishPdf(pdf) ? int{ALL_FINE} : ReportUnwritten(output);
    });
    return std::max(result, order.result);
}

} // namespace

const Command toPdfCommand = {
    .name = "to-pdf",
    .arguments = "IN... OUT.pdf [--pages LIST] [--check] [--force]",
    .summary = "Makes a PDF document of pages.",
    .details =
        "  --pages LIST  such as 1,3-5,last; without it all pages\n"
        "  --check       decodes fax code first; pages with missing rows are coded anew with those that are\n"
        "                there, and end the command with 1\n"
        "  --force       replaces OUT.pdf when there are several files\n"
        "\n"
        "Group 3, Group 4 and JPEG code moves into the document as it is. Other black and white pages\n"
        "become Group 4, and the rest is deflated, without loss and in its own depth. The size of a page "
        "follows from its\n"
        "resolution; without one it has 200 dots per inch.\n",
    .example = "tifftool to-pdf fax.tif:1-3 fax.pdf",
    .run = RunToPdf,
};

} // namespace tifftool
