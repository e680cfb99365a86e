/* tifftool ioca and modca: pages as image segments and documents, and back. */
#include "bmp.h"
#include "diagnosis.h"
#include "extension.h"
#include "options.h"
#include "pages.h"
#include "unfinished.h"
#include "whole_file.h"
#include "wrapped_picture.h"

namespace tifftool {

namespace {

// Owns an open file of the system for a scope.
struct OpenHandle {
    HANDLE handle;

    OpenHandle(const char* path, DWORD access)
        : handle(CreateFileA(path, access, FILE_SHARE_READ, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL,
                             nullptr))
    {
    }
    ~OpenHandle()
    {
        if (handle != INVALID_HANDLE_VALUE) {
            CloseHandle(handle);
        }
    }
    OpenHandle(const OpenHandle&) = delete;
    OpenHandle& operator=(const OpenHandle&) = delete;
};

int WrapPicture(const char* output, Wrapping wrapping, const Picture& picture)
{
    const std::span dib(picture.dib.bytes, picture.dib.size);
    if (const uint32_t depth = DepthOf(dib); depth != 1) {
        return ReportSentence(picture.where, "has " + std::to_string(depth) +
                                                 " bits per pixel; only black and white is wrapped");
    }
    return WriteWhole(output, false, [&](const char* unfinished) {
        const OpenHandle file(unfinished, GENERIC_READ | GENERIC_WRITE);
        const std::string failure = WrapRows(file.handle, wrapping, RowsOf(dib));
        const uint32_t error = TiffError();
        return failure.empty() ? int{ALL_FINE}
               : error         ? ReportError(output, error)
                               : ReportSentence(picture.where, failure);
    });
}

int Wrap(const Command& command, Wrapping wrapping, const Options& options)
{
    const char* const output = options.others[2];
    Input input;
    if (!ReadOnePage(command, options, options.others[1], input)) {
        return WRONG_USAGE;
    }
    if (IsSameFile(input.path, output)) {
        return ReportSentence(output, "the picture would take the place of the file that it is in");
    }
    if (!SuitsContent(output, wrapping == Wrapping::Segment ? ".ioca" : ".modca") || !CheckOutput(output)) {
        return FAILED;
    }
    return ForEachPicture(input, Damage::Refused,
                          [&](const Picture& picture) { return WrapPicture(output, wrapping, picture); });
}

intptr_t IgnoreLine(void*, uint32_t, void*)
{
    return 0;
}

// Code that was never decoded may be damaged. Returns 0, or the error.
uint32_t FindDamage(const char* tiff)
{
    const OpenFile file(OpenTiffFile(tiff, T_READ));
    const bool isWhole = file.handle && GetTiffImage(file.handle, 0) &&
                         DecodeTiffImage(file.handle, 0, 0, 0, nullptr, IgnoreLine);
    return isWhole ? 0 : TiffError();
}

// Adds a page; `warned` becomes FAILED, with a message, when it is not whole.
int AddPage(Wrapping wrapping, const std::string& input, const char* output, const char* unfinished,
            int& warned)
{
    const OpenHandle file(input.c_str(), GENERIC_READ);
    if (file.handle == INVALID_HANDLE_VALUE) {
        return ReportSentence(input, "cannot be opened: " + SystemCause(GetLastError()));
    }
    PictureCode code{};
    if (const std::string failure = ReadCode(file.handle, wrapping, code); !failure.empty()) {
        return ReportSentence(input, failure);
    }
    const std::string alone = MakeUnfinishedFile(TemporaryFolder());
    if (alone.empty() || !WriteTiffPage(alone.c_str(), code) ||
        !CopyTiffImageInFile(alone.c_str(), 0, unfinished, T_APPEND)) {
        return ReportError(output, TiffError());
    }
    const uint32_t damage = FindDamage(alone.c_str());
    DeleteUnfinished(alone);
    if (damage != 0) {
        warned = ReportError(input + ": warning, the picture is not whole", damage);
    } else if (!code.isWhole) {
        warned =
            ReportSentence(input, "warning, the image segment has no end; the page has all that is there");
    }
    return ALL_FINE;
}

int Unwrap(const Command& command, Wrapping wrapping, const Options& options)
{
    const std::span all(options.others);
    const char* const output = all.back();
    std::vector<Input> inputs;
    if (!ReadWholeInputs(command, options, all.subspan(1, all.size() - 2), inputs)) {
        return WRONG_USAGE;
    }
    if (!SuitsContent(output, ".tif") || !MayReplace(options, output, inputs)) {
        return FAILED;
    }
    int warned = ALL_FINE;
    const int result = WriteWhole(output, false, [&](const char* unfinished) {
        int added = ALL_FINE;
        for (size_t index = 0; index < inputs.size() && added == ALL_FINE; ++index) {
            added = AddPage(wrapping, inputs[index].path, output, unfinished, warned);
        }
        return added;
    });
    return result == ALL_FINE ? warned : result;
}

int RunWrapping(const Command& command, Wrapping wrapping, Arguments arguments)
{
    const Options options = ParseOptions(arguments, {"--page"}, {"--force"});
    if (!CheckOptions(command, options, 3, SIZE_MAX)) {
        return WRONG_USAGE;
    }
    const std::string verb = options.others[0];
    if (verb == "wrap" && options.others.size() > 3) {
        return UsageError(command, "wrap takes two files");
    }
    if (verb == "wrap") {
        return Wrap(command, wrapping, options);
    }
    if (verb != "unwrap") {
        return UsageError(command, "unknown verb \"" + verb + "\"; there are wrap, unwrap");
    }
    return options.Has("--page") ? UsageError(command, "--page goes with wrap")
                                 : Unwrap(command, wrapping, options);
}

int RunIoca(Arguments arguments)
{
    return RunWrapping(iocaCommand, Wrapping::Segment, arguments);
}

int RunModca(Arguments arguments)
{
    return RunWrapping(modcaCommand, Wrapping::Document, arguments);
}

} // namespace

const Command iocaCommand = {
    .name = "ioca",
    .arguments = "wrap IN.tif|IN.bmp OUT.ica [--page N] | unwrap IN.ica... OUT.tif [--force]",
    .summary = "Wraps black and white pages as IOCA image segments, and unwraps them.",
    .details = "  wrap      writes a page as a segment in Group 4 code, in records of 65,520 bytes\n"
               "  --page N  that page, counted from 1; without it the first\n"
               "  unwrap    writes the first picture of each file as a page of OUT.tif, its code as it is:\n"
               "            Group 4, Group 3 or not compressed\n"
               "  --force   lets several files replace OUT.tif\n"
               "\n"
               "A damaged page is not wrapped. A damaged picture is unwrapped as far as it goes, with a\n"
               "warning and exit code 1. The output changes when the result is whole.\n",
    .example = "tifftool ioca wrap fax.tif fax.ica --page 2",
    .run = RunIoca,
};

const Command modcaCommand = {
    .name = "modca",
    .arguments = "wrap IN.tif|IN.bmp OUT.afp [--page N] | unwrap IN.afp... OUT.tif [--force]",
    .summary = "Wraps black and white pages as MO:DCA documents, and unwraps them.",
    .details =
        "  wrap      writes a document of one page, as large as its picture; the segment as ioca has it\n"
        "            lies in fields of at most 32,767 bytes\n"
        "  --page N  that page, counted from 1; without it the first\n"
        "  unwrap    writes the first picture of each document as a page of OUT.tif\n"
        "  --force   lets several documents replace OUT.tif\n"
        "\n"
        "Damage and output are treated as by ioca.\n",
    .example = "tifftool modca wrap fax.tif fax.afp",
    .run = RunModca,
};

} // namespace tifftool
