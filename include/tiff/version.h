/* The version. The build, the resources and the library's text take it from here. */
#ifndef TIFF_VERSION_H
#define TIFF_VERSION_H

#define TIFF_VERSION_MAJOR 12
#define TIFF_VERSION_MINOR 8
#define TIFF_VERSION_PATCH 0
#define TIFF_VERSION_TEXT "12.08"

/* To compare: 120800 is 12.8.0. A program built with a lower number of the same major version runs with this
 * library.
 */
#define TIFF_VERSION_NUMBER (TIFF_VERSION_MAJOR * 10000 + TIFF_VERSION_MINOR * 100 + TIFF_VERSION_PATCH)

/* Resource compilers need no more than the numbers. */
#ifndef RC_INVOKED

#include "tiff/base.h"

TIFF_BEGIN

/* Returns the TIFF_VERSION_NUMBER that the loaded library was built with. The last error stays. */
uint32_t TIFF_CALL GetTiffVersionNumber(void) TIFF_NOEXCEPT;

TIFF_END

#endif
#endif
