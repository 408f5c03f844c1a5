#include "window-system/controls/tab_controls.h"

#include "window-system/model/as_pointer.h"
#include "window-system/model/handles.h"
#include "window-system/model/input.h"
#include "window-system/model/memory.h"
#include "window-system/model/model.h"
#include "window-system/model/tree.h"
#include "window-system/model/window.h"

#include <cstring>

namespace varkui {

namespace {

Window *FindTabs(HWND handle)
{
    Window *window = Find(handle);
    return window != nullptr && window->Kind == Kind::TabControl ? window : nullptr;
}

bool IsItem(const TabState &tabs, LONG_PTR index) { return index >= 0 && index < tabs.Count; }

bool PutText(Tab &tab, const char *text)
{
    char *copy = CopyText(text != nullptr ? text : "", text != nullptr ? strlen(text) : 0);
    if (copy == nullptr) return false;
    Release(tab.Text);
    tab.Text = copy;
    return true;
}

LRESULT InsertItem(Window *window, LONG_PTR index, const TCITEMA *item)
{
    TabState &tabs = *window->Tabs;
    constexpr int most = 1000;
    if (item == nullptr || index < 0 || tabs.Count >= most) return -1;
    if (index > tabs.Count) index = tabs.Count;
    auto *items =
        static_cast<Tab *>(Reallocate(tabs.Items, (static_cast<size_t>(tabs.Count) + 1) * sizeof(Tab)));
    if (items == nullptr) return -1;
    tabs.Items = items;
    Tab made = {nullptr, (item->mask & TCIF_PARAM) != 0 ? item->lParam : 0};
    if (!PutText(made, (item->mask & TCIF_TEXT) != 0 ? item->pszText : "")) return -1;
    memmove(items + index + 1, items + index, static_cast<size_t>(tabs.Count - index) * sizeof(Tab));
    items[index] = made;
    ++tabs.Count;
    if (tabs.Selected == -1) {
        tabs.Selected = 0; // the first page that comes is in view
    } else if (index <= tabs.Selected) {
        ++tabs.Selected;
    }
    Note(window, changedAll);
    return index;
}

LRESULT SetItem(Window *window, LONG_PTR index, const TCITEMA *item)
{
    TabState &tabs = *window->Tabs;
    if (item == nullptr || !IsItem(tabs, index)) return FALSE;
    if ((item->mask & TCIF_TEXT) != 0 && !PutText(tabs.Items[index], item->pszText)) return FALSE;
    if ((item->mask & TCIF_PARAM) != 0) tabs.Items[index].Param = item->lParam;
    Note(window, changedAll);
    return TRUE;
}

LRESULT GetItem(const Window *window, LONG_PTR index, TCITEMA *item)
{
    const TabState &tabs = *window->Tabs;
    if (item == nullptr || !IsItem(tabs, index)) return FALSE;
    if ((item->mask & TCIF_PARAM) != 0) item->lParam = tabs.Items[index].Param;
    if ((item->mask & TCIF_TEXT) != 0 && item->pszText != nullptr && item->cchTextMax > 0) {
        size_t length = strlen(tabs.Items[index].Text);
        if (length >= static_cast<size_t>(item->cchTextMax))
            length = static_cast<size_t>(item->cchTextMax) - 1;
        memcpy(item->pszText, tabs.Items[index].Text, length);
        item->pszText[length] = 0;
    }
    return TRUE;
}

LRESULT DeleteItem(Window *window, LONG_PTR index)
{
    TabState &tabs = *window->Tabs;
    if (!IsItem(tabs, index)) return FALSE;
    Release(tabs.Items[index].Text);
    memmove(tabs.Items + index, tabs.Items + index + 1,
            static_cast<size_t>(tabs.Count - index - 1) * sizeof(Tab));
    --tabs.Count;
    if (tabs.Selected == index) tabs.Selected = -1;
    if (tabs.Selected > index) --tabs.Selected;
    Note(window, changedAll);
    return TRUE;
}

LRESULT SetSelection(Window *window, LONG_PTR index)
{
    TabState &tabs = *window->Tabs;
    if (!IsItem(tabs, index)) return -1;
    const int before = tabs.Selected;
    tabs.Selected = static_cast<int>(index);
    Note(window, changedState);
    return before;
}

LRESULT TabMessage(HWND handle, UINT message, WPARAM wParam, LPARAM lParam)
{
    const Locked locked(mutates);
    Window *window = FindTabs(handle);
    if (window == nullptr) return 0;
    const auto index = static_cast<LONG_PTR>(wParam);
    auto *item = AsPointer<TCITEMA *>(lParam);
    switch (message) {
    case TCM_GETITEMCOUNT: return window->Tabs->Count;
    case TCM_GETCURSEL:
    case TCM_GETCURFOCUS: return window->Tabs->Selected;
    case TCM_SETCURSEL: return SetSelection(window, index);
    case TCM_INSERTITEMA: return InsertItem(window, index, item);
    case TCM_SETITEMA: return SetItem(window, index, item);
    case TCM_GETITEMA: return GetItem(window, index, item);
    case TCM_DELETEITEM: return DeleteItem(window, index);
    case TCM_DELETEALLITEMS:
        while (window->Tabs->Count > 0) {
            DeleteItem(window, 0);
        }
        return TRUE;
    default: return 0;
    }
}

// The room for pages is what the row of tabs, 14 dialog units high, leaves.
void AdjustRectangle(bool toWindow, RECT *rectangle)
{
    if (rectangle == nullptr) return;
    const Locked locked;
    const auto border = static_cast<LONG>(model.BaseX / 2);
    const auto row = static_cast<LONG>(model.BaseY * 14 / 8);
    const LONG sign = toWindow ? -1 : 1;
    rectangle->left += sign * border;
    rectangle->top += sign * (row + border);
    rectangle->right -= sign * border;
    rectangle->bottom -= sign * border;
}

LRESULT Ask(HWND handle, UINT code)
{
    HWND parent = nullptr;
    NMHDR header = {handle, 0, code};
    {
        const Locked locked;
        const Window *window = FindTabs(handle);
        if (window == nullptr || window->Parent == nullptr) return 0;
        parent = window->Parent->Handle;
        header.idFrom = static_cast<UINT_PTR>(window->Id);
    }
    return SendMessageA(parent, WM_NOTIFY, header.idFrom, reinterpret_cast<LPARAM>(&header));
}

// A page that a person chose: its parent may refuse to leave the one in view.
void Choose(HWND handle, LONG_PTR index)
{
    {
        const Locked locked;
        Window *window = FindTabs(handle);
        if (window == nullptr || !AreEnabled(window) || !IsItem(*window->Tabs, index)) return;
        if (window->Tabs->Selected == index) return;
        Note(window, changedState); // the screen may show the new one already
    }
    if (Ask(handle, TCN_SELCHANGING) != 0) return;
    {
        const Locked locked(mutates);
        Window *window = FindTabs(handle);
        if (window == nullptr || SetSelection(window, index) == -1) return;
    }
    Ask(handle, TCN_SELCHANGE);
}

void DoKey(HWND handle, WPARAM key)
{
    LONG_PTR index = -1;
    {
        const Locked locked;
        const Window *window = FindTabs(handle);
        if (window == nullptr) return;
        index = window->Tabs->Selected;
        if (key == VK_RIGHT || key == VK_DOWN) ++index;
        if (key == VK_LEFT || key == VK_UP) --index;
        if (key == VK_HOME) index = 0;
        if (key == VK_END) index = window->Tabs->Count - 1;
    }
    Choose(handle, index);
}

} // namespace

void InputToTabControl(HWND tabs, const Input &input)
{
    if (input.Kind != InputKind::Select && input.Kind != InputKind::Pick) return;
    Choose(tabs, input.Index);
}

LRESULT CALLBACK TabControlProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case WM_GETDLGCODE: return DLGC_WANTARROWS;
    case WM_KEYDOWN: DoKey(window, wParam); return 0;
    case WM_LBUTTONDOWN: SetFocus(window); return 0;
    case TCM_ADJUSTRECT: AdjustRectangle(wParam != 0, AsPointer<RECT *>(lParam)); return 0;
    case TCM_GETITEMCOUNT:
    case TCM_GETCURSEL:
    case TCM_GETCURFOCUS:
    case TCM_SETCURSEL:
    case TCM_INSERTITEMA:
    case TCM_SETITEMA:
    case TCM_GETITEMA:
    case TCM_DELETEITEM:
    case TCM_DELETEALLITEMS: return TabMessage(window, message, wParam, lParam);
    case TCM_SETCURFOCUS: Choose(window, static_cast<LONG_PTR>(wParam)); return 0;
    default: return DefWindowProcA(window, message, wParam, lParam);
    }
}

} // namespace varkui
