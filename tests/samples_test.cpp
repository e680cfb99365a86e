// Pages coded by other programs, against the rows that an independent decoder gives.
#include "support/pictures.h"

#include <cstdio>
#include <cstring>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <sstream>

namespace {

const std::string SAMPLES = TIFF_SOURCE_DIR "/samples/";

uint32_t Crc32(const Bytes& bytes)
{
    uint32_t crc = 0xFFFFFFFF;
    for (const uint8_t byte : bytes) {
        crc ^= byte;
        for (int bit = 0; bit < 8; ++bit)
            crc = crc >> 1 ^ (crc & 1 ? 0xEDB88320 : 0);
    }
    return ~crc;
}

Bytes WithoutPadding(const Decoded& decoded, uint64_t rowBits)
{
    Bytes rows;
    for (Bytes row : decoded.rows) {
        if (rowBits % 8)
            row.back() = static_cast<uint8_t>(row.back() & 0xFF << (8 - rowBits % 8));
        rows.insert(rows.end(), row.begin(), row.end());
    }
    return rows;
}

} // namespace

TEST(Samples, RowsAreThoseOfAnIndependentDecoder)
{
    std::ifstream list(SAMPLES + "rows.tsv");
    std::string line;
    std::getline(list, line);
    uint32_t pages = 0;
    while (std::getline(list, line)) {
        SCOPED_TRACE(line);
        std::istringstream fields(line);
        std::string name, crc;
        uint32_t page, width, rows;
        fields >> name >> page >> width >> rows >> crc;
        HGLOBAL file = OpenTiffFile((SAMPLES + name).c_str(), T_READ);
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(TiffError(), 0u);
        const Decoded decoded = DecodePage(file, page);
        BITMAPINFOHEADER header{};
        EXPECT_EQ(GetTiffDimensions(file, page, &header), 0u);
        EXPECT_EQ(header.biWidth, static_cast<int32_t>(width));
        EXPECT_EQ(decoded.error, 0u);
        EXPECT_EQ(decoded.rows.size(), rows);
        EXPECT_EQ(Crc32(WithoutPadding(decoded, uint64_t{width} * header.biBitCount)),
                  std::stoul(crc, nullptr, 16));
        CloseTiffFile(file);
        ++pages;
    }
    EXPECT_GE(pages, 25u);
}

TEST(Samples, ColoursOfJpegPagesAreThoseOfAnIndependentDecoder)
{
    std::ifstream list(SAMPLES + "pixels.tsv");
    std::string line, name, loaded;
    std::getline(list, line);
    Bytes dib;
    uint32_t places = 0;
    for (uint32_t page, column, row; list >> name >> page >> column >> row; ++places) {
        SCOPED_TRACE(testing::Message() << name << ' ' << page << ' ' << column << ' ' << row);
        if (loaded != name + std::to_string(page)) {
            HGLOBAL block = LoadTiffIntoDIB((SAMPLES + name).c_str(), page, 0);
            ASSERT_EQ(TiffError(), 0u);
            dib = Content(block, GlobalSize(block));
            GlobalFree(block);
            loaded = name + std::to_string(page);
        }
        BITMAPINFOHEADER header;
        std::memcpy(&header, dib.data(), 40);
        const uint32_t height = static_cast<uint32_t>(header.biHeight), bytes = header.biBitCount / 8u;
        const uint32_t rowStart =
            40 + header.biClrUsed * 4 + (height - 1 - row) * (header.biSizeImage / height);
        for (uint32_t channel = 3; channel-- > 0;) {
            int level;
            list >> level;
            EXPECT_NEAR(dib[rowStart + column * bytes + (bytes == 3 ? channel : 0)], level, 3);
        }
    }
    EXPECT_GE(places, 300u);
}

TEST(Samples, DamagedPagesGiveWhatCanBeRead)
{
    static const struct {
        const char* name;
        uint32_t error;
    } rows[] = {{"damaged-g3-line.tif", 0}, {"truncated-g4.tif", 5}};
    for (const auto& [name, error] : rows) {
        SCOPED_TRACE(name);
        HGLOBAL dib = LoadTiffIntoDIB((SAMPLES + name).c_str(), 0, 0);
        EXPECT_NE(dib, nullptr);
        EXPECT_EQ(TiffError(), error);
        GlobalFree(dib);
    }
}

TEST(Samples, ACalsFileOfAnotherProgramHasThePixelsOfAnIndependentDecoder)
{
    constexpr uint32_t height = 97, stride = 52;
    HGLOBAL dib = LoadCALSIntoDIB((SAMPLES + "drawing.cal").c_str(), 0);
    ASSERT_NE(dib, nullptr);
    EXPECT_EQ(TiffError(), 0u);
    const Bytes content = Content(dib, 48 + height * stride);
    Decoded decoded;
    for (auto row = content.end(); row - content.begin() > 48; row -= stride)
        decoded.rows.emplace_back(row - stride, row);
    EXPECT_EQ(Crc32(WithoutPadding(decoded, 413)), 0xB8E6C008u);
    GlobalFree(dib);
}
