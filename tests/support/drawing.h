// A page whose rows are like the row above but for a few pixels, runs of any length, fine
// patterns, nothing at all and noise: every mode and every kind of run comes up.
#pragma once

#include "support/raw_stream.h"
#include "tiff/ccitt.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

struct Drawing {
    uint32_t width;
    std::mt19937 random;
    Bytes row;

    Drawing(uint32_t width, uint32_t seed) : width(width), random(seed), row((width + 7) / 8)
    {
    }
    uint32_t Below(uint32_t limit)
    {
        return static_cast<uint32_t>(random() % limit);
    }
    const Bytes& NextRow()
    {
        const uint32_t kind = Below(16);
        if (kind == 0)
            row.assign(row.size(), Below(3) == 0 ? 0xFF : 0);
        else if (kind <= 2)
            std::generate(row.begin(), row.end(),
                          [&] { return static_cast<uint8_t>(kind == 1 ? random() : 0x11); });
        const uint32_t changes = kind < 8 ? Below(width / 16 + 2) : Below(4);
        for (uint32_t change = 0; change < changes; ++change) {
            uint32_t column = Below(width);
            const uint32_t end = column + 1 + Below(1u << Below(kind == 3 ? 12 : 5));
            for (; column < std::min(end, width); ++column)
                row[column / 8] ^= static_cast<uint8_t>(0x80 >> column % 8);
        }
        return row;
    }
};

inline intptr_t DrawRow(void* line, uint32_t, void* drawing)
{
    const Bytes& row = static_cast<Drawing*>(drawing)->NextRow();
    std::copy(row.begin(), row.end(), static_cast<uint8_t*>(line));
    return 0;
}

// The code of the next rows; records when the compression is 0.
inline Bytes CodeOf(Drawing& drawing, uint32_t rows, uint32_t compression)
{
    const RawStream code;
    const int32_t coded =
        compression ? EncodeCcittImage(code.stream, drawing.width, rows, compression, &drawing, DrawRow)
                    : EncodeMMRImage(code.stream, drawing.width, rows, 0, &drawing, DrawRow);
    EXPECT_EQ(coded, 1);
    return code.Written();
}
