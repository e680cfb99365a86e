// The dialogs of CALS files, answered by the numbers of their controls.
#include "gdi/desktop.h"
#include "support/pictures.h"
#include "tiff/cals.h"

#include <gtest/gtest.h>
#include <map>
#include <thread>

namespace {

// How to answer the next dialog, and what was seen in it.
struct Visit {
    std::map<int, std::string> texts{}; // to be put into controls
    int button = IDCANCEL;
    std::string caption{};
    std::map<int, std::string> seen{}; // text by control
    std::vector<std::string> list{};
    SIZE size{};
};

thread_local Visit* visit;

BOOL CALLBACK SeeControl(HWND control, LPARAM)
{
    char text[300] = {};
    GetWindowTextA(control, text, sizeof(text));
    if (GetDlgCtrlID(control) > 0)
        visit->seen[GetDlgCtrlID(control)] = text;
    return TRUE;
}

void CALLBACK AnswerDialog(HWND, UINT, UINT_PTR, DWORD) noexcept
{
    HWND dialog = GetActiveWindow();
    char kind[16] = {}, text[300] = {};
    GetClassNameA(dialog, kind, sizeof(kind));
    if (!dialog || std::string(kind) != "#32770")
        return;
    GetWindowTextA(dialog, text, sizeof(text));
    visit->caption = text;
    RECT room, units = {0, 0, 331, 207};
    GetClientRect(dialog, &room);
    MapDialogRect(dialog, &units);
    visit->size = {MulDiv(room.right, 331, units.right), MulDiv(room.bottom, 207, units.bottom)};
    EnumChildWindows(dialog, SeeControl, 0);
    HWND list = GetDlgItem(dialog, 1001);
    for (LRESULT line = 0; list && line < SendMessageA(list, LB_GETCOUNT, 0, 0); ++line) {
        SendMessageA(list, LB_GETTEXT, static_cast<WPARAM>(line), reinterpret_cast<LPARAM>(text));
        visit->list.emplace_back(text);
    }
    for (const auto& [control, value] : visit->texts)
        SetDlgItemTextA(dialog, control, value.c_str());
    SendMessageA(dialog, WM_COMMAND, static_cast<WPARAM>(visit->button), 0);
}

template <class Call>
auto Answer(Visit& expected, Call call)
{
    visit = &expected;
    const UINT_PTR timer = SetTimer(nullptr, 0, 10, AnswerDialog);
    const auto result = call();
    KillTimer(nullptr, timer);
    return result;
}

std::string HeaderOf(const char* path)
{
    const Bytes file = ReadFileBytes(path);
    return {file.begin(), file.begin() + 2048};
}

Bytes SmallDib()
{
    return PackedDib({8, 2, 1, {0xFFFFFF, 0}, Hex("18000000 18000000")});
}

} // namespace

TEST(CalsDialogs, ShowTheRecords)
{
    const TempFile file({});
    const Block dib(SmallDib());
    TiffCalsNotes notes{};
    notes.figid = "seven: eight";
    ASSERT_EQ(SaveDIBInCALSFormat(file.Path(), dib.Get(), &notes, nullptr, 0), 1);
    Visit info{.button = IDOK};
    EXPECT_EQ(Answer(info, [&] { return ShowCALSInfo(nullptr, file.Path()); }), 1);
    EXPECT_EQ(info.caption, "CALS Info");
    EXPECT_EQ(info.seen[111], file.Path());
    EXPECT_NEAR(info.size.cx, 331, 2);
    EXPECT_NEAR(info.size.cy, 194, 2);
    ASSERT_EQ(info.list.size(), 11u);
    EXPECT_EQ(info.list[0], "srcdocid    : NONE");
    EXPECT_EQ(info.list[3], "figid       : seven: eight");
    EXPECT_EQ(info.list[8], "rpelcnt     : 000008,000002");
    Visit cancel;
    EXPECT_EQ(Answer(cancel, [&] { return LoadCALSIntoDIB(file.Path(), 1); }), nullptr);
    EXPECT_EQ(TiffError(), 0u);
    Visit goOn{.button = IDOK};
    GlobalFree(Answer(goOn, [&] { return LoadCALSIntoDIB(file.Path(), 1); }));
    EXPECT_EQ(TiffError(), 0u);
    EXPECT_EQ(ShowCALSInfo(nullptr, "no such file"), 0);
    EXPECT_EQ(TiffError(), 6u);
}

TEST(CalsDialogs, EditTheNotes)
{
    const TempFile file(Hex("01 02 03"));
    const Block dib(SmallDib());
    const auto save = [&] { return SaveDIBInCALSFormat(file.Path(), dib.Get(), nullptr, nullptr, 1); };
    Visit cancel{.texts = {{1006, "lost"}}};
    EXPECT_EQ(Answer(cancel, save), 0);
    EXPECT_EQ(TiffError(), 0u);
    EXPECT_EQ(ReadFileBytes(file.Path()), Hex("01 02 03"));
    EXPECT_EQ(cancel.caption, "Save CALS ");
    EXPECT_NEAR(cancel.size.cx, 347, 2);
    EXPECT_NEAR(cancel.size.cy, 207, 2);
    EXPECT_EQ(cancel.seen[1013], file.Path());
    EXPECT_EQ(cancel.seen[111] + cancel.seen[1003] + cancel.seen[1004] + cancel.seen[1005],
              "rtype: 1rorient: 090,270rpelcnt: 000008,000002rdensty: 0200");
    for (int control = 1006; control <= 1012; ++control)
        EXPECT_EQ(cancel.seen[control], "NONE");
    Visit edit{.texts = {{1006, "source"}, {1007, ""}, {1012, std::string(200, 'n')}}, .button = IDOK};
    EXPECT_EQ(Answer(edit, save), 1);
    const std::string header = HeaderOf(file.Path());
    EXPECT_EQ(header.substr(0, 20), "srcdocid: source    ");
    EXPECT_EQ(header.substr(128, 128), "dstdocis: " + std::string(118, ' '));
    EXPECT_EQ(header.substr(10 * 128, 128), "notes: " + std::string(120, 'n') + " ");
    HGLOBAL loaded = LoadCALSIntoDIB(file.Path(), 0);
    EXPECT_NE(loaded, nullptr);
    GlobalFree(loaded);
    EXPECT_EQ(EditCALSHead(nullptr, file.Path(), nullptr), 0);
    EXPECT_EQ(TiffError(), 29u);
}

TEST(CalsDialogs, EachThreadHasItsOwn)
{
    const std::string path = TIFF_SOURCE_DIR "/samples/drawing.cal";
    Bytes head(2048, ' ');
    std::copy_n("notes: of a thread", 18, head.begin());
    int32_t other = 0;
    Visit inside{.button = IDOK};
    Visit outside{.button = IDOK};
    std::thread thread([&] {
        other = Answer(inside,
                       [&] { return EditCALSHead(nullptr, "other", reinterpret_cast<char*>(head.data())); });
    });
    EXPECT_EQ(Answer(outside, [&] { return ShowCALSInfo(nullptr, path.c_str()); }), 1);
    thread.join();
    EXPECT_EQ(other, 1);
    EXPECT_EQ(outside.seen[111], path);
    EXPECT_EQ(inside.seen[1013] + inside.seen[1012], "otherof a thread");
}
