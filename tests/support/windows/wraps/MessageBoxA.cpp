// Leads the library's calls of MessageBoxA to a test: they go through a pointer of the import library,
// whose place this one takes.
#include <windows.h>

extern "C" {

int __wrap_MessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT style); // NOLINT: the linker's names

int __real_MessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT style) // NOLINT
{
    using Function = int(WINAPI *)(HWND, LPCSTR, LPCSTR, UINT);
    static const auto function = reinterpret_cast<Function>(
        reinterpret_cast<void *>(GetProcAddress(LoadLibraryA("user32.dll"), "MessageBoxA")));
    return function(owner, text, caption, style);
}

static int WINAPI Lead(HWND owner, LPCSTR text, LPCSTR caption, UINT style)
{
    return __wrap_MessageBoxA(owner, text, caption, style);
}

extern void *const leadMessageBoxA __asm__("__imp__MessageBoxA@16");
void *const leadMessageBoxA = reinterpret_cast<void *>(Lead);
}
