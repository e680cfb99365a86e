/* Packed DIBs read in place: where the colours, the rows and the black pixels are. Lock the block with
 * GlobalLock; its address is that of the header. Both kinds of header serve. The DIB must be whole.
 *
 *     BITMAPINFOHEADER* header = GlobalLock(dib);
 *     StretchDIBits(dc, 0, 0, width, height, 0, 0, header->biWidth, header->biHeight,
 *                   TiffDIBBits(header), (BITMAPINFO*)header, DIB_RGB_COLORS, SRCCOPY);
 */
#ifndef TIFF_DIB_H
#define TIFF_DIB_H

#include "tiff/base.h"

#if defined(_MSC_VER) && !defined(__cplusplus)
#define TIFF_INLINE static __inline
#else
#define TIFF_INLINE static inline
#endif

TIFF_BEGIN

/* Non-zero for the short header, a BITMAPCOREHEADER. */
TIFF_INLINE int TiffDIBIsCore(const void* header)
{
    return ((const BITMAPCOREHEADER*)header)->bcSize == sizeof(BITMAPCOREHEADER);
}

/* Bits of a pixel. */
TIFF_INLINE uint32_t TiffDIBDepth(const void* header)
{
    return TiffDIBIsCore(header) ? ((const BITMAPCOREHEADER*)header)->bcBitCount
                                 : ((const BITMAPINFOHEADER*)header)->biBitCount;
}

/* Pixels of a row. */
TIFF_INLINE uint32_t TiffDIBWidth(const void* header)
{
    return TiffDIBIsCore(header) ? ((const BITMAPCOREHEADER*)header)->bcWidth
                                 : (uint32_t)((const BITMAPINFOHEADER*)header)->biWidth;
}

/* Rows, below 0 when the first stored row is the upper one. */
TIFF_INLINE int32_t TiffDIBHeight(const void* header)
{
    return TiffDIBIsCore(header) ? ((const BITMAPCOREHEADER*)header)->bcHeight
                                 : (int32_t)((const BITMAPINFOHEADER*)header)->biHeight;
}

/* Bytes from one row to the next. */
TIFF_INLINE uint32_t TiffDIBStride(const void* header)
{
    return (uint32_t)(((uint64_t)TiffDIBWidth(header) * TiffDIBDepth(header) + 31) / 32 * 4);
}

/* Colours in the table. */
TIFF_INLINE uint32_t TiffDIBColourCount(const void* header)
{
    const uint32_t depth = TiffDIBDepth(header);
    const uint32_t stated = TiffDIBIsCore(header) ? 0 : ((const BITMAPINFOHEADER*)header)->biClrUsed;
    return stated != 0 ? stated : depth <= 8 ? 1u << depth : 0;
}

/* Bytes of a colour in the table: blue, green, red and perhaps a fourth. */
TIFF_INLINE uint32_t TiffDIBColourBytes(const void* header)
{
    return TiffDIBIsCore(header) ? 3 : 4;
}

/* The table of colours. Three masks stand in front of it when biCompression says so (3, BI_BITFIELDS); longer
 * headers hold them.
 */
TIFF_INLINE const uint8_t* TiffDIBColours(const void* header)
{
    const BITMAPINFOHEADER* info = (const BITMAPINFOHEADER*)header;
    const int masks = info->biSize == sizeof(BITMAPINFOHEADER) && info->biCompression == 3;
    return (const uint8_t*)header + info->biSize + (masks ? 12 : 0);
}

/* The first byte of the pixels. */
TIFF_INLINE uint8_t* TiffDIBBits(void* header)
{
    const size_t before = (size_t)(TiffDIBColours(header) - (const uint8_t*)header);
    return (uint8_t*)header + before + (size_t)TiffDIBColourCount(header) * TiffDIBColourBytes(header);
}

/* A row.
 *
 * row  counted from 0 at the top of the picture, below the absolute height.
 */
TIFF_INLINE uint8_t* TiffDIBRow(void* header, uint32_t row)
{
    const int32_t height = TiffDIBHeight(header);
    const uint32_t stored = height < 0 ? row : (uint32_t)height - 1 - row;
    return TiffDIBBits(header) + (size_t)stored * TiffDIBStride(header);
}

/* Which value of a pixel is black in a DIB of one bit a pixel: the number, 0 or 1, of the darker colour; 0
 * when they are alike.
 */
TIFF_INLINE uint32_t TiffDIBBlack(const void* header)
{
    const uint8_t* first = TiffDIBColours(header);
    const uint8_t* second = first + TiffDIBColourBytes(header);
    return first[0] * 11 + first[1] * 59 + first[2] * 30 > second[0] * 11 + second[1] * 59 + second[2] * 30;
}

TIFF_END

#endif
