#include "support/leaks.h"
#include "support/numbered_pages.h"
#include "support/target.h"
#include "support/tiff_dump.h"

#include <cstring>
#include <gtest/gtest.h>

static constexpr uint16_t byteOrders[] = {TIFF_INTEL, TIFF_MOTOROLA};

TEST(PageCopy, LaysAPageOutFromItsDirectoryOn)
{
    for (const uint16_t order : byteOrders) {
        NoLeaks leaks;
        TempFile source(OnePage(TiffPage::Picture(8, 2, 1, 1)
                                    .Ascii(270, "page ")
                                    .Strips({Hex("0102"), Hex("03")})
                                    .StoredOrder({1, 0})
                                    .ShortOffsets(),
                                order));
        NewFile copy;
        EXPECT_EQ(CopyTiffImageInFile(source.Path(), 0, copy.Path(), T_CREAT), 1);
        EXPECT_EQ(CopyTiffImageInFile(source.Path(), 0, copy.Path(), T_APPEND), 1);
        const Bytes bytes = ReadFileBytes(copy.Path());
        EXPECT_EQ(DumpTiff(bytes), std::string(order == TIFF_INTEL ? "II" : "MM") + R"(
directory 8, link 128
256 SHORT 1: 8
257 SHORT 1: 2
258 SHORT 1: 1
259 SHORT 1: 1
262 SHORT 1: 0
270 ASCII 6 @110: 112 97 103 101 32 0
273 SHORT 2: 124 126
279 LONG 2 @116: 2 1
directory 128, link 0
256 SHORT 1: 8
257 SHORT 1: 2
258 SHORT 1: 1
259 SHORT 1: 1
262 SHORT 1: 0
270 ASCII 6 @230: 112 97 103 101 32 0
273 SHORT 2: 244 246
279 LONG 2 @236: 2 1
)");
        EXPECT_EQ(Bytes(bytes.begin() + 124, bytes.begin() + 128), Hex("01020300"));
        EXPECT_EQ(bytes.size(), 247u);
    }
}

TEST(PageCopy, TakesTilesAndTablesOfOldJpegAlong)
{
    const Bytes quantisation(64, 7);
    const Bytes codes = Hex("00010000000000000000000000000001") + Hex("AABB");
    const struct {
        const char* row;
        TiffPage page;
    } rows[] = {
        {"tiles and tables", TiffPage::Picture(8, 8, 8, 6)
                                 .Data(324, 325, {Hex("0102"), Hex("0304")})
                                 .Data(519, 0, {quantisation, quantisation})
                                 .Data(520, 0, {codes})
                                 .Data(521, 0, {codes})},
        {"strips and a whole stream",
         TiffPage::Picture(8, 8, 8, 6).Strips({Hex("0102")}).Data(513, 514, {Hex("FFD8FFD9")})},
        {"tiles of another compression",
         TiffPage::Picture(8, 8, 1, 1).Data(324, 325, {Hex("0102"), Hex("0304")})},
        {"neither strips nor tiles", TiffPage::Picture(8, 8, 1, 1)},
    };
    for (const auto& [row, page] : rows) {
        SCOPED_TRACE(row);
        NoLeaks leaks;
        for (const uint16_t order : byteOrders) {
            const Bytes original = OnePage(page, order);
            TempFile source(original);
            NewFile copy;
            EXPECT_EQ(CopyTiffImageInFile(source.Path(), 0, copy.Path(), T_CREAT), 1);
            ExpectPages(copy.Path(), original, {0});
        }
    }
}

TEST(PageCopy, KeepsTypesThatPagesInMemoryDoNotHave)
{
    NoLeaks leaks;
    const std::vector<uint32_t> bytes = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    const std::vector<uint32_t> half(bytes.begin(), bytes.begin() + 8), few = {9, 8, 7, 6};
    for (const uint16_t order : byteOrders) {
        const Bytes original = OnePage(Page(1)
                                           .Entry(60001, 12, 2, bytes)
                                           .Entry(60002, 7, 16, bytes)
                                           .Entry(60003, 9, 2, half)
                                           .Entry(60004, 11, 1, few)
                                           .Entry(60005, 8, 2, few)
                                           .Entry(60006, 10, 2, bytes)
                                           .Entry(60007, 2, 0, {}),
                                       order);
        TempFile source(original);
        NewFile copy;
        EXPECT_EQ(CopyTiffImageInFile(source.Path(), 0, copy.Path(), T_CREAT), 1);
        EXPECT_EQ(CopyTiffImageInFile(copy.Path(), 0, copy.Path(), T_APPEND), 1);
        ExpectPages(copy.Path(), original, {0, 0});
        // An impossible value does not affect the others.
        Bytes impossible = original;
        impossible[impossible.size() - 4 - 12 + (order == TIFF_INTEL ? 2 : 3)] = 12;
        std::fill_n(impossible.end() - 12, 8, uint8_t{0x7F});
        TempFile damaged(impossible);
        EXPECT_EQ(CopyTiffImageInFile(damaged.Path(), 0, copy.Path(), T_CREAT), 1);
        EXPECT_NE(DumpTiff(ReadFileBytes(copy.Path())).find("60001 DOUBLE 2"), std::string::npos);
    }
}

