// The same work in growing sizes: pages of a file, pixels of a line, strips of a page. The cost of each page,
// pixel or strip must not grow with their number.
#include "bench/files.h"
#include "bench/jobs.h"
#include "bench/library.h"

#include <benchmark/benchmark.h>

namespace {

intptr_t IgnoreLine(void*, uint32_t, void*)
{
    return 0;
}

// Runs of up to 40 pixels, the same on every machine.
Picture DrawRuns(uint32_t width, uint32_t height)
{
    Picture picture{.name = "runs", .width = width, .height = height};
    picture.rows.resize(picture.RowBytes() * height);
    uint32_t state = 1, left = 0;
    bool black = false;
    for (uint32_t row = 0; row < height; ++row)
        for (uint32_t column = 0; column < width; ++column) {
            if (left-- == 0) {
                state = state * 1664525 + 1013904223;
                left = (state >> 24) % 40;
                black = !black;
            }
            if (black)
                picture.rows[row * picture.RowBytes() + column / 8] |=
                    static_cast<uint8_t>(0x80 >> column % 8);
        }
    return picture;
}

void Decode(benchmark::State& state, const std::vector<uint8_t>& tiff, double size)
{
    const OpenPage page(tiff);
    for (auto _ : state)
        DemandSuccess(DecodeTiffImage(page.file, 0, 0, 0, nullptr, IgnoreLine), "decoding");
    state.counters[SIZE] = size;
}

void Register(const std::string& what, uint32_t size, auto run)
{
    const std::string name = "growth/" + what + '/' + std::to_string(size) + "/tiff";
    benchmark::RegisterBenchmark(name.c_str(), run)->Unit(benchmark::kMillisecond);
}

void Open(benchmark::State& state, const std::string& path, uint32_t pages)
{
    WritePages(path, pages, CLOSE);
    for (auto _ : state)
        CloseTiffFile(OpenTiffFile(path.c_str(), T_READ));
    state.counters[SIZE] = pages;
}

} // namespace

void RegisterGrowthJobs(const BenchFolders& folders)
{
    constexpr uint32_t ROWS = 100, STRIP_ROWS = 10000, STRIP_WIDTH = 1000;
    for (uint32_t pages = 10; pages <= 10000; pages *= 10)
        Register("opening, by pages", pages,
                 [pages, path = (folders.scratch / "growth.tif").string()](benchmark::State& state) {
                     Open(state, path, pages);
                 });
    for (const Scheme& scheme : schemes) {
        if (scheme.predictor || IsLossy(scheme))
            continue;
        const std::string name = scheme.name;
        for (uint32_t width = 100; width <= 100000; width *= 10)
            Register(name + ", by pixels a line", width, [=, &scheme](benchmark::State& state) {
                Decode(state, WriteTiff(DrawRuns(width, ROWS), scheme, ROWS),
                       static_cast<double>(width) * ROWS);
            });
        for (uint32_t strips = 1; strips <= STRIP_ROWS; strips *= 10)
            Register(name + ", by strips", strips, [=, &scheme](benchmark::State& state) {
                Decode(state, WriteTiff(DrawRuns(STRIP_WIDTH, STRIP_ROWS), scheme, STRIP_ROWS / strips),
                       strips);
            });
    }
}
