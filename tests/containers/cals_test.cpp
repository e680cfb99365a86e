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

Records WithSize(const std::string& size)
{
    return {"rtype: 1", "rorient: 090,270", "rpelcnt: " + size, "rdensty: 0200"};
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

TEST(Cals, AHeaderIsWrittenAsTextIn128Bytes)
{
    NoLeaks leaks;
    const std::string tooLong(200, 'x');
    const Records plain = {"srcdocid: NONE",         "dstdocis: NONE", "txtfileid: NONE", "figid: NONE",
                           "scrgph: NONE",           "doccls: NONE",   "rtype: 1",        "rorient: 090,270",
                           "rpelcnt: 001728,002200", "rdensty: 0200",  "notes: NONE"};
    Records full = plain;
    full[0] = "srcdocid: " + tooLong.substr(0, 117);
    full[5] = "doccls: ";
    full[7] = "rorient: 4294967295,1000";
    full[8] = "rpelcnt: 4294967295,4294967295";
    full[10] = "notes: a note";
    TiffCalsNotes notes{};
    notes.srcdocid = tooLong.c_str();
    notes.doccls = "";
    notes.notes = "a note";
    const struct {
        const char* row;
        TiffCalsInformation information;
        const TiffCalsNotes* notes;
        const Records& records;
    } rows[] = {
        {"plain", {1, {90, 270}, 1728, 2200, 200}, nullptr, plain},
        {"more than fits", {1, {UINT32_MAX, 1000}, UINT32_MAX, UINT32_MAX, 200}, &notes, full},
    };
    for (const auto& [row, information, texts, records] : rows) {
        SCOPED_TRACE(row);
        HGLOBAL head = DefineCALSHead(&information, texts);
        EXPECT_EQ(Content(head, 2248), CalsFile(records, Bytes(200)));
        GlobalFree(head);
    }
    EXPECT_EQ(DefineCALSHead(nullptr, nullptr), nullptr);
    EXPECT_EQ(TiffError(), 29u);
}

TEST(Cals, HeadersAreReadOrRefused)
{
    NoLeaks leaks;
    Bytes unended = CalsFile(WithSize("8,2"));
    unended[12 * 128 + 127] = 'x';
    const TiffCalsInformation usual = {1, {90, 270}, 8, 2, 200};
    const struct {
        const char* row;
        Bytes file;
        uint32_t error; // of the numbers
        TiffCalsInformation information;
        bool isHeader = true;
    } rows[] = {
        {"usual", CalsFile(WithSize("000008,000002")), 0, usual},
        {"zeros for spaces", CalsFile(WithSize(std::string("8,2\0\0", 5))), 0, usual},
        {"blanks ahead, any separator", CalsFile(WithSize("  8x   2")), 0, usual},
        {"two separators", CalsFile(WithSize("8, ,2")), 18, {}},
        {"other spellings", CalsFile({"dtype: 1", "rorient: 090,270", "rpelcnt: 8,2", "rdensity: 200"}), 0,
         usual},
        {"more than 32 bits",
         CalsFile(WithSize("99999999999999999999999,4294967296")),
         0,
         {1, {90, 270}, UINT32_MAX, UINT32_MAX, 200}},
        {"another letter case",
         CalsFile({"RTYPE: 1", "rorient: 090,270", "rpelcnt: 8,2", "rdensty: 200"}),
         18,
         {}},
        {"type 2", CalsFile({"rtype: 2", "rorient: 090,270", "rpelcnt: 8,2", "rdensty: 200"}), 18, {}},
        {"no lines", CalsFile(WithSize("000008,000000")), 18, {}},
        {"negative", CalsFile(WithSize("-8,2")), 18, {}},
        {"no density", CalsFile({"rtype: 1", "rorient: 090,270", "rpelcnt: 8,2"}), 18, {}},
        {"a record without an end", unended, 18, {}, false},
        {"a byte short", Without(CalsFile(WithSize("8,2")), 1), 18, {}, false},
        {"empty", {}, 18, {}, false},
    };
    for (const auto& [row, content, error, information, isHeader] : rows) {
        SCOPED_TRACE(row);
        const TempFile file(content);
        TiffCalsInformation read{};
        SetTiffError(0);
        EXPECT_EQ(ReadCALSInfo(file.Path(), &read), error == 0);
        EXPECT_EQ(TiffError(), error);
        EXPECT_TRUE(error || memcmp(&read, &information, sizeof(read)) == 0);
        HGLOBAL head = ReadCALSHead(file.Path());
        ASSERT_EQ(head != nullptr, isHeader);
        EXPECT_TRUE(!head || Content(head, 2048) == content);
        GlobalFree(head);
    }
    EXPECT_EQ(ReadCALSHead("no such file"), nullptr);
    EXPECT_EQ(TiffError(), 6u);
    EXPECT_EQ(ReadCALSHead(""), nullptr);
    EXPECT_EQ(TiffError(), 29u);
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
    const Bytes whole = Hex("18000000 18000000"), nothing = Hex("00000000 00000000");
    const struct {
        const char* row;
        Bytes file;
        uint32_t error;
        Bytes pixels; // from the bottom; empty for no picture
    } rows[] = {
        {"whole", CalsFile(WithSize("8,2"), twoRows), 0, whole},
        {"cut in the second row", CalsFile(WithSize("8,2"), Bits("001 1000 11 1")), 5,
         Hex("00000000 18000000")},
        {"no body", CalsFile(WithSize("8,2")), 5, nothing},
        {"damaged", CalsFile(WithSize("8,2"), Bits("001 1000 11 1 00000001")), 12, {}},
        {"no header", Bytes(2048, 'x'), 18, {}},
        {"too wide for a DIB", CalsFile(WithSize("4294967295,1"), twoRows), 1, {}},
        {"too high for a DIB", CalsFile(WithSize("8,4294967295"), twoRows), 1, {}},
        {"bytes beyond 32 bits", CalsFile(WithSize("262144,131072"), twoRows), 1, {}},
        {"bytes beyond 64 bits", CalsFile(WithSize("99999999999,99999999999"), twoRows), 1, {}},
    };
    for (const auto& [row, content, error, pixels] : rows) {
        SCOPED_TRACE(row);
        const TempFile file(content);
        HGLOBAL dib = LoadCALSIntoDIB(file.Path(), 0);
        EXPECT_EQ(TiffError(), error);
        ASSERT_EQ(dib == nullptr, pixels.empty());
        if (dib) {
            const Bytes bytes = Content(dib, 56);
            EXPECT_EQ(bytes,
                      Hex("28000000 08000000 02000000 0100 0100 00000000 08000000 C21E0000 C21E0000 02000000"
                          "02000000 FFFFFF00 00000000") +
                          pixels);
        }
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
        {"white first", PackedDib(picture), "0200", twoRows},
        {"black first", PackedDib(inverted), "0200", twoRows},
        {"more colours than two", PackedDib(manyColours), "0200", twoRows},
        {"a core header", core, "0000", twoRows},
        {"from the bottom", PackedDib(unequal), "0200", {}},
        {"from the top", PackedDib(topDown), "0200", {}},
    };
    for (const auto& [row, dib, density, body] : rows) {
        SCOPED_TRACE(row);
        const Block block(dib);
        const TempFile file(Bytes(5000, 0xAA));
        const uint32_t orientation[] = {0, 90};
        TiffCalsNotes notes{};
        notes.figid = "7";
        EXPECT_EQ(SaveDIBInCALSFormat(file.Path(), block.Get(), &notes, orientation, 0), 1);
        const Records records = {"srcdocid: NONE",
                                 "dstdocis: NONE",
                                 "txtfileid: NONE",
                                 "figid: 7",
                                 "scrgph: NONE",
                                 "doccls: NONE",
                                 "rtype: 1",
                                 "rorient: 000,090",
                                 "rpelcnt: 000008,000002",
                                 std::string("rdensty: ") + density,
                                 "notes: NONE"};
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
        int32_t edit;
        uint32_t error;
    } rows[] = {
        {"another depth", PackedDib(deep) + Bytes(64), 0, 16},
        {"rows missing", Without(PackedDib(picture), 1), 0, 30},
        {"too wide for the encoder", PackedDib(wide), 0, 12},
        {"no dialog", PackedDib(picture), 1, 28},
    };
    const TempFile file(Hex("01 02 03"));
    for (const auto& [row, dib, edit, error] : rows) {
        SCOPED_TRACE(row);
        const Block block(dib);
        EXPECT_EQ(SaveDIBInCALSFormat(file.Path(), block.Get(), nullptr, nullptr, edit), 0);
        EXPECT_EQ(TiffError(), error);
        EXPECT_EQ(ReadFileBytes(file.Path()), Hex("01 02 03"));
    }
    EXPECT_EQ(SaveDIBInCALSFormat(file.Path(), nullptr, nullptr, nullptr, 0), 0);
    EXPECT_EQ(TiffError(), 1u);
    const Block block(PackedDib(picture));
    EXPECT_EQ(SaveDIBInCALSFormat("", block.Get(), nullptr, nullptr, 0), 0);
    EXPECT_EQ(TiffError(), 29u);
    EXPECT_EQ(SaveDIBInCALSFormat(TIFF_SOURCE_DIR, block.Get(), nullptr, nullptr, 0), 0);
    EXPECT_EQ(TiffError(), 6u);
}
