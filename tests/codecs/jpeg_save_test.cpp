// Saving with selector 209. Other programs judge the streams; here stand the tags, the samples chosen, and
// errors.
#include "support/leaks.h"
#include "support/pictures.h"

#include <gtest/gtest.h>

#include <cstring>
#include <numeric>

namespace {

std::vector<uint32_t> Values(HGLOBAL file, uint32_t tag)
{
    HGLOBAL block = nullptr;
    uint32_t type = 0, count = 0;
    if (!GetTiffImageInfoBuffer(file, 0, tag, &block, &type, &count))
        return {};
    const Bytes bytes = Content(block, GlobalSize(block));
    GlobalFree(block);
    std::vector<uint32_t> values;
    const uint32_t size = type == 3 ? 2 : type == 4 || type == 5 ? 4 : 1;
    for (size_t at = 0; at < count * (type == 5 ? 2u : 1u); ++at) {
        values.push_back(0);
        std::memcpy(&values.back(), &bytes[at * size], size);
    }
    return values;
}

Bytes Packed(DibPicture picture)
{
    picture.colourCount = static_cast<uint32_t>(picture.colours.size());
    return PackedDib(picture);
}

// A saved page, opened again and loaded.
struct Saved {
    uint32_t error = 0;
    HGLOBAL block = nullptr, file = nullptr;
    std::vector<std::vector<int>> rows; // from the top

    explicit Saved(const Bytes& dib, uint32_t fillOrder = 1)
    {
        const Block source(dib);
        block = SaveTiffToMemory(nullptr, source.Get(), 209, fillOrder);
        error = TiffError();
        if (!block)
            return;
        file = OpenTiffInMemory(block, static_cast<uint32_t>(GlobalSize(block)), T_READ);
        GetTiffImage(file, 0);
        HGLOBAL loaded = LoadTiffChainIntoDIB(file, 0);
        EXPECT_EQ(TiffError(), 0u);
        BITMAPINFOHEADER header;
        const Bytes bytes = Content(loaded, GlobalSize(loaded));
        std::memcpy(&header, bytes.data(), 40);
        GlobalFree(loaded);
        const uint32_t height = static_cast<uint32_t>(header.biHeight), stride = header.biSizeImage / height;
        const auto samples = static_cast<uint32_t>(header.biWidth) * header.biBitCount / 8;
        for (uint32_t row = height; row-- > 0;) {
            const auto* from = &bytes[40 + header.biClrUsed * 4 + size_t{row} * stride];
            rows.emplace_back(from, from + samples);
        }
    }
    ~Saved()
    {
        CloseTiffFile(file);
        if (block)
            GlobalFree(block);
    }
};

} // namespace

TEST(JpegSave, SamplesAreWhatTheColoursMean)
{
    const Bytes colourTile = {30, 20, 10, 30, 20, 10, 0, 0, 30, 20, 10, 30, 20, 10, 0, 0};
    const struct {
        const char* row;
        DibPicture picture;
        uint32_t photometric;
        std::vector<int> firstPixel;
    } rows[] = {
        {"black and white", {2, 1, 1, {0x000000, 0xFFFFFF}, {0xFF, 0, 0, 0}}, 1, {255}},
        {"white and black", {2, 1, 1, {0xFFFFFF, 0x000000}, {0xFF, 0, 0, 0}}, 1, {0}},
        {"16 greys", {2, 1, 4, {0x111111, 0x989898}, {0x11, 0, 0, 0}}, 1, {152}},
        {"256 greys", {2, 1, 8, {0x111111, 0x222222, 0x777777}, {2, 2, 0, 0}}, 1, {119}},
        {"a palette", {2, 2, 8, {0x0A141E}, Bytes(8)}, 6, {30, 20, 10}},
        {"two colours", {2, 2, 1, {0x0A141E, 0}, Bytes(8)}, 6, {30, 20, 10}},
        {"true colour", {2, 2, 24, {}, colourTile}, 6, {30, 20, 10}},
    };
    SetTiffJpegQuality(100);
    for (const auto& [row, picture, photometric, firstPixel] : rows) {
        SCOPED_TRACE(row);
        const Saved saved(Packed(picture));
        ASSERT_NE(saved.file, nullptr);
        EXPECT_EQ(Values(saved.file, 262), std::vector{photometric});
        for (size_t sample = 0; sample < firstPixel.size(); ++sample)
            EXPECT_NEAR(saved.rows[0][sample], firstPixel[sample], 2);
    }
    SetTiffJpegQuality(75);
}

