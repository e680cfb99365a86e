// Every handle and block taken during a call is released, however the call ends.
#include "gdi/desktop.h"
#include "support/pictures.h"

#include <cstring>
#include <gtest/gtest.h>

namespace {

constexpr uint32_t CALLS = 1000;

Bytes PalettePage()
{
    return OnePage(
        TiffPage::Picture(4, 1, 4, 1, 3).Short(320, std::vector<uint32_t>(48, 0x8000)).Strips({Hex("1234")}));
}

template <class Call>
void ExpectNothingLeft(const char* row, Call call)
{
    SCOPED_TRACE(row);
    // The first call and the first measurement allocate the things that the system keeps.
    call();
    TakeMarks();
    const HandleMarks before = TakeMarks();
    for (uint32_t round = 0; round < CALLS; ++round)
        call();
    ExpectNoGrowth(before, CALLS);
}

} // namespace

TEST(Leaks, ThereAreNoneInAThousandCalls)
{
    const TempFile palette(PalettePage());
    const TempFile damaged(OnePage(TiffPage::Picture(8, 4, 1, 4).Strips({Bits("1 00000001")})));
    const TempFile planes(OnePage(TiffPage::Picture(1, 1, 8, 1, 2).Short(277, {3}).Short(284, {2})));
    const MemoryTiff jpeg(OnePage(TiffPage::Picture(8, 1, 8, 7).Strips({{0}})));
    const SearchedFolder searched(SiblingsFolder());

    ExpectNothingLeft("bitmap", [&] { TakeBitmap(LoadTiffIntoBitmap(palette.Path(), 0, 0)); });
    ExpectNothingLeft("damaged", [&] { LoadTiffIntoBitmap(damaged.Path(), 0, 0); });
    ExpectNothingLeft("no header", [&] { LoadTiffIntoBitmap(planes.Path(), 0, 0); });
    ExpectNothingLeft("JPEG in memory", [&] { LoadTiffChainIntoBitmap(jpeg.file, 0); });
    ExpectNothingLeft("JPEG in memory to a DIB", [&] { LoadTiffChainIntoDIB(jpeg.file, 0); });
    ExpectNothingLeft("palette", [&] { DeleteObject(GetTiffImagePalette(palette.Path(), 0)); });
    ExpectNothingLeft("dialog", [&] { TakeDib(LoadTiffIntoDIB(palette.Path(), 0, 1)); });
    EXPECT_EQ(GetModuleHandleA("KVDlgs.dll"), nullptr);
    const TempFile target({});
    const Block blank(PackedDib({9, 2, 1, {0, 0xFFFFFF}, Bytes(8, 0xFF)}));
    const HBITMAP mono = CreateBitmap(9, 2, 1, 1, nullptr);
    ExpectNothingLeft("save", [&] {
        DeleteFileA(target.Path());
        SaveBitmapInTiffFile(target.Path(), mono, 208, 0);
    });
    ExpectNothingLeft("bare code", [&] { SaveBitmapInCcittFile(target.Path(), mono, 8); });
    TiffTextPageSettings text{};
    std::strcpy(text.path, TIFF_SOURCE_DIR "/.clang-format");
    std::strcpy(text.faceName, "Arial");
    text.flags = TIFF_TEXT_INCHES;
    text.horizontalDpi = text.verticalDpi = 100;
    text.pageWidth = text.pageHeight = 60;
    text.fontSize = 30;
    HANDLE pages[2];
    ExpectNothingLeft("text", [&] {
        EXPECT_EQ(CreateBMPFaxPageFromASCII(&text, 2, pages, nullptr), 2u);
        DeleteObject(pages[0]);
        DeleteObject(pages[1]);
        EXPECT_EQ(CreateDIBFaxPageFromASCII(&text, 1, pages, nullptr), 1u);
        GlobalFree(pages[0]);
        TakeBitmap(BitmapFormOverlay(palette.Path(), &text));
        TakeDib(DIBFormOverlay(palette.Path(), &text));
        TakeBitmap(BitmapTextOverlay(mono, 0, 0, "a", "Arial", 9, 0, 0));
        TakeDib(DIBTextOverlay(blank.Get(), 0, 0, "a", "Arial", 9));
        LoadAnnotationFromTiff(palette.Path(), 0);
    });
    text.fontSize = UINT32_MAX;
    ExpectNothingLeft("no font", [&] {
        EXPECT_EQ(CreateBMPFaxPageFromASCII(&text, 2, pages, nullptr), 0u);
        EXPECT_EQ(BitmapFormOverlay(palette.Path(), &text), nullptr);
        EXPECT_EQ(BitmapTextOverlay(mono, 0, 0, "a", "Arial", UINT32_MAX, 0, 0), nullptr);
    });
    DeleteObject(mono);
    ExpectNothingLeft("clipboard", [&] { LoadTiffFileIntoClipboard(palette.Path(), 0, 0); });
    ExpectNothingLeft("clipboard, damaged", [&] { LoadTiffFileIntoClipboard(damaged.Path(), 0, 0); });
}
