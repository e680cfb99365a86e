/* Saving packed DIBs, GDI bitmaps and the clipboard's bitmap as new pages of TIFF files.
 *
 * A compression selector is one of
 *   201 none   202 PackBits   203 LZW   204 LZW of differences   205 modified Huffman
 *   206 Group 3   207 Group 3 two-dimensional   208 Group 4   209 JPEG   210 old-style JPEG
 * and, up to 204, plus one of
 *   256 16-bit grey, samples shifted left by 8   512 the same, by 4 (both from 8 bits)
 *   768 CMYK   1024 YCbCr (both from 24 bits).
 *
 * A file that does not exist is created; pages of an existing one are never touched. Files are
 * written in Intel byte order. A page's resolution is the DIB's, or the screen's.
 *
 * For 205 to 208 pass a bilevel DIB: rows of another depth are read as bits, cut to the width. Other
 * compressions take 1, 4, 8, 16, 24 and 32 bits per pixel, JPEG up to 8 and 24: greys as one sample,
 * colours as YCbCr that shares chroma, 2 x 2. Rows from the top (a negative height) and the
 * 12-byte header are accepted. A header without a colour count gets the standard one.
 *
 * Errors of all: 1 memory, or the DIB cannot be locked; 2 the file cannot be opened; 6 writing
 * fails; 11 selector; 12 a row too wide for a two-dimensional code; 15 fill order; 16 the DIB's
 * depth; 22 and 23 JPEG library; 28 dialogs library missing; 30 the block is not a whole,
 * uncompressed DIB; 34 no bitmap; 35 the file is in Motorola byte order; 36 more than 65,535 columns
 * for JPEG; 0 with result 0 when the user cancels the dialog.
 */
#ifndef TIFF_SAVE_H
#define TIFF_SAVE_H

#include "tiff/define.h"

TIFF_BEGIN

/* What the dialogs library gets from a save with a dialog: "TiffSaveDialog" of KVDlgs.dll takes
 * the path (the bytes that the caller gave), the picture and the options, which it changes, and returns 0 to
 * cancel.
 */
typedef struct TiffSavePicture {
    TiffPageGeometry geometry;
    const void* bits; /* null */
} TiffSavePicture;
TIFF_LAYOUT(TiffSavePicture, 32, bits, 24);

typedef struct TiffSaveDialogOptions {
    char description[100]; /* ImageDescription; the path to begin with */
    char artist[100];
    uint32_t selector;
    uint32_t fillOrder;
    uint32_t photometric;
    uint32_t colourCount; /* 2 for bilevel */
} TiffSaveDialogOptions;
TIFF_LAYOUT(TiffSaveDialogOptions, 216, colourCount, 212);

/* Sets the quality of JPEG pages that the calling thread saves, 1 to 100; 75 at first.
 *
 * quality  1 to 100, small and coarse to large and exact.
 *
 * Returns 1, or 0 for another number (error 29), and the quality is unchanged then.
 * A success keeps the last error.
 */
int32_t TIFF_CALL SetTiffJpegQuality(uint32_t quality) TIFF_NOEXCEPT;

/* Returns the calling thread's quality.
 * The last error stays.
 */
uint32_t TIFF_CALL GetTiffJpegQuality(void) TIFF_NOEXCEPT;

/* Appends a DIB to a file.
 *
 * path       of the TIFF file.
 * dib        the picture; it stays the caller's.
 * selector   a compression selector.
 * dialog     non-zero shows the save dialog of the dialogs library first.
 * fillOrder  1 most significant bit first, 2 least.
 *
 * Returns 1 or 0.
 * Errors: those of all; 29 no path.
 * A success clears the last error.
 */
int32_t TIFF_CALL SaveDIBInTiffFileExt(const char* path, HGLOBAL dib, uint32_t selector, int32_t dialog,
                                       uint32_t fillOrder) TIFF_NOEXCEPT;

/* SaveDIBInTiffFileExt with fill order 1.
 *
 * path, dib, selector, dialog  as SaveDIBInTiffFileExt.
 *
 * Returns 1 or 0.
 * Errors: as SaveDIBInTiffFileExt.
 * A success clears the last error.
 */
int32_t TIFF_CALL SaveDIBInTiffFile(const char* path, HGLOBAL dib, uint32_t selector,
                                    int32_t dialog) TIFF_NOEXCEPT;

/* The same as SaveDIBInTiffFile.
 *
 * path, dib, selector, dialog  as SaveDIBInTiffFileExt.
 *
 * Returns 1 or 0.
 * Errors: as SaveDIBInTiffFileExt.
 * A success clears the last error.
 */
