// The calling thread's settings for saving.
#pragma once

#include "core/thread_state.h"
#include "tiff/fax_quality.h"

namespace tiff {

inline constexpr uint32_t SAVE_TEXT_BYTES = 101;

// The choices of the last save. The texts are written into every saved page.
struct SaveSettings {
    uint32_t colourCount; // 2 is bilevel
    uint32_t photometric;
    uint32_t fillOrder;
    uint32_t selector;
    char description[SAVE_TEXT_BYTES];
    char artist[SAVE_TEXT_BYTES];
};

struct ScreenRows;

struct RasterSettings {
    SaveSettings save;
    bool saysQuality;
    TiffFaxQuality quality;  // in the tags of saved pages
    BITMAPINFO* ccittSource; // of the bitmap for DllFillCcittLine; else null
    ScreenRows* drawing;     // of the thread's drawing on the screen; else null
};

inline RasterSettings& ThreadRaster()
{
    return SettingsIn<RasterSettings>(ThreadState().raster);
}

} // namespace tiff
