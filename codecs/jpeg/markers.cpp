#include "codecs/jpeg/markers.h"

#include <cstring>

namespace tiff::jpeg {

namespace {

// The rest of a segment.
struct Segment {
    ByteSource& source;
    uint32_t left;
};

Status NextOf(Segment& segment, uint8_t& byte)
{
    if (segment.left == 0)
        return error::BadCode;
    --segment.left;
    return NextByte(segment.source, byte);
}

Status NextOf(Segment& segment, std::span<uint8_t> bytes)
{
    for (uint8_t& byte : bytes)
        if (const Status status = NextOf(segment, byte); status != error::None)
            return status;
    return error::None;
}

uint32_t Number16(const uint8_t* bytes)
{
    return bytes[0] * 256u + bytes[1];
}

Status BeginSegment(Segment& segment)
{
    uint8_t length[2] = {};
    segment.left = sizeof(length);
    if (const Status status = NextOf(segment, length); status != error::None)
        return status;
    const uint32_t bytes = Number16(length);
    segment.left = bytes - 2;
    return bytes >= 2 ? error::None : error::BadCode;
}

Status SkipRest(Segment& segment)
{
    uint8_t byte;
    while (segment.left > 0)
        if (const Status status = NextOf(segment, byte); status != error::None)
            return status;
    return error::None;
}

Status ReadQuantisers(Segment& segment, TableSet& tables)
{
    while (segment.left > 0) {
        uint8_t head = 0;
        if (const Status status = NextOf(segment, head); status != error::None)
            return status;
        const uint32_t number = head & 15, wide = head >> 4;
        if (number >= TABLES || wide > 1)
            return error::BadCode;
        Quantisers read{};
        for (uint16_t& quantiser : read) {
            uint8_t bytes[2] = {};
            const Status status = NextOf(segment, std::span(bytes).last(1 + wide));
            if (status != error::None)
                return status;
            quantiser = static_cast<uint16_t>(Number16(bytes));
        }
        tables.quantisers[number] = read;
        tables.hasQuantisers[number] = true;
    }
    return error::None;
}

Status ReadHuffmanLists(Segment& segment, TableSet& tables)
{
    while (segment.left > 0) {
        uint8_t head = 0;
        if (const Status status = NextOf(segment, head); status != error::None)
            return status;
        const uint32_t number = head & 15, kind = head >> 4;
        HuffmanList list{};
        if (number >= TABLES || kind > 1)
            return error::BadCode;
        if (const Status status = NextOf(segment, list.counts); status != error::None)
            return status;
        uint32_t values = 0;
        for (const uint8_t count : list.counts)
            values += count;
        if (!IsComplete(list))
            return error::BadCode;
        if (const Status status = NextOf(segment, std::span(list.values).first(values));
            status != error::None)
            return status;
        tables.huffman[kind][number] = list;
        tables.huffmanIdentity[kind][number] = ++tables.identities;
        tables.hasHuffman = true;
    }
    return error::None;
}

bool AreFactors(const FrameComponent& component)
{
    return component.horizontal >= 1 && component.horizontal <= MOST_FACTOR && component.vertical >= 1 &&
           component.vertical <= MOST_FACTOR && component.quantisers < TABLES;
}

Status ReadFrame(Segment& segment, Frame& frame)
{
    constexpr uint32_t TWELVE_BITS = 12;
    uint8_t head[6] = {};
    if (const Status status = NextOf(segment, head); status != error::None)
        return status;
    if (head[0] == TWELVE_BITS)
        return error::ColourFormat;
    const uint32_t count = head[5];
    if (head[0] != 8 || frame.count != 0 || count == 0 || count > MOST_COMPONENTS)
        return error::BadCode;
    frame = {.width = Number16(head + 3), .height = Number16(head + 1), .count = count};
    for (FrameComponent& component : std::span(frame.components).first(count)) {
        uint8_t bytes[3] = {};
        if (const Status status = NextOf(segment, bytes); status != error::None)
            return status;
        component = {bytes[0], static_cast<uint8_t>(bytes[1] >> 4), static_cast<uint8_t>(bytes[1] & 15),
                     bytes[2]};
        if (!AreFactors(component))
            return error::BadCode;
    }
    return error::None;
}

Status ReadRestartInterval(Segment& segment, Header& header)
{
    uint8_t bytes[2] = {};
    const Status status = NextOf(segment, bytes);
    header.restartInterval = Number16(bytes);
    return status;
}

// "Adobe", version, two words of flags, transform.
Status ReadAdobe(Segment& segment, Header& header)
{
    uint8_t bytes[12] = {};
    if (segment.left < sizeof(bytes))
        return error::None;
    const Status status = NextOf(segment, bytes);
    if (status == error::None && std::memcmp(bytes, "Adobe", 5) == 0)
        header.adobeTransform = bytes[11];
    return status;
}

bool IsFrame(uint8_t code)
{
    return code >= marker::FirstFrame && code <= marker::LastFrame && code != marker::HuffmanTables &&
           code != marker::ArithmeticConditions;
}

Status ReadSegment(uint8_t code, Segment& segment, Header& header)
{
    switch (code) {
    case marker::FirstFrame:
    case marker::ExtendedFrame:
        return ReadFrame(segment, header.frame);
    case marker::HuffmanTables:
        return ReadHuffmanLists(segment, header.tables);
    case marker::Quantisers:
        return ReadQuantisers(segment, header.tables);
    case marker::RestartInterval:
        return ReadRestartInterval(segment, header);
    case marker::Application14:
        return ReadAdobe(segment, header);
    default:
        return IsFrame(code) ? error::UnknownCompression : error::None;
    }
}

// Fill bytes may stand before a marker, but nothing else.
Status NextMarker(ByteSource& source, uint8_t& code)
{
    Status status = NextByte(source, code);
    if (status == error::None && code != 0xFF)
        return error::BadCode;
    while (status == error::None && code == 0xFF)
        status = NextByte(source, code);
    return status != error::None || code != 0 ? status : Status{error::BadCode};
}

} // namespace

Status ReadSegments(ByteSource& source, From from, Header& header, uint8_t& end)
{
    for (bool first = from == From::Start;; first = false) {
        uint8_t code = 0;
        if (const Status status = NextMarker(source, code); status != error::None)
            return status;
        if ((first && code != marker::Start) || IsRestart(code))
            return error::BadCode;
        if (code == marker::Start) {
            header.restartInterval = 0;
            continue;
        }
        if (code == marker::Temporary)
            continue;
        end = code;
        if (code == marker::End || code == marker::Scan)
            return error::None;
        Segment segment{source, 0};
        Status status = BeginSegment(segment);
        if (status == error::None)
            status = ReadSegment(code, segment, header);
        if (status == error::None)
            status = SkipRest(segment);
        if (status != error::None)
            return status;
    }
}

Status ReadScanHeader(ByteSource& source, const Frame& frame, ScanHeader& scan)
{
    Segment segment{source, 0};
    uint8_t count = 0;
    Status status = BeginSegment(segment);
    if (status == error::None)
        status = NextOf(segment, count);
    if (status != error::None)
        return status;
    if (count == 0 || count > frame.count)
        return error::BadCode;
    scan.count = count;
    for (ScanComponent& component : std::span(scan.components).first(count)) {
        uint8_t bytes[2] = {};
        if (status = NextOf(segment, bytes); status != error::None)
            return status;
        component = {0, uint32_t{bytes[1]} >> 4, bytes[1] & 15u};
        while (component.index < frame.count && frame.components[component.index].identifier != bytes[0])
            ++component.index;
        if (component.index == frame.count || component.dcTable >= TABLES || component.acTable >= TABLES)
            return error::BadCode;
    }
    return SkipRest(segment);
}

Status ReadTableStream(std::span<const uint8_t> bytes, ByteSource& scratch, TableSet& tables)
{
    Header header{};
    uint8_t end = 0;
    OpenMemory(scratch, bytes);
    const Status status = ReadSegments(scratch, From::Start, header, end);
    tables = header.tables;
    return status == error::None || status == error::UnexpectedEndOfFile ? error::None : error::BadCode;
}

} // namespace tiff::jpeg
