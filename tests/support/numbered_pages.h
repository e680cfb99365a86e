// Files with distinguishable pages, and checks of their order.
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

// Returns an empty text when a file has exactly these pages of another one, whole, in order and without
// overlaps; else the difference.
std::string PagesDiffer(const char* path, const Bytes& original, const Order& order);

void ExpectPages(const char* path, const Bytes& original, const Order& order);

bool Exists(const std::string& path);
