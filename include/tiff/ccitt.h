/* CCITT code over bare streams, without a TIFF directory. */
#ifndef TIFF_CCITT_H
#define TIFF_CCITT_H

#include "tiff/codecs.h"

TIFF_BEGIN

/* Decodes from the stream's current position as one strip, fill order 1.
 *
 * width, rows  pixels.
 * compression  any code of the decode drivers: 4 Group 4, 2 modified Huffman, 3 Group 3, with
 *              0x10000 two-dimensional, 0x40000 byte-aligned; also 1, 5 and 32773.
 *
 * Returns 1, or 0 with the last error set (6 when the stream has no size). width or rows of 0 give 0
 * and set no error.
 */
int32_t TIFF_CALL DecodeCcittImage(TiffStream stream, uint32_t width, uint32_t rows, uint32_t compression,
                                   void* userData, TiffLineCallback lineCallback) TIFF_NOEXCEPT;

/* The same from a given offset.
 *
 * offset     bytes from the start; 0, or a value beyond the data, decodes from the stream's
 *            current position.
 * fillOrder  2 for least significant bit first; anything else is 1.
 * byteOrder  TIFF_MOTOROLA, or anything else for Intel.
 *
 * Returns as DecodeCcittImage.
 */
int32_t TIFF_CALL DecodeCcittImageFrom(TiffStream stream, uint32_t offset, uint32_t width, uint32_t rows,
                                       uint32_t compression, uint32_t fillOrder, uint32_t byteOrder,
                                       void* userData, TiffLineCallback lineCallback) TIFF_NOEXCEPT;

/* The same for Group 4 code in records: FE 92, a 16-bit big-endian length, then the code.
 * compression and the fill order of the code are ignored. Error 5 when the first is not a record.
 */
int32_t TIFF_CALL DecodeMMRImage(TiffStream stream, uint32_t offset, uint32_t width, uint32_t rows,
                                 uint32_t compression, uint32_t fillOrder, uint32_t byteOrder, void* userData,
                                 TiffLineCallback lineCallback) TIFF_NOEXCEPT;

/* Encodes at the stream's current position as one strip, fill order 1.
 *
 * width, rows   pixels; bits after the width in a line's last byte are ignored.
 * compression   as DecodeCcittImage.
 * lineCallback  fills one line a call.
 *
 * Returns 1, or 0 with the last error set; bytes written before a failure stay. width or
 * rows of 0 give 0 and set no error.
 * Errors: 1; 6; 11; 12 lines of more than 32,768 bytes in two-dimensional code; 22 and 23 JPEG
 *         library; whatever the line routine returned.
 */
int32_t TIFF_CALL EncodeCcittImage(TiffStream stream, uint32_t width, uint32_t rows, uint32_t compression,
                                   void* userData, TiffLineCallback lineCallback) TIFF_NOEXCEPT;

/* The same with a bit order and a byte order.
 *
 * fillOrder  2 for least significant bit first; anything else is 1.
 * byteOrder  TIFF_MOTOROLA, or anything else for Intel.
 */
int32_t TIFF_CALL EncodeCcittImageTo(TiffStream stream, uint32_t width, uint32_t rows, uint32_t fillOrder,
                                     uint32_t byteOrder, uint32_t compression, void* userData,
                                     TiffLineCallback lineCallback) TIFF_NOEXCEPT;

/* Encodes as Group 4 code in records, as DecodeMMRImage reads them; compression is ignored. */
int32_t TIFF_CALL EncodeMMRImage(TiffStream stream, uint32_t width, uint32_t rows, uint32_t compression,
                                 void* userData, TiffLineCallback lineCallback) TIFF_NOEXCEPT;

/* Sets K of Group 3 two-dimensional code for the calling thread: every k-th line of a strip is
 * one-dimensional. The default is 2.
 *
 * Returns 1, or 0 when k is below 2, and K is unchanged then. The last error is not set.
 */
int32_t TIFF_CALL SetKfactor(int32_t k) TIFF_NOEXCEPT;

TIFF_END

#endif
