/* tifftool convert: pages of a TIFF file or a BMP picture, saved anew in another compression. The
 * result is written beside its place and moved there when it is whole.
 */
#include "choices.h"
#include "commands.h"
#include "pages.h"
#include "whole_file.h"

#include <cstring>

namespace tifftool {

namespace {

struct Choice {
    const char* name;
    uint32_t selector;
};

constexpr Choice sampleKinds[] = {{"--grey16", 256}, {"--cmyk", 768}, {"--ycbcr", 1024}};

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

int SaveDib(const ConvertOrder& order, const char* target, const OwnedBlock& dib, const std::string& where)
{
    if (const int result = CheckDepth(dib, order.compression, where); result != ALL_FINE) {
        return result;
    }
    const uint32_t selector = order.compression | order.samples;
    return SaveDIBInTiffFileExt(target, dib.handle, selector, 0, order.fillOrder)
               ? ALL_FINE
               : ReportError(where, TiffError());
}

int Convert(const ConvertOrder& order)
{
    return WriteWhole(order.output, order.append, [&](const char* target) {
        return ForEachPicture(order.input, [&](const OwnedBlock& dib, const std::string& where) {
            return SaveDib(order, target, dib, where);
        });
    });
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
