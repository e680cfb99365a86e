// An annotation library without annotations: it answers as the test chose and keeps its arguments.
#include "siblings/annotations.h"

#include <cstring>
#include <vector>

namespace {

AnnotationAnswers answer;
AnnotationCalls calls;
std::vector<uint8_t> loaded;

uint32_t Count(TiffAnnotation annotation, int32_t annotationPage)
{
    ++calls.counted;
    calls.annotation = annotation;
    calls.annotationPage = annotationPage;
    return answer.count;
}

int32_t Save(void* buffer, uint32_t count)
{
    ++calls.saved;
    if (answer.saved && count == answer.count)
        std::memcpy(buffer, answer.bytes, count);
    return answer.saved;
}

} // namespace

void AnswerAnnotations(const AnnotationAnswers* answers)
{
    answer = *answers;
    calls = {};
}

const AnnotationCalls* LastAnnotationCalls()
{
    return &calls;
}

extern "C" {

__declspec(dllexport) TiffAnnotation AnnoCreateOnLoad(const void* bytes, uint32_t count)
{
    const auto* first = static_cast<const uint8_t*>(bytes);
    loaded.assign(first, first + count);
    ++calls.created;
    calls.loaded = loaded.data();
    calls.loadedCount = count;
    return answer.created;
}

__declspec(dllexport) uint32_t AnnoGetSaveCount(TiffAnnotation annotation)
{
    return Count(annotation, -9);
}

__declspec(dllexport) int32_t AnnoGetSaveData(TiffAnnotation, void* buffer, uint32_t count)
{
    return Save(buffer, count);
}

__declspec(dllexport) uint32_t AnnoGetSaveCountOnPage(TiffAnnotation annotation, int32_t annotationPage)
{
    return Count(annotation, annotationPage);
}

__declspec(dllexport) int32_t
    AnnoGetSaveDataExt(TiffAnnotation, void* buffer, uint32_t count, int32_t, int32_t filePage)
{
    calls.filePage = filePage;
    return Save(buffer, count);
}
}
