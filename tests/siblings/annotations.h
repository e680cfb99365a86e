// Controls the test's substitute for the annotation library.
#pragma once

#include "tiff/annotations.h"

struct AnnotationAnswers {
    TiffAnnotation created; // by AnnoCreateOnLoad
    const void* bytes;      // to be saved
    uint32_t count;
    int32_t saved; // the answer to saving; 0 leaves the buffer alone
};

struct AnnotationCalls {
    uint32_t created, counted, saved; // numbers of calls; the other fields are of the last one
    TiffAnnotation annotation;
    int32_t annotationPage, filePage;
    const void* loaded; // a copy of the bytes given to AnnoCreateOnLoad
    uint32_t loadedCount;
};

extern "C" {
// Sets the answers and forgets all calls.
__declspec(dllexport) void AnswerAnnotations(const AnnotationAnswers* answers);
__declspec(dllexport) const AnnotationCalls* LastAnnotationCalls();
}