TEST(PageCopy, CopiesWhatExistsOfAStripAndWidensOffsets)
{
    NoLeaks leaks;
    // The first strip claims nearly 4 GiB; the offset of the second is still right.
    TiffBuilder builder;
    Bytes original = builder.Add(TiffPage::Picture(8, 2, 1, 1).Strips({Hex("01"), Hex("02")})).Build();
    const uint32_t entry = builder.links[0] - 12; // StripByteCounts, whose values lie elsewhere
    uint32_t values;
    std::memcpy(&values, &original[entry + 8], 4);
    const uint32_t huge = 0xFFFFFFF0;
    std::memcpy(&original[values], &huge, 4);
    TempFile source(original);
    NewFile copy;
    EXPECT_EQ(CopyTiffImageInFile(source.Path(), 0, copy.Path(), T_CREAT), 1);
    const Bytes bytes = ReadFileBytes(copy.Path());
    uint32_t offsets[2];
    std::memcpy(offsets, &bytes[8 + 2 + 7 * 12 + 4], 8);
    EXPECT_EQ(offsets[1], bytes.size() - 1);
    EXPECT_EQ(bytes.back(), 2);

    // Behind a page of 66,000 bytes a SHORT is too small for a strip's offset.
    const Bytes pages = TiffBuilder()
                            .Add(TiffPage::Picture(8, 1, 1, 1).Strips({Hex("07")}).ShortOffsets())
                            .Add(TiffPage::Picture(8, 1, 1, 1).Strips({Bytes(66000, 3)}))
                            .Build();
    TempFile both(pages);
    NewFile turned;
    EXPECT_EQ(CopyTiffImageInFile(both.Path(), 1, turned.Path(), T_CREAT), 1);
    EXPECT_EQ(CopyTiffImageInFile(both.Path(), 0, turned.Path(), T_APPEND), 1);
    ExpectPages(turned.Path(), pages, {1, 0});
    EXPECT_NE(DumpTiff(ReadFileBytes(turned.Path())).find("273 LONG 1: 661"), std::string::npos);
}

TEST(PageCopy, FindsOutHowLongStripsAre)
{
    const auto picture = [] { return TiffPage::Picture(8, 2, 1, 1).Ascii(270, "values behind"); };
    const std::vector<Bytes> strips = {Hex("01020304"), Hex("0506")};
    const struct {
        const char* row;
        TiffPage page;
        bool single;
    } rows[] = {
        {"no byte count", picture().Data(273, 0, {strips[0]}), true},
        {"a byte count of 0", picture().Data(273, 0, {strips[0]}).Long(279, {0}), true},
        {"some are 0", picture().Data(273, 0, strips).Short(279, {0, 2}), false},
        {"all are 0", picture().Data(273, 0, strips).Long(279, {0, 0}), false},
    };
    for (const auto& [row, page, single] : rows)
        for (const uint16_t order : byteOrders) {
            SCOPED_TRACE(row);
            NoLeaks leaks;
            const Bytes wanted = TiffBuilder(order)
                                     .Add(picture().Strips(single ? std::vector<Bytes>{strips[0]} : strips))
                                     .Add(Page(1))
                                     .Build();
            TempFile file(TiffBuilder(order).Add(page).Add(Page(1)).Build()), raw(Hex("FF"));
            EXPECT_NE(AppendCCITTImageFile(raw.Path(), file.Path(), 0, 0), nullptr);
            EXPECT_EQ(ReadFileBytes(raw.Path()), Hex(single ? "FF01020304" : "FF010203040506"));
            EXPECT_EQ(ReorderTiffFile(file.Path()), 1);
            ExpectPages(file.Path(), wanted, {0, 1});
        }
}

