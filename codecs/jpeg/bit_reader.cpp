#include "codecs/jpeg/bit_reader.h"

#include "codecs/jpeg/markers.h"

namespace tiff::jpeg {

void StartBits(BitReader& reader, ByteSource& source)
{
    reader = {.now = {.next = source.next, .plainEnd = source.end}, .source = &source};
}

void EndBits(const BitReader& reader)
{
    reader.source->next = reader.now.next;
}

static void AppendByte(BitReader& reader, uint8_t byte)
{
    reader.now.bits |= uint64_t{byte} << (56 - reader.now.count);
    reader.now.count += 8;
}

// An FF is data when 0 follows. Fill bytes may stand before a marker.
static void TakeAfterFF(BitReader& reader)
{
    ByteSource& source = *reader.source;
    uint8_t byte = 0xFF;
    while (byte == 0xFF && reader.status == error::None)
        reader.status = NextByte(source, byte);
    if (reader.status == error::None && byte == 0)
        AppendByte(reader, 0xFF);
    else if (reader.status == error::None)
        reader.marker = byte;
}

// The fast path leaves bits behind the counted ones.
void RefillSlowly(BitReader& reader)
{
    ByteSource& source = *reader.source;
    Bits& bits = reader.now;
    source.next = bits.next;
    bits.bits = bits.count ? bits.bits & ~uint64_t{0} << (64 - bits.count) : 0;
    while (bits.count <= 56) {
        uint8_t byte = 0;
        if (reader.status == error::None && reader.marker == 0)
            reader.status = NextByte(source, byte);
        if (reader.status != error::None || reader.marker != 0) {
            bits.count += 8;
            reader.zeros += 8;
        } else if (byte == 0xFF) {
            TakeAfterFF(reader);
        } else {
            AppendByte(reader, byte);
        }
    }
    bits.next = source.next;
    bits.plainEnd = reader.marker == 0 ? source.end : source.next;
}

Status FindMarker(ByteSource& source, uint8_t& marker)
{
    uint8_t byte = 0;
    for (;;) {
        Status status = error::None;
        while (byte != 0xFF && status == error::None)
            status = NextByte(source, byte);
        while (byte == 0xFF && status == error::None)
            status = NextByte(source, byte);
        if (status != error::None)
            return status;
        if (byte != 0) {
            marker = byte;
            return error::None;
        }
    }
}

} // namespace tiff::jpeg
