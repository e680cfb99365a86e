// Every codec both ways. "decode" goes from code bytes to an existing DIB, "load" to a DIB that the system
// must allocate first, "encode" from a DIB to a finished TIFF in memory.
#include "bench/jobs.h"
#include "bench/lean_memory.h"
#include "bench/library.h"
#include "raster/dib.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <string_view>

namespace {

struct Job {
    const Picture* picture;
    const Scheme* scheme;
};

void Count(benchmark::State& state, const Picture& picture)
{
    state.counters[BYTES] = static_cast<double>(picture.rows.size());
    state.counters[CHANGES] = static_cast<double>(ChangingElements(picture));
}

std::vector<uint8_t> CodeOf(const Job& job)
{
    return WriteTiff(*job.picture, *job.scheme, RowsPerStrip(*job.scheme, *job.picture));
}

void DecodeByLibrary(benchmark::State& state, const Job& job)
{
    const Picture& picture = *job.picture;
    const OpenPage page(CodeOf(job));
    DemandSame(page.file, picture, std::string("decoding ") + job.scheme->name);
    const auto stride = static_cast<uint32_t>(tiff::DibStride(picture.width, picture.bits));
    std::vector<uint8_t> pixels(size_t{stride} * picture.height);
    TiffDecodeLineContext target{.pixelBits = pixels.data(),
                                 .height = picture.height,
                                 .lineBytes = static_cast<uint32_t>(picture.RowBytes()),
                                 .strideOrColourUse = stride,
                                 .orientation = 1};
    const TiffLineCallback routine = picture.bits == 24 ? DllFlushTiffLine24DIB : DllFlushTiffLineDIB;
    for (auto _ : state)
        DemandSuccess(DecodeTiffImage(page.file, 0, 0, 0, &target, routine), "decoding");
    Count(state, picture);
}

void DecodeByPeer(benchmark::State& state, const Job& job)
{
    std::vector<uint8_t> bytes = CodeOf(job), rows(job.picture->rows.size());
    PeerFile* file = OpenBytes(bytes);
    for (auto _ : state)
        ReadStrips(file, rows.data(), rows.size());
    Close(file);
    Count(state, *job.picture);
}

// The limit: the picture's bytes, row by row into rows of a DIB.
void CopyPicture(benchmark::State& state, const Job& job)
{
    std::vector<uint8_t> rows(job.picture->rows.size());
    for (auto _ : state) {
        std::memcpy(rows.data(), job.picture->rows.data(), rows.size());
        benchmark::DoNotOptimize(rows.data());
    }
    Count(state, *job.picture);
}

void LoadByLibrary(benchmark::State& state, const Job& job)
{
    const OpenPage page(CodeOf(job));
    TakeLargeBlocksFromSystem(true);
    for (auto _ : state)
        GlobalFree(LoadTiffChainIntoDIB(page.file, 0));
    TakeLargeBlocksFromSystem(false);
    Count(state, *job.picture);
}

template <class Fill>
void FillFreshMemory(benchmark::State& state, const Job& job, Fill fill)
{
    const size_t bytes = job.picture->rows.size();
    TakeLargeBlocksFromSystem(true);
    for (auto _ : state) {
        HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, bytes);
        fill(static_cast<uint8_t*>(GlobalLock(block)), bytes);
        GlobalFree(block);
    }
    TakeLargeBlocksFromSystem(false);
    Count(state, *job.picture);
}

void LoadByPeer(benchmark::State& state, const Job& job)
{
    std::vector<uint8_t> bytes = CodeOf(job);
    PeerFile* file = OpenBytes(bytes);
    FillFreshMemory(state, job, [=](uint8_t* rows, size_t size) { ReadStrips(file, rows, size); });
    Close(file);
}

void CopyPictureToFreshMemory(benchmark::State& state, const Job& job)
{
    const uint8_t* from = job.picture->rows.data();
    FillFreshMemory(state, job, [=](uint8_t* rows, size_t size) { std::memcpy(rows, from, size); });
}

void EncodeByLibrary(benchmark::State& state, const Job& job)
{
    HGLOBAL dib = MakeBlock(PackDib(*job.picture));
    HGLOBAL saved = nullptr;
    for (auto _ : state) {
        if (saved)
            GlobalFree(saved);
        saved = SaveTiffToMemory(nullptr, dib, job.scheme->selector, 1);
        DemandSuccess(saved, "saving");
    }
    const auto* bytes = static_cast<const uint8_t*>(GlobalLock(saved));
    const OpenPage page({bytes, bytes + GlobalSize(saved)});
    if (!IsLossy(*job.scheme))
        DemandSame(page.file, *job.picture, std::string("encoding ") + job.scheme->name);
    GlobalFree(saved);
    GlobalFree(dib);
    Count(state, *job.picture);
}

void EncodeByPeer(benchmark::State& state, const Job& job)
{
    std::vector<uint8_t> bytes;
    for (auto _ : state) {
        PeerFile* file = CreateBytes(bytes);
        PutPage(file, *job.picture, *job.scheme, RowsPerStrip(*job.scheme, *job.picture));
        Close(file);
    }
    Count(state, *job.picture);
}

void Register(const char* group, const Job& job, const char* who, void (*run)(benchmark::State&, const Job&))
{
    const std::string name =
        std::string(group) + '/' + job.scheme->name + '/' + job.picture->name + '/' + who;
    benchmark::RegisterBenchmark(name.c_str(), [job, run](benchmark::State& state) {
        run(state, job);
    })->Unit(benchmark::kMillisecond);
}

} // namespace

void RegisterCodecJobs(const std::vector<Picture>& pictures)
{
    for (const Picture& picture : pictures)
        for (const Scheme& scheme : schemes) {
            if (!Suits(scheme, picture))
                continue;
            const Job job{&picture, &scheme};
            const bool stored = std::string_view(scheme.name) == "stored";
            if (!IsLossy(scheme)) {
                Register("decode", job, "tiff", DecodeByLibrary);
                Register("decode", job, "libtiff", DecodeByPeer);
            }
            if (stored)
                Register("decode", job, "memcpy", CopyPicture);
            Register("load", job, "tiff", LoadByLibrary);
            Register("load", job, "libtiff", LoadByPeer);
            if (stored)
                Register("load", job, "memcpy", CopyPictureToFreshMemory);
            Register("encode", job, "tiff", EncodeByLibrary);
            Register("encode", job, "libtiff", EncodeByPeer);
        }
}
