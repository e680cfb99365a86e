/* Whole pages as packed DIBs (a BITMAPINFOHEADER, the colour table, the rows bottom-up and
 * padded to 4 bytes, in one movable block that the caller frees with GlobalFree), as bitmaps
 * that the caller frees with DeleteObject, and on the clipboard.
 */
#ifndef TIFF_LOAD_H
#define TIFF_LOAD_H

#include "tiff/base.h"

TIFF_BEGIN

/* What the load dialog gets. The dialogs library is KVDlgs.dll, beside this library or where
 * the system finds it; its TiffLoadDialog takes a pointer to this and returns 1 to go on, 2 when
 * the user cancels, anything else for a failure. The file is open and the page loaded; both stay
 * the loader's.
 */
typedef struct TiffLoadDialogRequest {
    HGLOBAL file;
    uint32_t page;
} TiffLoadDialogRequest;
TIFF_LAYOUT(TiffLoadDialogRequest, 16, page, 8);

/* Decodes one page of a TIFF file into a packed DIB. 16-bit grey becomes 8-bit, CMYK and YCbCr
 * become 24-bit.
 *
 * page     counted from 0.
 * dialog   non-zero shows the load dialog of the dialogs library first.
 *
 * Returns the DIB, or null. A picture may come with error 5, 19 or 20: it holds the rows that
 * could be decoded.
 * Errors: 0 the user cancelled; 1 memory, or the dialog failed; 11 old-style JPEG that is not tiled, or JPEG
 * that is not baseline; 12 a broken JPEG stream, or one that does not suit the page; 16 colour format (32
 * bits that are not CMYK, YCbCr with shared chroma outside JPEG, JPEG of 12 bits); 28 dialogs library
 * missing; others as OpenTiffFile, GetTiffImage, GetTiffRGBQuad and DecodeTiffImage.
 */
HGLOBAL TIFF_CALL LoadTiffIntoDIB(const char* path, uint32_t page, int32_t dialog) TIFF_NOEXCEPT;

/* The same from an open file, which stays open. */
HGLOBAL TIFF_CALL LoadTiffChainIntoDIB(HGLOBAL file, uint32_t page) TIFF_NOEXCEPT;

/* The same, but pages with PhotometricInterpretation 7 to 17 are not converted: only the first and
 * third bytes of a pixel are swapped, as for RGB. The header's biCompression holds that value. JPEG
 * pages fail with 9990 or 9991.
 */
HGLOBAL TIFF_CALL LoadNonRGBTiffIntoDIB(const char* path, uint32_t page) TIFF_NOEXCEPT;

/* Decodes one page of a TIFF file into a bitmap: monochrome for pages of two colours, else
 * compatible with the screen. Rows come from the top even for orientation 4. 16- and 32-bit
 * pages go to GDI unconverted.
 *
 * page     counted from 0.
 * dialog   non-zero shows the load dialog of the dialogs library first.
 *
 * Returns the bitmap, or null. It may come with error 5: it holds the rows that could be decoded.
 * Errors: as LoadTiffIntoDIB; 1 also for a size that is not positive or that GDI cannot make.
 */
HBITMAP TIFF_CALL LoadTiffIntoBitmap(const char* path, uint32_t page, int32_t dialog) TIFF_NOEXCEPT;

/* The same as LoadTiffIntoBitmap. */
HBITMAP TIFF_CALL LoadTiffFileIntoBitmap(const char* path, uint32_t page, int32_t dialog) TIFF_NOEXCEPT;

/* The same from an open file, which stays open. The page must be loaded, else error 27. When the page has no
 * header (GetTiffRGBQuad), the wait cursor stays.
 */
HBITMAP TIFF_CALL LoadTiffChainIntoBitmap(HGLOBAL file, uint32_t page) TIFF_NOEXCEPT;

/* Puts one page on the clipboard as a bitmap (CF_BITMAP). The old content is deleted, also when
 * the page cannot be decoded. page and dialog are those of LoadTiffIntoBitmap.
 *
 * Returns 1. When the file cannot be opened or has no such page, it also returns 1 and leaves the
 * clipboard alone. Returns 0 when the dialog does not go on (error 0, 1 or 28), or when the clipboard
 * cannot be opened or takes no bitmap, which sets no error.
 */
int32_t TIFF_CALL LoadTiffFileIntoClipboard(const char* path, uint32_t page, int32_t dialog) TIFF_NOEXCEPT;

TIFF_END

#endif
