#include "support/leaks.h"
#include "support/numbered_pages.h"
#include "support/tiff_dump.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>

namespace {

constexpr uint16_t byteOrders[] = {TIFF_INTEL, TIFF_MOTOROLA};

// Deletes the files at the end of the scope.
struct NamedFiles {
    std::vector<std::string> paths;
    ~NamedFiles()
    {
        for (const std::string& path : paths)
            DeleteFileA(path.c_str());
    }
};

// Counts its calls and stops at one.
struct Listener {
    uint32_t stopAt = 0;
    uint32_t calls = 0, total = 0;

    static int32_t Hear(uint32_t total, uint32_t done, uint64_t user)
    {
        auto& listener = *reinterpret_cast<Listener*>(user);
        EXPECT_EQ(done, ++listener.calls);
        listener.total = total;
        return done != listener.stopAt;
    }
    uint64_t User()
    {
        return reinterpret_cast<uintptr_t>(this);
    }
};

} // namespace

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
        const std::string path = file.Path();
        const NamedFiles unfinished{{path.substr(0, path.rfind('.')) + ".~~~"}};
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

TEST(PageEditing, EveryOperationLeavesThePagesItShould)
{
    const auto insert = [](int32_t position, int32_t inPlace, int32_t replace) {
        return [=](const char* path) {
            return InsertTiffImage(path, NewDib().Get(), 201, 0, 1, position, inPlace, replace);
        };
    };
    const auto erase = [](int32_t page, int32_t inPlace) {
        return [=](const char* path) { return DeleteTiffImage(path, page, inPlace); };
    };
    const struct {
        const char* row;
        std::function<int32_t(const char*)> edit;
        Order order;
        bool intelOnly = false;
    } rows[] = {
        {"delete the first", erase(0, 0), {1, 2, 3}},
        {"delete from the middle", erase(2, 0), {0, 1, 3}},
        {"delete the last by -1", erase(-1, 0), {0, 1, 2}},
        {"delete the first in place", erase(0, 1), {1, 2, 3}},
        {"delete from the middle in place", erase(1, 1), {0, 2, 3}},
        {"delete the last in place", erase(-1, 1), {0, 1, 2}},
        {"reorder", ReorderTiffFile, {0, 1, 2, 3}},
        {"insert at the front", insert(0, 0, 0), {NEW, 0, 1, 2, 3}, true},
        {"insert in the middle", insert(2, 0, 0), {0, 1, NEW, 2, 3}, true},
        {"insert behind the end", insert(4, 0, 0), {0, 1, 2, 3, NEW}, true},
        {"replace the first", insert(0, 0, 1), {NEW, 1, 2, 3}, true},
        {"replace the last", insert(3, 0, 1), {0, 1, 2, NEW}, true},
        {"replace behind the end", insert(9, 0, 1), {0, 1, 2, 3, NEW}, true},
        {"insert at the front in place", insert(0, 1, 0), {NEW, 0, 1, 2, 3}, true},
        {"insert in the middle in place", insert(2, 1, 0), {0, 1, NEW, 2, 3}, true},
        {"insert before the last in place", insert(3, 1, 0), {0, 1, 2, NEW, 3}, true},
        {"insert behind the end in place", insert(4, 1, 0), {0, 1, 2, 3, NEW}, true},
        {"replace the first in place", insert(0, 1, 1), {NEW, 1, 2, 3}, true},
        {"replace the last in place", insert(3, 1, 1), {0, 1, 2, NEW}, true},
    };
    for (const uint16_t byteOrder : byteOrders) {
        const Bytes original = Pages(4, byteOrder);
        for (const auto& [row, edit, order, intelOnly] : rows) {
            SCOPED_TRACE(testing::Message() << row << (byteOrder == TIFF_INTEL ? ", II" : ", MM"));
            NoLeaks leaks;
            TempFile file(original);
            const bool refused = intelOnly && byteOrder == TIFF_MOTOROLA;
            EXPECT_EQ(edit(file.Path()), refused ? 0 : 1);
            if (refused) {
                EXPECT_EQ(TiffError(), 35u);
                EXPECT_EQ(ReadFileBytes(file.Path()), original);
            } else {
                ExpectPages(file.Path(), original, order);
            }
        }
    }
}

