// Bitmaps to pages and back, the clipboard's bitmap, bare code, and the save dialog.
#include "gdi/desktop.h"
#include "siblings/dialogs.h"
#include "support/pictures.h"
#include "support/target.h"

#include <cstring>
#include <gtest/gtest.h>

namespace {

// 9 by 2 pixels from the top, black where a bit is set.
HBITMAP Monochrome()
{
    static constexpr uint8_t rows[] = {0x7E, 0x7F, 0xF0, 0xFF}; // a bitmap's 0 is black
    return CreateBitmap(9, 2, 1, 1, rows);
}

constexpr const char* MONOCHROME_ROWS = "#......##/....####.";

HBITMAP Coloured()
{
    const HDC screen = GetDC(nullptr);
    const HDC memory = CreateCompatibleDC(screen);
    const HBITMAP bitmap = CreateCompatibleBitmap(screen, 3, 2);
    const HGDIOBJ previous = SelectObject(memory, bitmap);
    static constexpr COLORREF colours[] = {RGB(255, 0, 0), RGB(0, 255, 0),   RGB(0, 0, 255),
                                           RGB(1, 2, 3),   RGB(128, 64, 32), RGB(255, 255, 255)};
    for (int pixel = 0; pixel < 6; ++pixel)
        SetPixel(memory, pixel % 3, pixel / 3, colours[pixel]);
    SelectObject(memory, previous);
    DeleteDC(memory);
    ReleaseDC(nullptr, screen);
    return bitmap;
}

Decoded LastPage(const char* path)
{
    HGLOBAL file = OpenTiffFile(path, T_READ);
    const Decoded decoded = DecodePage(file, NumberOfTiffImages(file, TIFF_ALL_PAGES) - 1);
    CloseTiffFile(file);
    return decoded;
}

} // namespace

TEST(SaveBitmap, EveryCompressionGivesThePictureBack)
{
    const HBITMAP mono = Monochrome(), coloured = Coloured();
    const HCURSOR cursor = GetCursor();
    for (uint32_t selector = 201; selector <= 208; ++selector) {
        SCOPED_TRACE(selector);
        NewFile file;
        EXPECT_EQ(SaveBitmapInTiffFileExt(file.Path(), mono, selector, 0, 2), 1);
        EXPECT_EQ(LastPage(file.Path()).Pixels(9), MONOCHROME_ROWS);
        EXPECT_EQ(TakeBitmap(LoadTiffIntoBitmap(file.Path(), 0, 0)), Look(mono));
        if (selector <= 204) {
            EXPECT_EQ(SaveBitmapInTiffFormat(file.Path(), coloured, selector, 0), 1);
            EXPECT_EQ(TakeBitmap(LoadTiffIntoBitmap(file.Path(), 1, 0)), Look(coloured));
            EXPECT_EQ(TakeDib(LoadTiffIntoDIB(file.Path(), 1, 0)), Look(coloured));
        }
    }
    EXPECT_EQ(GetCursor(), cursor);
    DeleteObject(mono);
    DeleteObject(coloured);
}

TEST(SaveBitmap, JpegPagesLookTheSameAsBitmapsAndAsDibs)
{
    const HBITMAP mono = Monochrome(), coloured = Coloured();
    NewFile file;
    EXPECT_EQ(SaveBitmapInTiffFile(file.Path(), mono, 209, 0), 1);
    EXPECT_EQ(SaveBitmapInTiffFile(file.Path(), coloured, 209, 0), 1);
    static const std::string sample = TIFF_SOURCE_DIR "/samples/pictures-jpeg.tif";
    const struct {
        const char* path;
        uint32_t pages;
    } rows[] = {{file.Path(), 2}, {sample.c_str(), 5}};
    for (const auto& [path, pages] : rows)
        for (uint32_t page = 0; page < pages; ++page) {
            SCOPED_TRACE(testing::Message() << path << ' ' << page);
            EXPECT_EQ(TakeBitmap(LoadTiffIntoBitmap(path, page, 0)), TakeDib(LoadTiffIntoDIB(path, page, 0)));
            EXPECT_EQ(TiffError(), 0u);
        }
    HGLOBAL tiff = OpenTiffFile(file.Path(), T_READ);
    for (const uint32_t depth : {8, 24}) {
        BITMAPINFOHEADER header{};
        GetTiffImage(tiff, depth / 24);
        GetTiffDimensions(tiff, depth / 24, &header);
        EXPECT_EQ(header.biBitCount, depth);
    }
    CloseTiffFile(tiff);
    DeleteObject(mono);
    DeleteObject(coloured);
}

