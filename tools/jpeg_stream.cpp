#include "jpeg_stream.h"

#include "chain.h"
#include "commands.h"
#include "describe.h"

#include <algorithm>
#include <cstring>
#include <numeric>
#include <string_view>

namespace tifftool {

namespace {

constexpr uint8_t SOI = 0xD8, EOI = 0xD9, SOS = 0xDA, DHT = 0xC4, DQT = 0xDB, DAC = 0xCC, COM = 0xFE;
constexpr uint8_t JFIF = 0xE0, EXIF = 0xE1, ADOBE = 0xEE, FIRST_APP = 0xE0, LAST_APP = 0xEF;

bool IsFrame(uint8_t code)
{
    return code >= 0xC0 && code <= 0xCF && code != DHT && code != DAC;
}

std::string FaultOfFrame(uint8_t code, uint32_t precision)
{
    if (code >= 0xC9) {
        return "arithmetic coding";
    }
    if (code >= 0xC5) {
        return "hierarchical JPEG";
    }
    if (code >= 0xC2) {
        return code == 0xC2 ? "progressive JPEG" : "lossless JPEG";
    }
    return precision == 8 ? "" : "JPEG of " + std::to_string(precision) + " bits";
}

uint32_t Big16(std::span<const uint8_t> bytes, size_t at)
{
    return at + 2 <= bytes.size() ? bytes[at] * 256u + bytes[at + 1] : 0;
}

void ReadFrame(uint8_t code, std::span<const uint8_t> content, JpegStream& stream)
{
    if (content.size() < 6 || content.size() < 6u + content[5] * 3u) {
        stream.fault = "a broken JPEG stream";
        return;
    }
    stream.fault = FaultOfFrame(code, content[0]);
    stream.height = Big16(content, 1);
    stream.width = Big16(content, 3);
    for (size_t at = 6; at < 6u + content[5] * 3u; at += 3) {
        stream.components.push_back({content[at], static_cast<uint8_t>(content[at + 1] >> 4),
                                     static_cast<uint8_t>(content[at + 1] & 15)});
    }
}

// The nearest quality: that whose quantisers have this sum.
uint32_t QualityOf(std::span<const uint8_t> quantisers)
{
    constexpr uint32_t SUM_AT_50 = 3688;
    const uint32_t sum = std::accumulate(quantisers.begin(), quantisers.end(), 0u);
    const uint32_t percent = std::max((sum * 100 + SUM_AT_50 / 2) / SUM_AT_50, 1u);
    return percent <= 100 ? (200 - percent + 1) / 2 : std::max(5000 / percent, 1u);
}

void ReadJfif(std::span<const uint8_t> content, JpegStream& stream)
{
    if (content.size() < 12 || std::memcmp(content.data(), "JFIF", 5) != 0 || content[7] == 0) {
        return;
    }
    stream.perCentimetre = content[7] == 2;
    stream.dots[0] = Big16(content, 8) * 1000;
    stream.dots[1] = Big16(content, 10) * 1000;
}

// A directory in either byte order.
struct ExifView {
    std::span<const uint8_t> bytes;
    bool motorola;

