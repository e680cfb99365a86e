// libtiff as a judge, both ways. Its own header declares a record `tiff`, so it must not be included where
// the library is.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace fuzz {

// The rows of a page, strip by strip. False when libtiff has anything to say about it.
bool DecodeByPeer(std::span<const uint8_t> file, uint32_t page, std::vector<uint8_t>& rows);

struct PeerScheme {
    uint16_t compression, predictor;
    uint32_t options; // of Group 3
    uint16_t fillOrder;
    uint32_t rowsPerStrip;
};

// A TIFF of one page with these rows; 24 bits are R, G, B.
std::vector<uint8_t> EncodeByPeer(std::span<const uint8_t> rows, uint32_t width, uint32_t height,
                                  uint32_t bits, const PeerScheme& scheme);

} // namespace fuzz
