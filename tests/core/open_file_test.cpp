#include "support/leaks.h"
#include "support/tiff_builder.h"

#include <cstring>
#include <gtest/gtest.h>

namespace {

TiffPage SmallPage(uint32_t kind)
{
    return TiffPage::Picture(8, 1, 1, 1).Long(254, {kind}).Strips({{0x5A}});
}

Bytes PagesOfKinds(std::vector<uint32_t> kinds, uint16_t byteOrder = TIFF_INTEL)
{
    TiffBuilder builder(byteOrder);
    for (const uint32_t kind : kinds)
        builder.Add(SmallPage(kind));
    return builder.Build();
}

uint32_t OpenFlags(HGLOBAL file)
{
    const Bytes record = Content(file, 268);
    uint32_t flags;
    std::memcpy(&flags, &record[260], 4);
    return flags;
}

} // namespace

TEST(OpenFile, ModesDecideWhatIsReadAndHowItIsWritten)
{
    NoLeaks leaks;
    TempFile two(PagesOfKinds({0, 0})), empty({});
    static const struct {
        const char* row;
        std::string path;
        uint32_t mode, flags, pages;
    } rows[] = {
        {"read", two.Path(), T_READ, 0x20, 2},
        {"append", two.Path(), T_APPEND, 0x32, 2},
        {"create", two.Path(), T_CREAT, 0x1032, 0},
        {"another mode creates", two.Path(), 1, 0x1032, 0},
        {"append to nothing", "no-such-file.tif", T_APPEND, 0x1032, 0},
        {"append to an empty file", empty.Path(), T_APPEND, 0x1032, 0},
    };
    for (const auto& [row, path, mode, flags, pages] : rows) {
        SCOPED_TRACE(row);
        HGLOBAL file = OpenTiffFile(path.c_str(), mode);
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(TiffError(), 0u);
        EXPECT_EQ(OpenFlags(file), flags);
        EXPECT_EQ(NumberOfTiffImages(file, TIFF_ALL_PAGES), pages);
        EXPECT_EQ(CloseTiffFile(file), 1);
    }
    EXPECT_EQ(ReadFileBytes(two.Path()), PagesOfKinds({0, 0})) << "opening writes nothing";
    EXPECT_EQ(GetNumberOfImagesInTiffFile(two.Path()), 2u);
    EXPECT_EQ(GetNumberOfImagesInTiffFile("no-such-file.tif"), 0xFFFFFFFFu);
    EXPECT_EQ(CloseTiffFile(nullptr), 0);

    Block block(PagesOfKinds({0}));
    const auto size = static_cast<uint32_t>(PagesOfKinds({0}).size());
    HGLOBAL memory = OpenTiffInMemory(block.Get(), size, T_READ);
    EXPECT_EQ(OpenFlags(memory), 0x32u) << "a TIFF in memory always takes pages";
    EXPECT_EQ(GetMemoryTiffHandle(memory), block.Get());
    CloseTiffFile(memory);
}

TEST(OpenFile, HeadersThatAreNotTiffAreToldApart)
{
    NoLeaks leaks;
    static const struct {
        const char* row;
        Bytes content;
        uint32_t error;
    } rows[] = {
        {"nothing", {}, 6},
        {"half a byte order", Hex("49"), 6},
        {"no version", Hex("4949"), 6},
        {"no byte order", Hex("4D49 2A00 00000000"), 14},
        {"no byte order, too short for a version", Hex("1234"), 14},
        {"the 64-bit format", Hex("4949 2B00 08000000"), 8},
        {"version in the other order", Hex("4D4D 2A00 00000000"), 8},
        {"no first link", Hex("4949 2A00 0000"), 6},
        {"first directory beyond the end", Hex("4949 2A00 FFFF0000"), 6},
        {"first directory cut", Hex("4949 2A00 08000000 0100 0001 0300"), 6},
    };
    for (const auto& [row, content, error] : rows) {
        SCOPED_TRACE(row);
        TempFile file(content);
        Block block(content);
        EXPECT_EQ(Refusal(OpenTiffFile(file.Path(), T_READ)), error);
        if (!content.empty()) {
            SetTiffError(0);
            EXPECT_EQ(OpenTiffInMemory(block.Get(), static_cast<uint32_t>(content.size()), T_APPEND),
                      nullptr);
            EXPECT_EQ(TiffError(), error);
        }
    }
    const std::string longPath(260, 'x');
    EXPECT_EQ(Refusal(OpenTiffFile(longPath.c_str(), T_CREAT)), 7u);
    EXPECT_EQ(Refusal(OpenTiffFile(nullptr, T_READ)), 29u);

    MemoryTiff none(Hex("4949 2A00 00000000"));
    EXPECT_NE(none.file, nullptr);
    EXPECT_EQ(none.openError, 0u);
    EXPECT_EQ(NumberOfTiffImages(none.file, TIFF_ALL_PAGES), 0u);
}

