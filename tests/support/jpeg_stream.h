// JPEG streams of flat blocks, made without the library. The code of a difference is its size in four bits,
// then its bits; that of a block's end is one zero bit. With quantiser 8 a level is the block's samples less
// 128.
#pragma once

#include "support/bytes.h"

#include <bit>
#include <map>

struct JpegComponent {
    uint8_t factors = 0x11, quantisers = 0;
};

struct JpegStream {
    Bytes bytes;
    std::string bits;
    std::map<uint32_t, int> levels;

    JpegStream& Put(const Bytes& more)
    {
        Flush();
        bytes = bytes + more;
        return *this;
    }
    JpegStream& Segment(uint8_t code, const Bytes& content)
    {
        const auto length = static_cast<uint8_t>(content.size() + 2);
        return Put(Bytes{0xFF, code, 0, length} + content);
    }
    JpegStream& Start()
    {
        return Put({0xFF, 0xD8});
    }
    JpegStream& Quantisers(uint8_t number = 0, uint8_t value = 8)
    {
        return Segment(0xDB, Bytes{number} + Bytes(64, value));
    }
    JpegStream& WideQuantisers(uint8_t number, uint16_t value)
    {
        const Bytes one = {static_cast<uint8_t>(value >> 8), static_cast<uint8_t>(value)};
        return Segment(0xDB, Bytes{static_cast<uint8_t>(0x10 | number)} + Repeat(one, 64));
    }
    JpegStream& Huffman(uint8_t number = 0)
    {
        Segment(0xC4, Bytes{number} +
                          Hex("0000000C 00000000 00000000 00000000 00 01 02 03 04 05 06 07 08 09 0A 0B"));
        return Segment(0xC4, Bytes{static_cast<uint8_t>(0x10 | number)} +
                                 Hex("01000000 00000000 00000000 00000000 00"));
    }
    JpegStream& Tables()
    {
        return Quantisers().Huffman();
    }
    JpegStream& Frame(uint8_t width, uint8_t height, const std::vector<JpegComponent>& components = {{}},
                      uint8_t code = 0xC0, uint8_t precision = 8)
    {
        Bytes content = {precision, 0, height, 0, width, static_cast<uint8_t>(components.size())};
        for (uint8_t at = 0; at < components.size(); ++at)
            content = content + Bytes{at, components[at].factors, components[at].quantisers};
        return Segment(code, content);
    }
    JpegStream& Scan(const Bytes& components = {0}, uint8_t table = 0)
    {
        Bytes content = {static_cast<uint8_t>(components.size())};
        for (const uint8_t component : components)
            content = content + Bytes{component, static_cast<uint8_t>(table * 0x11)};
        return Segment(0xDA, content + Bytes{0, 63, 0});
    }
    JpegStream& Interval(uint8_t mcus)
    {
        return Segment(0xDD, {0, mcus});
    }
    JpegStream& Block(int level, uint32_t component = 0)
    {
        const int difference = level - levels[component];
        levels[component] = level;
        const auto size = static_cast<uint32_t>(std::bit_width(static_cast<uint32_t>(std::abs(difference))));
        Number(size, 4);
        Number(static_cast<uint32_t>(difference < 0 ? difference + (1 << size) - 1 : difference), size);
        bits += '0';
        return *this;
    }
    JpegStream& Blocks(const std::vector<int>& all)
    {
        for (const int level : all)
            Block(level);
        return *this;
    }
    JpegStream& Restart(uint8_t number)
    {
        Put({0xFF, static_cast<uint8_t>(0xD0 + number)});
        levels.clear();
        return *this;
    }
    Bytes End()
    {
        return Put({0xFF, 0xD9}).bytes;
    }
    // Without EOI.
    Bytes Open()
    {
        return Put({}).bytes;
    }

private:
    void Number(uint32_t value, uint32_t count)
    {
        while (count-- > 0)
            bits += value >> count & 1 ? '1' : '0';
    }
    void Flush()
    {
        while (bits.size() % 8 != 0)
            bits += '1';
        for (const uint8_t byte : Bits(bits)) {
            bytes.push_back(byte);
            if (byte == 0xFF)
                bytes.push_back(0);
        }
        bits.clear();
    }
};
