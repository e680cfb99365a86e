/* A program that has neither header nor import library. */
#include <windows.h>

int main(void)
{
    HMODULE library = LoadLibraryA("TIFF.DLL");
    FARPROC load = GetProcAddress(library, "LoadTiffIntoDIB");
    HGLOBAL dib = load ? ((HGLOBAL(*)(const char*, unsigned, int))(void*)load)("fax-g4.tif", 0, 0) : NULL;
    const BITMAPINFOHEADER* header = GlobalLock(dib);
    return header && header->biWidth == 1728 ? 0 : 1;
}
