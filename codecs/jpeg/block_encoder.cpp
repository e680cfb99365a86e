#include "codecs/jpeg/block_encoder.h"

#include "core/byte_order.h"
#include "core/sixteen_shorts.h"

#include <bit>

namespace tiff::jpeg {

namespace {

constexpr uint32_t WORD_BITS = 64, ZERO_RUN = 0xF0, END_OF_BLOCK = 0;

struct HuffmanCode {
    uint16_t code;
    uint8_t bits;
};

using HuffmanCodes = std::array<HuffmanCode, 256>; // by value

constexpr HuffmanCodes CodesOf(const HuffmanList& list)
{
    HuffmanCodes codes{};
    ForEachCode(list, [&](uint32_t code, uint32_t bits, uint8_t value) {
        codes[value] = {static_cast<uint16_t>(code), static_cast<uint8_t>(bits)};
    });
    return codes;
}

// The bits of a number, as many as its size.
constexpr uint32_t SizeOf(int32_t number)
{
    return static_cast<uint32_t>(std::bit_width(static_cast<uint32_t>(number < 0 ? -number : number)));
}

constexpr uint32_t BitsOf(int32_t number, uint32_t size)
{
    return static_cast<uint32_t>(number + (number >> 31)) & ((1u << size) - 1);
}

// Codes and the numbers behind them, for a run and a number from -16 to 15: the bits, and below them how many
// they are. Most coefficients are that small.
constexpr uint32_t SMALL_NUMBERS = 32, LENGTH_BITS = 5;

using SmallNumbers = std::array<uint32_t, 16 * SMALL_NUMBERS>;

constexpr SmallNumbers SmallNumbersOf(const HuffmanCodes& codes)
{
    SmallNumbers table{};
    for (uint32_t at = 0; at < table.size(); ++at) {
        const int32_t number = static_cast<int32_t>(at % SMALL_NUMBERS) - int32_t{SMALL_NUMBERS / 2};
        const uint32_t size = SizeOf(number);
        const HuffmanCode& code = codes[at / SMALL_NUMBERS << 4 | size];
        table[at] = (uint32_t{code.code} << size | BitsOf(number, size)) << LENGTH_BITS | (code.bits + size);
    }
    return table;
}

struct CodeTables {
    HuffmanCodes dc, ac;
    SmallNumbers small;
};

constexpr CodeTables TablesOf(const HuffmanList& dc, const HuffmanList& ac)
{
    return {CodesOf(dc), CodesOf(ac), SmallNumbersOf(CodesOf(ac))};
}

constexpr CodeTables codeTables[] = {TablesOf(luminanceDc, luminanceAc),
                                     TablesOf(chrominanceDc, chrominanceAc)};

// For eight places of a block, those whose bits are set, as bits in the order of the code.
constexpr auto codeOrder = [] {
    std::array<std::array<uint64_t, 256>, BLOCK_SIDE> table{};
    for (uint32_t at = 0; at < BLOCK_SIZE; ++at) {
        const uint32_t column = placeInBlock[at] / BLOCK_SIDE, bit = placeInBlock[at] % BLOCK_SIDE;
        for (uint32_t byte = 0; byte < 256; ++byte)
            table[column][byte] |= uint64_t{byte >> bit & 1} << at;
    }
    return table;
}();

// Both give the place behind. A writer whose address nobody takes stays in registers.
uint8_t* PutStuffed(uint8_t* next, uint64_t word, uint32_t bytes)
{
    for (; bytes > 0; --bytes, word <<= 8) {
        *next++ = static_cast<uint8_t>(word >> (WORD_BITS - 8));
        if (next[-1] == 0xFF)
            *next++ = 0;
    }
    return next;
}

inline uint8_t* PutWord(uint8_t* next, uint64_t word)
{
    constexpr uint64_t LOW = 0x0101010101010101, HIGH = 0x8080808080808080;
    if (((~word - LOW) & word & HIGH) != 0) [[unlikely]]
        return PutStuffed(next, word, sizeof(word));
    if constexpr (std::endian::native == std::endian::little)
        word = Swap64(word);
    std::memcpy(next, &word, sizeof(word));
    return next + sizeof(word);
}

inline void Put(BitWriter& writer, uint32_t bits, uint32_t count)
{
    if (count <= writer.free) [[likely]] {
        writer.bits = writer.bits << count | bits;
        writer.free -= count;
        return;
    }
    const uint32_t left = count - writer.free;
    writer.next = PutWord(writer.next, writer.bits << writer.free | bits >> left);
    writer.bits = bits;
    writer.free = WORD_BITS - left;
}

// A code and the number that belongs to it.
inline void PutNumber(BitWriter& writer, const HuffmanCodes& codes, uint32_t run, int32_t number)
{
    const uint32_t size = SizeOf(number);
    const HuffmanCode& code = codes[run << 4 | size];
    Put(writer, uint32_t{code.code} << size | BitsOf(number, size), code.bits + size);
}

// The coefficients that are not 0, in the order of the code.
inline uint64_t UsedPlaces(const Block& block)
{
    const Sixteen zero = SixteenOf(0);
    uint64_t used = 0;
    for (uint32_t column = 0; column < BLOCK_SIDE; column += 2) {
        const int16_t* at = &block.coefficients[column * BLOCK_SIDE];
        const uint32_t zeros =
            EqualBytes(NarrowToSignedBytes(LoadSixteen(at), LoadSixteen(at + BLOCK_SIDE)), zero);
        used |= codeOrder[column][~zeros & 0xFF] | codeOrder[column + 1][~zeros >> 8 & 0xFF];
    }
    return used;
}

} // namespace

void StartBits(BitWriter& writer, uint8_t* target)
{
    writer = {0, WORD_BITS, target};
}

void EndBits(BitWriter& writer)
{
    const uint32_t count = WORD_BITS - writer.free, ones = (8 - count % 8) % 8;
    if (count == 0)
        return;
    Put(writer, (1u << ones) - 1, ones);
    const uint32_t bytes = (WORD_BITS - writer.free) / 8;
    writer.next = PutStuffed(writer.next, writer.free ? writer.bits << writer.free : writer.bits, bytes);
    writer.bits = 0;
    writer.free = WORD_BITS;
}

void EncodeBlock(BitWriter& shared, const Block& block, TableKind kind, int32_t& prediction)
{
    const CodeTables& codes = codeTables[static_cast<size_t>(kind)];
    BitWriter writer = shared;
    const int32_t dc = block.coefficients[0];
    PutNumber(writer, codes.dc, 0, dc - prediction);
    prediction = dc;
    uint64_t used = UsedPlaces(block) & ~uint64_t{1};
    uint32_t last = 0;
    for (; used != 0; used &= used - 1) {
        const auto at = static_cast<uint32_t>(std::countr_zero(used));
        uint32_t run = at - last - 1;
        for (; run > 15; run -= 16)
            Put(writer, codes.ac[ZERO_RUN].code, codes.ac[ZERO_RUN].bits);
        const int32_t number = block.coefficients[placeInBlock[at]];
        const auto place = static_cast<uint32_t>(number + int32_t{SMALL_NUMBERS / 2});
        if (place < SMALL_NUMBERS) [[likely]] {
            const uint32_t entry = codes.small[run * SMALL_NUMBERS + place];
            Put(writer, entry >> LENGTH_BITS, entry & ((1u << LENGTH_BITS) - 1));
        } else {
            PutNumber(writer, codes.ac, run, number);
        }
        last = at;
    }
    if (last != BLOCK_SIZE - 1)
        Put(writer, codes.ac[END_OF_BLOCK].code, codes.ac[END_OF_BLOCK].bits);
    shared = writer;
}

} // namespace tiff::jpeg
