/* Raw fax code - the bytes that come out of a modem, a fax board or an encoder, without a directory - as
 * pages of TIFF files.
 */
#ifndef TIFF_RAW_FAX_H
#define TIFF_RAW_FAX_H

#include "tiff/base.h"

/* Schemes of raw code. */
#define TIFF_RAW_FIND_OUT 0u
#define TIFF_RAW_HUFFMAN 2u /* modified Huffman: rows begin on bytes, without end-of-line codes */
#define TIFF_RAW_GROUP3 3u  /* Group 3, one-dimensional */
#define TIFF_RAW_GROUP4 4u
#define TIFF_RAW_GROUP3_TWO_DIMENSIONAL 0x10003u
#define TIFF_RAW_GROUP3_WITHOUT_EOLS 0x20003u /* one-dimensional rows, one directly behind the other */

/* Whether fill bits let every end-of-line code end on a byte; in Group 4, which has none, every row. */
#define TIFF_RAW_ALIGNED 1u
#define TIFF_RAW_UNALIGNED 2u

TIFF_BEGIN

/* What is known of raw code, and what was found out. */
typedef struct TiffRawFax {
    uint32_t width;         /* pixels, up to 65,535; 0 has it found out */
    uint32_t scheme;        /* TIFF_RAW_ values; TIFF_RAW_FIND_OUT has it found out */
    uint32_t fillOrder;     /* TIFF_MSB_FIRST or TIFF_LSB_FIRST; 0 has it found out */
    uint32_t alignment;     /* TIFF_RAW_ALIGNED or TIFF_RAW_UNALIGNED; 0 has it found out */
    uint32_t horizontalDpi; /* dots per inch; 0 for 204 */
    uint32_t verticalDpi;   /* 0 for 98, and 196 from 1,101 rows on */
    uint32_t rows;          /* the rest is a result: the rows in the code */
    uint32_t badRows;       /* damaged ones, as in TiffDecodeQuality; of Group 3 alone */
    uint32_t longestBadRun;
} TiffRawFax;
TIFF_LAYOUT(TiffRawFax, 36, longestBadRun, 32);

/* Appends raw fax code to a TIFF file as a page. The code is written as it lies, in one strip, and the tags
 * say how to read it. Two kinds of code have no such tags: aligned Group 4, and TIFF_RAW_GROUP3_WITHOUT_EOLS.
 * Their rows are encoded anew, as a Group 4 page of fill order 1 that every reader takes. Pages of Group 3
 * code also get the tags of their received quality (fax_quality.h).
 *
 * What is not known is found out by decoding: of all ways to read the code the one with the least damage is
 * taken. What stands behind the end of the picture does not count. A width is looked for among those of fax
 * machines from 200 to 400 dots per inch, and in Group 3 code among the lengths of its rows, too.
 *
 * path   of the TIFF file, to which the page is added; a missing or empty one is made.
 * bytes  the code of one page, from its first row. They are only read.
 * size   their number.
 * fax    what is known; the found values and results are written into it, also when the file cannot be
 *        written.
 *
 * Returns 1, or 0 with the last error set; the file then has the pages it had.
 * Errors: 1 memory; 2 the file cannot be opened; 6 it cannot be written; 7 path too long; 12 no row can be
 *         decoded; 29 no path, code or record, or a value that does not exist; 36 more than 2,147,483,647
 *         bytes of code, or 1,000,000 rows.
 * A success clears the last error.
 */
int32_t TIFF_CALL AppendRawFaxToTiff(const char* path, const void* bytes, uint32_t size,
                                     TiffRawFax* fax) TIFF_NOEXCEPT;

TIFF_END

#endif
