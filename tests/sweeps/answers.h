// What the substitutes of the companion libraries answer during the sweeps.
#pragma once

#include "siblings/annotations.h"
#include "siblings/dialogs.h"

namespace sweeps {

inline constexpr AnnotationAnswers annotationAnswers = {0x4321, "annotation", 10, 1};
inline constexpr TiffSaveDialogOptions saveAnswers = {"described", "by a hand", 201, 1, 0, 2};

} // namespace sweeps
