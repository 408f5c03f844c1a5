#include "window-system/controls/list_boxes.h"

#include "window-system/controls/notices.h"
#include "window-system/model/as_pointer.h"
#include "window-system/model/handles.h"
#include "window-system/model/input.h"
#include "window-system/model/model.h"
#include "window-system/model/rows.h"
#include "window-system/model/tree.h"
#include "window-system/model/window.h"

#include <cstring>

namespace varkui {

namespace {

constexpr LONG rowUnits = 8; // height of a row in dialog units

Window *FindList(HWND handle)
{
    Window *window = Find(handle);
    return window != nullptr && window->Kind == Kind::ListBox ? window : nullptr;
}

LONG RowsInView(const Window *window)
{
    const LONG height = window->Place.bottom - window->Place.top;
    const auto row = static_cast<LONG>(model.BaseY * rowUnits / 8);
    return row > 0 && height > row ? height / row : 1;
}

// Scrolls just as far as the selected row needs.
void ShowSelected(Window *window)
{
    ListState &list = *window->List;
    if (list.Selected == LB_ERR) return;
    if (list.Selected < list.Top) list.Top = list.Selected;
    if (list.Selected >= list.Top + RowsInView(window)) list.Top = list.Selected - RowsInView(window) + 1;
}

void PutSelection(Window *window, LONG row)
{
    window->List->Selected = row;
    ShowSelected(window);
    Note(window, changedState);
}

LONG Insert(Window *window, LONG index, const char *text, bool sorted)
{
    ListState &list = *window->List;
    const LONG row = InsertRow(list.Rows, index, text, sorted);
    if (row < 0) return row;
    if (list.Selected != LB_ERR && row <= list.Selected) ++list.Selected;
    Note(window, changedRows);
#ifndef NDEBUG
    // Checking all rows at each of 100,000 insertions would take the time of a list of them squared.
    if (list.Rows.Count < 64 || list.Rows.Count % 4096 == 0) CheckRows(list.Rows);
#endif
    return row;
}

LONG RemoveAt(Window *window, LONG index)
{
    ListState &list = *window->List;
    if (!RemoveRow(list.Rows, index)) return LB_ERR;
    if (list.Selected == index) {
        list.Selected = LB_ERR;
    } else if (list.Selected > index) {
        --list.Selected;
    }
    if (list.Top >= list.Rows.Count) list.Top = list.Rows.Count > 0 ? list.Rows.Count - 1 : 0;
    Note(window, changedAll);
    return list.Rows.Count;
}

void Reset(Window *window)
{
    RemoveAllRows(window->List->Rows);
    window->List->Selected = LB_ERR;
    window->List->Top = 0;
    Note(window, changedAll);
}

LRESULT SetTabStops(Window *window, WPARAM count, LPARAM lParam)
{
    const auto *stops = AsPointer<const int *>(lParam);
    ListState &list = *window->List;
    constexpr WPARAM most = sizeof list.TabStops / sizeof list.TabStops[0];
    if (count > most || (count > 0 && stops == nullptr)) return FALSE;
    list.TabStopCount = static_cast<int>(count);
    for (WPARAM i = 0; i < count; ++i) {
        list.TabStops[i] = stops[i];
    }
    Note(window, changedState);
    return TRUE;
}

const char *AsText(LPARAM lParam) { return AsPointer<const char *>(lParam); }

LRESULT TextOfRow(const Rows &rows, WPARAM index, LPARAM lParam)
{
    const Row *row = index <= INT32_MAX ? RowAt(rows, static_cast<LONG>(index)) : nullptr;
    if (row == nullptr) return LB_ERR;
    auto *out = AsPointer<char *>(lParam);
    if (out != nullptr) memcpy(out, row->Text, row->TextLength + 1);
    return static_cast<LRESULT>(row->TextLength);
}

LRESULT SetSelection(Window *window, LONG index)
{
    if (index < -1 || index >= window->List->Rows.Count) return LB_ERR;
    PutSelection(window, index);
    return index == -1 ? LB_ERR : index;
}

LRESULT ListMessage(HWND handle, UINT message, WPARAM wParam, LPARAM lParam)
{
    const Locked locked;
    Window *window = FindList(handle);
    if (window == nullptr) return LB_ERR;
    ListState &list = *window->List;
    const auto index = static_cast<LONG>(wParam);
    switch (message) {
    case LB_ADDSTRING: return lParam != 0 ? Insert(window, -1, AsText(lParam), true) : LB_ERR;
    case LB_INSERTSTRING: return lParam != 0 ? Insert(window, index, AsText(lParam), false) : LB_ERR;
    case LB_DELETESTRING: return RemoveAt(window, index);
    case LB_RESETCONTENT: Reset(window); return LB_OKAY;
    case LB_GETCOUNT: return list.Rows.Count;
    case LB_GETCURSEL:
    case LB_GETCARETINDEX: return list.Selected;
    case LB_SETCURSEL: return SetSelection(window, index);
    case LB_GETSEL: return RowAt(list.Rows, index) == nullptr ? LB_ERR : list.Selected == index ? 1 : 0;
    case LB_GETTEXT: return TextOfRow(list.Rows, wParam, lParam);
    case LB_GETTEXTLEN: return TextOfRow(list.Rows, wParam, 0);
    case LB_FINDSTRING: return lParam != 0 ? FindRow(list.Rows, index, AsText(lParam), false) : LB_ERR;
    case LB_FINDSTRINGEXACT: return lParam != 0 ? FindRow(list.Rows, index, AsText(lParam), true) : LB_ERR;
    case LB_SELECTSTRING: {
        const LONG found = lParam != 0 ? FindRow(list.Rows, index, AsText(lParam), false) : LB_ERR;
        return found != LB_ERR ? SetSelection(window, found) : LB_ERR;
    }
    case LB_GETITEMDATA: {
        const Row *row = RowAt(list.Rows, index);
        return row != nullptr ? row->Data : LB_ERR;
    }
    case LB_SETITEMDATA: {
        Row *row = RowAt(list.Rows, index);
        if (row == nullptr) return LB_ERR;
        row->Data = lParam;
        return LB_OKAY;
    }
    case LB_GETTOPINDEX: return list.Top;
    case LB_SETTOPINDEX:
        if (index < 0 || (index > 0 && index >= list.Rows.Count)) return LB_ERR;
        list.Top = index;
        Note(window, changedState);
        return LB_OKAY;
    case LB_SETTABSTOPS: return SetTabStops(window, wParam, lParam);
    default: return LB_OKAY; // LB_SETCARETINDEX, LB_INITSTORAGE: nothing to do
    }
}

bool Notifies(HWND handle)
{
    const Locked locked;
    const Window *window = FindList(handle);
    return window != nullptr && (window->Style & LBS_NOTIFY) != 0;
}

void NotifyIfWanted(HWND handle, int code)
{
    if (Notifies(handle)) NotifyParent(handle, code);
}

// A row that a person chose; false when there is no such row.
bool Choose(HWND handle, LONG row)
{
    {
        const Locked locked(mutates);
        Window *window = FindList(handle);
        if (window == nullptr || !AreEnabled(window) || RowAt(window->List->Rows, row) == nullptr)
            return false;
        PutSelection(window, row);
    }
    NotifyIfWanted(handle, LBN_SELCHANGE);
    return true;
}

// The row that a key leads to, LB_ERR for a key that leads nowhere.
LONG RowOfKey(const Window *window, WPARAM key)
{
    const ListState &list = *window->List;
    const LONG last = list.Rows.Count - 1;
    const LONG page = RowsInView(window) - 1 > 0 ? RowsInView(window) - 1 : 1;
    LONG row = list.Selected;
    switch (key) {
    case VK_UP:
    case VK_LEFT: row = row == LB_ERR ? 0 : row - 1; break;
    case VK_DOWN:
    case VK_RIGHT: row = row + 1; break;
    case VK_PRIOR: row = row - page; break;
    case VK_NEXT: row = row == LB_ERR ? page : row + page; break;
    case VK_HOME: row = 0; break;
    case VK_END: row = last; break;
    default: return LB_ERR;
    }
    return row < 0 ? (last < 0 ? LB_ERR : 0) : row > last ? last : row;
}

void DoKey(HWND handle, WPARAM key)
{
    LONG row = LB_ERR;
    {
        const Locked locked;
        const Window *window = FindList(handle);
        if (window == nullptr) return;
        row = RowOfKey(window, key);
        if (row == window->List->Selected) return;
    }
    if (row != LB_ERR) Choose(handle, row);
}

// A letter leads to the next row that begins with it.
void DoCharacter(HWND handle, WPARAM wParam)
{
    LONG row = LB_ERR;
    {
        const Locked locked;
        const Window *window = FindList(handle);
        if (window == nullptr || wParam < ' ' || wParam > 0xFF) return;
        const char text[2] = {static_cast<char>(wParam), 0};
        row = FindRow(window->List->Rows, window->List->Selected, text, false);
        if (row == window->List->Selected) return;
    }
    if (row != LB_ERR) Choose(handle, row);
}

} // namespace

void InputToListBox(HWND list, const Input &input)
{
    if (input.Kind != InputKind::Select && input.Kind != InputKind::Pick) return;
    if (GetFocus() != list) SetFocus(list);
    if (GetFocus() != list || !Choose(list, input.Index)) return;
    if (input.Kind == InputKind::Pick) NotifyIfWanted(list, LBN_DBLCLK);
}

LRESULT CALLBACK ListBoxProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message >= LB_ADDSTRING && message <= LB_INITSTORAGE)
        return ListMessage(window, message, wParam, lParam);
    switch (message) {
    case WM_GETDLGCODE: return DLGC_WANTARROWS | DLGC_WANTCHARS;
    case WM_KEYDOWN: DoKey(window, wParam); return 0;
    case WM_CHAR: DoCharacter(window, wParam); return 0;
    case WM_LBUTTONDOWN: SetFocus(window); return 0;
    case WM_SETFOCUS: NotifyIfWanted(window, LBN_SETFOCUS); return 0;
    case WM_KILLFOCUS: NotifyIfWanted(window, LBN_KILLFOCUS); return 0;
    default: return DefWindowProcA(window, message, wParam, lParam);
    }
}

} // namespace varkui
