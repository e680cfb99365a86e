// Crops of DIBs beside memcpy of as many bytes, and pages reduced to a quarter. What ImageMagick needs for
// that, scripts/bench measures.
#include "bench/jobs.h"
#include "bench/library.h"
#include "raster/dib.h"

#include <benchmark/benchmark.h>

#include <cstring>

namespace {

using Resize = HGLOBAL (*)(HGLOBAL dib, const Picture& picture);

// Not at a byte's edge, which costs a shift of every byte.
HGLOBAL Crop(HGLOBAL dib, const Picture& picture)
{
    return CropDIB(dib, 3, 2, static_cast<int32_t>(picture.width) - 10,
                   static_cast<int32_t>(picture.height) - 10);
}

HGLOBAL Quarter(HGLOBAL dib, const Picture& picture)
{
    return StretchDIB(dib, static_cast<int32_t>(picture.width) / 4, static_cast<int32_t>(picture.height) / 4,
                      TIFF_SMOOTH);
}

void Run(benchmark::State& state, const Picture& picture, Resize resize)
{
    HGLOBAL dib = MakeBlock(PackDib(picture));
    for (auto _ : state) {
        HGLOBAL result = resize(dib, picture);
        DemandSuccess(result != nullptr, picture.name);
        GlobalFree(result);
    }
    GlobalFree(dib);
    state.counters[BYTES] = static_cast<double>(picture.rows.size());
}

void Copy(benchmark::State& state, const Picture& picture)
{
    HGLOBAL dib = MakeBlock(PackDib(picture));
    const size_t bytes = GlobalSize(dib);
    const void* from = GlobalLock(dib);
    for (auto _ : state) {
        HGLOBAL copy = GlobalAlloc(GMEM_MOVEABLE, bytes);
        std::memcpy(GlobalLock(copy), from, bytes);
        GlobalUnlock(copy);
        GlobalFree(copy);
    }
    GlobalUnlock(dib);
    GlobalFree(dib);
    state.counters[BYTES] = static_cast<double>(picture.rows.size());
}

} // namespace

void RegisterResizeJobs(const std::vector<Picture>& pictures)
{
    for (const Picture& picture : pictures) {
        benchmark::RegisterBenchmark(("resize/crop/" + picture.name + "/tiff").c_str(), Run, picture, Crop);
        benchmark::RegisterBenchmark(("resize/crop/" + picture.name + "/memcpy").c_str(), Copy, picture);
        benchmark::RegisterBenchmark(("resize/quarter/" + picture.name + "/tiff").c_str(), Run, picture,
                                     Quarter);
    }
}
