// What all controls share: their state, their notices, and what a person does to them.
#include <cstring>
#include <unistd.h>

#include "window-system/memory.h"
#include "window-system/model.h"

namespace varkui {

namespace {

size_t StateSize(enum Kind kind)
{
    switch (kind) {
    case Kind::Dialog: return sizeof(DialogState);
    case Kind::Button: return sizeof(ButtonState);
    case Kind::Edit: return sizeof(EditState);
    case Kind::ListBox: return sizeof(ListState);
    case Kind::ComboBox: return sizeof(ComboState);
    case Kind::TabControl: return sizeof(TabState);
    case Kind::Picture: return sizeof(PictureState);
    case Kind::Plain:
    case Kind::Static: break;
    }
    return 0;
}

// What the input says of the window it goes to, once the lock is let go.
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

// The new size of a window without parent, as a person pulled it.
void Resize(HWND window, const Input &input)
{
    SetWindowPos(window, nullptr, 0, 0, input.Index, input.Index2,
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

} // namespace

bool MakeState(Window *window)
{
    const size_t size = StateSize(window->Kind);
    if (size == 0) return true;
    window->State = Allocate(size);
    if (window->State == nullptr) return false;
    switch (window->Kind) {
    case Kind::Edit: window->Edit->Limit = longestText; break;
    case Kind::ListBox:
        window->List->Selected = LB_ERR;
        window->List->Rows.Sorted = (window->Style & LBS_SORT) != 0;
        break;
    case Kind::ComboBox:
        window->Combo->Selected = CB_ERR;
        window->Combo->Rows.Sorted = (window->Style & CBS_SORT) != 0;
        window->Combo->Edit.Limit = longestText;
        break;
    case Kind::TabControl: window->Tabs->Selected = -1; break;
    case Kind::Picture: window->Picture->Shown.Descriptor = -1; break;
    default: break;
    }
    return true;
}

void FreeState(Window *window)
{
    if (window->State == nullptr) return;
    if (window->Kind == Kind::ListBox) RemoveAllRows(window->List->Rows);
    if (window->Kind == Kind::ComboBox) RemoveAllRows(window->Combo->Rows);
    if (window->Kind == Kind::TabControl) {
        for (int i = 0; i < window->Tabs->Count; ++i) {
            Release(window->Tabs->Items[i].Text);
        }
        Release(window->Tabs->Items);
    }
    if (window->Kind == Kind::Picture && window->Picture->Shown.Descriptor >= 0) {
        close(window->Picture->Shown.Descriptor);
    }
    Release(window->State);
    window->State = nullptr;
}

void NotifyParent(HWND control, int code)
{
    HWND parent = nullptr;
    LONG_PTR id = 0;
    {
        const Locked locked;
        const Window *window = Find(control);
        if (window == nullptr || window->Parent == nullptr) return;
        parent = window->Parent->Handle;
        id = window->Id;
    }
    SendMessageA(parent, WM_COMMAND, MAKEWPARAM(id, code), reinterpret_cast<LPARAM>(control));
}

namespace {

// Whether something inside `outermost`, not it itself, has the focus.
bool HasFocusInside(HWND outermost)
{
    HWND focus = GetFocus();
    return focus != nullptr && IsChild(outermost, focus) != FALSE;
}

} // namespace

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
        // It was usable when the person saw it; what they did there is taken back on the screen.
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

} // namespace varkui
