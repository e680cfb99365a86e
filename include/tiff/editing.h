/* Editing multi-page files page by page, without decoding: pages are copied, inserted, deleted
 * and moved in their stored form.
 *
 * Operations that change a file build a new one in the temporary folder first. Only when it is
 * complete is the old file deleted and the new one given its name; until then every failure leaves
 * the old file as it was. When the old file cannot be deleted, the result is 0 with error 6 and the
 * new one is deleted; when the new one cannot be renamed, it stays in the temporary folder.
 *
 * A page is copied with everything that its tags point to: strips, tiles, tables, JPEG streams, and the
 * directories of ExifIFD, GPS, Interoperability and SubIFDs with their content.
 *
 * Results are 1, or 0 with the cause in TiffError(): 1 memory; 3 no such page; 6 reading or
 * writing, or a file that cannot be read whole; 9 a page whose strip offsets and byte counts differ
 * in number, are empty, or cannot be found out; 10 a page that lacks either; 29 a null path, or the
 * copy would overwrite its source; others as OpenTiffFile.
 */
#ifndef TIFF_EDITING_H
#define TIFF_EDITING_H

#include "tiff/base.h"

TIFF_BEGIN

/* Called after each step of long work. A result of 0 stops the work, and the operation fails.
 *
 * total  steps in all.
 * done   steps done so far, from 1 on.
 * user   the value that the caller passed.
 */
typedef int32_t(TIFF_CALL* TiffProgress)(uint32_t total, uint32_t done, uint64_t user);

/* Appends a page of one open file to another, strips and tags unchanged; offsets are adapted.
 *
 * source       an open TIFF file, also one in memory; it stays open.
 * page         counted from 0. Its tags are taken from memory if they are loaded, with the changes made
 *              there, and dropped afterwards.
 * destination  open for writing, and stays open; a new one (T_CREAT) is created now. Both must have the
 *              same byte order. This is not checked: the page and the link to it are written in the
 *              source's order, and a file that mixes both cannot be read past that point.
 *
 * A strip that reaches beyond the end of the source is copied as far as it exists. A strip with a byte
 * count of 0, or a single one without a count, is copied up to the next item in the file. A sub-directory
 * that cannot be read is left out. A failure leaves the destination with its old pages.
 *
 * Returns 1 or 0.
 * Errors: 34 no such file; others those of all.
 * A success clears the last error.
 */
int32_t TIFF_CALL CopyTiffImage(HGLOBAL source, uint32_t page, HGLOBAL destination) TIFF_NOEXCEPT;

/* CopyTiffImage with files on disk.
 *
 * sourcePath       of the file that has the page.
 * page             counted from 0.
 * destinationPath  of the file that gets it.
 * mode             of OpenTiffFile, for the destination: T_APPEND or T_CREAT.
 *
 * Returns 1 or 0.
 * Errors: those of all.
 * A success clears the last error.
 */
int32_t TIFF_CALL CopyTiffImageInFile(const char* sourcePath, uint32_t page, const char* destinationPath,
                                      uint32_t mode) TIFF_NOEXCEPT;

/* Puts a new page made from a DIB into a file.
 *
 * path                         of the TIFF file.
 * dib                          the picture; it stays the caller's.
 * selector, dialog, fillOrder  as SaveDIBInTiffFileExt.
 * position                     the page that the new one goes before, or replaces. With a position beyond
 *                              the last page, or a file that does not exist, the page is appended.
 * inPlace                      non-zero appends the page to the file itself and relinks the chain instead
 *                              of building the file anew. The replaced page's bytes stay in the file until
 *                              ReorderTiffFile.
 * replace                      non-zero drops the page at the position.
 *
 * Returns 1 or 0.
 * Errors: those of all; those of SaveDIBInTiffFileExt; 3 for a negative position; 35 for a file in Motorola
 *         byte order.
 * A success clears the last error.
 */
int32_t TIFF_CALL InsertTiffImage(const char* path, HGLOBAL dib, uint32_t selector, int32_t dialog,
                                  uint32_t fillOrder, int32_t position, int32_t inPlace,
                                  int32_t replace) TIFF_NOEXCEPT;

/* Deletes a page. The only page of a file is deleted with the file.
 *
 * path     of the TIFF file.
 * page     counted from 0; -1 for the last.
 * inPlace  non-zero relinks the chain past the page instead of building the file anew; its bytes stay in
 *          the file until ReorderTiffFile.
 *
 * Returns 1 or 0.
 * Errors: those of all.
 * A success clears the last error.
 */
int32_t TIFF_CALL DeleteTiffImage(const char* path, int32_t page, int32_t inPlace) TIFF_NOEXCEPT;

/* Rewrites a file page after page, each with its directory directly before its data. Bytes that no
 * page refers to are left out. A file of one page is left alone.
 *
 * path  of the TIFF file.
 *
 * Returns 1 or 0.
 * Errors: those of all.
 * A success clears the last error.
 */
int32_t TIFF_CALL ReorderTiffFile(const char* path) TIFF_NOEXCEPT;

/* Appends all pages of one file to another, which is created when it does not exist.
 *
 * destinationPath  of the file that gets the pages.
 * sourcePath       of the file that has them.
 * callback         may be null; gets the source's page count and the pages done.
 * user             passed to the callback.
 *
 * Each call walks the destination to its end. To append thousands of files, open it once and use
 * CopyTiffImage, page by page.
 *
 * Returns 1 or 0. Pages appended before a failure stay.
 * Errors: those of all; 35 when the files are in different byte orders: nothing is written then.
 * A success clears the last error.
 */
