#include "raster/rotate.h"

#include "core/byte_order.h"
#include "raster/dib.h"

#include <algorithm>

namespace tiff {

namespace {

struct Target {
    uint8_t* first;
    uint32_t stride;

    uint8_t* Row(uint32_t row) const
    {
        return first + size_t{row} * stride;
    }
};

// Rows of a column that are in the processor's cache while the next column is taken.
constexpr uint32_t CLOSE_ROWS = 64;

template <size_t PIXEL>
void CopyPixel(uint8_t* target, const uint8_t* source)
{
    for (size_t byte = 0; byte < PIXEL; ++byte)
        target[byte] = source[byte];
}

template <size_t PIXEL>
void ReversePixels(const PixelRows& rows, Target target)
{
    for (uint32_t row = 0; row < rows.count; ++row) {
        const uint8_t* from = rows.Row(row);
        uint8_t* to = target.Row(rows.count - 1 - row);
        for (uint32_t column = 0; column < rows.width; ++column)
            CopyPixel<PIXEL>(to + size_t{rows.width - 1 - column} * PIXEL, from + size_t{column} * PIXEL);
    }
}

// The reversed bytes hold the padding first: it is shifted out.
void ReverseBitRows(const PixelRows& rows, Target target)
{
    const uint32_t bytes = (rows.width + 7) / 8, padding = bytes * 8 - rows.width;
    for (uint32_t row = 0; row < rows.count; ++row) {
        const uint8_t* from = rows.Row(row);
        uint8_t* to = target.Row(rows.count - 1 - row);
        uint32_t before = reversedBits[from[bytes - 1]];
        for (uint32_t byte = 0; byte + 1 < bytes; ++byte) {
            const uint32_t next = reversedBits[from[bytes - 2 - byte]];
            to[byte] = static_cast<uint8_t>((before << 8 | next) >> (8 - padding));
            before = next;
        }
        to[bytes - 1] = static_cast<uint8_t>(before << padding);
    }
}

// Which row becomes a column, and which column a row.
struct Quarter {
    bool rowsFromLast, columnsFromLast;

    uint32_t Row(uint32_t column, const PixelRows& rows) const
    {
        return rowsFromLast ? rows.count - 1 - column : column;
    }
    uint32_t TargetRow(uint32_t column, const PixelRows& rows) const
    {
        return columnsFromLast ? rows.width - 1 - column : column;
    }
};

template <size_t PIXEL>
void TurnPixels(Quarter turn, const PixelRows& rows, Target target)
{
    for (uint32_t left = 0; left < rows.count; left += CLOSE_ROWS) {
        const uint32_t behind = std::min(rows.count - left, CLOSE_ROWS) + left;
        for (uint32_t column = 0; column < rows.width; ++column) {
            uint8_t* to = target.Row(turn.TargetRow(column, rows)) + size_t{left} * PIXEL;
            for (uint32_t row = left; row < behind; ++row, to += PIXEL)
                CopyPixel<PIXEL>(to, rows.Row(turn.Row(row, rows)) + size_t{column} * PIXEL);
        }
    }
}

// To be written from the left.
void PutNibble(uint8_t* row, uint32_t pixel, uint32_t value)
{
    row[pixel / 2] = static_cast<uint8_t>(pixel % 2 ? row[pixel / 2] | value : value << 4);
}

void ReverseNibbles(const PixelRows& rows, Target target)
{
    for (uint32_t row = 0; row < rows.count; ++row) {
        uint8_t* to = target.Row(rows.count - 1 - row);
        for (uint32_t column = 0; column < rows.width; ++column)
            PutNibble(to, column, NibbleAt(rows.Row(row), rows.width - 1 - column));
    }
}

void TurnNibbles(Quarter turn, const PixelRows& rows, Target target)
{
    for (uint32_t left = 0; left < rows.count; left += CLOSE_ROWS) {
        const uint32_t behind = std::min(rows.count - left, CLOSE_ROWS) + left;
        for (uint32_t column = 0; column < rows.width; ++column) {
            uint8_t* to = target.Row(turn.TargetRow(column, rows));
            for (uint32_t row = left; row < behind; ++row)
                PutNibble(to, row, NibbleAt(rows.Row(turn.Row(row, rows)), column));
        }
    }
}

// Eight rows of eight bits, the first row in the highest byte, become columns: three exchanges of ever
// larger squares across the diagonal.
uint64_t TurnSquare(uint64_t square)
{
    uint64_t moved = (square ^ square >> 7) & 0x00AA00AA00AA00AAu;
    square ^= moved ^ moved << 7;
    moved = (square ^ square >> 14) & 0x0000CCCC0000CCCCu;
    square ^= moved ^ moved << 14;
    moved = (square ^ square >> 28) & 0x00000000F0F0F0F0u;
    return square ^ moved ^ moved << 28;
}

void TurnBits(Quarter turn, const PixelRows& rows, Target target)
{
    for (uint32_t left = 0; left < rows.count; left += 8) {
        const uint8_t* from[8];
        const uint32_t present = std::min(rows.count - left, 8u);
        for (uint32_t row = 0; row < present; ++row)
            from[row] = rows.Row(turn.Row(left + row, rows));
        for (uint32_t column = 0; column < rows.width; column += 8) {
            uint64_t square = 0;
            for (uint32_t row = 0; row < present; ++row)
                square |= uint64_t{from[row][column / 8]} << (56 - 8 * row);
            // Most of a page is white.
            if (square != 0)
                square = TurnSquare(square);
            const uint32_t lines = std::min(rows.width - column, 8u);
            for (uint32_t line = 0; line < lines; ++line)
                target.first[size_t{turn.TargetRow(column + line, rows)} * target.stride + left / 8] =
                    static_cast<uint8_t>(square >> (56 - 8 * line));
        }
    }
}

// By PixelForm.
constexpr struct FormTurns {
    void (*half)(const PixelRows& rows, Target target);
    void (*quarter)(Quarter turn, const PixelRows& rows, Target target);
} formTurns[] = {
    {ReverseBitRows, TurnBits},    {ReversePixels<1>, TurnPixels<1>}, {ReversePixels<3>, TurnPixels<3>},
    {ReverseNibbles, TurnNibbles}, {ReversePixels<2>, TurnPixels<2>}, {ReversePixels<4>, TurnPixels<4>},
};

} // namespace

void TurnRows(Turn turn, PixelForm form, const PixelRows& rows, uint8_t* target, uint32_t targetStride)
{
    if (rows.count == 0 || rows.width == 0)
        return;
    const FormTurns& turns = formTurns[static_cast<size_t>(form)];
    const Target to{target, targetStride};
    if (turn == Turn::Half)
        turns.half(rows, to);
    else
        turns.quarter({turn == Turn::Quarter, turn == Turn::ThreeQuarters}, rows, to);
}

} // namespace tiff
