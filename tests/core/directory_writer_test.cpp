#include "support/leaks.h"
#include "support/target.h"
#include "support/tiff_builder.h"
#include "support/tiff_dump.h"

#include <gtest/gtest.h>

namespace {

const Bytes intelHeader = Hex("4949 2A00 00000000"), motorolaHeader = Hex("4D4D 002A 00000000");

void Define(HGLOBAL file, uint32_t page, uint32_t tag, uint32_t type, const Bytes& values, uint32_t count)
{
    EXPECT_EQ(DefineTiffImageInfoBuffer(file, page, tag, values.data(), type, count), 1) << tag;
}

// A stored page, its strip being the first byte of the header.
uint32_t DefineWidth(HGLOBAL file, uint32_t width)
{
    return DefinePage(file, {{257, 1}, {256, width}, {279, 1}, {273, 0}});
}

// Of every page, loaded afresh.
std::vector<uint32_t> Widths(HGLOBAL file)
{
    std::vector<uint32_t> widths;
    for (uint32_t page = 0; page < NumberOfTiffImages(file, TIFF_ALL_PAGES); ++page) {
        DropTiffImage(file, page);
        EXPECT_EQ(GetTiffImage(file, page), 1) << TiffError();
        widths.push_back(TagNumber(file, page, 256));
    }
    return widths;
}

} // namespace

