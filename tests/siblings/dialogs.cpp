// A dialogs library without dialogs: it answers as the test chose and keeps its arguments.
#include "siblings/dialogs.h"

#include "tiff/tiff.h"

#include <cstring>

namespace {

LoadDialogCall loadCall;
int32_t loadAnswer = 1;
SaveDialogCall saveCall;
int32_t saveAnswer = 1;
TiffSaveDialogOptions saveChoice;

} // namespace

void AnswerLoadDialog(int32_t answer)
{
    loadAnswer = answer;
}

const LoadDialogCall* LastLoadDialog()
{
    return &loadCall;
}

void AnswerSaveDialog(int32_t answer, const TiffSaveDialogOptions* options)
{
    saveAnswer = answer;
    saveChoice = *options;
}

const SaveDialogCall* LastSaveDialog()
{
    return &saveCall;
}

extern "C" __declspec(dllexport) int32_t
    TiffSaveDialog(const char*, const TiffSavePicture* picture, TiffSaveDialogOptions* options)
{
    saveCall = {picture->geometry.width, *options};
    *options = saveChoice;
    return saveAnswer;
}

extern "C" __declspec(dllexport) int32_t TiffLoadDialog(TiffLoadDialogRequest* request)
{
    TiffFileInformation file{};
    ++loadCall.count;
    loadCall.page = request->page;
    loadCall.pageIsLoaded = IsTiffImageRegistered(request->file, request->page);
    GetTiffFileInfo(request->file, &file);
    std::memcpy(loadCall.path, file.path, sizeof(file.path));
    request->page = 77; // the loader must ignore changes
    return loadAnswer;
}
