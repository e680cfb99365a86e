// Opens files of many pages: the library parses every entry of every directory. Beside it libtiff counts the
// pages, and parses every directory.
#include "bench/files.h"
#include "bench/jobs.h"
#include "bench/library.h"

#include <benchmark/benchmark.h>

namespace {

void OpenByLibrary(benchmark::State& state, const std::string& path)
{
    for (auto _ : state) {
        HGLOBAL file = OpenTiffFile(path.c_str(), T_READ);
        DemandSuccess(file && TiffError() == 0, "opening " + path);
        CloseTiffFile(file);
    }
}

template <uint32_t (*WORK)(PeerFile*)>
void OpenByPeer(benchmark::State& state, const std::string& path)
{
    for (auto _ : state) {
        PeerFile* file = OpenPeerFile(path);
        benchmark::DoNotOptimize(WORK(file));
        Close(file);
    }
}

void Register(const std::string& name, const std::string& path,
              void (*run)(benchmark::State&, const std::string&))
{
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
        run(state, path);
    })->Unit(benchmark::kMillisecond);
}

} // namespace

void RegisterOpenJobs(const BenchFolders& folders)
{
    for (const auto& [what, spread] : {std::pair("close", CLOSE), std::pair("38 KB a page", TYPICAL_SPREAD)})
        for (const uint32_t pages : {1000u, 10000u}) {
            const std::string name = std::string("open/") + what + '/' + std::to_string(pages);
            const std::string path =
                (folders.scratch / ("open" + std::to_string(spread) + '-' + std::to_string(pages) + ".tif"))
                    .string();
            WritePages(path, pages, spread);
            Register(name + "/tiff", path, OpenByLibrary);
            Register(name + "/libtiff", path, OpenByPeer<ReadDirectories>);
            Register(name + "/libtiff count", path, OpenByPeer<CountPages>);
        }
}
