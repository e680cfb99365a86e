// Rows are split into planes as they come; a row of MCUs is coded when its last row is there, the missing
// rows and columns of the last repeat its edge.
#include "codecs/jpeg/page_encoder.h"

#include "codecs/buffers.h"
#include "codecs/jpeg/block_encoder.h"
#include "codecs/jpeg/colour.h"
#include "codecs/jpeg/markers.h"
#include "codecs/jpeg/quality.h"
#include "codecs/strips.h"
#include "core/global_block.h"
#include "tiff/define.h"

#include <algorithm>

namespace tiff::jpeg {

namespace {

constexpr uint32_t COLOUR_BITS = 24, SPARE = 64;
constexpr uint32_t CODE_BYTES = 16 * 1024;

struct Encoder {
    bool isColour;
    uint32_t width, mcuSide, mcusAcross;
    uint32_t rows; // in the planes
    size_t stride; // of luminance and of kept pixels
    uint8_t* luminance;
    uint8_t* kept[3];        // the upper of two rows of pixels
    uint8_t* chrominance[2]; // half as wide, 8 rows
    int32_t predictions[3];
    Divisors divisors[2];
    BitWriter writer;
    uint8_t code[CODE_BYTES];
};

Encoder DescribeEncoder(const CodecCall* call)
{
    Encoder encoder{};
    encoder.isColour = call->lineFormat.biBitCount == COLOUR_BITS;
    encoder.width = Width(call);
    encoder.mcuSide = encoder.isColour ? 2 * BLOCK_SIDE : BLOCK_SIDE;
    encoder.mcusAcross = (encoder.width + encoder.mcuSide - 1) / encoder.mcuSide;
    encoder.stride = size_t{encoder.mcusAcross} * encoder.mcuSide + SPARE;
    return encoder;
}

size_t PlaneBytes(const Encoder& encoder)
{
    return encoder.stride * (encoder.isColour ? encoder.mcuSide + 3 + BLOCK_SIDE : encoder.mcuSide);
}

void Prepare(Encoder& encoder, uint8_t* planes, uint32_t quality)
{
    encoder.luminance = planes;
    planes += encoder.stride * encoder.mcuSide;
    for (uint32_t row = 0; encoder.isColour && row < 3; ++row, planes += encoder.stride)
        encoder.kept[row] = planes;
    for (uint32_t kind = 0; encoder.isColour && kind < 2; ++kind, planes += encoder.stride * BLOCK_SIDE / 2)
        encoder.chrominance[kind] = planes;
    encoder.divisors[0] = MakeDivisors(ScaleQuantisers(luminanceQuantisers, quality));
    encoder.divisors[1] = MakeDivisors(ScaleQuantisers(chrominanceQuantisers, quality));
}

void RepeatLast(uint8_t* row, uint32_t width, uint32_t whole)
{
    std::fill(row + width, row + whole, row[width - 1]);
}

// Splits a row; every second one completes a row of chrominance.
void AddRow(Encoder& encoder, const uint8_t* line)
{
    const uint32_t row = encoder.rows++, whole = encoder.mcusAcross * encoder.mcuSide;
    uint8_t* const luminance = encoder.luminance + row * encoder.stride;
    if (!encoder.isColour) {
        std::copy_n(line, encoder.width, luminance);
    } else if (row % 2 == 0) {
        SplitUpper(line, encoder.width, luminance, encoder.kept);
    } else {
        const size_t at = row / 2 * (encoder.stride / 2);
        uint8_t* const planes[] = {encoder.chrominance[0] + at, encoder.chrominance[1] + at};
        SplitLower(line, encoder.width, luminance, encoder.kept, planes[0], planes[1]);
        for (uint8_t* plane : planes)
            RepeatLast(plane, (encoder.width + 1) / 2, whole / 2);
    }
    RepeatLast(luminance, encoder.width, whole);
}

void EncodeSamples(Encoder& encoder, uint32_t component, const uint8_t* samples, size_t stride)
{
    const uint32_t kind = component == 0 ? 0 : 1;
    Block block;
    ToCoefficients(samples, stride, encoder.divisors[kind], block);
    EncodeBlock(encoder.writer, block, static_cast<TableKind>(kind), encoder.predictions[component]);
}

void EncodeMcu(Encoder& encoder, uint32_t mcu)
{
    const uint8_t* const luminance = encoder.luminance + size_t{mcu} * encoder.mcuSide;
    for (uint32_t line = 0; line < encoder.mcuSide; line += BLOCK_SIDE)
        for (uint32_t column = 0; column < encoder.mcuSide; column += BLOCK_SIDE)
            EncodeSamples(encoder, 0, luminance + line * encoder.stride + column, encoder.stride);
    for (uint32_t kind = 0; encoder.isColour && kind < 2; ++kind)
        EncodeSamples(encoder, 1 + kind, encoder.chrominance[kind] + size_t{mcu} * BLOCK_SIDE,
                      encoder.stride / 2);
}

Status PutCode(CodecCall* call, Encoder& encoder)
{
    const auto bytes = static_cast<size_t>(encoder.writer.next - encoder.code);
    encoder.writer.next = encoder.code;
    return PutBytes(call, {encoder.code, bytes});
}

Status EncodeMcuRow(CodecCall* call, Encoder& encoder)
{
    constexpr uint32_t MOST_MCU_BYTES = 6 * MOST_BLOCK_BYTES;
    while (encoder.rows < encoder.mcuSide)
        AddRow(encoder, call->lineBuffer);
    encoder.rows = 0;
    for (uint32_t mcu = 0; mcu < encoder.mcusAcross; ++mcu) {
        EncodeMcu(encoder, mcu);
        if (encoder.writer.next - encoder.code > CODE_BYTES - MOST_MCU_BYTES)
            if (const Status status = PutCode(call, encoder); status != error::None)
                return status;
    }
    return error::None;
}

// SOI, frame and scan.
Status BeginStrip(CodecCall* call, Encoder& encoder)
{
    const uint32_t rows = call->stripLastRow - (call->row - 1) + 1;
    const auto high = [](uint32_t number) { return static_cast<uint8_t>(number >> 8); };
    const auto low = [](uint32_t number) { return static_cast<uint8_t>(number); };
    const uint8_t colour[] = {0xFF,
                              marker::Start,
                              0xFF,
                              marker::FirstFrame,
                              0,
                              17,
                              8,
                              high(rows),
                              low(rows),
                              high(encoder.width),
                              low(encoder.width),
                              3,
                              1,
                              0x22,
                              0,
                              2,
                              0x11,
                              1,
                              3,
                              0x11,
                              1,
                              0xFF,
                              marker::Scan,
                              0,
                              12,
                              3,
                              1,
                              0,
                              2,
                              0x11,
                              3,
                              0x11,
                              0,
                              63,
                              0};
    const uint8_t grey[] = {0xFF,
                            marker::Start,
                            0xFF,
                            marker::FirstFrame,
                            0,
                            11,
                            8,
                            high(rows),
                            low(rows),
                            high(encoder.width),
                            low(encoder.width),
                            1,
                            1,
                            0x11,
                            0,
                            0xFF,
                            marker::Scan,
                            0,
                            8,
                            1,
                            1,
                            0,
                            0,
                            63,
                            0};
    std::ranges::fill(encoder.predictions, 0);
    StartBits(encoder.writer, encoder.code);
    return encoder.isColour ? PutBytes(call, colour) : PutBytes(call, grey);
}

Status EndStrip(CodecCall* call, Encoder& encoder)
{
    constexpr uint8_t end[] = {0xFF, marker::End};
    EndBits(encoder.writer);
    const Status status = PutCode(call, encoder);
    return status == error::None ? PutBytes(call, end) : status;
}

// Takes the line that was just pulled.
Status TakeLine(CodecCall* call, Encoder& encoder, bool& inStrip)
{
    Status status = error::None;
    if (!inStrip)
        status = BeginStrip(call, encoder);
    inStrip = !call->lastLineOfStrip;
    if (status != error::None)
        return status;
    AddRow(encoder, call->lineBuffer);
    if (encoder.rows == encoder.mcuSide || call->lastLineOfStrip)
        status = EncodeMcuRow(call, encoder);
    return status == error::None && call->lastLineOfStrip ? EndStrip(call, encoder) : status;
}

} // namespace

Status DescribeToEncode(CodecContext* context, HGLOBAL file, uint32_t page)
{
    if (const Status status = DescribeStripsToEncode(context, file, page); status != error::None)
        return status;
    uint8_t tables[MOST_TABLE_BYTES];
    const size_t bytes = WriteTables(context->lineFormat.biBitCount == COLOUR_BITS, ThreadQuality(), tables);
    return DefineTiffImageInfoBuffer(file, page, tag::JpegTables, tables, fieldtype::Undefined,
                                     static_cast<uint32_t>(bytes))
               ? error::None
               : error::NotEnoughMemory;
}

// The quality is read before the first line is pulled: the line routine may change the thread's.
Status EncodePage(CodecCall* call)
{
    const Encoder described = DescribeEncoder(call);
    const GlobalBlock state(sizeof(Encoder)), planes(PlaneBytes(described));
    const Locked<Encoder> encoder(state.Get());
    const Locked<uint8_t> bytes(planes.Get());
    if (!encoder || !bytes)
        return error::NotEnoughMemory;
    *encoder = described;
    Prepare(*encoder, bytes.Get(), ThreadQuality());
    call->fillOrder = TIFF_MSB_FIRST;
    bool inStrip = false;
    Status status = InitEncodeBuffers(call);
    while (status == error::None) {
        status = TakeLine(call, *encoder, inStrip);
        if (status == error::None)
            status = FillDataBuffer(call);
    }
    return CodecResult(status);
}

} // namespace tiff::jpeg
