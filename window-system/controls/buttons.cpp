#include "window-system/controls/buttons.h"

#include "window-system/controls/notices.h"
#include "window-system/model/handles.h"
#include "window-system/model/model.h"
#include "window-system/model/threads.h"
#include "window-system/model/tree.h"
#include "window-system/model/window.h"

namespace varkui {

namespace {

DWORD TypeOf(const Window *button) { return button->Style & BS_TYPEMASK; }

bool IsPush(DWORD type) { return type == BS_PUSHBUTTON || type == BS_DEFPUSHBUTTON; }

bool IsRadio(DWORD type) { return type == BS_RADIOBUTTON || type == BS_AUTORADIOBUTTON; }

bool HasThreeStates(DWORD type) { return type == BS_3STATE || type == BS_AUTO3STATE; }

// The window of `handle`, when it is a button and has the state of one.
Window *FindButton(HWND handle)
{
    Window *window = Find(handle);
    return window != nullptr && window->Kind == Kind::Button ? window : nullptr;
}

void PutCheck(Window *button, int check)
{
    const DWORD type = TypeOf(button);
    if (IsPush(type) || type == BS_GROUPBOX) return;
    if (check < 0 || check > (HasThreeStates(type) ? BST_INDETERMINATE : BST_CHECKED)) check = BST_CHECKED;
    button->Button->Check = check;
    // Tab reaches a group of radio buttons at the one that is checked.
    if (IsRadio(type)) {
        button->Style = check != 0 ? button->Style | WS_TABSTOP : button->Style & ~WS_TABSTOP;
    }
    Note(button, changedState);
}

// Unchecks the other buttons of the group that change by themselves.
void UncheckOthers(Window *button)
{
    Window *first = button;
    while ((first->Style & WS_GROUP) == 0 && first->Previous != nullptr) {
        first = first->Previous;
    }
    for (Window *each = first; each != nullptr; each = each->Next) {
        if (each != first && (each->Style & WS_GROUP) != 0) break;
        if (each == button || each->Kind != Kind::Button || TypeOf(each) != BS_AUTORADIOBUTTON) continue;
        PutCheck(each, BST_UNCHECKED);
    }
}

void ChangeByItself(Window *button)
{
    switch (TypeOf(button)) {
    case BS_AUTOCHECKBOX: PutCheck(button, button->Button->Check == 0 ? BST_CHECKED : BST_UNCHECKED); break;
    case BS_AUTO3STATE: PutCheck(button, (button->Button->Check + 1) % 3); break;
    case BS_AUTORADIOBUTTON:
        PutCheck(button, BST_CHECKED);
        UncheckOthers(button);
        break;
    default: break;
    }
}

// Does a click by mouse, space bar or mnemonic.
void DoClick(HWND handle)
{
    {
        const Locked locked(mutates);
        Window *button = FindButton(handle);
        if (button == nullptr || !AreEnabled(button) || TypeOf(button) == BS_GROUPBOX) return;
        ChangeByItself(button);
    }
    NotifyParent(handle, BN_CLICKED);
}

// A click takes the focus first. Where that makes the old owner of the focus put up a box or another window,
// the click is lost, as it is when the mouse is let go elsewhere.
void ClickWithFocus(HWND handle)
{
    if (GetFocus() != handle) SetFocus(handle);
    if (GetFocus() == handle) DoClick(handle);
}

LRESULT DialogCodeOf(HWND handle)
{
    const Locked locked;
    const Window *button = FindButton(handle);
    if (button == nullptr) return 0;
    switch (TypeOf(button)) {
    case BS_PUSHBUTTON: return DLGC_BUTTON | DLGC_UNDEFPUSHBUTTON;
    case BS_DEFPUSHBUTTON: return DLGC_BUTTON | DLGC_DEFPUSHBUTTON;
    case BS_RADIOBUTTON:
    case BS_AUTORADIOBUTTON: return DLGC_BUTTON | DLGC_RADIOBUTTON;
    case BS_GROUPBOX: return DLGC_STATIC;
    default: return DLGC_BUTTON;
    }
}

LRESULT CheckOf(HWND handle, bool withState)
{
    const Locked locked;
    const Window *button = FindButton(handle);
    if (button == nullptr) return 0;
    LRESULT state = button->Button->Check;
    if (withState && button->Button->Pushed) state |= BST_PUSHED;
    if (withState && button->Thread->Focus == handle) state |= BST_FOCUS;
    return state;
}

// Presses the button down or lets it up; true when it was down before.
bool Push(HWND handle, bool down)
{
    const Locked locked(mutates);
    Window *button = FindButton(handle);
    if (button == nullptr || (down && !AreEnabled(button))) return false;
    const bool before = button->Button->Pushed;
    button->Button->Pushed = down;
    if (before != down) Note(button, changedState);
    return before;
}

bool Notifies(HWND handle)
{
    const Locked locked;
    const Window *button = FindButton(handle);
    return button != nullptr && (button->Style & BS_NOTIFY) != 0;
}

void SetStyleOf(HWND handle, WPARAM style)
{
    const Locked locked(mutates);
    Window *button = FindButton(handle);
    if (button == nullptr) return;
    button->Style = (button->Style & ~BS_TYPEMASK) | (static_cast<DWORD>(style) & BS_TYPEMASK);
    Note(button, changedState);
}

} // namespace

LRESULT CALLBACK ButtonProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case WM_GETDLGCODE: return DialogCodeOf(window);
    case BM_GETCHECK: return CheckOf(window, false);
    case BM_GETSTATE: return CheckOf(window, true);
    case BM_SETCHECK: {
        const Locked locked(mutates);
        Window *button = FindButton(window);
        if (button != nullptr) PutCheck(button, static_cast<int>(wParam & 0xFF));
        return 0;
    }
    case BM_SETSTATE: Push(window, wParam != 0); return 0;
    case BM_SETSTYLE: SetStyleOf(window, wParam); return 0;
    case BM_CLICK:
    case WM_LBUTTONDBLCLK: ClickWithFocus(window); return 0;
    case WM_LBUTTONDOWN:
        SetFocus(window);
        Push(window, true);
        return 0;
    case WM_KEYDOWN:
        if (wParam == VK_SPACE) Push(window, true);
        return 0;
    case WM_LBUTTONUP:
        if (Push(window, false)) DoClick(window);
        return 0;
    case WM_KEYUP:
        if (wParam == VK_SPACE && Push(window, false)) DoClick(window);
        return 0;
    case WM_SETFOCUS:
        if (Notifies(window)) NotifyParent(window, BN_SETFOCUS);
        return 0;
    case WM_KILLFOCUS:
        Push(window, false);
        if (Notifies(window)) NotifyParent(window, BN_KILLFOCUS);
        return 0;
    default: return DefWindowProcA(window, message, wParam, lParam);
    }
}

LRESULT CALLBACK StaticProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_GETDLGCODE) return DLGC_STATIC;
    return DefWindowProcA(window, message, wParam, lParam);
}

} // namespace varkui
