// Drawing a page into a window beside loading and stretching it: screen_bench FILE.tif. Also loads the page
// as a CALS file.
#include "bench/windows/timing.h"
#include "tiff/tiff.h"

namespace {

// A window of a usual size that shows on any screen.
HWND MakeWindow()
{
    return CreateWindowA("STATIC", "", WS_POPUP | WS_VISIBLE, 0, 0, 850, 1000, nullptr, nullptr, nullptr,
                         nullptr);
}

void LoadAndStretch(HWND window, HDC dc, const std::string& path, uint32_t flags)
{
    HGLOBAL dib = LoadTiffIntoDIB(path.c_str(), 0, 0);
    const auto* info = static_cast<const BITMAPINFO*>(GlobalLock(dib));
    if (!info)
        timing::Fail("loading", path);
    const BITMAPINFOHEADER& header = info->bmiHeader;
    const void* pixels = info->bmiColors + header.biClrUsed;
    RECT room;
    GetClientRect(window, &room);
    int width = header.biWidth, height = header.biHeight;
    if (flags & TIFF_FIT) {
        width = room.bottom * header.biWidth / header.biHeight;
        height = room.bottom;
    } else if (flags & TIFF_TRUE_SIZE) {
        width = static_cast<int>(header.biWidth * 96 / (header.biXPelsPerMeter / 39.37));
        height = static_cast<int>(header.biHeight * 96 / (header.biYPelsPerMeter / 39.37));
    }
    SetStretchBltMode(dc, COLORONCOLOR);
    StretchDIBits(dc, 0, 0, width, height, 0, 0, header.biWidth, header.biHeight, pixels, info,
                  DIB_RGB_COLORS, SRCCOPY);
    GlobalUnlock(dib);
    GlobalFree(dib);
}

void LoadOnce(HGLOBAL dib, const std::string& path)
{
    if (!dib)
        timing::Fail("loading", path);
    GlobalFree(dib);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: screen_bench FILE.tif\n");
        return 2;
    }
    const std::string path = argv[1], cals = path + ".cal";
    HWND window = MakeWindow();
    HDC dc = GetDC(window);
    timing::Begin();
    const struct {
        const char* name;
        uint32_t flags;
    } jobs[] = {{"plain", 0},
                {"fit", TIFF_FIT},
                {"true size", TIFF_TRUE_SIZE},
                {"fit, grey", TIFF_FIT | TIFF_GREY_SCREEN}};
    for (const auto& [name, flags] : jobs)
        for (uint32_t turn = 0; turn < 4; ++turn) {
            const std::string degrees = std::to_string(turn * 90);
            timing::TimeJobs({{"tiff",
                               [&] {
                                   if (!DecompressToScreen(TIFF_FORMAT_TIFF, window, dc, path.c_str(), 0,
                                                           nullptr, flags | turn))
                                       timing::Fail("drawing", path);
                               }},
                              {"StretchDIBits", [&] { LoadAndStretch(window, dc, path, flags); }}},
                             std::string("wine screen/") + name + "/" + degrees);
        }
    HGLOBAL dib = LoadTiffIntoDIB(path.c_str(), 0, 0);
    if (!SaveDIBInCALSFormat(cals.c_str(), dib, nullptr, nullptr, 0))
        timing::Fail("saving", cals);
    GlobalFree(dib);
    timing::TimeJobs({{"tiff", [&] { LoadOnce(LoadCALSIntoDIB(cals.c_str(), 0), cals); }},
                      {"TIFF page", [&] { LoadOnce(LoadTiffIntoDIB(path.c_str(), 0, 0), path); }}},
                     "wine CALS/load/G4");
    timing::End();
    return 0;
}
