// The dialog for a note, from the library's resources. Its request travels through the thread's state: two
// threads may show one each.
#include "core/errors.h"
#include "core/global_block.h"
#include "core/process_state.h"
#include "core/thread_state.h"
#include "notes/records.h"
#include "raster/dialog_texts_gdi.h"
#include "resources/ids.h"

#include <utility>

namespace tiff {

namespace {

struct NoteRequest {
    TiffNote& note;
    std::span<char> room;
    const char* shown; // the text as an edit control takes it
};

struct NoteDialogState {
    NoteRequest* request;
};

NoteDialogState& ThreadDialog()
{
    return SettingsIn<NoteDialogState>(ThreadState().notes);
}

struct KindName {
    uint32_t kind;
    const char* name;
};

constexpr KindName kindNames[] = {{TIFF_NOTE_TEXT, "Text"}, {TIFF_NOTE_FRAMED, "Framed text"}};

// Each entry of the list carries its kind. A kind without a name is an entry of its own.
void ShowKinds(HWND list, uint32_t shown)
{
    const auto add = [&](const KindName& entry) {
        const LRESULT at = SendMessageA(list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(entry.name));
        SendMessageA(list, CB_SETITEMDATA, static_cast<WPARAM>(at), static_cast<LPARAM>(entry.kind));
        if (entry.kind == shown)
            SendMessageA(list, CB_SETCURSEL, static_cast<WPARAM>(at), 0);
    };
    for (const KindName& entry : kindNames)
        add(entry);
    const char itself[] = {static_cast<char>(shown), 0};
    if (SendMessageA(list, CB_GETCURSEL, 0, 0) == CB_ERR)
        add({shown, itself});
}

void ShowNote(HWND dialog, const NoteRequest& request)
{
    HWND text = GetDlgItem(dialog, NOTE_TEXT);
    // A limit of 0 would be none.
    const size_t most = request.room.size() - 1;
    SendMessageA(text, EM_LIMITTEXT, most, 0);
    SendMessageA(text, EM_SETREADONLY, most == 0, 0);
    ShowText(dialog, NOTE_TEXT, request.shown);
    ShowKinds(GetDlgItem(dialog, NOTE_KIND), request.note.kind);
    SetDlgItemInt(dialog, NOTE_HEIGHT, static_cast<UINT>(request.note.letterHeight), TRUE);
}

// An empty height is 0. False for what is no height.
bool TakeHeight(HWND dialog, int32_t& height)
{
    if (GetWindowTextLengthA(GetDlgItem(dialog, NOTE_HEIGHT)) == 0) {
        height = 0;
        return true;
    }
    BOOL isNumber = FALSE;
    const auto number = static_cast<int32_t>(GetDlgItemInt(dialog, NOTE_HEIGHT, &isNumber, TRUE));
    if (!isNumber || (number < 0 && number != height))
        return false;
    height = number;
    return true;
}

// False when the user has to correct something.
bool TakeNote(HWND dialog, NoteRequest& request)
{
    TiffNote& note = request.note;
    HWND kinds = GetDlgItem(dialog, NOTE_KIND);
    if (!TakeHeight(dialog, note.letterHeight)) {
        MessageBeep(MB_ICONEXCLAMATION);
        SendMessageA(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(GetDlgItem(dialog, NOTE_HEIGHT)), TRUE);
        return false;
    }
    const LRESULT chosen = SendMessageA(kinds, CB_GETCURSEL, 0, 0);
    if (chosen != CB_ERR)
        note.kind =
            static_cast<uint32_t>(SendMessageA(kinds, CB_GETITEMDATA, static_cast<WPARAM>(chosen), 0));
    note.textBytes = TakeText(dialog, NOTE_TEXT, request.room);
    note.text = request.room.data();
    return true;
}

INT_PTR CALLBACK RunNote(HWND dialog, UINT message, WPARAM command, LPARAM) noexcept
{
    NoteRequest& request = *ThreadDialog().request;
    if (message == WM_INITDIALOG) {
        ShowNote(dialog, request);
        return TRUE;
    }
    const WORD button = LOWORD(command);
    if (message != WM_COMMAND || (button != IDOK && button != IDCANCEL))
        return FALSE;
    if (button == IDCANCEL || TakeNote(dialog, request))
        EndDialog(dialog, button);
    return TRUE;
}

// The text as the dialog shows it, with a zero. 29 when there is no room for it.
Status PrepareText(const TiffNote& note, size_t room, GlobalBlock& block)
{
    if (note.textBytes >= room)
        return error::InvalidParameters;
    const std::span text(note.text, note.textBytes);
    const size_t length = CleanNoteText(text, {});
    if (length >= room)
        return error::InvalidParameters;
    block = GlobalBlock(length + 1);
    const Locked<char> clean(block.Get());
    if (!clean)
        return error::NotEnoughMemory;
    CleanNoteText(text, {clean.Get(), length});
    return error::None;
}

// The button, or 0 with the reason why there was no dialog.
int32_t ShowNoteDialog(HWND window, TiffNote& note, std::span<char> room, Status& status)
{
    GlobalBlock shown;
    status = PrepareText(note, room.size(), shown);
    if (status != error::None)
        return 0;
    const Locked<const char> text(shown.Get());
    if (!text) {
        status = error::NotEnoughMemory;
        return 0;
    }
    NoteRequest request = {note, room, text.Get()};
    NoteRequest* const before = std::exchange(ThreadDialog().request, &request);
    const INT_PTR answer = DialogBoxParamW(processState.module, L"NOTEITDLG", window, RunNote, 0);
    ThreadDialog().request = before;
    if (answer == IDOK || answer == IDCANCEL)
        return static_cast<int32_t>(answer);
    status = error::NotEnoughMemory;
    return 0;
}

} // namespace

} // namespace tiff

using namespace tiff;

extern "C" int32_t EditTiffNote(HWND window, TiffNote* note, char* text, uint32_t textSize) noexcept
{
    Status status = error::InvalidParameters;
    const bool complete =
        note && text && textSize != 0 && textSize <= INT32_MAX && (note->text || note->textBytes == 0);
    const int32_t button = complete ? ShowNoteDialog(window, *note, {text, textSize}, status) : 0;
    StoreLastError(status);
    return button;
}
