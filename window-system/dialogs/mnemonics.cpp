#include "window-system/dialogs/mnemonics.h"

#include "window-system/dialogs/walking.h"
#include "window-system/model/collation.h"
#include "window-system/model/handles.h"
#include "window-system/model/model.h"
#include "window-system/model/texts.h"
#include "window-system/model/threads.h"
#include "window-system/model/tree.h"
#include "window-system/model/window.h"

namespace varkui {

namespace {

// The lower-case letter behind a single "&", 0 for none.
unsigned char MnemonicOf(const char *text)
{
    for (; *text != 0; ++text) {
        if (*text != '&') continue;
        if (text[1] != '&') return LowerCase(static_cast<unsigned char>(text[1]));
        ++text;
    }
    return 0;
}

bool HasMnemonic(const Window *window, unsigned char letter)
{
    if ((window->Style & WS_VISIBLE) == 0) return false;
    if (window->Kind == Kind::Static) {
        if ((window->Style & SS_NOPREFIX) != 0) return false;
    } else if (window->Kind != Kind::Button || (window->Style & WS_DISABLED) != 0) {
        return false;
    }
    return MnemonicOf(TextOf(window)) == letter;
}

struct Mnemonic {
    HWND Control;
    bool Alone;
    bool Inert; // leads to the control behind it
};

// The next control with that mnemonic behind the focus, going round.
Mnemonic FindMnemonic(Window *dialog, const Window *focus, unsigned char letter)
{
    Window *first = nullptr;
    Window *behind = nullptr;
    int count = 0;
    bool passed = false;
    for (Window *each = NextControl(dialog, dialog); each != nullptr; each = NextControl(dialog, each)) {
        if (HasMnemonic(each, letter)) {
            ++count;
            if (first == nullptr) first = each;
            if (passed && behind == nullptr) behind = each;
        }
        if (each == focus) passed = true;
    }
    const Window *found = behind != nullptr ? behind : first;
    if (found == nullptr) return Mnemonic{nullptr, false, false};
    return Mnemonic{found->Handle, count == 1, IsInert(found)};
}

// The radio button of the group around `control` that Tab reaches, else `control`.
const Window *CheckedOfGroup(Window *control)
{
    Window *each = control;
    do {
        if ((each->Style & WS_TABSTOP) != 0 && IsUsable(each)) return each;
        each = FindInGroup(each, false);
    } while (each != control);
    return control;
}

// The control that a label leads to: the next one behind it that can have the focus.
HWND BehindLabel(HWND dialog, HWND label)
{
    const Locked locked;
    Window *outer = Find(dialog);
    Window *inner = Find(label);
    if (outer == nullptr || inner == nullptr || !LiesInside(inner, outer)) return nullptr;
    for (Window *each = NextControl(outer, inner); each != nullptr; each = NextControl(outer, each)) {
        if (IsInert(each) || (each->ExStyle & WS_EX_CONTROLPARENT) != 0) continue;
        if (IsUsable(each)) return CheckedOfGroup(each)->Handle;
        if ((each->Style & WS_VISIBLE) != 0) return nullptr; // the one it names is disabled
    }
    return nullptr;
}

} // namespace

bool DoMnemonic(HWND dialog, unsigned char character)
{
    Mnemonic found = {};
    bool pressable = false;
    {
        const Locked locked;
        Window *outer = Find(dialog);
        const Thread *thread = Self();
        if (outer == nullptr || thread == nullptr || character <= ' ') return false;
        found = FindMnemonic(outer, Find(thread->Focus), LowerCase(character));
        const Window *control = Find(found.Control);
        pressable = control != nullptr && control->Kind == Kind::Button && !found.Inert;
    }
    if (found.Control == nullptr) return false;
    HWND target = found.Inert ? BehindLabel(dialog, found.Control) : found.Control;
    if (target == nullptr) return true;
    FocusControl(target);
    if (pressable && found.Alone && GetFocus() == target) SendMessageA(target, BM_CLICK, 0, 0);
    return true;
}

} // namespace varkui
