#include "window-system/dialogs/dialogs.h"

#include "window-system/dialogs/in_view.h"
#include "window-system/dialogs/templates.h"
#include "window-system/dialogs/units.h"
#include "window-system/dialogs/walking.h"
#include "window-system/model/as_pointer.h"
#include "window-system/model/handles.h"
#include "window-system/model/model.h"
#include "window-system/model/threads.h"
#include "window-system/model/tree.h"
#include "window-system/model/window.h"

namespace varkui {

namespace {

void RememberFocus(HWND dialog)
{
    const Locked locked(mutates);
    Window *found = Find(dialog);
    const Thread *thread = Self();
    if (found == nullptr || found->Kind != Kind::Dialog || thread == nullptr) return;
    const Window *focus = Find(thread->Focus);
    if (focus != nullptr && LiesInside(focus, found)) found->Dialog->SavedFocus = focus->Handle;
}

// Puts the focus back to where it was when the dialog was left; else, if `orFirst`, to its first control.
void RestoreFocus(HWND dialog, bool orFirst)
{
    HWND saved = nullptr;
    {
        const Locked locked;
        const Window *found = Find(dialog);
        if (found == nullptr || found->Kind != Kind::Dialog) return;
        const Thread *thread = Self();
        const Window *focus = thread != nullptr ? Find(thread->Focus) : nullptr;
        if (focus != nullptr && LiesInside(focus, found)) return;
        const Window *candidate = Find(found->Dialog->SavedFocus);
        if (candidate != nullptr && LiesInside(candidate, found)) saved = candidate->Handle;
    }
    if (saved != nullptr && SetFocus(saved) == nullptr && GetFocus() != saved) saved = nullptr;
    if (saved == nullptr && orFirst) FocusControl(GetNextDlgTabItem(dialog, nullptr, FALSE));
}

LRESULT DefaultId(HWND dialog)
{
    const Locked locked;
    const Window *found = Find(dialog);
    if (found == nullptr || found->Kind != Kind::Dialog || found->Dialog->DefaultId == 0) return 0;
    return MAKELRESULT(found->Dialog->DefaultId, DC_HASDEFID);
}

void SetDefaultId(HWND dialog, int id)
{
    const Locked locked(mutates);
    Window *found = Find(dialog);
    if (found == nullptr || found->Kind != Kind::Dialog) return;
    found->Dialog->DefaultId = id;
    Note(found, changedState);
}

LRESULT DoByItself(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case WM_ACTIVATE:
        if (LOWORD(wParam) == WA_INACTIVE) {
            RememberFocus(dialog);
        } else {
            RestoreFocus(dialog, false);
        }
        return 0;
    case WM_SETFOCUS: RestoreFocus(dialog, true); return 0;
    case WM_CLOSE: {
        HWND button = GetDlgItem(dialog, IDCANCEL);
        if (button != nullptr && IsWindowEnabled(button) == FALSE) return 0;
        PostMessageA(dialog, WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED), reinterpret_cast<LPARAM>(button));
        return 0;
    }
    case WM_NEXTDLGCTL: MoveOn(dialog, wParam, lParam != 0); return 0;
    case DM_GETDEFID: return DefaultId(dialog);
    case DM_SETDEFID: SetDefaultId(dialog, static_cast<int>(wParam)); return TRUE;
    default: return DefWindowProcA(dialog, message, wParam, lParam);
    }
}

