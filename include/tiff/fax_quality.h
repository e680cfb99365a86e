/* The quality of received fax pages: what their decoding noticed, and what the tags BadFaxLines (326),
 * CleanFaxData (327) and ConsecutiveBadFaxLines (328) of a saved page say of it.
 */
#ifndef TIFF_FAX_QUALITY_H
#define TIFF_FAX_QUALITY_H

#include "tiff/base.h"

/* Values of CleanFaxData. */
#define TIFF_FAX_CLEAN 0u       /* no damaged rows */
#define TIFF_FAX_REGENERATED 1u /* damaged rows were made whole when the page was written */
#define TIFF_FAX_UNCLEAN 2u     /* damaged rows are in the code as they came */

TIFF_BEGIN

/* What decoding noticed. A row is damaged when an end-of-line code cuts it short, when its runs pass the
 * width or go back, or when it has a code that is not of Group 3. A row that was lost whole leaves no sign.
 */
typedef struct TiffDecodeQuality {
    uint32_t isCounted;     /* 1 for Group 3 code; no other is counted, and its damaged rows are 0 */
    uint32_t rows;          /* rows of the page, or of the part that was asked for */
    uint32_t decodedRows;   /* fewer when decoding ended early */
    uint32_t badRows;       /* damaged ones among them */
    uint32_t longestBadRun; /* the most damaged rows that follow one another */
} TiffDecodeQuality;
TIFF_LAYOUT(TiffDecodeQuality, 20, longestBadRun, 16);

/* What the tags of a page say. */
typedef struct TiffFaxQuality {
    uint32_t badRows;
    uint32_t longestBadRun;
    uint32_t cleanFaxData; /* TIFF_FAX_CLEAN, TIFF_FAX_REGENERATED or TIFF_FAX_UNCLEAN */
} TiffFaxQuality;
TIFF_LAYOUT(TiffFaxQuality, 12, cleanFaxData, 8);

/* Gives the quality of the page, or the bare code, that the calling thread decoded last, in whatever
 * function: a loader, a line decoder, a drawing, a search for blank pages. Before the first one, after one
 * that could not be begun, and after a JPEG page, all fields are 0.
 *
 * quality  the record, which is filled.
 *
 * Returns 1, or 0 with error 29 for no record.
 * A success keeps the last error.
 */
int32_t TIFF_CALL GetTiffDecodeQuality(TiffDecodeQuality* quality) TIFF_NOEXCEPT;

/* Has the pages that the calling thread saves from now on say a quality in their tags 326, 327 and 328: those
 * of the savers for DIBs and bitmaps, the ones for fax boards included.
 *
 * quality  is copied; null saves pages without these tags again, which is how a thread begins.
 *
 * Returns 1, or 0 with error 29 for a cleanFaxData above 2, and for damaged rows in clean data.
 * A success keeps the last error.
 */
int32_t TIFF_CALL SetTiffFaxQuality(const TiffFaxQuality* quality) TIFF_NOEXCEPT;

TIFF_END

#endif
