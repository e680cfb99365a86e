#include "gdi/desktop.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <gtest/gtest.h>

Picture Picture::UpsideDown() const
{
    Picture turned{width, height, {}};
    for (auto row = pixels.end(); row != pixels.begin(); row -= width)
        turned.pixels.insert(turned.pixels.end(), row - width, row);
    return turned;
}

Picture Look(HBITMAP bitmap)
{
    BITMAP description{};
    if (!bitmap || !GetObjectA(bitmap, sizeof(description), &description))
        return {};
    Picture picture{description.bmWidth, description.bmHeight, {}};
    picture.pixels.resize(static_cast<size_t>(picture.width) * static_cast<size_t>(picture.height));
    BITMAPINFO info{};
    info.bmiHeader = {sizeof(info.bmiHeader), picture.width, -picture.height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    HDC screen = GetDC(nullptr);
    GetDIBits(screen, bitmap, 0, static_cast<UINT>(picture.height), picture.pixels.data(), &info,
              DIB_RGB_COLORS);
    ReleaseDC(nullptr, screen);
    for (uint32_t& pixel : picture.pixels)
        pixel &= 0xFFFFFF;
    return picture;
}

Picture TakeBitmap(HBITMAP bitmap)
{
    const Picture picture = Look(bitmap);
    if (bitmap)
        DeleteObject(bitmap);
    return picture;
}

Picture TakeDib(HGLOBAL dib)
{
    if (!dib)
        return {};
    const auto* start = static_cast<const uint8_t*>(GlobalLock(dib));
    BITMAPINFOHEADER header;
    std::memcpy(&header, start, sizeof(header));
    const uint8_t* colours = start + header.biSize;
    const uint8_t* rows = colours + header.biClrUsed * 4;
    const size_t bits = header.biBitCount;
    const size_t stride = (static_cast<size_t>(header.biWidth) * bits + 31) / 32 * 4;
    Picture picture{header.biWidth, header.biHeight, {}};
    for (auto y = static_cast<size_t>(header.biHeight); y-- > 0;)
        for (size_t x = 0; x < static_cast<size_t>(header.biWidth); ++x) {
            const uint8_t* row = rows + y * stride;
            const size_t index =
                bits <= 8 ? row[x * bits / 8] >> (8 - bits - x * bits % 8) & ((1u << bits) - 1) : 0;
            const uint8_t* pixel = bits <= 8 ? colours + index * 4 : row + x * 3;
            picture.pixels.push_back(pixel[0] | pixel[1] << 8 | static_cast<uint32_t>(pixel[2]) << 16);
        }
    GlobalUnlock(dib);
    GlobalFree(dib);
    return picture;
}

Folder::Folder()
{
    static int number = 0;
    char parent[MAX_PATH];
    GetTempPathA(MAX_PATH, parent);
    path =
        std::string(parent) + "gdi" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++number);
    CreateDirectoryA(path.c_str(), nullptr);
}

Folder::~Folder()
{
    for (const std::string& file : files)
        DeleteFileA(file.c_str());
    RemoveDirectoryA(path.c_str());
}

std::string Folder::Copy(const std::string& from, const char* name)
{
    files.push_back(path + "\\" + name);
    EXPECT_TRUE(CopyFileA(from.c_str(), files.back().c_str(), FALSE)) << from;
    return files.back();
}

static std::string FileOf(HMODULE module)
{
    char path[MAX_PATH];
    GetModuleFileNameA(module, path, MAX_PATH);
    return path;
}

std::string LibraryFile()
{
    return FileOf(GetModuleHandleA("TIFF.DLL"));
}

std::string SiblingsFolder()
{
    const std::string own = FileOf(nullptr);
    return own.substr(0, own.rfind('\\')) + "\\siblings";
}

std::string DialogsFile()
{
    return SiblingsFolder() + "\\KVDlgs.dll";
}

std::string JpegLibraryFile()
{
    return SiblingsFolder() + "\\JPGLIB.DLL";
}

static uint32_t BusyBlocks()
{
    uint32_t count = 0;
    PROCESS_HEAP_ENTRY entry{};
    HeapLock(GetProcessHeap());
    while (HeapWalk(GetProcessHeap(), &entry))
        count += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0;
    HeapUnlock(GetProcessHeap());
    return count;
}

// The highest place that new handles take. Makes more handles at once than were ever freed, so that freed
// places do not hide leaked ones.
template <size_t COUNT, class Make, class Free>
uint32_t HighestPlace(Make make, Free free)
{
    std::array<decltype(make()), COUNT> made;
    uint32_t highest = 0;
    for (auto& handle : made) {
        handle = make();
        // The low half of a GDI handle is its place in a table for all kinds.
        highest = std::max(highest, static_cast<uint32_t>(reinterpret_cast<uintptr_t>(handle) & 0xFFFF));
    }
    for (auto& handle : made)
        free(handle);
    return highest;
}

HandleMarks TakeMarks()
{
    HandleMarks marks{};
    // Few, and first: the system keeps freed device contexts for the next request.
    marks.deviceContexts =
        HighestPlace<20>([] { return GetDC(nullptr); }, [](HDC dc) { ReleaseDC(nullptr, dc); });
    marks.gdi =
        HighestPlace<300>([] { return CreateSolidBrush(0); }, [](HBRUSH brush) { DeleteObject(brush); });
    marks.handles = HighestPlace<300>([] { return CreateEventA(nullptr, FALSE, FALSE, nullptr); },
                                      [](HANDLE event) { CloseHandle(event); });
    marks.blocks = BusyBlocks();
    return marks;
}

void ExpectNoGrowth(const HandleMarks& before, uint32_t calls)
{
    const HandleMarks after = TakeMarks();
    const uint32_t some = calls / 4;
    EXPECT_LT(after.gdi, before.gdi + some) << "GDI objects";
    EXPECT_LT(after.deviceContexts, before.deviceContexts + some) << "device contexts";
    EXPECT_LT(after.blocks, before.blocks + some) << "memory blocks";
    EXPECT_LT(after.handles, before.handles + some) << "system handles";
}

Picture OnClipboard()
{
    EXPECT_TRUE(OpenClipboard(nullptr));
    const Picture picture = Look(static_cast<HBITMAP>(GetClipboardData(CF_BITMAP)));
    CloseClipboard();
    return picture;
}

HCURSOR WaitCursor()
{
    return LoadCursorA(nullptr, MAKEINTRESOURCEA(32514));
}
