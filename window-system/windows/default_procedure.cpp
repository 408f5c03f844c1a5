// The default procedures of windows.
#include "window-system/model/as_pointer.h"
#include "window-system/model/handles.h"
#include "window-system/model/model.h"
#include "window-system/model/texts.h"
#include "window-system/model/tree.h"
#include "window-system/model/window.h"

#include <cstring>

namespace varkui {

namespace {

LRESULT ReadText(HWND handle, WPARAM size, LPARAM lParam)
{
    auto *out = AsPointer<char *>(lParam);
    if (out == nullptr || size == 0) return 0;
    const Locked locked;
    const Window *window = Find(handle);
    const char *text = window != nullptr ? TextOf(window) : "";
    size_t length = strlen(text);
    if (length >= size) length = size - 1;
    memcpy(out, text, length);
    out[length] = 0;
    return static_cast<LRESULT>(length);
}

LRESULT WriteText(HWND handle, LPARAM lParam)
{
    const auto *text = AsPointer<const char *>(lParam);
    if (text == nullptr) text = "";
    const Locked locked(mutates);
    Window *window = Find(handle);
    if (window == nullptr) return FALSE;
    // A text set past an edit's own procedure resets its selection.
    if (window->Kind == Kind::Edit) window->Edit->Anchor = window->Edit->Caret = 0;
    if (window->Kind == Kind::ComboBox) window->Combo->Edit.Anchor = window->Combo->Edit.Caret = 0;
    return ReplaceText(window, text, strlen(text)) ? TRUE : FALSE;
}

LRESULT TextLength(HWND handle)
{
    const Locked locked;
    const Window *window = Find(handle);
    return window != nullptr ? static_cast<LRESULT>(strlen(TextOf(window))) : 0;
}

} // namespace

} // namespace varkui

using namespace varkui;

LRESULT DefWindowProcA(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case WM_NCCREATE: return TRUE;
    case WM_SETTEXT: return WriteText(window, lParam);
    case WM_GETTEXT: return ReadText(window, wParam, lParam);
    case WM_GETTEXTLENGTH: return TextLength(window);
    case WM_ACTIVATE:
        if (LOWORD(wParam) != WA_INACTIVE) SetFocus(window);
        return 0;
    case WM_CLOSE: DestroyWindow(window); return 0;
    case WM_SYSCOMMAND:
        if ((wParam & 0xFFF0) == SC_CLOSE) SendMessageA(window, WM_CLOSE, 0, 0);
        return 0;
    case WM_SYSKEYDOWN:
        if (wParam == VK_F4) {
            HWND outermost = nullptr;
            {
                const Locked locked;
                Window *found = Find(window);
                if (found != nullptr) outermost = Outermost(found)->Handle;
            }
            PostMessageA(outermost, WM_SYSCOMMAND, SC_CLOSE, 0);
        }
        return 0;
    default: return 0;
    }
}

LRESULT DefMDIChildProcA(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    return DefWindowProcA(window, message, wParam, lParam);
}
