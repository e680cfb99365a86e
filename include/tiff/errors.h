#ifndef TIFF_ERRORS_H
#define TIFF_ERRORS_H

#include "tiff/base.h"

TIFF_BEGIN

/* Sets the calling thread's last error when the code, taken as signed, lies in 0 to 37;
 * any other code changes nothing.
 *
 * code  0 to 37.
 *
 * Returns the previous last error in both cases.
 */
uint32_t TIFF_CALL SetTiffError(uint32_t code) TIFF_NOEXCEPT;

/* Returns the calling thread's last error without changing it. Only a failure makes it say anything: some
 * functions clear it when they succeed, others keep an earlier code, and each says which.
 * The last error stays.
 */
uint32_t TIFF_CALL TiffError(void) TIFF_NOEXCEPT;

/* Gives the English text of an error code.
 *
 * buffer  receives the text and its terminating zero; 64 bytes hold every text. Null shows the text in a
 *         message box captioned "TIFF error" instead.
 * code    0 to 37; any other value stands for the calling thread's last error. A last error without a text
 *         of its own reads as code 37, "Unknown error."
 *
 * Returns buffer.
 * The last error stays.
 */
char* TIFF_CALL TiffErrorString(char* buffer, int32_t code) TIFF_NOEXCEPT;

/* Tells what is known of the calling thread's last error besides its code, as one line: the path of the
 * file, the index of the page, counted from 0, the number of the tag and the system's error, as far as each
 * had a part in the failure. Such as "C:\fax\in.tif, page index 2, tag 273" or "out.tif, system error 5
 * (access denied)". It is for people to read: programs go by the code.
 *
 * buffer  receives as much of the line as it can hold, with a terminating zero. May be null. A path stands
 *         as it was passed, except that control characters become question marks.
 * size    of the buffer in bytes; 512 hold every line. 0 writes nothing.
 *
 * Returns the bytes that the whole line takes with its terminating zero: 1 when nothing is known, which is
 * so after a success that clears the last error, and after SetTiffError.
 * The last error stays.
 */
uint32_t TIFF_CALL TiffErrorDetail(char* buffer, uint32_t size) TIFF_NOEXCEPT;

TIFF_END

#endif
