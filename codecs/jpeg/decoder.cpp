#include "codecs/jpeg/decoder.h"

#include "codecs/jpeg/sampling.h"

#include <algorithm>
#include <cstring>

namespace tiff::jpeg {

namespace {

constexpr uint32_t EDGE = 16;  // bytes in front of a line
constexpr uint32_t SPARE = 64; // bytes behind it

uint32_t Parts(uint32_t whole, uint32_t part)
{
    return (whole + part - 1) / part;
}

std::span<Component> ComponentsOf(Decoder& decoder)
{
    return std::span(decoder.components).first(decoder.header.frame.count);
}

uint32_t HorizontalRatio(const Decoder& decoder, const Component& component)
{
    return decoder.mostHorizontal / component.horizontal;
}

uint32_t VerticalRatio(const Decoder& decoder, const Component& component)
{
    return decoder.mostVertical / component.vertical;
}

Status CheckFrame(const Frame& frame, const StripForm& form)
{
    const bool fits = frame.count == form.samples && frame.width == form.width && frame.height >= form.rows;
    return fits ? error::None : error::BadCode;
}

// Factors become sizes. The only component of a frame has one block an MCU, whatever its factors.
Status SizeComponents(Decoder& decoder)
{
    const Frame& frame = decoder.header.frame;
    decoder.mostHorizontal = decoder.mostVertical = 1;
    for (uint32_t index = 0; index < frame.count; ++index) {
        Component& component = decoder.components[index];
        component.horizontal = frame.count == 1 ? 1 : frame.components[index].horizontal;
        component.vertical = frame.count == 1 ? 1 : frame.components[index].vertical;
        component.hasScan = false;
        decoder.mostHorizontal = std::max(decoder.mostHorizontal, component.horizontal);
        decoder.mostVertical = std::max(decoder.mostVertical, component.vertical);
    }
    decoder.mcusAcross = Parts(frame.width, BLOCK_SIDE * decoder.mostHorizontal);
    decoder.mcuRows = Parts(frame.height, BLOCK_SIDE * decoder.mostVertical);
    decoder.mixesLines = false;
    for (Component& component : ComponentsOf(decoder)) {
        if (decoder.mostHorizontal % component.horizontal != 0 ||
            decoder.mostVertical % component.vertical != 0)
            return error::BadCode;
        component.width = Parts(frame.width, HorizontalRatio(decoder, component));
        component.height = Parts(frame.height, VerticalRatio(decoder, component));
        component.blocksAcross = Parts(component.width, BLOCK_SIDE);
        component.blocksDown = Parts(component.height, BLOCK_SIDE);
        decoder.mixesLines |= VerticalRatio(decoder, component) == 2;
    }
    return error::None;
}

// Each component has a line of the row of MCUs before and the lines of one row, and a row widened to pixels.
Status MakeLines(Decoder& decoder, DecoderLines& lines)
{
    const uint64_t rowBytes = uint64_t{decoder.mcusAcross} * decoder.mostHorizontal * BLOCK_SIDE + SPARE;
    const uint64_t scratchSamples = rowBytes + 2 * SPARE;
    uint64_t bytes = scratchSamples * sizeof(int16_t);
    for (const Component& component : ComponentsOf(decoder)) {
        const uint64_t stride =
            EDGE + uint64_t{decoder.mcusAcross} * component.horizontal * BLOCK_SIDE + SPARE;
        bytes += stride * (1 + component.vertical * BLOCK_SIDE) + EDGE + rowBytes;
    }
    if (bytes > lines.bytes) {
        lines.locked.reset();
        lines.block = GlobalBlock(bytes);
        lines.locked.emplace(lines.block.Get());
        lines.bytes = *lines.locked ? bytes : 0;
        if (!*lines.locked)
            return error::NotEnoughMemory;
    }
    uint8_t* at = lines.locked->Get();
    lines.scratch = reinterpret_cast<int16_t*>(at);
    lines.secondScratch = lines.scratch + scratchSamples / 2;
    at += scratchSamples * sizeof(int16_t);
    for (uint32_t index = 0; index < decoder.header.frame.count; ++index) {
        Component& component = decoder.components[index];
        component.stride = EDGE + size_t{decoder.mcusAcross} * component.horizontal * BLOCK_SIDE + SPARE;
        component.lines = at + EDGE + component.stride;
        at += component.stride * (1 + component.vertical * BLOCK_SIDE) + EDGE;
        lines.widened[index] = at;
        at += rowBytes;
    }
    return error::None;
}

// Without any Huffman table in page or stream, the standard's own serve.
void UseStandardLists(TableSet& tables)
{
    if (tables.hasHuffman)
        return;
    constexpr const HuffmanList* lists[2][2] = {{&luminanceDc, &chrominanceDc},
                                                {&luminanceAc, &chrominanceAc}};
    for (uint32_t kind = 0; kind < 2; ++kind)
        for (uint32_t number = 0; number < 2; ++number) {
            tables.huffman[kind][number] = *lists[kind][number];
            tables.huffmanIdentity[kind][number] = UINT32_MAX - kind * 2 - number;
        }
}

// Makes a look-up, unless the component has that of the same list.
Status TakeLookup(const TableSet& tables, CodeKind kind, uint32_t number, HuffmanLookup& lookup,
                  uint32_t& identity)
{
    const auto of = static_cast<size_t>(kind);
    const uint32_t wanted = tables.huffmanIdentity[of][number];
    if (wanted == 0)
        return error::BadCode;
    if (wanted != identity)
        BuildLookup(tables.huffman[of][number], kind, lookup);
    identity = wanted;
    return error::None;
}

Status TakeTables(Decoder& decoder, const ScanComponent& of, Component& component)
{
    const TableSet& tables = decoder.header.tables;
    const uint32_t quantisers = decoder.header.frame.components[of.index].quantisers;
    if (component.hasScan || !tables.hasQuantisers[quantisers])
        return error::BadCode;
    component.hasScan = true;
    component.quantisers = tables.quantisers[quantisers];
    Status status = TakeLookup(tables, CodeKind::Dc, of.dcTable, component.dc, component.dcIdentity);
    if (status == error::None)
        status = TakeLookup(tables, CodeKind::Ac, of.acTable, component.ac, component.acIdentity);
    return status;
}

Status ReadScan(Decoder& decoder)
{
    if (decoder.header.frame.count == 0)
        return error::BadCode;
    ByteSource& source = decoder.sources[0];
    ScanHeader header{};
    if (const Status status = ReadScanHeader(source, decoder.header.frame, header); status != error::None)
        return status;
    UseStandardLists(decoder.header.tables);
    Scan& scan = decoder.scans[decoder.scanCount];
    scan.count = header.count;
    scan.restartInterval = decoder.header.restartInterval;
    scan.position = PositionOf(source);
    uint32_t blocks = 0;
    for (uint32_t at = 0; at < header.count; ++at) {
        Component& component = decoder.components[header.components[at].index];
        if (const Status status = TakeTables(decoder, header.components[at], component);
            status != error::None)
            return status;
        scan.components[at] = &component;
        blocks += component.horizontal * component.vertical;
    }
    if (header.count > 1 && blocks > MOST_BLOCKS)
        return error::BadCode;
    ++decoder.scanCount;
    return error::None;
}

// Passes over the data of a scan; the source then stands at the marker behind it.
Status SkipScan(ByteSource& source)
{
    uint8_t code = marker::FirstRestart;
    while (IsRestart(code))
        if (const Status status = FindMarker(source, code); status != error::None)
            return status;
    MoveTo(source, PositionOf(source) - 2, source.partEnd);
    return error::None;
}

bool AllHaveScans(Decoder& decoder)
{
    return std::ranges::all_of(ComponentsOf(decoder),
                               [](const Component& component) { return component.hasScan; });
}

// Finds the scans, and sizes the components when the first is found.
Status ReadScans(Decoder& decoder, const StripForm& form)
{
    ByteSource& source = decoder.sources[0];
    decoder.scanCount = 0;
    for (From from = From::Start;; from = From::Here) {
        uint8_t end = 0;
        Status status = ReadSegments(source, from, decoder.header, end);
        if (status != error::None)
            return status;
        if (end == marker::End)
            return error::UnexpectedEndOfFile;
        if (from == From::Start) {
            status = CheckFrame(decoder.header.frame, form);
            if (status == error::None)
                status = SizeComponents(decoder);
        }
        if (status == error::None)
            status = ReadScan(decoder);
        if (status != error::None || AllHaveScans(decoder))
            return status;
        if (status = SkipScan(source); status != error::None)
            return status;
    }
}

// Every scan reads through a source of its own.
void StartScans(Decoder& decoder)
{
    const ByteSource& first = decoder.sources[0];
    const uint32_t partEnd = first.partEnd;
    for (uint32_t index = 0; index < decoder.scanCount; ++index) {
        ByteSource& source = decoder.sources[index];
        if (index > 0)
            OpenSource(source, first.stream, first.fileEnd);
        MoveTo(source, decoder.scans[index].position, partEnd);
        StartScan(decoder.scans[index], source);
    }
}

// A line of a component in the current row of MCUs; -1 is the last of the row before.
uint8_t* LineOf(const Component& component, int32_t line)
{
    return component.lines + line * static_cast<ptrdiff_t>(component.stride);
}

// The lines that a row of pixels is made of.
MixedLines LinesOf(const Decoder& decoder, const Component& component, int32_t row)
{
    const auto ratio = static_cast<int32_t>(VerticalRatio(decoder, component));
    const int32_t line = row < 0 ? -1 : row / ratio;
    const int32_t neighbour = ratio != 2 ? line : row % 2 == 0 ? line - 1 : line + 1;
    return {LineOf(component, line), LineOf(component, neighbour)};
}

// The pixels' row of a component.
const uint8_t* RowOf(const Decoder& decoder, const DecoderLines& lines, uint32_t index, int32_t row)
{
    const Component& component = decoder.components[index];
    const uint32_t across = HorizontalRatio(decoder, component);
    const MixedLines mixed = LinesOf(decoder, component, row);
    if (across == 1 && mixed.line == mixed.neighbour)
        return mixed.line;
    WidenRow(mixed, component.width, across, lines.widened[index], decoder.header.frame.width, lines.scratch);
    return lines.widened[index];
}

Colours ColoursOf(const Decoder& decoder, const StripForm& form)
{
    constexpr uint8_t ADOBE_YCCK = 2;
    return form.asksAdobe && decoder.header.adobeTransform == ADOBE_YCCK ? Colours::Ycck : form.colours;
}

// Whether chroma is half as wide as luminance, as in most pictures.
bool HasHalfChroma(const Decoder& decoder)
{
    const Component* const component = decoder.components;
    return HorizontalRatio(decoder, component[0]) == 1 && HorizontalRatio(decoder, component[1]) == 2 &&
           HorizontalRatio(decoder, component[2]) == 2;
}

void JoinRow(const Decoder& decoder, const DecoderLines& lines, Colours colours, int32_t row, uint8_t* pixels)
{
    const Frame& frame = decoder.header.frame;
    if (colours == Colours::YCbCr && HasHalfChroma(decoder)) {
        const Component &cb = decoder.components[1], &cr = decoder.components[2];
        const int16_t* const mixedCb = MixChroma(LinesOf(decoder, cb, row), cb.width, lines.scratch);
        const int16_t* const mixedCr = MixChroma(LinesOf(decoder, cr, row), cr.width, lines.secondScratch);
        return JoinWidened(RowOf(decoder, lines, 0, row), mixedCb, mixedCr, pixels, frame.width);
    }
    PlaneRows planes{};
    for (uint32_t index = 0; index < frame.count; ++index)
        planes.rows[index] = RowOf(decoder, lines, index, row);
    JoinPlanes(planes, frame.count, colours, pixels, frame.width);
}

// Rows of the current row of MCUs, from -1 on.
Status TakeRows(Decoder& decoder, const DecoderLines& lines, const StripForm& form, const RowTaker& taker,
                int32_t from, int32_t to)
{
    const Colours colours = ColoursOf(decoder, form);
    for (int32_t row = from; row < to; ++row) {
        JoinRow(decoder, lines, colours, row, taker.place(taker.record));
        if (const Status status = taker.take(taker.record); status != error::None)
            return status;
    }
    return error::None;
}

// The line above the first is the first once more, and the one below the last the last.
void RepeatEdges(Decoder& decoder, uint32_t mcuRow)
{
    for (const Component& component : ComponentsOf(decoder)) {
        const uint32_t linesOfRow = component.vertical * BLOCK_SIDE;
        if (mcuRow == 0)
            std::memcpy(LineOf(component, -1), LineOf(component, 0), component.width);
        const uint32_t left = component.height - std::min(component.height, mcuRow * linesOfRow);
        if (left > 0 && left < linesOfRow)
            std::memcpy(LineOf(component, static_cast<int32_t>(left)),
                        LineOf(component, static_cast<int32_t>(left) - 1), component.width);
    }
}

// The last line stays for the next row of MCUs.
void KeepLastLines(Decoder& decoder)
{
    for (const Component& component : ComponentsOf(decoder)) {
        const auto last = static_cast<int32_t>(component.vertical * BLOCK_SIDE) - 1;
        std::memcpy(LineOf(component, -1), LineOf(component, last), component.width);
    }
}

// The row that waited for the next row of MCUs, when there is none.
void RepeatLastLines(Decoder& decoder)
{
    for (const Component& component : ComponentsOf(decoder))
        std::memcpy(LineOf(component, 0), LineOf(component, -1), component.width);
}

Status DecodeRow(Decoder& decoder, uint32_t mcuRow)
{
    for (Scan& scan : std::span(decoder.scans).first(decoder.scanCount))
        if (const Status status = DecodeMcuRow(scan, decoder.mcusAcross, mcuRow); status != error::None)
            return status;
    return error::None;
}

// With mixed lines, the last row of each row of MCUs waits for the next.
Status DecodeRows(Decoder& decoder, const DecoderLines& lines, const StripForm& form, const RowTaker& taker,
                  uint32_t& taken)
{
    const uint32_t rowsOfMcu = decoder.mostVertical * BLOCK_SIDE;
    const int32_t waiting = decoder.mixesLines ? 1 : 0;
    Status decoded = error::None;
    for (uint32_t mcuRow = 0; taken < form.rows && decoded == error::None; ++mcuRow) {
        int32_t from = mcuRow == 0 ? 0 : -waiting;
        auto to = static_cast<int32_t>(rowsOfMcu) - waiting;
        decoded = mcuRow < decoder.mcuRows ? DecodeRow(decoder, mcuRow) : Status{error::None};
        if (decoded == error::UnexpectedEndOfFile || mcuRow == decoder.mcuRows) {
            RepeatLastLines(decoder);
            to = 0;
        } else if (decoded != error::None) {
            return decoded;
        } else if (decoder.mixesLines) {
            RepeatEdges(decoder, mcuRow);
        }
        to = std::min(to, static_cast<int32_t>(form.rows - taken) + from);
        if (const Status status = TakeRows(decoder, lines, form, taker, from, to); status != error::None)
            return status;
        taken += to > from ? static_cast<uint32_t>(to - from) : 0;
        if (decoder.mixesLines)
            KeepLastLines(decoder);
    }
    return decoded;
}

} // namespace

Status DecodeStream(Decoder& decoder, DecoderLines& lines, const StripForm& form, const RowTaker& taker,
                    uint32_t& taken)
{
    decoder.header.frame = {};
    decoder.header.restartInterval = 0;
    decoder.header.adobeTransform = 0;
    // Identities go on counting: they must differ from those of earlier streams.
    const uint32_t identities = decoder.header.tables.identities;
    decoder.header.tables = decoder.pageTables;
    decoder.header.tables.identities = std::max(identities, decoder.pageTables.identities);
    taken = 0;
    Status status = ReadScans(decoder, form);
    if (status == error::None)
        status = MakeLines(decoder, lines);
    if (status != error::None)
        return status;
    StartScans(decoder);
    return DecodeRows(decoder, lines, form, taker, taken);
}

} // namespace tiff::jpeg
