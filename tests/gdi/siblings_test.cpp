// The companion libraries: where they are found, their arguments, and the effect of their answers.
#include "gdi/desktop.h"
#include "siblings/dialogs.h"
#include "siblings/jpeg.h"
#include "support/pictures.h"
#include "support/target.h"

#include <gtest/gtest.h>

namespace {

const std::string SAMPLES_FOLDER = TIFF_SOURCE_DIR "/samples";

const Bytes& Page()
{
    static const Bytes page = OnePage(TiffPage::Picture(1, 1, 1, 1).Strips({{0x80}}));
    return page;
}

// One tile of 8 by 2 pixels.
TiffPage OldJpegPage()
{
    return TiffPage::Picture(8, 2, 8, 6, 6)
        .Short(277, {3})
        .Short(512, {1})
        .Short(322, {16})
        .Short(323, {16})
        .Long(324, {1111})
        .Long(325, {22})
        .Long(519, {301, 302, 303})
        .Long(520, {401, 402, 403})
        .Long(521, {501, 502, 503})
        .Short(515, {7})
        .Short(530, {1, 1});
}

bool IsLoaded(const char* name)
{
    return GetModuleHandleA(name) != nullptr;
}

uint32_t LoadAll(const char* path, uint32_t& error)
{
    uint32_t loaded = 0;
    loaded += !TakeDib(LoadTiffIntoDIB(path, 0, 1)).pixels.empty();
    error = TiffError();
    loaded += !TakeBitmap(LoadTiffIntoBitmap(path, 0, 1)).pixels.empty();
    EXPECT_EQ(TiffError(), error);
    loaded += !TakeBitmap(LoadTiffFileIntoBitmap(path, 0, 1)).pixels.empty();
    EXPECT_EQ(TiffError(), error);
    loaded += static_cast<uint32_t>(LoadTiffFileIntoClipboard(path, 0, 1));
    EXPECT_EQ(TiffError(), error);
    return loaded;
}

} // namespace

TEST(LoadDialog, ItsAnswerDecidesOnEveryWay)
{
    static constexpr struct {
        const char* row;
        int32_t answer;
        uint32_t loaded, error;
    } rows[] = {{"go on", 1, 4, 0}, {"cancelled", 2, 0, 0}, {"failed", 0, 0, 1}, {"failed too", -1, 0, 1}};
    const TempFile file(Page());
    const SearchedFolder searched(SiblingsFolder());
    const HeldLibrary dialogs(DialogsFile());
    for (const auto& [row, answer, loaded, error] : rows) {
        SCOPED_TRACE(row);
        dialogs.Find<decltype(AnswerLoadDialog)>("AnswerLoadDialog")(answer);
        SetTiffError(9);
        uint32_t reported = 99;
        EXPECT_EQ(LoadAll(file.Path(), reported), loaded);
        EXPECT_EQ(reported, error);
    }
    const LoadDialogCall& call = *dialogs.Find<decltype(LastLoadDialog)>("LastLoadDialog")();
    EXPECT_EQ(call.count, 16u);
    EXPECT_EQ(call.page, 0u);
    EXPECT_EQ(call.pageIsLoaded, 1);
    EXPECT_STREQ(call.path, file.Path());
    // The dialog is not shown for a missing page.
    EXPECT_EQ(LoadTiffIntoDIB(file.Path(), 5, 1), nullptr);
    EXPECT_EQ(LoadTiffFileIntoClipboard(file.Path(), 5, 1), 1);
    EXPECT_EQ(call.count, 16u);
}

TEST(LoadDialog, NothingIsLoadedWithoutIt)
{
    const TempFile file(Page());
    uint32_t error = 0;
    EXPECT_EQ(LoadAll(file.Path(), error), 0u);
    EXPECT_EQ(error, 28u);

    // Deliberate: a library of that name without the dialog stays loaded.
    Folder folder;
    folder.Copy(JpegLibraryFile(), "KVDlgs.dll");
    const SearchedFolder searched(folder.Path());
    EXPECT_EQ(Refusal(LoadTiffIntoDIB(file.Path(), 0, 1)), 28u);
    EXPECT_TRUE(IsLoaded("KVDlgs.dll"));
    while (const HMODULE left = GetModuleHandleA("KVDlgs.dll"))
        FreeLibrary(left);
}

