// What the thread's last error is after a call without a path, and after a success.
#include "support/numbered_pages.h"
#include "tiff/tiff.h"

#include <functional>
#include <gtest/gtest.h>

namespace {

struct NoPathCall {
    const char* name;
    std::function<bool()> fails;
};

void ExpectNoPath(const std::vector<NoPathCall>& calls)
{
    for (const auto& [name, fails] : calls) {
        SCOPED_TRACE(name);
        SetTiffError(0);
        EXPECT_TRUE(fails());
        EXPECT_EQ(TiffError(), 29u);
    }
}

} // namespace

TEST(LastError, SaysThatAPathIsMissing)
{
    const NewDib block;
    HGLOBAL dib = block.Get();
    const uint8_t grey[3] = {};
    TiffCalsInformation information{};
    TiffCalsNotes notes{};
    TempFile other(Pages(2));
    const char* path = other.Path();
    constexpr uint32_t g4 = TIFF_SAVE_GROUP4;
    ExpectNoPath({
        {"open", [] { return !OpenTiffFile(nullptr, T_READ); }},
        {"create", [] { return !OpenTiffFile(nullptr, T_CREAT); }},
        {"count", [] { return GetNumberOfImagesInTiffFile(nullptr) == 0xFFFFFFFF; }},
        {"colour space", [] { return GetTiffColorSpace(nullptr, 0) == 0xFFFFFFFF; }},
        {"load", [] { return !LoadTiffIntoDIB(nullptr, 0, 0); }},
        {"load unconverted", [] { return !LoadNonRGBTiffIntoDIB(nullptr, 0); }},
        {"save", [dib] { return !SaveDIBInTiffFile(nullptr, dib, g4, 0); }},
        {"save for Gamma", [dib] { return !SaveDIBInGammaTiffFile(nullptr, dib, g4, 0, 1); }},
        {"save for NMS", [dib] { return !SaveDIBInNMSTiffFile(nullptr, dib); }},
        {"save for Dialogic", [dib] { return !SaveDIBInDialogicTiffFile(nullptr, dib, g4); }},
        {"save for Cisco", [dib] { return !SaveTiffForCiscoFormat(nullptr, dib, g4, 0, 1); }},
        {"rewrite for Cisco", [] { return !ConvertTiffToCiscoFormat(nullptr); }},
        {"copy from", [path] { return !CopyTiffImageInFile(nullptr, 0, path, T_APPEND); }},
        {"copy to", [path] { return !CopyTiffImageInFile(path, 0, nullptr, T_APPEND); }},
        {"insert", [dib] { return !InsertTiffImage(nullptr, dib, g4, 0, 1, 0, 0, 0); }},
        {"insert before", [dib] { return !InsertTiffImage(nullptr, dib, g4, 0, 1, -1, 1, 0); }},
        {"delete", [] { return !DeleteTiffImage(nullptr, 0, 0); }},
        {"reorder", [] { return !ReorderTiffFile(nullptr); }},
        {"merge from", [path] { return !MergeTiffFiles(path, nullptr, nullptr, 0); }},
        {"merge to", [path] { return !MergeTiffFiles(nullptr, path, nullptr, 0); }},
        {"split from", [path] { return !SplitTiffFile(nullptr, path, 1, nullptr, 0); }},
        {"split to", [path] { return !SplitTiffFile(path, nullptr, 1, nullptr, 0); }},
        {"cut", [path] { return !CutTiffFile(nullptr, path, 1, nullptr, 0); }},
        {"cut to", [path] { return !CutTiffFile(path, nullptr, 1, nullptr, 0); }},
        {"append code", [path] { return !AppendCCITTImageFile(path, nullptr, 0, 0); }},
        {"append code to", [path] { return !AppendCCITTImageFile(nullptr, path, 0, 0); }},
        {"number", [] { return !UpdatePageNumbers(nullptr, 1); }},
        {"add a tag", [grey] { return !AddTiffTagToImage(nullptr, 0, 305, 1, grey, 1); }},
        {"delete a tag", [] { return !DeleteTiffTagOfImage(nullptr, 0, 305); }},
        {"blank page", [&grey] { return FindBlankPage(nullptr, 5, 0, grey) == 0xFFFFFFFF; }},
        {"black page", [&grey] { return FindBlackPage(nullptr, 5, 0, grey) == 0xFFFFFFFF; }},
        {"CALS header", [] { return !ReadCALSHead(nullptr); }},
        {"CALS numbers", [&] { return !ReadCALSInfo(nullptr, &information); }},
        {"CALS texts", [&] { return !ReadCALSNote(nullptr, &notes); }},
        {"CALS picture", [] { return !LoadCALSIntoDIB(nullptr, 0); }},
        {"save as CALS", [dib] { return !SaveDIBInCALSFormat(nullptr, dib, nullptr, nullptr, 0); }},
        {"add a note", [] { return !AddTiffNote(nullptr, 0, nullptr); }},
        {"delete a note", [] { return !DeleteTiffNote(nullptr, 0, 0); }},
    });
}

