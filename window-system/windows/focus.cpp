#include "window-system/windows/focus.h"

#include "window-system/model/handles.h"
#include "window-system/model/input.h"
#include "window-system/model/model.h"
#include "window-system/model/queue.h"
#include "window-system/model/threads.h"
#include "window-system/model/tree.h"
#include "window-system/model/window.h"

namespace varkui {

namespace {

bool MayBeActive(const Window *window)
{
    return (window->Style & WS_VISIBLE) != 0 && (window->Style & WS_DISABLED) == 0 && !window->Destroying &&
           (window->Style & WS_CHILD) == 0;
}

// Clears the focus and the active window of the calling thread.
void LeaveNothingActive()
{
    HWND focus = nullptr;
    {
        const Locked locked(mutates);
        Thread *thread = Self();
        if (thread == nullptr) return;
        focus = thread->Focus;
        thread->Focus = nullptr;
        thread->Active = nullptr;
    }
    if (focus != nullptr) SendMessageA(focus, WM_KILLFOCUS, 0, 0);
}

WPARAM AsWord(HWND window) { return reinterpret_cast<WPARAM>(window); }

LPARAM AsParameter(HWND window) { return reinterpret_cast<LPARAM>(window); }

bool HasFocus(HWND window)
{
    const Locked locked;
    const Thread *thread = Self();
    return thread != nullptr && thread->Focus == window;
}

// `moveFocus` is false when the caller sets the focus itself.
bool MakeActive(HWND target, bool clicked, bool moveFocus)
{
    HWND before = nullptr;
    {
        const Locked locked(mutates);
        Thread *thread = Self();
        Window *window = Find(target);
        if (thread == nullptr || window == nullptr || window->Thread != thread || window->Parent != nullptr)
            return false;
        if ((window->Style & WS_DISABLED) != 0 || window->Destroying) return false;
        before = thread->Active;
        if (before == target) return true;
        thread->Active = target;
        Raise(window);
    }
    if (before != nullptr) SendMessageA(before, WM_ACTIVATE, WA_INACTIVE, AsParameter(target));
    if (GetActiveWindow() != target) return false;
    SendMessageA(target, WM_ACTIVATE, clicked ? WA_CLICKACTIVE : WA_ACTIVE, AsParameter(before));
    if (!moveFocus) return true;
    // A procedure that does not pass WM_ACTIVATE on has not moved the focus; it is moved here.
    bool follows = false;
    {
        const Locked locked;
        const Thread *thread = Self();
        const Window *window = Find(target);
        const Window *focus = thread != nullptr ? Find(thread->Focus) : nullptr;
        follows = thread != nullptr && window != nullptr && thread->Active == target &&
                  (focus == nullptr || (focus != window && !LiesInside(focus, window)));
    }
    if (follows) MoveFocus(target);
    return true;
}

} // namespace

HWND MoveFocus(HWND target)
{
    HWND before = nullptr;
    HWND outermost = nullptr;
    {
        const Locked locked(mutates);
        Thread *thread = Self();
        if (thread == nullptr) return nullptr;
        Window *window = Find(target);
        if (target != nullptr && (window == nullptr || window->Thread != thread || !AreEnabled(window)))
            return nullptr;
        before = thread->Focus;
        if (before == target) return before;
        if (window != nullptr && thread->Active != Outermost(window)->Handle)
            outermost = Outermost(window)->Handle;
    }
    if (outermost != nullptr) MakeActive(outermost, false, false);
    {
        const Locked locked(mutates);
        Thread *thread = Self();
        Window *window = Find(target);
        if (thread == nullptr || (target != nullptr && (window == nullptr || !AreEnabled(window))))
            return nullptr;
        if (thread->Focus == target) return before;
        before = thread->Focus;
        thread->Focus = target;
        if (window != nullptr) Note(window, changedState);
    }
    // The window that loses the focus is told first and may move it elsewhere.
    if (before != nullptr) SendMessageA(before, WM_KILLFOCUS, AsWord(target), 0);
    if (target != nullptr && HasFocus(target)) SendMessageA(target, WM_SETFOCUS, AsWord(before), 0);
    return before;
}

bool Activate(HWND target, bool clicked) { return MakeActive(target, clicked, true); }

void ActivateAnother(HWND going)
{
    HWND next = nullptr;
    {
        const Locked locked;
        Thread *thread = Self();
        if (thread == nullptr || thread->Active != going) return;
        const Window *window = Find(going);
        const Window *owner = window != nullptr ? window->Owner : nullptr;
        if (owner != nullptr && MayBeActive(owner)) {
            if (owner->Thread == thread) {
                next = owner->Handle;
            } else {
                PostInput(owner->Handle, MakeInput(InputKind::Activate));
            }
        }
        for (const Window *each = model.FirstTop; each != nullptr && next == nullptr; each = each->Next) {
            if (each->Thread == thread && each->Handle != going && MayBeActive(each)) next = each->Handle;
        }
    }
    if (next == nullptr || !Activate(next, false)) LeaveNothingActive();
}

} // namespace varkui

using namespace varkui;

HWND GetActiveWindow(void)
{
    const Locked locked;
    const Thread *thread = Self();
    return thread != nullptr ? thread->Active : nullptr;
}

HWND SetActiveWindow(HWND window)
{
    HWND before = GetActiveWindow();
    return Activate(window, false) ? before : nullptr;
}

BOOL SetForegroundWindow(HWND window)
{
    if (!Activate(window, false)) return FALSE;
    frontEnd.Show();
    return TRUE;
}

HWND GetFocus(void)
{
    const Locked locked;
    const Thread *thread = Self();
    return thread != nullptr ? thread->Focus : nullptr;
}

HWND SetFocus(HWND window) { return MoveFocus(window); }
