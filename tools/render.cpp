/* tifftool render: pages as BMP files. */
#include "bmp.h"
#include "diagnosis.h"
#include "options.h"
#include "pages.h"
#include "progress.h"
#include "source.h"
#include "standard_streams.h"
#include "whole_file.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <set>

namespace tifftool {

namespace {

struct RenderOrder {
    std::string input;
    std::string output;
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

std::string Numbered(const std::string& stem, uint32_t page)
{
    char number[24];
    snprintf(number, sizeof number, "-%03u.bmp", page);
    return stem + number;
}

// A single picture gets exactly the name after -o; several get page numbers.
std::string OutputPath(const RenderOrder& order, uint32_t page, bool single)
{
    const std::string& output = order.output;
    if (output.empty()) {
        return Numbered(FileStem(order.input), page);
    }
    if (IsFolder(output) || IsSeparator(output.back())) {
        return Numbered(output + (IsSeparator(output.back()) ? "" : "/") + FileStem(order.input), page);
    }
    return single || output == STANDARD_STREAM ? output : Numbered(FolderOf(output) + FileStem(output), page);
}

// An existing file stays until the new picture is complete.
int WritePicture(const RenderOrder& order, const OwnedBlock& block, const std::string& path)
{
    const std::span dib(block.bytes, block.size);
    const auto report = [&path](uint32_t cause) {
        return cause ? ReportSentence(path, "cannot be written: " + SystemCause(cause)) : ALL_FINE;
    };
    const bool isStream = path == STANDARD_STREAM;
    const uint32_t cause = isStream ? ERROR_FILE_EXISTS : WriteBmp(path.c_str(), dib, true);
    if (cause != ERROR_FILE_EXISTS && cause != ERROR_ALREADY_EXISTS) {
        return cause && !CheckOutput(path) ? FAILED : report(cause);
    }
    if (IsSameFile(path, order.input)) {
        return ReportSentence(path, "the picture would take the place of the file that it is in");
    }
    return WriteWhole(path, false,
                      [&](const char* unfinished) { return report(WriteBmp(unfinished, dib, false)); });
}

int RenderPicture(const RenderOrder& order, const Picture& picture)
{
    const std::string path = OutputPath(order, picture.page, picture.pages == 1);
    const OwnedBlock noted(order.notes ? WithNotes(*order.notes, picture) : nullptr);
    if (order.notes && !noted.bytes) {
        return ReportError(picture.where, TiffError());
    }
    const OwnedBlock& shown = order.notes ? noted : picture.dib;
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

int RunRender(Arguments arguments)
{
    const Options options = ParseOptions(arguments, {"--pages", "--page", "-o"}, {"--notes"});
    std::vector<Input> inputs;
    if (!CheckOptions(renderCommand, options, 1, SIZE_MAX) ||
        !ReadInputs(renderCommand, options, options.others, inputs)) {
        return WRONG_USAGE;
    }
    std::set<std::string> written;
    const RenderOrder order = {"", options.Value("-o", ""), nullptr, written};
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
    .arguments = "FILE... [--pages LIST] [--notes] [-o OUT.bmp]",
    .summary = "Writes pages as BMP files.",
    .details = "  --pages L   such as 1,3-5,last; without it all pages\n"
               "  --notes     draws the notes of the pages\n"
               "  -o OUT.bmp  where one picture goes; several become OUT-001.bmp, OUT-002.bmp...\n"
               "  -o FOLDER   writes FILE-001.bmp... into the folder\n"
               "\n"
               "Without -o the pictures go to FILE-001.bmp, FILE-002.bmp... in the current folder.\n"
               "The rows of a damaged page that can be decoded are written, with a warning and exit\n"
               "code 1. FILE may be a CALS file or a BMP picture too.\n",
    .example = "tifftool render fax.tif:2 -o page2.bmp",
    .run = RunRender,
};

} // namespace tifftool
