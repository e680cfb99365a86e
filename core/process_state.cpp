#include "core/process_state.h"

#include "core/thread_state.h"

namespace tiff {

ProcessState processState;

bool AttachProcess(HMODULE module)
{
    processState.module = module;
    processState.threadSlot = TlsAlloc();
    return processState.threadSlot != TLS_OUT_OF_INDEXES;
}

void DetachProcess()
{
    FreeThreadState();
    TlsFree(processState.threadSlot);
    processState.threadSlot = TLS_OUT_OF_INDEXES;
}

} // namespace tiff
