#include "support/leaks.h"
#include "support/pictures.h"
#include "support/tiff_dump.h"

#include <gtest/gtest.h>

namespace {

const Bytes intelHeader = Hex("4949 2A00 00000000"), motorolaHeader = Hex("4D4D 002A 00000000");

// A file that a handle writes to, on disk or in memory.
class Target {
public:
    Target(bool onDisk, const Bytes& content, uint32_t mode = T_APPEND)
        : onDisk(onDisk), disk(content), block(content),
          file(onDisk ? OpenTiffFile(disk.Path(), mode)
                      : OpenTiffInMemory(block.Get(), static_cast<uint32_t>(content.size()), mode))
    {
    }
    ~Target()
    {
        CloseTiffFile(file);
    }
    Bytes Written() const
    {
        HGLOBAL memory = GetMemoryTiffHandle(file);
        return onDisk ? ReadFileBytes(disk.Path()) : Content(memory, GlobalSize(memory));
    }

private:
    const bool onDisk;
    TempFile disk;
    Block block;

public:
    const HGLOBAL file;
};

void Define(HGLOBAL file, uint32_t page, uint32_t tag, uint32_t type, const Bytes& values, uint32_t count)
{
    EXPECT_EQ(DefineTiffImageInfoBuffer(file, page, tag, values.data(), type, count), 1) << tag;
}

// The tags of an uncompressed page, whose strip is the 8 bytes of the header.
uint32_t DefinePage(HGLOBAL file, uint32_t width)
{
    const auto page = static_cast<uint32_t>(DefineTiffImage(file));
    DefineTiffImageInfo(file, page, 257, 3, 1);
    DefineTiffImageInfo(file, page, 256, 3, width);
    DefineTiffImageInfo(file, page, 279, 4, 1);
    DefineTiffImageInfo(file, page, 273, 4, 0);
    return page;
}

uint32_t WidthOf(HGLOBAL file, uint32_t page)
{
    uint32_t width = 0;
    EXPECT_EQ(GetTiffImage(file, page), 1) << TiffError();
    EXPECT_EQ(GetTiffImageInfo(file, page, 256, &width), 1);
    return width;
}

} // namespace

TEST(DirectoryWriter, ValuesComeFirstThenTheSortedDirectoryThenTheLink)
{
    NoLeaks leaks;
    static const struct {
        const char* row;
        Bytes header, expected;
    } rows[] = {
        {"Intel", intelHeader,
         Hex("4949 2A00 20000000") +               // linked
             Hex("0700 0800 0900") +               // 258 at 8
             Hex("48000000 01000000") +            // 282 at 14
             Hex("61 62 63 64 65 66 67 68 00") +   // 305 at 22
             Hex("00") +                           // padding
             Hex("0600") +                         // directory at 32
             Hex("0001 0300 01000000 34120000") +  // 256
             Hex("0101 0400 01000000 78563412") +  // 257
             Hex("0201 0300 03000000 08000000") +  // 258
             Hex("1A01 0500 01000000 0E000000") +  // 282
             Hex("3101 0200 09000000 16000000") +  // 305
             Hex("4101 0300 02000000 0100 0200") + // 321
             Hex("00000000")},
        {"Motorola", motorolaHeader,
         Hex("4D4D 002A 00000020") + Hex("0007 0008 0009") + Hex("00000048 00000001") +
             Hex("61 62 63 64 65 66 67 68 00") + Hex("00") + Hex("0006") +
             Hex("0100 0003 00000001 12340000") + // left in its field
             Hex("0101 0004 00000001 12345678") + Hex("0102 0003 00000003 00000008") +
             Hex("011A 0005 00000001 0000000E") + Hex("0131 0002 00000009 00000016") +
             Hex("0141 0003 00000002 0001 0002") + Hex("00000000")},
    };
    for (const bool onDisk : {true, false})
        for (const auto& [row, header, expected] : rows) {
            SCOPED_TRACE(testing::Message() << row << (onDisk ? ", disk" : ", memory"));
            Target target(onDisk, header);
            EXPECT_EQ(DefineTiffImage(target.file), 0);
            Define(target.file, 0, 305, 2, Hex("61 62 63 64 65 66 67 68 00"), 9);
            Define(target.file, 0, 258, 3, Hex("0700 0800 0900"), 3);
            Define(target.file, 0, 257, 4, Hex("78563412"), 1);
            Define(target.file, 0, 321, 3, Hex("0100 0200"), 2);
            Define(target.file, 0, 256, 3, Hex("3412"), 1);
            Define(target.file, 0, 282, 5, Hex("48000000 01000000"), 1);
            EXPECT_EQ(WriteTiffImageDirectory(target.file, 0), 0u);
            EXPECT_EQ(TiffError(), 0u);
            EXPECT_EQ(target.Written(), expected) << DumpTiff(target.Written());
        }
}

