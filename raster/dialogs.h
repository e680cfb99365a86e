// The library of dialogs, which is found when it is needed.
#pragma once

#include "core/handles.h"

namespace tiff {

// A dialog of this name in a library that stays loaded while it is held; null without one.
FARPROC FindDialog(const char* name, Module& held);

} // namespace tiff
