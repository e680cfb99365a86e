// Attaches the library to processes and threads. A thread that is older than the library, or got no record
// here for lack of memory, gets it on first use.
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