TEST(OpenFile, ABrokenChainKeepsThePagesBeforeIt)
{
    for (const uint16_t order : {uint16_t{TIFF_INTEL}, uint16_t{TIFF_MOTOROLA}}) {
        TiffBuilder builder(order);
        Bytes whole = builder.Add(SmallPage(1)).Add(SmallPage(2)).Add(SmallPage(4)).Build();
        const struct {
            const char* row;
            size_t cut;    // the file's length
            uint32_t link; // which link is patched to 0x7FFFFFFF
            uint32_t pages;
        } rows[] = {
            {"link beyond the end", whole.size(), 1, 2},
            {"last link cut off", whole.size() - 1, 9, 3},
            {"last directory cut", builder.directories[2] + 20, 9, 2},
            {"count of the last directory cut", builder.directories[2] + 1, 9, 2},
        };
        for (const auto& [row, cut, link, pages] : rows) {
            SCOPED_TRACE(row);
            Bytes broken(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(cut));
            if (link < 3)
                broken[builder.links[link]] = broken[builder.links[link] + 3] = 0x7F;
            MemoryTiff opened(broken);
            ASSERT_NE(opened.file, nullptr);
            EXPECT_EQ(opened.openError, 6u);
            EXPECT_EQ(NumberOfTiffImages(opened.file, TIFF_ALL_PAGES), pages);
            TiffFileInformation info;
            EXPECT_EQ(GetTiffFileInfo(opened.file, &info), 1);
            EXPECT_EQ(+info.firstDirectoryOffset, builder.directories[0]);
            EXPECT_EQ(+info.byteOrder, order);
        }
    }
}

TEST(OpenFile, AChainThatComesBackIsUnrolledToTheLimit)
{
    TiffBuilder builder;
    Bytes file = builder.Add(SmallPage(1)).Add(SmallPage(2)).Add(SmallPage(4)).Build();
    std::memcpy(&file[builder.links[2]], &builder.directories[1], 4);
    MemoryTiff opened(file);
    EXPECT_EQ(opened.openError, 0u);
    EXPECT_EQ(NumberOfTiffImages(opened.file, TIFF_ALL_PAGES), TIFF_MAX_PAGES);
    DropTiffImage(opened.file, 0);
    EXPECT_EQ(NumberOfTiffImages(opened.file, 1), 1u);
    EXPECT_EQ(NumberOfTiffImages(opened.file, 2), 50000u);
    EXPECT_EQ(NumberOfTiffImages(opened.file, 4), 49999u);
    EXPECT_EQ(GetTiffImage(opened.file, TIFF_MAX_PAGES - 1), 1);
}

