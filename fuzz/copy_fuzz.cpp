// Opens any bytes as a TIFF in memory, sets its page totals, and copies its first pages into another one,
// which must then have exactly these pages.
#include "scaffold.h"

static constexpr uint32_t PAGES = 3;
static constexpr uint64_t LARGEST_COPY = 16 << 20;
static constexpr size_t LARGEST_FILE = 8192; // each strip may be as long as the file

static uint32_t CopyFirstPages(HGLOBAL source, HGLOBAL copy)
{
    uint32_t copied = 0;
    for (uint32_t page = 0; page < PAGES; ++page)
        copied += static_cast<uint32_t>(CopyTiffImage(source, page, copy));
    return copied;
}

static void ExpectPages(HGLOBAL copy, uint32_t expected)
{
    HGLOBAL block = GetMemoryTiffHandle(copy);
    HGLOBAL file = OpenTiffInMemory(block, static_cast<uint32_t>(GlobalSize(block)), T_READ);
    fuzz::Demand(file && NumberOfTiffImages(file, TIFF_ALL_PAGES) == expected && TiffError() == 0);
    CloseTiffFile(file);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0 || size > LARGEST_FILE)
        return 0;
    const fuzz::Run run(LARGEST_COPY);
    const fuzz::OpenTiff source({data, size});
    if (!source.handle)
        return 0;
    UpdatePageNumbersInMemory(source.handle, 7);
    HGLOBAL copy = OpenTiffInMemory(nullptr, 0, T_CREAT);
    if (const uint32_t copied = CopyFirstPages(source.handle, copy); copied > 0)
        ExpectPages(copy, copied);
    HGLOBAL made = GetMemoryTiffHandle(copy);
    CloseTiffFile(copy);
    GlobalFree(made);
    return 0;
}
