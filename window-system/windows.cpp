// The windows themselves. Message boxes are all there is so far, so no handle names a window yet and every
// call refuses the one it is given.
#include "window-system/varkui.h"

namespace {

HCURSOR SystemCursor(ULONG_PTR name)
{
    return reinterpret_cast<HCURSOR>(name); // NOLINT(performance-no-int-to-ptr): an opaque value, as user32's
}

constexpr ULONG_PTR arrowCursor = 32512;
constexpr ULONG_PTR waitCursor = 32514;

thread_local HCURSOR currentCursor = SystemCursor(arrowCursor);

} // namespace

HCURSOR LoadCursorA(HINSTANCE module, LPCSTR name)
{
    const auto number = reinterpret_cast<ULONG_PTR>(name);
    if (module != nullptr || number < arrowCursor || number > waitCursor) return nullptr;
    return SystemCursor(number);
}

HCURSOR SetCursor(HCURSOR cursor)
{
    HCURSOR previous = currentCursor;
    currentCursor = cursor;
    return previous;
}

BOOL IsWindow(HWND /*window*/) { return FALSE; }

HWND GetActiveWindow(void) { return nullptr; }

HWND GetFocus(void) { return nullptr; }

HWND SetFocus(HWND /*window*/) { return nullptr; }

HWND GetDlgItem(HWND /*dialog*/, int /*id*/) { return nullptr; }

HWND GetWindow(HWND /*window*/, UINT /*relation*/) { return nullptr; }

HWND GetParent(HWND /*window*/) { return nullptr; }

LRESULT SendMessageA(HWND /*window*/, UINT /*message*/, WPARAM /*wParam*/, LPARAM /*lParam*/) { return 0; }
