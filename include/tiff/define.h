/* Making pages: a page is defined in memory tag by tag, its picture is encoded, and its
 * directory is written at the end of the file and linked to the last one.
 *
 *     page = DefineTiffImage(file);
 *     DefineGeneralTags(file, page, &geometry); DefineTiffImageInfo(...); ...
 *     EncodeTiffImage(file, page, userData, lineRoutine);   writes the directory too
 */
#ifndef TIFF_DEFINE_H
#define TIFF_DEFINE_H

#include "tiff/base.h"

TIFF_BEGIN

/* The size of a picture; the members lie as in the system's BITMAP. */
typedef struct TiffPageGeometry {
    int32_t kind;  /* ignored */
    int32_t width; /* pixels */
    int32_t height;
    uint32_t rowBytes; /* ignored */
    uint16_t planes;
    uint16_t bitsPerPlane; /* times planes: bits per pixel */
} TiffPageGeometry;
TIFF_LAYOUT(TiffPageGeometry, 20, bitsPerPlane, 18);

/* Makes a new page without tags, which counts as loaded.
 *
 * file  an open TIFF file; it stays open.
 *
 * Returns its number, or -1. The page takes the first number whose tags were never loaded. In a file of
 * which no page was loaded that is 0, and this handle then no longer reaches the old page 0. The pages in
 * the file itself stay as they are, and the new one becomes its last. Load the pages first, or open the
 * file again, to number them in file order. Errors: 1 memory, or the file has its 100,000 pages already; 34
 * not a valid handle.
 * A success keeps the last error.
 */
int32_t TIFF_CALL DefineTiffImage(HGLOBAL file) TIFF_NOEXCEPT;

/* Gives a loaded or defined page a tag, in place of one with the same number.
 *
 * file    an open TIFF file; it stays open.
 * page    number of a loaded or defined page.
 * tag     1 to 65535.
 * values  count values in the processor's order, copied.
 * type    field type: 3 SHORT; 4 and 9 LONG; 5 RATIONAL, two uint32_t each, numerator first; the values of
 *         any other type are single bytes.
 * count   number of values.
 *
 * Returns 1, or 0 with error 1 (memory; the page keeps its tags), 3, 27 or 29 (null values, or a tag above
 * 65535).
 * A success keeps the last error.
 */
int32_t TIFF_CALL DefineTiffImageInfoBuffer(HGLOBAL file, uint32_t page, uint32_t tag, const void* values,
                                            uint32_t type, uint32_t count) TIFF_NOEXCEPT;

/* Gives a page a tag with a single value.
 *
 * file, page, tag, type  as DefineTiffImageInfoBuffer.
 * value                  its low bytes are used, as the type's size says; a RATIONAL has its numerator in
 *                        the low half and its denominator in the high one.
 *
 * Returns as DefineTiffImageInfoBuffer.
 * Errors: as DefineTiffImageInfoBuffer.
 * A success keeps the last error.
 */
int32_t TIFF_CALL DefineTiffImageInfo(HGLOBAL file, uint32_t page, uint32_t tag, uint32_t type,
                                      uint64_t value) TIFF_NOEXCEPT;

/* Defines the tags of a picture's size: ImageWidth, ImageLength, RowsPerStrip, BitsPerSample,
 * and for 24 bits per pixel SamplesPerPixel and PlanarConfiguration. Strips hold about 8 KB and
 * at least one row. A CCITT page is one strip: define its Compression before. For old-style JPEG
 * the picture is one tile, and the JPEG tags come too.
 *
 * file      an open TIFF file; it stays open.
 * page      number of a loaded or defined page.
 * geometry  height may be negative, as in a DIB stored from the top; its sign is dropped. All numbers
 *           become SHORTs, which keep the low 16 bits of a width or height above 65535: define those tags
 *           again as LONGs.
 *
 * Returns 0 or the code: 1 a tag could not be defined; 10 the width is not positive; 16 bits per pixel
 * other than 1, 4, 8, 16 and 24; 29 null geometry. Setting the last error is left to the caller.
 * A success keeps the last error.
 */
uint32_t TIFF_CALL DefineGeneralTags(HGLOBAL file, uint32_t page,
                                     const TiffPageGeometry* geometry) TIFF_NOEXCEPT;

/* Defines the tags of a special sample layout, in place of those of DefineGeneralTags.
 *
 * file  an open TIFF file; it stays open.
 * page  number of a loaded or defined page.
 * kind  256 16-bit grey; 512 the same with samples up to 4095; 768 CMYK; 1024 YCbCr without subsampling;
 *       any other kind has no tags.
 *
 * Returns 0, or 1 if a tag could not be defined.
 * Errors: as DefineTiffImageInfoBuffer.
 * A success keeps the last error.
 */
uint32_t TIFF_CALL DefineSpecialTags(HGLOBAL file, uint32_t page, uint32_t kind) TIFF_NOEXCEPT;

/* Defines XResolution and YResolution; ResolutionUnit is left alone.
 *
 * file  an open TIFF file; it stays open.
 * page  number of a loaded or defined page.
 * dpi   horizontal in the low 16 bits, vertical in the high ones.
 *
 * Returns 0, or 10, which is then also the last error.
 * A success keeps the last error.
 */
uint32_t TIFF_CALL SetTiffImageDPI(HGLOBAL file, uint32_t page, uint32_t dpi) TIFF_NOEXCEPT;

/* Writes the directory of a page at the end of the file and links it, in the byte order of the file
 * handle. EncodeTiffImage does so itself: this is for pages whose strips and strip tags the caller has
 * written. A new file is created, or an old one emptied, and gets a header first. A TIFF in memory is
 * written to its block.
 *
 * file  an open TIFF file; it stays open.
 * page  number of a loaded or defined page.
 *
 * Returns 0 or the code, which is also the last error with one exception: 1 memory, or the page is not
 * loaded (last error 3 or 27); 6. After a failure the pages of the file are as before.
 * A success clears the last error.
 */
uint32_t TIFF_CALL WriteTiffImageDirectory(HGLOBAL file, uint32_t page) TIFF_NOEXCEPT;

TIFF_END

#endif
