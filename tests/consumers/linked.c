/* A program against the headers and an import library. It ends with 0 when the library answers. Without a
 * run-time library (FREESTANDING) it begins at Start. */
#include "tiff/tiff.h"

static UINT Run(void)
{
    HGLOBAL dib = LoadTiffIntoDIB("fax-g4.tif", 0, 0);
    void* header = GlobalLock(dib);
    const int good = header && TiffDIBWidth(header) == 1728 && TiffDIBStride(header) == 216 &&
                     TiffDIBRow(header, 0) > TiffDIBBits(header);
    GlobalUnlock(dib);
    GlobalFree(dib);
    return good && GetTiffVersionNumber() == TIFF_VERSION_NUMBER ? 0 : 1;
}

#ifdef FREESTANDING
void Start(void);
void Start(void)
{
    ExitProcess(Run());
}
#else
int main(void)
{
    return (int)Run();
}
#endif
