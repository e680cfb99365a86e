// The tool's segments and documents: fields and records checked by a walker of their own, and files of
// other makers.
#include "standin/standin.h"
#include "support/drawing.h"
#include "support/open_file.h"
#include "support/pictures.h"
#include "tools/wrapped_picture.h"

using namespace tifftool;

namespace {

const Bytes start = Hex("7000 9101FF 940900 0BB8 0BB8 0008 0002 95020101 960101 970100");
const Bytes records = Hex("FE920002 311F FE920003 001001"), tail = Hex("93007100");
const Bytes code = Hex("311F 001001");

Bytes Field(const Bytes& content, const char* introducer = "D3EEFB 000000")
{
    const size_t length = content.size() + 8;
    return Bytes{0x5A, static_cast<uint8_t>(length >> 8), static_cast<uint8_t>(length)} + Hex(introducer) +
           content;
}

// The picture data of a document; empty unless it is fields from end to end.
Bytes PictureData(const Bytes& file)
{
    Bytes data;
    for (size_t at = 0; at < file.size();) {
        if (file.size() - at < 9 || file[at] != 0x5A)
            return {};
        const size_t length = size_t{file[at + 1]} << 8 | file[at + 2];
        const bool isPlain = Part(file, at + 6, 3) == Bytes(3);
        if (length < 8 || length > 32767 || length >= file.size() - at || !isPlain)
            return {};
        if (Part(file, at + 3, 3) == Hex("D3EEFB"))
            data = data + Part(file, at + 9, length - 8);
        at += length + 1;
    }
    return data;
}

} // namespace

TEST(WrappedPicture, DocumentsAndSegmentsHoldTheCodeOfThePage)
{
    standin::LeakCheck leaks;
    const struct {
        uint32_t width, rows, times;
    } pages[] = {{413, 9, 700}, {2480, 1700, 3}, {2480, 3300, 1}};
    for (const auto& [width, rows, times] : pages)
        for (uint32_t seed = 0; seed < times; ++seed) {
            SCOPED_TRACE(testing::Message() << width << " wide, seed " << seed);
            Drawing drawn(width, seed), again(width, seed);
            Bytes pixels;
            for (uint32_t row = 0; row < rows; ++row)
                pixels = std::move(pixels) + drawn.NextRow();
            const auto rowBytes = static_cast<ptrdiff_t>((width + 7) / 8);
            const BilevelRows source = {pixels.data(), rowBytes, width, rows, 0, {11811, 0}};
            const Bytes expected = CodeOf(again, rows, 4);
            for (const Wrapping wrapping : {Wrapping::Document, Wrapping::Segment}) {
                OpenedFile file({});
                ASSERT_EQ(WrapRows(file.handle, wrapping, source), "");
                PictureCode read{};
                ASSERT_EQ(ReadCode(file.handle, wrapping, read), "");
                ASSERT_TRUE(read.isWhole && read.bytes == expected);
                const bool isDocument = wrapping == Wrapping::Document;
                TiffIocaDescription page{};
                mSeek(file.Stream(), 0, 0);
                ASSERT_TRUE((isDocument ? ReadMODCAHeader : ReadIOCAHeader)(file.handle, &page));
                ASSERT_EQ(page.horizontalResolution, 3000);
                ASSERT_EQ(page.verticalResolution, 960);
                const size_t most = isDocument ? 32729 : 65520;
                ASSERT_TRUE(page.dataLength == std::min(expected.size(), most) || isDocument);
                ASSERT_TRUE(!isDocument || PictureData(file.Content()).size() > expected.size() + 33);
            }
        }
}

