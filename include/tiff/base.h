/* What every public header needs: the system's types, C linkage, and a layout and a calling convention that
 * no compiler option changes.
 *
 * <windows.h> is included without <winsock.h>, so that <winsock2.h> may follow, and without the macros min
 * and max. A program that wants all of <windows.h> includes it first.
 */
#ifndef TIFF_BASE_H
#define TIFF_BASE_H

#if defined(_WIN32) && !defined(_WIN64)
#error "TIFF.DLL is a 64-bit library: build this program for 64-bit Windows."
#endif

#include "tiff/values.h"

/* __pragma also reaches compilers that have no _Pragma. */
#ifdef _MSC_VER
#define TIFF_PACK_LIKE_THE_SYSTEM __pragma(pack(push, 8))
#define TIFF_PACK_AS_BEFORE __pragma(pack(pop))
#else
#define TIFF_PACK_LIKE_THE_SYSTEM _Pragma("pack(push, 8)")
#define TIFF_PACK_AS_BEFORE _Pragma("pack(pop)")
#endif

TIFF_PACK_LIKE_THE_SYSTEM
#include <stddef.h>
#include <stdint.h>
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#define TIFF_MADE_LEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#define TIFF_MADE_NOMINMAX
#endif
#include <windows.h>
#ifdef TIFF_MADE_LEAN
#undef TIFF_MADE_LEAN
#undef WIN32_LEAN_AND_MEAN
#endif
#ifdef TIFF_MADE_NOMINMAX
#undef TIFF_MADE_NOMINMAX
#undef NOMINMAX
#endif
TIFF_PACK_AS_BEFORE

#ifdef __cplusplus
#define TIFF_BEGIN                                                                                           \
    TIFF_PACK_LIKE_THE_SYSTEM extern "C"                                                                     \
    {
#define TIFF_END                                                                                             \
    }                                                                                                        \
    TIFF_PACK_AS_BEFORE
#define TIFF_NOEXCEPT noexcept
#else
#define TIFF_BEGIN TIFF_PACK_LIKE_THE_SYSTEM
#define TIFF_END TIFF_PACK_AS_BEFORE
#define TIFF_NOEXCEPT
#endif

#ifdef _WIN32
#define TIFF_CALL __cdecl
#else
#define TIFF_CALL
#endif

/* Proves a record's size and the place of one of its fields, in C and C++ of every year. */
#define TIFF_LAYOUT(record, bytes, field, place)                                                             \
    extern void TiffLayoutHolds(                                                                             \
        char(*proof)[sizeof(record) == (bytes) && offsetof(record, field) == (place) ? 1 : -1])

#endif
