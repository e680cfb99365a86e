/* JPEG streams as bytes: what their markers say, and their parts. Nothing is decoded. */
#ifndef TOOLS_JPEG_STREAM_H
#define TOOLS_JPEG_STREAM_H

#include "tiff/base.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace tifftool {

struct JpegStream {
    std::string fault; // why it cannot be a page of this library; empty for none
    uint32_t width = 0, height = 0;
    struct Component {
        uint8_t identifier, horizontal, vertical;
    };
    std::vector<Component> components;
    int adobeTransform = -1;        // -1 when it is not said
    uint32_t dots[2] = {0, 0};      // a resolution, times 1000
    bool perCentimetre = false;     // else per inch
    uint32_t orientation = 1;       // as TIFF counts
    uint32_t quality = 0;           // the nearest one; 0 for none
    std::vector<uint8_t> tables;    // segments before the first scan
    std::vector<uint8_t> otherwise; // SOI to EOI without tables before the scan, APPn and COM
};

JpegStream ReadJpeg(std::span<const uint8_t> bytes);

// "4:2:0"; empty for grey.
std::string DescribeSampling(const JpegStream& stream);

// The first strip of a loaded page of compression 7 and its tables: a stream by itself. Empty when they
// cannot be read.
std::vector<uint8_t> FirstStream(HGLOBAL file, const std::string& path, uint32_t page);

// ", 4:2:0, quality 75", or with `fault` why the page cannot be decoded.
std::string DescribeJpeg(HGLOBAL file, const std::string& path, uint32_t page, std::string& fault);

} // namespace tifftool

#endif
