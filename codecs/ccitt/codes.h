// Every code of T.4 and T.6, once, as the bits on the wire. The tables of both directions are computed from
// these lists.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace tiff::ccitt {

struct Code {
    uint16_t bits; // right-aligned
    uint8_t length;
};

constexpr Code Bits(std::string_view wire)
{
    Code code{0, static_cast<uint8_t>(wire.size())};
    for (const char bit : wire)
        code.bits = static_cast<uint16_t>(code.bits << 1 | (bit == '1'));
    return code;
}

struct RunCode {
    uint16_t run;
    Code code;
};

constexpr RunCode Run(uint16_t run, std::string_view wire)
{
    return {run, Bits(wire)};
}

// Shorter runs have one code; longer ones begin with a make-up code.
inline constexpr uint16_t FIRST_MAKE_UP = 64;

// clang-format off
inline constexpr std::array whiteCodes = {
    Run(0, "00110101"), Run(1, "000111"), Run(2, "0111"), Run(3, "1000"), Run(4, "1011"), Run(5, "1100"),
    Run(6, "1110"), Run(7, "1111"), Run(8, "10011"), Run(9, "10100"), Run(10, "00111"), Run(11, "01000"),
    Run(12, "001000"), Run(13, "000011"), Run(14, "110100"), Run(15, "110101"), Run(16, "101010"),
    Run(17, "101011"), Run(18, "0100111"), Run(19, "0001100"), Run(20, "0001000"), Run(21, "0010111"),
    Run(22, "0000011"), Run(23, "0000100"), Run(24, "0101000"), Run(25, "0101011"), Run(26, "0010011"),
    Run(27, "0100100"), Run(28, "0011000"), Run(29, "00000010"), Run(30, "00000011"), Run(31, "00011010"),
    Run(32, "00011011"), Run(33, "00010010"), Run(34, "00010011"), Run(35, "00010100"), Run(36, "00010101"),
    Run(37, "00010110"), Run(38, "00010111"), Run(39, "00101000"), Run(40, "00101001"), Run(41, "00101010"),
    Run(42, "00101011"), Run(43, "00101100"), Run(44, "00101101"), Run(45, "00000100"), Run(46, "00000101"),
    Run(47, "00001010"), Run(48, "00001011"), Run(49, "01010010"), Run(50, "01010011"), Run(51, "01010100"),
    Run(52, "01010101"), Run(53, "00100100"), Run(54, "00100101"), Run(55, "01011000"), Run(56, "01011001"),
    Run(57, "01011010"), Run(58, "01011011"), Run(59, "01001010"), Run(60, "01001011"), Run(61, "00110010"),
    Run(62, "00110011"), Run(63, "00110100"), Run(64, "11011"), Run(128, "10010"), Run(192, "010111"),
    Run(256, "0110111"), Run(320, "00110110"), Run(384, "00110111"), Run(448, "01100100"),
    Run(512, "01100101"), Run(576, "01101000"), Run(640, "01100111"), Run(704, "011001100"),
    Run(768, "011001101"), Run(832, "011010010"), Run(896, "011010011"), Run(960, "011010100"),
    Run(1024, "011010101"), Run(1088, "011010110"), Run(1152, "011010111"), Run(1216, "011011000"),
    Run(1280, "011011001"), Run(1344, "011011010"), Run(1408, "011011011"), Run(1472, "010011000"),
    Run(1536, "010011001"), Run(1600, "010011010"), Run(1664, "011000"), Run(1728, "010011011"),
};

