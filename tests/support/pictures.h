// Decoded rows as text, and packed DIBs.
#pragma once

#include "support/tiff_builder.h"

// The outcome of a decoding call: its result, the last error and the rows handed over.
struct Decoded {
    int32_t result = 0;
    uint32_t error = 0;
    std::vector<Bytes> rows;
    std::vector<uint32_t> numbers; // row numbers as handed over

    // Bilevel rows, cut to the width: "..##/....".
    std::string Pixels(uint32_t width) const;
    Bytes Joined() const;
};

// Collects rows of this length; can stop with a status at a row.
struct RowCollector {
    uint32_t rowBytes;
    uint32_t stopRow = UINT32_MAX;
    intptr_t stopStatus = 0;
    Decoded decoded{};
};

intptr_t CollectRow(void* line, uint32_t row, void* collector);

// Hands out lines, over and over when there are more rows; stops with a status at a row when asked to.
struct RowSource {
    std::vector<Bytes> lines;
    uint32_t stopRow = UINT32_MAX;
    intptr_t stopStatus = 0;
    TiffStream closedStream = 0; // taken away at the first row
    uint32_t calls = 0;
};

intptr_t FillRow(void* line, uint32_t row, void* source);

Decoded DecodePage(HGLOBAL file, uint32_t page, uint32_t firstStrip = 0, uint32_t rowCount = 0);

// The first page of a TIFF file.
Decoded DecodeFile(const Bytes& tiff);

// Builds a packed DIB.
struct DibPicture {
    uint32_t width, height;
    uint16_t bits;
    std::vector<uint32_t> colours; // 0x00RRGGBB
    Bytes pixels;                  // rows as the DIB stores them, padded
    int32_t dotsPerMetre[2] = {7874, 3937};
    uint32_t colourCount = 0; // biClrUsed
    bool topDown = false;
};

Bytes PackedDib(const DibPicture& picture);
