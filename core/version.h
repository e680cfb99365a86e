/* The version, written once: the build, the resource and the library's text take it from here. */
#define TIFF_VERSION_MAJOR 12
#define TIFF_VERSION_MINOR 8
#define TIFF_VERSION_TEXT "12.08"
