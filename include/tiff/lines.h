/* Line routines for the drivers, and the records that they take as user data. A line routine
 * does not check its record, may rewrite the line buffer, and always returns 0.
 */
#ifndef TIFF_LINES_H
#define TIFF_LINES_H

#include "tiff/base.h"

TIFF_BEGIN

/* Zero-fill before use. */
typedef struct TiffDecodeLineContext {
    HDC deviceContext;          /* bitmap targets */
    HBITMAP bitmap;             /* bitmap targets */
    HGLOBAL dib;                /* the packed DIB; bitmaps: its header and colours */
    uint8_t* pixelBits;         /* first byte of the DIB's pixels */
    uint32_t height;            /* rows of the target */
    uint32_t lineBytes;         /* bytes of a decoded row to use */
    uint32_t strideOrColourUse; /* DIB targets: bytes of a DIB row; bitmaps: SetDIBits' use */
    uint32_t sampleShift;       /* right shift of 16-bit samples, 4 or 8 */
    uint32_t orientation;       /* tag 274; 4 stores row r in DIB row r, others from the top */
} TiffDecodeLineContext;
TIFF_LAYOUT(TiffDecodeLineContext, 56, orientation, 48);

/* Copies a row of 1, 4 or 8 bits per pixel, or of 24 in DIB order, into the DIB.
 *
 * line     the line buffer.
 * row      number of the row, counted from 0.
 * context  a TiffDecodeLineContext.
 *
 * Returns 0.
 * The last error stays.
 */
intptr_t TIFF_CALL DllFlushTiffLineDIB(void* line, uint32_t row, void* context) TIFF_NOEXCEPT;

/* Swaps red and blue of a 24-bit row in the line buffer, then copies it into the DIB.
 *
 * line, row, context  as DllFlushTiffLineDIB.
 *
 * Returns 0.
 * The last error stays.
 */
intptr_t TIFF_CALL DllFlushTiffLine24DIB(void* line, uint32_t row, void* context) TIFF_NOEXCEPT;

/* Puts a row into the bitmap as the header describes it. Orientation is ignored: rows come from the
 * top. GDI reads the row in whole 32-bit words. The bitmap must not be selected anywhere.
 *
 * line, row, context  as DllFlushTiffLineDIB.
 *
 * Returns 0.
 * The last error stays.
 */
intptr_t TIFF_CALL DllFlushTiffLine(void* line, uint32_t row, void* context) TIFF_NOEXCEPT;

/* Swaps red and blue of a 24-bit row in the line buffer, then puts it into the bitmap.
 *
 * line, row, context  as DllFlushTiffLineDIB.
 *
 * Returns 0.
 * The last error stays.
 */
intptr_t TIFF_CALL DllFlushTiffLine24(void* line, uint32_t row, void* context) TIFF_NOEXCEPT;

/* Zero-fill before use. */
typedef struct TiffEncodeLineContext {
    HDC deviceContext; /* bitmap sources */
    HBITMAP bitmap;    /* bitmap sources */
    void* unused;
    BITMAPINFO* bitmapInfo;     /* bitmap sources; GetDIBits writes the colours into it */
    const uint8_t* pixelBits;   /* first byte of the DIB's pixels */
    uint32_t height;            /* rows of the DIB */
    uint32_t lineBytes;         /* bytes of a row to produce, never more than the line buffer */
    uint32_t strideOrColourUse; /* DIB sources: bytes of a DIB row; bitmaps: GetDIBits' use */
    uint32_t sampleShift;       /* left shift of 8-bit samples widened to 16 bits, 8 or 4 */
    uint32_t invert;            /* non-zero: complement every byte on its way out */
} TiffEncodeLineContext;
TIFF_LAYOUT(TiffEncodeLineContext, 64, invert, 56);

/* Copies a row of 1, 4 or 8 bits per pixel out of the DIB, complemented when `invert` is set.
 *
 * line     the line buffer.
 * row      number of the row, counted from 0.
 * context  a TiffEncodeLineContext.
 *
 * Returns 0.
 * The last error stays.
 */
intptr_t TIFF_CALL DllFillTiffLineDIB(void* line, uint32_t row, void* context) TIFF_NOEXCEPT;

/* Copies a 24-bit row out of the DIB and swaps red and blue.
 *
 * line, row, context  as DllFillTiffLineDIB.
 *
 * Returns 0.
 * The last error stays.
 */
intptr_t TIFF_CALL DllFillTiffLineDIB24Bit(void* line, uint32_t row, void* context) TIFF_NOEXCEPT;

/* Fetches a row of the bitmap in the depth of the bitmap information, in whole
 * 32-bit words. The bitmap must not be selected anywhere.
 *
 * line, row, context  as DllFillTiffLineDIB.
 *
 * Returns 0.
 * The last error stays.
 */
intptr_t TIFF_CALL DllFillTiffLine(void* line, uint32_t row, void* context) TIFF_NOEXCEPT;

/* DllFillTiffLine for 1 bit per pixel, every 16-bit word that holds pixels complemented: 1 is black.
 *
 * line, row, context  as DllFillTiffLineDIB.
 *
 * Returns 0.
 * The last error stays.
 */
intptr_t TIFF_CALL DllFillMonoTiffLine(void* line, uint32_t row, void* context) TIFF_NOEXCEPT;

/* DllFillTiffLine for 24 bits per pixel, red and blue swapped.
 *
 * line, row, context  as DllFillTiffLineDIB.
 *
 * Returns 0.
 * The last error stays.
 */
intptr_t TIFF_CALL DllFillTiffLineBitmap24Bit(void* line, uint32_t row, void* context) TIFF_NOEXCEPT;

/* As DllFillTiffLine, but the record needs only device context and bitmap: the bitmap information is
 * that of the CCITT file which the calling thread is saving. Without one the line stays as it is.
 *
 * line, row, context  as DllFillTiffLineDIB.
 *
 * Returns 0.
 * The last error stays.
 */
intptr_t TIFF_CALL DllFillCcittLine(void* line, uint32_t row, void* context) TIFF_NOEXCEPT;

TIFF_END

#endif
