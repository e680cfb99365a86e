/* Writes the pages of a file as a Dialogic board sends them: fax_out SCAN.tif OUT.tif */
#include "tiff/tiff.h"

#include <stdio.h>

/* The board takes pages of one bit a pixel. */
static int SendPage(HGLOBAL file, uint32_t page, const char* out)
{
    HGLOBAL dib = LoadTiffChainIntoDIB(file, page);
    BITMAPINFOHEADER* header = (BITMAPINFOHEADER*)GlobalLock(dib);
    const int bilevel = header && TiffDIBDepth(header) == 1;
    int sent = 0;
    GlobalUnlock(dib);
    if (bilevel)
        sent = SaveDIBInDialogicTiffFile(out, dib, TIFF_SAVE_GROUP3);
    else if (dib)
        SetTiffError(TIFF_ERROR_COLOUR_FORMAT);
    GlobalFree(dib);
    return sent;
}

int main(int argc, char** argv)
{
    HGLOBAL file = argc == 3 ? OpenTiffFile(argv[1], T_READ) : NULL;
    const uint32_t pages = NumberOfTiffImages(file, TIFF_ALL_PAGES);
    char text[64];
    uint32_t page = 0;
    while (page < pages && SendPage(file, page, argv[2]))
        ++page;
    CloseTiffFile(file);
    if (pages > 0 && page == pages && UpdatePageNumbers(argv[2], pages))
        return 0;
    fprintf(stderr, "fax_out SCAN.tif OUT.tif: page %u: %s\n", (unsigned)page + 1,
            TiffErrorString(text, (int32_t)TiffError()));
    return 1;
}
