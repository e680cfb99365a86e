/* Drawing pages straight into a window, row by row: no whole picture is held. */
#ifndef TIFF_SCREEN_H
#define TIFF_SCREEN_H

#include "tiff/base.h"

TIFF_BEGIN

/* What kind of file to draw. */
enum TiffFileFormat {
    TIFF_FORMAT_ANY = 0, /* by the file's beginning */
    TIFF_FORMAT_TIFF = 1,
    TIFF_FORMAT_CALS = 2
};

/* How to draw. Without TIFF_TRUE_SIZE and TIFF_FIT, a pixel of the page is one of the screen; TIFF_FIT
 * goes before TIFF_TRUE_SIZE.
 */
enum TiffScreenFlags {
    TIFF_TURN_90 = 1, /* clockwise */
    TIFF_TURN_180 = 2,
    TIFF_TURN_270 = 3,
    TIFF_TRUE_SIZE = 4, /* by the resolutions of page and device, divided by the zoom */
    TIFF_FIT = 8,       /* the whole page in the client area */
    TIFF_INVERT_SCREEN = 32,
    TIFF_GREY_SCREEN = 64 /* bilevel pages that are reduced: grey by the share of black pixels */
};

/* Draws a page into a window. The page's upper left pixel, as turned, stands at the upper left of the
 * client area, or before it where the window is scrolled. Unless fitting, the scroll bars are shown and
 * hidden as the page needs them, a window scrolled to position p of its range shows the page from that
 * share of the hidden part on, and the client area beside the page gets the window's background. The
 * window is then valid. A bilevel page that is reduced without TIFF_GREY_SCREEN shows the stored ones:
 * black for pages stored as WhiteIsZero.
 *
 * format  TIFF_FORMAT_...
 * window  the window, which stays open; may be null: then the device context's clipping box is the room,
 *         and nothing scrolls.
 * dc      of the window, the caller's; it comes back as it was. Its own origins and scales do not count.
 * path    of the TIFF file.
 * page    counted from 0; not used for CALS files.
 * zoom    null, or four numbers: the width is divided by the second through the first, the height by the
 *         fourth through the third. A pair with a zero does nothing. For TIFF_TRUE_SIZE only.
 * flags   TIFF_TURN_..., and others.
 *
 * Returns 1 or 0. After an error in the code, the rows before it are on the screen.
 * Errors: 1; 16 a depth other than 1, 4, 8 and 24 bits; 29 no path, no device context or no such format;
 *         others as OpenTiffFile, DecodeTiffImage and ReadCALSInfo.
 * A success clears the last error.
 * Threads: two threads may draw at once.
 */
int32_t TIFF_CALL DecompressToScreen(uint32_t format, HWND window, HDC dc, const char* path, uint32_t page,
                                     const int32_t* zoom, uint32_t flags) TIFF_NOEXCEPT;

/* DecompressToScreen for a CALS file.
 *
 * window, dc   as DecompressToScreen.
 * path         of the CALS file.
 * zoom, flags  as DecompressToScreen.
 *
 * Returns as DecompressToScreen.
 * Errors: as DecompressToScreen.
 * A success clears the last error.
 */
int32_t TIFF_CALL DecompressCALSToScreen(HWND window, HDC dc, const char* path, const int32_t* zoom,
                                         uint32_t flags) TIFF_NOEXCEPT;

/* The line routines of these drawings, under the rules of lines.h: bilevel pages, pages of 4 and 8 bits,
 * pages of 24 bits, each for every turn. Their record is the drawing of the calling thread, which only
 * the library makes. With any other record they draw nothing.
 *
 * line     the line buffer.
 * row      number of the row, counted from 0.
 * context  ignored unless it is the drawing.
 *
 * Returns 0.
 * The last error stays.
 */
intptr_t TIFF_CALL FlushMonoLineToScreen(void* line, uint32_t row, void* context) TIFF_NOEXCEPT;
intptr_t TIFF_CALL FlushMonoRotLineToScreen(void* line, uint32_t row, void* context) TIFF_NOEXCEPT;
intptr_t TIFF_CALL FlushMonoRot18LineToScreen(void* line, uint32_t row, void* context) TIFF_NOEXCEPT;
intptr_t TIFF_CALL FlushMonoRot27LineToScreen(void* line, uint32_t row, void* context) TIFF_NOEXCEPT;
intptr_t TIFF_CALL FlushRGBLineToScreen(void* line, uint32_t row, void* context) TIFF_NOEXCEPT;
intptr_t TIFF_CALL FlushRGBRotLineToScreen(void* line, uint32_t row, void* context) TIFF_NOEXCEPT;
intptr_t TIFF_CALL FlushRGBRot18LineToScreen(void* line, uint32_t row, void* context) TIFF_NOEXCEPT;
intptr_t TIFF_CALL FlushRGBRot27LineToScreen(void* line, uint32_t row, void* context) TIFF_NOEXCEPT;
intptr_t TIFF_CALL FlushRGB24LineToScreen(void* line, uint32_t row, void* context) TIFF_NOEXCEPT;
intptr_t TIFF_CALL FlushRGB24RotLineToScreen(void* line, uint32_t row, void* context) TIFF_NOEXCEPT;
intptr_t TIFF_CALL FlushRGB24Rot18LineToScreen(void* line, uint32_t row, void* context) TIFF_NOEXCEPT;
intptr_t TIFF_CALL FlushRGB24Rot27LineToScreen(void* line, uint32_t row, void* context) TIFF_NOEXCEPT;

/* FlushMonoLineToScreen and its turned forms, for CALS files.
 *
 * line, row, context  as FlushMonoLineToScreen.
 *
 * Returns 0.
 * The last error stays.
 */
intptr_t TIFF_CALL FlushCALSLineToScreen(void* line, uint32_t row, void* context) TIFF_NOEXCEPT;
intptr_t TIFF_CALL FlushCALS90LineToScreen(void* line, uint32_t row, void* context) TIFF_NOEXCEPT;
intptr_t TIFF_CALL FlushCALS180LineToScreen(void* line, uint32_t row, void* context) TIFF_NOEXCEPT;
intptr_t TIFF_CALL FlushCALS270LineToScreen(void* line, uint32_t row, void* context) TIFF_NOEXCEPT;

TIFF_END

#endif
