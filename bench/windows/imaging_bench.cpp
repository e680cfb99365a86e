// The DLL beside the system's imaging component, on files that tiff_bench wrote: imaging_bench FOLDER. The
// output has the form that the report reads.
#include "bench/windows/text_bench.h"
#include "bench/windows/timing.h"
#include "tiff/tiff.h"

#include <objbase.h>
#include <wincodec.h>

using timing::Fail;

namespace {

IWICImagingFactory* factory;

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
    timing::Begin();
    const std::string folder = std::string(argv[1]) + '\\';
    WIN32_FIND_DATAA found;
    HANDLE search = FindFirstFileA((folder + "*.tif").c_str(), &found);
    for (BOOL more = search != INVALID_HANDLE_VALUE; more; more = FindNextFileA(search, &found)) {
        const std::string file = found.cFileName;
        const bool opens = file.compare(0, 4, "open") == 0;
        const std::string path = folder + file;
        timing::TimeJobs({{"tiff", [&] { opens ? OpenByLibrary(path) : LoadByLibrary(path); }},
                          {"WIC", [&] { opens ? OpenBySystem(path) : LoadBySystem(path); }}},
                         JobName(file));
    }
    TimeText(folder);
    timing::End();
    return 0;
}
