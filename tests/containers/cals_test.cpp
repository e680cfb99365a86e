// CALS files: headers written by hand and by other programs, pictures both ways.
#include "support/leaks.h"
#include "support/pictures.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

using Records = std::vector<std::string>;

// The texts as records, the rest of the header blank, then the body.
Bytes CalsFile(const Records& records, const Bytes& body = {})
{
    Bytes file(2048, ' ');
    for (size_t index = 0; index < records.size(); ++index)
        std::ranges::copy(records[index], file.begin() + static_cast<ptrdiff_t>(index * 128));
    return file + body;
}

Records WithSize(const std::string& size, const char* type = "rtype: 1",
                 const char* density = "rdensty: 0200")
{
    return {type, "rorient: 090,270", "rpelcnt: " + size, density};
}

// Eight white pixels with two black ones in their middle, twice, and the end of the block.
const Bytes twoRows = Bits("001 1000 11 1 111 000000000001 000000000001");

Bytes Without(Bytes bytes, size_t count)
{
    bytes.resize(bytes.size() - count);
    return bytes;
}

const DibPicture picture = {8, 2, 1, {0xFFFFFF, 0}, Hex("18000000 18000000")};

} // namespace

TEST(Cals, AHeaderHoldsWhatFits)
{
    NoLeaks leaks;
    const std::string tooLong(200, 'x');
    TiffCalsNotes notes{};
    notes.srcdocid = tooLong.c_str();
    notes.doccls = "";
    notes.notes = "a note";
    const TiffCalsInformation large = {1, {UINT32_MAX, 1000}, UINT32_MAX, UINT32_MAX, 12345};
    HGLOBAL head = DefineCALSHead(&large, &notes);
    EXPECT_EQ(Content(head, 2248),
              CalsFile({"srcdocid: " + tooLong.substr(0, 117), "dstdocis: NONE", "txtfileid: NONE",
                        "figid: NONE", "scrgph: NONE", "doccls: ", "rtype: 1", "rorient: 4294967295,1000",
                        "rpelcnt: 4294967295,4294967295", "rdensty: 12345", "notes: a note"},
                       Bytes(200)));
    GlobalFree(head);
    EXPECT_EQ(DefineCALSHead(nullptr, nullptr), nullptr);
    EXPECT_EQ(TiffError(), 29u);
}

TEST(Cals, NumbersAreReadOrRefused)
{
    NoLeaks leaks;
    const struct {
        const char* row;
        Records records;
        uint32_t width, lines; // 0 when they are refused
    } rows[] = {
        {"usual", WithSize("001728,002200"), 1728, 2200},
        {"zeros for spaces", WithSize(std::string("8,2\0\0", 5)), 8, 2},
        {"blanks ahead, any separator", WithSize("  8x   2"), 8, 2},
        {"two separators", WithSize("8, ,2"), 0, 0},
        {"other spellings", WithSize("8,2", "dtype: 1", "rdensity: 200"), 8, 2},
        {"more than 32 bits", WithSize("99999999999999999999999,4294967296"), UINT32_MAX, UINT32_MAX},
        {"another letter case", WithSize("8,2", "RTYPE: 1"), 0, 0},
        {"type 2", WithSize("8,2", "rtype: 2"), 0, 0},
        {"no lines", WithSize("000008,000000"), 0, 0},
        {"a sign", WithSize("-8,2"), 0, 0},
        {"no density", WithSize("8,2", "rtype: 1", ""), 0, 0},
    };
    for (const auto& [row, records, width, lines] : rows) {
        SCOPED_TRACE(row);
        const TempFile file(CalsFile(records));
        TiffCalsInformation read{}, expected = {1, {90, 270}, width, lines, 200};
        SetTiffError(0);
        EXPECT_EQ(ReadCALSInfo(file.Path(), &read), width != 0);
        EXPECT_EQ(TiffError(), width ? 0u : 18u);
        EXPECT_TRUE(!width || memcmp(&read, &expected, sizeof(read)) == 0);
    }
}

