// Input of a person, dispatched like a message: the part common to all classes, then the class's own.
#include "window-system/model/input.h"
#include "window-system/model/handles.h"
#include "window-system/model/model.h"
#include "window-system/model/threads.h"
#include "window-system/model/tree.h"
#include "window-system/model/window.h"
#include "window-system/windows/focus.h"
#include "window-system/windows/life.h"
#include "window-system/windows/sending.h"

namespace varkui {

namespace {

// The state of an input's window, read under the lock.
struct Target {
    void (*TakeInput)(HWND window, const Input &input); // of its class
    HWND Outermost;
    bool Usable;
    bool Active;
};

Target Look(HWND handle)
{
    const Locked locked;
    Window *window = Find(handle);
    if (window == nullptr) return Target{nullptr, nullptr, false, false};
    Window *outermost = Outermost(window);
    return Target{window->Class->TakeInput, outermost->Handle,
                  AreEnabled(window) && IsShown(window) && !window->Destroying,
                  window->Thread->Active == outermost->Handle};
}

// Takes the size that a person has given a window without parent.
void Resize(HWND window, const Input &input)
{
    SetWindowPos(window, nullptr, 0, 0, input.Index, input.Index2,
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

// Whether a window inside `outermost` has the focus.
bool HasFocusInside(HWND outermost)
{
    HWND focus = GetFocus();
    return focus != nullptr && IsChild(outermost, focus) != FALSE;
}

void HandleInput(HWND window, const Input &input)
{
    const Target target = Look(window);
    if (target.Outermost == nullptr) return;
    if (input.Kind == InputKind::Close) {
        if (target.Usable) SendMessageA(target.Outermost, WM_SYSCOMMAND, SC_CLOSE, 0);
        return;
    }
    if (input.Kind == InputKind::Area) {
        if (target.TakeInput != nullptr) target.TakeInput(window, input);
        return;
    }
    if (input.Kind == InputKind::Resize) {
        Resize(window, input);
        return;
    }
    if (!target.Usable) {
        // The window was usable when the person acted; the screen is told the model's state again.
        const Locked locked;
        Window *found = Find(window);
        if (found == nullptr) return;
        if (found->Kind == Kind::Edit) ++found->Edit->Serial;
        if (found->Kind == Kind::ComboBox) ++found->Combo->Edit.Serial;
        Note(found, changedState);
        return;
    }
    if (input.Kind == InputKind::Caret) {
        if (target.TakeInput != nullptr) target.TakeInput(window, input);
        return;
    }
    if (!target.Active) Activate(target.Outermost, true);
    if (input.Kind == InputKind::Activate) return;
    if (input.Kind == InputKind::Focus && input.Index != 0) {
        if (!HasFocusInside(target.Outermost)) SetFocus(window);
        return;
    }
    if (input.Kind < InputKind::Area && input.Kind != InputKind::Text) TellParents(window, WM_LBUTTONDOWN);
    if (input.Kind == InputKind::Click) {
        SendMessageA(window, BM_CLICK, 0, 0);
    } else if (input.Kind == InputKind::Focus) {
        SetFocus(window);
    } else if (target.TakeInput != nullptr) {
        target.TakeInput(window, input);
    }
}

bool IsOfCaller(HWND handle)
{
    const Locked locked;
    const Window *window = Find(handle);
    return window != nullptr && window->Thread == Self();
}

// Handles an input message; false for any other message.
bool DispatchInput(const MSG &message)
{
    if (message.message != inputMessage) return false;
    Input *input = nullptr;
    {
        const Locked locked;
        Thread *thread = Self();
        if (thread == nullptr || thread->Current == nullptr) return true;
        if (message.wParam != reinterpret_cast<WPARAM>(thread->Current)) return true;
        input = thread->Current;
        thread->Current = nullptr;
    }
    HandleInput(message.hwnd, *input);
    FreeInput(input);
    return true;
}

} // namespace

} // namespace varkui

using namespace varkui;

LRESULT DispatchMessageA(const MSG *message)
{
    if (message == nullptr || !IsOfCaller(message->hwnd) || DispatchInput(*message)) return 0;
    return CallProcedureOf(message->hwnd, message->message, message->wParam, message->lParam);
}
