// The exported line routines over all rows of a picture, through one line buffer, beside memcpy of the same
// rows.
#include "bench/jobs.h"
#include "bench/library.h"
#include "raster/dib.h"

#include <benchmark/benchmark.h>

#include <cstring>

namespace {

struct Routine {
    const char* name;
    uint32_t bits; // of suitable pictures
    TiffLineCallback flush, fill;
    uint32_t invert;
};

constexpr Routine routines[] = {
    {"flush", 1, DllFlushTiffLineDIB, nullptr, 0},
    {"flush 24", 24, DllFlushTiffLine24DIB, nullptr, 0},
    {"fill", 1, nullptr, DllFillTiffLineDIB, 0},
    {"fill inverted", 1, nullptr, DllFillTiffLineDIB, 1},
    {"fill 24", 24, nullptr, DllFillTiffLineDIB24Bit, 0},
};

struct Rows {
    explicit Rows(const Picture& picture)
        : stride(static_cast<uint32_t>(tiff::DibStride(picture.width, picture.bits))), height(picture.height),
          rowBytes(static_cast<uint32_t>(picture.RowBytes())), line(rowBytes + size_t{256}),
          pixels(size_t{stride} * height)
    {
    }

    uint32_t stride, height, rowBytes;
    std::vector<uint8_t> line, pixels;
};

void Finish(benchmark::State& state, const Picture& picture)
{
    state.counters[BYTES] = static_cast<double>(picture.rows.size());
}

void RunRoutine(benchmark::State& state, const Picture& picture, const Routine& routine)
{
    Rows rows(picture);
    TiffDecodeLineContext target{.pixelBits = rows.pixels.data(),
                                 .height = rows.height,
                                 .lineBytes = rows.rowBytes,
                                 .strideOrColourUse = rows.stride,
                                 .orientation = 1};
    TiffEncodeLineContext source{.pixelBits = rows.pixels.data(),
                                 .height = rows.height,
                                 .lineBytes = rows.rowBytes,
                                 .strideOrColourUse = rows.stride,
                                 .invert = routine.invert};
    void* context = routine.flush ? static_cast<void*>(&target) : &source;
    const TiffLineCallback run = routine.flush ? routine.flush : routine.fill;
    for (auto _ : state)
        for (uint32_t row = 0; row < rows.height; ++row)
            run(rows.line.data(), row, context);
    Finish(state, picture);
}

void CopyRows(benchmark::State& state, const Picture& picture, bool flush)
{
    Rows rows(picture);
    for (auto _ : state)
        for (uint32_t row = 0; row < rows.height; ++row) {
            uint8_t* pixels = &rows.pixels[size_t{rows.height - 1 - row} * rows.stride];
            std::memcpy(flush ? pixels : rows.line.data(), flush ? rows.line.data() : pixels, rows.rowBytes);
            benchmark::ClobberMemory();
        }
    Finish(state, picture);
}

} // namespace

void RegisterLineJobs(const std::vector<Picture>& pictures)
{
    for (const Picture& picture : pictures)
        for (const Routine& routine : routines) {
            if (picture.bits != routine.bits || (picture.bits == 1 && picture.name != "text-300"))
                continue;
            const std::string name = std::string("lines/") + routine.name + '/' + picture.name;
            const bool flush = routine.flush != nullptr;
            benchmark::RegisterBenchmark((name + "/tiff").c_str(), [&](benchmark::State& state) {
                RunRoutine(state, picture, routine);
            });
            benchmark::RegisterBenchmark((name + "/memcpy").c_str(), [&, flush](benchmark::State& state) {
                CopyRows(state, picture, flush);
            });
        }
}
