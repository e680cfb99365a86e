// The steps that all savers share: the page is planned from the request, its tags are defined, and its rows
// go through the encode driver.
#pragma once

#include "codecs/encode_driver.h"
#include "core/desktop.h"
#include "raster/picture_format.h"
#include "raster/save_selector.h"
#include "raster/save_variants.h"
#include "tiff/fax_quality.h"

namespace tiff {

struct SaveRequest {
    const char* path; // null for a TIFF in memory
    uint32_t selector;
    int32_t dialog; // non-zero shows the save dialog
    uint32_t fillOrder;
    const SaveVariant& variant;
};

// A page to be saved, whatever the source of its rows.
struct PagePlan {
    PictureFormat format; // of the source
    SaveChoice choice;
    bool bilevel; // written as black and white, whatever the source
    bool invert;  // the source's samples are complemented
    uint32_t photometric;
    uint32_t fillOrder;
    uint32_t jpegBits; // of a pixel of a JPEG page: 8 grey, 24 colour; 0 for other pages
};

// Chooses compression, samples, fill order and photometric interpretation, with the dialog if requested.
// Fails with CANCELLED when the user cancels, and with 11 without an encoder.
[[nodiscard]] Status PlanPage(const SaveRequest& request, const PictureFormat& format, PagePlan& plan);

// Bytes of a row in the file.
uint64_t WrittenRowBytes(const PagePlan& plan);

// Bits of a pixel in the file.
uint32_t WrittenBits(const PagePlan& plan);

// Appends the page to an open file. Its tags are dropped afterwards in any case.
[[nodiscard]] Status AppendPage(HGLOBAL file, const PagePlan& plan, const SaveVariant& variant,
                                const LineFeed& feed);

// The same for a file on disk.
[[nodiscard]] Status AppendPageToFile(const SaveRequest& request, const PagePlan& plan, const LineFeed& feed);

// Of a fax page that says none: coarse rows, and fine ones on a long page.
DotsPerInch UsualFaxResolution(uint32_t rows);

// The two resolutions, without their unit. False without memory.
[[nodiscard]] bool DefineDotsPerInch(HGLOBAL file, uint32_t page, DotsPerInch dots);

// The tags of received-fax quality. False without memory.
[[nodiscard]] bool DefineFaxQuality(HGLOBAL file, uint32_t page, const TiffFaxQuality& quality);

// Makes a status the last error and the result of an exported function.
int32_t FinishSave(Status status);

} // namespace tiff
