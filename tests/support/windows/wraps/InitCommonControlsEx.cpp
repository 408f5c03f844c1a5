// Leads the library's calls of InitCommonControlsEx to a test, as the one of MessageBoxA does.
#include <windows.h>

#include <commctrl.h>

extern "C" {

BOOL __wrap_InitCommonControlsEx(const INITCOMMONCONTROLSEX *wanted); // NOLINT: the linker's names

BOOL __real_InitCommonControlsEx(const INITCOMMONCONTROLSEX *wanted) // NOLINT
{
    using Function = BOOL(WINAPI *)(const INITCOMMONCONTROLSEX *);
    static const auto function = reinterpret_cast<Function>(
        reinterpret_cast<void *>(GetProcAddress(LoadLibraryA("comctl32.dll"), "InitCommonControlsEx")));
    return function(wanted);
}

static BOOL WINAPI Lead(const INITCOMMONCONTROLSEX *wanted) { return __wrap_InitCommonControlsEx(wanted); }

extern void *const leadInitCommonControlsEx __asm__("__imp__InitCommonControlsEx@4");
void *const leadInitCommonControlsEx = reinterpret_cast<void *>(Lead);
}
