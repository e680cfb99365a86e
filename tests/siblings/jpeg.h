// Controls the test's substitute for the JPEG library. Its code is the rows, unchanged.
#pragma once

#include "tiff/codecs.h"

#ifndef _WIN32
using HCURSOR = void*;
inline HCURSOR GetCursor()
{
    return nullptr;
}
#endif

// The restart interval of pages that have other files closed while they are decoded.
constexpr uint32_t CLOSES_FILES = 99;

struct JpegCall {
    uint32_t count; // of calls so far; the other fields are of the last call
    CodecContext context;
    uint32_t tileOffset, quantisationTable, acTable, dcTable; // the first of each
    HCURSOR cursor;
    uint32_t rows;      // encoded
    uint32_t byteTotal; // of their bytes
};

extern "C" {
// The status of both codecs from now on; 0 at first.
__declspec(dllexport) void AnswerJpeg(uint32_t status);
__declspec(dllexport) const JpegCall* LastJpegCall();
}
