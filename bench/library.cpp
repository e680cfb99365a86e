#include "bench/library.h"

#include "raster/dib.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

HGLOBAL MakeBlock(const std::vector<uint8_t>& bytes)
{
    HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, bytes.size());
    std::memcpy(GlobalLock(block), bytes.data(), bytes.size());
    GlobalUnlock(block);
    return block;
}

OpenPage::OpenPage(const std::vector<uint8_t>& tiff)
    : block(MakeBlock(tiff)), file(OpenTiffInMemory(block, static_cast<uint32_t>(tiff.size()), T_READ))
{
    DemandSuccess(file && GetTiffImage(file, 0), "opening a page");
}

OpenPage::~OpenPage()
{
    CloseTiffFile(file);
    GlobalFree(block);
}

void DemandSame(HGLOBAL file, const Picture& picture, const std::string& job)
{
    HGLOBAL dib = LoadTiffChainIntoDIB(file, 0);
    DemandSuccess(dib, job);
    tiff::DibView view;
    const std::span block(static_cast<uint8_t*>(GlobalLock(dib)), GlobalSize(dib));
    bool same =
        tiff::CompleteDib(block, view) == 0 && view.width == picture.width && view.height == picture.height;
    for (uint32_t row = 0; same && row < picture.height; ++row) {
        const uint8_t* found = view.pixels + size_t{picture.height - 1 - row} * view.stride;
        const uint8_t* wanted = &picture.rows[row * picture.RowBytes()];
        if (picture.bits != 24)
            same = std::memcmp(found, wanted, picture.RowBytes()) == 0;
        else
            for (size_t at = 0; same && at < picture.RowBytes(); at += 3)
                same = found[at] == wanted[at + 2] && found[at + 1] == wanted[at + 1] &&
                       found[at + 2] == wanted[at];
    }
    GlobalUnlock(dib);
    GlobalFree(dib);
    DemandSuccess(same, job + ", which gives other pixels");
}

void DemandSuccess(bool done, const std::string& job)
{
    if (!done) {
        std::fprintf(stderr, "failed: %s (error %u)\n", job.c_str(), TiffError());
        std::exit(1);
    }
}