TEST(WrappedPicture, RowsComeFromTheTopWithBlackAsOne)
{
    const DibPicture page = {8, 2, 1, {0xFFFFFF, 0}, Hex("18000000 FF000000")};
    DibPicture topDown = page, inverted = page, manyColours = page, oneColour = page;
    topDown.topDown = true;
    inverted.colours = {0x101010, 0x808080};
    manyColours.colours = {0xFFFFFF, 0, 0, 0};
    manyColours.colourCount = 4;
    oneColour.colours = {0};
    oneColour.colourCount = 1;
    const struct {
        const char* row;
        Bytes dib, rows;
        int32_t dotsPerMetre;
    } rows[] = {
        {"from the bottom", PackedDib(page), Hex("FF18"), 7874},
        {"from the top", PackedDib(topDown), Hex("18FF"), 7874},
        {"the darker colour first", PackedDib(inverted), Hex("00E7"), 7874},
        {"four colours", PackedDib(manyColours), Hex("FF18"), 7874},
        {"one colour", PackedDib(oneColour), Hex("FF18"), 7874},
        {"a core header", Hex("0C000000 0800 0200 0100 0100 000000 FFFFFF 18000000 FF000000"), Hex("00E7"),
         0},
    };
    for (const auto& [row, dib, expected, dotsPerMetre] : rows) {
        SCOPED_TRACE(row);
        const BilevelRows read = RowsOf(dib);
        const auto first = static_cast<uint8_t>(read.first[0] ^ read.flip),
                   second = static_cast<uint8_t>(read.first[read.step] ^ read.flip);
        EXPECT_EQ((Bytes{first, second}), expected);
        EXPECT_EQ(read.dotsPerMetre[0], dotsPerMetre);
        EXPECT_TRUE(read.width == 8 && read.height == 2);
    }
}

TEST(WrappedPicture, FilesOfOtherMakersAreReadAsFarAsTheyGo)
{
    standin::LeakCheck leaks;
    const Bytes data = start + records + tail;
    Bytes pieces, plain;
    for (size_t at = 30; at < data.size(); ++at)
        pieces = pieces + Field(Part(data, at, 1));
    for (const Bytes& field : {Field(start), Field(records), Field(tail)})
        plain = plain + Part(field, 1, field.size());
    Bytes otherCode = data, twoBits = data;
    otherCode[18] = 0x83;
    twoBits[18] = 3;
    const Bytes endImage = Field({}, "D3A9FB 000000");
    const struct {
        const char* row;
        Bytes file;
        bool readable, isWhole;
        Bytes bytes;
    } rows[] = {
        {"one field behind others", Field(Bytes(9000, 0x70), "D3A66B 000000") + Field(data), true, true,
         code},
        {"split everywhere", Field(Part(data, 0, 30)) + pieces, true, true, code},
        {"a field for each part, without marks", plain, true, true, code},
        {"only the first image", Field(start + records + tail) + endImage + Field(data), true, true, code},
        {"an extension and padding", Field(Hex("03AABB") + data + Hex("000003"), "D3EEFB 880000"), true, true,
         code},
        {"an introducer without flags", Hex("5A 0040 D3EEFB") + data, true, true, code},
        {"cut in the last record", Field(start + Hex("FE920009") + code), true, false, code},
        {"cut in the last field", Part(Field(data), 0, 50), true, false, code},
        {"a length of 0 for all that is there", Field(start + Hex("FE920000") + code), true, false, code},
        {"a length beyond the file", Hex("5A7FFFD3EEFB000000") + data, true, true, code},
        {"another compression", Field(otherCode), false, false, {}},
        {"more than one bit", Field(twoBits), false, false, {}},
        {"no record", Field(start + tail), false, false, {}},
        {"no segment", Field(Bytes(100)), false, false, {}},
        {"no fields", Bytes(3000, 0xD3), false, false, {}},
        {"nothing", {}, false, false, {}},
    };
    for (const auto& [row, content, readable, isWhole, bytes] : rows) {
        SCOPED_TRACE(row);
        OpenedFile file(content);
        PictureCode read{};
        const std::string why = ReadCode(file.handle, Wrapping::Document, read);
        EXPECT_EQ(why.empty(), readable) << why;
        if (!readable)
            continue;
        EXPECT_EQ(read.isWhole, isWhole);
        EXPECT_EQ(read.bytes, bytes);
    }
}