TEST(Cals, AHeaderIsWholeAndItsRecordsEndBlank)
{
    NoLeaks leaks;
    Bytes ends = CalsFile({}), ended = CalsFile({});
    ends[12 * 128 + 127] = 0;
    ended[12 * 128 + 127] = 'x';
    const TempFile good(ends), wrong(ended), brief(Without(ends, 1)), empty({});
    const struct {
        const char* path;
        uint32_t error;
    } rows[] = {{good.Path(), 0},    {wrong.Path(), 18}, {brief.Path(), 18}, {empty.Path(), 18},
                {"no such file", 6}, {"", 29},           {nullptr, 29}};
    for (const auto& [path, error] : rows) {
        SetTiffError(0);
        HGLOBAL head = ReadCALSHead(path);
        EXPECT_EQ(head != nullptr, error == 0);
        EXPECT_EQ(TiffError(), error);
        GlobalFree(head);
    }
}

TEST(Cals, RecordsAreFoundByTheirFirstBytes)
{
    const Bytes header = CalsFile({" figid: 1", "", "figid: 2", "figid: 3"});
    const char* const first = reinterpret_cast<const char*>(header.data());
    EXPECT_EQ(FindCALSRecord(first, "figid: "), first + 256);
    EXPECT_EQ(FindCALSRecord(first, "figid: 3"), first + 384);
    EXPECT_EQ(FindCALSRecord(first, "FIGID: "), nullptr);
    EXPECT_EQ(FindCALSRecord(first, std::string(4000, 'f').c_str()), nullptr);
}

TEST(Cals, NotesReadOnThroughThoseThatFollow)
{
    NoLeaks leaks;
    const std::string longest(117, 'x');
    const struct {
        const char* row;
        Records records;
        const char* texts[7];
    } rows[] = {
        {"two", {"srcdocid: A", "dstdocis: B"}, {"AB", "B"}},
        {"none", {"srcdocid:", "figid: "}, {}},
        {"one line end goes", {"figid: a \r\n", "notes: z\n"}, {{}, {}, {}, "a \rz", {}, {}, "z"}},
        {"up to a zero byte", {std::string("notes: a\0b", 10)}, {{}, {}, {}, {}, {}, {}, "a"}},
        {"the whole record", {"srcdocid: " + longest}, {longest.c_str()}},
        {"other spellings",
         {"dstdocid: 1", "txtfilid: 2", "srcgph: 3", "docls: 4"},
         {{}, "1234", "234", {}, "34", "4"}},
        {"both spellings", {"docls: other", "doccls: own"}, {{}, {}, {}, {}, {}, "own"}},
    };
    for (const auto& [row, records, texts] : rows) {
        SCOPED_TRACE(row);
        const TempFile file(CalsFile(records));
        TiffCalsNotes notes;
        HGLOBAL block = ReadCALSNote(file.Path(), &notes);
        ASSERT_NE(block, nullptr);
        const char* const read[] = {notes.srcdocid, notes.dstdocis, notes.txtfileid, notes.figid,
                                    notes.scrgph,   notes.doccls,   notes.notes};
        for (size_t index = 0; index < std::size(read); ++index)
            EXPECT_STREQ(read[index], texts[index]) << index;
        GlobalFree(block);
    }
}

TEST(Cals, PicturesAreLoadedAsFarAsTheyGo)
{
    NoLeaks leaks;
    const Bytes header = Hex("28000000 08000000 02000000 0100 0100 00000000 08000000 C21E0000 C21E0000"
                             "02000000 02000000 FFFFFF00 00000000");
    const struct {
        const char* row;
        const char* size;
        Bytes body;
        uint32_t error;
        Bytes pixels; // from the bottom; empty for no picture
    } rows[] = {
        {"whole", "8,2", twoRows, 0, Hex("18000000 18000000")},
        {"cut in the second row", "8,2", Bits("001 1000 11 1"), 5, Hex("00000000 18000000")},
        {"no body", "8,2", {}, 5, Hex("00000000 00000000")},
        {"damaged", "8,2", Bits("001 1000 11 1 00000001"), 12, {}},
        {"too wide for a DIB", "4294967295,1", twoRows, 1, {}},
        {"too high for a DIB", "8,4294967295", twoRows, 1, {}},
        {"bytes beyond 32 bits", "262144,131072", twoRows, 1, {}},
        {"bytes beyond 64 bits", "99999999999,99999999999", twoRows, 1, {}},
    };
    for (const auto& [row, size, body, error, pixels] : rows) {
        SCOPED_TRACE(row);
        const TempFile file(CalsFile(WithSize(size), body));
        HGLOBAL dib = LoadCALSIntoDIB(file.Path(), 0);
        EXPECT_EQ(TiffError(), error);
        ASSERT_EQ(dib == nullptr, pixels.empty());
        EXPECT_TRUE(!dib || Content(dib, 56) == header + pixels);
        GlobalFree(dib);
    }
}

