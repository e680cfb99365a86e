// Code is spelled out from the tables of T.4: white 3 1000, white 8 10011, black 2 11, ...
#include "support/pictures.h"

#include <gtest/gtest.h>

namespace {

constexpr const char* EOL = "000000000001";
const std::string EOFB = std::string(EOL) + EOL;

Bytes Page(uint32_t width, uint32_t rows, uint32_t compression, uint32_t t4Options, const std::string& code)
{
    TiffPage page = TiffPage::Picture(width, rows, 1, compression).Strips({Bits(code)});
    if (t4Options)
        page.Long(292, {t4Options});
    return OnePage(page);
}

struct Row {
    const char* row;
    uint32_t width, length;
    std::string code;
    uint32_t error;
    std::string pixels;
};

void ExpectRows(uint32_t compression, uint32_t t4Options, std::initializer_list<Row> rows)
{
    for (const Row& row : rows) {
        SCOPED_TRACE(row.row);
        const Decoded decoded = DecodeFile(Page(row.width, row.length, compression, t4Options, row.code));
        EXPECT_EQ(decoded.error, row.error);
        EXPECT_EQ(decoded.result, row.error == 0);
        EXPECT_EQ(decoded.Pixels(row.width), row.pixels);
    }
}

std::string Zeros(size_t count)
{
    return std::string(count, '0');
}

} // namespace

TEST(ModifiedHuffman, RowsBeginOnBytesAndNothingIsAnEol)
{
    ExpectRows(2, 0,
               {
                   {"padded rows", 8, 3, "1000 11 1000 000000  10011 000  00110101 000101 00", 0,
                    "...##.../......../########"},
                   {"a row that ends on a byte", 8, 2, "1000 0011  10011 000", 0, "...#####/........"},
                   {"eight zeros end a run", 8, 1, "00000000 000101 00", 0, "########"},
                   {"a run beyond the width is cut", 8, 1, "1000 000101 000000", 0, "...#####"},
                   {"make-up codes add up", 2563, 1, "000000011111 0111 010 0000110111" + Zeros(6), 0,
                    std::string(2562, '.') + "#"},
               });
}

TEST(Group3, EolsSeparateRowsAndCutDamagedOnes)
{
    const std::string eol = EOL, fill = "0000", rtc = eol + eol + eol + eol + eol + eol;
    ExpectRows(
        3, 0,
        {
            {"an EOL before every row, RTC behind", 8, 2, eol + "1000 11 1000" + eol + "10011" + rtc, 0,
             "...##.../........"},
            {"no EOL at all", 8, 2, "1000 11 1000 10011", 0, "...##.../........"},
            {"fill bits", 8, 2, fill + eol + "10011" + Zeros(20) + eol + "1000 0011", 0, "......../...#####"},
            {"damage goes on in the colour of the run", 8, 2, eol + "1000" + eol + "10011", 0,
             "...#####/........"},
            {"damage in white", 8, 2, eol + "0111 11" + eol + "10011", 0, "..##..../........"},
            {"a make-up code alone is no run", 8, 1, eol + "11011" + eol + "10011", 0, "........"},
        });
}

TEST(Group3, TwoDimensionalRowsReferToTheRowAbove)
{
    const std::string one = std::string(EOL) + "1", two = std::string(EOL) + "0";
    const std::string first = one + "1000 11 1000"; // ...##...
    ExpectRows(3, 1,
               {
                   {"vertical, straight and shifted", 8, 3, first + two + "1 1 1" + two + "011 011 1", 0,
                    "...##.../...##.../....##.."},
                   {"two and three aside", 8, 3, first + two + "000010 000011 1" + two + "000011 0000010 1",
                    0, "...##.../.######./...#...."},
                   {"pass", 8, 2, first + two + "0001 1", 0, "...##.../........"},
                   {"horizontal", 8, 2, first + two + "001 000111 010 001 0111 10 1", 0, "...##.../.#..###."},
                   {"fill before the EOL", 8, 2, first + Zeros(9) + two + "111", 0, "...##.../...##..."},
                   {"an extension is skipped", 8, 2, first + two + "0000001 111", 0, "...##.../...##..."},
                   {"a damaged row is cut", 8, 3, first + two + "1" + one + "10011", 0,
                    "...##.../...#####/........"},
                   {"a row cut inside a horizontal mode", 8, 2, first + two + "001 1000" + two + "1", 0,
                    "...##.../...#####"},
                   {"an empty row is none", 8, 2, first + two + two + "001 10011 0000110111", 0,
                    "...##.../........"},
                   {"a row that begins black", 8, 3, one + "00110101 11 1110" + two + "111" + two + "011 1 1",
                    0, "##....../##....../.#......"},
                   {"empty runs in the reference are passed like others", 8, 2,
                    one + "00110101 0000110111 1000 11 00110101 0000110111 1000" + two + "0001 111", 0,
                    "...##.../...##..."},
               });
    ExpectRows(3, 5,
               {{"byte-aligned", 8, 2, "0000" + first + "00000 00" + two + "111", 0, "...##.../...##..."}});
}