TEST(PageCopy, TakesOffsetsAndCountsOfAnyIntegerType)
{
    static constexpr struct {
        uint16_t type;
        uint32_t bytes;
    } rows[] = {{1, 1}, {6, 1}, {8, 2}, {9, 4}, {16, 8}, {17, 8}};
    for (const auto& [type, bytes] : rows)
        for (const uint16_t order : byteOrders) {
            SCOPED_TRACE(type);
            NoLeaks leaks;
            std::vector<uint32_t> offset(bytes, 0), count(bytes, 0);
            const size_t low = order == TIFF_INTEL ? 0 : bytes - 1;
            offset[low] = 8; // where the builder puts data first
            count[low] = 3;
            TempFile file(OnePage(TiffPage::Picture(8, 1, 1, 1)
                                      .Data(60000, 0, {Hex("010203FF")})
                                      .Entry(273, type, 1, offset)
                                      .Entry(279, type, 1, count),
                                  order));
            NewFile copy;
            TempFile raw({});
            EXPECT_EQ(CopyTiffImageInFile(file.Path(), 0, copy.Path(), T_CREAT), 1);
            const Bytes copied = ReadFileBytes(copy.Path());
            EXPECT_NE(PagesOf(copied)[0].find("data 273: 010203\n"), std::string::npos) << DumpTiff(copied);
            EXPECT_NE(AppendCCITTImageFile(raw.Path(), file.Path(), 0, 0), nullptr);
            EXPECT_EQ(ReadFileBytes(raw.Path()), Hex("010203"));
        }
}

TEST(PageEditing, KeepsWhatSubDirectoriesHold)
{
    const std::vector<uint32_t> numbers = {1, 2, 3, 4, 5, 6, 7, 8};
    const auto small = [](uint8_t pixel) { return TiffPage::Picture(8, 1, 1, 1).Strips({{pixel, 9}, {8}}); };
    const TiffPage exif = TiffPage()
                              .Ascii(36864, "0230")
                              .Entry(37500, 7, 8, numbers)
                              .Directories(40965, {TiffPage().Ascii(1, "R98")});
    const TiffPage gps = TiffPage().Entry(2, 10, 1, numbers);
    const auto raw = [&] {
        return Page(2)
            .Directories(330, {small(1), small(2).Data(513, 514, {Hex("FFD8FFD9")}), small(3)}, 13)
            .Directories(34665, {exif})
            .Directories(34853, {gps})
            .Directories(60001, {small(4)});
    };
    for (const uint16_t order : byteOrders) {
        NoLeaks leaks;
        TiffBuilder builder(order);
        Bytes original = builder.Add(raw()).Add(Page(1)).Add(raw().Ascii(65000, "another")).Build();
        // The last picture of the SubIFDs has another one chained to it, the last that was built for the
        // page.
        const uint32_t behind =
            order == TIFF_INTEL ? builder.subDirectories[6] : __builtin_bswap32(builder.subDirectories[6]);
        std::memcpy(&original[builder.subLinks[2]], &behind, 4);
        TempFile file(original);
        EXPECT_EQ(DeleteTiffTagOfImage(file.Path(), 1, 60000), 1);
        ExpectPages(file.Path(), original, {0, 1, 2});
        const size_t size = ReadFileBytes(file.Path()).size();
        EXPECT_EQ(ReorderTiffFile(file.Path()), 1);
        EXPECT_EQ(ReadFileBytes(file.Path()).size(), size) << "grows";
        EXPECT_EQ(CopyTiffImageInFile(file.Path(), 0, file.Path(), T_APPEND), 1);
        EXPECT_EQ(DeleteTiffImage(file.Path(), 0, 0), 1);
        ExpectPages(file.Path(), original, {1, 2, 0});
    }
}

