// A path that is missing, where bitmaps, windows and companion libraries are used.
#include "tiff/tiff.h"

#include <functional>
#include <gtest/gtest.h>

TEST(NoPath, IsAnErrorOfItsOwnOnTheScreenToo)
{
    HDC dc = GetDC(nullptr);
    HBITMAP bitmap = CreateBitmap(8, 8, 1, 1, nullptr);
    TiffTextPageSettings settings{};
    HANDLE pages[1];
    const struct {
        const char* name;
        std::function<bool()> fails;
    } calls[] = {
        {"bitmap", [] { return !LoadTiffIntoBitmap(nullptr, 0, 0); }},
        {"palette", [] { return !GetTiffImagePalette(nullptr, 0); }},
        {"clipboard", [] { return LoadTiffFileIntoClipboard(nullptr, 0, 0) == 1; }},
        {"save", [=] { return !SaveBitmapInTiffFile(nullptr, bitmap, TIFF_SAVE_GROUP4, 0); }},
        {"code", [=] { return !SaveBitmapInCcittFile(nullptr, bitmap, 8); }},
        {"draw any",
         [=] { return !DecompressToScreen(TIFF_FORMAT_ANY, nullptr, dc, nullptr, 0, nullptr, 0); }},
        {"draw", [=] { return !DecompressToScreen(TIFF_FORMAT_TIFF, nullptr, dc, nullptr, 0, nullptr, 0); }},
        {"draw CALS", [=] { return !DecompressCALSToScreen(nullptr, dc, nullptr, nullptr, 0); }},
        {"show CALS", [] { return !ShowCALSInfo(nullptr, nullptr); }},
        {"form", [&] { return !BitmapFormOverlay(nullptr, &settings); }},
        {"forms", [&] { return DIBFormOverlayExt(nullptr, &settings, pages, 1, 0) == 0; }},
        {"annotation", [] { return !LoadAnnotationFromTiff(nullptr, 0); }},
        {"save annotation", [] { return !SaveAnnotationIntoTiff(nullptr, 1, 0); }},
        {"save more",
         [] { return !SaveAnnotationIntoTiffExt(nullptr, 1, 0, TIFF_ANNOTATION_REPLACE, 0, 0); }},
    };
    for (const auto& [name, fails] : calls) {
        SCOPED_TRACE(name);
        SetTiffError(0);
        EXPECT_TRUE(fails());
        EXPECT_EQ(TiffError(), 29u);
    }
    DeleteObject(bitmap);
    ReleaseDC(nullptr, dc);
}
