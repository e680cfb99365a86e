// Pages as black and white, by each method, and turned. What ImageMagick needs for dithering,
// bench/time-tools measures.
#include "bench/jobs.h"
#include "bench/library.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <utility>

namespace {

void Dither(benchmark::State& state, const Picture& picture, uint32_t method)
{
    HGLOBAL dib = MakeBlock(PackDib(picture));
    for (auto _ : state) {
        HGLOBAL result = DitherDIB(dib, method, 0);
        DemandSuccess(result != nullptr, picture.name);
        GlobalFree(result);
    }
    GlobalFree(dib);
    state.counters[BYTES] = static_cast<double>(picture.rows.size());
}

void Turn(benchmark::State& state, const Picture& picture)
{
    HGLOBAL dib = MakeBlock(PackDib(picture));
    for (auto _ : state) {
        HGLOBAL result = RotateDIB(dib, 1);
        DemandSuccess(result != nullptr, picture.name);
        GlobalFree(result);
    }
    GlobalFree(dib);
    state.counters[BYTES] = static_cast<double>(picture.rows.size());
}

} // namespace

void RegisterDitherJobs(const std::vector<Picture>& pictures)
{
    constexpr std::pair<const char*, uint32_t> methods[] = {{"threshold", TIFF_DITHER_THRESHOLD},
                                                            {"ordered", TIFF_DITHER_ORDERED},
                                                            {"diffusion", TIFF_DITHER_DIFFUSION}};
    for (const Picture& picture : pictures) {
        for (const auto& [name, method] : methods)
            if (picture.bits != 1)
                benchmark::RegisterBenchmark(
                    (std::string("dither/") + name + '/' + picture.name + "/tiff").c_str(), Dither, picture,
                    method);
        benchmark::RegisterBenchmark(("dither/quarter turn/" + picture.name + "/tiff").c_str(), Turn,
                                     picture);
    }
}
