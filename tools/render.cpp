/* tifftool render: pages as BMP files. */
#include "bmp.h"
#include "choices.h"
#include "commands.h"
#include "diagnosis.h"
#include "whole_file.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace tifftool {

namespace {

struct RenderOrder {
    const char* input = nullptr;
    const char* output = nullptr;
    uint32_t page = 0; // counted from 1; 0 for all
};

bool IsSeparator(char character)
{
    return character == '/' || character == '\\' || character == ':';
}

std::string FileStem(const std::string& path)
{
    const auto begin = std::find_if(path.rbegin(), path.rend(), IsSeparator).base();
    const std::string name(begin, path.end());
    const size_t dot = name.rfind('.');
    return dot == std::string::npos || dot == 0 ? name : name.substr(0, dot);
}

std::string Numbered(const std::string& stem, uint32_t page)
{
    char number[24];
    snprintf(number, sizeof number, "-%03u.bmp", page);
    return stem + number;
}

// A single picture goes exactly where -o says; several get their page numbers.
std::string OutputPath(const RenderOrder& order, uint32_t page, bool single)
{
    if (!order.output) {
        return Numbered(FileStem(order.input), page);
    }
    const std::string output = order.output;
    if (IsFolder(output) || IsSeparator(output.back())) {
        return Numbered(output + (IsSeparator(output.back()) ? "" : "/") + FileStem(order.input), page);
    }
    if (single) {
        return output;
    }
    const auto nameStart = std::find_if(output.rbegin(), output.rend(), IsSeparator).base();
    return Numbered(std::string(output.begin(), nameStart) + FileStem(output), page);
}

int RenderPage(const RenderOrder& order, uint32_t page, bool single)
{
    const std::string where = std::string(order.input) + ", page " + std::to_string(page);
    const HGLOBAL loaded = LoadTiffIntoDIB(order.input, page - 1, 0);
    const uint32_t error = TiffError();
    if (!loaded) {
        return ReportError(where, error);
    }
    const OwnedBlock dib(loaded);
    const std::string path = OutputPath(order, page, single);
    if (IsSameFile(path, order.input)) {
        return ReportSentence(path, "the picture would take the place of the file that it is in");
    }
    const int written = WriteWhole(path, false, [&](const char* unfinished) {
        const std::string failure = WriteBmp(unfinished, {dib.bytes, dib.size});
        return failure.empty() ? int{ALL_FINE} : ReportSentence(path, failure);
    });
    if (written != ALL_FINE) {
        return written;
    }
    printf("%s\n", path.c_str());
    // The library hands out what it could decode of a damaged page and leaves the cause standing.
    if (error == 5 || error == 19 || error == 20) {
        return ReportError(where + ": warning, the picture is not whole", error);
    }
    return ALL_FINE;
}

int Render(const RenderOrder& order)
{
    uint32_t pages = 0, openError = 0;
    {
        const OpenFile file(OpenTiffFile(order.input, T_READ));
        openError = TiffError();
        if (!file.handle) {
            return ReportOpenFailure(order.input, openError);
        }
        pages = NumberOfTiffImages(file.handle, TIFF_ALL_PAGES);
    }
    if (order.page > pages || pages == 0) {
        return ReportSentence(order.input, order.page ? "has no page " + std::to_string(order.page) +
                                                            ", only " + std::to_string(pages)
                                                      : "has no pages");
    }
    if (order.page) {
        return RenderPage(order, order.page, true);
    }
    int result = ALL_FINE;
    for (uint32_t page = 1; page <= pages; ++page) {
        result = std::max(result, RenderPage(order, page, pages == 1));
    }
    if (openError == 6) {
        const std::string after = "the chain of pages is broken after page " + std::to_string(pages);
        result = ReportError(std::string(order.input) + ": " + after, openError);
    }
    return result;
}

int RunRender(Arguments arguments)
{
    RenderOrder order;
    bool optionsEnded = false;
    for (size_t i = 0; i < arguments.size(); ++i) {
        const char* const argument = arguments[i];
        if (optionsEnded || argument[0] != '-') {
            if (order.input) {
                return UsageError(renderCommand, "more than one file given");
            }
            order.input = argument;
        } else if (strcmp(argument, "--") == 0) {
            optionsEnded = true;
        } else if (strcmp(argument, "-o") != 0 && strcmp(argument, "--page") != 0) {
            return UsageError(renderCommand, std::string("unknown option ") + argument);
        } else if (i + 1 == arguments.size()) {
            return UsageError(renderCommand, std::string(argument) + " needs a value");
        } else if (argument[1] == 'o') {
            order.output = arguments[++i];
        } else if (order.page = ParsePage(arguments[++i]); order.page == 0) {
            return UsageError(renderCommand, std::string("not a page number: ") + arguments[i]);
        }
    }
    if (!order.input) {
        return UsageError(renderCommand, "no file given");
    }
    return order.output && !*order.output ? UsageError(renderCommand, "-o needs a value") : Render(order);
}

} // namespace

const Command renderCommand = {
    .name = "render",
    .arguments = "FILE [--page N] [-o OUT.bmp]",
    .summary = "Writes pages as BMP files.",
    .details = "  --page N    renders one page, counted from 1; without it all pages\n"
               "  -o OUT.bmp  where one picture goes; several become OUT-001.bmp, OUT-002.bmp...\n"
               "  -o FOLDER   writes FILE-001.bmp... into the folder\n"
               "\n"
               "Without -o the pictures go to FILE-001.bmp, FILE-002.bmp... in the current folder.\n"
               "The rows of a damaged page that can be decoded are written, with a warning and exit\n"
               "code 1.\n",
    .run = RunRender,
};

} // namespace tifftool
