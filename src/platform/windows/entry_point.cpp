// The library's entry point. It never refuses the load: a failure shows in LibraryState alone. Ended threads
// are seen in threads.cpp.
#include "src/platform/windows/detach.h"

#include <windows.h>

namespace vark {

// Of the frame, which lies above this folder; the loader calls from below.
void AttachLibrary();
void UnbindReportEngine();

} // namespace vark

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID)
{
    switch (reason) {
    case DLL_PROCESS_ATTACH: vark::AttachLibrary(); break;
    case DLL_PROCESS_DETACH:
        vark::UnbindReportEngine();
        vark::DetachProcess();
        break;
    default: break;
    }
    return TRUE;
}
