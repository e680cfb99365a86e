/* Packed DIBs made of others: parts, other sizes, turned, black and white. */
#ifndef TIFF_CROP_H
#define TIFF_CROP_H

#include "tiff/base.h"

TIFF_BEGIN

/* A flag of the stretching functions. A bilevel picture, or one with a palette of greys alone, becomes one of
 * 256 greys, other palettes become 24 bits. Along an axis that is reduced, each pixel is the average of the
 * area that it covers.
 */
#define TIFF_SMOOTH 1u

/* CropDIB, StretchDIB and CropStretchDIB take a packed DIB of 1, 4, 8 or 24 bits per pixel, rows either way
 * up, and leave it as it is. They return a new one, rows from the bottom, that the caller frees with
 * GlobalFree, or null.
 *
 * Coordinates are pixels from the upper left as the picture looks. The resolution changes with the size, so
 * that the picture stays as large on paper.
 *
 * Errors of all: 1 memory, or the DIB cannot be locked; 16 another depth; 29 a size below 1, a part that is
 * not inside the picture, or no part; 30 the block is not a whole, uncompressed DIB, or has more colours
 * than its depth.
 */

/* Makes a DIB of a part of another.
 *
 * dib            the picture; it stays the caller's.
 * left, top      of the part, in pixels from the upper left.
 * width, height  of the part, in pixels.
 *
 * Returns the new DIB, which the caller frees with GlobalFree, or null.
 * Errors: those of all.
 * A success clears the last error.
 */
HGLOBAL TIFF_CALL CropDIB(HGLOBAL dib, int32_t left, int32_t top, int32_t width,
                          int32_t height) TIFF_NOEXCEPT;

/* Makes a DIB of the picture in another size. Without TIFF_SMOOTH each pixel of the result is the one under
 * its centre.
 *
 * dib            the picture; it stays the caller's.
 * width, height  of the result, in pixels.
 * flags          0 or TIFF_SMOOTH.
 *
 * Returns the new DIB, which the caller frees with GlobalFree, or null.
 * Errors: those of all.
 * A success clears the last error.
 */
HGLOBAL TIFF_CALL StretchDIB(HGLOBAL dib, int32_t width, int32_t height, uint32_t flags) TIFF_NOEXCEPT;

/* StretchDIB with a part of the picture.
 *
 * dib                   as StretchDIB.
 * part                  in pixels; right and bottom are the first ones outside.
 * width, height, flags  as StretchDIB.
 *
 * Returns the new DIB, which the caller frees with GlobalFree, or null.
 * Errors: those of all.
 * A success clears the last error.
 */
HGLOBAL TIFF_CALL CropStretchDIB(HGLOBAL dib, const RECT* part, int32_t width, int32_t height,
                                 uint32_t flags) TIFF_NOEXCEPT;

/* Makes a DIB of the picture turned clockwise. The resolutions turn with it. Depth, colours and colour space
 * stay.
 *
 * dib       the picture, a packed DIB of any depth up to 32 bits per pixel, rows either way up; it stays the
 *           caller's.
 * quarters  of a full turn; negative ones turn the other way, and full turns do not count.
 *
 * Returns the new DIB, rows from the bottom, which the caller frees with GlobalFree, or null.
 * Errors: 1 memory, or the DIB cannot be locked; 16 a depth that no DIB has; 30 the block is not a whole,
 *         uncompressed DIB, or has more colours than its depth.
 * A success clears the last error.
 */
HGLOBAL TIFF_CALL RotateDIB(HGLOBAL dib, int32_t quarters) TIFF_NOEXCEPT;

/* Methods of DitherDIB. */
#define TIFF_DITHER_THRESHOLD 0u /* black or white by each pixel alone: for text and drawings */
#define TIFF_DITHER_ORDERED 1u   /* by a square of 16 x 16 limits: the same dots for the same grey */
#define TIFF_DITHER_DIFFUSION 2u /* errors go on to the pixels around: the finest greys */

/* Makes a black and white DIB of a picture: white is colour 0, black 1. A pixel counts as grey as it looks,
 * 0.299 red + 0.587 green + 0.114 blue of the stored values. The diffused picture keeps the mean of these
 * greys, the ordered one that of every 16 x 16 pixels. Size and resolution stay.
 *
 * dib        the picture, a packed DIB of 1, 4, 8, 16, 24 or 32 bits per pixel, rows either way up; it
 *            stays the caller's.
 * method     one of the constants above.
 * threshold  of TIFF_DITHER_THRESHOLD alone: the least grey that becomes white, 1 to 255; 0 means 128. The
 *            other methods take 0 to 255 and have no use for it.
 *
 * Returns the new DIB, rows from the bottom, which the caller frees with GlobalFree, or null.
 * Errors: 1 memory, or the DIB cannot be locked; 16 a depth that no DIB has, or a colour space other than
 *         red, green and blue; 29 another method, or a threshold above 255; 30 the block is not a whole,
 *         uncompressed DIB, or has more colours than its depth.
 * A success clears the last error.
 */
HGLOBAL TIFF_CALL DitherDIB(HGLOBAL dib, uint32_t method, uint32_t threshold) TIFF_NOEXCEPT;

TIFF_END

#endif
