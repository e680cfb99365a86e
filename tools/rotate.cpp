/* tifftool rotate: a file with some of its pages turned. */
#include "extension.h"
#include "options.h"
#include "redraw.h"

namespace tifftool {

namespace {

int RunRotate(Arguments arguments)
{
    const Options options = ParseOptions(arguments, {"--pages", "--page"}, {});
    Input input;
    if (!CheckOptions(rotateCommand, options, 3, 3)) {
        return WRONG_USAGE;
    }
    int64_t degrees = 0;
    if (!ParseNumber(options.others[2], 90, 270, degrees) || degrees % 90 != 0) {
        return UsageError(rotateCommand, "turns by 90, 180 or 270 degrees");
    }
    if (!ReadInput(rotateCommand, options, options.others[0], input)) {
        return WRONG_USAGE;
    }
    if (!SuitsContent(options.others[1], ".tif")) {
        return FAILED;
    }
    RedrawOrder order;
    order.input = input.path;
    order.selection = input.pages;
    order.output = options.others[1];
    order.turns = true;
    order.quarters = static_cast<uint32_t>(degrees / 90);
    return Redraw(order, [](const DrawnPage& page) {
        return RotateDIB(page.dib.handle, static_cast<int32_t>(page.quarters));
    });
}

} // namespace

const Command rotateCommand = {
    .name = "rotate",
    .arguments = "IN.tif OUT.tif 90|180|270 [--pages LIST]",
    .summary = "Turns pages clockwise.",
    .details = "  --pages LIST  such as 1,4-6; without it all pages\n"
               "\n"
               "Pixels are turned, so that every program shows them upright; also those of pages that were\n"
               "only marked as turned. The pages keep their tags and their compression; JPEG pages become\n"
               "LZW, because coding them again would lose quality. The other pages keep their bytes.\n"
               "Pages that would lose something are refused. OUT.tif changes when the result is whole, and\n"
               "may be IN.tif.\n",
    .example = "tifftool rotate scan.tif upright.tif 90 --pages 2,5-last",
    .run = RunRotate,
};

} // namespace tifftool
