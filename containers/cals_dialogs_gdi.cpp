// The dialogs of CALS files, from the library's resources. A request travels to its dialog through the
// thread's state: two threads may show one each.
#include "containers/cals_dialogs.h"

#include "containers/cals_rows.h"
#include "core/errors.h"
#include "core/file_names.h"
#include "core/process_state.h"
#include "core/thread_state.h"
#include "raster/dialog_texts_gdi.h"
#include "resources/ids.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <utility>

namespace tiff::cals {

namespace {

struct DialogState {
    const DialogRequest* request;
};

DialogState& ThreadDialog()
{
    return SettingsIn<DialogState>(ThreadState().containers);
}

// A line of text as a control takes it. A record leaves room for the end.
using ControlText = char[RECORD_BYTES + 16];

void CopyText(std::string_view text, ControlText& control)
{
    const size_t length = std::min(text.size(), sizeof(ControlText) - 1);
    std::memcpy(control, text.data(), length);
    control[length] = 0;
}

// "keyword     : value", or the record as it stands without a colon.
void DescribeRecord(std::string_view record, ControlText& line)
{
    const size_t colon = record.find(':');
    if (colon == std::string_view::npos) {
        CopyText(record, line);
        return;
    }
    ControlText keyword, value;
    CopyText(record.substr(0, colon), keyword);
    std::string_view rest = record.substr(colon + 1);
    rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
    CopyText(rest, value);
    std::snprintf(line, sizeof(line), "%-12.12s: %s", keyword, value);
}

// Records that are all blank are none.
void ListRecords(HWND list, Header header)
{
    SendMessageA(list, WM_SETFONT, reinterpret_cast<WPARAM>(GetStockObject(ANSI_FIXED_FONT)), 0);
    for (size_t at = 0; at < HEADER_BYTES; at += RECORD_BYTES) {
        const std::string_view record = ReadValue(header, at, 0);
        if (record.empty())
            continue;
        ControlText line;
        DescribeRecord(record, line);
        SendMessageA(list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(line));
    }
    // A full record in the fixed font.
    constexpr WPARAM MOST_PIXELS = 140 * 8;
    SendMessageA(list, LB_SETHORIZONTALEXTENT, MOST_PIXELS, 0);
}

bool EndOnButton(HWND dialog, WPARAM command)
{
    if (LOWORD(command) != IDOK && LOWORD(command) != IDCANCEL)
        return false;
    EndDialog(dialog, LOWORD(command));
    return true;
}

// A path with bytes that its code page does not have is shown as far as the system understands it.
void ShowPath(HWND dialog, int control, const char* path)
{
    WCHAR wide[MAX_PATH_BYTES];
    if (WidenPath(path, wide))
        SetDlgItemTextW(dialog, control, wide);
    else
        SetDlgItemTextA(dialog, control, path);
}

INT_PTR CALLBACK RunInfo(HWND dialog, UINT message, WPARAM command, LPARAM) noexcept
{
    if (message == WM_COMMAND)
        return EndOnButton(dialog, command);
    if (message != WM_INITDIALOG)
        return FALSE;
    const DialogRequest& request = *ThreadDialog().request;
    ShowPath(dialog, CALS_INFO_PATH, request.path);
    ListRecords(GetDlgItem(dialog, CALS_INFO_RECORDS), Header(request.header, HEADER_BYTES));
    return TRUE;
}

struct FieldControl {
    int control;
    Field field;
};

constexpr FieldControl shownFields[] = {
    {CALS_EDIT_TYPE, Field::RasterType},
    {CALS_EDIT_ORIENTATION, Field::Orientation},
    {CALS_EDIT_PIXELS, Field::PixelCount},
    {CALS_EDIT_DENSITY, Field::Density},
};

constexpr FieldControl editedFields[] = {
    {CALS_EDIT_SOURCE, Field::SourceDocument}, {CALS_EDIT_DESTINATION, Field::DestinationDocument},
    {CALS_EDIT_TEXT_FILE, Field::TextFile},    {CALS_EDIT_FIGURE, Field::Figure},
    {CALS_EDIT_GRAPH, Field::SourceGraph},     {CALS_EDIT_CLASS, Field::DocumentClass},
    {CALS_EDIT_NOTES, Field::Notes},
};

void ShowFields(HWND dialog, Header header)
{
    ControlText text;
    std::string_view keyword;
    for (const FieldControl& shown : shownFields)
        if (const size_t at = FindRecord(header, shown.field, keyword); at < HEADER_BYTES) {
            CopyText(ReadValue(header, at, 0), text);
            ShowText(dialog, shown.control, text);
        }
    for (const FieldControl& edited : editedFields) {
        SendDlgItemMessageA(dialog, edited.control, EM_LIMITTEXT, RECORD_BYTES - 1, 0);
        if (const size_t at = FindRecord(header, edited.field, keyword); at < HEADER_BYTES) {
            CopyText(ReadValue(header, at, keyword.size()), text);
            ShowText(dialog, edited.control, text);
        }
    }
}

void TakeFields(HWND dialog, NewHeader header)
{
    for (const FieldControl& edited : editedFields) {
        std::string_view keyword;
        const size_t at = FindRecord(header, edited.field, keyword);
        if (at == HEADER_BYTES)
            continue;
        char text[RECORD_BYTES];
        const uint32_t length = TakeText(dialog, edited.control, text);
        WriteRecord(NewRecord(&header[at], RECORD_BYTES), keyword, {text, length});
    }
}

// A field without a record has nothing to be written to.
void DisableMissing(HWND dialog, Header header)
{
    std::string_view keyword;
    for (const FieldControl& edited : editedFields)
        EnableWindow(GetDlgItem(dialog, edited.control),
                     FindRecord(header, edited.field, keyword) < HEADER_BYTES);
}

INT_PTR CALLBACK RunEdit(HWND dialog, UINT message, WPARAM command, LPARAM) noexcept
{
    const DialogRequest* request = ThreadDialog().request;
    if (message == WM_COMMAND) {
        if (LOWORD(command) == IDOK)
            TakeFields(dialog, NewHeader(request->header, HEADER_BYTES));
        return EndOnButton(dialog, command);
    }
    if (message != WM_INITDIALOG)
        return FALSE;
    const Header header(request->header, HEADER_BYTES);
    ShowPath(dialog, CALS_EDIT_PATH, request->path);
    ShowFields(dialog, header);
    DisableMissing(dialog, header);
    return TRUE;
}

Status ShowDialog(LPCWSTR name, DLGPROC run, const DialogRequest& request)
{
    const DialogRequest* const before = std::exchange(ThreadDialog().request, &request);
    const INT_PTR answer = DialogBoxParamW(processState.module, name, request.parent, run, 0);
    ThreadDialog().request = before;
    return answer == IDOK ? error::None : answer == IDCANCEL ? CANCELLED : error::NotEnoughMemory;
}

// What a caller of a dialog gets: the button, or 0 with the reason why there was no dialog.
int32_t ButtonOf(Status status)
{
    StoreLastError(status == CANCELLED ? error::None : status);
    return status == error::None ? IDOK : status == CANCELLED ? IDCANCEL : 0;
}

} // namespace

Status ShowHeader(const DialogRequest& request)
{
    return ShowDialog(L"CALSINFO", RunInfo, request);
}

Status EditHeader(const DialogRequest& request)
{
    return ShowDialog(L"CALSEDIT", RunEdit, request);
}

} // namespace tiff::cals

using namespace tiff;

extern "C" int32_t ShowCALSInfo(HWND parent, const char* path) noexcept
{
    std::array<uint8_t, cals::HEADER_BYTES> header;
    const Status status = cals::ReadHeaderOfFile(path, header);
    return cals::ButtonOf(status == error::None ? cals::ShowHeader({parent, path, header.data()}) : status);
}

extern "C" int32_t EditCALSHead(HWND parent, const char* path, char* header) noexcept
{
    const bool complete = path && header;
    return cals::ButtonOf(complete ? cals::EditHeader({parent, path, reinterpret_cast<uint8_t*>(header)})
                                   : Status{error::InvalidParameters});
}
