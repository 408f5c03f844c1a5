// Cursor and painting.
#include "window-system/model/as_pointer.h"
#include "window-system/model/model.h"
#include "window-system/model/threads.h"

using namespace varkui;

BOOL InvalidateRect(HWND window, const RECT * /*rectangle*/, BOOL /*erase*/) { return UpdateWindow(window); }

BOOL UpdateWindow(HWND window)
{
    if (IsWindow(window) == FALSE) return FALSE;
    frontEnd.Show();
    return TRUE;
}

HCURSOR LoadCursorA(HINSTANCE module, LPCSTR name)
{
    const auto number = reinterpret_cast<ULONG_PTR>(name);
    if (module != nullptr || number < reinterpret_cast<ULONG_PTR>(IDC_ARROW) ||
        number > reinterpret_cast<ULONG_PTR>(IDC_WAIT))
        return nullptr;
    return AsPointer<HCURSOR>(number);
}

HICON LoadIconA(HINSTANCE /*module*/, LPCSTR /*name*/) { return nullptr; }

HCURSOR SetCursor(HCURSOR cursor)
{
    HCURSOR before = nullptr;
    {
        const Locked locked;
        Thread *thread = Self();
        if (thread == nullptr) return nullptr;
        before = thread->Cursor;
        thread->Cursor = cursor;
    }
    if (cursor != before) frontEnd.Show();
    return before;
}

DWORD GetSysColor(int index) { return index == COLOR_BTNFACE ? 0xF0F0F0u : 0u; }

COLORREF SetBkColor(HDC /*device*/, COLORREF /*color*/) { return 0; }

BOOL ExtTextOutA(HDC /*device*/, int /*x*/, int /*y*/, UINT /*options*/, const RECT * /*rectangle*/,
                 LPCSTR /*text*/, UINT /*length*/, const int * /*widths*/)
{
    return FALSE;
}