TEST(DirectoryWriter, TypesAreWrittenAsTheyWereDefined)
{
    NoLeaks leaks;
    Target target(true, motorolaHeader);
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
            Target target(onDisk, before);
            for (uint32_t page = 0; page < 2; ++page)
                GetTiffImage(target.file, page);
            for (uint32_t page = 2; page < 4; ++page) {
                EXPECT_EQ(DefinePage(target.file, 11 + page), page);
                EXPECT_EQ(WriteTiffImageDirectory(target.file, page), 0u);
            }
            Bytes after = target.Written();
            const std::string dump = DumpTiff(after);
            for (const char* complaint : {"odd", "after", "outside"})
                EXPECT_EQ(dump.find(complaint), std::string::npos) << dump;
            for (uint32_t page = 0; page < 4; ++page) {
                DropTiffImage(target.file, page);
                EXPECT_EQ(WidthOf(target.file, page), 11 + page) << "reloaded through the handle";
            }
            Target reopened(onDisk, after, T_READ);
            ASSERT_EQ(NumberOfTiffImages(reopened.file, TIFF_ALL_PAGES), 4u);
            for (uint32_t page = 0; page < 4; ++page)
                EXPECT_EQ(WidthOf(reopened.file, page), 11 + page);

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
    Target target(true, builder.Add(TiffPage::Picture(12, 1, 1, 1).Strips({{2}})).Build());
    EXPECT_EQ(DefinePage(target.file, 13), 0u);
    EXPECT_EQ(NumberOfTiffImages(target.file, TIFF_ALL_PAGES), 3u);
    EXPECT_EQ(WriteTiffImageDirectory(target.file, 0), 0u);
    EXPECT_EQ(WidthOf(target.file, 0), 13u);

    Target reopened(true, target.Written(), T_READ);
    ASSERT_EQ(NumberOfTiffImages(reopened.file, TIFF_ALL_PAGES), 3u);
    for (uint32_t page = 0; page < 3; ++page)
        EXPECT_EQ(WidthOf(reopened.file, page), 11 + page);
}

TEST(DirectoryWriter, ANewFileIsBegunOnlyForAPageThatThereIs)
{
    NoLeaks leaks;
    for (const bool onDisk : {true, false}) {
        SCOPED_TRACE(onDisk);
        const Bytes old(200, 0xEE);
        Target target(onDisk, old, T_CREAT);
        EXPECT_EQ(WriteTiffImageDirectory(target.file, 0), 1u);
        EXPECT_EQ(TiffError(), 3u);
        EXPECT_EQ(target.Written(), old);
        DefinePage(target.file, 13);
        DropTiffImage(target.file, 0);
        EXPECT_EQ(WriteTiffImageDirectory(target.file, 0), 1u);
        EXPECT_EQ(TiffError(), 27u);
        EXPECT_EQ(target.Written(), old);

        ModiTiffFileInfo(target.file, nullptr, TIFF_MOTOROLA);
        EXPECT_EQ(DefinePage(target.file, 13), 1u) << "a dropped page keeps its number";
        EXPECT_EQ(WriteTiffImageDirectory(target.file, 1), 0u);
        EXPECT_EQ(DumpTiff(target.Written()), "MM\n"
                                              "directory 8, link 0\n"
                                              "256 SHORT 1: 13\n"
                                              "257 SHORT 1: 1\n"
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
    EXPECT_EQ(WriteTiffImageDirectory(readOnly.file, DefinePage(readOnly.file, 13)), 6u);
    EXPECT_EQ(TiffError(), 6u);
    EXPECT_EQ(readOnly.Written(), file);

    HGLOBAL nowhere = OpenTiffFile("no-such-folder/new.tif", T_CREAT);
    EXPECT_EQ(WriteTiffImageDirectory(nowhere, DefinePage(nowhere, 13)), 6u);
    EXPECT_EQ(TiffError(), 6u);
    CloseTiffFile(nowhere);
}
