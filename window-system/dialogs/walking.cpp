#include "window-system/dialogs/walking.h"

#include "window-system/model/as_pointer.h"
#include "window-system/model/handles.h"
#include "window-system/model/model.h"
#include "window-system/model/tree.h"
#include "window-system/model/window.h"

namespace varkui {

bool IsUsable(const Window *window) { return (window->Style & (WS_VISIBLE | WS_DISABLED)) == WS_VISIBLE; }

Window *NextControl(const Window *dialog, Window *window)
{
    const bool enters =
        window == dialog || ((window->ExStyle & WS_EX_CONTROLPARENT) != 0 && IsUsable(window));
    if (enters && window->FirstChild != nullptr) return window->FirstChild;
    while (window != dialog && window->Next == nullptr) {
        window = window->Parent;
    }
    return window == dialog ? nullptr : window->Next;
}

namespace {

Window *FindTabStop(Window *dialog, const Window *control, bool previous)
{
    Window *first = nullptr;
    Window *last = nullptr;
    Window *before = nullptr;
    Window *behind = nullptr;
    bool passed = false;
    for (Window *each = NextControl(dialog, dialog); each != nullptr; each = NextControl(dialog, each)) {
        if (each == control) {
            passed = true;
            continue;
        }
        if (!IsUsable(each) || (each->Style & WS_TABSTOP) == 0) continue;
        if ((each->ExStyle & WS_EX_CONTROLPARENT) != 0) continue;
        if (first == nullptr) first = each;
        last = each;
        if (!passed) before = each;
        if (passed && behind == nullptr) behind = each;
    }
    if (control == nullptr || !passed) return previous ? last : first;
    if (previous) return before != nullptr ? before : last;
    return behind != nullptr ? behind : first;
}

} // namespace

bool IsInert(const Window *window)
{
    return window->Kind == Kind::Static ||
           (window->Kind == Kind::Button && (window->Style & BS_TYPEMASK) == BS_GROUPBOX);
}

Window *FindInGroup(Window *control, bool previous)
{
    Window *start = control;
    while ((start->Style & WS_GROUP) == 0 && start->Previous != nullptr) {
        start = start->Previous;
    }
    Window *first = nullptr;
    Window *last = nullptr;
    Window *before = nullptr;
    Window *behind = nullptr;
    bool passed = false;
    for (Window *each = start; each != nullptr; each = each->Next) {
        if (each != start && (each->Style & WS_GROUP) != 0) break;
        if (each == control) {
            passed = true;
            continue;
        }
        if (!IsUsable(each) || IsInert(each)) continue;
        if (first == nullptr) first = each;
        last = each;
        if (!passed) before = each;
        if (passed && behind == nullptr) behind = each;
    }
    Window *found = previous ? (before != nullptr ? before : last) : (behind != nullptr ? behind : first);
    return found != nullptr ? found : control;
}

LRESULT DialogCode(HWND control, const MSG *message)
{
    return SendMessageA(control, WM_GETDLGCODE, message != nullptr ? message->wParam : 0,
                        reinterpret_cast<LPARAM>(message));
}

void FocusControl(HWND control)
{
    if (control == nullptr) return;
    if ((DialogCode(control, nullptr) & DLGC_HASSETSEL) != 0) SendMessageA(control, EM_SETSEL, 0, -1);
    SetFocus(control);
}

void MoveOn(HWND dialog, WPARAM wParam, bool isHandle)
{
    if (isHandle) {
        FocusControl(AsPointer<HWND>(wParam));
        return;
    }
    HWND focus = GetFocus();
    FocusControl(GetNextDlgTabItem(dialog, IsChild(dialog, focus) != FALSE ? focus : nullptr,
                                   wParam != 0 ? TRUE : FALSE));
}

} // namespace varkui

using namespace varkui;

HWND GetNextDlgTabItem(HWND dialog, HWND control, BOOL previous)
{
    const Locked locked;
    Window *found = Find(dialog);
    if (found == nullptr) return nullptr;
    const Window *next = FindTabStop(found, Find(control), previous != FALSE);
    return next != nullptr ? next->Handle : nullptr;
}

HWND GetNextDlgGroupItem(HWND dialog, HWND control, BOOL previous)
{
    const Locked locked;
    const Window *outer = Find(dialog);
    if (outer == nullptr) return nullptr;
    Window *inner = control != nullptr ? Find(control) : outer->FirstChild;
    if (inner == nullptr || !LiesInside(inner, outer)) return nullptr;
    const Window *next = FindInGroup(inner, previous != FALSE);
    return next->Handle;
}