TEST(Cals, PicturesAreSavedWithWhiteAsZero)
{
    NoLeaks leaks;
    DibPicture inverted = picture, topDown = picture, manyColours = picture, unequal = picture;
    inverted.colours = {0, 0xFFFFFF};
    inverted.pixels = Hex("E7FFFFFF E7FFFFFF");
    topDown.topDown = true;
    unequal.pixels = Hex("00000000 18000000");
    topDown.pixels = Hex("18000000 00000000");
    manyColours.colours = {0xFFFFFF, 0, 0, 0};
    manyColours.colourCount = 4;
    // A core header says 12 bytes, colours of 3, and no resolution.
    const Bytes core = Hex("0C000000 0800 0200 0100 0100 FFFFFF 000000 18000000 18000000");
    const struct {
        const char* row;
        Bytes dib;
        const char* density;
        Bytes body;
    } rows[] = {
        {"white first", PackedDib(picture), "rdensty: 0200", twoRows},
        {"black first", PackedDib(inverted), "rdensty: 0200", twoRows},
        {"more colours than two", PackedDib(manyColours), "rdensty: 0200", twoRows},
        {"a core header", core, "rdensty: 0000", twoRows},
        {"from the bottom", PackedDib(unequal), "rdensty: 0200", {}},
        {"from the top", PackedDib(topDown), "rdensty: 0200", {}},
    };
    for (const auto& [row, dib, density, body] : rows) {
        SCOPED_TRACE(row);
        const Block block(dib);
        const TempFile file(Bytes(5000, 0xAA));
        const uint32_t orientation[] = {0, 90};
        TiffCalsNotes notes{};
        notes.figid = "7";
        EXPECT_EQ(SaveDIBInCALSFormat(file.Path(), block.Get(), &notes, orientation, 0), 1);
        const Records records = {"srcdocid: NONE", "dstdocis: NONE",   "txtfileid: NONE",
                                 "figid: 7",       "scrgph: NONE",     "doccls: NONE",
                                 "rtype: 1",       "rorient: 000,090", "rpelcnt: 000008,000002",
                                 density,          "notes: NONE"};
        const Bytes saved = ReadFileBytes(file.Path());
        EXPECT_EQ(body.empty() ? CalsFile(records) : saved, CalsFile(records, body));
        HGLOBAL loaded = LoadCALSIntoDIB(file.Path(), 0);
        const Bytes content = Content(loaded, 56);
        EXPECT_EQ(Bytes(content.begin() + 48, content.end()), body.empty() ? unequal.pixels : picture.pixels);
        GlobalFree(loaded);
    }
}

TEST(Cals, WhatCannotBeSavedLeavesTheOldFile)
{
    NoLeaks leaks;
    DibPicture deep = picture;
    deep.bits = 4;
    DibPicture wide = {32769 * 8, 1, 1, {0xFFFFFF, 0}, Bytes(32772)};
    const struct {
        const char* row;
        Bytes dib;
        uint32_t error;
    } rows[] = {
        {"another depth", PackedDib(deep) + Bytes(64), 16},
        {"rows missing", Without(PackedDib(picture), 1), 30},
        {"too wide for the encoder", PackedDib(wide), 12},
    };
    const TempFile file(Hex("01 02 03"));
    for (const auto& [row, dib, error] : rows) {
        SCOPED_TRACE(row);
        const Block block(dib);
        EXPECT_EQ(SaveDIBInCALSFormat(file.Path(), block.Get(), nullptr, nullptr, 0), 0);
        EXPECT_EQ(TiffError(), error);
        EXPECT_EQ(ReadFileBytes(file.Path()), Hex("01 02 03"));
    }
    EXPECT_EQ(SaveDIBInCALSFormat(file.Path(), nullptr, nullptr, nullptr, 0), 0);
    EXPECT_EQ(TiffError(), 1u);
    const Block block(PackedDib(picture));
    EXPECT_EQ(SaveDIBInCALSFormat("", block.Get(), nullptr, nullptr, 0), 0);
    EXPECT_EQ(TiffError(), 29u);
    EXPECT_EQ(SaveDIBInCALSFormat(".", block.Get(), nullptr, nullptr, 0), 0);
    EXPECT_EQ(TiffError(), 6u);
}
