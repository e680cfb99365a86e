// How tests speak to the dialogs library that stands in for the real one.
#pragma once

#include "tiff/save.h"

#include <cstdint>

struct LoadDialogCall {
    uint32_t count; // of calls so far; the rest is of the last one
    uint32_t page;
    int32_t pageIsLoaded;
    char path[260];
};

struct SaveDialogCall {
    int32_t width;
    TiffSaveDialogOptions asked; // as they were offered
};

extern "C" {
// What the load dialog answers from now on; 1, go on, at first.
__declspec(dllexport) void AnswerLoadDialog(int32_t answer);
__declspec(dllexport) const LoadDialogCall* LastLoadDialog();
// What the save dialog answers and chooses from now on.
__declspec(dllexport) void AnswerSaveDialog(int32_t answer, const TiffSaveDialogOptions* options);
__declspec(dllexport) const SaveDialogCall* LastSaveDialog();
}