    uint32_t Number(size_t at, size_t count) const
    {
        uint32_t number = 0;
        for (size_t index = 0; index < count; ++index) {
            const size_t place = at + (motorola ? index : count - 1 - index);
            number = number << 8 | (place < bytes.size() ? bytes[place] : 0u);
        }
        return number;
    }
    uint32_t Thousandths(size_t entry) const
    {
        const uint32_t at = Number(entry + 8, 4), divisor = Number(size_t{at} + 4, 4);
        return divisor ? static_cast<uint32_t>(
                             std::min<uint64_t>(Number(at, 4) * uint64_t{1000} / divisor, UINT32_MAX))
                       : 0;
    }
};

void ReadExif(std::span<const uint8_t> content, JpegStream& stream)
{
    if (content.size() < 14 || std::memcmp(content.data(), "Exif\0", 6) != 0) {
        return;
    }
    const ExifView exif = {content.subspan(6), content[6] == 'M'};
    const size_t directory = exif.Number(4, 4);
    uint32_t dots[2] = {}, unit = 2;
    for (size_t entry = directory + 2; entry + 12 <= exif.bytes.size(); entry += 12) {
        if ((entry - directory - 2) / 12 >= exif.Number(directory, 2)) {
            break;
        }
        switch (exif.Number(entry, 2)) {
        case 274:
            stream.orientation = std::clamp(exif.Number(entry + 8, 2), 1u, 8u);
            break;
        case 282:
            dots[0] = exif.Thousandths(entry);
            break;
        case 283:
            dots[1] = exif.Thousandths(entry);
            break;
        case 296:
            unit = exif.Number(entry + 8, 2);
            break;
        default:
            break;
        }
    }
    if (stream.dots[0] == 0 && dots[0] != 0 && dots[1] != 0) {
        std::copy_n(dots, 2, stream.dots);
        stream.perCentimetre = unit == 3;
    }
}

void Append(std::vector<uint8_t>& target, std::span<const uint8_t> bytes)
{
    target.insert(target.end(), bytes.begin(), bytes.end());
}

void ReadSegment(std::span<const uint8_t> segment, JpegStream& stream)
{
    const uint8_t code = segment[1];
    const auto content = segment.subspan(4);
    if (IsFrame(code)) {
        ReadFrame(code, content, stream);
    } else if (code == DQT && stream.quality == 0 && content.size() >= 65 && content[0] == 0) {
        stream.quality = QualityOf(content.subspan(1, 64));
    } else if (code == JFIF) {
        ReadJfif(content, stream);
    } else if (code == EXIF) {
        ReadExif(content, stream);
    } else if (code == ADOBE && content.size() >= 12 && std::memcmp(content.data(), "Adobe", 5) == 0) {
        stream.adobeTransform = content[11];
    }
    const bool isNote = (code >= FIRST_APP && code <= LAST_APP) || code == COM;
    if (code == DQT || code == DHT) {
        Append(stream.tables, segment);
    } else if (!isNote) {
        Append(stream.otherwise, segment);
    }
}

// The place behind EOI, from a scan on; the end of the bytes without one.
size_t EndOfScans(std::span<const uint8_t> bytes, size_t at)
{
    while (at + 1 < bytes.size()) {
        const uint8_t code = bytes[at + 1];
        if (bytes[at] != 0xFF || code == 0 || code == 0xFF || (code >= 0xD0 && code <= 0xD7)) {
            ++at;
        } else if (code == EOI) {
            return at + 2;
        } else {
            at += 2 + std::max(Big16(bytes, at + 2), 2u);
        }
    }
    return bytes.size();
}

std::vector<uint8_t> TablesOf(HGLOBAL file, uint32_t page)
{
    HGLOBAL block = nullptr;
    uint32_t count = 0;
    if (!GetTiffImageInfoBuffer(file, page, 347, &block, nullptr, &count)) {
        return {};
    }
    const OwnedBlock values(block);
    const JpegStream read = ReadJpeg({values.bytes, std::min<size_t>(values.size, count)});
    return read.tables;
}

} // namespace

JpegStream ReadJpeg(std::span<const uint8_t> bytes)
{
    JpegStream stream;
    stream.fault = "a broken JPEG stream";
    if (bytes.size() < 2 || bytes[0] != 0xFF || bytes[1] != SOI) {
        return stream;
    }
    Append(stream.otherwise, bytes.first(2));
    size_t at = 2;
    while (at + 4 <= bytes.size() && bytes[at] == 0xFF) {
        const uint8_t code = bytes[at + 1];
        const size_t length = size_t{Big16(bytes, at + 2)} + 2;
        if (code == 0xFF) {
            ++at;
        } else if (code == SOS) {
            Append(stream.otherwise, bytes.subspan(at, EndOfScans(bytes, at) - at));
            return stream;
        } else if (code == EOI || length < 4 || at + length > bytes.size()) {
            break;
        } else {
            ReadSegment(bytes.subspan(at, length), stream);
            at += length;
        }
    }
    if (stream.fault.empty()) {
        stream.fault = "a JPEG stream without a picture";
    }
    return stream;
}

std::string DescribeSampling(const JpegStream& stream)
{
    if (stream.components.size() < 3) {
        return "";
    }
    const auto& first = stream.components[0];
    const bool others = std::all_of(stream.components.begin() + 1, stream.components.begin() + 3,
                                    [](const auto& one) { return one.horizontal == 1 && one.vertical == 1; });
    static constexpr struct {
        uint8_t factors[2];
        const char* name;
    } names[] = {
        {{1, 1}, "4:4:4"}, {{2, 1}, "4:2:2"}, {{1, 2}, "4:4:0"}, {{2, 2}, "4:2:0"}, {{4, 1}, "4:1:1"}};
    for (const auto& [factors, name] : names) {
        if (others && first.horizontal == factors[0] && first.vertical == factors[1]) {
            return name;
        }
    }
    std::string words = "sampling";
    for (const auto& [identifier, horizontal, vertical] : stream.components) {
        words += " " + std::to_string(horizontal) + "x" + std::to_string(vertical);
    }
    return words;
}

std::vector<uint8_t> FirstStream(HGLOBAL file, const std::string& path, uint32_t page)
{
    const auto offsets = NumbersOf(file, page, 273), counts = NumbersOf(file, page, 279);
    if (offsets.empty()) {
        return {};
    }
    RawFile raw(path);
    constexpr size_t MOST_BYTES = size_t{1} << 30;
    const size_t bytes = counts.empty() || counts[0] == 0 ? MOST_BYTES : counts[0];
    std::vector<uint8_t> stream = ReadBytes(raw, offsets[0], std::min(bytes, MOST_BYTES));
    const std::vector<uint8_t> tables = TablesOf(file, page);
    if (stream.size() >= 2) {
        stream.insert(stream.begin() + 2, tables.begin(), tables.end());
    }
    return stream;
}

std::string DescribeJpeg(HGLOBAL file, const std::string& path, uint32_t page, std::string& fault)
{
    const JpegStream stream = ReadJpeg(FirstStream(file, path, page));
    fault = stream.fault;
    const std::string sampling = DescribeSampling(stream);
    return (sampling.empty() ? "" : ", " + sampling) +
           (stream.quality ? ", quality " + std::to_string(stream.quality) : "");
}

} // namespace tifftool
