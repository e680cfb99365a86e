/* Finding pages that are empty, or nearly all black. */
#ifndef TIFF_BLANK_PAGES_H
#define TIFF_BLANK_PAGES_H

#include "tiff/base.h"

TIFF_BEGIN

/* Searches for the first blank page. A page is blank when the share of pixels that are not light is
 * below the threshold. Only pages of 1, 8 and 24 bits per pixel are tested, bilevel ones only when
 * both their colours are grey. Others never match.
 *
 * path       of the TIFF file.
 * threshold  tenths of a percent, cut to 0 to 1000.
 * firstPage  counted from 0; a negative one is 0.
 * colour     three levels, c0, c1, c2; null is error 6. A pixel is light when each of its levels is above:
 *            blue, green and red above c0, c1 and c2 at 24 bits, above c2, c1 and c0 at 8 bits. Ignored for
 *            bilevel pages.
 *
 * Returns the number of the page counted from 1; 0 when there is none; 0xFFFFFFFF for a failure.
 * Errors: 1 memory; 3 no such first page; 6 no colour, no pages, a page that cannot be loaded; 29 no path.
 * A success clears the last error, or leaves there the code of a page that could only be decoded in part.
 */
uint32_t TIFF_CALL FindBlankPage(const char* path, int32_t threshold, int32_t firstPage,
                                 const uint8_t* colour) TIFF_NOEXCEPT;

/* Searches for the first black page. A page is black when the share of dark pixels is above the threshold;
 * a pixel is dark when each of its levels is below the colour's.
 *
 * path, threshold, firstPage, colour  as FindBlankPage.
 *
 * Returns as FindBlankPage.
 * Errors: as FindBlankPage.
 * A success clears the last error, or leaves there the code of a page that could only be decoded in part.
 */
uint32_t TIFF_CALL FindBlackPage(const char* path, int32_t threshold, int32_t firstPage,
                                 const uint8_t* colour) TIFF_NOEXCEPT;

TIFF_END

#endif
