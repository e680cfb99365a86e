// JPEG pages of one and of twenty million pixels, in the samplings and qualities that are met most.
#include "bench/jobs.h"
#include "bench/lean_memory.h"
#include "bench/library.h"

#include <benchmark/benchmark.h>

#include <cstring>

namespace {

constexpr uint32_t SAVER = 209;

struct Job {
    Picture picture;
    Scheme scheme;
};

// The picture side by side and below itself as often as it takes.
Picture Tiled(const Picture& picture, uint32_t width, uint32_t height)
{
    Picture made{picture.name, width, height, picture.bits, {}};
    made.rows.resize(made.RowBytes() * height);
    for (uint32_t row = 0; row < height; ++row)
        for (size_t at = 0; at < made.RowBytes(); ++at)
            made.rows[row * made.RowBytes() + at] =
                picture.rows[row % picture.height * picture.RowBytes() + at % picture.RowBytes()];
    return made;
}

void LoadByLibrary(benchmark::State& state, const Job& job)
{
    const OpenPage page(WriteTiff(job.picture, job.scheme, job.picture.height));
    TakeLargeBlocksFromSystem(true);
    for (auto _ : state) {
        HGLOBAL dib = LoadTiffChainIntoDIB(page.file, 0);
        DemandSuccess(dib, "loading");
        GlobalFree(dib);
    }
    TakeLargeBlocksFromSystem(false);
}

void LoadByPeer(benchmark::State& state, const Job& job)
{
    std::vector<uint8_t> bytes = WriteTiff(job.picture, job.scheme, job.picture.height);
    PeerFile* file = OpenBytes(bytes);
    TakeLargeBlocksFromSystem(true);
    for (auto _ : state) {
        HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, job.picture.rows.size());
        ReadStrips(file, static_cast<uint8_t*>(GlobalLock(block)), job.picture.rows.size());
        GlobalFree(block);
    }
    TakeLargeBlocksFromSystem(false);
    Close(file);
}

void SaveByLibrary(benchmark::State& state, const Job& job)
{
    HGLOBAL dib = MakeBlock(PackDib(job.picture));
    DemandSuccess(SetTiffJpegQuality(job.scheme.quality), "setting the quality");
    for (auto _ : state) {
        HGLOBAL saved = SaveTiffToMemory(nullptr, dib, SAVER, 1);
        DemandSuccess(saved, "saving");
        GlobalFree(saved);
    }
    DemandSuccess(SetTiffJpegQuality(75), "setting the quality");
    GlobalFree(dib);
}

void SaveByPeer(benchmark::State& state, const Job& job)
{
    std::vector<uint8_t> bytes;
    for (auto _ : state) {
        PeerFile* file = CreateBytes(bytes);
        PutPage(file, job.picture, job.scheme, job.picture.height);
        Close(file);
    }
}

using Routine = void (*)(benchmark::State&, const Job&);

void Register(const char* verb, const Job& job, const char* page, Routine byLibrary, Routine byPeer)
{
    const char* const sampling = job.picture.bits == 8 ? "grey" : job.scheme.chroma == 1 ? "4:4:4" : "4:2:0";
    const std::string name = std::string("jpeg/") + verb + ' ' + sampling + ", quality " +
                             std::to_string(job.scheme.quality) + '/' + page + '/';
    const auto add = [&](const char* who, Routine run) {
        benchmark::RegisterBenchmark((name + who).c_str(), [job, run](benchmark::State& state) {
            run(state, job);
        })->Unit(benchmark::kMillisecond);
    };
    add("tiff", byLibrary);
    add("libtiff", byPeer);
}

} // namespace

void RegisterJpegJobs(const std::vector<Picture>& pictures)
{
    static constexpr struct {
        const char* name;
        uint32_t width, height;
    } sizes[] = {{"1 MP", 1000, 1000}, {"20 MP", 4000, 5000}};
    for (const Picture& picture : pictures)
        for (const auto& size : sizes) {
            if (picture.bits == 1)
                continue;
            for (const uint16_t quality : {uint16_t{75}, uint16_t{95}}) {
                Job job{Tiled(picture, size.width, size.height), {"JPEG", SAVER, 7, 0, 0, false, 2, quality}};
                Register("load", job, size.name, LoadByLibrary, LoadByPeer);
                Register("save", job, size.name, SaveByLibrary, SaveByPeer);
                job.scheme.chroma = 1;
                if (picture.bits == 24)
                    Register("load", job, size.name, LoadByLibrary, LoadByPeer);
            }
        }
}
