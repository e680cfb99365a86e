/* How the bytes of a path become a file name.
 *
 * A program whose manifest names UTF-8 as its code page needs nothing of this: all its paths are UTF-8. The
 * setting is for libraries and scripts inside a program with another code page.
 */
#ifndef TIFF_PATHS_H
#define TIFF_PATHS_H

#include "tiff/base.h"

#define TIFF_PATHS_ANSI 0u
#define TIFF_PATHS_UTF8 65001u

TIFF_BEGIN

/* Says how the calling thread's paths are coded from now on: the paths that are arguments of functions, and
 * those kept in open TIFF files, in whose records they stay as they are. Other texts stay ANSI.
 *
 * codePage  TIFF_PATHS_ANSI, which every thread begins with, or TIFF_PATHS_UTF8. A path of UTF-8 has at
 *           most 259 bytes too; one that is not valid UTF-8 names no file.
 *
 * Returns 1, or 0 for another code page (error 29), and the setting is unchanged then.
 * A success keeps the last error.
 * Threads: a TIFF file handle that moves to another thread needs the same setting there.
 */
int32_t TIFF_CALL SetTiffPathCodePage(uint32_t codePage) TIFF_NOEXCEPT;

/* Returns the calling thread's setting: TIFF_PATHS_ANSI or TIFF_PATHS_UTF8. The last error stays.
 * The last error stays.
 */
uint32_t TIFF_CALL GetTiffPathCodePage(void) TIFF_NOEXCEPT;

TIFF_END

#endif
