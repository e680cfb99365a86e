// The save dialog of the dialogs library.
#pragma once

#include "core/thread_state.h"
#include "core/vocabulary.h"

namespace tiff {

struct PagePlan;

// Lets the user choose; the answers become the thread's save settings. Error 28 when the
// library is missing, NOTHING_TO_SAVE when the user cancels.
[[nodiscard]] Status ShowSaveDialog(const char* path, const PagePlan& plan, SaveSettings& settings);

} // namespace tiff