int32_t TIFF_CALL MergeTiffFiles(const char* destinationPath, const char* sourcePath, TiffProgress callback,
                                 uint64_t user) TIFF_NOEXCEPT;

/* Moves the pages from the given one to the last into a new file, which replaces an old one of that name.
 *
 * sourcePath       of the file that loses the pages.
 * destinationPath  of the new file.
 * firstPage        0 moves the whole file, to a name that must be free. The page count as first page moves
 *                  nothing and succeeds. The source must have two pages or more.
 * callback         may be null; gets the number of pages to move and the number copied.
 * user             passed to the callback.
 *
 * Returns 1 or 0. A failure leaves the destination as it was, unless the moved pages exist nowhere else by
 * then.
 * Errors: those of all.
 * A success clears the last error.
 */
int32_t TIFF_CALL SplitTiffFile(const char* sourcePath, const char* destinationPath, int32_t firstPage,
                                TiffProgress callback, uint64_t user) TIFF_NOEXCEPT;

/* Moves the first pages of a file into files of one page each, which replace old files of the same names.
 *
 * sourcePath  of the file that loses the pages.
 * nameBase    path and beginning of their names: "a" gives a0001.tif, a0002.tif and so on. A folder, ending
 *             in a backslash, gets a beginning of its own: "~", a number not yet in use, "_".
 * pageCount   pages to move, at least 1; all of them deletes the file. It must have two or more.
 * callback    may be null; its total is twice the number of pages, one step for each page copied and one
 *             for each page deleted.
 * user        passed to the callback.
 *
 * Returns 1 or 0. Files written before a failure stay. When the callback stops during the deletions, the
 * reported pages are gone and all others stay.
 * Errors: those of all.
 * A success clears the last error.
 */
int32_t TIFF_CALL CutTiffFile(const char* sourcePath, const char* nameBase, int32_t pageCount,
                              TiffProgress callback, uint64_t user) TIFF_NOEXCEPT;

/* Appends the stored strips of a page to an existing file of bare fax code.
 *
 * rawPath   a file that must exist. When it cannot be written to the end, IT IS DELETED, with its old
 *           content: half a page would be sent as a whole one.
 * tiffPath  of the file that has the page.
 * page      counted from 0.
 * offset    bytes from the end of that file at which to write: 0 appends, negative values overwrite.
 *
 * Returns the raw file's path, in a buffer of the calling thread that the caller must not free, or null.
 * Errors: those of all; 29 also when the offset lies before the file's beginning or both paths name one
 *         file: the raw file stays then.
 * A success clears the last error.
 */
const char* TIFF_CALL AppendCCITTImageFile(const char* rawPath, const char* tiffPath, uint32_t page,
                                           int32_t offset) TIFF_NOEXCEPT;

/* Sets the total in the PageNumber tag of every page that has one. The page numbers stay.
 *
 * path   of the TIFF file.
 * total  the low 16 bits are written.
 *
 * Only for files in Intel byte order: the order is not checked, and a file in the other one fails or is
 * damaged.
 *
 * Returns 1 or 0. Changes made before a failure stay.
 * Errors: those of all; 6 also when the directories are together longer than the file: its chain of pages
 *         has a loop.
 * A success clears the last error.
 */
int32_t TIFF_CALL UpdatePageNumbers(const char* path, uint32_t total) TIFF_NOEXCEPT;

/* UpdatePageNumbers for a TIFF in memory.
 *
 * file   the TIFF, which stays open.
 * total  as UpdatePageNumbers.
 *
 * Returns 1 or 0.
 * Errors: as UpdatePageNumbers.
 * A success clears the last error.
 */
int32_t TIFF_CALL UpdatePageNumbersInMemory(HGLOBAL file, uint32_t total) TIFF_NOEXCEPT;

/* Gives a page of a file a tag, in place of one with the same number. The file is rewritten, all
 * pages packed, under its name with everything after the last full stop replaced by "~~~" (or with
 * ".~~~" added), and the new file stays there when this fails; a file of that name is overwritten.
 *
 * path                 of the TIFF file.
 * page                 counted from 0.
 * tag                  its number, 1 to 65535.
 * type, values, count  as DefineTiffImageInfoBuffer.
 *
 * Returns 1 or 0.
 * Errors: those of all; 1 also when the file cannot be opened as a TIFF; 3 no such page; 6 no such file; 29
 *         also for a tag above 65535.
 * A success clears the last error.
 */
int32_t TIFF_CALL AddTiffTagToImage(const char* path, int32_t page, uint32_t tag, uint32_t type,
                                    const void* values, uint32_t count) TIFF_NOEXCEPT;

/* Removes a tag from a page, as AddTiffTagToImage rewrites the file. A page without the tag is no error:
 * the file is rewritten all the same.
 *
 * path, page, tag  as AddTiffTagToImage.
 *
 * Returns 1 or 0.
 * Errors: as AddTiffTagToImage.
 * A success clears the last error.
 */
int32_t TIFF_CALL DeleteTiffTagOfImage(const char* path, int32_t page, uint32_t tag) TIFF_NOEXCEPT;

TIFF_END

#endif
