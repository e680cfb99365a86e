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
 * path    of the TIFF file.
 * page    counted from 0.
 * dialog  non-zero shows the load dialog of the dialogs library first.
 *
 * Returns the DIB, which the caller frees with GlobalFree, or null. A picture may come with error 5, 19 or
 * 20: it holds the rows that could be decoded.
 * Errors: 0 the user cancelled; 1 memory, or the dialog failed; 11 old-style JPEG that is not tiled, or
 *         JPEG that is not baseline; 12 a broken JPEG stream, or one that does not suit the page; 16 colour
 *         format (32 bits that are not CMYK, YCbCr with shared chroma outside JPEG, JPEG of 12 bits); 28
 *         dialogs library missing; others as OpenTiffFile, GetTiffImage, GetTiffRGBQuad and
 *         DecodeTiffImage.
 * A success clears the last error; a picture that could only be decoded in part comes with its own.
 */
HGLOBAL TIFF_CALL LoadTiffIntoDIB(const char* path, uint32_t page, int32_t dialog) TIFF_NOEXCEPT;

/* LoadTiffIntoDIB from an open file, without a dialog.
 *
 * file  an open TIFF file; it stays open.
 * page  counted from 0.
 *
 * Returns as LoadTiffIntoDIB; a null file gives null and sets no error.
 * Errors: as LoadTiffIntoDIB.
 * A success clears the last error; a picture that could only be decoded in part comes with its own.
 */
HGLOBAL TIFF_CALL LoadTiffChainIntoDIB(HGLOBAL file, uint32_t page) TIFF_NOEXCEPT;

/* LoadTiffIntoDIB from bytes anywhere in the caller's memory: an attachment, a resource, a mapped file. They
 * are read where they lie and never written, so they may be read-only, and nothing remains open.
 *
 * bytes  of a whole TIFF file. They must not change during the call.
 * size   their number, up to 2,147,483,647.
 * page   counted from 0.
 *
 * Returns as LoadTiffIntoDIB.
 * Errors: 29 no bytes, or too many; others as LoadTiffIntoDIB.
 * A success clears the last error; a picture that could only be decoded in part comes with its own.
 */
HGLOBAL TIFF_CALL LoadTiffFromMemory(const void* bytes, uint32_t size, uint32_t page) TIFF_NOEXCEPT;

/* LoadTiffIntoDIB without a dialog, and pages with PhotometricInterpretation 7 to 17 are not converted:
 * only the first and third bytes of a pixel are swapped, as for RGB. The header's biCompression holds that
 * value.
 *
 * path  of the TIFF file.
 * page  counted from 0.
 *
 * Returns as LoadTiffIntoDIB.
 * Errors: 9990 and 9991 JPEG pages; others as LoadTiffIntoDIB.
 * A success clears the last error; a picture that could only be decoded in part comes with its own.
 */
HGLOBAL TIFF_CALL LoadNonRGBTiffIntoDIB(const char* path, uint32_t page) TIFF_NOEXCEPT;

/* Decodes one page of a TIFF file into a bitmap: monochrome for pages of two colours, else
 * compatible with the screen. Rows come from the top even for orientation 4. 16- and 32-bit
 * pages go to GDI unconverted.
 *
 * path    of the TIFF file.
 * page    counted from 0.
 * dialog  non-zero shows the load dialog of the dialogs library first.
 *
 * Returns the bitmap, which the caller frees with DeleteObject, or null. It may come with error 5: it holds
 * the rows that could be decoded.
 * Errors: as LoadTiffIntoDIB; 1 also for a size that is not positive or that GDI cannot make.
 * A success clears the last error; a picture that could only be decoded in part comes with its own.
 */
HBITMAP TIFF_CALL LoadTiffIntoBitmap(const char* path, uint32_t page, int32_t dialog) TIFF_NOEXCEPT;

/* The same as LoadTiffIntoBitmap.
 *
 * path, page, dialog  as LoadTiffIntoBitmap.
 *
 * Returns as LoadTiffIntoBitmap.
 * Errors: as LoadTiffIntoBitmap.
 * A success clears the last error; a picture that could only be decoded in part comes with its own.
 */
HBITMAP TIFF_CALL LoadTiffFileIntoBitmap(const char* path, uint32_t page, int32_t dialog) TIFF_NOEXCEPT;

/* LoadTiffIntoBitmap from an open file, without a dialog. When the page has no header (GetTiffRGBQuad), the
 * wait cursor stays.
 *
 * file  an open TIFF file; it stays open.
 * page  number of a loaded page, counted from 0.
 *
 * Returns as LoadTiffIntoBitmap; a null file gives null and sets no error.
 * Errors: 27 a page that is not loaded; others as LoadTiffIntoBitmap.
 * A success clears the last error; a picture that could only be decoded in part comes with its own.
 */
HBITMAP TIFF_CALL LoadTiffChainIntoBitmap(HGLOBAL file, uint32_t page) TIFF_NOEXCEPT;

/* Puts one page on the clipboard as a bitmap (CF_BITMAP). The old content is deleted, also when the page
 * cannot be decoded.
 *
 * path, page, dialog  as LoadTiffIntoBitmap.
 *
 * Returns 1. When the file cannot be opened or has no such page, it also returns 1, with the cause as the
 * last error, and leaves the clipboard alone. Returns 0 when the dialog does not go on (error 0, 1 or 28),
 * or when the clipboard cannot be opened or takes no bitmap, which sets no error.
 * A success clears the last error, unless there is no such page.
 */
int32_t TIFF_CALL LoadTiffFileIntoClipboard(const char* path, uint32_t page, int32_t dialog) TIFF_NOEXCEPT;

TIFF_END

#endif