TEST(PageEditing, RefusesSubDirectoriesThatCannotBeSeenWhole)
{
    NoLeaks leaks;
    TiffPage nested = TiffPage().Ascii(36864, "0230");
    for (int depth = 0; depth < 9; ++depth)
        nested = TiffPage().Directories(330, {nested});
    TiffBuilder circle;
    Bytes toItself = circle.Add(Page(0).Long(34665, {0})).Build();
    std::memcpy(&toItself[circle.links[0] - 4], &circle.directories[0], 4);
    TiffBuilder chain;
    Bytes inCircles = chain.Add(Page(0).Directories(330, {TiffPage().Ascii(270, "round and round")})).Build();
    std::memcpy(&inCircles[chain.subLinks[0]], &chain.subDirectories[0], 4);
    TiffBuilder pair;
    Bytes ring =
        pair.Add(Page(0).Directories(330, {TiffPage().Ascii(270, "there"), TiffPage().Ascii(270, "back")}))
            .Build();
    for (const size_t each : {0u, 1u})
        std::memcpy(&ring[pair.subLinks[each]], &pair.subDirectories[each ^ 1], 4);
    const struct {
        const char* row;
        Bytes file;
    } rows[] = {
        {"a ring that two values lead into", ring},
        {"outside", OnePage(Page(0).Long(34665, {60000}))},
        {"its own page", toItself},
        {"a chain that comes back", inCircles},
        {"too deep", OnePage(Page(0).Directories(330, {nested}))},
        {"strips without lengths", OnePage(Page(0).Directories(330, {TiffPage().Long(273, {8, 8})}))},
        {"offsets that are none", OnePage(Page(0).Rational(34853, 8, 1))},
    };
    for (const auto& [row, bytes] : rows) {
        SCOPED_TRACE(row);
        TempFile file(bytes);
        NewFile copy;
        EXPECT_EQ(DeleteTiffTagOfImage(file.Path(), 0, 60000), 0);
        EXPECT_EQ(TiffError(), 6u);
        EXPECT_EQ(ReadFileBytes(file.Path()), bytes);
        // A copy leaves the original, so the branch just ends.
        EXPECT_EQ(CopyTiffImageInFile(file.Path(), 0, copy.Path(), T_CREAT), 1);
        EXPECT_EQ(Complaints(ReadFileBytes(copy.Path())) == "", bytes != ring); // it shares a directory
        EXPECT_EQ(DeleteTiffTagOfImage(copy.Path(), 0, 60000), 1);
    }
}

TEST(PageCopy, FailsBeforeAnythingIsWritten)
{
    const Bytes good = Pages(2);
    const struct {
        const char* row;
        Bytes source;
        uint32_t page, error;
    } rows[] = {
        {"counts differ", OnePage(TiffPage::Picture(8, 2, 1, 1).Long(273, {8, 8}).Long(279, {1})), 0, 9},
        {"no byte counts", OnePage(TiffPage::Picture(8, 2, 1, 1).Long(273, {8, 8})), 0, 10},
        {"nothing tells a length", OnePage(TiffPage::Picture(8, 2, 1, 1).Long(273, {60000})), 0, 9},
        {"nor of a count of 0", OnePage(TiffPage::Picture(8, 2, 1, 1).Long(273, {4}).Long(279, {0})), 0, 9},
        {"beyond 32 bits",
         OnePage(TiffPage::Picture(8, 2, 1, 1).Long(273, {8}).Entry(279, 16, 1, {1, 0, 0, 0, 1, 0, 0, 0})), 0,
         9},
        {"a type without a size",
         OnePage(TiffPage::Picture(8, 2, 1, 1).Entry(273, 99, 1, {8}).Long(279, {1})), 0, 9},
        {"no offsets", OnePage(TiffPage::Picture(8, 2, 1, 1).Long(279, {1})), 0, 10},
        {"offsets that are none", OnePage(TiffPage::Picture(8, 2, 1, 1).Ascii(273, "x").Long(279, {1, 1})), 0,
         9},
        {"no such page", good, 2, 3},
    };
    for (const auto& [row, bytes, page, error] : rows) {
        SCOPED_TRACE(row);
        NoLeaks leaks;
        TempFile source(bytes), destination(good);
        EXPECT_EQ(AppendCCITTImageFile(destination.Path(), source.Path(), page, 0), nullptr);
        EXPECT_EQ(TiffError(), error);
        HGLOBAL from = OpenTiffFile(source.Path(), T_READ), to = OpenTiffFile(destination.Path(), T_APPEND);
        EXPECT_EQ(CopyTiffImage(from, page, to), 0);
        EXPECT_EQ(TiffError(), error);
        EXPECT_EQ(NumberOfTiffImages(to, TIFF_ALL_PAGES), 2u);
        EXPECT_EQ(CopyTiffImageInFile(source.Path(), page, destination.Path(), T_CREAT), 0);
        EXPECT_EQ(ReadFileBytes(destination.Path()), good);
        // The handle works as before.
        GetTiffImage(to, 0);
        GetTiffImage(to, 1);
        TempFile other(good);
        HGLOBAL third = OpenTiffFile(other.Path(), T_READ);
        EXPECT_EQ(CopyTiffImage(third, 1, to), 1);
        CloseTiffFile(third);
        CloseTiffFile(to);
        CloseTiffFile(from);
        ExpectPages(destination.Path(), good, {0, 1, 1});
    }
    TempFile file(good);
    EXPECT_EQ(CopyTiffImageInFile(file.Path(), 0, file.Path(), T_CREAT), 0);
    EXPECT_EQ(TiffError(), 29u) << "a file must not be emptied for its own copy";
    EXPECT_EQ(CopyTiffImageInFile(file.Path(), 0, file.Path(), T_APPEND), 1);
    ExpectPages(file.Path(), good, {0, 1, 0});
}

