// How tests speak to the JPEG library that stands in for the real one. Its code is the rows as
// they are.
#pragma once

#include "tiff/codecs.h"

// The restart interval of pages that have other files closed while they are decoded.
constexpr uint32_t CLOSES_FILES = 99;

struct JpegCall {
    uint32_t count; // of calls so far; the rest is of the last one
    CodecContext context;
    uint32_t tileOffset, quantisationTable, acTable, dcTable; // the first of each
    HCURSOR cursor;
    uint32_t rows;      // encoded
    uint32_t byteTotal; // of their bytes
};

extern "C" {
// What both codecs return from now on; 0 at first.
__declspec(dllexport) void AnswerJpeg(uint32_t status);
__declspec(dllexport) const JpegCall* LastJpegCall();
}
