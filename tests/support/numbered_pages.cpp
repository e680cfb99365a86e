#include "support/numbered_pages.h"

#include "support/tiff_dump.h"

#include <gtest/gtest.h>

TiffPage Page(uint32_t number)
{
    return TiffPage::Picture(8, 2, 1, 1)
        .Short(278, {1})
        .Short(297, {number, 9})
        .Ascii(270, "page " + std::to_string(number))
        .Strips({Bytes(1 + number % 3, static_cast<uint8_t>(number)), Hex("55")})
        .StoredOrder({1, 0});
}

Bytes Pages(uint32_t count, uint16_t byteOrder)
{
    TiffBuilder builder(byteOrder);
    for (uint32_t number = 0; number < count; ++number)
        builder.Add(Page(number));
    return builder.Build();
}

std::string PagesDiffer(const char* path, const Bytes& original, const Order& order)
{
    const Bytes file = ReadFileBytes(path);
    const auto pages = PagesOf(file), old = PagesOf(original);
    std::string wrong = Complaints(file);
    if (pages.size() != order.size())
        return wrong + std::to_string(pages.size()) + " pages\n";
    for (size_t index = 0; index < order.size(); ++index) {
        const bool right = order[index] == NEW ? pages[index].find("data 273: A5\n") != std::string::npos
                                               : pages[index] == old[static_cast<size_t>(order[index])];
        if (!right)
            wrong += "page " + std::to_string(index) + " is\n" + pages[index];
    }
    return wrong;
}

void ExpectPages(const char* path, const Bytes& original, const Order& order)
{
    EXPECT_EQ(PagesDiffer(path, original, order), "");
}

bool Exists(const std::string& path)
{
    return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}
