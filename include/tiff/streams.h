/* Streams: one set of operations over disk files and over growable blocks of global memory.
 *
 * A stream handle above 0 is a Win32 file handle; -2 to -30 name memory files of the calling
 * thread; everything else is invalid and fails. Counts and positions are 32-bit.
 */
#ifndef TIFF_STREAMS_H
#define TIFF_STREAMS_H

#include "tiff/base.h"

#define STREAM_FAILED 0xFFFFFFFFu

TIFF_BEGIN

typedef int64_t TiffStream;

/* Reads up to count bytes at the current position.
 *
 * stream  an open stream; it stays open.
 * buffer  receives the bytes.
 * count   bytes.
 *
 * Returns the number of bytes read, which is smaller at the end of the file and 0 when the system's read
 * fails; STREAM_FAILED for an invalid handle or a block that cannot be locked.
 * The last error stays.
 */
uint32_t TIFF_CALL mRead(TiffStream stream, void* buffer, uint32_t count) TIFF_NOEXCEPT;

/* Writes count bytes at the current position. A memory file grows as needed, to at most 2 GiB - 1
 * bytes, which may replace its block.
 *
 * stream  an open stream; it stays open.
 * buffer  has the bytes.
 * count   bytes.
 *
 * Returns the number of bytes written (0 when the system's write fails) or STREAM_FAILED.
 * The last error stays.
 */
uint32_t TIFF_CALL mWrite(TiffStream stream, const void* buffer, uint32_t count) TIFF_NOEXCEPT;

/* Moves the position.
 *
 * stream  an open stream; it stays open.
 * offset  bytes, never negative. Origin 2 differs: a memory file goes offset bytes back from its end, a
 *         disk file forward from it.
 * origin  0 from the start, 1 from the current position, 2 from the end. A memory file stays where it is
 *         for any other origin.
 *
 * Returns the new position, or STREAM_FAILED: outside a memory file (its end is inside), at or beyond 4 GiB
 * on disk. A failed memory seek leaves the position alone.
 * The last error stays.
 */
uint32_t TIFF_CALL mSeek(TiffStream stream, uint32_t offset, int32_t origin) TIFF_NOEXCEPT;

/* Returns the current position or STREAM_FAILED.
 *
 * stream  an open stream; it stays open.
 *
 * The last error stays.
 */
uint32_t TIFF_CALL mTell(TiffStream stream) TIFF_NOEXCEPT;

/* Returns the size in bytes or STREAM_FAILED. The position stays.
 *
 * stream  an open stream; it stays open.
 *
 * The last error stays.
 */
uint32_t TIFF_CALL mSize(TiffStream stream) TIFF_NOEXCEPT;

/* Closes a disk file, or forgets a memory file without freeing its block.
 *
 * stream  the stream, which is no stream afterwards.
 *
 * Returns 0; STREAM_FAILED for an invalid handle.
 * The last error stays.
 */
uint32_t TIFF_CALL mClose(TiffStream stream) TIFF_NOEXCEPT;

/* Reads count values of a TIFF field type.
 *
 * stream     an open stream; it stays open.
 * type       3 SHORT, 4 and 9 LONG, 5 RATIONAL (two LONGs); any other type is bytes.
 * count      number of values.
 * buffer     receives count elements in the processor's order.
 * byteOrder  TIFF_MOTOROLA swaps each element; any other value is Intel.
 * fillOrder  2 reverses the bits of every byte, after the swap.
 *
 * Returns 1, or 0 with error 6 when fewer bytes arrived.
 * A success keeps the last error.
 */
int32_t TIFF_CALL LongRead(TiffStream stream, uint32_t type, uint32_t count, void* buffer, uint32_t byteOrder,
                           uint32_t fillOrder) TIFF_NOEXCEPT;

/* Writes count values of a TIFF field type. The caller's buffer keeps its content. Only when memory for a
 * copy is missing are the values converted in place.
 *
 * stream, type, count   as LongRead.
 * buffer                has count elements in the processor's order.
 * byteOrder, fillOrder  as LongRead.
 *
 * Returns 1, or 0 with error 6.
 * A success keeps the last error.
 */
int32_t TIFF_CALL LongWrite(TiffStream stream, uint32_t type, uint32_t count, void* buffer,
                            uint32_t byteOrder, uint32_t fillOrder) TIFF_NOEXCEPT;

/* Passes count to the system's SetHandleCount. Kept for old callers.
 *
 * count  number of files.
 *
 * Returns what the system does.
 * The last error stays.
 */
uint32_t TIFF_CALL SetTiffDllFileHandle(uint32_t count) TIFF_NOEXCEPT;

TIFF_END

#endif