TEST(SaveBitmap, RequestsThatCannotBeMetLeaveNoFile)
{
    const HBITMAP mono = Monochrome();
    const struct {
        const char* row;
        HBITMAP bitmap;
        uint32_t selector;
        int32_t dialog;
        uint32_t error;
    } rows[] = {
        {"unknown selector", mono, 200, 0, 11},       {"samples", mono, 201 + 256, 0, 11},
        {"samples for JPEG", mono, 209 + 256, 0, 11}, {"no dialogs library", mono, 201, 1, 28},
        {"no bitmap", nullptr, 201, 0, 34},
    };
    for (const auto& [row, bitmap, selector, dialog, error] : rows) {
        SCOPED_TRACE(row);
        NewFile file;
        EXPECT_EQ(Refusal(SaveBitmapInTiffFile(file.Path(), bitmap, selector, dialog)), error);
        EXPECT_EQ(GetFileAttributesA(file.Path()), INVALID_FILE_ATTRIBUTES);
    }
    EXPECT_EQ(SaveBitmapInTiffFile("no-such-folder\\a.tif", mono, 201, 0), 0);
    EXPECT_NE(TiffError(), 0u);
    DeleteObject(mono);
}

TEST(SaveBitmap, BareCodeHasNoStructure)
{
    static constexpr struct {
        uint32_t type, compression;
    } rows[] = {{5, 3}, {6, 2}, {7, 0x10003}, {8, 4}, {9, 1}};
    const HBITMAP mono = Monochrome();
    for (const auto& [type, compression] : rows) {
        SCOPED_TRACE(type);
        TempFile file(Bytes(500, 0xAA)); // is replaced
        EXPECT_EQ(SaveBitmapInCcittFile(file.Path(), mono, type), 1);
        EXPECT_LT(ReadFileBytes(file.Path()).size(), 40u);
        RowCollector collector{2};
        HANDLE code = CreateFileA(file.Path(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
        EXPECT_EQ(DecodeCcittImageFrom(reinterpret_cast<intptr_t>(code), 0, 9, 2, compression, 2, TIFF_INTEL,
                                       &collector, CollectRow),
                  1);
        CloseHandle(code);
        // A bitmap's bits go out as they are: 0 is black there.
        EXPECT_EQ(collector.decoded.Pixels(9), ".######../####....#");
    }
    EXPECT_EQ(SaveBitmapInCcittFile("unused.g4", mono, 4), 0);
    EXPECT_EQ(SaveBitmapInCcittFile("unused.g4", nullptr, 8), 0);
    EXPECT_EQ(GetFileAttributesA("unused.g4"), INVALID_FILE_ATTRIBUTES);
    DeleteObject(mono);
}

TEST(SaveClipboard, ItsBitmapBecomesAPage)
{
    NewFile file;
    ASSERT_TRUE(OpenClipboard(nullptr));
    EmptyClipboard();
    SetClipboardData(CF_BITMAP, Monochrome());
    CloseClipboard();
    EXPECT_EQ(SaveTiffFileFromClipboard(file.Path(), 208, 0), 1);
    EXPECT_EQ(LastPage(file.Path()).Pixels(9), MONOCHROME_ROWS);
    const MemoryTiff saved(ReadFileBytes(file.Path()));
    EXPECT_EQ(TagNumber(saved.file, 0, 266), 2u);
    ASSERT_TRUE(OpenClipboard(nullptr));
    EmptyClipboard();
    CloseClipboard();
    EXPECT_EQ(Refusal(SaveTiffFileFromClipboard(file.Path(), 208, 0)), 24u);
}

TEST(SaveDialog, TheUsersChoicesAreWritten)
{
    const SearchedFolder searched(SiblingsFolder());
    const HeldLibrary dialogs(DialogsFile());
    auto* answer = dialogs.Find<void(int32_t, const TiffSaveDialogOptions*)>("AnswerSaveDialog");
    auto* lastCall = dialogs.Find<const SaveDialogCall*()>("LastSaveDialog");
    const HBITMAP mono = Monochrome();
    NewFile file;

    TiffSaveDialogOptions options{"a fax", "someone", 208, 2, 0, 2};
    answer(1, &options);
    EXPECT_EQ(SaveBitmapInTiffFile(file.Path(), mono, 201, 1), 1);
    EXPECT_EQ(lastCall()->width, 9);
    EXPECT_EQ(lastCall()->asked.selector, 201u);
    EXPECT_STREQ(lastCall()->asked.description, file.Path());
    const MemoryTiff saved(ReadFileBytes(file.Path()));
    EXPECT_EQ(TagNumber(saved.file, 0, 259), 4u);
    EXPECT_EQ(Part(TagValues(saved.file, 0, 315), 0, 8), Bytes({'s', 'o', 'm', 'e', 'o', 'n', 'e', 0}));

    answer(0, &options);
    SetTiffError(9);
    EXPECT_EQ(Refusal(SaveBitmapInTiffFile(file.Path(), mono, 201, 1)), 0u) << "cancelling is no error";
    EXPECT_EQ(GetNumberOfImagesInTiffFile(file.Path()), 1u);
    HGLOBAL dib = LoadTiffIntoDIB(file.Path(), 0, 0);
    answer(1, &options);
    EXPECT_EQ(SaveDIBInTiffFile(file.Path(), dib, 201, 1), 1);
    EXPECT_EQ(LastPage(file.Path()).Pixels(9), MONOCHROME_ROWS);
    GlobalFree(dib);
    DeleteObject(mono);
}