TEST(PageCopy, CompletesALinkThatWasCutOff)
{
    const Bytes pages = Pages(2);
    for (size_t missing = 1; missing <= 4; ++missing)
        for (const bool saved : {false, true}) {
            SCOPED_TRACE(testing::Message() << missing << (saved ? ", saved" : ", copied"));
            TempFile source(pages), file(Bytes(pages.begin(), pages.end() - static_cast<int>(missing)));
            EXPECT_EQ(saved ? SaveDIBInTiffFile(file.Path(), NewDib().Get(), 201, 0)
                            : CopyTiffImageInFile(source.Path(), 0, file.Path(), T_APPEND),
                      1);
            ExpectPages(file.Path(), pages, {0, 1, saved ? NEW : 0});
        }
}

TEST(PageCopy, WorksFromAndToMemoryAndWithChangedTags)
{
    NoLeaks leaks;
    const Bytes pages = Pages(3);
    Block source(pages);
    HGLOBAL from = OpenTiffInMemory(source.Get(), static_cast<uint32_t>(pages.size()), T_READ);
    HGLOBAL to = OpenTiffInMemory(nullptr, 0, T_CREAT);
    EXPECT_EQ(CopyTiffImage(from, 2, to), 1);
    EXPECT_EQ(CopyTiffImage(from, 0, to), 1);
    EXPECT_TRUE(GetTiffImage(from, 1));
    EXPECT_TRUE(DefineTiffImageInfoBuffer(from, 1, 270, "changed", 2, 8));
    EXPECT_EQ(CopyTiffImage(from, 1, to), 1);
    EXPECT_EQ(IsTiffImageRegistered(from, 1), 0);
    EXPECT_EQ(NumberOfTiffImages(to, TIFF_ALL_PAGES), 3u);
    HGLOBAL block = GetMemoryTiffHandle(to);
    const Bytes copied = Content(block, GlobalSize(block));
    const auto read = PagesOf(copied), old = PagesOf(pages);
    EXPECT_EQ(Complaints(copied), "");
    ASSERT_EQ(read.size(), 3u);
    EXPECT_EQ(read[0], old[2]);
    EXPECT_EQ(read[1], old[0]);
    EXPECT_NE(read[2].find("270 2 8: 99 104"), std::string::npos) << read[2];
    CloseTiffFile(to);
    CloseTiffFile(from);
    GlobalFree(block);
    EXPECT_EQ(CopyTiffImage(nullptr, 0, nullptr), 0);
    EXPECT_EQ(TiffError(), 34u);
}

TEST(PageCopy, CopiesAFileIntoItself)
{
    NoLeaks leaks;
    const Bytes pages = Pages(3);
    TempFile file(pages);
    Block memory(pages);
    HGLOBAL onDisk = OpenTiffFile(file.Path(), T_APPEND);
    HGLOBAL inMemory = OpenTiffInMemory(memory.Get(), static_cast<uint32_t>(pages.size()), T_APPEND);
    for (HGLOBAL handle : {onDisk, inMemory}) {
        for (const uint32_t page : {1u, 0u, 1u})
            EXPECT_EQ(CopyTiffImage(handle, page, handle), 1);
        EXPECT_EQ(CopyTiffImage(handle, 5, handle), 1) << "a page that was copied before";
        EXPECT_EQ(CopyTiffImage(handle, 7, handle), 0);
        EXPECT_EQ(NumberOfTiffImages(handle, TIFF_ALL_PAGES), 7u);
    }
    HGLOBAL block = GetMemoryTiffHandle(inMemory);
    TempFile copied(Content(block, GlobalSize(block)));
    CloseTiffFile(onDisk);
    CloseTiffFile(inMemory);
    ExpectPages(file.Path(), pages, {0, 1, 2, 1, 0, 1, 1});
    ExpectPages(copied.Path(), pages, {0, 1, 2, 1, 0, 1, 1});
}

