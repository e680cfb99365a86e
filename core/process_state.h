// The state of the process: the slot of the thread states, the module, the JPEG library.
#pragma once

#include "core/win32.h"

#include <atomic>

namespace tiff {

struct ProcessState {
    DWORD threadSlot = TLS_OUT_OF_INDEXES;
    HMODULE module = nullptr;                   // this library, for its dialogs
    std::atomic<HMODULE> jpegLibrary = nullptr; // kept loaded between pages; threads share it
};

extern ProcessState processState;

// False when no thread slot is available; the library must not load then.
[[nodiscard]] bool AttachProcess(HMODULE module);
void DetachProcess();

} // namespace tiff
