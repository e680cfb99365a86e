// Edits files with pages of 38 KB, beside libtiff copying the raw strips of the pages that remain and a plain
// copy of the file. All files are in memory if the machine has a RAM disk.
#include "bench/files.h"
#include "bench/jobs.h"
#include "bench/library.h"

#include <benchmark/benchmark.h>

#include <sys/resource.h>

#include <cstdlib>
#include <fstream>
#include <string_view>

namespace {

constexpr uint32_t PICTURE_BYTES = TYPICAL_SPREAD - 178; // with its directory

struct Work {
    std::string original, source, target; // the source is a copy that may be changed
    uint32_t pages;
};

struct Job {
    const char* name;
    bool changes; // the source, which is restored before each run
    void (*library)(const Work& work);
    void (*peer)(const Work& work);
    const char* tool = nullptr; // libtiff's program for the same work
    bool onePage = false;       // the source has one page, and is opened again for each page of the work
};

int32_t Middle(const Work& work)
{
    return static_cast<int32_t>(work.pages / 2);
}

void CopyByPeer(PeerFile* source, uint32_t count, const std::string& target)
{
    PeerFile* file = CreatePeerFile(target);
    CopyPages(source, count, file);
    Close(file);
}

void CopyAllByPeer(const Work& work)
{
    PeerFile* source = OpenPeerFile(work.source);
    CopyByPeer(source, work.pages, work.target);
    Close(source);
}

std::string PagePath(const Work& work, uint32_t page)
{
    char number[8];
    std::snprintf(number, sizeof(number), "%04u", page + 1);
    return work.target.substr(0, work.target.size() - 4) + number + ".tif";
}

// Runs a program with the source and the target as arguments.
void RunTool(const Work& work, const char* tool)
{
    const bool splits = std::string_view(tool) == "tiffsplit";
    const std::string target = splits ? work.target.substr(0, work.target.size() - 4) : work.target;
    DemandSuccess(std::system((std::string(tool) + ' ' + work.source + ' ' + target).c_str()) == 0, tool);
}

constexpr Job jobs[] = {
    {"copy pages one by one", false,
     [](const Work& work) {
         HGLOBAL source = OpenTiffFile(work.source.c_str(), T_READ);
         HGLOBAL target = OpenTiffFile(work.target.c_str(), T_CREAT);
         for (uint32_t page = 0; page < work.pages; ++page)
             DemandSuccess(CopyTiffImage(source, page, target), "copying a page");
         CloseTiffFile(target);
         CloseTiffFile(source);
     },
     CopyAllByPeer},
    {"merge", false,
     [](const Work& work) {
         DemandSuccess(MergeTiffFiles(work.target.c_str(), work.source.c_str(), nullptr, 0), "merging");
     },
     CopyAllByPeer, "tiffcp"},
    {"split in halves", true,
     [](const Work& work) {
         DemandSuccess(SplitTiffFile(work.source.c_str(), work.target.c_str(), Middle(work), nullptr, 0),
                       "splitting");
     },
     [](const Work& work) {
         PeerFile* source = OpenPeerFile(work.source);
         CopyByPeer(source, work.pages / 2, work.target + "2");
         CopyByPeer(source, work.pages / 2, work.target);
         Close(source);
         std::filesystem::remove(work.target + "2");
     }},
    {"cut into pages", true,
     [](const Work& work) {
         const std::string base = work.target.substr(0, work.target.size() - 4);
         DemandSuccess(
             CutTiffFile(work.source.c_str(), base.c_str(), static_cast<int32_t>(work.pages), nullptr, 0),
             "cutting");
     },
     [](const Work& work) {
         PeerFile* source = OpenPeerFile(work.source);
         for (uint32_t page = 0; page < work.pages; ++page)
             CopyByPeer(source, 1, PagePath(work, page));
         Close(source);
     },
     "tiffsplit"},
    {"delete a page", true,
     [](const Work& work) {
         DemandSuccess(DeleteTiffImage(work.source.c_str(), Middle(work), 0), "deleting");
     },
     [](const Work& work) {
         PeerFile *source = OpenPeerFile(work.source), *file = CreatePeerFile(work.target);
         CopyPages(source, work.pages / 2, file);
         SkipPage(source);
         CopyPages(source, work.pages - work.pages / 2 - 1, file);
         Close(file);
         Close(source);
     }},
    {"reorder", true,
     [](const Work& work) { DemandSuccess(ReorderTiffFile(work.source.c_str()), "reordering"); },
     CopyAllByPeer, "tiffcp"},
    {"merge files of a page", false,
     [](const Work& work) {
         HGLOBAL target = OpenTiffFile(work.target.c_str(), T_CREAT);
         for (uint32_t page = 0; page < work.pages; ++page) {
             HGLOBAL source = OpenTiffFile(work.source.c_str(), T_READ);
             DemandSuccess(CopyTiffImage(source, 0, target), "copying a page");
             CloseTiffFile(source);
         }
         CloseTiffFile(target);
     },
     [](const Work& work) {
         PeerFile* file = CreatePeerFile(work.target);
         for (uint32_t page = 0; page < work.pages; ++page) {
             PeerFile* source = OpenPeerFile(work.source);
             CopyPages(source, 1, file);
             Close(source);
         }
         Close(file);
     },
     nullptr, true},
};

void Renew(const Work& work, const Job& job)
{
    const std::filesystem::path target = work.target;
    const std::string stem = target.stem();
    for (const auto& file : std::filesystem::directory_iterator(target.parent_path()))
        if (file.path().filename().string().starts_with(stem))
            std::filesystem::remove(file);
    if (job.changes)
        std::filesystem::copy_file(work.original, work.source,
                                   std::filesystem::copy_options::overwrite_existing);
}

void Run(benchmark::State& state, const Work& work, const Job& job, void (*run)(const Work&))
{
    WritePages(work.original, job.onePage ? 1 : work.pages, CLOSE, PICTURE_BYTES);
    std::filesystem::copy_file(work.original, work.source, std::filesystem::copy_options::overwrite_existing);
    for (auto _ : state) {
        state.PauseTiming();
        Renew(work, job);
        state.ResumeTiming();
        run(work);
    }
    Renew(work, job);
    state.counters[BYTES] = double{TYPICAL_SPREAD} * work.pages;
    state.counters[SIZE] = work.pages;
}

double ProcessorSecondsOfTools()
{
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    const auto seconds = [](timeval time) {
        return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

void TimeTool(benchmark::State& state, const Work& work, const Job& job)
{
    WritePages(work.original, work.pages, CLOSE, PICTURE_BYTES);
    for (auto _ : state) {
        std::filesystem::copy_file(work.original, work.source,
                                   std::filesystem::copy_options::overwrite_existing);
        Renew(work, job);
        const double before = ProcessorSecondsOfTools();
        RunTool(work, job.tool);
        state.SetIterationTime(ProcessorSecondsOfTools() - before);
    }
    Renew(work, job);
}

void CopyFilePlainly(const Work& work)
{
    std::filesystem::copy_file(work.source, work.target);
}

// One file behind the other.
void CopyFilesPlainly(const Work& work)
{
    std::vector<char> bytes(std::filesystem::file_size(work.source));
    std::ofstream target(work.target, std::ios::binary);
    for (uint32_t page = 0; page < work.pages; ++page) {
        std::ifstream(work.source, std::ios::binary)
            .read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        target.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }
}

} // namespace

void RegisterEditingJobs(const BenchFolders& folders)
{
    for (const uint32_t pages : {1000u, 10000u})
        for (const Job& job : jobs) {
            const Work work{(folders.scratch / "edit-original.tif").string(),
                            (folders.scratch / "edit-source.tif").string(),
                            (folders.scratch / "edit-target.tif").string(), pages};
            const std::string name = std::string("edit/") + job.name + '/' + std::to_string(pages);
            const auto Add = [&](const char* who, void (*run)(const Work&)) {
                benchmark::RegisterBenchmark((name + '/' + who).c_str(), [=, &job](benchmark::State& state) {
                    Run(state, work, job, run);
                })->Unit(benchmark::kMillisecond);
            };
            Add("tiff", job.library);
            Add("libtiff", job.peer);
            Add("copy", job.onePage ? CopyFilesPlainly : CopyFilePlainly);
            if (job.tool)
                benchmark::RegisterBenchmark(
                    (name + '/' + job.tool).c_str(),
                    [=, &job](benchmark::State& state) { TimeTool(state, work, job); })
                    ->Unit(benchmark::kMillisecond)
                    ->UseManualTime();
        }
}
