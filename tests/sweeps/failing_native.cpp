#include "siblings/annotations.h"
#include "siblings/dialogs.h"
#include "standin/standin.h"
#include "sweeps/answers.h"
#include "sweeps/failing.h"
#include "tiff/tiff.h"

#include <map>

extern "C" {
TiffAnnotation AnnoCreateOnLoad(const void* bytes, uint32_t count);
uint32_t AnnoGetSaveCount(TiffAnnotation annotation);
int32_t AnnoGetSaveData(TiffAnnotation annotation, void* buffer, uint32_t count);
uint32_t AnnoGetSaveCountOnPage(TiffAnnotation annotation, int32_t page);
int32_t AnnoGetSaveDataExt(TiffAnnotation annotation, void* buffer, uint32_t count, int32_t page,
                           int32_t filePage);
uint32_t JPEGDecoder(CodecContext* context);
uint32_t JPEGEncoder(CodecContext* context);
int32_t TiffLoadDialog(TiffLoadDialogRequest* request);
int32_t TiffSaveDialog(const char* path, const TiffSavePicture* picture, TiffSaveDialogOptions* options);
}

namespace sweeps {

void FailNth(unsigned n, unsigned kinds, unsigned laterKinds, bool torn)
{
    standin::FailNth(n, kinds, laterKinds, torn);
}

bool StopFailing()
{
    standin::StopFailing();
    return standin::InjectionFired();
}

const char* RefusedCall()
{
    return "of the stand-in";
}

Held Live()
{
    const standin::Counts live = standin::Live();
    return {live.blocks, live.locks, live.handles, static_cast<int64_t>(standin::Faults())};
}

// The stand-in counts what the caller frees, too.
void Forget(const void*)
{
}

template <class Function>
static FARPROC Procedure(Function* function)
{
    return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(function));
}

static FARPROC FindInSiblings(const std::string& name)
{
    static const std::map<std::string, FARPROC> functions = {
        {"AnnoCreateOnLoad", Procedure(AnnoCreateOnLoad)},
        {"AnnoGetSaveCount", Procedure(AnnoGetSaveCount)},
        {"AnnoGetSaveData", Procedure(AnnoGetSaveData)},
        {"AnnoGetSaveCountOnPage", Procedure(AnnoGetSaveCountOnPage)},
        {"AnnoGetSaveDataExt", Procedure(AnnoGetSaveDataExt)},
        {"JPEGDecoder", Procedure(JPEGDecoder)},
        {"JPEGEncoder", Procedure(JPEGEncoder)},
        {"TiffLoadDialog", Procedure(TiffLoadDialog)},
        {"TiffSaveDialog", Procedure(TiffSaveDialog)},
    };
    const auto found = functions.find(name);
    return found == functions.end() ? nullptr : found->second;
}

void ProvideSiblings()
{
    for (const char* library : {"kvanno.dll", "JPGLIB.DLL", "KVDlgs.dll"})
        standin::ProvideLibrary(library, FindInSiblings);
    AnswerAnnotations(&annotationAnswers);
    AnswerSaveDialog(1, &saveAnswers);
}

std::string TempFolder()
{
    return standin::TempFolder();
}

} // namespace sweeps
