/* A page's tags and the properties that follow from them. A page must be loaded with GetTiffImage first. */
#ifndef TIFF_DIRECTORY_H
#define TIFF_DIRECTORY_H

#include "tiff/base.h"

TIFF_BEGIN

/* Loads the tags of a page. A value that cannot be read fails the load when its tag describes
 * the picture (IsRequiredTag); the tags after it are then not loaded.
 *
 * file  an open TIFF file; it stays open.
 * page  counted from 0.
 *
 * Returns 1, also when the page was loaded already, or 0; a null file sets no error.
 * Errors: 1 memory; 3 no such page; 6 unreadable, or its directory was never written.
 * A success clears the last error, but keeps it for a page that was loaded already.
 */
int32_t TIFF_CALL GetTiffImage(HGLOBAL file, uint32_t page) TIFF_NOEXCEPT;

/* Gets the first value of a tag.
 *
 * file  an open TIFF file; it stays open.
 * page  number of a loaded page, counted from 0.
 * tag   its number.
 * out   receives, by the tag's type: BYTE one byte; SHORT and LONG a uint32_t; RATIONAL two uint32_t,
 *       numerator and denominator; nothing for other types. May be null.
 *
 * Returns 1 if the page has the tag, else 0 with error 3, 13 (no such tag) or 27.
 * A success keeps the last error.
 */
int32_t TIFF_CALL GetTiffImageInfo(HGLOBAL file, uint32_t page, uint32_t tag, void* out) TIFF_NOEXCEPT;

/* Gets all values of a tag, or the list of tags.
 *
 * file      an open TIFF file; it stays open.
 * page      number of a loaded page, counted from 0.
 * tag       0 asks for the tag numbers of the page as an array of uint32_t, type 4.
 * outBlock  receives a movable block with the values in the processor's order, at least 4 bytes for a tag
 *           that was read from a file. The caller frees it.
 * outType   receives the field type; JPEGTables (347) is always reported as 7.
 * outCount  receives the number of values. Each of the three may be null.
 *
 * Returns 1, or 0 with error 1, 3, 13 or 27.
 * A success keeps the last error.
 */
int32_t TIFF_CALL GetTiffImageInfoBuffer(HGLOBAL file, uint32_t page, uint32_t tag, HGLOBAL* outBlock,
                                         uint32_t* outType, uint32_t* outCount) TIFF_NOEXCEPT;

/* Describes the page as a DIB header: size, bits per pixel, colours, resolution in pixels per
 * metre. A page without a resolution gets the screen's.
 *
 * file    an open TIFF file; it stays open.
 * page    number of a loaded page, counted from 0.
 * header  filled.
 *
 * Returns 0 or the error code, which is also the last error: 3, 27; 10 no width or length; 16 planes stored
 * apart or a bit count other than 1, 4, 8, 16, 24 and 32.
 * A success clears the last error.
 */
uint32_t TIFF_CALL GetTiffDimensions(HGLOBAL file, uint32_t page, BITMAPINFOHEADER* header) TIFF_NOEXCEPT;

/* Gets the resolution in dots per inch: horizontal in the low 16 bits, vertical in the high.
 *
 * file  an open TIFF file; it stays open.
 * page  number of a loaded page, counted from 0.
 * out   receives the resolution.
 *
 * Returns 0, or the error code (3, 27) with out set to 0.
 * A success clears the last error.
 */
uint32_t TIFF_CALL GetTiffImageDPI(HGLOBAL file, uint32_t page, uint32_t* out) TIFF_NOEXCEPT;

/* Builds the DIB header and colour table of a page.
 *
 * file  an open TIFF file; it stays open.
 * page  number of a loaded page, counted from 0.
 *
 * Returns a movable block with a BITMAPINFOHEADER and biClrUsed RGBQUADs, or null with the errors of
 * GetTiffDimensions, 1, 10 (palette page without ColorMap) or 16 (32 bits per pixel and not CMYK). The
 * caller frees it.
 * A success clears the last error.
 */
HGLOBAL TIFF_CALL GetTiffRGBQuad(HGLOBAL file, uint32_t page) TIFF_NOEXCEPT;

/* Returns the rows in a strip, never more than the page has; 0 without an ImageLength.
 *
 * file  an open TIFF file; it stays open.
 * page  number of a loaded page, counted from 0.
 *
 * Errors: 3; 27.
 * A success keeps the last error.
 */
uint32_t TIFF_CALL GetTiffRowsPerStrip(HGLOBAL file, uint32_t page) TIFF_NOEXCEPT;

/* Returns the number of strips; 0 without StripOffsets.
 *
 * file  an open TIFF file; it stays open.
 * page  number of a loaded page, counted from 0.
 *
 * Errors: 3; 27.
 * A success keeps the last error.
 */
uint32_t TIFF_CALL GetTiffStripCount(HGLOBAL file, uint32_t page) TIFF_NOEXCEPT;

/* Returns 1 when a page cannot be loaded without the value of this tag, else 0.
 *
 * tag  its number.
 *
 * The last error stays.
 */
int32_t TIFF_CALL IsRequiredTag(uint32_t tag) TIFF_NOEXCEPT;

/* Makes a logical palette of the colours of a page, 256 at most. Opens and closes the file.
 *
 * path  of the TIFF file.
 * page  counted from 0.
 *
 * Returns the palette, which the caller frees with DeleteObject, or null: for a page of 1 bit per pixel,
 * for one without colours, and with the errors of OpenTiffFile, GetTiffImage and GetTiffRGBQuad.
 * A success clears the last error.
 */
HPALETTE TIFF_CALL GetTiffImagePalette(const char* path, uint32_t page) TIFF_NOEXCEPT;

/* Finds the colour space of a page that LoadNonRGBTiffIntoDIB can load.
 *
 * path  of the TIFF file.
 * page  counted from 0.
 *
 * Returns PhotometricInterpretation 7 to 17, 0 for an ordinary page, or 0xFFFFFFFF when the page cannot be
 * loaded.
 * Errors: 3 no such page; 29 no path; others as LoadNonRGBTiffIntoDIB.
 * A success clears the last error; a picture that could only be decoded in part comes with its own.
 */
uint32_t TIFF_CALL GetTiffColorSpace(const char* path, int32_t page) TIFF_NOEXCEPT;

TIFF_END

#endif
