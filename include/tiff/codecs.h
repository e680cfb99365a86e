/* Codecs: the drivers that decode and encode a page line by line, and the buffers that let other
 * containers use the same codecs.
 */
#ifndef TIFF_CODECS_H
#define TIFF_CODECS_H

#include "tiff/streams.h"

TIFF_BEGIN

/* A line routine. On decoding it receives a finished line, on encoding it fills one.
 *
 * line      the line buffer, bytesPerLine bytes and 256 spare ones; bilevel lines are packed
 *           most significant bit first, 1 for black.
 * row       counted from 0 at the first row that the page stores.
 * userData  the value that was passed to the driver.
 *
 * Returns 0 to go on. Any other value in the low 32 bits stops the codec with that status.
 */
typedef intptr_t(TIFF_CALL* TiffLineCallback)(void* line, uint32_t row, void* userData);

/* The state of one decoding or encoding call. Zero-fill it before use. */
typedef struct CodecContext {
    uint8_t* codeCursor;         /* next byte to read or write in the code buffer */
    uint8_t* lineCursor;         /* start of the current line */
    uint32_t codeBytesLeft;      /* decoding: unread bytes; encoding: free bytes */
    uint32_t lineBytes;          /* bytesPerLine, refreshed before every line */
    uint32_t linePixels;         /* the width, refreshed before every line */
    void* userData;              /* third argument of the line routine */
    uint32_t lastLineOfStrip;    /* the line just handed over ends its strip */
    BITMAPINFOHEADER lineFormat; /* biWidth the width, biHeight the rows to process */
    uint32_t bytesPerLine;
    uint32_t compression; /* Compression in the low 16 bits, a variant above */
    uint32_t row;         /* next row to hand over or pull */
    HGLOBAL bufferBlock;  /* line buffer, then code buffer */
    TiffStream stream;
    uint32_t fillOrder;     /* 1 or 2 */
    uint32_t byteOrder;     /* TIFF_INTEL or TIFF_MOTOROLA */
    uint32_t bufferFilePos; /* decoding: file position of the code buffer, 0xFFFFFF before
                               the first fill; encoding: bytes of the strip written,
                               wrapping below 0 for a strip that begins in the buffer */
    uint32_t codeBufferSize;
    uint32_t dataEnd; /* decoding: end of the data; encoding: start of the strip */
    uint32_t strip;
    uint32_t stripPos; /* decoding: position of the next fill; encoding: bytes so far */
    uint32_t stripCount;
    uint32_t rowsPerStrip;
    uint32_t stripLastRow;
    HGLOBAL stripOffsets; /* 16-bit entries when stripOffsetsType is 3, else 32-bit */
    uint32_t stripOffsetsType;
    HGLOBAL stripByteCounts;
    TiffLineCallback lineCallback;
    uint8_t* lineBuffer;
    uint32_t lineBufferSize; /* bytesPerLine + 256 */

    /* Bits of one sample; 0 means that a pixel is one sample. */
    uint32_t bitsPerSample;

    /* Old-style JPEG pages only: read by the JPEG library. Strips are tiles there. */
    uint32_t jpegProcess; /* JPEGProc, 0 or 1 */
    uint32_t tileWidth, tileLength;
    uint32_t tilesAcross, tilesDown;
    uint32_t planarConfiguration;
    uint32_t restartInterval;
    HGLOBAL quantisationTables;       /* JPEGQTables, offsets */
    HGLOBAL acTables;                 /* JPEGACTables */
    HGLOBAL dcTables;                 /* JPEGDCTables */
    uint32_t subSampling[2];          /* horizontal, vertical */
    uint32_t referenceBlackWhite[12]; /* numerator and denominator of six values */
} CodecContext;
TIFF_LAYOUT(CodecContext, 312, referenceBlackWhite, 264);

/* Prepares a context for decoding: allocates the buffers, then positions on the current strip if there is
 * an array of strip offsets, else fills the code buffer at the stream's position.
 *
 * context  with lineFormat, bytesPerLine, stream, dataEnd, fillOrder, rowsPerStrip and the line routine
 *          set. The caller frees its buffers, with GlobalFree(bufferBlock) after GlobalUnlock.
 *
 * Returns 0, 1 (memory) or 6 (the first load failed). The last error is not set for 1.
 * A success keeps the last error.
 */
uint32_t TIFF_CALL InitDecodeBuffers(CodecContext* context) TIFF_NOEXCEPT;

/* Loads the next bytes of the stream into the code buffer.
 *
 * context  of InitDecodeBuffers.
 *
 * Returns 0, 5 (no more data) or 6.
 * A success keeps the last error.
 */
