#include "raster/palette_gdi.h"

#include "core/errors.h"
#include "core/global_block.h"
#include "raster/loaded_page.h"
#include "tiff/directory.h"

#include <algorithm>

namespace tiff {

static constexpr size_t MOST_COLOURS = 256;
static constexpr WORD PALETTE_VERSION = 0x300;

HPALETTE MakePalette(std::span<const uint8_t> colours, uint32_t colourBytes)
{
    struct {
        WORD version, count;
        PALETTEENTRY entries[MOST_COLOURS];
    } palette{PALETTE_VERSION, 0, {}};
    static_assert(sizeof(palette) == sizeof(LOGPALETTE) + (MOST_COLOURS - 1) * sizeof(PALETTEENTRY));
    palette.count = static_cast<WORD>(std::min(colours.size() / colourBytes, MOST_COLOURS));
    for (size_t index = 0; index < palette.count; ++index) {
        const uint8_t* colour = &colours[index * colourBytes];
        palette.entries[index] = {colour[2], colour[1], colour[0], 0};
    }
    return palette.count ? CreatePalette(reinterpret_cast<const LOGPALETTE*>(&palette)) : nullptr;
}

HPALETTE MakePalette(const BITMAPINFO& info)
{
    const auto* colours = reinterpret_cast<const uint8_t*>(info.bmiColors);
    return MakePalette({colours, size_t{info.bmiHeader.biClrUsed} * sizeof(RGBQUAD)}, sizeof(RGBQUAD));
}

} // namespace tiff

using namespace tiff;

extern "C" HPALETTE GetTiffImagePalette(const char* path, uint32_t page) noexcept
{
    const LoadedPage loaded(path, page);
    SetTiffError(loaded.LoadStatus());
    if (loaded.LoadStatus() != error::None)
        return nullptr;
    GlobalBlock block;
    block.Adopt(GetTiffRGBQuad(loaded.File(), page));
    const Locked<BITMAPINFO> info(block.Get());
    if (block && !info)
        SetTiffError(error::NotEnoughMemory);
    if (!info || info->bmiHeader.biBitCount == 1 || info->bmiHeader.biClrUsed == 0)
        return nullptr;
    HPALETTE palette = MakePalette(*info);
    if (!palette)
        SetTiffError(error::NotEnoughMemory);
    return palette;
}
