// The DLL beside the system's imaging component, on files that tiff_bench wrote: imaging_bench FOLDER. The
// output has the form that the report reads.
#include "tiff/tiff.h"

#include <objbase.h>
#include <wincodec.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

constexpr int ROUNDS = 9;
constexpr double MILLISECONDS_A_ROUND = 40;

IWICImagingFactory* factory;

[[noreturn]] void Fail(const char* what, const std::string& path)
{
    std::fprintf(stderr, "%s: %s failed\n", path.c_str(), what);
    std::exit(1);
}

template <class Interface>
struct Owned {
    Interface* pointer = nullptr;
    ~Owned()
    {
        if (pointer)
            pointer->Release();
    }
};

IWICBitmapDecoder* Decoder(const std::string& path)
{
    const std::wstring wide(path.begin(), path.end());
    IWICBitmapDecoder* decoder = nullptr;
    if (FAILED(factory->CreateDecoderFromFilename(wide.c_str(), nullptr, GENERIC_READ,
                                                  WICDecodeMetadataCacheOnDemand, &decoder)))
        Fail("opening by the imaging component", path);
    return decoder;
}

void OpenByLibrary(const std::string& path)
{
    HGLOBAL file = OpenTiffFile(path.c_str(), T_READ);
    if (!file || TiffError() != 0)
        Fail("opening", path);
    CloseTiffFile(file);
}

void OpenBySystem(const std::string& path)
{
    const Owned<IWICBitmapDecoder> decoder{Decoder(path)};
    UINT frames = 0;
    if (FAILED(decoder.pointer->GetFrameCount(&frames)))
        Fail("counting frames", path);
}

void LoadByLibrary(const std::string& path)
{
    HGLOBAL dib = LoadTiffIntoDIB(path.c_str(), 0, 0);
    if (!dib)
        Fail("loading", path);
    GlobalFree(dib);
}

void LoadBySystem(const std::string& path)
{
    const Owned<IWICBitmapDecoder> decoder{Decoder(path)};
    Owned<IWICBitmapFrameDecode> frame;
    WICPixelFormatGUID format;
    UINT width = 0, height = 0;
    if (FAILED(decoder.pointer->GetFrame(0, &frame.pointer)) ||
        FAILED(frame.pointer->GetSize(&width, &height)) || FAILED(frame.pointer->GetPixelFormat(&format)))
        Fail("describing a frame", path);
    const UINT bits = format == GUID_WICPixelFormat24bppBGR || format == GUID_WICPixelFormat24bppRGB ? 24
                      : format == GUID_WICPixelFormat8bppGray                                        ? 8
                                                                                                     : 1;
    const UINT stride = (width * bits + 31) / 32 * 4;
    HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, SIZE_T{stride} * height);
    if (FAILED(frame.pointer->CopyPixels(nullptr, stride, stride * height,
                                         static_cast<BYTE*>(GlobalLock(block)))))
        Fail("copying pixels", path);
    GlobalUnlock(block);
    GlobalFree(block);
}

double Milliseconds()
{
    LARGE_INTEGER now, frequency;
    QueryPerformanceCounter(&now);
    QueryPerformanceFrequency(&frequency);
    return static_cast<double>(now.QuadPart) * 1000 / static_cast<double>(frequency.QuadPart);
}

double TimeRound(void (*run)(const std::string&), const std::string& path)
{
    const double start = Milliseconds();
    double end;
    int runs = 0;
    do {
        run(path);
        ++runs;
        end = Milliseconds();
    } while (end - start < MILLISECONDS_A_ROUND);
    return (end - start) / runs;
}

struct Job {
    const char* who;
    void (*run)(const std::string&);
    std::vector<double> times;
};

// The two take turns, so that other load on the machine affects both.
void TimeJobs(Job (&jobs)[2], const std::string& path, const std::string& name)
{
    for (int round = 0; round < ROUNDS; ++round)
        for (Job& job : jobs)
            job.times.push_back(TimeRound(job.run, path));
    for (Job& job : jobs) {
        std::sort(job.times.begin(), job.times.end());
        std::printf(",\n{\"run_name\": \"%s/%s\", \"cpu_time\": %.6f, \"time_unit\": \"ms\"}", name.c_str(),
                    job.who, job.times[ROUNDS / 2]);
    }
}

// "load G4 text-300.tif" becomes the job "wine load/G4/text-300".
std::string JobName(std::string file)
{
    file.resize(file.rfind('.'));
    file[file.find(' ')] = '/';
    file[file.rfind(' ')] = '/';
    return "wine " + file;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: imaging_bench FOLDER\n");
        return 2;
    }
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    if (FAILED(CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER,
                                IID_IWICImagingFactory, reinterpret_cast<void**>(&factory))))
        Fail("starting the imaging component", argv[0]);
    std::printf(
        "{\"benchmarks\": [{\"run_name\": \"wine/none/none/none\", \"cpu_time\": 0, \"time_unit\": \"ms\"}");
    const std::string folder = std::string(argv[1]) + '\\';
    WIN32_FIND_DATAA found;
    HANDLE search = FindFirstFileA((folder + "*.tif").c_str(), &found);
    for (BOOL more = search != INVALID_HANDLE_VALUE; more; more = FindNextFileA(search, &found)) {
        const std::string file = found.cFileName;
        const bool opens = file.compare(0, 4, "open") == 0;
        Job jobs[] = {{"tiff", opens ? OpenByLibrary : LoadByLibrary, {}},
                      {"WIC", opens ? OpenBySystem : LoadBySystem, {}}};
        TimeJobs(jobs, folder + file, JobName(file));
    }
    std::printf("]}\n");
    return 0;
}
