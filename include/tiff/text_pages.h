/* Fax pages drawn from text files: black on white, one bitmap or packed DIB a page.
 *
 * The text is drawn with GDI, from the top margin down to the bottom margin, which is as high. A line is
 * wrapped at the right margin, which is as wide as the left one, behind its last space or one of the
 * characters ! , - . : ; ?. A longer word stays whole on its line and is cut off by the page alone.
 *
 * Lines end with CR LF: the byte behind a CR is skipped, whatever it is. TAB moves to the next tab stop,
 * the k-th of a line to the k-th stop, unless the text has passed it. Other bytes below 32 are left out,
 * so a file with bare LF line ends becomes one paragraph.
 *
 * These functions return the number of pages made, all of which are valid, and report through an error
 * slot instead of TiffError().
 */
#ifndef TIFF_TEXT_PAGES_H
#define TIFF_TEXT_PAGES_H

#include "tiff/base.h"

TIFF_BEGIN

/* What the error slot receives. */
enum TiffTextError {
    TIFF_TEXT_DONE = 0,
    TIFF_TEXT_ARGUMENTS = 1,  /* a null argument, a limit of 0, or an unknown kind */
    TIFF_TEXT_PAGE_LIMIT = 2, /* the limit was reached before the end of the text */
    TIFF_TEXT_NO_FILE = 3,    /* the file cannot be opened or read */
    TIFF_TEXT_NO_PAGE = 4     /* there is no such page, or no memory for it */
};

/* What a page becomes. */
enum TiffTextKind {
    TIFF_TEXT_BITMAP = 10, /* a bitmap, to be freed with DeleteObject */
    TIFF_TEXT_DIB = 11     /* a packed DIB with the resolution, to be freed with GlobalFree */
};

/* Bits of the settings' flags. */
enum TiffTextFlags {
    TIFF_TEXT_INCHES = 1, /* lengths are hundredths of an inch, not millimetres */
    TIFF_TEXT_ITALIC = 2,
    TIFF_TEXT_BOLD = 4
};

#define TIFF_TEXT_TAB_STOPS 16

/* The page and its text. Texts may fill their fields without a zero. */
typedef struct TiffTextPageSettings {
    char path[256];                         /* the text file */
    uint32_t pageWidth, pageHeight;         /* lengths */
    uint32_t leftMargin, topMargin;         /* lengths, also for the right and the bottom margin */
    char faceName[128];                     /* the font's; empty for the font of a new device context */
    uint32_t fontSize;                      /* points */
    uint32_t horizontalDpi, verticalDpi;    /* dots per inch */
    uint32_t lineSpacing;                   /* length added between two lines */
    uint32_t tabStops[TIFF_TEXT_TAB_STOPS]; /* lengths from the left margin */
    uint32_t flags;                         /* TiffTextFlags */
    const LOGFONTA* font;                   /* null, or a font to use instead of the face name and the
                                               flags; its height still follows fontSize */
} TiffTextPageSettings;
TIFF_LAYOUT(TiffTextPageSettings, 496, font, 488);

/* Draws a text file.
 *
 * settings   the page, its text and its font.
 * pageLimit  at most so many pages, and never more than 100,000. Text that exactly fills the last of them
 *            counts as too long.
 * pages      receives a handle for each page, which the caller frees as the kind says; has room for
 *            pageLimit of them.
 * kind       TiffTextKind.
 * bitmap     null, or a bitmap, not selected anywhere, to draw the first page on. It is not cleared. As
 *            TIFF_TEXT_BITMAP it is delivered as the first page; as TIFF_TEXT_DIB it is cleared for the
 *            second page and stays the caller's.
 * error      null, or the error slot.
 *
 * Returns the number of pages. A text without bytes gives one blank page.
 * Errors: in the slot. A page that cannot become a DIB also sets the last error, 1 or 34.
 * A success keeps the last error.
 */
uint32_t TIFF_CALL CreateFaxPageFromASCII(const TiffTextPageSettings* settings, uint32_t pageLimit,
                                          HANDLE* pages, uint32_t kind, HBITMAP bitmap,
                                          uint32_t* error) TIFF_NOEXCEPT;

/* CreateFaxPageFromASCII with a place on the first page.
 *
 * settings, pageLimit, pages, kind, bitmap  as CreateFaxPageFromASCII.
 * startY  pixels from the top of the page to the first line; 0 for the top margin. At or below the bottom
 *         margin the first page gets no text.
 * error   as CreateFaxPageFromASCII.
 *
 * Returns the number of pages.
 * Errors: as CreateFaxPageFromASCII.
 * A success keeps the last error.
 */
uint32_t TIFF_CALL CreateMultiPageFromASCII(const TiffTextPageSettings* settings, uint32_t pageLimit,
                                            HANDLE* pages, uint32_t kind, HBITMAP bitmap, uint32_t startY,
                                            uint32_t* error) TIFF_NOEXCEPT;

/* CreateFaxPageFromASCII with TIFF_TEXT_BITMAP and no bitmap.
 *
 * settings, pageLimit, pages, error  as CreateFaxPageFromASCII.
 *
 * Returns the number of pages.
 * Errors: as CreateFaxPageFromASCII.
 * A success keeps the last error.
 */
uint32_t TIFF_CALL CreateBMPFaxPageFromASCII(const TiffTextPageSettings* settings, uint32_t pageLimit,
                                             HANDLE* pages, uint32_t* error) TIFF_NOEXCEPT;

/* CreateFaxPageFromASCII with TIFF_TEXT_DIB and no bitmap.
 *
 * settings, pageLimit, pages, error  as CreateFaxPageFromASCII.
 *
 * Returns the number of pages.
 * Errors: as CreateFaxPageFromASCII.
 * A success keeps the last error.
 */
uint32_t TIFF_CALL CreateDIBFaxPageFromASCII(const TiffTextPageSettings* settings, uint32_t pageLimit,
                                             HANDLE* pages, uint32_t* error) TIFF_NOEXCEPT;

TIFF_END

#endif
