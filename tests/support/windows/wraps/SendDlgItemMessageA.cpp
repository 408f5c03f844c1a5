// Leads the library's calls of SendDlgItemMessageA to a test, as the one of MessageBoxA does.
#include <windows.h>

extern "C" {

LRESULT __wrap_SendDlgItemMessageA(HWND dialog, int id, UINT message,
                                   WPARAM wParam, // NOLINT: the linker's names
                                   LPARAM lParam);

LRESULT __real_SendDlgItemMessageA(HWND dialog, int id, UINT message, WPARAM wParam, LPARAM lParam) // NOLINT
{
    using Function = LRESULT(WINAPI *)(HWND, int, UINT, WPARAM, LPARAM);
    static const auto function = reinterpret_cast<Function>(
        reinterpret_cast<void *>(GetProcAddress(LoadLibraryA("user32.dll"), "SendDlgItemMessageA")));
    return function(dialog, id, message, wParam, lParam);
}

static LRESULT WINAPI Lead(HWND dialog, int id, UINT message, WPARAM wParam, LPARAM lParam)
{
    return __wrap_SendDlgItemMessageA(dialog, id, message, wParam, lParam);
}

extern void *const leadSendDlgItemMessageA __asm__("__imp__SendDlgItemMessageA@20");
void *const leadSendDlgItemMessageA = reinterpret_cast<void *>(Lead);
}
