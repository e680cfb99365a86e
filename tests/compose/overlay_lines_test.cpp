#include "compose/overlay_lines.h"

#include <gtest/gtest.h>

#include <string>

TEST(OverlayLines, MoveDownBehindALineEndOnly)
{
    static constexpr struct {
        const char *text, *lines; // "+" is one line down
    } rows[] = {
        {"", ""},
        {"\r\n\n", ""},
        {"a", "[a]"},
        {"a\r\nb", "[a]+[b]"},
        {"a\nb", "[a][b]"},
        {"a\rb", "[a][b]"},
        {"a\n\nb", "[a]+[b]"},
        {"a\r\n\r\nb\r\n", "[a]++[b]"},
        {"\nb", "[b]"},
        {"\r\n\tb c", "+[\tb c]"},
    };
    for (const auto& row : rows) {
        std::string lines;
        const char* text = row.text;
        for (tiff::OverlayLine line; tiff::TakeLine(text, line);)
            lines += std::string(line.linesDown, '+') + '[' +
                     std::string(line.text.begin(), line.text.end()) + ']';
        EXPECT_EQ(lines, row.lines) << row.text;
        EXPECT_EQ(*text, 0);
    }
}

TEST(OverlayLines, DistancesAreRounded)
{
    using tiff::ScaleDistance;
    EXPECT_EQ(ScaleDistance(7, 0, 96), 7);
    EXPECT_EQ(ScaleDistance(10, 204, 96), 21);
    EXPECT_EQ(ScaleDistance(2, 120, 96), 3);
    EXPECT_EQ(ScaleDistance(-10, 204, 96), -20); // cut off, not rounded down
    EXPECT_EQ(ScaleDistance(INT32_MAX, UINT32_MAX, 1), INT32_MAX);
    EXPECT_EQ(ScaleDistance(INT32_MIN, UINT32_MAX, 1), INT32_MIN);
}
