#include "tiff/errors.h"

#include <gtest/gtest.h>
#include <thread>

TEST(Errors, OnlyKnownCodesAreTakenFromCallers)
{
    static constexpr struct {
        uint32_t code, after;
    } rows[] = {{6, 6}, {38, 6}, {0xFFFFFFFF, 6}, {9990, 6}, {37, 37}, {0, 0}};
    SetTiffError(0);
    uint32_t before = 0;
    for (const auto& [code, after] : rows) {
        SCOPED_TRACE(code);
        EXPECT_EQ(SetTiffError(code), before);
        EXPECT_EQ(TiffError(), after);
        before = after;
    }
}

TEST(Errors, TextsReadAsCallersKnowThem)
{
    static constexpr struct {
        int32_t code;
        const char* text;
    } rows[] = {
        {0, "Operation was successful."},
        {28, "KvDlgs.dll does not exist."},
        {30, "Bad (compressed) Device Independent Bimap."},
        {31, "Not PIW Format"},
        {35, "Can't append an Intel-type TIF to a Motorola-type TIF"},
        {37, "Unknown error."},
        {38, "Such tag is not defined."}, // unknown codes stand for the last error
        {-1, "Such tag is not defined."},
    };
    SetTiffError(13);
    for (const auto& [code, text] : rows) {
        SCOPED_TRACE(code);
        char buffer[64];
        EXPECT_EQ(TiffErrorString(buffer, code), buffer);
        EXPECT_STREQ(buffer, text);
    }
}

TEST(Errors, EachThreadHasItsOwn)
{
    SetTiffError(6);
    uint32_t other = 99;
    std::thread([&other] {
        other = TiffError();
        SetTiffError(12);
    }).join();
    EXPECT_EQ(other, 0u);
    EXPECT_EQ(TiffError(), 6u);
}
