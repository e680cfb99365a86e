/* What every public header needs: the system's types and C linkage. */
#ifndef TIFF_BASE_H
#define TIFF_BASE_H

#include "tiff/values.h"

#include <stdint.h>
#include <windows.h>

#ifdef __cplusplus
#define TIFF_BEGIN extern "C" {
#define TIFF_END }
#define TIFF_NOEXCEPT noexcept
#else
#define TIFF_BEGIN
#define TIFF_END
#define TIFF_NOEXCEPT
#endif

#endif
