/* CALS raster files of type 1: a header of sixteen text records of 128 bytes, then one picture of a
 * bit a pixel in Group 4 code.
 *
 * A header crosses the interface as a block of 2,248 bytes, the first 2,048 of which are the header as
 * it stands in the file.
 */
#ifndef TIFF_CALS_H
#define TIFF_CALS_H

#include "tiff/base.h"

TIFF_BEGIN

/* The numbers of a header. */
typedef struct TiffCalsInformation {
    uint32_t rasterType;     /* "rtype", 1 */
    uint32_t orientation[2]; /* "rorient", degrees: of the pixels along a line, and from line to line */
    uint32_t pixelsPerLine;  /* "rpelcnt", first number */
    uint32_t lines;          /* "rpelcnt", second number */
    uint32_t dotsPerInch;    /* "rdensty" */
} TiffCalsInformation;
TIFF_LAYOUT(TiffCalsInformation, 24, dotsPerInch, 20);

/* The texts of a header, ANSI. Null stands for none, which is written as "NONE". */
typedef struct TiffCalsNotes {
    const char* srcdocid;
    const char* dstdocis;
    const char* txtfileid;
    const char* figid;
    const char* scrgph;
    const char* doccls;
    const char* notes;
} TiffCalsNotes;
TIFF_LAYOUT(TiffCalsNotes, 56, notes, 48);

/* Reads the header of a file. It is one when it has all its bytes and every record ends with a space
 * or a zero byte.
 *
 * path  of the CALS file.
 *
 * Returns a header block that the caller frees with GlobalFree, or null.
 * Errors: 1; 6 the file cannot be opened or read; 18 no CALS header; 29 no path.
 * A success keeps the last error.
 */
HGLOBAL TIFF_CALL ReadCALSHead(const char* path) TIFF_NOEXCEPT;

/* Finds the first record that begins with a keyword; letter case and blanks count.
 *
 * header   the 2,048 bytes of a header.
 * keyword  such as "rtype: ".
 *
 * Returns the record, 128 bytes inside the header without an end of their own, or null. It is the caller's
 * memory.
 * The last error stays.
 */
const char* TIFF_CALL FindCALSRecord(const char* header, const char* keyword) TIFF_NOEXCEPT;

/* Reads the numbers of a file's header. "dtype" and "rdensity" are taken where "rtype" and "rdensty"
 * are missing; a number of more than 32 bits reads as the largest.
 *
 * path         of the CALS file.
 * information  filled.
 *
 * Returns 1, or 0. With error 18 the record may have been filled in part.
 * Errors: as ReadCALSHead; 18 also when a record is missing, the type is not 1 or the picture has no
 *         pixels; 29 no record.
 * A success keeps the last error.
 */
int32_t TIFF_CALL ReadCALSInfo(const char* path, TiffCalsInformation* information) TIFF_NOEXCEPT;

/* Reads the texts of a file's header. "dstdocid", "txtfilid", "srcgph" and "docls" are taken where the
 * library's own keywords are missing.
 *
 * path   of the CALS file.
 * notes  gets pointers into the block that is returned, and null for texts that are empty or missing. The
 *        texts stand in the block without anything between them: each reads on through all that follow it.
 *
 * Returns a block of 2,248 bytes that the caller frees with GlobalFree, or null. The pointers hold until
 * then.
 * Errors: as ReadCALSHead; 29 also without a record.
 * A success keeps the last error.
 */
HGLOBAL TIFF_CALL ReadCALSNote(const char* path, TiffCalsNotes* notes) TIFF_NOEXCEPT;

/* Builds a header.
 *
 * information  written as it is; a number too large for its usual digits is written in full.
 * notes        null for none. Texts are cut so that the last byte of their record stays a space: keyword,
 *              colon, space and text are together at most 127 bytes.
 *
 * Returns a header block that the caller frees with GlobalFree, or null.
 * Errors: 1; 29 no information.
 * A success keeps the last error.
 */
