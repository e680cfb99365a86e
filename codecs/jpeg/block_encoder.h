// Quantised blocks to entropy-coded bytes, by the standard's Huffman tables.
#pragma once

#include "codecs/jpeg/transform.h"

namespace tiff::jpeg {

// Bits on their way to bytes. A zero follows each FF.
struct BitWriter {
    uint64_t bits; // the last ones, lowest last
    uint32_t free; // how many more there is room for
    uint8_t* next;
};

inline constexpr uint32_t MOST_BLOCK_BYTES = 512; // of code

void StartBits(BitWriter& writer, uint8_t* target);

// Fills the last byte with ones.
void EndBits(BitWriter& writer);

enum class TableKind { Luminance, Chrominance };

// Codes a block after one of the given DC coefficient, which becomes its own.
void EncodeBlock(BitWriter& writer, const Block& block, TableKind kind, int32_t& prediction);

} // namespace tiff::jpeg
