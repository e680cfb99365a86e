// What the calling thread saves with.
#pragma once

#include "core/thread_state.h"

namespace tiff {

inline constexpr uint32_t SAVE_TEXT_BYTES = 101;

// What the last save chose; texts are written into every page that is saved.
struct SaveSettings {
    uint32_t colourCount; // 2 is bilevel
    uint32_t photometric;
    uint32_t fillOrder;
    uint32_t selector;
    char description[SAVE_TEXT_BYTES];
    char artist[SAVE_TEXT_BYTES];
};

struct RasterSettings {
    SaveSettings save;
    BITMAPINFO* ccittSource; // of the bitmap whose lines DllFillCcittLine fetches; else null
};

inline RasterSettings& ThreadRaster()
{
    return SettingsIn<RasterSettings>(ThreadState().raster);
}

} // namespace tiff
