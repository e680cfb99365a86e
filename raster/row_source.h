// The source of rows: a page of a TIFF file or a bare stream. Only this file asks for the scheme of a page.
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
    Any,        // any codec that the page needs
    ColourSpace // photometric values 7 to 17 unconverted; pages that are not decoded line by line end
                // with 9990 or 9991
};

// Opens a loaded page. Fails as FormatOfPage.
[[nodiscard]] Status OpenPageRows(HGLOBAL file, uint32_t page, PageRows rows, RowSource& source);

// Opens bare code with the caller's format.
RowSource OpenBareRows(const RawImage& code, const PictureFormat& format);

// Begins the sink, sends it every row and ends it.
[[nodiscard]] Status SendRows(const RowSource& source, RowSink& sink);

} // namespace tiff
