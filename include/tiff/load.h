/* Whole pages as packed DIBs: a BITMAPINFOHEADER, the colour table, the rows bottom-up and
 * padded to 4 bytes, in one movable block that the caller frees with GlobalFree.
 */
#ifndef TIFF_LOAD_H
#define TIFF_LOAD_H

#include "tiff/base.h"

TIFF_BEGIN

/* Decodes one page of a TIFF file into a packed DIB. 16-bit grey becomes 8-bit, CMYK and YCbCr
 * become 24-bit.
 *
 * page     counted from 0.
 * dialog   non-zero shows the load dialog of the dialogs library first.
 *
 * Returns the DIB, or null. A picture may come with error 5, 19 or 20: it holds the rows that
 * could be decoded.
 * Errors: 1 memory; 11 the page is JPEG and no codec for it is there; 16 colour format; 28
 *         dialogs library missing; others as OpenTiffFile, GetTiffImage, GetTiffRGBQuad and
 *         DecodeTiffImage.
 */
HGLOBAL LoadTiffIntoDIB(const char* path, uint32_t page, int32_t dialog) TIFF_NOEXCEPT;

/* The same from an open file, which stays open. */
HGLOBAL LoadTiffChainIntoDIB(HGLOBAL file, uint32_t page) TIFF_NOEXCEPT;

/* The same, but pages with PhotometricInterpretation 7 to 17 come unconverted, first and third
 * bytes of a pixel swapped as for RGB, and that value is in the header's biCompression. JPEG
 * pages fail with 9990 or 9991.
 */
HGLOBAL LoadNonRGBTiffIntoDIB(const char* path, uint32_t page) TIFF_NOEXCEPT;

TIFF_END

#endif
