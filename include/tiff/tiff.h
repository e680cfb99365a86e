/* TIFF.DLL: multi-page TIFF and fax images for Windows programs.
 *
 * What holds everywhere, unless a function says otherwise:
 *
 * - Strings are ANSI, and so are paths unless a thread says UTF-8 (paths.h). A path has at most 259 bytes.
 * - Pages are counted from 0.
 * - A function returns 1 or a handle for success, 0 or null for failure, and leaves the cause
 *   in the calling thread's last error, TiffError(). A success either clears the last error or keeps
 *   the code that is there: each function says which. "The last error stays" holds for failures too.
 * - A null path is error 29, and so is a null record to fill. A handle that cannot be locked is error 34.
 * - A TIFF file handle may move between threads but serves one thread at a time. A memory
 *   stream belongs to the thread that opened it.
 * - What a program passes stays the program's, and the library keeps no pointer to it.
 * - Blocks that cross the interface are movable global memory. The caller frees every block that a
 *   function returns, with GlobalFree.
 */
#ifndef TIFF_TIFF_H
#define TIFF_TIFF_H

#include "tiff/annotations.h"
#include "tiff/blank_pages.h"
#include "tiff/cals.h"
#include "tiff/ccitt.h"
#include "tiff/codecs.h"
#include "tiff/crop.h"
#include "tiff/define.h"
#include "tiff/dib.h"
#include "tiff/directory.h"
#include "tiff/editing.h"
#include "tiff/errors.h"
#include "tiff/fax_boards.h"
#include "tiff/fax_quality.h"
#include "tiff/files.h"
#include "tiff/ioca.h"
#include "tiff/lines.h"
#include "tiff/load.h"
#include "tiff/notes.h"
#include "tiff/overlays.h"
#include "tiff/paths.h"
#include "tiff/raw_fax.h"
#include "tiff/save.h"
#include "tiff/screen.h"
#include "tiff/streams.h"
#include "tiff/text_pages.h"
#include "tiff/values.h"
#include "tiff/version.h"

#endif