TEST(PageEditing, RefusesARing)
{
    NoLeaks leaks;
    TiffBuilder builder;
    Bytes ring = builder.Add(Page(0)).Add(Page(1)).Build();
    std::memcpy(&ring[builder.links[1]], &builder.directories[0], 4);
    TempFile file(ring);
    NewFile other;
    const std::function<int32_t()> edits[] = {
        [&] { return DeleteTiffImage(file.Path(), 1, 0); },
        [&] { return DeleteTiffImage(file.Path(), 1, 1); },
        [&] { return InsertTiffImage(file.Path(), NewDib().Get(), 201, 0, 1, 0, 0, 0); },
        [&] { return ReorderTiffFile(file.Path()); },
        [&] { return MergeTiffFiles(other.Path(), file.Path(), nullptr, 0); },
        [&] { return MergeTiffFiles(file.Path(), file.Path(), nullptr, 0); },
        [&] { return CopyTiffImageInFile(file.Path(), 0, file.Path(), T_APPEND); },
        [&] { return SplitTiffFile(file.Path(), other.Path(), 1, nullptr, 0); },
        [&] { return DeleteTiffTagOfImage(file.Path(), 0, 270); },
    };
    for (const auto& edit : edits) {
        EXPECT_EQ(edit(), 0);
        EXPECT_EQ(TiffError(), 6u);
        EXPECT_EQ(ReadFileBytes(file.Path()), ring);
        EXPECT_FALSE(Exists(other.Path()));
    }
    EXPECT_EQ(CopyTiffImageInFile(file.Path(), 5, other.Path(), T_CREAT), 1);
    EXPECT_EQ(PagesOf(ReadFileBytes(other.Path()))[0], PagesOf(Pages(2))[1]);
}

TEST(PageEditing, ReorderRemovesWhatNoPageRefersTo)
{
    const Bytes original = Pages(3);
    TempFile file(original), twice(original);
    EXPECT_EQ(DeleteTiffImage(file.Path(), 1, 1), 1);
    EXPECT_EQ(ReadFileBytes(file.Path()).size(), original.size());
    EXPECT_EQ(ReorderTiffFile(file.Path()), 1);
    EXPECT_LT(ReadFileBytes(file.Path()).size(), original.size());
    ExpectPages(file.Path(), original, {0, 2});
    // Deleting pages one by one gives the same result as one rewrite.
    EXPECT_EQ(DeleteTiffImage(twice.Path(), 1, 0), 1);
    EXPECT_EQ(ReadFileBytes(twice.Path()), ReadFileBytes(file.Path()));
}

TEST(PageEditing, FilesOfOnePageAndPagesThatAreNotThere)
{
    NoLeaks leaks;
    const Bytes one = Pages(1);
    TempFile file(one);
    EXPECT_EQ(ReorderTiffFile(file.Path()), 1);
    EXPECT_EQ(ReadFileBytes(file.Path()), one);
    for (const int32_t page : {-2, 1}) {
        EXPECT_EQ(DeleteTiffImage(file.Path(), page, 0), 0);
        EXPECT_EQ(TiffError(), 3u);
    }
    EXPECT_EQ(InsertTiffImage(file.Path(), NewDib().Get(), 201, 0, 1, -1, 0, 0), 0);
    EXPECT_EQ(TiffError(), 3u);
    EXPECT_EQ(InsertTiffImage(file.Path(), NewDib().Get(), 99, 0, 1, 0, 0, 0), 0);
    EXPECT_EQ(TiffError(), 11u);
    EXPECT_EQ(ReadFileBytes(file.Path()), one);
    EXPECT_EQ(DeleteTiffImage(file.Path(), 0, 1), 1);
    EXPECT_FALSE(Exists(file.Path()));
    EXPECT_EQ(DeleteTiffImage(file.Path(), 0, 0), 0);
    EXPECT_EQ(TiffError(), 6u);
    EXPECT_EQ(InsertTiffImage(file.Path(), NewDib().Get(), 201, 0, 1, 5, 1, 1), 1);
    ExpectPages(file.Path(), one, {NEW});
}

TEST(MovingPages, MergeAppendsAndKeepsWhatIsAppended)
{
    NoLeaks leaks;
    const Bytes pages = Pages(4);
    TempFile source(pages);
    NewFile made;
    Listener all, stopping{.stopAt = 2};
    EXPECT_EQ(MergeTiffFiles(made.Path(), source.Path(), Listener::Hear, all.User()), 1);
    EXPECT_EQ(all.calls, 4u);
    EXPECT_EQ(all.total, 4u);
    EXPECT_EQ(MergeTiffFiles(made.Path(), source.Path(), Listener::Hear, stopping.User()), 0);
    ExpectPages(made.Path(), pages, {0, 1, 2, 3, 0, 1});
    EXPECT_EQ(MergeTiffFiles(source.Path(), source.Path(), nullptr, 0), 1) << "a file to itself";
    ExpectPages(source.Path(), pages, {0, 1, 2, 3, 0, 1, 2, 3});
    EXPECT_EQ(MergeTiffFiles(nullptr, source.Path(), nullptr, 0), 0);
    EXPECT_EQ(TiffError(), 29u);
}

