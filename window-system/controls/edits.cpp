#include "window-system/controls/edits.h"

#include "window-system/controls/editing.h"
#include "window-system/controls/notices.h"
#include "window-system/model/as_pointer.h"
#include "window-system/model/handles.h"
#include "window-system/model/input.h"
#include "window-system/model/model.h"
#include "window-system/model/texts.h"
#include "window-system/model/tree.h"
#include "window-system/model/window.h"

#include <cstring>

namespace varkui {

namespace {

Window *FindEdit(HWND handle)
{
    Window *window = Find(handle);
    return window != nullptr && window->Kind == Kind::Edit ? window : nullptr;
}

bool IsReadOnly(const Window *window)
{
    return window->Kind == Kind::Edit && (window->Style & ES_READONLY) != 0;
}

void TellEdited(HWND handle, Edited edited)
{
    if (edited == Edited::AtLimit) NotifyParent(handle, EN_MAXTEXT);
    if (edited == Edited::NoMemory) NotifyParent(handle, EN_ERRSPACE);
    if (edited != Edited::Changed) return;
    NotifyParent(handle, EN_UPDATE);
    NotifyParent(handle, EN_CHANGE);
}

LRESULT SetText(HWND handle, WPARAM wParam, LPARAM lParam)
{
    const LRESULT done = DefWindowProcA(handle, WM_SETTEXT, wParam, lParam);
    bool tells = false;
    {
        const Locked locked(mutates);
        Window *window = FindEdit(handle);
        if (window == nullptr) return done;
        window->Edit->Modified = false;
        ++window->Edit->Serial;
        tells = done == TRUE && !IsMultiline(window);
    }
    if (tells) TellEdited(handle, Edited::Changed);
    return done;
}

LRESULT Selection(HWND handle, WPARAM wParam, LPARAM lParam)
{
    const Locked locked;
    const Window *window = FindEdit(handle);
    if (window == nullptr) return 0;
    const LONG start = SelectionStart(*window->Edit);
    const LONG end = SelectionEnd(*window->Edit);
    if (wParam != 0) *AsPointer<DWORD *>(wParam) = static_cast<DWORD>(start);
    if (lParam != 0) *AsPointer<DWORD *>(lParam) = static_cast<DWORD>(end);
    return MAKELONG(start, end);
}

LRESULT DialogCodeOf(HWND handle, LPARAM lParam)
{
    const auto *message = AsPointer<const MSG *>(lParam);
    const Locked locked;
    const Window *window = FindEdit(handle);
    if (window == nullptr) return 0;
    LRESULT code = DLGC_HASSETSEL | DLGC_WANTCHARS | DLGC_WANTARROWS;
    const bool isReturn = message != nullptr && message->wParam == VK_RETURN &&
                          (message->message == WM_KEYDOWN || message->message == WM_CHAR);
    if (isReturn && IsMultiline(window) && (window->Style & ES_WANTRETURN) != 0) code |= DLGC_WANTMESSAGE;
    return code;
}

// Runs one editing step under the lock and notifies the parent of its outcome.
template <typename Step> void Edit(HWND handle, Step step)
{
    Edited edited = Edited::Nothing;
    {
        const Locked locked(mutates);
        Window *window = FindEdit(handle);
        if (window == nullptr || !AreEnabled(window) || IsReadOnly(window)) return;
        edited = step(window, *window->Edit);
    }
    TellEdited(handle, edited);
}

void ReplaceSelectionOf(HWND handle, LPARAM lParam)
{
    const auto *text = AsPointer<const char *>(lParam);
    if (text == nullptr) text = "";
    Edited edited = Edited::Nothing;
    {
        const Locked locked(mutates);
        Window *window = FindEdit(handle);
        if (window == nullptr) return;
        edited = ReplaceSelection(window, *window->Edit, text, true);
    }
    TellEdited(handle, edited);
}

LRESULT CountLines(HWND handle)
{
    const Locked locked;
    const Window *window = FindEdit(handle);
    LRESULT lines = 1;
    for (const char *text = window != nullptr ? TextOf(window) : ""; *text != 0; ++text) {
        if (*text == '\n' && IsMultiline(window)) ++lines;
    }
    return lines;
}

LRESULT EditMessage(HWND handle, UINT message, WPARAM wParam, LPARAM lParam)
{
    const Locked locked(mutates);
    Window *window = FindEdit(handle);
    if (window == nullptr) return 0;
    EditState &edit = *window->Edit;
    switch (message) {
    case EM_SETSEL: SelectText(window, edit, static_cast<LONG>(wParam), static_cast<LONG>(lParam)); return 1;
    case EM_GETMODIFY: return edit.Modified ? TRUE : FALSE;
    case EM_SETMODIFY: edit.Modified = wParam != 0; return 0;
    case EM_LIMITTEXT:
        edit.Limit = wParam == 0 || wParam > INT32_MAX ? INT32_MAX : static_cast<LONG>(wParam);
        Note(window, changedState);
        return 0;
    case EM_GETLIMITTEXT: return edit.Limit;
    case EM_SETREADONLY:
        window->Style = wParam != 0 ? window->Style | ES_READONLY : window->Style & ~ES_READONLY;
        Note(window, changedState);
        return TRUE;
    default: return 0;
    }
}

} // namespace

void InputToEdit(HWND edit, const Input &input)
{
    if (input.Kind == InputKind::Caret) {
        const Locked locked(mutates);
        Window *window = FindEdit(edit);
        if (window != nullptr) TakeCaret(window, *window->Edit, input);
    }
    if (input.Kind != InputKind::Text) return;
    Edit(edit, [&input](Window *window, EditState &state) { return TakeTyped(window, state, input); });
}

LRESULT CALLBACK EditProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case WM_GETDLGCODE: return DialogCodeOf(window, lParam);
    case WM_SETTEXT: return SetText(window, wParam, lParam);
    case WM_CHAR:
        Edit(window, [wParam](Window *edited, EditState &edit) {
            return TypeCharacter(edited, edit, static_cast<unsigned char>(wParam));
        });
        return 0;
    case WM_KEYDOWN: {
        const bool shift = GetKeyState(VK_SHIFT) < 0;
        Edit(window, [wParam, shift](Window *edited, EditState &edit) {
            return PressKey(edited, edit, wParam, shift);
        });
        return 0;
    }
    case WM_LBUTTONDOWN: SetFocus(window); return 0;
    case WM_SETFOCUS: NotifyParent(window, EN_SETFOCUS); return 0;
    case WM_KILLFOCUS: NotifyParent(window, EN_KILLFOCUS); return 0;
    case EM_GETSEL: return Selection(window, wParam, lParam);
    case EM_REPLACESEL: ReplaceSelectionOf(window, lParam); return 0;
    case EM_GETLINECOUNT: return CountLines(window);
    case EM_SETSEL:
    case EM_GETMODIFY:
    case EM_SETMODIFY:
    case EM_LIMITTEXT:
    case EM_GETLIMITTEXT:
    case EM_SETREADONLY: return EditMessage(window, message, wParam, lParam);
    default: return DefWindowProcA(window, message, wParam, lParam);
    }
}

} // namespace varkui
