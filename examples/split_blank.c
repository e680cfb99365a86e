/* Splits a scan where it has blank pages, and drops these: split_blank SCAN.tif
 * SCAN.tif keeps its first part; the others become part-1.tif, part-2.tif and so on.
 */
#include "tiff/tiff.h"

#include <stdio.h>

enum { TENTHS_OF_A_PERCENT = 3, FAILED = -1 };

/* Number of the first blank page from 0, or the number of pages. */
static int32_t FirstBlank(const char* path)
{
    const uint8_t light[3] = {200, 200, 200};
    const uint32_t page = FindBlankPage(path, TENTHS_OF_A_PERCENT, 0, light);
    return page == 0xFFFFFFFFu ? FAILED
           : page              ? (int32_t)page - 1
                               : (int32_t)GetNumberOfImagesInTiffFile(path);
}

int main(int argc, char** argv)
{
    char path[32], text[64];
    const char* scan = argc == 2 ? argv[1] : "";
    int part = 0;
    for (;;) {
        const int32_t pages = (int32_t)GetNumberOfImagesInTiffFile(scan);
        const int32_t blank = FirstBlank(scan);
        if (blank == FAILED)
            break;
        if (blank == pages)
            return printf("%d parts\n", part + 1), 0;
        if (blank == 0 || blank == pages - 1) {
            if (!DeleteTiffImage(scan, blank, 0))
                break;
            if (pages == 1)
                return printf("%d parts\n", part), 0;
            continue;
        }
        sprintf(path, "part-%d.tif", ++part);
        if (!SplitTiffFile(scan, path, blank, NULL, 0) || !DeleteTiffImage(path, 0, 0))
            break;
        scan = path;
    }
    fprintf(stderr, "split_blank SCAN.tif: %s\n", TiffErrorString(text, (int32_t)TiffError()));
    return 1;
}