TEST(MovingPages, SplitMovesTheEndOfAFile)
{
    const Bytes pages = Pages(4);
    for (const int32_t first : {1, 3, 4, 5, -1}) {
        SCOPED_TRACE(first);
        NoLeaks leaks;
        TempFile source(pages);
        NewFile moved;
        Listener listener;
        const int32_t result =
            SplitTiffFile(source.Path(), moved.Path(), first, Listener::Hear, listener.User());
        EXPECT_EQ(result, first >= 0 && first <= 4 ? 1 : 0);
        if (first < 1 || first > 3) {
            EXPECT_EQ(ReadFileBytes(source.Path()), pages);
            EXPECT_FALSE(Exists(moved.Path()));
            continue;
        }
        EXPECT_EQ(listener.calls, static_cast<uint32_t>(4 - first));
        EXPECT_EQ(listener.total, listener.calls);
        Order kept, gone;
        for (int page = 0; page < 4; ++page)
            (page < first ? kept : gone).push_back(page);
        ExpectPages(source.Path(), pages, kept);
        ExpectPages(moved.Path(), pages, gone);
    }
    TempFile source(pages), taken(pages);
    NewFile moved;
    Listener listener{.stopAt = 2};
    EXPECT_EQ(SplitTiffFile(source.Path(), moved.Path(), 1, Listener::Hear, listener.User()), 0);
    EXPECT_FALSE(Exists(moved.Path()));
    EXPECT_EQ(SplitTiffFile(source.Path(), source.Path(), 1, nullptr, 0), 0);
    EXPECT_EQ(TiffError(), 29u);
    EXPECT_EQ(SplitTiffFile(source.Path(), taken.Path(), 0, nullptr, 0), 0) << "the name is taken";
    EXPECT_EQ(ReadFileBytes(source.Path()), pages);
    EXPECT_EQ(SplitTiffFile(source.Path(), moved.Path(), 0, nullptr, 0), 1);
    EXPECT_EQ(ReadFileBytes(moved.Path()), pages);
    EXPECT_FALSE(Exists(source.Path()));

    // No page is moved out of a file with a broken chain, but the whole file can be moved.
    Bytes broken = pages;
    broken.resize(broken.size() - 60);
    TempFile damaged(broken);
    NewFile whole;
    EXPECT_EQ(SplitTiffFile(damaged.Path(), whole.Path(), 1, nullptr, 0), 0);
    EXPECT_EQ(TiffError(), 6u);
    EXPECT_EQ(ReadFileBytes(damaged.Path()), broken);
    EXPECT_EQ(SplitTiffFile(damaged.Path(), whole.Path(), 0, nullptr, 0), 1);
    EXPECT_EQ(ReadFileBytes(whole.Path()), broken);
}

TEST(MovingPages, CutMovesTheBeginningIntoSinglePages)
{
    const Bytes pages = Pages(12);
    const struct {
        const char* row;
        int32_t count;
        uint32_t stopAt;
        int32_t result;
        int written, deleted;
    } rows[] = {
        {"some", 10, 0, 1, 10, 10},
        {"all", 12, 0, 1, 12, 12},
        {"stopped while copying", 10, 3, 0, 3, 0},
        {"stopped while deleting", 10, 13, 0, 10, 3},
        {"stopped behind the last", 10, 20, 0, 10, 10},
        {"none", 0, 0, 0, 0, 0},
        {"too many", 13, 0, 0, 0, 0},
    };
    for (const auto& [row, count, stopAt, result, written, deleted] : rows) {
        SCOPED_TRACE(row);
        NoLeaks leaks;
        TempFile source(pages);
        const NewFile base;
        NamedFiles outputs;
        for (int number = 1; number <= 12; ++number) {
            char ending[16];
            std::snprintf(ending, sizeof(ending), "%04d.tif", number);
            outputs.paths.push_back(std::string(base.Path()) + ending);
        }
        Listener listener{.stopAt = stopAt};
        EXPECT_EQ(CutTiffFile(source.Path(), base.Path(), count, Listener::Hear, listener.User()), result);
        for (int number = 0; number < written; ++number)
            ExpectPages(outputs.paths[static_cast<size_t>(number)].c_str(), pages, {number});
        EXPECT_EQ(Exists(outputs.paths.back()), written == 12);
        if (result) {
            EXPECT_EQ(listener.calls, 2u * static_cast<uint32_t>(count));
            EXPECT_EQ(listener.total, listener.calls);
        }
        Order rest;
        for (int page = deleted; page < 12; ++page)
            rest.push_back(page);
        EXPECT_EQ(Exists(source.Path()), !rest.empty());
        if (!rest.empty())
            ExpectPages(source.Path(), pages, rest);
    }
}

