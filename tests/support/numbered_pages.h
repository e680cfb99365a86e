// Files whose pages can be told apart, and what became of them.
#pragma once

#include "support/pictures.h"

using Order = std::vector<int>; // pages by number; NEW is the page of NewDib
inline constexpr int NEW = -1;

TiffPage Page(uint32_t number);
Bytes Pages(uint32_t count, uint16_t byteOrder = TIFF_INTEL);

struct NewDib : Block {
    NewDib() : Block(PackedDib({8, 1, 1, {0xFFFFFF, 0}, Hex("A5000000")}))
    {
    }
};

// Whether a file consists of these pages of another one, whole and in order, and nothing overlaps;
// else what is wrong.
std::string PagesDiffer(const char* path, const Bytes& original, const Order& order);

void ExpectPages(const char* path, const Bytes& original, const Order& order);

bool Exists(const std::string& path);