// The controls of a template; false when one of them could not be made.
bool MakeControls(HWND dialog, Reader &reader, const TemplateHead &head, const void *beginning)
{
    for (WORD i = 0; i < head.Count; ++i) {
        TemplateItem item = {};
        Align(reader, beginning);
        TakeItem(reader, head, item);
        const RECT place = Pixels(item.X, item.Y, item.X + item.Width, item.Y + item.Height);
        const auto id = static_cast<LONG_PTR>(static_cast<LONG>(item.Id));
        HWND control =
            CreateWindowExA(item.ExStyle | WS_EX_NOPARENTNOTIFY, item.Class, item.Text, item.Style | WS_CHILD,
                            place.left, place.top, place.right - place.left, place.bottom - place.top, dialog,
                            AsPointer<HMENU>(id), nullptr, nullptr);
        if (control == nullptr) return false;
        const Locked locked;
        Window *made = Find(control);
        Window *parent = Find(dialog);
        if (made == nullptr || parent == nullptr) return false;
        const bool isDefault = made->Kind == Kind::Button && (made->Style & BS_TYPEMASK) == BS_DEFPUSHBUTTON;
        if (isDefault && parent->Dialog->DefaultId == 0) parent->Dialog->DefaultId = static_cast<int>(id);
    }
    return true;
}

} // namespace

HWND MakeDialog(LPCDLGTEMPLATEA dialogTemplate, HWND owner, DLGPROC procedure, LPARAM parameter,
                ModalLoop *loop)
{
    if (dialogTemplate == nullptr) return nullptr;
    frontEnd.Choose(); // tells how large a dialog unit is
    Reader reader = {reinterpret_cast<const unsigned char *>(dialogTemplate)};
    TemplateHead head = {};
    TakeHead(reader, head);
    const bool isChild = (head.Style & WS_CHILD) != 0;
    const RECT place = Pixels(head.X, head.Y, head.X + head.Width, head.Y + head.Height);
    DWORD exStyle = head.ExStyle;
    if ((head.Style & DS_CONTROL) != 0) exStyle |= WS_EX_CONTROLPARENT;
    HWND dialog =
        CreateWindowExA(exStyle, "#32770", head.Title, head.Style & ~WS_VISIBLE, place.left, place.top,
                        place.right - place.left, place.bottom - place.top, owner, nullptr, nullptr, nullptr);
    if (dialog == nullptr) return nullptr;
    {
        const Locked locked(mutates);
        Window *made = Find(dialog);
        if (made == nullptr) return nullptr;
        made->Dialog->Number = head.Number;
        if (loop != nullptr) {
            loop->Dialog = dialog;
            loop->Outer = made->Thread->Modal;
            made->Thread->Modal = loop;
        }
    }
    SetWindowLongPtrA(dialog, DWLP_DLGPROC, reinterpret_cast<LONG_PTR>(procedure));
    if (!MakeControls(dialog, reader, head, dialogTemplate)) {
        DestroyWindow(dialog);
        return nullptr;
    }
    HWND first = GetNextDlgTabItem(dialog, nullptr, FALSE);
    const LRESULT takesFocus =
        SendMessageA(dialog, WM_INITDIALOG, reinterpret_cast<WPARAM>(first), parameter);
    if (IsWindow(dialog) == FALSE) return nullptr;
    if (takesFocus != 0 && !isChild && (loop == nullptr || !loop->Ended)) {
        FocusControl(GetNextDlgTabItem(dialog, nullptr, FALSE));
    }
    if (loop == nullptr && (head.Style & WS_VISIBLE) != 0) ShowWindow(dialog, SW_SHOW);
    return IsWindow(dialog) != FALSE ? dialog : nullptr;
}

