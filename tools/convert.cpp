/* tifftool convert: pages of a TIFF file or a BMP picture, saved anew in another compression. The
 * result is written beside its place and moved there when it is whole.
 */
#include "bmp.h"
#include "choices.h"
#include "commands.h"

#include <cstdio>
#include <cstring>

namespace tifftool {

namespace {

struct Choice {
    const char* name;
    uint32_t selector;
};

constexpr uint32_t FIRST_BILEVEL = 205;

constexpr Choice sampleKinds[] = {{"--grey16", 256}, {"--cmyk", 768}, {"--ycbcr", 1024}};

constexpr uint32_t LONG_WORK = 20; // pages from which progress is shown

struct ConvertOrder {
    const char* input = nullptr;
    const char* output = nullptr;
    uint32_t compression = 0;
    uint32_t samples = 0;
    uint32_t fillOrder = 1;
    bool append = false;
};

uint32_t FindSampleKind(const char* name)
{
    for (const Choice& choice : sampleKinds) {
        if (strcmp(choice.name, name) == 0) {
            return choice.selector;
        }
    }
    return 0;
}

uint32_t BitsOf(const OwnedBlock& dib)
{
    BITMAPINFOHEADER header = {};
    memcpy(&header, dib.bytes, sizeof header);
    return header.biBitCount;
}

// Says what does not fit before anything is written: the library would take the samples for bits.
int SaveDib(const ConvertOrder& order, const std::string& target, const OwnedBlock& dib,
            const std::string& where)
{
    if (order.compression >= FIRST_BILEVEL && BitsOf(dib) != 1) {
        return ReportSentence(where,
                              "has " + std::to_string(BitsOf(dib)) +
                                  " bits per pixel; this compression takes black and white pages only");
    }
    if (!SaveDIBInTiffFileExt(target.c_str(), dib.handle, order.compression | order.samples, 0,
                              order.fillOrder)) {
        return ReportError(where, TiffError());
    }
    return ALL_FINE;
}

void ShowProgress(uint32_t page, uint32_t pages)
{
    if (pages >= LONG_WORK) {
        fprintf(stderr, "\rpage %u of %u%s", page, pages, page == pages ? "\n" : "");
        fflush(stderr);
    }
}

int ConvertPages(const ConvertOrder& order, const std::string& target, HGLOBAL file)
{
    const uint32_t pages = NumberOfTiffImages(file, TIFF_ALL_PAGES);
    if (pages == 0) {
        return ReportSentence(order.input, "has no pages");
    }
    for (uint32_t page = 0; page < pages; ++page) {
        const std::string where = std::string(order.input) + ", page " + std::to_string(page + 1);
        const HGLOBAL loaded = LoadTiffChainIntoDIB(file, page);
        const uint32_t error = TiffError();
        DropTiffImage(file, page);
        // Half a picture is not passed on as a whole one.
        if (!loaded || error != 0) {
            const OwnedBlock partial(loaded);
            return ReportError(where, error);
        }
        const OwnedBlock dib(loaded);
        if (const int result = SaveDib(order, target, dib, where); result != ALL_FINE) {
            return result;
        }
        ShowProgress(page + 1, pages);
    }
    return ALL_FINE;
}

int ConvertInto(const ConvertOrder& order, const std::string& target)
{
    HGLOBAL picture = nullptr;
    if (const std::string failure = ReadBmp(order.input, picture); !failure.empty()) {
        return ReportSentence(order.input, failure);
    }
    if (picture) {
        return SaveDib(order, target, OwnedBlock(picture), order.input);
    }
    const OpenFile file(OpenTiffFile(order.input, T_READ));
    const uint32_t openError = TiffError();
    if (!file.handle || openError != 0) {
        return ReportOpenFailure(order.input, openError);
    }
    return ConvertPages(order, target, file.handle);
}

bool Exists(const char* path)
{
    return GetFileAttributesA(path) != INVALID_FILE_ATTRIBUTES;
}

// A copy takes the additions, so that a page that fails leaves the file as it was.
int Convert(const ConvertOrder& order)
{
    const std::string unfinished = std::string(order.output) + ".part";
    DeleteFileA(unfinished.c_str());
    if (order.append && Exists(order.output) && !CopyFileA(order.output, unfinished.c_str(), TRUE)) {
        return ReportSentence(order.output, "cannot be copied to be added to");
    }
    const int result = ConvertInto(order, unfinished);
    if (result != ALL_FINE) {
        DeleteFileA(unfinished.c_str());
        return result;
    }
    if (!MoveFileExA(unfinished.c_str(), order.output, MOVEFILE_REPLACE_EXISTING)) {
        return ReportSentence(order.output, "cannot be replaced; the result is in " + unfinished);
    }
    return ALL_FINE;
}

// Takes one option and its value; the number of arguments taken, 0 for an unknown option.
size_t TakeOption(ConvertOrder& order, Arguments rest)
{
    const char* const name = rest[0];
    if (const uint32_t samples = FindSampleKind(name)) {
        order.samples = samples;
        return 1;
    }
    if (strcmp(name, "--append") == 0) {
        order.append = true;
        return 1;
    }
    if (rest.size() < 2) {
        return 0;
    }
    if (strcmp(name, "--compression") == 0) {
        order.compression = FindCompression(rest[1]);
        return order.compression ? 2 : 0;
    }
    if (strcmp(name, "--fill-order") == 0 && (strcmp(rest[1], "1") == 0 || strcmp(rest[1], "2") == 0)) {
        order.fillOrder = static_cast<uint32_t>(rest[1][0] - '0');
        return 2;
    }
    return 0;
}

int RunConvert(Arguments arguments)
{
    ConvertOrder order;
    for (size_t i = 0; i < arguments.size();) {
        const char* const argument = arguments[i];
        if (argument[0] == '-') {
            const size_t taken = TakeOption(order, arguments.subspan(i));
            if (taken == 0) {
                return UsageError(convertCommand, std::string("cannot use ") + argument);
            }
            i += taken;
            continue;
        }
        if (order.output) {
            return UsageError(convertCommand, "more than two files given");
        }
        (order.input ? order.output : order.input) = argument;
        ++i;
    }
    if (!order.output || !order.compression) {
        return UsageError(convertCommand, "needs two files and --compression");
    }
    if (order.samples && order.compression >= FIRST_BILEVEL) {
        return UsageError(convertCommand, "this compression takes black and white pages only");
    }
    return Convert(order);
}

} // namespace

const Command convertCommand = {
    .name = "convert",
    .arguments = "IN.tif|IN.bmp OUT.tif --compression NAME [OPTION...]",
    .summary = "Saves pages anew in another compression.",
    .details = "  --compression none|packbits|lzw|lzw-pred|mh|g3|g3-2d|g4\n"
               "  --fill-order 1|2  1 stores the most significant bit first, 2 the least\n"
               "  --append          adds the pages to OUT.tif instead of replacing it\n"
               "  --grey16          writes 8-bit pages with 16-bit grey samples\n"
               "  --cmyk, --ycbcr   writes 24-bit pages in these colours\n"
               "\n"
               "All pages are converted, or nothing is: OUT.tif changes when the result is whole.\n",
    .run = RunConvert,
};

} // namespace tifftool
