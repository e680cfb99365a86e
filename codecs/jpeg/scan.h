// Entropy-coded data: blocks of a scan in the order of its code, with its restarts.
#pragma once

#include "codecs/jpeg/bit_reader.h"
#include "codecs/jpeg/huffman.h"
#include "codecs/jpeg/markers.h"
#include "codecs/jpeg/transform.h"

namespace tiff::jpeg {

// A component of a frame, with the tables of its scan.
struct Component {
    uint32_t horizontal, vertical;     // factors
    uint32_t width, height;            // samples
    uint32_t blocksAcross, blocksDown; // that these samples need
    uint8_t* lines;                    // of one row of MCUs, whole blocks; one line before the first
    size_t stride;
    bool hasScan;
    int32_t prediction;
    Quantisers quantisers;
    HuffmanLookup dc, ac;
    uint32_t dcIdentity, acIdentity; // of the lists that the look-ups are made of
};

inline constexpr uint32_t MOST_BLOCKS = 10; // of an MCU

// A decoded block on its way to its samples.
struct PendingBlock {
    Block block;
    uint8_t* samples;
    size_t stride;
    uint32_t places; // of its coefficients
};

struct Scan {
    BitReader reader;
    uint32_t count;
    Component* components[MOST_COMPONENTS];
    uint32_t position; // of its data
    uint32_t restartInterval, untilRestart;
    uint32_t nextRestart; // 0 to 7
    bool isMissing;       // the data of the rest of this interval
    uint32_t pendingCount;
    PendingBlock pending[MOST_BLOCKS];
};

// Starts at the first block.
void StartScan(Scan& scan, ByteSource& source);

// Decodes a row of MCUs of the frame into the lines of the components. Fails with 5 when the data end before
// it is whole, with 6, and with 12.
[[nodiscard]] Status DecodeMcuRow(Scan& scan, uint32_t mcusAcross, uint32_t mcuRow);

} // namespace tiff::jpeg
