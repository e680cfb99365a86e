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

namespace {

// The notes of a file's first page, as soon as there are so many.
std::vector<TiffNote> NotesOf(const char* path, size_t count)
{
    std::vector<TiffNote> notes(99);
    for (int wait = 0; wait < 100 && notes.size() != count; ++wait) {
        Sleep(50);
        HGLOBAL file = OpenTiffFile(path, T_READ);
        GetTiffImage(file, 0);
        notes.resize(static_cast<size_t>(GetTiffNoteCount(file, 0)));
        for (uint32_t index = 0; index < notes.size(); ++index)
            GetTiffNote(file, 0, index, &notes[index], nullptr, 0);
        CloseTiffFile(file);
    }
    return notes;
}

// Gives another text to the note in the viewer's dialog, which shows this one.
void AnswerNote(const char* shown, const char* text)
{
    HWND dialog = nullptr;
    for (int wait = 0; wait < 100 && !dialog; ++wait) {
        Sleep(50);
        dialog = FindWindowA("#32770", "Note");
    }
    ASSERT_NE(dialog, nullptr);
    char before[100] = {};
    SendDlgItemMessageA(dialog, 1001, WM_GETTEXT, sizeof(before), reinterpret_cast<LPARAM>(before));
    EXPECT_STREQ(before, shown);
    SendDlgItemMessageA(dialog, 1001, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text));
    SendMessageA(dialog, WM_COMMAND, IDOK, 0);
}

void Click(HWND page, UINT message, int x, int y)
{
    PostMessageA(page, message, MK_LBUTTON, MAKELPARAM(x, y));
}

std::vector<int32_t> Sides(const TiffNote& note)
{
    return {note.left, note.top, note.right, note.bottom};
}

} // namespace

TEST(Viewer, AddsEditsAndDeletesNotes)
{
    const TempFile file(OnePage(TiffPage::Picture(300, 200, 1, 1).Strips({Bytes(size_t{38} * 200, 0xFF)})));
    const RunningViewer viewer(file.Path());
    ASSERT_NE(viewer.page, nullptr);
    viewer.After(CMD_PIXELS);
    Click(viewer.page, WM_LBUTTONDOWN, 100, 50);
    Click(viewer.page, WM_MOUSEMOVE, 150, 90);
    Click(viewer.page, WM_LBUTTONUP, 200, 120);
    AnswerNote("", "one");
    std::vector<TiffNote> notes = NotesOf(file.Path(), 1);
    ASSERT_EQ(notes.size(), 1u);
    EXPECT_EQ(Sides(notes[0]), (std::vector<int32_t>{100, 50, 200, 120}));
    EXPECT_EQ(notes[0].textBytes, 3u);
    // On the black page the frame is white inside.
    UpdateWindow(viewer.page);
    Sleep(200);
    POINT inside = {190, 110};
    ClientToScreen(viewer.page, &inside);
    HDC screen = GetDC(nullptr);
    EXPECT_EQ(GetPixel(screen, inside.x, inside.y), RGB(255, 255, 255));
    ReleaseDC(nullptr, screen);
    // Turned right, down the window is to the right on the page.
    viewer.After(CMD_TURN_RIGHT);
    Click(viewer.page, WM_LBUTTONDOWN, 60, 90);
    Click(viewer.page, WM_LBUTTONUP, 20, 30);
    AnswerNote("", "second");
    notes = NotesOf(file.Path(), 2);
    ASSERT_EQ(notes.size(), 2u);
    EXPECT_EQ(Sides(notes[1]), (std::vector<int32_t>{30, 140, 90, 180}));
    Click(viewer.page, WM_LBUTTONDBLCLK, 40, 60);
    AnswerNote("second", "more than one");
    for (int wait = 0; wait < 100 && notes[1].textBytes != 13; ++wait)
        notes = NotesOf(file.Path(), 2);
    EXPECT_EQ(notes[1].textBytes, 13u);
    // A click beside all notes chooses none.
    Click(viewer.page, WM_LBUTTONDOWN, 5, 5);
    Click(viewer.page, WM_LBUTTONUP, 5, 5);
    PostMessageA(viewer.frame, WM_KEYDOWN, VK_DELETE, 0);
    viewer.After(CMD_TURN_LEFT);
    EXPECT_EQ(NotesOf(file.Path(), 2).size(), 2u);
    Click(viewer.page, WM_LBUTTONDOWN, 150, 60);
    Click(viewer.page, WM_LBUTTONUP, 151, 60);
    PostMessageA(viewer.frame, WM_KEYDOWN, VK_DELETE, 0);
    notes = NotesOf(file.Path(), 1);
    ASSERT_EQ(notes.size(), 1u);
    EXPECT_EQ(notes[0].textBytes, 13u);
}
