/* Text on pictures: a text file on a form, a string on a copy of a picture.
 *
 * The given pictures are never changed, and a failure changes nothing. Beside a null path the functions set
 * no error codes of their own; loading a form and converting pictures do.
 */
#ifndef TIFF_OVERLAYS_H
#define TIFF_OVERLAYS_H

#include "tiff/base.h"
#include "tiff/text_pages.h"

TIFF_BEGIN

/* Draws the first page of a text on the first page of a TIFF file. The form shows through, and text beyond
 * that page is dropped.
 *
 * formPath  of the TIFF file.
 * settings  as CreateFaxPageFromASCII; their page should have the size of the form.
 *
 * Returns a bitmap, which the caller frees with DeleteObject, or null.
 * Errors: as LoadTiffIntoBitmap.
 * A success clears the last error; a form that could only be decoded in part leaves its own.
 */
HBITMAP TIFF_CALL BitmapFormOverlay(const char* formPath, const TiffTextPageSettings* settings) TIFF_NOEXCEPT;

/* BitmapFormOverlay as a packed DIB with the resolution of the settings.
 *
 * formPath, settings  as BitmapFormOverlay.
 *
 * Returns a DIB, which the caller frees with GlobalFree, or null.
 * Errors: as BitmapFormOverlay.
 * A success clears the last error; a form that could only be decoded in part leaves its own.
 */
HGLOBAL TIFF_CALL DIBFormOverlay(const char* formPath, const TiffTextPageSettings* settings) TIFF_NOEXCEPT;

/* Draws all pages of a text, the first on the form, the others on blank pages of its size.
 *
 * formPath, settings  as BitmapFormOverlay.
 * pages               as CreateMultiPageFromASCII; packed DIBs, each of which the caller frees with
 *                     GlobalFree.
 * pageLimit, startY   as CreateMultiPageFromASCII.
 *
 * Returns the number of pages.
 * Errors: as BitmapFormOverlay.
 * A success clears the last error; a form that could only be decoded in part leaves its own.
 */
uint32_t TIFF_CALL DIBFormOverlayExt(const char* formPath, const TiffTextPageSettings* settings,
                                     HANDLE* pages, uint32_t pageLimit, uint32_t startY) TIFF_NOEXCEPT;

/* Draws a text in black on a copy of a bitmap.
 *
 * bitmap                      the picture; it stays the caller's.
 * x, y                        of the text's top left corner, in dots of the screen: the text begins there
 *                             multiplied by the resolution and divided by the screen's. Nothing is drawn
 *                             left of x and above y themselves.
 * text                        a CR LF, or a second LF in a row, moves one line down; a single LF does not.
 * faceName                    the font's; one that is missing falls back as in GDI.
 * fontSize                    points.
 * horizontalDpi, verticalDpi  the bitmap's resolution; 0 for the screen's.
 *
 * Returns a new bitmap, also when the place lies outside it, which the caller frees with DeleteObject, or
 * null.
 * The last error stays.
 */
HBITMAP TIFF_CALL BitmapTextOverlay(HBITMAP bitmap, int32_t x, int32_t y, const char* text,
                                    const char* faceName, uint32_t fontSize, uint32_t horizontalDpi,
                                    uint32_t verticalDpi) TIFF_NOEXCEPT;

/* BitmapTextOverlay on a packed DIB, whose header gives the resolution. The new DIB has the same
 * resolution, and 24 bits per pixel unless the given one has 1: it goes through a bitmap like the screen's.
 *
 * dib                             the picture; it stays the caller's.
 * x, y, text, faceName, fontSize  as BitmapTextOverlay.
 *
 * Returns a new DIB, which the caller frees with GlobalFree, or null.
 * Errors: 1; 16; 30; 34.
 * A success keeps the last error.
 */
HGLOBAL TIFF_CALL DIBTextOverlay(HGLOBAL dib, int32_t x, int32_t y, const char* text, const char* faceName,
                                 uint32_t fontSize) TIFF_NOEXCEPT;

TIFF_END

#endif
