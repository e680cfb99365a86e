// tiff_bench PAGES [options of Google Benchmark]; tiff_bench PAGES --memory; tiff_bench PAGES
// --files FOLDER
#include "bench/files.h"
#include "bench/jobs.h"
#include "core/process_state.h"

#include <benchmark/benchmark.h>

#include <malloc.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <string_view>

int main(int argc, char** argv)
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s PAGES [--memory | --files FOLDER | --benchmark_...]\n", argv[0]);
        return 2;
    }
    // Memory is used again, unless a job asks the system for it.
    mallopt(M_MMAP_MAX, 0);
    mallopt(M_TRIM_THRESHOLD, INT_MAX);
    const BenchFolders folders{argv[1], std::filesystem::exists("/dev/shm")
                                            ? std::filesystem::path("/dev/shm") /
                                                  ("tiff-bench-" + std::to_string(getpid()))
                                            : std::filesystem::temp_directory_path() / "tiff-bench"};
    if (!tiff::AttachProcess(nullptr))
        return 1;
    const std::vector<Picture> pictures = LoadPictures(folders.pages);
    if (argc > 2 && std::string_view(argv[2]) == "--memory") {
        PrintMemory(pictures);
        return 0;
    }
    if (argc > 3 && std::string_view(argv[2]) == "--files") {
        WriteFilesForWindows(pictures, argv[3]);
        return 0;
    }
    std::filesystem::create_directories(folders.scratch);
    setenv("TMPDIR", folders.scratch.c_str(), 1); // the folder for rewritten files
    RegisterCodecJobs(pictures);
    RegisterJpegJobs(pictures);
    RegisterLineJobs(pictures);
    RegisterOpenJobs(folders);
    RegisterEditingJobs(folders);
    RegisterWrappingJobs(pictures, folders);
    RegisterResizeJobs(pictures);
    RegisterDitherJobs(pictures);
    RegisterGrowthJobs(folders);
    int options = argc - 1;
    argv[1] = argv[0];
    benchmark::Initialize(&options, argv + 1);
    benchmark::RunSpecifiedBenchmarks();
    std::filesystem::remove_all(folders.scratch);
    return 0;
}
