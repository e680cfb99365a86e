/* Makes a file of small pictures of another one's pages, 160 pixels wide: thumbnails FILE.tif SMALL.tif */
#include "tiff/tiff.h"

#include <stdio.h>

static HGLOBAL Reduce(HGLOBAL dib)
{
    void* header = GlobalLock(dib);
    const int32_t rows = header ? TiffDIBHeight(header) : 0;
    const int64_t height =
        header ? (int64_t)(rows < 0 ? -(int64_t)rows : rows) * 160 / TiffDIBWidth(header) : 0;
    GlobalUnlock(dib);
    return StretchDIB(dib, 160, height > 0 ? (int32_t)height : 1, TIFF_SMOOTH);
}

int main(int argc, char** argv)
{
    HGLOBAL file = argc == 3 ? OpenTiffFile(argv[1], T_READ) : NULL;
    const uint32_t pages = NumberOfTiffImages(file, TIFF_ALL_PAGES);
    uint32_t page, made = 0;
    char text[64];
    for (page = 0; page < pages; ++page) {
        HGLOBAL dib = LoadTiffChainIntoDIB(file, page);
        HGLOBAL small = dib ? Reduce(dib) : NULL;
        if (small && SaveDIBInTiffFile(argv[2], small, TIFF_SAVE_LZW, 0))
            ++made;
        else
            fprintf(stderr, "page %u: %s\n", (unsigned)page + 1, TiffErrorString(text, (int32_t)TiffError()));
        GlobalFree(small);
        GlobalFree(dib);
    }
    CloseTiffFile(file);
    printf("%u of %u pages\n", (unsigned)made, (unsigned)pages);
    return made == 0 || made < pages;
}