TEST(OpenFile, DirectoriesInAnyOrderAreFollowed)
{
    // The chain runs backwards through the file, and once forward again.
    TiffBuilder builder;
    Bytes file = builder.Add(SmallPage(1)).Add(SmallPage(2)).Add(SmallPage(4)).Build();
    const auto link = [&](size_t at, uint32_t offset) { std::memcpy(&file[at], &offset, 4); };
    link(4, builder.directories[2]);
    link(builder.links[2], builder.directories[0]);
    link(builder.links[0], builder.directories[1]);
    link(builder.links[1], 0);
    MemoryTiff opened(file);
    ASSERT_EQ(NumberOfTiffImages(opened.file, TIFF_ALL_PAGES), 3u);
    uint32_t kind = 0, page = 0;
    for (const uint32_t expected : {4u, 1u, 2u}) {
        GetTiffImage(opened.file, page);
        GetTiffImageInfo(opened.file, page++, 254, &kind);
        EXPECT_EQ(kind, expected);
    }
}

TEST(Registry, PagesAreCountedByKind)
{
    Bytes file = TiffBuilder()
                     .Add(SmallPage(2))
                     .Add(SmallPage(0x14000))
                     .Add(TiffPage::Picture(8, 1, 1, 1).Short(255, {3}).Strips({{0}}))
                     .Build();
    MemoryTiff opened(file);
    const HGLOBAL tiff = opened.file;
    EXPECT_EQ(NumberOfTiffImages(tiff, 0x4002), 1u) << "page 0 is loaded";
    EXPECT_EQ(NumberOfTiffImages(tiff, 2), 1u) << "SubfileType 3 is kind 2";
    EXPECT_EQ(NumberOfTiffImages(tiff, 0), 99998u) << "entries not in use count too";
    EXPECT_EQ(IsTiffImageRegistered(tiff, 1), 0) << "a file cannot mark its page as loaded";
    EXPECT_EQ(TiffError(), 27u);
    EXPECT_EQ(Refusal(IsTiffImageRegistered(tiff, 3)), 3u);
    EXPECT_EQ(IsTiffImageRegistered(tiff, 0xFFFFFFFF), 0);
    EXPECT_EQ(IsTiffImageRegistered(tiff, 0), 1);
}

TEST(Registry, DroppingRestoresTheErrorUnlessThereIsNoSuchPage)
{
    MemoryTiff opened(PagesOfKinds({0, 0}));
    SetTiffError(12);
    EXPECT_EQ(DropTiffImage(opened.file, 1), 1);
    EXPECT_EQ(TiffError(), 12u);
    EXPECT_EQ(DropTiffImage(opened.file, 0), 1);
    EXPECT_EQ(IsTiffImageRegistered(opened.file, 0), 0);
    EXPECT_EQ(GetTiffImage(opened.file, 0), 1) << "a dropped page loads again";
    EXPECT_EQ(Refusal(DropTiffImage(opened.file, 2)), 3u);
}

TEST(OpenFile, PathAndByteOrderCanBeChanged)
{
    MemoryTiff opened(PagesOfKinds({0}));
    TiffFileInformation info;
    EXPECT_EQ(ModiTiffFileInfo(opened.file, nullptr, TIFF_MOTOROLA), 1);
    EXPECT_EQ(Refusal(ModiTiffFileInfo(opened.file, "renamed.tif", 0x4D49)), 14u);
    GetTiffFileInfo(opened.file, &info);
    EXPECT_STREQ(info.path, "renamed.tif") << "the path is replaced before the byte order is looked at";
    EXPECT_EQ(+info.byteOrder, TIFF_MOTOROLA);
    EXPECT_EQ(Refusal(ModiTiffFileInfo(opened.file, std::string(260, 'x').c_str(), 0)), 7u);
    EXPECT_EQ(ModiTiffFileInfo(opened.file, std::string(259, 'x').c_str(), 0), 1);
}

TEST(OpenFile, TheVersionFillsWhatItIsGiven)
{
    static const struct {
        int32_t size;
        std::string text;
    } rows[] = {{0, "################"},
                {-3, "################"},
                {5, "Versi###########"},
                {13, "Version 12.08###"},
                {14, std::string("Version 12.08\0##", 16)},
                {99, std::string("Version 12.08\0##", 16)}};
    for (const auto& [size, text] : rows) {
        SCOPED_TRACE(size);
        std::string buffer(16, '#');
        GetTiffVersion(buffer.data(), size);
        EXPECT_EQ(buffer, text);
    }
}
