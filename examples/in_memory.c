/* Codes the pages of a file anew without any file between: in_memory FILE.tif GROUP4.tif
 * Both TIFFs lie in blocks of memory. The one that is written may move: its block is the result of each save.
 */
#include "tiff/tiff.h"

#include <stdio.h>

static HGLOBAL ReadWhole(const char* path, DWORD* bytes)
{
    HANDLE file = CreateFileA(path, GENERIC_READ, FILE_SHARE_READ, NULL, OPEN_EXISTING, 0, NULL);
    HGLOBAL block = NULL;
    if (file == INVALID_HANDLE_VALUE)
        return NULL;
    *bytes = GetFileSize(file, NULL);
    block = GlobalAlloc(GMEM_MOVEABLE, *bytes);
    if (block && !ReadFile(file, GlobalLock(block), *bytes, bytes, NULL))
        *bytes = 0;
    GlobalUnlock(block);
    CloseHandle(file);
    return block;
}

int main(int argc, char** argv)
{
    DWORD bytes = 0, written = 0;
    HGLOBAL block = argc == 3 ? ReadWhole(argv[1], &bytes) : NULL;
    HGLOBAL source = OpenTiffInMemory(block, bytes, T_READ);
    const uint32_t pages = NumberOfTiffImages(source, TIFF_ALL_PAGES);
    HGLOBAL target = NULL;
    char text[64];
    uint32_t page;
    for (page = 0; page < pages; ++page) {
        HGLOBAL dib = LoadTiffChainIntoDIB(source, page);
        HGLOBAL grown = SaveTiffToMemory(target, dib, TIFF_SAVE_GROUP4, TIFF_MSB_FIRST);
        GlobalFree(dib);
        if (!grown)
            break;
        target = grown;
    }
    if (pages == 0 || page < pages)
        return fprintf(stderr, "in_memory FILE.tif GROUP4.tif: %s\n",
                       TiffErrorString(text, (int32_t)TiffError())),
               1;
    CloseTiffFile(source);
    GlobalFree(block);
    {
        HANDLE out = CreateFileA(argv[2], GENERIC_WRITE, 0, NULL, CREATE_ALWAYS, 0, NULL);
        WriteFile(out, GlobalLock(target), (DWORD)GlobalSize(target), &written, NULL);
        CloseHandle(out);
    }
    GlobalUnlock(target);
    GlobalFree(target);
    return written == 0;
}
