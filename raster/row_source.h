// Where rows come from: a page of a TIFF file or a bare stream. Nobody else asks which scheme a page
// has.
#pragma once

#include "codecs/ccitt/raw.h"
#include "raster/row_sink.h"

namespace tiff {

struct RowSource {
    Status (*decode)(const RowSource& source, const LineTarget& target);
    PictureFormat format;
    HGLOBAL file = nullptr; // a page
    uint32_t page = 0;
    RawImage code{}; // or a bare stream
};

enum class PageRows {
    Any,        // whatever codec the page needs
    ColourSpace // photometric values 7 to 17 unconverted; pages that are not decoded line by line end
                // with 9990 or 9991
};

// A loaded page. Fails as FormatOfPage.
[[nodiscard]] Status OpenPageRows(HGLOBAL file, uint32_t page, PageRows rows, RowSource& source);

// Bare code with a format of the caller's making.
RowSource OpenBareRows(const RawImage& code, const PictureFormat& format);

// Begins the sink, sends it every row and ends it.
[[nodiscard]] Status SendRows(const RowSource& source, RowSink& sink);

} // namespace tiff
