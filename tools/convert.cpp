/* tifftool convert: pages of a TIFF file or a BMP picture, saved in another compression. The
 * result is written beside the target and replaces it when it is complete.
 */
#include "extension.h"
#include "options.h"
#include "page_target.h"
#include "pages.h"
#include "source.h"
#include "whole_file.h"

namespace tifftool {

namespace {

struct ConvertOrder {
    const char* output;
    uint32_t compression;
    uint32_t samples;
    uint32_t fillOrder;
};

int SavePicture(PageTarget& target, const ConvertOrder& order, const Picture& picture)
{
    const int result = CheckDepth(picture, order.compression);
    return result == ALL_FINE ? AppendDib(target, picture.dib, picture.where,
                                          order.compression | order.samples, order.fillOrder)
                              : result;
}

uint32_t SampleKind(const Options& options)
{
    return options.Has("--grey16") ? 256 : options.Has("--cmyk") ? 768 : options.Has("--ycbcr") ? 1024 : 0;
}

int RunConvert(Arguments arguments)
{
    const Options options =
        ParseOptions(arguments, {"--compression", "--fill-order", "--quality", "--pages", "--page"},
                     {"--append", "--force", "--grey16", "--cmyk", "--ycbcr"});
    if (!CheckOptions(convertCommand, options, 2, SIZE_MAX)) {
        return WRONG_USAGE;
    }
    const ConvertOrder order = {options.others.back(), CompressionOption(convertCommand, options),
                                SampleKind(options), FillOrderOption(convertCommand, options)};
    if (order.compression == 0 || order.fillOrder == 0) {
        return WRONG_USAGE;
    }
    if (options.Has("--grey16") + options.Has("--cmyk") + options.Has("--ycbcr") > 1) {
        return UsageError(convertCommand, "takes one of --grey16, --cmyk and --ycbcr");
    }
    if (order.samples && IsBilevel(order.compression)) {
        return UsageError(convertCommand, "this compression takes black and white pages only");
    }
    const bool isJpeg = order.compression == TIFF_SAVE_JPEG;
    if (isJpeg ? order.samples != 0 : options.Has("--quality")) {
        return UsageError(convertCommand,
                          isJpeg ? "jpeg has no other samples" : "--quality is for jpeg only");
    }
    const uint32_t quality = NumberOption(convertCommand, options, "--quality", 100, "75");
    if (!SetTiffJpegQuality(quality)) {
        return WRONG_USAGE;
    }
    std::vector<Input> inputs;
    if (!SuitsContent(order.output, ".tif") ||
        !ReadInputsBefore(convertCommand, options, order.output, inputs)) {
        return FAILED;
    }
    const bool append = options.Has("--append");
    if (append && !CanBeAddedTo(order.output)) {
        return FAILED;
    }
    return WriteWhole(order.output, append, [&](const char* unfinished) {
        PageTarget target = {order.output, unfinished};
        return ForEachPicture(inputs, Damage::Refused,
                              [&](const Picture& picture) { return SavePicture(target, order, picture); });
    });
}

} // namespace

const Command convertCommand = {
    .name = "convert",
    .arguments = "IN... OUT.tif --compression NAME [OPTION...]",
    .summary = "Saves pages anew in another compression.",
    .details = "  --compression none|packbits|lzw|lzw-pred|mh|g3|g3-2d|g4|jpeg\n"
               "  --quality 1-100   of JPEG pages, 75 by default\n"
               "  --fill-order 1|2  1 stores the most significant bit first, 2 the least\n"
               "  --append          adds the pages to OUT.tif instead of replacing it\n"
               "  --grey16          writes 8-bit pages with 16-bit grey samples\n"
               "  --cmyk, --ycbcr   writes 24-bit pages in these colours\n"
               "\n"
               "All pages are converted, or nothing is: OUT.tif changes when the result is whole.\n",
    .example = "tifftool convert fax.tif:1,3-5 archive.tif --compression g4 --append",
    .run = RunConvert,
};

} // namespace tifftool
