/* Annotations, kept as bytes in a tag of a file's first page. They belong to the annotation library
 * kvanno.dll, which is loaded for each call from this library's folder, or else from where the system finds
 * it. Its objects and bytes pass through unchanged.
 *
 * Failures return 0. Beside a null path they set no error code of their own; the TIFF operations in them do.
 */
#ifndef TIFF_ANNOTATIONS_H
#define TIFF_ANNOTATIONS_H

#include "tiff/base.h"

TIFF_BEGIN

/* An object of the annotation library; 0 is none. */
typedef uint32_t TiffAnnotation;

/* The functions of the annotation library. The loaded bytes serve for one call; the savers' functions return
 * the number of bytes to store, and non-zero when they have filled the buffer.
 */
typedef TiffAnnotation(TIFF_CALL* TiffAnnoCreateOnLoad)(const void* bytes, uint32_t count);
typedef uint32_t(TIFF_CALL* TiffAnnoGetSaveCount)(TiffAnnotation annotation);
typedef int32_t(TIFF_CALL* TiffAnnoGetSaveData)(TiffAnnotation annotation, void* buffer, uint32_t count);
typedef uint32_t(TIFF_CALL* TiffAnnoGetSaveCountOnPage)(TiffAnnotation annotation, int32_t annotationPage);
typedef int32_t(TIFF_CALL* TiffAnnoGetSaveDataExt)(TiffAnnotation annotation, void* buffer, uint32_t count,
                                                   int32_t annotationPage, int32_t filePage);

enum TiffAnnotationMode { TIFF_ANNOTATION_REPLACE = 1, TIFF_ANNOTATION_APPEND = 2 };

/* Makes an annotation object of a file's annotation bytes, with AnnoCreateOnLoad.
 *
 * path  of the TIFF file.
 * tag   its number; 0 for 32768.
 *
 * Returns what the annotation library does, or 0: there is no library, no such file, or no such tag with
 * values of type BYTE.
 * Errors: 29 no path; others as OpenTiffFile and GetTiffImageInfoBuffer.
 * A success clears the last error.
 */
TiffAnnotation TIFF_CALL LoadAnnotationFromTiff(const char* path, uint32_t tag) TIFF_NOEXCEPT;

/* Writes the bytes of an annotation object, as AddTiffTagToImage; with no bytes, the tag is deleted.
 *
 * path        of the TIFF file.
 * annotation  the object, which stays the annotation library's.
 * tag         as LoadAnnotationFromTiff.
 *
 * Returns 1, or 0, also when the tag was deleted.
 * Errors: 29 no path; others as AddTiffTagToImage.
 * A success clears the last error.
 */
int32_t TIFF_CALL SaveAnnotationIntoTiff(const char* path, TiffAnnotation annotation,
                                         uint32_t tag) TIFF_NOEXCEPT;

/* SaveAnnotationIntoTiff for one page of annotations. The bytes go to the file's first page in any case.
 *
 * path, annotation, tag  as SaveAnnotationIntoTiff.
 * mode                   TiffAnnotationMode. Appended bytes follow those that the tag has, if its type is
 *                        BYTE.
 * annotationPage         counted from 0, or -1; for the annotation library.
 * filePage               a page of the file; for the annotation library.
 *
 * Returns 1, or 0. Without bytes the result is 1, and in mode 1 the tag is deleted.
 * Errors: 1; 29 no path; others as AddTiffTagToImage.
 * A success clears the last error.
 */
int32_t TIFF_CALL SaveAnnotationIntoTiffExt(const char* path, TiffAnnotation annotation, uint32_t tag,
                                            int32_t mode, int32_t annotationPage,
                                            int32_t filePage) TIFF_NOEXCEPT;

TIFF_END

#endif
