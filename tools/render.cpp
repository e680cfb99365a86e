/* tifftool render: pages as BMP files. */
#include "bmp.h"
#include "diagnosis.h"
#include "extension.h"
#include "options.h"
#include "pages.h"
#include "progress.h"
#include "raster_files.h"
#include "source.h"
#include "standard_streams.h"
#include "whole_file.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <set>
#include <string_view>

namespace tifftool {

namespace {

struct RenderOrder {
    std::string input;
    std::string output;
    std::string format;             // "bmp", "png" or "pbm"
    const Source* notes;            // the file whose notes are drawn; may be null
    std::set<std::string>& written; // by this call
};

// The page with its notes; null with the library's error.
HGLOBAL WithNotes(const Source& source, const Picture& picture)
{
    const uint32_t page = picture.page - 1;
    if (!GetTiffImage(source.file.handle, page)) {
        return nullptr;
    }
    const HGLOBAL drawn = DrawTiffNotesOnDIB(picture.dib.handle, source.file.handle, page);
    const uint32_t error = TiffError();
    DropTiffImage(source.file.handle, page);
    SetTiffError(error);
    return drawn;
}

bool IsSeparator(char character)
{
    return character == '/' || character == '\\' || character == ':';
}

std::string FileStem(const std::string& path)
{
    const std::string name = path == ShownName(path) ? path.substr(FolderOf(path).size()) : "stdin";
    const size_t dot = name.rfind('.');
    return dot == std::string::npos || dot == 0 ? name : name.substr(0, dot);
}

std::string Numbered(const std::string& stem, uint32_t page, const char* extension)
{
    char number[24];
    snprintf(number, sizeof number, "-%03u", page);
    return stem + number + extension;
}

// A single picture gets exactly the name after -o; several get page numbers.
std::string OutputPath(const RenderOrder& order, uint32_t page, bool single, const char* extension)
{
    const std::string& output = order.output;
    if (output.empty()) {
        return Numbered(FileStem(order.input), page, extension);
    }
    if (IsFolder(output) || IsSeparator(output.back())) {
        return Numbered(output + (IsSeparator(output.back()) ? "" : "/") + FileStem(order.input), page,
                        extension);
    }
    return single || output == STANDARD_STREAM
               ? output
               : Numbered(FolderOf(output) + FileStem(output), page, extension);
}

// An existing file stays until the new picture is complete.
int WritePicture(const RenderOrder& order, const OwnedBlock& block, const std::string& path)
{
    const std::span dib(block.bytes, block.size);
    const auto report = [&path](uint32_t cause) {
        return cause ? ReportSentence(path, "cannot be written: " + SystemCause(cause)) : ALL_FINE;
    };
    if (IsSameFile(path, order.input)) {
        return ReportSentence(path, "the picture would take the place of the file that it is in");
    }
    if (order.format != "bmp") {
        const Pixels pixels = ReadPixels(dib);
        const std::vector<uint8_t> bytes = pixels.depth == 0       ? std::vector<uint8_t>()
                                           : order.format == "png" ? EncodePng(pixels)
                                                                   : EncodePnm(pixels);
        return WriteWhole(path, false, [&](const char* unfinished) {
            const std::unique_ptr<FILE, int (*)(FILE*)> file(fopen(unfinished, "wb"), fclose);
            return !bytes.empty() && file &&
                           fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size() &&
                           fflush(file.get()) == 0
                       ? int{ALL_FINE}
                       : ReportUnwritten(path);
        });
    }
    const bool isStream = path == STANDARD_STREAM;
    const uint32_t cause = isStream ? ERROR_FILE_EXISTS : WriteBmp(path.c_str(), dib, true);
    if (cause != ERROR_FILE_EXISTS && cause != ERROR_ALREADY_EXISTS) {
        return cause && !CheckOutput(path) ? FAILED : report(cause);
    }
    return WriteWhole(path, false,
                      [&](const char* unfinished) { return report(WriteBmp(unfinished, dib, false)); });
}

// What the name of the picture's file ends in.
const char* ExtensionFor(const RenderOrder& order, const OwnedBlock& dib)
{
    return order.format == "pbm"   ? PnmExtension(ReadPixels({dib.bytes, dib.size}))
           : order.format == "png" ? ".png"
                                   : ".bmp";
}

int RenderPicture(const RenderOrder& order, const Picture& picture)
{
    const OwnedBlock noted(order.notes ? WithNotes(*order.notes, picture) : nullptr);
    if (order.notes && !noted.bytes) {
        return ReportError(picture.where, TiffError());
    }
    const OwnedBlock& shown = order.notes ? noted : picture.dib;
    const char* const extension = ExtensionFor(order, shown);
    const std::string path = OutputPath(order, picture.page, picture.pages == 1, extension);
    if (path == STANDARD_STREAM && picture.pages > 1) {
        return order.written.insert(path).second
                   ? ReportSentence(order.input,
                                    "has several pictures, and the standard output takes one; select a page")
                   : FAILED;
    }
    if (!SuitsContent(path, extension)) {
        return FAILED;
    }
    // All of them begin alike, so other programs would take a .pbm of greys; people would not.
    constexpr std::string_view kinds = ".pbm.pgm.ppm";
    if (const size_t own = kinds.find(ExtensionOf(path));
        own != kinds.npos && own < kinds.find(extension) && ExtensionOf(path).size() == 4) {
        return ReportSentence(path, std::string("cannot hold the picture's ") +
                                        (strcmp(extension, ".pgm") == 0 ? "greys" : "colours") +
                                        "; its name would end in " + extension);
    }
    if (!order.written.insert(path).second) {
        return ReportSentence(path, "has a picture of this call already; it would be lost");
    }
    if (const int written = WritePicture(order, shown, path); written != ALL_FINE) {
        return written;
    }
    if (path != STANDARD_STREAM) {
        printf("%s\n", path.c_str());
    }
    // The library returns the decoded part of a damaged page and leaves the error set.
    const uint32_t error = picture.error;
    return error == 5 || error == 19 || error == 20
               ? ReportError(picture.where + ": warning, the picture is not whole", error)
               : ALL_FINE;
}

int RenderFile(const Input& input, RenderOrder order, bool withNotes)
{
    order.input = input.path;
    std::unique_ptr<const Source> source;
    if (withNotes && WhyNotTiff(order.input).empty()) {
        source = std::make_unique<const Source>(order.input.c_str());
        order.notes = source.get();
    }
    return ForEachPicture(input, Damage::Tolerated,
                          [&](const Picture& picture) { return RenderPicture(order, picture); });
}

// Without --format the name after -o says it.
std::string FormatOf(const Options& options)
{
    const std::string extension = ExtensionOf(options.Value("-o", ""));
    const bool isPnm =
        extension == ".pbm" || extension == ".pgm" || extension == ".ppm" || extension == ".pnm";
    return options.Value("--format", isPnm ? "pbm" : extension == ".png" ? "png" : "bmp");
}

int RunRender(Arguments arguments)
{
    const Options options = ParseOptions(arguments, {"--pages", "--page", "--format", "-o"}, {"--notes"});
    std::vector<Input> inputs;
    if (!CheckOptions(renderCommand, options, 1, SIZE_MAX) ||
        !ReadInputs(renderCommand, options, options.others, inputs)) {
        return WRONG_USAGE;
    }
    std::set<std::string> written;
    const RenderOrder order = {"", options.Value("-o", ""), FormatOf(options), nullptr, written};
    if (order.format != "bmp" && order.format != "png" && order.format != "pbm") {
        return UsageError(renderCommand, "unknown format \"" + order.format + "\"; there are bmp, png, pbm");
    }
    if (options.Has("-o") && order.output.empty()) {
        return UsageError(renderCommand, "-o needs a value");
    }
    if (inputs.size() > 1 && !order.output.empty() && !IsFolder(order.output)) {
        return UsageError(renderCommand, "-o takes a folder for the pictures of several files");
    }
    int result = ALL_FINE;
    for (const Input& input : inputs) {
        result = std::max(result, RenderFile(input, order, options.Has("--notes")));
    }
    return result;
}

} // namespace

const Command renderCommand = {
    .name = "render",
    .arguments = "FILE... [--pages LIST] [--format bmp|png|pbm] [--notes] [-o OUT]",
    .summary = "Writes pages as BMP, PNG or PNM files.",
    .details =
        "  --pages L   such as 1,3-5,last; without it all pages\n"
        "  --format F  bmp, png, or pbm, which becomes pgm or ppm where a page needs it; without it as\n"
        "              OUT ends, else bmp\n"
        "  --notes     draws the notes of the pages\n"
        "  -o OUT.bmp  where one picture goes; several become OUT-001.bmp, OUT-002.bmp...\n"
        "  -o FOLDER   writes FILE-001.bmp... into the folder\n"
        "\n"
        "Without -o the pictures go to FILE-001.bmp, FILE-002.bmp... in the current folder.\n"
        "The rows of a damaged page that can be decoded are written, with a warning and exit\n"
        "code 1. FILE may be a CALS file or a BMP, PNG or PNM picture too.\n",
    .example = "tifftool render fax.tif:2 -o page2.bmp",
    .run = RunRender,
};

} // namespace tifftool
