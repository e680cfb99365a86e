// Opens any bytes as a TIFF in memory, and decodes its first pages.
#include "scaffold.h"

static constexpr uint32_t PAGES = 4;
static constexpr uint64_t LARGEST_PICTURE = 16 << 20;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const fuzz::Run run(LARGEST_PICTURE);
    const fuzz::OpenTiff tiff({data, size});
    const uint32_t pages = tiff.handle ? NumberOfTiffImages(tiff.handle, TIFF_ALL_PAGES) : 0;
    for (uint32_t page = 0; page < pages && page < PAGES; ++page)
        if (GetTiffImage(tiff.handle, page))
            GlobalFree(LoadTiffChainIntoDIB(tiff.handle, page));
    return 0;
}
