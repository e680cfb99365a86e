/* Makes a fax of a text, its first page on a form: text_fax LETTER.txt FORM.tif FAX.tif */
#include "tiff/tiff.h"

#include <stdio.h>

enum { MOST_PAGES = 50 };

int main(int argc, char** argv)
{
    TiffTextPageSettings settings = {0};
    HANDLE pages[MOST_PAGES];
    uint32_t page, count, saved = 0;
    char text[64];
    if (argc != 4)
        return fprintf(stderr, "text_fax LETTER.txt FORM.tif FAX.tif\n"), 1;
    snprintf(settings.path, sizeof(settings.path), "%s", argv[1]);
    snprintf(settings.faceName, sizeof(settings.faceName), "Arial");
    settings.pageWidth = 215; /* millimetres: the form has 1728 x 2292 dots */
    settings.pageHeight = 297;
    settings.leftMargin = settings.topMargin = 25;
    settings.fontSize = 12;
    settings.horizontalDpi = 204;
    settings.verticalDpi = 196;
    settings.tabStops[0] = 60;
    settings.tabStops[1] = 100;
    count = DIBFormOverlayExt(argv[2], &settings, pages, MOST_PAGES, 1200); /* below the form's own text */
    for (page = 0; page < count; ++page) {
        saved += SaveDIBInTiffFile(argv[3], pages[page], TIFF_SAVE_GROUP4, 0) == 1;
        GlobalFree(pages[page]);
    }
    printf("%u pages\n", (unsigned)saved);
    if (saved == 0 || saved < count)
        return fprintf(stderr, "%s\n", TiffErrorString(text, (int32_t)TiffError())), 1;
    return 0;
}