int32_t TIFF_CALL SaveDIBInTiffFormat(const char* path, HGLOBAL dib, uint32_t selector,
                                      int32_t dialog) TIFF_NOEXCEPT;

/* Appends a DIB whose biCompression is a colour space of 10 to 17, as LoadNonRGBTiffIntoDIB
 * leaves it, with selector 204; that value is the page's PhotometricInterpretation.
 *
 * path, dib  as SaveDIBInTiffFileExt.
 *
 * Returns 1 or 0; another colour space gives 0 and sets no error.
 * Errors: as SaveDIBInTiffFileExt.
 * A success clears the last error.
 */
int32_t TIFF_CALL SaveNonRGBDIBInTiffFile(const char* path, HGLOBAL dib) TIFF_NOEXCEPT;

/* Appends a DIB to a TIFF in memory.
 *
 * memory     the block of a TIFF in memory, which may be replaced and stays the caller's, or null for a new
 *            one.
 * dib        the picture; it stays the caller's.
 * selector   an unknown compression means none; the high byte is kept.
 * fillOrder  as SaveDIBInTiffFileExt.
 *
 * Returns the block of the TIFF, which may have moved and which the caller frees with GlobalFree, or null.
 * After a failure a new block is freed. A null DIB gives null at once, and sets no error.
 * Errors: those of all.
 * A success clears the last error.
 */
HGLOBAL TIFF_CALL SaveTiffToMemory(HGLOBAL memory, HGLOBAL dib, uint32_t selector,
                                   uint32_t fillOrder) TIFF_NOEXCEPT;

/* Appends a bitmap to a file; the device gives the rows: monochrome bitmaps bilevel, those of up to 256
 * colours with their palette, others as RGB. The resolution is the screen's.
 *
 * path               of the TIFF file.
 * bitmap             the picture; it stays the caller's.
 * selector           a compression selector; its high byte must be 0.
 * dialog, fillOrder  as SaveDIBInTiffFileExt.
 *
 * Returns 1 or 0.
 * Errors: as SaveDIBInTiffFileExt.
 * A success clears the last error.
 */
int32_t TIFF_CALL SaveBitmapInTiffFileExt(const char* path, HBITMAP bitmap, uint32_t selector, int32_t dialog,
                                          uint32_t fillOrder) TIFF_NOEXCEPT;

/* SaveBitmapInTiffFileExt with fill order 1.
 *
 * path, bitmap, selector, dialog  as SaveBitmapInTiffFileExt.
 *
 * Returns 1 or 0.
 * Errors: as SaveBitmapInTiffFileExt.
 * A success clears the last error.
 */
int32_t TIFF_CALL SaveBitmapInTiffFile(const char* path, HBITMAP bitmap, uint32_t selector,
                                       int32_t dialog) TIFF_NOEXCEPT;

/* The same as SaveBitmapInTiffFile.
 *
 * path, bitmap, selector, dialog  as SaveBitmapInTiffFileExt.
 *
 * Returns 1 or 0.
 * Errors: as SaveBitmapInTiffFileExt.
 * A success clears the last error.
 */
int32_t TIFF_CALL SaveBitmapInTiffFormat(const char* path, HBITMAP bitmap, uint32_t selector,
                                         int32_t dialog) TIFF_NOEXCEPT;

/* Appends the clipboard's bitmap to a file, fill order 2.
 *
 * path, selector, dialog  as SaveBitmapInTiffFileExt.
 *
 * Returns 1 or 0.
 * Errors: 24 no bitmap on the clipboard; 25 the clipboard cannot be opened; 26 it does not give the bitmap;
 *         others as SaveBitmapInTiffFileExt.
 * A success clears the last error.
 */
int32_t TIFF_CALL SaveTiffFileFromClipboard(const char* path, uint32_t selector,
                                            int32_t dialog) TIFF_NOEXCEPT;

/* Writes a bitmap as a bare stream, fill order 2, without a TIFF structure. An existing file is
 * replaced when the new one is whole.
 *
 * path    of the file.
 * bitmap  the picture; it stays the caller's.
 * type    5 Group 3, 6 modified Huffman, 7 Group 3 two-dimensional, 8 Group 4, 9 no compression.
 *
 * Returns 1 or 0; another type gives 0 and sets no error.
 * Errors: 6; 12; 29 no path; 34.
 * A success clears the last error.
 */
int32_t TIFF_CALL SaveBitmapInCcittFile(const char* path, HBITMAP bitmap, uint32_t type) TIFF_NOEXCEPT;

TIFF_END

#endif
