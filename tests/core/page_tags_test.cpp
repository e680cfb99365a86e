#include "support/leaks.h"
#include "support/target.h"
#include "support/tiff_builder.h"

#include <cstring>
#include <gtest/gtest.h>

namespace {

// A new file in memory with one page defined.
struct NewPage : Target {
    NewPage()
    {
        EXPECT_EQ(DefineTiffImage(file), 0);
    }
};

uint32_t NumberAt(const Bytes& bytes, size_t index, size_t elementBytes)
{
    uint32_t number = 0;
    std::memcpy(&number, &bytes[index * elementBytes], elementBytes);
    return number;
}

// "256=1728 258=8,8,8 532=0/1,...", in the order of the block.
std::string Tags(HGLOBAL file)
{
    std::string text;
    uint32_t tagCount = 0;
    const Bytes list = TagValues(file, 0, 0, nullptr, &tagCount);
    for (uint32_t index = 0; index < tagCount; ++index) {
        const uint32_t tag = NumberAt(list, index, 4);
        uint32_t type = 0, count = 0;
        const Bytes values = TagValues(file, 0, tag, &type, &count);
        text += (index ? " " : "") + std::to_string(tag);
        for (uint32_t at = 0; at < count; ++at) {
            text += at ? "," : "=";
            if (type == 5)
                text += std::to_string(NumberAt(values, at * 2, 4)) + "/" +
                        std::to_string(NumberAt(values, at * 2 + 1, 4));
            else
                text += std::to_string(NumberAt(values, at, type == 3 ? 2 : 4));
        }
    }
    return text;
}

} // namespace

TEST(PageTags, ATagDefinedAgainMovesToTheEnd)
{
    NoLeaks leaks;
    NewPage page;
    EXPECT_EQ(DefineTiffImageInfo(page.file, 0, 278, 3, 5), 1);
    EXPECT_EQ(DefineTiffImageInfo(page.file, 0, 256, 3, 0x12345678), 1);
    EXPECT_EQ(DefineTiffImageInfo(page.file, 0, 257, 4, 0x12345678), 1);
    EXPECT_EQ(Tags(page.file), "278=5 256=22136 257=305419896");
    const uint16_t more[] = {1, 2, 3};
    EXPECT_EQ(DefineTiffImageInfoBuffer(page.file, 0, 278, more, 3, 3), 1);
    EXPECT_EQ(DefineTiffImageInfo(page.file, 0, 256, 3, 9), 1);
    EXPECT_EQ(Tags(page.file), "257=305419896 278=1,2,3 256=9");
    EXPECT_EQ(TagValues(page.file, 0, 256), Hex("0900")) << "as many bytes as the values have";
    EXPECT_EQ(DefineTiffImageInfo(page.file, 0, 282, 5, 0x0000000200000007), 1);
    EXPECT_EQ(TagValues(page.file, 0, 282), Hex("07000000 02000000"));
}

TEST(PageTags, ABlockGrowsWithItsTags)
{
    NoLeaks leaks;
    NewPage page;
    for (uint32_t tag = 1; tag <= 300; ++tag)
        ASSERT_EQ(DefineTiffImageInfo(page.file, 0, tag, 4, tag * 3), 1);
    const Bytes large(70000, 0x5A);
    EXPECT_EQ(DefineTiffImageInfoBuffer(page.file, 0, 40, large.data(), 1, 70000), 1);
    EXPECT_EQ(DefineTiffImageInfo(page.file, 0, 301, 4, 903), 1);
    EXPECT_EQ(TagValues(page.file, 0, 40), large);
    uint32_t count = 0;
    TagValues(page.file, 0, 0, nullptr, &count);
    EXPECT_EQ(count, 301u);
    for (const uint32_t tag : {1u, 39u, 41u, 300u, 301u})
        EXPECT_EQ(NumberAt(TagValues(page.file, 0, tag), 0, 4), tag * 3);
}