TEST(DirectoryWriter, ValuesComeFirstThenTheSortedDirectoryThenTheLink)
{
    NoLeaks leaks;
    for (const bool onDisk : {true, false})
        for (const bool intel : {true, false}) {
            SCOPED_TRACE(testing::Message() << (intel ? "Intel" : "Motorola") << (onDisk ? ", disk" : ""));
            const Target target(onDisk, intel ? intelHeader : motorolaHeader);
            EXPECT_EQ(DefineTiffImage(target.file), 0);
            Define(target.file, 0, 305, 2, Hex("61 62 63 64 65 66 67 68 00"), 9);
            Define(target.file, 0, 258, 3, Hex("0700 0800 0900"), 3);
            Define(target.file, 0, 257, 4, Hex("78563412"), 1);
            Define(target.file, 0, 321, 3, Hex("0100 0200"), 2);
            Define(target.file, 0, 256, 3, Hex("3412"), 1);
            Define(target.file, 0, 282, 5, Hex("48000000 01000000"), 1);
            EXPECT_EQ(WriteTiffImageDirectory(target.file, 0), 0u);
            EXPECT_EQ(TiffError(), 0u);
            EXPECT_EQ(DumpTiff(target.Written()), (intel ? "II" : "MM") + std::string(R"(
directory 32, link 0
256 SHORT 1: 4660
257 LONG 1: 305419896
258 SHORT 3 @8: 7 8 9
282 RATIONAL 1 @14: 72 1
305 ASCII 9 @22: 97 98 99 100 101 102 103 104 0
321 SHORT 2: 1 2
)"));
            const Bytes width =
                intel ? Hex("0001 0300 01000000 34120000") : Hex("0100 0003 00000001 12340000");
            EXPECT_EQ(Part(target.Written(), 34, 12), width) << "left in its field";
        }
}

TEST(DirectoryWriter, TypesAreWrittenAsTheyWereDefined)
{
    NoLeaks leaks;
    const Target target(true, motorolaHeader);
    DefineTiffImage(target.file);
    Define(target.file, 0, 65535, 9, Hex("FEFFFFFF"), 1);
    Define(target.file, 0, 347, 1, Hex("01 02 03 04 05"), 5);
    Define(target.file, 0, 1001, 77, Hex("01 02 03"), 3); // unknown size, so counted as bytes
    Define(target.file, 0, 1000, 1, Hex("01 02 03 04"), 4);
    Define(target.file, 0, 999, 2, {}, 0);
    EXPECT_EQ(WriteTiffImageDirectory(target.file, 0), 0u);
    EXPECT_EQ(DumpTiff(target.Written()), "MM\n"
                                          "directory 14, link 0\n"
                                          "347 UNDEFINED 5 @8: 1 2 3 4 5\n"
                                          "999 ASCII 0:\n"
                                          "1000 BYTE 4: 1 2 3 4\n"
                                          "1001 ? 3: 1 2 3\n"
                                          "65535 SLONG 1: 4294967294\n");
}

TEST(DirectoryWriter, PagesAreAppendedAndLinkedToTheLast)
{
    NoLeaks leaks;
    for (const uint16_t order : {uint16_t{TIFF_INTEL}, uint16_t{TIFF_MOTOROLA}})
        for (const bool onDisk : {true, false}) {
            SCOPED_TRACE(testing::Message() << order << (onDisk ? ", disk" : ", memory"));
            TiffBuilder builder(order);
            builder.Add(TiffPage::Picture(11, 1, 1, 1).Strips({{1, 2}}));
            Bytes before = builder.Add(TiffPage::Picture(12, 1, 1, 1).Strips({{3, 4}})).Build();
            before.push_back(0xEE); // an odd end
            const Target target(onDisk, before);
            LoadPages(target.file);
            for (uint32_t page = 2; page < 4; ++page) {
                EXPECT_EQ(DefineWidth(target.file, 11 + page), page);
                EXPECT_EQ(WriteTiffImageDirectory(target.file, page), 0u);
            }
            Bytes after = target.Written();
            const std::string dump = DumpTiff(after);
            for (const char* complaint : {"odd", "after", "outside"})
                EXPECT_EQ(dump.find(complaint), std::string::npos) << dump;
            EXPECT_EQ(Widths(target.file), (std::vector<uint32_t>{11, 12, 13, 14}));
            const Target reopened(onDisk, after, T_READ);
            EXPECT_EQ(Widths(reopened.file), (std::vector<uint32_t>{11, 12, 13, 14}));

            // Only the last link of the old file has changed.
            after.resize(before.size());
            for (size_t at = builder.links[1]; at < builder.links[1] + 4; ++at)
                after[at] = 0;
            EXPECT_EQ(after, before);
        }
}

TEST(DirectoryWriter, APageOfAFileThatWasNotLoadedGivesItsNumberAwayButStaysInTheFile)
{
    NoLeaks leaks;
    TiffBuilder builder;
    builder.Add(TiffPage::Picture(11, 1, 1, 1).Strips({{1}}));
    const Target target(true, builder.Add(TiffPage::Picture(12, 1, 1, 1).Strips({{2}})).Build());
    EXPECT_EQ(DefineWidth(target.file, 13), 0u);
    EXPECT_EQ(NumberOfTiffImages(target.file, TIFF_ALL_PAGES), 3u);
    EXPECT_EQ(WriteTiffImageDirectory(target.file, 0), 0u);
    EXPECT_EQ(TagNumber(target.file, 0, 256), 13u);
    const Target reopened(true, target.Written(), T_READ);
    EXPECT_EQ(Widths(reopened.file), (std::vector<uint32_t>{11, 12, 13}));
}

TEST(DirectoryWriter, ANewFileIsBegunOnlyForAPageThatThereIs)
{
    NoLeaks leaks;
    for (const bool onDisk : {true, false}) {
        SCOPED_TRACE(onDisk);
        const Bytes old(200, 0xEE);
        const Target target(onDisk, old, T_CREAT);
        EXPECT_EQ(WriteTiffImageDirectory(target.file, 0), 1u);
        EXPECT_EQ(TiffError(), 3u);
        EXPECT_EQ(target.Written(), old);
        DefineWidth(target.file, 13);
        DropTiffImage(target.file, 0);
        EXPECT_EQ(WriteTiffImageDirectory(target.file, 0), 1u);
        EXPECT_EQ(TiffError(), 27u);
        EXPECT_EQ(target.Written(), old);

        ModiTiffFileInfo(target.file, nullptr, TIFF_MOTOROLA);
        EXPECT_EQ(DefineWidth(target.file, 13), 1u) << "a dropped page keeps its number";
        EXPECT_EQ(WriteTiffImageDirectory(target.file, 1), 0u);
        EXPECT_EQ(DumpTiff(target.Written()), "MM\n"
                                              "directory 8, link 0\n"
                                              "256 LONG 1: 13\n"
                                              "257 LONG 1: 1\n"
                                              "273 LONG 1: 0\n"
                                              "279 LONG 1: 1\n"
                                              "strip at 0 overlaps header\n");
        EXPECT_EQ(target.Written().size(), 8u + 2 + 4 * 12 + 4);
    }
}

TEST(DirectoryWriter, AFileThatCannotBeWrittenStaysAsItWas)
{
    NoLeaks leaks;
    const Bytes file = OnePage(TiffPage::Picture(11, 1, 1, 1).Strips({{1}}));
    Target readOnly(true, file, T_READ);
    EXPECT_EQ(WriteTiffImageDirectory(readOnly.file, DefineWidth(readOnly.file, 13)), 6u);
    EXPECT_EQ(TiffError(), 6u);
    EXPECT_EQ(readOnly.Written(), file);

    HGLOBAL nowhere = OpenTiffFile("no-such-folder/new.tif", T_CREAT);
    EXPECT_EQ(WriteTiffImageDirectory(nowhere, DefineWidth(nowhere, 13)), 6u);
    EXPECT_EQ(TiffError(), 6u);
    CloseTiffFile(nowhere);
}
