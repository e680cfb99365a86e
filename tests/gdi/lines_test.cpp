// The exported line routines for bitmaps, called as a driver calls them.
#include "gdi/desktop.h"

#include <cstring>
#include <gtest/gtest.h>

namespace {

struct Info {
    BITMAPINFOHEADER header;
    RGBQUAD colours[256];
};

Info Describe(int32_t width, int32_t height, uint16_t bits)
{
    Info info{};
    info.header = {sizeof(info.header), width, height, 1, bits, BI_RGB, 0, 0, 0, 0, 0};
    if (bits == 1)
        info.colours[1] = {255, 255, 255, 0};
    return info;
}

class Screen {
public:
    Screen() : dc(GetDC(nullptr))
    {
    }
    ~Screen()
    {
        ReleaseDC(nullptr, dc);
    }
    const HDC dc;
};

} // namespace

TEST(BitmapLines, AreFetchedFromTheTop)
{
    const Screen screen;
    const uint8_t bits[] = {0x80, 0x00, 0x0F, 0x80}; // two rows of 9, in 16-bit words
    HBITMAP mono = CreateBitmap(9, 2, 1, 1, bits);
    HBITMAP colour = CreateCompatibleBitmap(screen.dc, 2, 1);
    Info colourInfo = Describe(2, 1, 24), monoInfo = Describe(9, 2, 1);
    const uint8_t pixels[] = {1, 2, 3, 4, 5, 6, 0, 0};
    SetDIBits(screen.dc, colour, 0, 1, pixels, reinterpret_cast<BITMAPINFO*>(&colourInfo), DIB_RGB_COLORS);
    const struct {
        const char* row;
        TiffLineCallback routine;
        HBITMAP bitmap;
        Info* info;
        uint32_t number;
        Bytes line;
    } rows[] = {
        {"as it is", DllFillTiffLine, mono, &monoInfo, 0, Hex("8000")},
        {"last row", DllFillTiffLine, mono, &monoInfo, 1, Hex("0F80")},
        {"complemented, padding and all", DllFillMonoTiffLine, mono, &monoInfo, 1, Hex("F07F")},
        {"24 bits as GDI has them", DllFillTiffLine, colour, &colourInfo, 0, Hex("010203040506")},
        {"24 bits, red first", DllFillTiffLineBitmap24Bit, colour, &colourInfo, 0, Hex("030201060504")},
    };
    for (const auto& [row, routine, bitmap, info, number, line] : rows) {
        SCOPED_TRACE(row);
        TiffEncodeLineContext context{};
        context.deviceContext = screen.dc;
        context.bitmap = bitmap;
        context.bitmapInfo = reinterpret_cast<BITMAPINFO*>(info);
        Bytes buffer(64, 0xEE);
        EXPECT_EQ(routine(buffer.data(), number, &context), 0);
        EXPECT_EQ(Bytes(buffer.begin(), buffer.begin() + static_cast<ptrdiff_t>(line.size())), line);
        EXPECT_EQ(buffer[8], 0xEE);
    }
    Bytes untouched(8, 0xEE);
    TiffEncodeLineContext context{};
    EXPECT_EQ(DllFillCcittLine(untouched.data(), 0, &context), 0);
    EXPECT_EQ(untouched, Bytes(8, 0xEE));
    DeleteObject(mono);
    DeleteObject(colour);
}

TEST(BitmapLines, ArePutFromTheTop)
{
    const Screen screen;
    const struct {
        const char* row;
        TiffLineCallback routine;
        uint32_t number, lineBytes;
        std::vector<uint32_t> pixels; // two rows of two
        Bytes line;                   // afterwards
    } rows[] = {
        {"as it is", DllFlushTiffLine, 0, 6, {0x030201, 0x060504, 0, 0}, Hex("010203040506")},
        {"last row", DllFlushTiffLine, 1, 6, {0, 0, 0x030201, 0x060504}, Hex("010203040506")},
        {"red first", DllFlushTiffLine24, 0, 6, {0x010203, 0x040506, 0, 0}, Hex("030201060504")},
        {"a pixel that does not fit stays",
         DllFlushTiffLine24,
         0,
         5,
         {0x010203, 0x060504, 0, 0},
         Hex("030201040506")},
    };
    for (const auto& [row, routine, number, lineBytes, pixels, line] : rows) {
        SCOPED_TRACE(row);
        const Info info = Describe(2, 2, 24);
        const auto* bytes = reinterpret_cast<const uint8_t*>(&info);
        const Block block(Bytes(bytes, bytes + sizeof(BITMAPINFOHEADER)));
        HBITMAP bitmap = CreateCompatibleBitmap(screen.dc, 2, 2);
        TiffDecodeLineContext context{};
        context.deviceContext = screen.dc;
        context.bitmap = bitmap;
        context.dib = block.Get();
        context.lineBytes = lineBytes;
        Bytes buffer = Hex("010203040506 0000");
        EXPECT_EQ(routine(buffer.data(), number, &context), 0);
        EXPECT_EQ(TakeBitmap(bitmap).pixels, pixels);
        buffer.resize(6);
        EXPECT_EQ(buffer, line);
        EXPECT_EQ(GlobalFlags(block.Get()) & GMEM_LOCKCOUNT, 0u);
    }
}
