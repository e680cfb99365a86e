/* Text notes on pages. A page keeps them in its HostComputer tag (316) as a text: records back to back, each
 * "~,1," and six fields with a comma behind each (kind, left, top, right, bottom, letter height), then the
 * note's text up to the next record. A value of another field type, or without any record, is another
 * program's and is never changed.
 */
#ifndef TIFF_NOTES_H
#define TIFF_NOTES_H

#include "tiff/base.h"

TIFF_BEGIN

/* Kinds of notes. Others are kept, and drawn as TIFF_NOTE_TEXT. */
enum TiffNoteKind {
    TIFF_NOTE_TEXT = 'T',
    TIFF_NOTE_FRAMED = 'F' /* in a frame on white */
};

typedef struct TiffNote {
    uint32_t kind;                    /* a character */
    int32_t left, top, right, bottom; /* pixels of the page as stored; right and bottom are outside */
    int32_t letterHeight;             /* pixels of the page; 0 for 12 points */
    uint32_t textBytes;               /* without a zero */
    const char* text;                 /* in the system's code page, lines ended by CR LF */
} TiffNote;
TIFF_LAYOUT(TiffNote, 40, text, 32);

/* Counts the notes of a loaded page. Damaged records, whose numbers are missing or beyond 32 bits, are none.
 *
 * file  an open TIFF file; it stays open.
 * page  number of a loaded page, counted from 0.
 *
 * Returns the count; 0 with error 0 for a page without notes, 0 with another error for a failure.
 * Errors: 1; 3 no such page; 27 a page that is not loaded; 34 no such file.
 * A success clears the last error.
 */
int32_t TIFF_CALL GetTiffNoteCount(HGLOBAL file, uint32_t page) TIFF_NOEXCEPT;

/* Gets a note of a loaded page.
 *
 * file      an open TIFF file; it stays open.
 * page      number of a loaded page, counted from 0.
 * index     counted from 0.
 * note      filled. Its text is the caller's buffer, its textBytes the length of the whole text.
 * text      gets the text, cut to the room, and a zero; null for none.
 * textSize  bytes of this room.
 *
 * Returns 1 or 0.
 * Errors: as GetTiffNoteCount; 3 also when there is no such note; 29 no note to fill.
 * A success clears the last error.
 */
int32_t TIFF_CALL GetTiffNote(HGLOBAL file, uint32_t page, uint32_t index, TiffNote* note, char* text,
                              uint32_t textSize) TIFF_NOEXCEPT;

/* Adds a note behind the others of a page. The file is rewritten as by AddTiffTagToImage.
 *
 * path  of the TIFF file.
 * page  counted from 0.
 * note  its kind is any printable ASCII character but "~", "%" and ",". Its text need not end in a zero,
 *       and may be null when it has no bytes. A lone CR or LF becomes CR LF; other bytes below 32 are left
 *       out.
 *
 * Returns 1 or 0.
 * Errors: 29 no path or no note, another kind, a letter height below 0, a rectangle whose right is not
 *         beyond its left or bottom beyond its top, a text that is null but has bytes; 35 the tag is in use
 *         by another program; others as OpenTiffFile, GetTiffImage and AddTiffTagToImage.
 * A success clears the last error.
 */
int32_t TIFF_CALL AddTiffNote(const char* path, uint32_t page, const TiffNote* note) TIFF_NOEXCEPT;

/* Puts a note in another's place. The kind and the letter height that the old one has are taken as well.
 *
 * path, page  as AddTiffNote.
 * index       counted from 0.
 * note        as AddTiffNote.
 *
 * Returns 1 or 0.
 * Errors: as AddTiffNote, but 3 when there is no such note.
 * A success clears the last error.
 */
int32_t TIFF_CALL ReplaceTiffNote(const char* path, uint32_t page, uint32_t index,
                                  const TiffNote* note) TIFF_NOEXCEPT;

/* Deletes a note, and the tag when nothing else is in it. Damaged records stay.
 *
 * path, page  as AddTiffNote.
 * index       counted from 0.
 *
 * Returns 1 or 0.
 * Errors: 3 no such page or note; 29 no path; others as AddTiffNote and DeleteTiffTagOfImage.
 * A success clears the last error.
 */
int32_t TIFF_CALL DeleteTiffNote(const char* path, uint32_t page, uint32_t index) TIFF_NOEXCEPT;

/* Draws the notes of a loaded page where the page is shown. Letters are black Arial, wrapped inside the
 * rectangle of the note as on text pages, and cut off by it, by the picture and by the device context's clip
 * region. Lines break at the same places in any size.
 *
 * deviceContext  the caller's, and comes back as it was. Its world transform counts: a turned page has
 *                turned notes.
 * file           an open TIFF file; it stays open.
 * page           number of a loaded page, counted from 0.
 * picture        where the whole page is shown, in logical units; an empty one gets nothing.
 *
 * Returns 1 or 0.
 * Errors: as GetTiffNoteCount; 10 the page has no size; 16 a page that GetTiffDimensions cannot describe;
 *         29 no device context or no picture.
 * A success clears the last error.
 */
int32_t TIFF_CALL DrawTiffNotes(HDC deviceContext, HGLOBAL file, uint32_t page,
                                const RECT* picture) TIFF_NOEXCEPT;

/* Draws the notes of a loaded page on a copy of a packed DIB, of the page or in another size. On pages with
 * Orientation 4, whose DIBs show the first stored row at the bottom, they stand upright where their pixels
 * are.
 *
 * dib   of 1, 4, 8 or 24 bits; it stays the caller's.
 * file  an open TIFF file; it stays open.
 * page  number of a loaded page, counted from 0.
 *
 * Returns a new packed DIB of the same depth, colours and resolution, rows from the bottom, which the
 * caller frees with GlobalFree, or null.
 * Errors: as DrawTiffNotes and CropDIB.
 * A success clears the last error.
 */
HGLOBAL TIFF_CALL DrawTiffNotesOnDIB(HGLOBAL dib, HGLOBAL file, uint32_t page) TIFF_NOEXCEPT;

/* Lets the user edit kind, letter height and text of a note in a dialog. The rectangle stays.
 *
 * window    that owns the dialog, and stays open; may be null.
 * note      shown, and changed by OK: its text is then the caller's buffer.
 * text      gets the text and a zero; may be where the note's text is.
 * textSize  bytes of this room: no longer text can be typed.
 *
 * Returns 1 for OK, 2 for Cancel, which changes nothing, or 0.
 * Errors: 1 there is no dialog; 29 no note, no room, or a text for which there is no room.
 * A success clears the last error.
 */
int32_t TIFF_CALL EditTiffNote(HWND window, TiffNote* note, char* text, uint32_t textSize) TIFF_NOEXCEPT;

TIFF_END

#endif
