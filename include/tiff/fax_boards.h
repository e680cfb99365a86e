/* Pages and files in the narrow forms that fax boards and fax servers read.
 *
 * The saves append a DIB as a page, as SaveDIBInTiffFileExt does, with these differences:
 *
 * - the resolution is 204 dots per inch across, and 98 or 196 down: 98 when the DIB's is below 148,
 *   or, if it has none, when it has fewer than 1101 rows;
 * - DateTime, Software, ImageDescription and Artist are not written;
 * - the selector's high byte must be 0, else error 11;
 * - a DIB whose first colour is dark is written WhiteIsZero, and its bits are inverted only at 1 bit
 *   per pixel.
 *
 * Bicom, NMS and Dialogic pages are bilevel: pass DIBs of 1 bit per pixel. Others are not refused;
 * the first bytes of each row count as pixels. These pages get NewSubfileType 2 and a PageNumber with
 * their number and a total of 0. UpdatePageNumbers sets the total when all pages are written.
 *
 * Results and errors are those of SaveDIBInTiffFileExt.
 */
#ifndef TIFF_FAX_BOARDS_H
#define TIFF_FAX_BOARDS_H

#include "tiff/base.h"

TIFF_BEGIN

/* For Gamma boards: any compression; Group 3 without fill bits.
 *
 * path, dib, selector, dialog, fillOrder  as SaveDIBInTiffFileExt.
 *
 * Returns 1 or 0.
 * Errors: as SaveDIBInTiffFileExt.
 * A success clears the last error.
 */
int32_t TIFF_CALL SaveDIBInGammaTiffFile(const char* path, HGLOBAL dib, uint32_t selector, int32_t dialog,
                                         uint32_t fillOrder) TIFF_NOEXCEPT;

/* For Bicom boards: Group 3 with fill bits, fill order 1.
 *
 * path, dib  as SaveDIBInTiffFileExt.
 *
 * Returns 1 or 0.
 * Errors: as SaveDIBInTiffFileExt.
 * A success clears the last error.
 */
int32_t TIFF_CALL SaveDIBInBicomTiffFile(const char* path, HGLOBAL dib) TIFF_NOEXCEPT;

/* For NMS boards; the same as Bicom.
 *
 * path, dib  as SaveDIBInTiffFileExt.
 *
 * Returns 1 or 0.
 * Errors: as SaveDIBInTiffFileExt.
 * A success clears the last error.
 */
int32_t TIFF_CALL SaveDIBInNMSTiffFile(const char* path, HGLOBAL dib) TIFF_NOEXCEPT;

/* For Dialogic boards: any compression, Group 3 with fill bits; fill order 2.
 *
 * path, dib, selector  as SaveDIBInTiffFileExt.
 *
 * Returns 1 or 0.
 * Errors: as SaveDIBInTiffFileExt.
 * A success clears the last error.
 */
int32_t TIFF_CALL SaveDIBInDialogicTiffFile(const char* path, HGLOBAL dib, uint32_t selector) TIFF_NOEXCEPT;

/* Saves a DIB as SaveDIBInTiffFileExt does and rewrites the file with ConvertTiffToCiscoFormat.
 *
 * path, dib, selector, dialog  as SaveDIBInTiffFileExt.
 * fillOrder                    1 or 2.
 *
 * Returns 1 or 0.
 * Errors: as SaveDIBInTiffFileExt and ConvertTiffToCiscoFormat; 29 also for an empty path or another fill
 *         order: nothing is saved then.
 * A success clears the last error.
 */
int32_t TIFF_CALL SaveTiffForCiscoFormat(const char* path, HGLOBAL dib, uint32_t selector, int32_t dialog,
                                         uint32_t fillOrder) TIFF_NOEXCEPT;

/* Rewrites a file for Cisco servers: page after page, each with its directory before its data. The new
 * file is built in the temporary folder. The empty file that reserved its name there stays.
 *
 * WHEN A PAGE CANNOT BE COPIED, THE FILE IS DELETED: such a server must never get half a fax. Keep a
 * copy of faxes that exist nowhere else. A file that cannot be opened or read to its end is left alone.
 *
 * path  of the TIFF file.
 *
 * Returns 1 or 0. Errors: 6, also when the new file cannot replace the old one and stays in the temporary
 * folder; 29 null or empty path; others as OpenTiffFile and CopyTiffImage.
 * A success clears the last error.
 */
int32_t TIFF_CALL ConvertTiffToCiscoFormat(const char* path) TIFF_NOEXCEPT;

TIFF_END

#endif
