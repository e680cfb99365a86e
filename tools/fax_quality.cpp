#include "fax_quality.h"

#include <algorithm>

namespace tifftool {

namespace {

constexpr uint32_t BAD_FAX_LINES = 326, CLEAN_FAX_DATA = 327, CONSECUTIVE_BAD_FAX_LINES = 328;

// What the page itself says of the fax that it came as. False when it says nothing.
bool ReadOwnQuality(HGLOBAL file, uint32_t page, TiffFaxQuality& quality)
{
    const auto read = [&](uint32_t tag, uint32_t& value) {
        return GetTiffImageInfo(file, page, tag, nullptr) && GetTiffImageInfo(file, page, tag, &value);
    };
    const bool hasRows = read(BAD_FAX_LINES, quality.badRows);
    const bool hasRun = read(CONSECUTIVE_BAD_FAX_LINES, quality.longestBadRun);
    const bool hasClean = read(CLEAN_FAX_DATA, quality.cleanFaxData);
    return hasRows || hasRun || hasClean;
}

} // namespace

void SaveQualityOfLast(const Source* source, uint32_t page)
{
    SetTiffFaxQuality(nullptr);
    if (!source) {
        return;
    }
    TiffDecodeQuality decoded = {};
    GetTiffDecodeQuality(&decoded);
    TiffFaxQuality quality = {};
    if (!ReadOwnQuality(source->file.handle, page, quality) && decoded.isCounted == 0) {
        return;
    }
    // Rows that were repaired on the way here no longer show in the code.
    quality.badRows = std::max(quality.badRows, decoded.badRows);
    quality.longestBadRun = std::max(quality.longestBadRun, decoded.longestBadRun);
    // Encoding makes every row whole.
    quality.cleanFaxData =
        quality.badRows != 0 || quality.cleanFaxData != 0 ? TIFF_FAX_REGENERATED : TIFF_FAX_CLEAN;
    SetTiffFaxQuality(&quality);
}

std::string DescribeDamage(uint32_t badRows, uint32_t longestBadRun)
{
    if (badRows == 0) {
        return "";
    }
    const std::string rows = Counted(badRows, "row") + (badRows == 1 ? " is" : " are") + " damaged";
    return longestBadRun > 1 ? rows + ", " + std::to_string(longestBadRun) + " of them together" : rows;
}

} // namespace tifftool
