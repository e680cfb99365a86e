// The dialogs library, loaded when it is needed.
#pragma once

#include "core/handles.h"

namespace tiff {

// A dialog of this name; the library stays loaded while `held` lives. Null without one.
FARPROC FindDialog(const char* name, Module& held);

} // namespace tiff