namespace {

// Shows a dialog and handles messages until it ends.
void RunLoop(ModalLoop &loop)
{
    HWND dialog = loop.Dialog;
    if (!loop.Ended) ShowWindow(dialog, SW_SHOW);
    const auto goesOn = [&loop, dialog] {
        const Locked locked;
        return !loop.Ended && Find(dialog) != nullptr;
    };
    MSG message = {};
    while (goesOn()) {
        const BOOL got = GetMessageA(&message, nullptr, 0, 0);
        if (got < 0) break;
        if (got == 0) {
            // The end of the program concerns the loop outside as well.
            PostQuitMessage(static_cast<int>(message.wParam));
            break;
        }
        if (IsDialogMessageA(dialog, &message) != FALSE) continue;
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
}

// Removes the loop from its thread and enables the owner again, even if the dialog is gone.
void EndModal(ModalLoop &loop)
{
    HWND disabled = nullptr;
    {
        const Locked locked(mutates);
        disabled = loop.Disabled;
        loop.Disabled = nullptr;
    }
    if (disabled != nullptr) EnableWindow(disabled, TRUE);
    DestroyWindow(loop.Dialog);
    {
        const Locked locked(mutates);
        Thread *thread = Self();
        if (thread == nullptr) return;
        for (ModalLoop **link = &thread->Modal; *link != nullptr; link = &(*link)->Outer) {
            if (*link != &loop) continue;
            *link = loop.Outer;
            break;
        }
    }
    frontEnd.Idle();
}

} // namespace

INT_PTR RunDialog(LPCDLGTEMPLATEA dialogTemplate, HWND owner, DLGPROC procedure, LPARAM parameter)
{
    HWND outermost = nullptr;
    {
        const Locked locked;
        const Window *found = OwnerOf(owner);
        if (found != nullptr) outermost = found->Handle;
    }
    ModalLoop loop = {};
    HWND made = MakeDialog(dialogTemplate, outermost, procedure, parameter, &loop);
    if (loop.Dialog == nullptr) return -1;
    if (made == nullptr) {
        EndModal(loop);
        return loop.Ended ? loop.Result : -1;
    }
    if (outermost != nullptr && !loop.Ended && EnableWindow(outermost, FALSE) == FALSE) {
        const Locked locked;
        loop.Disabled = outermost;
    }
    RunLoop(loop);
    EndModal(loop);
    return loop.Result;
}

} // namespace varkui

using namespace varkui;

INT_PTR DialogBoxIndirectParamA(HINSTANCE /*instance*/, LPCDLGTEMPLATEA dialogTemplate, HWND owner,
                                DLGPROC procedure, LPARAM parameter)
{
    return RunDialog(dialogTemplate, owner, procedure, parameter);
}

HWND CreateDialogIndirectParamA(HINSTANCE /*instance*/, LPCDLGTEMPLATEA dialogTemplate, HWND owner,
                                DLGPROC procedure, LPARAM parameter)
{
    return MakeDialog(dialogTemplate, owner, procedure, parameter, nullptr);
}

BOOL EndDialog(HWND dialog, INT_PTR result)
{
    HWND disabled = nullptr;
    bool mine = false;
    {
        const Locked locked(mutates);
        Window *found = Find(dialog);
        if (found == nullptr || found->Kind != Kind::Dialog) return FALSE;
        ModalLoop *loop = LoopOf(found);
        if (loop != nullptr && !loop->Ended) {
            loop->Ended = true;
            loop->Result = result;
        }
        found->Dialog->Ended = true;
        mine = found->Thread == Self();
        if (mine && loop != nullptr) {
            disabled = loop->Disabled;
            loop->Disabled = nullptr;
        }
        WakeThread(found->Thread);
    }
    if (!mine) return TRUE;
    // The owner comes back before the dialog goes, so that it is the one to be active next.
    if (disabled != nullptr) EnableWindow(disabled, TRUE);
    ShowWindow(dialog, SW_HIDE);
    return TRUE;
}

LRESULT DefDlgProcA(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
{
    const auto procedure = AsPointer<DLGPROC>(GetWindowLongPtrA(dialog, DWLP_DLGPROC));
    if (message == WM_NCCREATE || message == WM_CREATE || procedure == nullptr) {
        return DoByItself(dialog, message, wParam, lParam);
    }
    SetWindowLongPtrA(dialog, DWLP_MSGRESULT, 0);
    const INT_PTR handled = procedure(dialog, message, wParam, lParam);
    if (message == WM_INITDIALOG) return handled;
    if (handled == 0) return DoByItself(dialog, message, wParam, lParam);
    return GetWindowLongPtrA(dialog, DWLP_MSGRESULT);
}
