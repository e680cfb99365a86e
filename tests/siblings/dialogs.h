// Controls the test's substitute for the dialogs library.
#pragma once

#include "tiff/save.h"

#include <cstdint>

struct LoadDialogCall {
    uint32_t count; // of calls so far; the other fields are of the last call
    uint32_t page;
    int32_t pageIsLoaded;
    char path[260];
};

struct SaveDialogCall {
    int32_t width;
    TiffSaveDialogOptions asked; // as they were offered
};

extern "C" {
// The load dialog's answer from now on; at first 1, go on.
__declspec(dllexport) void AnswerLoadDialog(int32_t answer);
__declspec(dllexport) const LoadDialogCall* LastLoadDialog();
// The save dialog's answer and choices from now on.
__declspec(dllexport) void AnswerSaveDialog(int32_t answer, const TiffSaveDialogOptions* options);
__declspec(dllexport) const SaveDialogCall* LastSaveDialog();
}