TEST(LoadDialog, IsLookedForBesideTheLibraryFirst)
{
    const TempFile file(Page());
    const auto load = [&](const HeldLibrary& library) {
        return TakeDib(library.Find<decltype(LoadTiffIntoDIB)>("LoadTiffIntoDIB")(file.Path(), 0, 1)).width;
    };
    Folder with, without;
    const HeldLibrary beside(with.Copy(LibraryFile(), "TIFFA.DLL"));
    const HeldLibrary alone(without.Copy(LibraryFile(), "TIFFB.DLL"));
    const std::string own = with.Copy(DialogsFile(), "KVDlgs.dll");
    {
        EXPECT_EQ(load(alone), 0);
        EXPECT_EQ(load(beside), 1);
        const SearchedFolder searched(SiblingsFolder());
        EXPECT_EQ(load(alone), 1);
        EXPECT_FALSE(IsLoaded("KVDlgs.dll"));
    }
    const SearchedFolder searched(SiblingsFolder());
    const HeldLibrary ownDialogs(own), otherDialogs(DialogsFile());
    const auto calls = [](const HeldLibrary& dialogs) {
        return dialogs.Find<decltype(LastLoadDialog)>("LastLoadDialog")()->count;
    };
    EXPECT_EQ(load(beside), 1);
    EXPECT_EQ(calls(ownDialogs), 1u);
    EXPECT_EQ(calls(otherDialogs), 0u);
}

TEST(JpegLibrary, DecodesOldStylePages)
{
    const SearchedFolder searched(SiblingsFolder());
    const HeldLibrary jpeg(JpegLibraryFile());
    const JpegCall& call = *jpeg.Find<decltype(LastJpegCall)>("LastJpegCall")();
    const TempFile file(OnePage(OldJpegPage()));
    const Picture dib = TakeDib(LoadTiffIntoDIB(file.Path(), 0, 0));
    EXPECT_EQ(TiffError(), 0u);
    ASSERT_EQ(call.count, 1u);
    EXPECT_EQ(call.cursor, WaitCursor());
    const CodecContext& context = call.context;
    const std::vector<uint32_t> found = {context.compression,    context.bytesPerLine,
                                         context.bitsPerSample,  context.jpegProcess,
                                         context.tileWidth,      context.tilesAcross,
                                         context.stripCount,     context.restartInterval,
                                         context.subSampling[0], context.referenceBlackWhite[2],
                                         call.tileOffset,        call.quantisationTable,
                                         call.dcTable,           call.acTable};
    EXPECT_EQ(found, (std::vector<uint32_t>{6, 24, 8, 1, 16, 1, 1, 7, 1, 255, 1111, 301, 401, 501}));

    EXPECT_EQ(dib.width, 8);
    const Picture bitmap = TakeBitmap(LoadTiffIntoBitmap(file.Path(), 0, 0));
    EXPECT_EQ(TiffError(), 0u);
    EXPECT_TRUE(bitmap == dib);

    jpeg.Find<decltype(AnswerJpeg)>("AnswerJpeg")(12);
    EXPECT_EQ(Refusal(LoadTiffIntoDIB(file.Path(), 0, 0)), 12u);
    EXPECT_EQ(Refusal(LoadTiffIntoBitmap(file.Path(), 0, 0)), 12u);
}

TEST(JpegLibrary, EncodesOldStylePages)
{
    const SearchedFolder searched(SiblingsFolder());
    const HeldLibrary jpeg(JpegLibraryFile());
    const JpegCall& call = *jpeg.Find<decltype(LastJpegCall)>("LastJpegCall")();
    const TempFile target(Bytes{});
    HGLOBAL file = OpenTiffFile(target.Path(), T_CREAT);
    const uint32_t page = DefinePage(
        file, {{256, 8}, {257, 2}, {258, 8}, {259, 6}, {262, 6}, {277, 3}, {322, 16}, {323, 16}, {512, 1}});
    RowSource source{{Bytes(24, 1), Bytes(24, 2)}};
    EXPECT_EQ(EncodeTiffImage(file, page, &source, FillRow), 1);
    EXPECT_EQ(TiffError(), 0u);
    CloseTiffFile(file);
    EXPECT_EQ(call.context.tilesDown, 1u);
    EXPECT_EQ(call.rows, 2u);
    EXPECT_EQ(call.byteTotal, 72u);

    file = OpenTiffFile(target.Path(), T_READ);
    ASSERT_EQ(LoadPages(file), 1u);
    const uint32_t offset = TagNumber(file, 0, 324);
    EXPECT_EQ(TagNumber(file, 0, 325), 48u);
    EXPECT_EQ(TagValues(file, 0, 519), Hex("08000000 09000000 0A000000"));
    EXPECT_EQ(TagValues(file, 0, 273), Bytes());
    CloseTiffFile(file);
    EXPECT_EQ(ReadFileBytes(target.Path()).at(offset + 24 + 7), 2);
}

