/* Deflated bytes, in the zlib form. */
#ifndef TOOLS_DEFLATE_H
#define TOOLS_DEFLATE_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace tifftool {

struct DeflateState;

struct Deflater {
    std::unique_ptr<DeflateState> state;

    Deflater();
    ~Deflater();
};

void Add(Deflater& deflater, std::span<const uint8_t> bytes);
std::vector<uint8_t> Finish(Deflater& deflater);

uint32_t Crc32(std::span<const uint8_t> bytes);

// Exactly `size` bytes, or none when the data are damaged or give another number.
std::vector<uint8_t> Inflate(std::span<const uint8_t> bytes, size_t size);

} // namespace tifftool

#endif