TEST(RawAppend, WritesTheStripsAsTheyAre)
{
    NoLeaks leaks;
    const Bytes pages = Pages(3);
    TempFile source(pages), raw(Hex("FFFEFD"));
    EXPECT_STREQ(AppendCCITTImageFile(raw.Path(), source.Path(), 2, 0), raw.Path());
    EXPECT_EQ(ReadFileBytes(raw.Path()), Hex("FFFEFD 020202 55"));
    EXPECT_NE(AppendCCITTImageFile(raw.Path(), source.Path(), 0, -2), nullptr);
    EXPECT_EQ(ReadFileBytes(raw.Path()), Hex("FFFEFD 0202 00 55"));
    const Bytes before = ReadFileBytes(raw.Path());
    TempFile without(OnePage(TiffPage::Picture(8, 1, 1, 1)));
    NewFile missing;
    EXPECT_EQ(AppendCCITTImageFile(missing.Path(), source.Path(), 0, 0), nullptr);
    EXPECT_FALSE(Exists(missing.Path()));
    EXPECT_EQ(AppendCCITTImageFile(raw.Path(), source.Path(), 3, 0), nullptr);
    EXPECT_EQ(AppendCCITTImageFile(raw.Path(), without.Path(), 0, 0), nullptr);
    EXPECT_EQ(AppendCCITTImageFile(raw.Path(), source.Path(), 0, -8), nullptr);
    EXPECT_EQ(AppendCCITTImageFile(source.Path(), source.Path(), 0, 0), nullptr);
    EXPECT_EQ(ReadFileBytes(raw.Path()), before);
    EXPECT_EQ(ReadFileBytes(source.Path()), pages);
}

TEST(PageNumbers, SetTheTotalWhereverThereIsOne)
{
    NoLeaks leaks;
    TiffPage many = Page(7);
    for (uint32_t tag = 60000; tag < 60040; ++tag)
        many.Long(static_cast<uint16_t>(tag), {tag});
    const Bytes pages =
        TiffBuilder().Add(Page(3)).Add(TiffPage::Picture(8, 1, 1, 1).Strips({Hex("01")})).Add(many).Build();
    Bytes wanted = pages;
    size_t changed = 0;
    for (size_t at = 0; at + 12 <= wanted.size(); at += 2)
        if (std::memcmp(&wanted[at], "\x29\x01\x03\x00\x02\x00\x00\x00", 8) == 0) {
            wanted[at + 10] = 0xCD;
            wanted[at + 11] = 0xAB;
            ++changed;
        }
    ASSERT_EQ(changed, 2u);
    TempFile file(pages);
    EXPECT_EQ(UpdatePageNumbers(file.Path(), 0x1ABCD), 1);
    EXPECT_EQ(ReadFileBytes(file.Path()), wanted);

    MemoryTiff memory(pages);
    EXPECT_EQ(UpdatePageNumbersInMemory(memory.file, 0xABCD), 1);
    EXPECT_EQ(Content(GetMemoryTiffHandle(memory.file), pages.size()), wanted);
    EXPECT_EQ(UpdatePageNumbersInMemory(nullptr, 1), 0);

    // A chain that loops, or leads out of the file, comes to an end.
    TiffBuilder builder;
    Bytes circle = builder.Add(Page(0)).Add(Page(1)).Build();
    std::memcpy(&circle[builder.links[1]], &builder.directories[0], 4);
    Bytes outside = circle;
    outside[builder.links[1]] = 0xF0;
    outside[builder.links[1] + 2] = 0x01;
    for (const Bytes& bad : {circle, outside, Pages(2, TIFF_MOTOROLA)}) {
        TempFile broken(bad);
        EXPECT_EQ(UpdatePageNumbers(broken.Path(), 5), 0);
        MemoryTiff held(bad);
        EXPECT_EQ(UpdatePageNumbersInMemory(held.file, 5), 0);
    }
}

