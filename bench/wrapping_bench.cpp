// Wrapping a page as an image segment or a document, and unwrapping it to a TIFF file, beside encoding the
// page alone; all from memory to a file.
#include "bench/jobs.h"
#include "bench/library.h"
#include "tools/wrapped_picture.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <utility>

namespace {

using tifftool::Wrapping;

struct Job {
    const Picture* picture;
    Wrapping wrapping;
    std::string file, tiff;
};

struct WritableFile {
    HANDLE handle;

    explicit WritableFile(const std::string& path)
        : handle(CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                             FILE_ATTRIBUTE_NORMAL, nullptr))
    {
        DemandSuccess(handle != INVALID_HANDLE_VALUE, "creating " + path);
    }
    WritableFile(const WritableFile&) = delete;
    WritableFile& operator=(const WritableFile&) = delete;
    ~WritableFile()
    {
        CloseHandle(handle);
    }
    TiffStream Stream() const
    {
        return static_cast<TiffStream>(reinterpret_cast<intptr_t>(handle));
    }
};

tifftool::BilevelRows RowsOf(const Picture& picture)
{
    return {.first = picture.rows.data(),
            .step = static_cast<ptrdiff_t>(picture.RowBytes()),
            .width = picture.width,
            .height = picture.height,
            .flip = 0,
            .dotsPerMetre = {11811, 11811}};
}

intptr_t CopyRow(void* line, uint32_t row, void* picture)
{
    const auto& from = *static_cast<const Picture*>(picture);
    std::memcpy(line, &from.rows[row * from.RowBytes()], from.RowBytes());
    return 0;
}

void Encode(benchmark::State& state, const Job& job)
{
    Picture picture = *job.picture;
    for (auto _ : state) {
        const WritableFile file(job.file);
        DemandSuccess(EncodeCcittImageTo(file.Stream(), picture.width, picture.height, 1, TIFF_INTEL, 4,
                                         &picture, CopyRow),
                      "encoding");
    }
}

void Wrap(benchmark::State& state, const Job& job)
{
    for (auto _ : state) {
        const WritableFile file(job.file);
        DemandSuccess(WrapRows(file.handle, job.wrapping, RowsOf(*job.picture)).empty(), "wrapping");
    }
}

void Unwrap(const WritableFile& file, const Job& job)
{
    tifftool::PictureCode code{};
    DemandSuccess(ReadCode(file.handle, job.wrapping, code).empty() && code.isWhole, "reading back");
    DemandSuccess(WriteTiffPage(job.tiff.c_str(), code), "writing a page");
}

void DemandSamePixels(const Job& job)
{
    HGLOBAL tiff = OpenTiffFile(job.tiff.c_str(), T_READ);
    DemandSame(tiff, *job.picture, "unwrapping");
    CloseTiffFile(tiff);
}

void UnwrapAgain(benchmark::State& state, const Job& job)
{
    const WritableFile file(job.file);
    DemandSuccess(WrapRows(file.handle, job.wrapping, RowsOf(*job.picture)).empty(), "wrapping");
    for (auto _ : state)
        Unwrap(file, job);
    DemandSamePixels(job);
}

void WrapAndUnwrap(benchmark::State& state, const Job& job)
{
    for (auto _ : state) {
        const WritableFile file(job.file);
        DemandSuccess(WrapRows(file.handle, job.wrapping, RowsOf(*job.picture)).empty(), "wrapping");
        Unwrap(file, job);
    }
    DemandSamePixels(job);
}

void Register(const std::string& what, const Job& job, void (*run)(benchmark::State&, const Job&))
{
    const std::string name = "wrap/" + what + '/' + job.picture->name;
    benchmark::RegisterBenchmark((name + "/tiff").c_str(), [job, run](benchmark::State& state) {
        run(state, job);
    })->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark((name + "/encode").c_str(), [job](benchmark::State& state) {
        Encode(state, job);
    })->Unit(benchmark::kMillisecond);
}

} // namespace

void RegisterWrappingJobs(const std::vector<Picture>& pictures, const BenchFolders& folders)
{
    for (const Picture& picture : pictures)
        for (const auto& [form, wrapping] :
             {std::pair("IOCA", Wrapping::Segment), std::pair("MO:DCA", Wrapping::Document)}) {
            if (picture.bits != 1)
                continue;
            const Job job = {&picture, wrapping, (folders.scratch / "wrapped").string(),
                             (folders.scratch / "unwrapped.tif").string()};
            Register(std::string("wrap ") + form, job, Wrap);
            Register(std::string("unwrap ") + form, job, UnwrapAgain);
            Register(std::string("both ") + form, job, WrapAndUnwrap);
        }
}
