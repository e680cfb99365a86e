/* tifftool compare: pages of two files against each other, pixel by pixel. */
#include "pages.h"
#include "pixels.h"
#include "progress.h"
#include "standard_streams.h"
#include "unfinished.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace tifftool {

namespace {

struct Difference {
    uint64_t pixels = 0;
    uint32_t column = 0, row = 0; // of the first one
    int greatest = 0;             // of one colour
};

int Distance(const Rgb& left, const Rgb& right)
{
    int distance = 0;
    for (size_t index = 0; index < left.size(); ++index) {
        distance = std::max(distance, std::abs(left[index] - right[index]));
    }
    return distance;
}

Difference Compare(const Pixels& left, const Pixels& right, int tolerance)
{
    Difference all;
    std::vector<Rgb> leftRow(left.width), rightRow(left.width);
    for (uint32_t row = 0; row < left.height; ++row) {
        ReadRow(left, row, leftRow);
        ReadRow(right, row, rightRow);
        if (leftRow == rightRow) {
            continue;
        }
        for (uint32_t column = 0; column < left.width; ++column) {
            const int distance = Distance(leftRow[column], rightRow[column]);
            if (distance > tolerance && all.pixels++ == 0) {
                all.column = column;
                all.row = row;
            }
            all.greatest = std::max(all.greatest, distance);
        }
    }
    return all;
}

std::string SizeText(const Pixels& pixels)
{
    return std::to_string(pixels.width) + " x " + std::to_string(pixels.height);
}

int ComparePictures(const Picture& leftPicture, const Picture& rightPicture, int tolerance)
{
    const std::string pair = ShownName(leftPicture.where) + " and " + ShownName(rightPicture.where) + ": ";
    const Pixels left = ReadPixels({leftPicture.dib.bytes, leftPicture.dib.size});
    const Pixels right = ReadPixels({rightPicture.dib.bytes, rightPicture.dib.size});
    if (left.depth == 0 || right.depth == 0) {
        return ReportSentence((left.depth == 0 ? leftPicture : rightPicture).where,
                              "has pixels of an unknown form");
    }
    if (left.width != right.width || left.height != right.height) {
        printf("%s%s and %s pixels\n", pair.c_str(), SizeText(left).c_str(), SizeText(right).c_str());
        return FAILED;
    }
    const Difference found = Compare(left, right, tolerance);
    if (found.pixels == 0) {
        return ALL_FINE;
    }
    printf("%s%llu of %llu pixels differ, the first at %u,%u, by %d at most\n", pair.c_str(),
           static_cast<unsigned long long>(found.pixels),
           static_cast<unsigned long long>(uint64_t{left.width} * left.height), found.column, found.row,
           found.greatest);
    return FAILED;
}

int CompareFiles(const Input& leftInput, const Input& rightInput, int tolerance)
{
    PictureFile left, right;
    if (OpenPictures(leftInput, Damage::Refused, left) != ALL_FINE ||
        OpenPictures(rightInput, Damage::Refused, right) != ALL_FINE) {
        return FAILED;
    }
    int result = ALL_FINE;
    if (left.pages.size() != right.pages.size()) {
        printf("%s and %s: %zu and %zu pages\n", ShownName(left.path).c_str(), ShownName(right.path).c_str(),
               left.pages.size(), right.pages.size());
        result = FAILED;
    }
    const size_t both = std::min(left.pages.size(), right.pages.size());
    for (size_t index = 0; index < both && !IsInterrupted(); ++index) {
        const int compared = HandlePicture(left, index, Damage::Refused, [&](const Picture& leftPicture) {
            return HandlePicture(right, index, Damage::Refused, [&](const Picture& rightPicture) {
                return ComparePictures(leftPicture, rightPicture, tolerance);
            });
        });
        result = std::max(result, compared);
        DrawProgress(static_cast<uint32_t>(both), static_cast<uint32_t>(index + 1), 0);
    }
    return result;
}

int RunCompare(Arguments arguments)
{
    const Options options = ParseOptions(arguments, {"--pages", "--page", "--tolerance"}, {});
    Input left, right;
    int64_t tolerance = 0;
    if (!CheckOptions(compareCommand, options, 2, 2) ||
        !ReadInput(compareCommand, options, options.others[0], left) ||
        !ReadInput(compareCommand, options, options.others[1], right)) {
        return WRONG_USAGE;
    }
    if (!ParseNumber(options.Value("--tolerance", "0"), 0, 255, tolerance)) {
        return UsageError(compareCommand, "--tolerance takes a number from 0 to 255");
    }
    return CompareFiles(left, right, static_cast<int>(tolerance));
}

} // namespace

const Command compareCommand = {
    .name = "compare",
    .arguments = "LEFT RIGHT [--pages LIST] [--tolerance N]",
    .summary = "Compares pages of two files pixel by pixel.",
    .details = "  --pages LIST   such as 1,3-5,last, of both files; without it all pages\n"
               "  --tolerance N  lets every colour differ by 0 to 255; without it 0\n"
               "\n"
               "Prints each pair of pages that differ: how many pixels, where the first one is, counted from "
               "0, and\n"
               "how much they differ. The exit code is 1 then, and 0 when all pixels are the same.\n",
    .example = "tifftool compare fax.tif:1 archive.tif:last",
    .run = RunCompare,
};

} // namespace tifftool