TEST(PageTags, WhatCannotBeDefinedLeavesThePageAlone)
{
    NoLeaks leaks;
    NewPage page;
    DefineTiffImageInfo(page.file, 0, 256, 3, 7);
    uint32_t value = 0;
    static const struct {
        const char* row;
        uint32_t page, count;
        bool hasValues;
        uint32_t error;
    } rows[] = {{"no such page", 1, 1, true, 3},
                {"no values", 0, 1, false, 29},
                {"more bytes than a block can have", 0, 0x20000000, true, 1},
                {"more bytes than can be counted", 0, 0xFFFFFFFF, true, 1}};
    for (const auto& [row, number, count, hasValues, error] : rows) {
        SCOPED_TRACE(row);
        EXPECT_EQ(DefineTiffImageInfoBuffer(page.file, number, 256, hasValues ? &value : nullptr, 5, count),
                  0);
        EXPECT_EQ(TiffError(), error);
        EXPECT_EQ(Tags(page.file), "256=7");
    }
    DropTiffImage(page.file, 0);
    EXPECT_EQ(Refusal(DefineTiffImageInfo(page.file, 0, 256, 3, 7)), 27u);
    EXPECT_EQ(SetTiffImageDPI(page.file, 0, 1), 10u);
    EXPECT_EQ(TiffError(), 10u);
    EXPECT_EQ(DefineTiffImage(nullptr), -1);
    EXPECT_EQ(TiffError(), 34u);
}

TEST(PageTags, AnyNumberOfPagesFitsBehindOneHandle)
{
    NoLeaks leaks;
    HGLOBAL file = OpenTiffInMemory(nullptr, 0, T_CREAT);
    for (int32_t page = 0; page < 300; ++page) {
        ASSERT_EQ(DefineTiffImage(file), page);
        DefineTiffImageInfo(file, static_cast<uint32_t>(page), 256, 4, static_cast<uint32_t>(page) + 1);
    }
    DropTiffImage(file, 7);
    EXPECT_EQ(DefineTiffImage(file), 300) << "a number that was in use is not given again";
    EXPECT_EQ(NumberOfTiffImages(file, TIFF_ALL_PAGES), 301u);
    uint32_t value = 0;
    for (const uint32_t page : {0u, 8u, 128u, 299u}) {
        EXPECT_EQ(GetTiffImageInfo(file, page, 256, &value), 1);
        EXPECT_EQ(value, page + 1);
    }
    EXPECT_EQ(NumberOfTiffImages(file, 0x4000), 300u);
    CloseTiffFile(file);

    // A directory that is its own successor fills the table.
    TiffBuilder builder;
    Bytes endless = builder.Add(TiffPage::Picture(8, 1, 1, 1).Strips({{0}})).Build();
    endless[builder.links[0]] = static_cast<uint8_t>(builder.directories[0]);
    MemoryTiff full(endless);
    EXPECT_EQ(NumberOfTiffImages(full.file, TIFF_ALL_PAGES), TIFF_MAX_PAGES);
    EXPECT_EQ(DefineTiffImage(full.file), -1);
    EXPECT_EQ(TiffError(), 1u);
}

