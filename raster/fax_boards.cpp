// Pages for fax boards: rows of the saver table.
#include "tiff/fax_boards.h"

#include "raster/save_dib.h"

using namespace tiff;

extern "C" int32_t SaveDIBInGammaTiffFile(const char* path, HGLOBAL dib, uint32_t selector, int32_t dialog,
                                          uint32_t fillOrder) noexcept
{
    return SaveDibInFile(dib, {path, selector, dialog, fillOrder, gammaSave});
}

extern "C" int32_t SaveDIBInBicomTiffFile(const char* path, HGLOBAL dib) noexcept
{
    return SaveDibInFile(dib, {path, 0, 0, 0, bicomSave});
}

extern "C" int32_t SaveDIBInNMSTiffFile(const char* path, HGLOBAL dib) noexcept
{
    return SaveDIBInBicomTiffFile(path, dib);
}

extern "C" int32_t SaveDIBInDialogicTiffFile(const char* path, HGLOBAL dib, uint32_t selector) noexcept
{
    return SaveDibInFile(dib, {path, selector, 0, 0, dialogicSave});
}
