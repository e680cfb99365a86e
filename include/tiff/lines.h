/* Line routines for the decode drivers, and the record that they take as user data. A line
 * routine trusts its record, may rewrite the line buffer, and always returns 0.
 */
#ifndef TIFF_LINES_H
#define TIFF_LINES_H

#include "tiff/base.h"

TIFF_BEGIN

/* Zero-fill before use. */
typedef struct TiffDecodeLineContext {
    HDC deviceContext;          /* bitmap targets */
    HBITMAP bitmap;             /* bitmap targets */
    HGLOBAL dib;                /* the packed DIB */
    uint8_t* pixelBits;         /* first byte of the DIB's pixels */
    uint32_t height;            /* rows of the target */
    uint32_t lineBytes;         /* bytes of a decoded row to use */
    uint32_t strideOrColourUse; /* DIB targets: bytes of a DIB row; bitmaps: SetDIBits' use */
    uint32_t sampleShift;       /* right shift of 16-bit samples, 4 or 8 */
    uint32_t orientation;       /* tag 274; 4 stores row r in DIB row r, others from the top */
} TiffDecodeLineContext;

/* Copies a row of 1, 4 or 8 bits per pixel, or of 24 in DIB order, into the DIB. */
intptr_t DllFlushTiffLineDIB(void* line, uint32_t row, void* context) TIFF_NOEXCEPT;

/* Swaps red and blue of a 24-bit row in the line buffer, then copies it into the DIB. */
intptr_t DllFlushTiffLine24DIB(void* line, uint32_t row, void* context) TIFF_NOEXCEPT;

TIFF_END

#endif
