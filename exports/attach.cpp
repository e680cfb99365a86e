// The library's attachment to processes and threads. A thread older than the library, or one
// whose record could not be had here, gets it on first use.
#include "core/process_state.h"
#include "core/thread_state.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID)
{
    switch (reason) {
    case DLL_PROCESS_ATTACH:
        return tiff::AttachProcess(module);
    case DLL_THREAD_ATTACH:
        tiff::CreateThreadState();
        break;
    case DLL_THREAD_DETACH:
        tiff::FreeThreadState();
        break;
    case DLL_PROCESS_DETACH:
        tiff::DetachProcess();
        break;
    default:
        break;
    }
    return TRUE;
}
