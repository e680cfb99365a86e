/* CCITT code over bare streams, without a TIFF directory. */
#ifndef TIFF_CCITT_H
#define TIFF_CCITT_H

#include "tiff/codecs.h"

TIFF_BEGIN

/* Decodes from the stream's current position as one strip, fill order 1.
 *
 * stream        an open stream; it stays open.
 * width, rows   pixels.
 * compression   any code of the decode drivers: 4 Group 4, 2 modified Huffman, 3 Group 3, with 0x10000
 *               two-dimensional, 0x40000 byte-aligned; also 1, 5 and 32773.
 * userData      passed to the line routine.
 * lineCallback  receives the lines.
 *
 * Returns 1, or 0 with the last error set (6 when the stream has no size). width or rows of 0 give 0 and
 * set no error.
 * A success clears the last error.
 */
int32_t TIFF_CALL DecodeCcittImage(TiffStream stream, uint32_t width, uint32_t rows, uint32_t compression,
                                   void* userData, TiffLineCallback lineCallback) TIFF_NOEXCEPT;

/* DecodeCcittImage from a given offset.
 *
 * stream                    as DecodeCcittImage.
 * offset                    bytes from the start; 0, or a value beyond the data, decodes from the stream's
 *                           current position.
 * width, rows, compression  as DecodeCcittImage.
 * fillOrder                 2 for least significant bit first; anything else is 1.
 * byteOrder                 TIFF_MOTOROLA, or anything else for Intel.
 * userData, lineCallback    as DecodeCcittImage.
 *
 * Returns as DecodeCcittImage.
 * Errors: as DecodeCcittImage.
 * A success clears the last error.
 */
int32_t TIFF_CALL DecodeCcittImageFrom(TiffStream stream, uint32_t offset, uint32_t width, uint32_t rows,
                                       uint32_t compression, uint32_t fillOrder, uint32_t byteOrder,
                                       void* userData, TiffLineCallback lineCallback) TIFF_NOEXCEPT;

/* DecodeCcittImageFrom for Group 4 code in records: FE 92, a 16-bit big-endian length, then the code.
 *
 * stream, offset, width, rows        as DecodeCcittImageFrom.
 * compression                        ignored.
 * fillOrder                          ignored for the code.
 * byteOrder, userData, lineCallback  as DecodeCcittImageFrom.
 *
 * Returns as DecodeCcittImage.
 * Errors: 5 also when the first is not a record; others as DecodeCcittImage.
 * A success clears the last error.
 */
int32_t TIFF_CALL DecodeMMRImage(TiffStream stream, uint32_t offset, uint32_t width, uint32_t rows,
                                 uint32_t compression, uint32_t fillOrder, uint32_t byteOrder, void* userData,
                                 TiffLineCallback lineCallback) TIFF_NOEXCEPT;

/* Encodes at the stream's current position as one strip, fill order 1.
 *
 * stream        an open stream; it stays open.
 * width, rows   pixels; bits after the width in a line's last byte are ignored.
 * compression   as DecodeCcittImage.
 * userData      passed to the line routine.
 * lineCallback  fills one line a call.
 *
 * Returns 1, or 0 with the last error set; bytes written before a failure stay. width or rows of 0 give 0
 * and set no error.
 * Errors: 1; 6; 11; 12 lines of more than 32,768 bytes in two-dimensional code; 22 and 23 JPEG library;
 *         whatever the line routine returned.
 * A success clears the last error.
 */
int32_t TIFF_CALL EncodeCcittImage(TiffStream stream, uint32_t width, uint32_t rows, uint32_t compression,
                                   void* userData, TiffLineCallback lineCallback) TIFF_NOEXCEPT;

/* EncodeCcittImage with a bit order and a byte order.
 *
 * stream, width, rows  as EncodeCcittImage.
 * fillOrder            2 for least significant bit first; anything else is 1.
 * byteOrder            TIFF_MOTOROLA, or anything else for Intel.
 * compression, userData, lineCallback  as EncodeCcittImage.
 *
 * Returns as EncodeCcittImage.
 * Errors: as EncodeCcittImage.
 * A success clears the last error.
 */
int32_t TIFF_CALL EncodeCcittImageTo(TiffStream stream, uint32_t width, uint32_t rows, uint32_t fillOrder,
                                     uint32_t byteOrder, uint32_t compression, void* userData,
                                     TiffLineCallback lineCallback) TIFF_NOEXCEPT;

/* Encodes as Group 4 code in records, as DecodeMMRImage reads them.
 *
 * stream, width, rows     as EncodeCcittImage.
 * compression             ignored.
 * userData, lineCallback  as EncodeCcittImage.
 *
 * Returns as EncodeCcittImage.
 * Errors: as EncodeCcittImage.
 * A success clears the last error.
 */
int32_t TIFF_CALL EncodeMMRImage(TiffStream stream, uint32_t width, uint32_t rows, uint32_t compression,
                                 void* userData, TiffLineCallback lineCallback) TIFF_NOEXCEPT;

/* Sets K of Group 3 two-dimensional code for the calling thread: every k-th line of a strip is
 * one-dimensional. The default is 2.
 *
 * k  2 or more.
 *
 * Returns 1, or 0 when k is below 2, and K is unchanged then.
 * The last error stays.
 */
int32_t TIFF_CALL SetKfactor(int32_t k) TIFF_NOEXCEPT;

TIFF_END

#endif
