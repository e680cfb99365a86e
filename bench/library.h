// The library's side of a job: blocks, open files, and ending the program when it fails.
#pragma once

#include "bench/peer.h"
#include "tiff/tiff.h"

// A movable block with a copy of the bytes.
HGLOBAL MakeBlock(const std::vector<uint8_t>& bytes);

// A TIFF in memory that is open, its first page's tags loaded.
struct OpenPage {
    explicit OpenPage(const std::vector<uint8_t>& tiff);
    OpenPage(const OpenPage&) = delete;
    OpenPage& operator=(const OpenPage&) = delete;
    ~OpenPage();

    HGLOBAL block, file;
};

// Ends the program unless the first page decodes to the picture.
void DemandSame(HGLOBAL file, const Picture& picture, const std::string& job);

void DemandSuccess(bool done, const std::string& job);
