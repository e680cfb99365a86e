// The segments of a JPEG stream before its entropy-coded data: tables, frame, scan.
#pragma once

#include "codecs/jpeg/byte_source.h"
#include "codecs/jpeg/standard_tables.h"

namespace tiff::jpeg {

namespace marker {
inline constexpr uint8_t FirstFrame = 0xC0, ExtendedFrame = 0xC1, LastFrame = 0xCF;
inline constexpr uint8_t HuffmanTables = 0xC4, ArithmeticConditions = 0xCC;
inline constexpr uint8_t FirstRestart = 0xD0, LastRestart = 0xD7;
inline constexpr uint8_t Start = 0xD8, End = 0xD9, Scan = 0xDA;
inline constexpr uint8_t Quantisers = 0xDB, RestartInterval = 0xDD;
inline constexpr uint8_t Temporary = 0x01, Application14 = 0xEE;
} // namespace marker

inline constexpr uint32_t MOST_COMPONENTS = 4, TABLES = 4, MOST_FACTOR = 4;

constexpr bool IsRestart(uint8_t code)
{
    return code >= marker::FirstRestart && code <= marker::LastRestart;
}

// Tables by their number. An identity of 0 means that there is none.
struct TableSet {
    std::array<Quantisers, TABLES> quantisers;
    std::array<bool, TABLES> hasQuantisers;
    std::array<HuffmanList, TABLES> huffman[2];      // DC and AC
    std::array<uint32_t, TABLES> huffmanIdentity[2]; // another one for every list that was read
    bool hasHuffman;                                 // any
    uint32_t identities;                             // given so far
};

struct FrameComponent {
    uint8_t identifier, horizontal, vertical, quantisers;
};

struct Frame {
    uint32_t width, height;
    uint32_t count; // of components; 0: no frame was read
    FrameComponent components[MOST_COMPONENTS];
};

struct ScanComponent {
    uint32_t index; // in the frame
    uint32_t dcTable, acTable;
};

struct ScanHeader {
    uint32_t count;
    ScanComponent components[MOST_COMPONENTS];
};

// What the segments of a stream say.
struct Header {
    TableSet tables;
    Frame frame;
    uint32_t restartInterval; // in MCUs; 0 for none
    uint8_t adobeTransform;   // 0 when it is not said
};

// Reads a stream from its SOI, or from where it stands, to SOS or EOI, and gives that marker. Fails
// with 5, 6, 11 for a frame that is not baseline or extended Huffman, 12, and 16 for 12-bit samples.
enum class From { Start, Here };
[[nodiscard]] Status ReadSegments(ByteSource& source, From from, Header& header, uint8_t& end);

// Reads the header of a scan. Fails with 5, 6 and 12.
[[nodiscard]] Status ReadScanHeader(ByteSource& source, const Frame& frame, ScanHeader& scan);

// A table stream: only DQT and DHT count. Its early end is none. Fails with 12.
[[nodiscard]] Status ReadTableStream(std::span<const uint8_t> bytes, ByteSource& scratch, TableSet& tables);

} // namespace tiff::jpeg