TEST(TagEditing, ChangesOnePageAndKeepsTheRest)
{
    for (const uint16_t order : byteOrders) {
        NoLeaks leaks;
        const Bytes pages = Pages(3, order);
        TempFile file(pages);
        const uint16_t totals[] = {1, 30};
        EXPECT_EQ(AddTiffTagToImage(file.Path(), 1, 297, 3, totals, 2), 1);
        EXPECT_EQ(AddTiffTagToImage(file.Path(), 1, 65000, 7, "abcdefg", 7), 1);
        EXPECT_EQ(DeleteTiffTagOfImage(file.Path(), 2, 270), 1);
        EXPECT_EQ(DeleteTiffTagOfImage(file.Path(), 0, 270), 1);
        EXPECT_EQ(DeleteTiffTagOfImage(file.Path(), 0, 12345), 1);
        auto wanted = PagesOf(pages);
        wanted[1].replace(wanted[1].find("297 3 2: 1 9"), 12, "297 3 2: 1 30");
        wanted[1].insert(wanted[1].find("data 273"), "65000 7 7: 97 98 99 100 101 102 103\n");
        for (const size_t page : {0u, 2u}) {
            const size_t at = wanted[page].find("270 ");
            wanted[page].erase(at, wanted[page].find('\n', at) + 1 - at);
        }
        const Bytes edited = ReadFileBytes(file.Path());
        EXPECT_EQ(PagesOf(edited), wanted);
        EXPECT_EQ(Complaints(edited), "");
        EXPECT_EQ(edited[0], pages[0]);
    }
}

TEST(TagEditing, WorksBesideTheFileAndSaysWhatIsWrong)
{
    NoLeaks leaks;
    const Bytes pages = Pages(2);
    TempFile file(pages);
    std::string beside = file.Path();
    beside = beside.substr(0, beside.rfind('.')) + ".~~~";
    EXPECT_EQ(AddTiffTagToImage(file.Path(), 2, 270, 2, "x", 2), 0);
    EXPECT_EQ(TiffError(), 3u);
    EXPECT_EQ(DeleteTiffTagOfImage(file.Path(), -1, 270), 0);
    EXPECT_EQ(TiffError(), 3u);
    EXPECT_EQ(DeleteTiffTagOfImage(file.Path(), 0, 65536 + 270), 0);
    EXPECT_EQ(TiffError(), 29u);
    EXPECT_EQ(AddTiffTagToImage(file.Path(), 0, 65536 + 270, 2, "x", 2), 0);
    EXPECT_EQ(TiffError(), 29u);
    HGLOBAL made = OpenTiffFile(file.Path(), T_CREAT);
    EXPECT_EQ(DefineTiffImage(made), 0);
    EXPECT_EQ(DefineTiffImageInfo(made, 0, 65536 + 256, 3, 1), 0);
    EXPECT_EQ(TiffError(), 29u);
    CloseTiffFile(made);
    EXPECT_FALSE(Exists(beside));
    EXPECT_EQ(AddTiffTagToImage(file.Path(), 1, 270, 2, nullptr, 2), 0);
    EXPECT_EQ(TiffError(), 29u);
    EXPECT_TRUE(Exists(beside)) << "what was written stays";
    EXPECT_EQ(ReadFileBytes(file.Path()), pages);
    EXPECT_EQ(DeleteTiffTagOfImage(file.Path(), 0, 12345), 1) << "a file of the name is overwritten";
    EXPECT_FALSE(Exists(beside));
    ExpectPages(file.Path(), pages, {0, 1});

    ASSERT_TRUE(MoveFileA(file.Path(), beside.c_str()));
    EXPECT_EQ(DeleteTiffTagOfImage(beside.c_str(), 0, 270), 0) << "the file is its own temporary one";
    EXPECT_EQ(TiffError(), 29u);
    ExpectPages(beside.c_str(), pages, {0, 1});
    ASSERT_TRUE(MoveFileA(beside.c_str(), file.Path()));

    NewFile missing;
    EXPECT_EQ(DeleteTiffTagOfImage(missing.Path(), 0, 270), 0);
    EXPECT_EQ(TiffError(), 6u);
    TempFile text(Hex("6869"));
    EXPECT_EQ(DeleteTiffTagOfImage(text.Path(), 0, 270), 0);
    EXPECT_EQ(TiffError(), 1u);
}
