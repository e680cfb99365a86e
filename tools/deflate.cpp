#include "deflate.h"

#include <new>

#include <zlib.h>

namespace tifftool {

struct DeflateState {
    z_stream stream{};
    std::vector<uint8_t> out;
};

namespace {

constexpr size_t PART_BYTES = 65536;

void Run(DeflateState& state, int flush)
{
    uint8_t part[PART_BYTES];
    do {
        state.stream.next_out = part;
        state.stream.avail_out = PART_BYTES;
        deflate(&state.stream, flush);
        state.out.insert(state.out.end(), part, part + (PART_BYTES - state.stream.avail_out));
    } while (state.stream.avail_out == 0);
}

} // namespace

Deflater::Deflater() : state(std::make_unique<DeflateState>())
{
    if (deflateInit(&state->stream, Z_DEFAULT_COMPRESSION) != Z_OK) {
        throw std::bad_alloc();
    }
}

Deflater::~Deflater()
{
    deflateEnd(&state->stream);
}

void Add(Deflater& deflater, std::span<const uint8_t> bytes)
{
    deflater.state->stream.next_in = const_cast<uint8_t*>(bytes.data());
    deflater.state->stream.avail_in = static_cast<uInt>(bytes.size());
    Run(*deflater.state, Z_NO_FLUSH);
}

std::vector<uint8_t> Finish(Deflater& deflater)
{
    deflater.state->stream.avail_in = 0;
    Run(*deflater.state, Z_FINISH);
    return std::move(deflater.state->out);
}

uint32_t Crc32(std::span<const uint8_t> bytes)
{
    return static_cast<uint32_t>(crc32(0, bytes.data(), static_cast<uInt>(bytes.size())));
}

std::vector<uint8_t> Inflate(std::span<const uint8_t> bytes, size_t size)
{
    std::vector<uint8_t> out(size);
    auto got = static_cast<uLongf>(size);
    const bool good = size <= UINT32_MAX && bytes.size() <= UINT32_MAX &&
                      uncompress(out.data(), &got, bytes.data(), static_cast<uLong>(bytes.size())) == Z_OK &&
                      got == size;
    return good ? out : std::vector<uint8_t>();
}

} // namespace tifftool
