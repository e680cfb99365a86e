// The steps that every saver shares: what to write is planned from the request, the page's tags
// are defined, and its rows go through the encode driver.
#pragma once

#include "core/tag_block.h"
#include "raster/save_selector.h"
#include "raster/save_variants.h"

#include <span>

namespace tiff {

struct SaveRequest {
    const char* path; // null for a TIFF in memory
    uint32_t selector;
    int32_t dialog; // non-zero shows the save dialog
    uint32_t fillOrder;
    const SaveVariant& variant;
};

// A page about to be saved, whatever its rows come from. The saver fills in the source, the
// rest is planned.
struct PagePlan {
    uint32_t width, height;
    uint32_t bitCount; // of a pixel of the source
    uint32_t colourCount;
    std::span<const uint8_t> colours; // blue, green, red and perhaps a fourth byte each
    uint32_t colourBytes;
    int32_t dotsPerMetreX, dotsPerMetreY; // 0 for the screen's

    SaveChoice choice;
    bool bilevel; // written as black and white, whatever the source
    uint32_t photometric;
    uint32_t fillOrder;
};

// Chooses compression, samples, fill order and photometric interpretation, by the dialog if it
// is asked for. Fails with NOTHING_TO_SAVE when the user cancels.
[[nodiscard]] Status PlanPage(const SaveRequest& request, PagePlan& plan);

// Ends a save without an error standing.
inline constexpr Status NOTHING_TO_SAVE = UINT32_MAX;

// Bytes of a row as they are written.
uint64_t WrittenRowBytes(const PagePlan& plan);

// Runs the encode driver for a defined page.
using PageEncoder = Status (*)(HGLOBAL file, uint32_t page, const PagePlan& plan, const void* source);

// Appends the page to an open file. Its tags are dropped again, however it ends.
[[nodiscard]] Status AppendPage(HGLOBAL file, const PagePlan& plan, const SaveVariant& variant,
                                PageEncoder encode, const void* source);

// The same to a file on disk.
[[nodiscard]] Status AppendPageToFile(const SaveRequest& request, const PagePlan& plan, PageEncoder encode,
                                      const void* source);

// The page that a file on disk gets next.
uint32_t NextPageOfFile(const char* path);

// Makes a status the last error and an exported function's result of it.
int32_t FinishSave(Status status);

} // namespace tiff
