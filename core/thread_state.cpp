#include "core/thread_state.h"

#include "core/process_state.h"

namespace tiff {

bool CreateThreadState()
{
    auto* state =
        static_cast<TiffThreadState*>(GlobalAlloc(GMEM_FIXED | GMEM_ZEROINIT, sizeof(TiffThreadState)));
    if (!state)
        return false;
    state->memoryFiles.fill({nullptr, MEMORY_FILE_FREE, MEMORY_FILE_FREE});
    if (!TlsSetValue(processState.threadSlot, state)) {
        GlobalFree(state);
        return false;
    }
    return true;
}

TiffThreadState& ThreadState()
{
    void* state = TlsGetValue(processState.threadSlot);
    if (!state) {
        if (!CreateThreadState())
            ExitThread(1);
        state = TlsGetValue(processState.threadSlot);
    }
    return *static_cast<TiffThreadState*>(state);
}

void FreeThreadState()
{
    void* state = TlsGetValue(processState.threadSlot);
    if (!state)
        return;
    GlobalFree(state);
    TlsSetValue(processState.threadSlot, nullptr);
}

} // namespace tiff
