// Files with names that the code page does not have, through everything that opens, makes, renames or deletes
// a file. A path that went past the setting would leave a file of another name, or find none.
#include "support/numbered_pages.h"
#include "support/target.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <thread>

namespace {

constexpr uint32_t UTF8 = TIFF_PATHS_UTF8, IMAGE_DESCRIPTION = 270, ASCII = 2;

class Utf8Paths {
public:
    Utf8Paths()
    {
        SetTiffPathCodePage(UTF8);
    }
    ~Utf8Paths()
    {
        SetTiffPathCodePage(TIFF_PATHS_ANSI);
    }
};

std::filesystem::path Wide(const std::string& utf8)
{
    return std::u8string(utf8.begin(), utf8.end());
}

std::string Text(const std::filesystem::path& path)
{
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

// An empty folder of its own, removed at the end of the scope.
class Folder {
public:
    explicit Folder(const std::string& name) : path(std::filesystem::path(file.Path()) += Wide(name))
    {
        std::filesystem::create_directory(path);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder()
    {
        std::filesystem::remove_all(path);
    }
    std::string Path(const std::string& name) const
    {
        return Text(path / Wide(name));
    }
    std::set<std::string> Names() const
    {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(path))
            names.insert(Text(entry.path().filename()));
        return names;
    }

private:
    NewFile file;
    std::filesystem::path path;
};

using Names = std::set<std::string>;

struct WithName : testing::TestWithParam<std::string> {
    const Utf8Paths setting;
    const NewDib dib;
    const std::string name = GetParam() + ".tif";
    const Folder folder{GetParam()};
    const std::string path = folder.Path(name);

    // Both pages are the same picture.
    void SavePages(uint32_t count) const
    {
        for (uint32_t page = 0; page < count; ++page)
            EXPECT_EQ(SaveDIBInTiffFile(path.c_str(), dib.Get(), TIFF_SAVE_GROUP4, 0), 1) << TiffError();
    }
};

} // namespace

TEST_P(WithName, PagesAreSavedLoadedAndEdited)
{
    SavePages(2);
    ASSERT_EQ(GetNumberOfImagesInTiffFile(path.c_str()), 2u);
    HGLOBAL loaded = LoadTiffIntoDIB(path.c_str(), 1, 0);
    EXPECT_NE(loaded, nullptr);
    GlobalFree(loaded);
    const TiffNote note{TIFF_NOTE_TEXT, 0, 0, 8, 1, 0, 4, "seen"};
    EXPECT_EQ(AddTiffNote(path.c_str(), 1, &note), 1) << TiffError();
    EXPECT_EQ(AddTiffTagToImage(path.c_str(), 0, IMAGE_DESCRIPTION, ASCII, "fax", 4), 1) << TiffError();
    EXPECT_EQ(InsertTiffImage(path.c_str(), dib.Get(), TIFF_SAVE_LZW, 0, 1, 0, 0, 0), 1) << TiffError();
    EXPECT_EQ(DeleteTiffImage(path.c_str(), 1, 0), 1) << TiffError();
    EXPECT_EQ(ReorderTiffFile(path.c_str()), 1) << TiffError();
    EXPECT_EQ(GetNumberOfImagesInTiffFile(path.c_str()), 2u);
    HGLOBAL file = OpenTiffFile(path.c_str(), T_READ);
    TiffFileInformation facts;
    EXPECT_EQ(GetTiffFileInfo(file, &facts), 1);
    EXPECT_EQ(facts.path, path);
    EXPECT_EQ(LoadPages(file), 2u);
    EXPECT_EQ(GetTiffNoteCount(file, 1), 1);
    CloseTiffFile(file);
    EXPECT_EQ(folder.Names(), Names{name});
}

TEST_P(WithName, FilesAreMergedSplitAndCut)
{
    const std::string second = "второй 二.tif", base = "страница 頁";
    SavePages(4);
    EXPECT_EQ(MergeTiffFiles(folder.Path(second).c_str(), path.c_str(), nullptr, 0), 1) << TiffError();
    EXPECT_EQ(SplitTiffFile(path.c_str(), folder.Path(second).c_str(), 3, nullptr, 0), 1) << TiffError();
    EXPECT_EQ(folder.Names(), (Names{name, second}));
    EXPECT_EQ(CutTiffFile(path.c_str(), folder.Path(base).c_str(), 1, nullptr, 0), 1) << TiffError();
    EXPECT_EQ(folder.Names(), (Names{name, second, base + "0001.tif"}));
    EXPECT_EQ(SplitTiffFile(path.c_str(), folder.Path("имя 名").c_str(), 0, nullptr, 0), 1) << TiffError();
    EXPECT_EQ(folder.Names(), (Names{"имя 名", second, base + "0001.tif"}));
}

TEST_P(WithName, CalsFilesAreReplaced)
{
    for (int round = 0; round < 2; ++round)
        EXPECT_EQ(SaveDIBInCALSFormat(path.c_str(), dib.Get(), nullptr, nullptr, 0), 1) << TiffError();
    TiffCalsInformation information;
    EXPECT_EQ(ReadCALSInfo(path.c_str(), &information), 1);
    EXPECT_EQ(folder.Names(), Names{name});
}

INSTANTIATE_TEST_SUITE_P(Paths, WithName, testing::Values(" чертёж", " 図面能表", " 📠"));

TEST(PathCodePage, IsAThreadsOwnAndOnlyAnsiOrUtf8)
{
    const Utf8Paths setting;
    for (const uint32_t unknown : {1u, 437u, 65000u, 0xFFFFFFFFu}) {
        SetTiffError(0);
        EXPECT_EQ(Refusal(SetTiffPathCodePage(unknown)), 29u) << unknown;
        EXPECT_EQ(GetTiffPathCodePage(), UTF8) << unknown;
    }
    uint32_t other = 1;
    std::thread([&other] { other = GetTiffPathCodePage(); }).join();
    EXPECT_EQ(other, TIFF_PATHS_ANSI);
}

TEST(PathCodePage, BytesThatAreNotUtf8NameNoFile)
{
    const Utf8Paths setting;
    const Folder folder("");
    const NewDib dib;
    // Cut off, overlong, a lone surrogate, and bytes of another code page.
    for (const char* name : {"\xE5\x9B", "\xC0\xAFx", "\xED\xA0\x80", "\x8E\x91\x97\xBF"}) {
        const std::string path = folder.Path("a") + name;
        EXPECT_EQ(Refusal(SaveDIBInCALSFormat(path.c_str(), dib.Get(), nullptr, nullptr, 0)), 6u);
        EXPECT_EQ(Refusal(LoadTiffIntoDIB(path.c_str(), 0, 0)), 6u);
    }
    EXPECT_EQ(folder.Names(), Names{});
}

TEST(Version, NumberAndTextAgree)
{
    const uint32_t number = GetTiffVersionNumber();
    char text[16] = "", expected[40];
    GetTiffVersion(text, sizeof(text));
    snprintf(expected, sizeof(expected), "Version %u.%02u", number / 10000, number / 100 % 100);
    EXPECT_STREQ(text, expected);
    EXPECT_GE(number, static_cast<uint32_t>(TIFF_VERSION_NUMBER));
}