TEST(JpegLibrary, IsToldOfAsManyTilesAsThereAreOffsets)
{
    static const struct {
        uint16_t type;
        uint32_t count, tiles;
    } rows[] = {{4, 20, 20}, {3, 20, 20}, {1, 20, 5}, {2, 20, 5}, {1, 3, 1}};
    const SearchedFolder searched(SiblingsFolder());
    const HeldLibrary jpeg(JpegLibraryFile());
    const JpegCall& call = *jpeg.Find<decltype(LastJpegCall)>("LastJpegCall")();
    for (const auto& [type, count, tiles] : rows) {
        SCOPED_TRACE(type);
        TiffPage page = OldJpegPage().Short(256, {80}).Short(257, {40}).Short(322, {8}).Short(323, {8});
        const MemoryTiff opened(OnePage(page.Entry(324, type, count, std::vector<uint32_t>(count, 1))));
        TakeDib(LoadTiffChainIntoDIB(opened.file, 0));
        EXPECT_EQ(call.context.stripCount, tiles);
    }
}

TEST(JpegLibrary, StaysWhileItIsAtWork)
{
    const SearchedFolder searched(SiblingsFolder());
    const MemoryTiff opened(OnePage(OldJpegPage().Short(515, {CLOSES_FILES})));
    EXPECT_EQ(TakeDib(LoadTiffChainIntoDIB(opened.file, 0)).width, 8);
    EXPECT_FALSE(IsLoaded("JPGLIB.DLL"));
}

TEST(JpegLibrary, IsLoadedWhenNeededUntilAFileIsClosed)
{
    const SearchedFolder searched(SiblingsFolder());
    for (int round = 0; round < 2; ++round) {
        EXPECT_FALSE(IsLoaded("JPGLIB.DLL"));
        const MemoryTiff old(OnePage(OldJpegPage()));
        EXPECT_FALSE(IsLoaded("JPGLIB.DLL"));
        EXPECT_EQ(TakeDib(LoadTiffChainIntoDIB(old.file, 0)).width, 8);
        EXPECT_TRUE(IsLoaded("JPGLIB.DLL"));
        EXPECT_EQ(TakeBitmap(LoadTiffChainIntoBitmap(old.file, 0)).width, 8);
        {
            const MemoryTiff another(Page());
        }
        EXPECT_FALSE(IsLoaded("JPGLIB.DLL"));
        EXPECT_EQ(TakeDib(LoadTiffChainIntoDIB(old.file, 0)).width, 8);
    }
    EXPECT_FALSE(IsLoaded("JPGLIB.DLL"));
}

TEST(JpegLibrary, FailuresHaveTheirErrors)
{
    const TempFile tiled(OnePage(OldJpegPage()));
    const TempFile untiled(OnePage(TiffPage::Picture(8, 2, 8, 6, 6).Short(277, {3}).Short(530, {1, 1})));
    Folder folder, beside;
    folder.Copy(DialogsFile(), "JPGLIB.DLL");
    const HeldLibrary copy(beside.Copy(LibraryFile(), "TIFFC.DLL"));
    beside.Copy(JpegLibraryFile(), "JPGLIB.DLL");
    const struct {
        const char* row;
        const char* path;
        const std::string& folder;
        uint32_t error;
    } rows[] = {
        {"no library, though one is beside a copy of us", tiled.Path(), SAMPLES_FOLDER, 22},
        {"a library without the function", tiled.Path(), folder.Path(), 23},
        {"not in tiles, left to a codec that is not there", untiled.Path(), SAMPLES_FOLDER, 11},
    };
    for (const auto& [row, path, searchedFolder, error] : rows) {
        SCOPED_TRACE(row);
        const SearchedFolder searched(searchedFolder);
        EXPECT_EQ(copy.Find<decltype(LoadTiffIntoDIB)>("LoadTiffIntoDIB")(path, 0, 0), nullptr);
        EXPECT_EQ(copy.Find<decltype(TiffError)>("TiffError")(), error);
        EXPECT_EQ(Refusal(LoadTiffIntoBitmap(path, 0, 0)), error);
        EXPECT_FALSE(IsLoaded("JPGLIB.DLL"));
    }
}
