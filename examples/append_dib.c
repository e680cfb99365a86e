/* Appends a picture as a Group 4 page: append_dib PICTURE.bmp ARCHIVE.tif
 * A BMP file of one bit a pixel is a packed DIB behind 14 bytes.
 */
#include "tiff/tiff.h"

#include <stdio.h>

static HGLOBAL ReadDib(const char* path)
{
    FILE* file = fopen(path, "rb");
    HGLOBAL dib = NULL;
    long bytes;
    if (!file)
        return NULL;
    fseek(file, 0, SEEK_END);
    bytes = ftell(file) - 14;
    fseek(file, 14, SEEK_SET);
    if (bytes > 0)
        dib = GlobalAlloc(GHND, (SIZE_T)bytes);
    if (dib) {
        size_t count = fread(GlobalLock(dib), 1, (size_t)bytes, file);
        GlobalUnlock(dib);
        if (count < (size_t)bytes)
            dib = GlobalFree(dib);
    }
    fclose(file);
    return dib;
}

int main(int argc, char** argv)
{
    char text[64];
    HGLOBAL dib = argc == 3 ? ReadDib(argv[1]) : NULL;
    int saved;
    if (!dib)
        return fprintf(stderr, "append_dib PICTURE.bmp ARCHIVE.tif: no such picture\n"), 1;
    saved = SaveDIBInTiffFile(argv[2], dib, TIFF_SAVE_GROUP4, 0);
    if (!saved)
        fprintf(stderr, "%s: %s\n", argv[2], TiffErrorString(text, (int32_t)TiffError()));
    GlobalFree(dib);
    return !saved;
}