TEST(PageCopy, CopiesAWholeJpegStreamOnce)
{
    const Bytes stream = Hex("FFD8 010203 FFD9");
    const auto picture = [](uint32_t compression) { return TiffPage::Picture(8, 8, 8, compression, 6); };
    const struct {
        const char* row;
        TiffPage page;
        bool kept;
    } rows[] = {
        {"strips in it", picture(6).Data(513, 514, {stream}).Long(273, {10}).Long(279, {3}), true},
        {"longer than the file", picture(6).Data(513, 0, {stream}).Long(514, {100000}), true},
        {"without a length", picture(6).Data(513, 0, {stream}), true},
        {"in another compression", picture(7).Data(513, 514, {stream}).Long(273, {10}).Long(279, {3}), true},
        {"that is not there", picture(7).Long(513, {60000}).Long(514, {7}), false},
    };
    for (const auto& [row, page, kept] : rows) {
        SCOPED_TRACE(row);
        TempFile file(TiffBuilder().Add(Page(1)).Add(page).Build());
        EXPECT_EQ(ReorderTiffFile(file.Path()), 1);
        const Bytes once = ReadFileBytes(file.Path());
        EXPECT_EQ(DumpTiff(once).find("513 LONG 1") != std::string::npos, kept);
        EXPECT_EQ(std::search(once.begin(), once.end(), stream.begin(), stream.end()) != once.end(), kept);
        EXPECT_EQ(ReorderTiffFile(file.Path()), 1);
        EXPECT_EQ(ReadFileBytes(file.Path()), once) << "grows";
    }
}

TEST(PageCopy, DoesNotCompareByteOrders)
{
    // Deliberate: the link is written in the source's order. Merging whole files checks the orders first.
    TempFile intel(Pages(2)), motorola(Pages(1, TIFF_MOTOROLA));
    EXPECT_EQ(MergeTiffFiles(intel.Path(), motorola.Path(), nullptr, 0), 0);
    EXPECT_EQ(TiffError(), 35u);
    EXPECT_EQ(ReadFileBytes(intel.Path()), Pages(2));
    EXPECT_EQ(CopyTiffImageInFile(motorola.Path(), 0, intel.Path(), T_APPEND), 1);
    EXPECT_EQ(GetNumberOfImagesInTiffFile(intel.Path()), 2u);
    EXPECT_EQ(TiffError(), 6u);
}

// What is copied collects in a buffer. A page's link may lie before, behind and across its end.
TEST(PageCopy, LinksAcrossTheEndOfTheBufferAreWhole)
{
    constexpr uint32_t BUFFER_BYTES = 256 * 1024;
    for (uint32_t bytes = BUFFER_BYTES - 500; bytes < BUFFER_BYTES; bytes += 2) {
        SCOPED_TRACE(bytes);
        const Bytes pages = TiffBuilder()
                                .Add(TiffPage::Picture(8, 1, 1, 1).Strips({Bytes(bytes)}))
                                .Add(Page(1))
                                .Add(Page(2))
                                .Build();
        TempFile source(pages);
        NewFile copy;
        EXPECT_EQ(MergeTiffFiles(copy.Path(), source.Path(), nullptr, 0), 1);
        EXPECT_EQ(GetNumberOfImagesInTiffFile(copy.Path()), 3u);
        EXPECT_EQ(TiffError(), 0u);
    }
}

// A type that pages in memory do not have is put back where nobody has changed the values.
TEST(PageCopy, ChangedValuesStayChanged)
{
    const std::vector<uint32_t> values = {1, 2, 3, 4, 5, 6, 7, 8};
    const Target source(false, OnePage(Page(0).Entry(60001, 7, 8, values).Entry(60002, 7, 8, values))), copy;
    LoadPages(source.file);
    EXPECT_EQ(DefineTiffImageInfoBuffer(source.file, 0, 60001, "ABCDEFGH", 1, 8), 1);
    EXPECT_EQ(CopyTiffImage(source.file, 0, copy.file), 1);
    const std::string page = PagesOf(copy.Written()).at(0);
    EXPECT_NE(page.find("60001 1 8: 65 66 67 68"), std::string::npos) << page;
    EXPECT_NE(page.find("60002 7 8: 1 2 3 4"), std::string::npos) << page;
}
