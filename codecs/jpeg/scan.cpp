#include "codecs/jpeg/scan.h"

#include "core/sixteen.h"

#include <algorithm>

namespace tiff::jpeg {

namespace {

constexpr uint32_t RESTARTS = 8;

void ClearBlock(Block& block)
{
    for (uint32_t at = 0; at < BLOCK_SIZE; at += BLOCK_SIDE)
        StoreSixteen(&block.coefficients[at], SixteenOf(0));
}

// The lowest and highest number that the transform takes.
inline int16_t Multiply(int32_t coefficient, uint16_t quantiser)
{
    return static_cast<int16_t>(std::clamp(coefficient * int32_t{quantiser}, -32768, 32767));
}

// The next code, its coefficient in `value`. False for bits that are no code.
inline bool NextCode(Bits& bits, BitReader& reader, const HuffmanLookup& lookup, CodeKind kind,
                     CodeEntry& entry, int32_t& value)
{
    NeedBits(bits, reader);
    entry = lookup.entries[Peek(bits, LOOKUP_BITS)];
    if (entry.bits == 0) [[unlikely]] {
        entry = FindLongCode(lookup, Peek(bits, LONGEST_CODE), kind);
        if (entry.bits == 0)
            return false;
    }
    Skip(bits, entry.bits);
    value = entry.value;
    if (entry.run & FOLLOWS) {
        const auto count = static_cast<uint32_t>(entry.value);
        value = Extend(Peek(bits, count), count);
        Skip(bits, count);
    }
    return true;
}

inline bool DecodeCodes(Bits& bits, BitReader& reader, Component& component, Block& block, uint32_t& places)
{
    CodeEntry entry;
    int32_t value;
    if (!NextCode(bits, reader, component.dc, CodeKind::Dc, entry, value))
        return false;
    component.prediction = static_cast<int16_t>(component.prediction + value);
    block.coefficients[0] = Multiply(component.prediction, component.quantisers[0]);
    for (uint32_t at = 1; at < BLOCK_SIZE; ++at) {
        if (!NextCode(bits, reader, component.ac, CodeKind::Ac, entry, value))
            return false;
        const uint32_t run = entry.run & ~uint32_t{FOLLOWS};
        at += run;
        if (at >= BLOCK_SIZE)
            return run == BLOCK_ENDS;
        const uint32_t place = placeInBlock[at];
        block.coefficients[place] = Multiply(value, component.quantisers[at]);
        places |= place;
    }
    return true;
}

// Decodes and multiplies a block, all of whose coefficients are 0. Gives all bits of their places.
bool DecodeBlock(BitReader& reader, Component& component, Block& block, uint32_t& places)
{
    Bits bits = reader.now;
    uint32_t found = 0;
    const bool isCode = DecodeCodes(bits, reader, component, block, found);
    reader.now = bits;
    places = found;
    return isCode;
}

// Data that end early are missing up to the next restart, or for good. Bits that are no code may be the last
// byte's filling, with made-up bits behind it.
Status AfterBlock(Scan& scan, bool isCode)
{
    const BitReader& reader = scan.reader;
    if (isCode && !HasEnded(reader)) [[likely]]
        return error::None;
    if (reader.now.count >= reader.zeros + (isCode ? 0 : LONGEST_CODE))
        return error::BadCode;
    if (IsRestart(reader.marker) && scan.restartInterval != 0) {
        scan.isMissing = true;
        return error::None;
    }
    if (reader.marker == marker::End)
        return error::UnexpectedEndOfFile;
    return reader.marker != 0 ? Status{error::BadCode} : reader.status;
}

// Decodes the next block. The transform comes after all blocks of an MCU, when their coefficients have
// reached the cache.
Status NextBlock(Scan& scan, Component& component, uint8_t* samples)
{
    PendingBlock& pending = scan.pending[scan.pendingCount++];
    ClearBlock(pending.block);
    pending.samples = samples;
    pending.stride = component.stride;
    pending.places = 0;
    if (scan.isMissing)
        return error::None;
    const bool isCode = DecodeBlock(scan.reader, component, pending.block, pending.places);
    return AfterBlock(scan, isCode);
}

void FinishBlocks(Scan& scan)
{
    for (const PendingBlock& pending : std::span(scan.pending).first(scan.pendingCount))
        ToSamples(pending.block, pending.places, pending.samples, pending.stride);
    scan.pendingCount = 0;
}

// A marker that is up to two ahead says that data before it are lost; one that is up to two behind is a
// left-over itself. Any other is taken for the one expected.
Status Resynchronise(Scan& scan)
{
    BitReader& reader = scan.reader;
    ByteSource& source = *reader.source;
    uint8_t code = reader.marker;
    EndBits(reader);
    for (;;) {
        if (code == 0)
            if (const Status status = FindMarker(source, code); status != error::None)
                return status;
        if (!IsRestart(code)) {
            reader.marker = code;
            return code == marker::End ? error::UnexpectedEndOfFile : error::BadCode;
        }
        const uint32_t ahead = (uint32_t{code} - marker::FirstRestart - scan.nextRestart) % RESTARTS;
        if (ahead == 1 || ahead == 2) {
            scan.isMissing = true;
            StartBits(reader, source);
            reader.marker = code;
            reader.now.plainEnd = reader.now.next;
            return error::None;
        }
        if (ahead < RESTARTS - 2)
            break;
        code = 0;
    }
    StartBits(reader, source);
    return error::None;
}

Status CountMcu(Scan& scan)
{
    if (scan.restartInterval == 0 || scan.untilRestart-- > 0)
        return error::None;
    scan.untilRestart = scan.restartInterval - 1;
    scan.isMissing = false;
    for (Component* component : std::span(scan.components).first(scan.count))
        component->prediction = 0;
    const Status status = Resynchronise(scan);
    scan.nextRestart = (scan.nextRestart + 1) % RESTARTS;
    return status;
}

Status DecodeMcu(Scan& scan, uint32_t mcu)
{
    for (Component* component : std::span(scan.components).first(scan.count)) {
        uint8_t* samples = component->lines + size_t{mcu} * component->horizontal * BLOCK_SIDE;
        for (uint32_t line = 0; line < component->vertical; ++line, samples += component->stride * BLOCK_SIDE)
            for (uint32_t column = 0; column < component->horizontal; ++column)
                if (const Status status = NextBlock(scan, *component, samples + column * BLOCK_SIDE);
                    status != error::None)
                    return status;
    }
    FinishBlocks(scan);
    return error::None;
}

Status DecodeTogether(Scan& scan, uint32_t mcusAcross)
{
    Status status = error::None;
    for (uint32_t mcu = 0; mcu < mcusAcross && status == error::None; ++mcu) {
        status = CountMcu(scan);
        if (status == error::None)
            status = DecodeMcu(scan, mcu);
    }
    return status;
}

Status DecodeBlockLine(Scan& scan, Component& component, uint8_t* samples)
{
    Status status = error::None;
    for (uint32_t column = 0; column < component.blocksAcross && status == error::None; ++column) {
        status = CountMcu(scan);
        if (status == error::None)
            status = NextBlock(scan, component, samples + column * BLOCK_SIDE);
        if (scan.pendingCount == MOST_BLOCKS || column + 1 == component.blocksAcross)
            FinishBlocks(scan);
    }
    return status;
}

// Alone, a component has the blocks that its samples need and no others.
Status DecodeAlone(Scan& scan, uint32_t mcuRow)
{
    Component& component = *scan.components[0];
    const uint32_t first = mcuRow * component.vertical;
    Status status = error::None;
    for (uint32_t line = 0; line < component.vertical && first + line < component.blocksDown; ++line)
        if (status == error::None)
            status = DecodeBlockLine(scan, component, component.lines + line * BLOCK_SIDE * component.stride);
    return status;
}

} // namespace

void StartScan(Scan& scan, ByteSource& source)
{
    StartBits(scan.reader, source);
    scan.untilRestart = scan.restartInterval;
    scan.nextRestart = 0;
    scan.isMissing = false;
    scan.pendingCount = 0;
    for (Component* component : std::span(scan.components).first(scan.count))
        component->prediction = 0;
}

Status DecodeMcuRow(Scan& scan, uint32_t mcusAcross, uint32_t mcuRow)
{
    return scan.count == 1 ? DecodeAlone(scan, mcuRow) : DecodeTogether(scan, mcusAcross);
}

} // namespace tiff::jpeg
