/* CALS raster files, which commands take as they take TIFF files. */
#ifndef TOOLS_CALS_H
#define TOOLS_CALS_H

#include <cstdint>
#include <string>

namespace tifftool {

// A file with the header of a CALS file, which is no TIFF file.
bool IsCals(const char* path);

// Prints the size and the records of the header; returns an exit code.
int PrintCals(const char* path);

// Reports why a CALS file could not be read; returns FAILED.
int ReportCals(const std::string& path, uint32_t code);

} // namespace tifftool

#endif
