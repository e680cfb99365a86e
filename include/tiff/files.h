/* Open files and their pages. A TIFF file handle is what OpenTiffFile or OpenTiffInMemory
 * returns; a page is named by that handle and its number.
 */
#ifndef TIFF_FILES_H
#define TIFF_FILES_H

#include "tiff/base.h"

#define T_READ 0
#define T_APPEND 2
#define T_CREAT 3

#define TIFF_MAX_PAGES 100000u
#define TIFF_ALL_PAGES 0x8000u /* for NumberOfTiffImages */

TIFF_BEGIN

#pragma pack(push, 1)
typedef struct TiffFileInformation {
    char path[260];     /* zero-terminated; empty for a TIFF in memory */
    uint16_t byteOrder; /* TIFF_INTEL or TIFF_MOTOROLA */
    uint32_t pageCount;
    uint32_t firstDirectoryOffset; /* 0 without pages */
} TiffFileInformation;
TIFF_LAYOUT(TiffFileInformation, 270, firstDirectoryOffset, 266);
#pragma pack(pop)

/* Opens a TIFF file on disk and walks its chain of directories. Nothing is kept open.
 *
 * path  of the TIFF file.
 * mode  T_READ reads an existing file. T_APPEND reads a file to add pages to it; a missing or empty file
 *       counts as new, but one that exists and cannot be opened fails. T_CREAT, and every other value,
 *       starts a new file, which is created or truncated when its first page is written.
 *
 * Returns a TIFF file handle, which the caller frees with CloseTiffFile, or null. A chain that breaks after
 * the first page still opens, with the good pages, and the last error is 6.
 * Errors: 1 memory; 6 unreadable; 7 path too long; 8 version is not 42; 14 not "II" or "MM"; 29 no path.
 * A success clears the last error, unless the chain breaks.
 */
HGLOBAL TIFF_CALL OpenTiffFile(const char* path, uint32_t mode) TIFF_NOEXCEPT;

/* Opens a TIFF that lies in a block of movable global memory.
 *
 * block  the caller's, also after CloseTiffFile; writing pages may replace it, and
 *        GetMemoryTiffHandle then returns the new one.
 * size   bytes of the TIFF in the block, cut to the size of the block.
 * mode   0 and T_APPEND read the TIFF in the block, and pages can be added in both cases; any other value
 *        starts a new, empty TIFF. An empty block fails in mode 2 too.
 *
 * Returns as OpenTiffFile.
 * Errors: as OpenTiffFile.
 * A success clears the last error, unless the chain breaks.
 */
HGLOBAL TIFF_CALL OpenTiffInMemory(HGLOBAL block, uint32_t size, uint32_t mode) TIFF_NOEXCEPT;

/* Returns the block of a TIFF in memory as last reallocated; null for a disk file.
 *
 * file  an open TIFF file; it stays open.
 *
 * The caller frees the block.
 * The last error stays.
 */
HGLOBAL TIFF_CALL GetMemoryTiffHandle(HGLOBAL file) TIFF_NOEXCEPT;

/* Drops every page, frees the handle and unloads the JPEG library if it is loaded.
 *
 * file  the handle, which is freed. The block of a TIFF in memory stays the caller's.
 *
 * Returns 1, or 0 for a null handle.
 * The last error stays.
 */
int32_t TIFF_CALL CloseTiffFile(HGLOBAL file) TIFF_NOEXCEPT;

/* Frees the tags that GetTiffImage loaded for a page; the page stays in the file.
 *
 * file  an open TIFF file; it stays open.
 * page  counted from 0.
 *
 * Returns 1, also for a page that is not loaded; 0 with error 3 for a page outside the file.
 * A success keeps the last error.
 */
int32_t TIFF_CALL DropTiffImage(HGLOBAL file, uint32_t page) TIFF_NOEXCEPT;

/* Returns 1 if the page's tags are loaded or defined; else 0 with error 3 (no such page) or
 * 27 (not loaded). A null handle gives 0 and sets no error.
 *
 * file  an open TIFF file; it stays open.
 * page  counted from 0.
 *
 * A success keeps the last error.
 */
int32_t TIFF_CALL IsTiffImageRegistered(HGLOBAL file, uint32_t page) TIFF_NOEXCEPT;

/* Counts pages.
 *
 * file  an open TIFF file; it stays open.
 * kind  with bit 0x8000 (TIFF_ALL_PAGES): the page count. Otherwise the number of entries, among all
 *       100,000 that a file can have, whose kind word equals it: the low bits are the page's
 *       NewSubfileType, 0x4000 is added while the page is loaded, and entries not in use count as kind 0.
 *
 * Returns the number; 0 for a handle that is none.
 * The last error stays.
 */
uint32_t TIFF_CALL NumberOfTiffImages(HGLOBAL file, uint32_t kind) TIFF_NOEXCEPT;

/* Returns the number of pages of a file on disk, or 0xFFFFFFFF if it cannot be opened, with
 * the error of OpenTiffFile.
 *
 * path  of the TIFF file.
 *
 * A success clears the last error, unless the chain breaks.
 */
uint32_t TIFF_CALL GetNumberOfImagesInTiffFile(const char* path) TIFF_NOEXCEPT;

/* Fills the information record. Returns 1; 0 with error 34 for an invalid handle.
 *
 * file  an open TIFF file; it stays open.
 * info  the record.
 *
 * Returns 1; 0 with error 34 for an invalid handle, 29 for no record.
 * A success keeps the last error.
 */
int32_t TIFF_CALL GetTiffFileInfo(HGLOBAL file, TiffFileInformation* info) TIFF_NOEXCEPT;

/* Changes the path or the byte order kept for an open file.
 *
 * file       an open TIFF file; it stays open.
 * path       null leaves it.
 * byteOrder  0 leaves it.
 *
 * Returns 1, or 0 with error 7 (path of 260 characters or more) or 14 (byte order neither TIFF_INTEL nor
 * TIFF_MOTOROLA; the path is already replaced then).
 * A success keeps the last error.
 */
int32_t TIFF_CALL ModiTiffFileInfo(HGLOBAL file, const char* path, uint32_t byteOrder) TIFF_NOEXCEPT;

/* Copies the library's version text.
 *
 * buffer  receives the text; null gets nothing.
 * size    1 to 14 copies exactly that many bytes of the text and its terminating zero, so a size below 14
 *         gives no terminator; 15 or more copies all of it; 0 or less nothing.
 *
 * The last error stays.
 */
void TIFF_CALL GetTiffVersion(char* buffer, int32_t size) TIFF_NOEXCEPT;

TIFF_END

#endif