HGLOBAL TIFF_CALL DefineCALSHead(const TiffCalsInformation* information,
                                 const TiffCalsNotes* notes) TIFF_NOEXCEPT;

/* Decodes a CALS file into a packed DIB of one bit per pixel, 0 white and 1 black.
 *
 * path             of the CALS file.
 * showInformation  non-zero shows the header first, as ShowCALSInfo.
 *
 * Returns the DIB, which the caller frees with GlobalFree, or null. A picture may come with error 5, 19 or
 * 20: it holds the rows that could be decoded, the rest is white.
 * Errors: 0 the user cancelled; 1, also for a picture of 4 GiB and more; others as ReadCALSInfo and
 *         DecodeCcittImageFrom.
 * A success clears the last error; a picture that could only be decoded in part comes with its own.
 */
HGLOBAL TIFF_CALL LoadCALSIntoDIB(const char* path, int32_t showInformation) TIFF_NOEXCEPT;

/* Saves a packed DIB of one bit per pixel as a CALS file, its horizontal resolution as the density. The
 * picture is complemented when its first colour is black.
 *
 * path         of the CALS file.
 * dib          the picture; it stays the caller's.
 * notes        the texts of the header; null for none.
 * orientation  two numbers for "rorient"; null for 90 and 270.
 * edit         non-zero lets the user edit the header first, as EditCALSHead.
 *
 * Returns 1 or 0. A file that is there is replaced when the new one is whole; after a failure it is what it
 * was.
 * Errors: 0 the user cancelled; 1; 6 the file cannot be written or replaced; 7 the path has more than 259
 *         characters; 12 lines of more than 32,768 bytes; 16 another depth; 29 no path; 30 no DIB.
 * A success clears the last error.
 */
int32_t TIFF_CALL SaveDIBInCALSFormat(const char* path, HGLOBAL dib, const TiffCalsNotes* notes,
                                      const uint32_t* orientation, int32_t edit) TIFF_NOEXCEPT;

/* Shows the header of a file in a dialog. The parent window may be null.
 *
 * parent  the window that owns the dialog, which stays open; may be null.
 * path    of the CALS file.
 *
 * Returns 1 (OK), 2 (Cancel), or 0 without a dialog.
 * Errors: 1 no dialog; 6, 18 as ReadCALSHead; 29 no path.
 * A success clears the last error.
 * Threads: each may show its own.
 */
int32_t TIFF_CALL ShowCALSInfo(HWND parent, const char* path) TIFF_NOEXCEPT;

/* Lets the user edit the seven notes in the 2,048 bytes of a header; the path is only shown. A note that
 * has no record in the header cannot be edited. A text that does not fit into its record is cut.
 *
 * parent  as ShowCALSInfo.
 * path    of the CALS file; not opened.
 * header  2,048 bytes, changed by OK.
 *
 * Returns 1 (OK), 2 (Cancel: the header is as it was), or 0 without a dialog.
 * Errors: 1 no dialog; 29 no path or no header.
 * A success clears the last error.
 * Threads: each may show its own.
 */
int32_t TIFF_CALL EditCALSHead(HWND parent, const char* path, char* header) TIFF_NOEXCEPT;

/* Line routines, under the rules of lines.h: the first takes a TiffEncodeLineContext and is the same as
 * DllFillTiffLineDIB, the second a TiffDecodeLineContext and is the same as DllFlushTiffLineDIB.
 *
 * line, row, context  as DllFillTiffLineDIB, and as DllFlushTiffLineDIB.
 *
 * Returns 0.
 * The last error stays.
 */
intptr_t TIFF_CALL DllFillCALSLineDIB(void* line, uint32_t row, void* context) TIFF_NOEXCEPT;
intptr_t TIFF_CALL DllFlushCALSLineDIB(void* line, uint32_t row, void* context) TIFF_NOEXCEPT;

TIFF_END

#endif
