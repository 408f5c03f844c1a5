// The keys that a dialog keeps for itself.
#include "window-system/dialogs/in_view.h"
#include "window-system/dialogs/mnemonics.h"
#include "window-system/dialogs/walking.h"
#include "window-system/model/handles.h"
#include "window-system/model/model.h"
#include "window-system/model/threads.h"
#include "window-system/model/tree.h"
#include "window-system/model/window.h"

namespace varkui {

namespace {

void PressDefault(HWND dialog)
{
    int id = 0;
    HWND button = nullptr;
    {
        const Locked locked;
        Window *found = Find(dialog);
        if (found == nullptr) return;
        id = CurrentDefault(found);
        if (id == 0) id = IDOK;
        const Window *control = FindControl(found, id);
        if (control != nullptr && (control->Style & WS_DISABLED) != 0) return;
        if (control != nullptr) button = control->Handle;
    }
    SendMessageA(dialog, WM_COMMAND, MAKEWPARAM(id, BN_CLICKED), reinterpret_cast<LPARAM>(button));
}

void PressCancel(HWND dialog)
{
    HWND button = GetDlgItem(dialog, IDCANCEL);
    if (button != nullptr && IsWindowEnabled(button) == FALSE) return;
    SendMessageA(dialog, WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED), reinterpret_cast<LPARAM>(button));
}

void MoveInGroup(HWND dialog, HWND control, bool previous)
{
    HWND next = GetNextDlgGroupItem(dialog, control, previous ? TRUE : FALSE);
    if (next == nullptr || next == control) return;
    FocusControl(next);
    // Moving through radio buttons chooses.
    if ((DialogCode(next, nullptr) & DLGC_RADIOBUTTON) != 0 && GetFocus() == next)
        SendMessageA(next, BM_CLICK, 0, 0);
}

// A dialog's procedure may handle WM_NEXTDLGCTL itself; other windows do not know the message.
void DoTab(HWND dialog, bool previous)
{
    bool isDialog = false;
    {
        const Locked locked;
        const Window *found = Find(dialog);
        isDialog = found != nullptr && found->Kind == Kind::Dialog;
    }
    if (isDialog) {
        SendMessageA(dialog, WM_NEXTDLGCTL, previous ? 1 : 0, 0);
    } else {
        MoveOn(dialog, previous ? 1 : 0, false);
    }
}

// A key that the dialog keeps for itself; false leaves it to the control.
bool DoKey(HWND dialog, const MSG &message)
{
    const LRESULT code = DialogCode(message.hwnd, &message);
    if ((code & DLGC_WANTMESSAGE) != 0) return false;
    switch (message.wParam) {
    case VK_TAB:
        if ((code & DLGC_WANTTAB) != 0 || GetKeyState(VK_CONTROL) < 0) return false;
        DoTab(dialog, GetKeyState(VK_SHIFT) < 0);
        return true;
    case VK_LEFT:
    case VK_UP:
    case VK_RIGHT:
    case VK_DOWN:
        if ((code & DLGC_WANTARROWS) != 0) return false;
        MoveInGroup(dialog, message.hwnd, message.wParam == VK_LEFT || message.wParam == VK_UP);
        return true;
    case VK_ESCAPE: PressCancel(dialog); return true;
    case VK_RETURN: PressDefault(dialog); return true;
    default: return false;
    }
}

// A character that is a mnemonic; false leaves it to the control.
bool DoCharacter(HWND dialog, const MSG &message)
{
    const auto character = static_cast<unsigned char>(message.wParam);
    if (message.message == WM_SYSCHAR) return DoMnemonic(dialog, character);
    if ((DialogCode(message.hwnd, &message) & (DLGC_WANTCHARS | DLGC_WANTMESSAGE)) != 0) return false;
    // Without a field that takes text, the letter alone does.
    return DoMnemonic(dialog, character);
}

} // namespace

} // namespace varkui

using namespace varkui;

BOOL IsDialogMessageA(HWND dialog, MSG *message)
{
    if (message == nullptr) return FALSE;
    {
        const Locked locked;
        const Window *outer = Find(dialog);
        const Window *target = Find(message->hwnd);
        if (outer == nullptr || target == nullptr || target->Thread != Self()) return FALSE;
        if (target != outer && !LiesInside(target, outer)) return FALSE;
    }
    if (message->message == WM_KEYDOWN && DoKey(dialog, *message)) return TRUE;
    if ((message->message == WM_CHAR || message->message == WM_SYSCHAR) && DoCharacter(dialog, *message))
        return TRUE;
    TranslateMessage(message);
    DispatchMessageA(message);
    return TRUE;
}