TEST(Group4, RowsAreModesAlone)
{
    const std::string first = "001 1000 11 1"; // ...##...
    ExpectRows(
        4, 0,
        {
            {"the first reference is white", 8, 2, "1 " + first, 0, "......../...##..."},
            {"no EOFB is asked for", 8, 2, first + "1 1 1", 0, "...##.../...##..."},
            {"an EOFB after the last row", 8, 1, first + EOFB, 0, "...##..."},
            {"shifted both ways", 8, 2, first + "010 000011 1", 0, "...##.../..#####."},
            {"a row that begins black", 8, 3, "001 00110101 11 1" + std::string("1 1 1") + "1 0000011 1", 0,
             "##....../##....../#####..."},
            {"pass over the changes above", 8, 2, first + "0001 1", 0, "...##.../........"},
            {"b1 before a left step", 8, 2,
             "001 0111 11 001 000111 11 1" + std::string(" 001 000111 010 000010 1 1 1 1"), 0,
             "..##.##./.#.#.##."},
            {"an extension is skipped", 8, 1, "0000001" + first, 0, "...##..."},
            {"early EOFB", 8, 3, first + EOFB, 20, "...##..."},
            {"seven zeros and a one", 8, 3, first + "00000001" + Zeros(30), 12, "...##..."},
            {"an EOL alone", 8, 3, first + EOL + "1111" + Zeros(30), 12, "...##..."},
            {"zeros for a run", 8, 3, first + "001" + Zeros(30), 12, "...##..."},
            {"runs beyond the width are cut", 8, 2, "001 1000 000101" + first, 0, "...#####/...##..."},
            {"a step back paints one pixel", 8, 2,
             "001 1000 010 001 000111 010 1 " + std::string("0000011 0000010 1"), 0, "...#.#../......#."},
        });
    // The second row goes back and forth over eight empty runs.
    std::string to, fro;
    for (int times = 0; times < 8; ++times) {
        to += "001 00110101 0000110111";
        fro += "0000010 1";
    }
    const std::string row = "001 00111 0000110111" + to + "001 0111 0000110111 001 0111 11";
    ExpectRows(4, 0,
               {
                   {"a step over empty runs", 16, 2, row + "1 0000010 1 0000011 1", 0,
                    "..............##/..........#####."},
                   {"steps without end", 16, 2, row + "1" + fro + "0000011 1", 12, "..............##"},
               });
}

// All-white rows take one bit each, so the EOFB can lie on any byte. It is checked in three steps of a byte;
// the buffer ends before byte 32,767.
TEST(Group4, AnEarlyEofbAcrossARefillEndsWithSuccess)
{
    static constexpr struct {
        uint32_t whiteBytes, error;
    } rows[] = {{10, 20}, {32764, 20}, {32765, 0}, {32766, 0}, {32767, 20}, {32768, 20}};
    for (const auto& [whiteBytes, error] : rows) {
        SCOPED_TRACE(whiteBytes);
        const Bytes code = Bytes(whiteBytes, 0xFF) + Bits(EOFB);
        const Decoded decoded =
            DecodeFile(OnePage(TiffPage::Picture(8, 0, 1, 4).Long(257, {300000}).Strips({code})));
        EXPECT_EQ(decoded.error, error);
        EXPECT_EQ(decoded.result, error == 0);
        EXPECT_EQ(decoded.rows.size(), whiteBytes * 8);
    }
}

TEST(Group4, DamageAtARefillIsStillDamage)
{
    for (const uint32_t whiteBytes : {32764u, 32765u, 32766u, 32767u}) {
        SCOPED_TRACE(whiteBytes);
        const Bytes code = Bytes(whiteBytes, 0xFF) + Hex("00 10 02 FF FF");
        EXPECT_EQ(DecodeFile(OnePage(TiffPage::Picture(8, 0, 1, 4).Long(257, {300000}).Strips({code}))).error,
                  12u);
    }
}

TEST(Ccitt, WideAndNarrowPagesDecode)
{
    // 100,000 = 39 * 2560 + 160: make-ups, 128, 32.
    std::string code = "001";
    for (int times = 0; times < 39; ++times)
        code += "000000011111";
    code += "10010 00011011 0000110111";
    const Decoded decoded =
        DecodeFile(OnePage(TiffPage::Picture(0, 1, 1, 4).Strips({Bits(code)}).Long(256, {100000})));
    EXPECT_EQ(decoded.error, 0u);
    EXPECT_EQ(decoded.Joined(), Bytes(12500));
    ExpectRows(4, 0, {{"one pixel", 1, 3, "001 00110101 010 11 011", 0, "#/#/."}});
}