inline constexpr std::array blackCodes = {
    Run(0, "0000110111"), Run(1, "010"), Run(2, "11"), Run(3, "10"), Run(4, "011"), Run(5, "0011"),
    Run(6, "0010"), Run(7, "00011"), Run(8, "000101"), Run(9, "000100"), Run(10, "0000100"),
    Run(11, "0000101"), Run(12, "0000111"), Run(13, "00000100"), Run(14, "00000111"), Run(15, "000011000"),
    Run(16, "0000010111"), Run(17, "0000011000"), Run(18, "0000001000"), Run(19, "00001100111"),
    Run(20, "00001101000"), Run(21, "00001101100"), Run(22, "00000110111"), Run(23, "00000101000"),
    Run(24, "00000010111"), Run(25, "00000011000"), Run(26, "000011001010"), Run(27, "000011001011"),
    Run(28, "000011001100"), Run(29, "000011001101"), Run(30, "000001101000"), Run(31, "000001101001"),
    Run(32, "000001101010"), Run(33, "000001101011"), Run(34, "000011010010"), Run(35, "000011010011"),
    Run(36, "000011010100"), Run(37, "000011010101"), Run(38, "000011010110"), Run(39, "000011010111"),
    Run(40, "000001101100"), Run(41, "000001101101"), Run(42, "000011011010"), Run(43, "000011011011"),
    Run(44, "000001010100"), Run(45, "000001010101"), Run(46, "000001010110"), Run(47, "000001010111"),
    Run(48, "000001100100"), Run(49, "000001100101"), Run(50, "000001010010"), Run(51, "000001010011"),
    Run(52, "000000100100"), Run(53, "000000110111"), Run(54, "000000111000"), Run(55, "000000100111"),
    Run(56, "000000101000"), Run(57, "000001011000"), Run(58, "000001011001"), Run(59, "000000101011"),
    Run(60, "000000101100"), Run(61, "000001011010"), Run(62, "000001100110"), Run(63, "000001100111"),
    Run(64, "0000001111"), Run(128, "000011001000"), Run(192, "000011001001"), Run(256, "000001011011"),
    Run(320, "000000110011"), Run(384, "000000110100"), Run(448, "000000110101"), Run(512, "0000001101100"),
    Run(576, "0000001101101"), Run(640, "0000001001010"), Run(704, "0000001001011"),
    Run(768, "0000001001100"), Run(832, "0000001001101"), Run(896, "0000001110010"),
    Run(960, "0000001110011"), Run(1024, "0000001110100"), Run(1088, "0000001110101"),
    Run(1152, "0000001110110"), Run(1216, "0000001110111"), Run(1280, "0000001010010"),
    Run(1344, "0000001010011"), Run(1408, "0000001010100"), Run(1472, "0000001010101"),
    Run(1536, "0000001011010"), Run(1600, "0000001011011"), Run(1664, "0000001100100"),
    Run(1728, "0000001100101"),
};

// Make-up codes of either colour.
inline constexpr std::array extendedCodes = {
    Run(1792, "00000001000"), Run(1856, "00000001100"), Run(1920, "00000001101"), Run(1984, "000000010010"),
    Run(2048, "000000010011"), Run(2112, "000000010100"), Run(2176, "000000010101"),
    Run(2240, "000000010110"), Run(2304, "000000010111"), Run(2368, "000000011100"),
    Run(2432, "000000011101"), Run(2496, "000000011110"), Run(2560, "000000011111"),
};
// clang-format on

enum class Mode : uint8_t { Pass, Horizontal, Vertical, Extension, Zeros };

struct ModeCode {
    Mode mode;
    int8_t delta; // of a vertical mode: a1 less b1
    Code code;
};

inline constexpr std::array modeCodes = {
    ModeCode{Mode::Pass, 0, Bits("0001")},         ModeCode{Mode::Horizontal, 0, Bits("001")},
    ModeCode{Mode::Vertical, 0, Bits("1")},        ModeCode{Mode::Vertical, 1, Bits("011")},
    ModeCode{Mode::Vertical, 2, Bits("000011")},   ModeCode{Mode::Vertical, 3, Bits("0000011")},
    ModeCode{Mode::Vertical, -1, Bits("010")},     ModeCode{Mode::Vertical, -2, Bits("000010")},
    ModeCode{Mode::Vertical, -3, Bits("0000010")}, ModeCode{Mode::Extension, 0, Bits("0000001")},
    ModeCode{Mode::Zeros, 0, Bits("0000000")}, // the start of an EOL, an EOFB or nonsense
};

} // namespace tiff::ccitt