TEST(PageTags, GeneralTagsFollowThePicture)
{
    static const struct {
        const char* row;
        int32_t width, height;
        uint16_t planes, bits;
        uint32_t compression; // 0: not defined
        uint32_t result;
        std::string tags;
    } rows[] = {
        {"fax, no compression", 1728, 2200, 1, 1, 0, 0, "256=1728 257=2200 278=37 258=1"},
        {"fax, Group 4", 1728, 2200, 1, 1, 4, 0, "259=4 256=1728 257=2200 278=2200 258=1"},
        {"Huffman", 1728, 2200, 1, 1, 2, 0, "259=2 256=1728 257=2200 278=2200 258=1"},
        {"Group 3", 1728, 2200, 1, 1, 3, 0, "259=3 256=1728 257=2200 278=2200 258=1"},
        {"LZW", 1728, 2200, 1, 1, 5, 0, "259=5 256=1728 257=2200 278=37 258=1"},
        {"four planes", 1001, 300, 4, 1, 0, 0, "256=1001 257=300 278=16 258=4"},
        {"low", 8, 3, 1, 8, 0, 0, "256=8 257=3 278=3 258=8"},
        {"stored from the top", 8, -3, 1, 8, 0, 0, "256=8 257=3 278=3 258=8"},
        {"rows of 8193 bytes", 8193, 3, 1, 8, 0, 0, "256=8193 257=3 278=1 258=8"},
        {"16 bits", 100, 100, 1, 16, 0, 0, "256=100 257=100 278=40 258=16"},
        {"colour", 100, 100, 1, 24, 0, 0, "256=100 257=100 278=27 258=8,8,8 277=3 284=1"},
        {"too wide for a SHORT", 100000, 70000, 1, 1, 0, 0, "256=34464 257=4464 278=1 258=1"},
        {"as wide as can be", INT32_MAX, 1, 1, 24, 0, 0, "256=65535 257=1 278=1 258=8,8,8 277=3 284=1"},
        {"old JPEG, grey", 20, 10, 1, 8, 6, 0,
         "259=6 256=20 257=10 258=8 277=1 284=1 322=20 323=10 512=1 515=0"},
        {"old JPEG, colour", 20, 10, 1, 24, 6, 0,
         "259=6 256=20 257=10 258=8,8,8 277=3 284=1 322=20 323=10 512=1 515=0 530=2,2 "
         "532=0/1,255/1,128/1,255/1,128/1,255/1"},
        {"no width", 0, 10, 1, 8, 0, 10, ""},
        {"negative width", -1, 10, 1, 8, 0, 10, ""},
        {"32 bits", 10, 10, 1, 32, 0, 16, ""},
        {"2 bits", 10, 10, 2, 1, 0, 16, ""},
    };
    for (const auto& [row, width, height, planes, bits, compression, result, tags] : rows) {
        SCOPED_TRACE(row);
        NoLeaks leaks;
        NewPage page;
        if (compression)
            DefineTiffImageInfo(page.file, 0, 259, 3, compression);
        const TiffPageGeometry geometry = {-1, width, height, 0xFFFFFFFF, planes, bits};
        EXPECT_EQ(DefineGeneralTags(page.file, 0, &geometry), result);
        EXPECT_EQ(Tags(page.file), tags);
    }
    NewPage page;
    const TiffPageGeometry geometry = {0, 8, 8, 1, 1, 1};
    EXPECT_EQ(DefineGeneralTags(page.file, 1, &geometry), 1u);
    EXPECT_EQ(DefineGeneralTags(page.file, 0, nullptr), 29u);
}

TEST(PageTags, SpecialTagsAndResolutionReplaceWhatIsThere)
{
    static const struct {
        uint32_t kind;
        std::string tags;
    } rows[] = {
        {256, "258=16 277=1 284=1 280=0 281=65535"},
        {512, "258=16 277=1 284=1 280=0 281=4095"},
        {768, "284=1 258=8,8,8,8 277=4"},
        {1024, "258=8,8,8 277=3 284=1 530=1,1 532=0/1,255/1,128/1,255/1,128/1,255/1"},
        {0, "258=8,8,8 277=3 284=1"},
        {257, "258=8,8,8 277=3 284=1"},
    };
    for (const auto& [kind, tags] : rows) {
        SCOPED_TRACE(kind);
        NoLeaks leaks;
        NewPage page;
        const TiffPageGeometry geometry = {0, 4, 4, 0, 1, 24};
        DefineGeneralTags(page.file, 0, &geometry);
        EXPECT_EQ(DefineSpecialTags(page.file, 0, kind), 0u);
        EXPECT_EQ(SetTiffImageDPI(page.file, 0, 196u << 16 | 204), 0u);
        EXPECT_EQ(Tags(page.file), "256=4 257=4 278=4 " + tags + " 282=204/1 283=196/1");
        uint32_t dpi = 0;
        EXPECT_EQ(GetTiffImageDPI(page.file, 0, &dpi), 0u);
        EXPECT_EQ(dpi, 196u << 16 | 204);
    }
    NewPage page;
    EXPECT_EQ(DefineSpecialTags(page.file, 1, 256), 1u);
    EXPECT_EQ(DefineSpecialTags(page.file, 1, 0), 0u) << "there was nothing to define";
}
