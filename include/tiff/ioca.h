/* IOCA image segments and the MO:DCA field around them: the parameters before and after the image data
 * of one black and white picture.
 *
 * The image data are the caller's: records of FE 92, a 16-bit length and the code, as EncodeMMRImage
 * writes and DecodeMMRImage reads them. Numbers in these files are big-endian.
 *
 * `file` is a file handle of the system, positioned by the caller, who also closes it.
 */
#ifndef TIFF_IOCA_H
#define TIFF_IOCA_H

#include "tiff/base.h"

TIFF_BEGIN

/* Eleven 16-bit fields. Writing uses resolutions, width and height; reading fills all. */
#pragma pack(push, 2)
typedef struct TiffIocaDescription {
    uint32_t segmentName;          /* up to 4 bytes, the first one highest */
    uint16_t objectType;           /* of the image content; written as 255 */
    uint16_t horizontalResolution; /* pixels per 10 inches */
    uint16_t verticalResolution;
    uint16_t width; /* pixels */
    uint16_t height;
    uint16_t encoding;   /* compression identifier; written as 1 */
    uint16_t dataLength; /* code bytes in the first record; 0 without one */
    uint32_t dataOffset; /* position of the first record in the file; 0 without one */
} TiffIocaDescription;
TIFF_LAYOUT(TiffIocaDescription, 22, dataOffset, 18);
#pragma pack(pop)

/* Writes the 26 bytes in front of the image data.
 *
 * file         a file handle of the system; it stays the caller's.
 * description  of the picture.
 *
 * Returns 1, or 0; what was written stays.
 * Errors: 6; 29 no description.
 * A success keeps the last error.
 */
int32_t TIFF_CALL WriteIOCAHeader(HANDLE file, const TiffIocaDescription* description) TIFF_NOEXCEPT;

/* Writes the 4 bytes behind the image data.
 *
 * file  a file handle of the system; it stays the caller's.
 *
 * Returns 1 or 0.
 * The last error stays.
 */
int32_t TIFF_CALL WriteIOCATail(HANDLE file) TIFF_NOEXCEPT;

/* Writes D3 EE FB, then what WriteIOCAHeader writes. Length, flags and sequence number of the field are
 * the caller's.
 *
 * file, description  as WriteIOCAHeader.
 *
 * Returns as WriteIOCAHeader.
 * Errors: as WriteIOCAHeader.
 * A success keeps the last error.
 */
int32_t TIFF_CALL WriteMODCAHeader(HANDLE file, const TiffIocaDescription* description) TIFF_NOEXCEPT;

/* Ends a file: writes the number of bytes from offset 28 to the current position into the two bytes at
 * offset 28, then 93 00 71 00 D3 A9 C7 at the current position. Of a larger number the low 16 bits are
 * written. The caller lays the file out so that a length belongs there.
 *
 * file  a file handle of the system; it stays the caller's.
 *
 * Returns 1, or 0 with error 6.
 * A success keeps the last error.
 */
int32_t TIFF_CALL WriteMODCATail(HANDLE file) TIFF_NOEXCEPT;

/* Finds the next image segment in a file, and reads the parameters in front of its image data. The
 * position is then behind the last byte that was read: after a success behind the header of the first
 * record, or behind the first byte that is none.
 *
 * file         a file handle of the system; it stays the caller's.
 * description  zeroed first; after a failure it may be filled in part.
 *
 * Returns 1 or 0. When the file ends before a segment begins, the file has been closed: a byte 70 must be
 * there for a caller who wants to keep it.
 * The last error stays.
 */
int32_t TIFF_CALL ReadIOCAHeader(HANDLE file, TiffIocaDescription* description) TIFF_NOEXCEPT;

/* ReadIOCAHeader behind the bytes D3 EE FB, which must begin within the next 2,048. Without them the file
 * stays open.
 *
 * file, description  as ReadIOCAHeader.
 *
 * Returns as ReadIOCAHeader.
 * The last error stays.
 */
int32_t TIFF_CALL ReadMODCAHeader(HANDLE file, TiffIocaDescription* description) TIFF_NOEXCEPT;

TIFF_END

#endif
