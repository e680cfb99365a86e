// Shows an error to the user instead of returning it to the caller.
#include "tiff/errors.h"

#include <gtest/gtest.h>
#include <string>
#include <thread>

namespace {

constexpr DWORD PATIENCE = 10000; // milliseconds

HWND WaitForBox()
{
    for (DWORD waited = 0; waited < PATIENCE; waited += 20) {
        if (HWND box = FindWindowA(nullptr, "TIFF error"))
            return box;
        Sleep(20);
    }
    return nullptr;
}

std::string TextOf(HWND box)
{
    std::string all;
    for (HWND child = GetWindow(box, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
        char text[128] = {};
        GetWindowTextA(child, text, sizeof(text));
        all += text;
    }
    return all;
}

} // namespace

TEST(Errors, WithoutABufferTheTextIsShown)
{
    char* result = reinterpret_cast<char*>(1);
    std::thread shown([&result] { result = TiffErrorString(nullptr, 6); });
    const HWND box = WaitForBox();
    ASSERT_NE(box, nullptr);
    EXPECT_NE(TextOf(box).find("General I/O error in reading or writing."), std::string::npos);
    PostMessageA(box, WM_COMMAND, IDOK, 0);
    shown.join();
    EXPECT_EQ(result, nullptr);
}