// The headers say for each function which of both it does.
TEST(LastError, IsClearedOrKeptByASuccess)
{
    constexpr uint32_t EARLIER = 9, WIDTH = 256;
    TempFile file(Pages(2)), saved(Bytes{});
    const NewDib block;
    HGLOBAL dib = block.Get();
    HGLOBAL open = OpenTiffFile(file.Path(), T_READ);
    ASSERT_TRUE(GetTiffImage(open, 0));
    BITMAPINFOHEADER header;
    TiffFileInformation information;
    uint32_t out[2];
    const uint8_t grey[3] = {};
    const auto free = [](HGLOBAL made) { return made && !GlobalFree(made); };
    const struct {
        const char* name;
        std::function<bool()> succeeds;
        uint32_t after;
    } calls[] = {
        {"open", [&] { return CloseTiffFile(OpenTiffFile(file.Path(), T_READ)) == 1; }, 0},
        {"load tags", [&] { return GetTiffImage(open, 1) == 1; }, 0},
        {"tags that are loaded", [&] { return GetTiffImage(open, 1) == 1; }, EARLIER},
        {"drop", [&] { return DropTiffImage(open, 1) == 1; }, EARLIER},
        {"a tag", [&] { return GetTiffImageInfo(open, 0, WIDTH, out) == 1; }, EARLIER},
        {"file", [&] { return GetTiffFileInfo(open, &information) == 1; }, EARLIER},
        {"dimensions", [&] { return GetTiffDimensions(open, 0, &header) == 0; }, 0},
        {"resolution", [&] { return GetTiffImageDPI(open, 0, out) == 0; }, 0},
        {"colours", [&] { return free(GetTiffRGBQuad(open, 0)); }, 0},
        {"strips", [&] { return GetTiffStripCount(open, 0) != 0; }, EARLIER},
        {"load", [&] { return free(LoadTiffIntoDIB(file.Path(), 0, 0)); }, 0},
        {"colour space", [&] { return GetTiffColorSpace(file.Path(), 0) == 0; }, 0},
        {"save", [&] { return SaveDIBInTiffFile(saved.Path(), dib, TIFF_SAVE_GROUP4, 0) == 1; }, 0},
        {"stretch", [&] { return free(StretchDIB(dib, 4, 4, 0)); }, 0},
        {"turn", [&] { return free(RotateDIB(dib, 1)); }, 0},
        {"dither", [&] { return free(DitherDIB(dib, TIFF_DITHER_ORDERED, 0)); }, 0},
        {"merge", [&] { return MergeTiffFiles(saved.Path(), file.Path(), nullptr, 0) == 1; }, 0},
        {"delete", [&] { return DeleteTiffImage(saved.Path(), -1, 0) == 1; }, 0},
        {"search", [&] { return FindBlankPage(file.Path(), 0, 0, grey) <= 2; }, 0},
        {"notes", [&] { return GetTiffNoteCount(open, 0) == 0; }, 0},
        {"save as CALS", [&] { return SaveDIBInCALSFormat(saved.Path(), dib, nullptr, nullptr, 0) == 1; }, 0},
        {"CALS header", [&] { return free(ReadCALSHead(saved.Path())); }, EARLIER},
        {"quality", [] { return SetTiffJpegQuality(75) == 1; }, EARLIER},
        {"fax quality", [] { return SetTiffFaxQuality(nullptr) == 1; }, EARLIER},
        {"close", [&] { return CloseTiffFile(open) == 1; }, EARLIER},
    };
    for (const auto& [name, succeeds, after] : calls) {
        SCOPED_TRACE(name);
        SetTiffError(EARLIER);
        EXPECT_TRUE(succeeds());
        EXPECT_EQ(TiffError(), after);
    }
}