uint32_t TIFF_CALL FillCodeBuffer(CodecContext* context) TIFF_NOEXCEPT;

/* Hands the finished line to the line routine and prepares for the next one, moving on to the
 * next strip after the last line of a strip.
 *
 * context  of InitDecodeBuffers.
 *
 * Returns 0; 3 when all rows are done; 6 when the next strip cannot be reached; or what the line routine
 * returned.
 * A success keeps the last error.
 */
uint32_t TIFF_CALL FlushDataBuffer(CodecContext* context) TIFF_NOEXCEPT;

/* Decodes rows of a loaded page.
 *
 * file          an open TIFF file; it stays open.
 * page          number of a loaded page, counted from 0.
 * firstStrip    the strip to begin with.
 * rowCount      rows from there; 0, or more than the page has, goes to the end of the page.
 * userData      passed to the line routine.
 * lineCallback  receives the lines.
 *
 * Returns 1, or 0 with the last error set; lines handed over before a failure stay valid.
 * Errors: 1; 3 no such strip; 5 the data end early; 6; 10 tags missing, or the width is not positive; 11
 *         compression not known; 12 damaged code; 15 fill order; 20 early end of facsimile block; 22 and 23
 *         JPEG library; 9990 and 9991 JPEG pages that are not decoded line by line; whatever the line
 *         routine returned. A page that is not loaded is not decoded; the result is then 1 if the last
 *         error was 0, else 0.
 * A success clears the last error.
 */
int32_t TIFF_CALL DecodeTiffImage(HGLOBAL file, uint32_t page, uint32_t firstStrip, uint32_t rowCount,
                                  void* userData, TiffLineCallback lineCallback) TIFF_NOEXCEPT;

/* Prepares a context for encoding: allocates the buffers, takes the stream's position for the start of the
 * first strip and pulls the first line.
 *
 * context  with lineFormat, bytesPerLine, stream, fillOrder, rowsPerStrip and the line routine set;
 *          stripOffsets and stripByteCounts may be null, else they hold stripCount 32-bit entries. The
 *          caller frees the buffers as after InitDecodeBuffers.
 *
 * Returns 0; 1 (memory); 6 (the stream has no position); 3 when there are no rows; or what the line routine
 * returned.
 * The last error stays.
 */
uint32_t TIFF_CALL InitEncodeBuffers(CodecContext* context) TIFF_NOEXCEPT;

/* Pulls the next line from the line routine. When the line before it ended a strip, that
 * strip's offset and byte count are stored first: all of its code must be in the code buffer
 * or written by then.
 *
 * context  of InitEncodeBuffers.
 *
 * Returns 0; 3 when all rows are done; or what the line routine returned.
 * The last error stays.
 */
uint32_t TIFF_CALL FillDataBuffer(CodecContext* context) TIFF_NOEXCEPT;

/* Writes the content of the code buffer at the stream's position and empties it, also when the
 * write fails. Call it once more after the last line; an empty buffer writes nothing.
 *
 * context  of InitEncodeBuffers.
 *
 * Returns 0 or 6.
 * A success keeps the last error.
 */
uint32_t TIFF_CALL FlushCodeBuffer(CodecContext* context) TIFF_NOEXCEPT;

/* Encodes a page that was defined (define.h): pulls its lines from the line routine, row by row
 * from the first, writes the strips at the end of the file, defines their tags and writes the
 * directory. A missing RowsPerStrip becomes 1; a RowsPerStrip of 0 becomes the rows of the page.
 *
 * A TIFF in memory that was opened without a block gets one with its first page: it is the
 * caller's, available from GetMemoryTiffHandle. After a failure there is none.
 *
 * file          an open TIFF file; it stays open.
 * page          number of the page, of DefineTiffImage.
 * userData      passed to the line routine.
 * lineCallback  fills one line a call.
 *
 * Returns 1, or 0 with the last error set. The new page is linked in the very last step: after a failure
 * the file has the pages it had, and the page can be encoded again. A file that does not exist yet is
 * created first, or an old one emptied, and again by the next try.
 * Errors: 1, also when the page has more strips than can be listed; 3 no such page, or the line routine
 *         ended before the page did; 6, for a disk file after two seconds of retries; 10 tags missing; 11
 *         compression not known; 15 fill order; 16 sample layout; 22 and 23 JPEG library; 27; 29 no line
 *         routine; 34; 9990 old-style JPEG that is not tiled; whatever the line routine returned.
 * A success clears the last error.
 */
int32_t TIFF_CALL EncodeTiffImage(HGLOBAL file, uint32_t page, void* userData,
                                  TiffLineCallback lineCallback) TIFF_NOEXCEPT;

TIFF_END

#endif
