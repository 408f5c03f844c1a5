#include "window-system/controls/combo_boxes.h"

#include "window-system/controls/editing.h"
#include "window-system/controls/notices.h"
#include "window-system/model/as_pointer.h"
#include "window-system/model/handles.h"
#include "window-system/model/input.h"
#include "window-system/model/model.h"
#include "window-system/model/rows.h"
#include "window-system/model/texts.h"
#include "window-system/model/tree.h"
#include "window-system/model/window.h"

#include <cstring>

namespace varkui {

namespace {

Window *FindCombo(HWND handle)
{
    Window *window = Find(handle);
    return window != nullptr && window->Kind == Kind::ComboBox ? window : nullptr;
}

bool HasField(const Window *window) { return (window->Style & CBS_TYPEMASK) != CBS_DROPDOWNLIST; }

const char *AsText(LPARAM lParam) { return AsPointer<const char *>(lParam); }

// Copies the text of the selected row into the field.
void PutSelection(Window *window, LONG row)
{
    ComboState &combo = *window->Combo;
    const Row *selected = RowAt(combo.Rows, row);
    const char *text = selected != nullptr ? selected->Text : "";
    combo.Selected = selected != nullptr ? row : CB_ERR;
    combo.Edit.Anchor = combo.Edit.Caret = 0;
    ++combo.Edit.Serial;
    if (ReplaceText(window, text, strlen(text))) SelectText(window, combo.Edit, 0, -1);
    Note(window, changedState);
}

LONG Insert(Window *window, LONG index, const char *text, bool sorted)
{
    ComboState &combo = *window->Combo;
    const LONG row = InsertRow(combo.Rows, index, text, sorted);
    if (row < 0) return row;
    if (combo.Selected != CB_ERR && row <= combo.Selected) ++combo.Selected;
    Note(window, changedRows);
    return row;
}

LONG RemoveAt(Window *window, LONG index)
{
    ComboState &combo = *window->Combo;
    if (!RemoveRow(combo.Rows, index)) return CB_ERR;
    if (combo.Selected == index) {
        combo.Selected = CB_ERR;
        if (!HasField(window)) PutSelection(window, CB_ERR);
    } else if (combo.Selected > index) {
        --combo.Selected;
    }
    Note(window, changedAll);
    return combo.Rows.Count;
}

void Reset(Window *window)
{
    RemoveAllRows(window->Combo->Rows);
    PutSelection(window, CB_ERR);
    Note(window, changedAll);
}

LRESULT TextOfRow(const Rows &rows, WPARAM index, LPARAM lParam)
{
    const Row *row = index <= INT32_MAX ? RowAt(rows, static_cast<LONG>(index)) : nullptr;
    if (row == nullptr) return CB_ERR;
    auto *out = AsPointer<char *>(lParam);
    if (out != nullptr) memcpy(out, row->Text, row->TextLength + 1);
    return static_cast<LRESULT>(row->TextLength);
}

LRESULT ReadSelection(const EditState &edit, WPARAM wParam, LPARAM lParam)
{
    const LONG start = SelectionStart(edit);
    const LONG end = SelectionEnd(edit);
    if (wParam != 0) *AsPointer<DWORD *>(wParam) = static_cast<DWORD>(start);
    if (lParam != 0) *AsPointer<DWORD *>(lParam) = static_cast<DWORD>(end);
    return MAKELONG(start, end);
}

LRESULT SetSelection(Window *window, LONG row)
{
    if (row < -1 || row >= window->Combo->Rows.Count) row = -1;
    PutSelection(window, row);
    return row;
}

LRESULT ComboMessage(HWND handle, UINT message, WPARAM wParam, LPARAM lParam)
{
    const Locked locked;
    Window *window = FindCombo(handle);
    if (window == nullptr) return CB_ERR;
    ComboState &combo = *window->Combo;
    const auto index = static_cast<LONG>(wParam);
    switch (message) {
    case CB_ADDSTRING: return lParam != 0 ? Insert(window, -1, AsText(lParam), true) : CB_ERR;
    case CB_INSERTSTRING: return lParam != 0 ? Insert(window, index, AsText(lParam), false) : CB_ERR;
    case CB_DELETESTRING: return RemoveAt(window, index);
    case CB_RESETCONTENT: Reset(window); return CB_OKAY;
    case CB_GETCOUNT: return combo.Rows.Count;
    case CB_GETCURSEL: return combo.Selected;
    case CB_SETCURSEL: return SetSelection(window, index);
    case CB_GETLBTEXT: return TextOfRow(combo.Rows, wParam, lParam);
    case CB_GETLBTEXTLEN: return TextOfRow(combo.Rows, wParam, 0);
    case CB_FINDSTRING: return lParam != 0 ? FindRow(combo.Rows, index, AsText(lParam), false) : CB_ERR;
    case CB_FINDSTRINGEXACT: return lParam != 0 ? FindRow(combo.Rows, index, AsText(lParam), true) : CB_ERR;
    case CB_SELECTSTRING: {
        const LONG found = lParam != 0 ? FindRow(combo.Rows, index, AsText(lParam), false) : CB_ERR;
        return found != CB_ERR ? SetSelection(window, found) : CB_ERR;
    }
    case CB_GETITEMDATA: {
        const Row *row = RowAt(combo.Rows, index);
        return row != nullptr ? row->Data : CB_ERR;
    }
    case CB_SETITEMDATA: {
        Row *row = RowAt(combo.Rows, index);
        if (row == nullptr) return CB_ERR;
        row->Data = lParam;
        return CB_OKAY;
    }
    case CB_LIMITTEXT:
        combo.Edit.Limit = wParam == 0 || wParam > INT32_MAX ? INT32_MAX : static_cast<LONG>(wParam);
        Note(window, changedState);
        return TRUE;
    case CB_GETEDITSEL: return ReadSelection(combo.Edit, wParam, lParam);
    case CB_SETEDITSEL:
        if (!HasField(window)) return CB_ERR;
        SelectText(window, combo.Edit, static_cast<SHORT>(LOWORD(lParam)),
                   static_cast<SHORT>(HIWORD(lParam)));
        return TRUE;
    case CB_GETDROPPEDSTATE: return combo.Dropped ? TRUE : FALSE;
    default: return CB_OKAY; // CB_INITSTORAGE: nothing to do
    }
}

LRESULT SetText(HWND handle, WPARAM wParam, LPARAM lParam)
{
    {
        const Locked locked(mutates);
        Window *window = FindCombo(handle);
        if (window == nullptr || !HasField(window)) return CB_ERR;
        ++window->Combo->Edit.Serial;
        // A text that a caller writes selects no row.
        window->Combo->Selected = CB_ERR;
    }
    return DefWindowProcA(handle, WM_SETTEXT, wParam, lParam);
}

void Drop(HWND handle, bool open)
{
    {
        const Locked locked(mutates);
        Window *window = FindCombo(handle);
        if (window == nullptr || window->Combo->Dropped == open || (open && !AreEnabled(window))) return;
        window->Combo->Dropped = open;
        Note(window, changedState);
    }
    NotifyParent(handle, open ? CBN_DROPDOWN : CBN_CLOSEUP);
}

// A row that a person chose; false when there is no such row.
bool Choose(HWND handle, LONG row)
{
    {
        const Locked locked(mutates);
        Window *window = FindCombo(handle);
        if (window == nullptr || !AreEnabled(window) || RowAt(window->Combo->Rows, row) == nullptr)
            return false;
        PutSelection(window, row);
    }
    NotifyParent(handle, CBN_SELENDOK);
    NotifyParent(handle, CBN_SELCHANGE);
    return true;
}

void TellEdited(HWND handle, Edited edited)
{
    if (edited == Edited::NoMemory) NotifyParent(handle, CBN_ERRSPACE);
    if (edited != Edited::Changed) return;
    NotifyParent(handle, CBN_EDITUPDATE);
    NotifyParent(handle, CBN_EDITCHANGE);
}

template <typename Step> void Edit(HWND handle, Step step)
{
    Edited edited = Edited::Nothing;
    {
        const Locked locked(mutates);
        Window *window = FindCombo(handle);
        if (window == nullptr || !AreEnabled(window) || !HasField(window)) return;
        edited = step(window, window->Combo->Edit);
        if (edited == Edited::Changed) window->Combo->Selected = CB_ERR;
    }
    TellEdited(handle, edited);
}

void DoKey(HWND handle, WPARAM key, bool shift)
{
    LONG row = CB_ERR;
    bool field = false;
    bool dropped = false;
    {
        const Locked locked;
        const Window *window = FindCombo(handle);
        if (window == nullptr) return;
        const ComboState &combo = *window->Combo;
        field = HasField(window);
        dropped = combo.Dropped;
        const LONG last = combo.Rows.Count - 1;
        const LONG page = 10;
        const bool inList = !field || dropped;
        row = combo.Selected;
        if (key == VK_DOWN) ++row;
        if (key == VK_UP) row = row > 0 ? row - 1 : 0;
        if (key == VK_NEXT) row += page;
        if (key == VK_PRIOR) row -= page;
        if (key == VK_HOME && inList) row = 0;
        if (key == VK_END && inList) row = last;
        if (row > last) row = last;
        if (row < 0 && row != combo.Selected && last >= 0) row = 0;
        if (row == combo.Selected) row = CB_ERR;
    }
    if (key == VK_F4) {
        Drop(handle, !dropped);
    } else if (dropped && (key == VK_RETURN || key == VK_ESCAPE)) {
        Drop(handle, false);
    } else if (row != CB_ERR) {
        Choose(handle, row);
    } else {
        Edit(handle,
             [key, shift](Window *window, EditState &edit) { return PressKey(window, edit, key, shift); });
    }
}

// A character goes into the field; without one it leads to the next row that begins with it.
void DoCharacter(HWND handle, WPARAM wParam)
{
    LONG row = CB_ERR;
    {
        const Locked locked;
        const Window *window = FindCombo(handle);
        if (window == nullptr) return;
        if (!HasField(window)) {
            if (wParam < ' ' || wParam > 0xFF) return;
            const char text[2] = {static_cast<char>(wParam), 0};
            row = FindRow(window->Combo->Rows, window->Combo->Selected, text, false);
            if (row == window->Combo->Selected) return;
        }
    }
    if (row != CB_ERR) {
        Choose(handle, row);
        return;
    }
    Edit(handle, [wParam](Window *window, EditState &edit) {
        return TypeCharacter(window, edit, static_cast<unsigned char>(wParam));
    });
}

LRESULT DialogCodeOf(HWND handle, LPARAM lParam)
{
    const auto *message = AsPointer<const MSG *>(lParam);
    const Locked locked;
    const Window *window = FindCombo(handle);
    if (window == nullptr) return 0;
    LRESULT code = DLGC_WANTARROWS | DLGC_WANTCHARS;
    // An open list is closed by these, not the dialog.
    const bool closes = message != nullptr && (message->wParam == VK_RETURN || message->wParam == VK_ESCAPE);
    if (closes && window->Combo->Dropped) code |= DLGC_WANTMESSAGE;
    return code;
}

// Tab selects the field's content when the focus comes, since the dialog cannot tell a combo box's own field.
void TakeFocus(HWND handle)
{
    {
        const Locked locked(mutates);
        Window *window = FindCombo(handle);
        if (window == nullptr) return;
        SelectText(window, window->Combo->Edit, 0, -1);
    }
    NotifyParent(handle, CBN_SETFOCUS);
}

} // namespace

void InputToComboBox(HWND combo, const Input &input)
{
    if (input.Kind == InputKind::Text) {
        Edit(combo, [&input](Window *window, EditState &state) { return TakeTyped(window, state, input); });
        return;
    }
    if (input.Kind == InputKind::Caret) {
        const Locked locked(mutates);
        Window *window = FindCombo(combo);
        if (window != nullptr) TakeCaret(window, window->Combo->Edit, input);
        return;
    }
    const bool chooses = input.Kind == InputKind::Select || input.Kind == InputKind::Pick;
    if (!chooses && input.Kind != InputKind::Drop) return;
    if (GetFocus() != combo) SetFocus(combo);
    if (GetFocus() != combo) return;
    if (input.Kind == InputKind::Drop) {
        Drop(combo, input.Index != 0);
    } else if (Choose(combo, input.Index)) {
        Drop(combo, false);
    }
}

LRESULT CALLBACK ComboBoxProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == CB_SHOWDROPDOWN) {
        Drop(window, wParam != 0);
        return TRUE;
    }
    if (message >= CB_GETEDITSEL && message <= CB_INITSTORAGE)
        return ComboMessage(window, message, wParam, lParam);
    switch (message) {
    case WM_GETDLGCODE: return DialogCodeOf(window, lParam);
    case WM_SETTEXT: return SetText(window, wParam, lParam);
    case WM_KEYDOWN: DoKey(window, wParam, GetKeyState(VK_SHIFT) < 0); return 0;
    case WM_SYSKEYDOWN:
        if (wParam != VK_DOWN && wParam != VK_UP) return DefWindowProcA(window, message, wParam, lParam);
        DoKey(window, VK_F4, false);
        return 0;
    case WM_CHAR: DoCharacter(window, wParam); return 0;
    case WM_LBUTTONDOWN: SetFocus(window); return 0;
    case WM_SETFOCUS: TakeFocus(window); return 0;
    case WM_KILLFOCUS:
        Drop(window, false);
        NotifyParent(window, CBN_KILLFOCUS);
        return 0;
    default: return DefWindowProcA(window, message, wParam, lParam);
    }
}

} // namespace varkui
