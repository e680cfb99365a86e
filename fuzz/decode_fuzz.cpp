// Opens any bytes as a TIFF in memory, queries its first pages in every way, and decodes them.
#include "core/process_state.h"
#include "standin/standin.h"
#include "tiff/tiff.h"

#include <cstring>

static constexpr uint32_t PAGES = 4;
static constexpr uint64_t LARGEST_PICTURE = 16 << 20;

static void AskEverything(HGLOBAL file, uint32_t page)
{
    BITMAPINFOHEADER header;
    uint32_t dpi;
    GetTiffDimensions(file, page, &header);
    GetTiffImageDPI(file, page, &dpi);
    GetTiffRowsPerStrip(file, page);
    HGLOBAL list = nullptr;
    uint32_t type, count = 0;
    if (!GetTiffImageInfoBuffer(file, page, 0, &list, &type, &count))
        return;
    const auto* tags = static_cast<const uint32_t*>(GlobalLock(list));
    for (uint32_t index = 0; index < count; ++index) {
        uint32_t value[2];
        HGLOBAL values = nullptr;
        GetTiffImageInfo(file, page, tags[index], value);
        if (GetTiffImageInfoBuffer(file, page, tags[index], &values, nullptr, nullptr))
            GlobalFree(values);
    }
    GlobalUnlock(list);
    GlobalFree(list);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const bool attached = tiff::AttachProcess(nullptr);
    if (!attached || size == 0)
        return 0;
    standin::LimitAllocation(LARGEST_PICTURE);
    HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, size);
    if (!block)
        return 0;
    std::memcpy(GlobalLock(block), data, size);
    GlobalUnlock(block);
    if (HGLOBAL file = OpenTiffInMemory(block, static_cast<uint32_t>(size), T_READ)) {
        const uint32_t pages = NumberOfTiffImages(file, TIFF_ALL_PAGES);
        for (uint32_t page = 0; page < pages && page < PAGES; ++page)
            if (GetTiffImage(file, page)) {
                AskEverything(file, page);
                if (HGLOBAL dib = LoadTiffChainIntoDIB(file, page))
                    GlobalFree(dib);
            }
        CloseTiffFile(file);
    }
    GlobalFree(block);
    return 0;
}
