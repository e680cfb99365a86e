/* Puts a received fax, bare Group 3 code of 1728 dots a line, into an archive as a Group 4 page:
 * fax_in CODE ARCHIVE.tif
 * The code does not say how many lines it has: they are counted as they come.
 */
#include "tiff/tiff.h"

#include <stdio.h>
#include <string.h>

enum { WIDTH = 1728, LINE_BYTES = WIDTH / 8, MOST_LINES = 5000 };

typedef struct Fax {
    uint32_t lines;
    BITMAPINFOHEADER* dib;
} Fax;

static intptr_t TIFF_CALL KeepLine(void* line, uint32_t row, void* user)
{
    Fax* fax = (Fax*)user;
    memcpy(TiffDIBBits(fax->dib) + (size_t)row * LINE_BYTES, line, LINE_BYTES);
    fax->lines = row + 1;
    return 0;
}

/* Rows from the top, one bit a pixel, 0 white and 1 black. */
static void Describe(BITMAPINFOHEADER* header, uint32_t lines)
{
    header->biSize = sizeof(*header);
    header->biWidth = WIDTH;
    header->biHeight = -(LONG)lines;
    header->biPlanes = header->biBitCount = 1;
    header->biXPelsPerMeter = 8031; /* 204 dots an inch; 98 or 196 down */
    header->biYPelsPerMeter = lines < 1500 ? 3858 : 7717;
    memset(header + 1, 0xFF, 3);
}

int main(int argc, char** argv)
{
    HGLOBAL dib = GlobalAlloc(GHND, sizeof(BITMAPINFOHEADER) + 8 + (SIZE_T)MOST_LINES * LINE_BYTES);
    HANDLE code = argc == 3
                      ? CreateFileA(argv[1], GENERIC_READ, FILE_SHARE_READ, NULL, OPEN_EXISTING, 0, NULL)
                      : INVALID_HANDLE_VALUE;
    Fax fax = {0, (BITMAPINFOHEADER*)GlobalLock(dib)};
    char text[64];
    if (!fax.dib || code == INVALID_HANDLE_VALUE)
        return fprintf(stderr, "fax_in CODE ARCHIVE.tif: no such code\n"), 1;
    Describe(fax.dib, MOST_LINES);
    DecodeCcittImage((TiffStream)(intptr_t)code, WIDTH, MOST_LINES, 3, &fax, KeepLine);
    CloseHandle(code);
    Describe(fax.dib, fax.lines);
    GlobalUnlock(dib);
    if (fax.lines == 0 || !SaveDIBInTiffFile(argv[2], dib, TIFF_SAVE_GROUP4, 0))
        return fprintf(stderr, "%s\n", TiffErrorString(text, (int32_t)TiffError())), 1;
    printf("%u lines\n", (unsigned)fax.lines);
    GlobalFree(dib);
    return 0;
}