TEST(JpegSave, PagesHaveTheTagsThatReadersNeed)
{
    // A fine pattern over an odd size; its mean must stay.
    DibPicture picture{19, 37, 24, {}, {}};
    for (uint32_t at = 0; at < 37 * 60; ++at)
        picture.pixels.push_back(static_cast<uint8_t>(at % 60 < 57 ? at % 60 * 4 + at / 60 % 2 * 9 : 0));
    const Saved saved(Packed(picture), 2);
    ASSERT_NE(saved.file, nullptr);
    using Numbers = std::vector<uint32_t>;
    const struct {
        uint32_t tag;
        Numbers values;
    } rows[] = {{256, {19}}, {257, {37}},   {258, {8, 8, 8}},
                {259, {7}},  {262, {6}},    {266, {1}},
                {277, {3}},  {278, {37}},   {284, {1}},
                {320, {}},   {530, {2, 2}}, {532, {0, 1, 255, 1, 128, 1, 255, 1, 128, 1, 255, 1}}};
    for (const auto& [tag, values] : rows)
        EXPECT_EQ(Values(saved.file, tag), values) << tag;
    EXPECT_EQ(Values(saved.file, 305).back(), 0u);
    const Numbers tables = Values(saved.file, 347);
    ASSERT_EQ(tables.size(), 574u);
    EXPECT_EQ(Numbers(tables.begin() + 7, tables.begin() + 12), (Numbers{8, 6, 6, 7, 6})) << "quality 75";
    double error = 0;
    for (uint32_t row = 0; row < 37; ++row)
        for (uint32_t sample = 0; sample < 57; ++sample)
            error += saved.rows[row][sample] - picture.pixels[(36 - row) * 60 + sample];
    EXPECT_NEAR(error / (37 * 57), 0, 0.5);
}

TEST(JpegSave, StripsEndWhereAStreamCannotGoOn)
{
    const DibPicture tall{1, 65536, 8, {0, 0x101010}, Bytes(65536 * 4, 1)};
    const Saved saved(Packed(tall));
    ASSERT_NE(saved.file, nullptr);
    EXPECT_EQ(Values(saved.file, 257), std::vector{65536u});
    EXPECT_EQ(Values(saved.file, 278), std::vector{65520u});
    EXPECT_EQ(Values(saved.file, 273).size(), 2u);
    ASSERT_EQ(saved.rows.size(), 65536u);
    EXPECT_NEAR(saved.rows[65535][0], 16, 1);
}

TEST(JpegSave, QualityBelongsToTheThread)
{
    EXPECT_EQ(GetTiffJpegQuality(), 75u);
    for (const uint32_t wrong : {0u, 101u, UINT32_MAX})
        EXPECT_EQ(Refusal(SetTiffJpegQuality(wrong)), 29u);
    EXPECT_EQ(GetTiffJpegQuality(), 75u);
    const Bytes dib = Packed({16, 16, 8, {0, 0xFFFFFF}, Bytes(256, 1)});
    for (const auto& [quality, first] :
         std::initializer_list<std::pair<uint32_t, uint32_t>>{{1, 255}, {50, 16}, {100, 1}}) {
        EXPECT_EQ(SetTiffJpegQuality(quality), 1);
        const Saved saved(dib);
        EXPECT_EQ(Values(saved.file, 347)[7], first);
    }
    SetTiffJpegQuality(75);
}

TEST(JpegSave, RequestsThatCannotBeMetLeaveNoFile)
{
    NoLeaks leaks;
    const struct {
        const char* row;
        DibPicture picture;
        uint32_t error;
    } rows[] = {
        {"32 bits", {1, 1, 32, {}, Bytes(4)}, 16},
        {"16 bits", {1, 1, 16, {}, Bytes(4)}, 16},
        {"too wide", {65536, 1, 1, {0, 0xFFFFFF}, Bytes(8192)}, 36},
    };
    for (const auto& [row, picture, error] : rows) {
        SCOPED_TRACE(row);
        const Block dib(Packed(picture));
        const NewFile file;
        EXPECT_EQ(Refusal(SaveDIBInTiffFile(file.Path(), dib.Get(), 209, 0)), error);
        EXPECT_EQ(GetFileAttributesA(file.Path()), INVALID_FILE_ATTRIBUTES);
        EXPECT_EQ(Refusal(SaveTiffToMemory(nullptr, dib.Get(), 209, 1)), error);
        EXPECT_EQ(Refusal(SaveDIBInGammaTiffFile(file.Path(), dib.Get(), 209, 0, 1)), 11u);
    }
}
