// The viewer as a user has it: its own process, driven by its commands and read from its window.
#include "gdi/desktop.h"
#include "tools/view_ids.h"

#include <gtest/gtest.h>

namespace {

const std::string SAMPLES = TIFF_SOURCE_DIR "/samples/";

// A viewer with a file for a scope.
class RunningViewer {
public:
    explicit RunningViewer(const std::string& file)
    {
        std::string program = LibraryFile();
        program.replace(program.rfind("TIFF.DLL"), std::string::npos, "tiffview.exe");
        std::string line = "\"" + program + "\" \"" + file + "\"";
        STARTUPINFOA start{};
        start.cb = sizeof(start);
        EXPECT_TRUE(CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start,
                                   &process));
        for (int wait = 0; wait < 200 && (!page || After(0) == "tiffview"); ++wait) {
            Sleep(50);
            frame = FindWindowA("tiffview", nullptr);
            page = frame ? FindWindowExA(frame, nullptr, "tiffview page", nullptr) : nullptr;
        }
    }
    RunningViewer(const RunningViewer&) = delete;
    RunningViewer& operator=(const RunningViewer&) = delete;
    ~RunningViewer()
    {
        SendMessageA(frame, WM_CLOSE, 0, 0);
        EXPECT_EQ(WaitForSingleObject(process.hProcess, 10'000), WAIT_OBJECT_0);
        DWORD code = 99;
        GetExitCodeProcess(process.hProcess, &code);
        EXPECT_EQ(code, 0u);
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
    }
    // The status bar after a command; the title after 0.
    std::string After(WORD command) const
    {
        if (command)
            SendMessageA(frame, WM_COMMAND, command, 0);
        char text[300] = {};
        if (command)
            SendMessageA(FindWindowExA(frame, nullptr, "msctls_statusbar32", nullptr), WM_GETTEXT,
                         sizeof(text), reinterpret_cast<LPARAM>(text));
        else
            GetWindowTextA(frame, text, sizeof(text));
        return text;
    }
    bool Scrolls() const
    {
        return (GetWindowLongPtrA(page, GWL_STYLE) & (WS_HSCROLL | WS_VSCROLL)) != 0;
    }

    HWND frame = nullptr, page = nullptr;

private:
    PROCESS_INFORMATION process{};
};

} // namespace

TEST(Viewer, TurnsPagesAndChangesItsView)
{
    const RunningViewer viewer(SAMPLES + "fax-g4.tif");
    ASSERT_NE(viewer.page, nullptr);
    EXPECT_EQ(viewer.After(0), "fax-g4.tif - tiffview");
    const std::string second = viewer.After(CMD_NEXT_PAGE);
    EXPECT_EQ(second.substr(0, 50), "Page 2 of 3: 1728 x 2292, Group 4, 204 x 196 dpi, ");
    EXPECT_FALSE(viewer.Scrolls());
    EXPECT_EQ(viewer.After(CMD_LAST_PAGE).substr(0, 11), "Page 3 of 3");
    EXPECT_EQ(viewer.After(CMD_NEXT_PAGE).substr(0, 11), "Page 3 of 3");
    EXPECT_EQ(viewer.After(CMD_FIRST_PAGE).substr(0, 11), "Page 1 of 3");
    EXPECT_EQ(viewer.After(CMD_PREVIOUS_PAGE).substr(0, 11), "Page 1 of 3");
    EXPECT_NE(viewer.After(CMD_TRUE_SIZE).find(", 100 %"), std::string::npos);
    EXPECT_TRUE(viewer.Scrolls());
    EXPECT_NE(viewer.After(CMD_ZOOM_IN).find(", 125 %"), std::string::npos);
    EXPECT_NE(viewer.After(CMD_ZOOM_OUT).find(", 100 %"), std::string::npos);
    SendMessageA(viewer.page, WM_VSCROLL, SB_PAGEDOWN, 0);
    SendMessageA(viewer.frame, WM_KEYDOWN, VK_RIGHT, 0);
    const std::string wide = viewer.After(CMD_FIT_WIDTH);
    EXPECT_NE(viewer.After(CMD_TURN_LEFT), wide);
    EXPECT_EQ(viewer.After(CMD_TURN_RIGHT), wide);
    viewer.After(CMD_INVERT);
    viewer.After(CMD_PIXELS);
    UpdateWindow(viewer.page);
    viewer.After(CMD_COPY);
    const Picture copied = OnClipboard();
    EXPECT_EQ(copied.width, 1728);
    EXPECT_EQ(copied.height, 2292);
}

TEST(Viewer, ShowsCalsFilesAndSaysWhatItCannotShow)
{
    {
        const RunningViewer viewer(SAMPLES + "drawing.cal");
        EXPECT_EQ(viewer.After(CMD_FIRST_PAGE).substr(0, 46),
                  "Page 1 of 1: 413 x 97, CALS Group 4, 200 dpi, ");
    }
    for (const char* name : {"README.md", "no such file.tif", "truncated-g4.tif", "grey16.tif"}) {
        SCOPED_TRACE(name);
        const RunningViewer viewer(SAMPLES + name);
        ASSERT_NE(viewer.page, nullptr);
        EXPECT_EQ(viewer.After(0), std::string(name) + " - tiffview");
        viewer.After(CMD_NEXT_PAGE);
        viewer.After(CMD_TURN_RIGHT);
        UpdateWindow(viewer.page);
    }
}
