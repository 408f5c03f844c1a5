#include "tests/support/windows/controls.h"

#include "text/windows1252.h"

#include <commctrl.h>

namespace vark::test {

namespace {

std::string ClassOf(HWND window)
{
    char name[64] = "";
    GetClassNameA(window, name, sizeof name);
    return name;
}

bool IsCaseless(const std::string &one, const char *other) { return lstrcmpiA(one.c_str(), other) == 0; }

LRESULT Ask(HWND window, UINT message, WPARAM first = 0, LPARAM second = 0)
{
    return SendMessageA(window, message, first, second);
}

LPARAM AsParameter(void *address) { return reinterpret_cast<LPARAM>(address); }

// The place of the text in a box: the first is Windows', the other Wine's.
constexpr int boxTextIds[] = {0xFFFF, 100};

HWND TextControlOfBox(HWND window)
{
    for (const int id : boxTextIds) {
        HWND text = GetDlgItem(window, id);
        if (text != nullptr && KindOf(text) == ControlKind::Static) return text;
    }
    return nullptr;
}

HWND VisibleButton(HWND box, int id)
{
    HWND button = GetDlgItem(box, id);
    return button != nullptr && IsWindowVisible(button) != FALSE ? button : nullptr;
}

BOOL CALLBACK AddWindow(HWND window, LPARAM windows)
{
    reinterpret_cast<std::vector<HWND> *>(windows)->push_back(window);
    return TRUE;
}

bool IsWaiting(HWND window)
{
    return IsWindowVisible(window) != FALSE && IsWindowEnabled(window) != FALSE &&
           !IsCaseless(ClassOf(window), "ComboLBox");
}

} // namespace

ControlKind KindOf(HWND window)
{
    struct Known {
        const char *Name;
        ControlKind Kind;
    };
    constexpr Known known[] = {{"#32770", ControlKind::Dialog},
                               {"Button", ControlKind::Button},
                               {"Edit", ControlKind::Edit},
                               {"Static", ControlKind::Static},
                               {"ListBox", ControlKind::ListBox},
                               {"ComboBox", ControlKind::ComboBox},
                               {WC_TABCONTROLA, ControlKind::TabControl}};
    const std::string name = ClassOf(window);
    for (const Known &each : known) {
        if (IsCaseless(name, each.Name)) return each.Kind;
    }
    return ControlKind::Other;
}

std::string TextOf(HWND window)
{
    std::vector<char> text(static_cast<size_t>(Ask(window, WM_GETTEXTLENGTH)) + 1);
    Ask(window, WM_GETTEXT, text.size(), AsParameter(text.data()));
    return text.data();
}

std::string Shown(const std::string &text)
{
    std::string utf8(text.size() * 3 + 1, 0);
    utf8.resize(text::ToUtf8(text.c_str(), utf8.data(), utf8.size()));
    for (char &character : utf8) {
        if (character == '\n' || character == '\r') character = ' ';
    }
    return utf8;
}

std::string FromShown(const std::string &utf8)
{
    std::string text(utf8.size() + 1, 0);
    text.resize(text::FromUtf8(utf8.c_str(), text.data(), text.size()));
    return text;
}

bool IsUsable(HWND window)
{
    for (; window != nullptr; window = GetAncestor(window, GA_PARENT)) {
        if (IsWindowEnabled(window) == FALSE) return false;
    }
    return true;
}

HWND FindControl(HWND parent, int id)
{
    // What lies inside of a combo box is a part of it.
    if (KindOf(parent) == ControlKind::ComboBox) return nullptr;
    const auto isPage = [](HWND child) {
        return KindOf(child) == ControlKind::Dialog && (GetWindowLongA(child, GWL_STYLE) & WS_VISIBLE) != 0;
    };
    HWND const first = GetWindow(parent, GW_CHILD);
    for (HWND child = first; child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
        HWND found = isPage(child) ? FindControl(child, id) : nullptr;
        if (found != nullptr) return found;
    }
    for (HWND child = first; child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
        if (GetDlgCtrlID(child) == id) return child;
    }
    for (HWND child = first; child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
        HWND found = isPage(child) ? nullptr : FindControl(child, id);
        if (found != nullptr) return found;
    }
    return nullptr;
}

HWND LabelOf(HWND control)
{
    const ControlKind kind = KindOf(control);
    const bool hasLabel =
        kind == ControlKind::Edit || kind == ControlKind::ListBox || kind == ControlKind::ComboBox;
    HWND const before = GetWindow(control, GW_HWNDPREV);
    if (!hasLabel || before == nullptr || KindOf(before) != ControlKind::Static) return nullptr;
    return TextOf(before).empty() ? nullptr : before;
}

HWND FieldOf(HWND control)
{
    if (KindOf(control) == ControlKind::Edit) return control;
    if (KindOf(control) != ControlKind::ComboBox) return nullptr;
    COMBOBOXINFO info = {};
    info.cbSize = sizeof info;
    if (GetComboBoxInfo(control, &info) == FALSE || info.hwndItem == control) return nullptr;
    return info.hwndItem;
}

int CountRows(HWND control)
{
    switch (KindOf(control)) {
    case ControlKind::ListBox: return static_cast<int>(Ask(control, LB_GETCOUNT));
    case ControlKind::ComboBox: return static_cast<int>(Ask(control, CB_GETCOUNT));
    case ControlKind::TabControl: return static_cast<int>(Ask(control, TCM_GETITEMCOUNT));
    default: return -1;
    }
}

std::string TextOfRow(HWND control, int row)
{
    const auto index = static_cast<WPARAM>(row);
    if (KindOf(control) == ControlKind::TabControl) {
        char text[256] = "";
        TCITEMA item = {};
        item.mask = TCIF_TEXT;
        item.pszText = text;
        item.cchTextMax = sizeof text;
        Ask(control, TCM_GETITEMA, index, AsParameter(&item));
        return text;
    }
    const bool isList = KindOf(control) == ControlKind::ListBox;
    const LRESULT length = Ask(control, isList ? LB_GETTEXTLEN : CB_GETLBTEXTLEN, index);
    if (length < 0) return "";
    // The length may be told for another character set than the text is read in.
    std::vector<char> text(static_cast<size_t>(length) * 2 + 1);
    Ask(control, isList ? LB_GETTEXT : CB_GETLBTEXT, index, AsParameter(text.data()));
    return text.data();
}

int SelectedRow(HWND control)
{
    switch (KindOf(control)) {
    case ControlKind::ListBox: return static_cast<int>(Ask(control, LB_GETCURSEL));
    case ControlKind::ComboBox: return static_cast<int>(Ask(control, CB_GETCURSEL));
    default: return static_cast<int>(Ask(control, TCM_GETCURSEL));
    }
}

bool IsBox(HWND window)
{
    return KindOf(window) == ControlKind::Dialog && GetWindowContextHelpId(window) == 0 &&
           TextControlOfBox(window) != nullptr;
}

std::string TextOfBox(HWND box)
{
    HWND const text = TextControlOfBox(box);
    return text != nullptr ? TextOf(text) : "";
}

HWND ButtonOfBox(HWND box, int answer)
{
    HWND const button = VisibleButton(box, answer);
    if (button != nullptr || answer != IDOK) return button;
    // A box that can only be agreed to may have its button under the number that Escape presses.
    HWND const only = VisibleButton(box, IDCANCEL);
    const bool isAlone = VisibleButton(box, IDRETRY) == nullptr && VisibleButton(box, IDYES) == nullptr;
    return isAlone ? only : nullptr;
}

HWND SafestButton(HWND box)
{
    for (const int answer : {IDCANCEL, IDNO, IDABORT, IDOK}) {
        HWND const button = VisibleButton(box, answer);
        if (button != nullptr) return button;
    }
    return nullptr;
}

std::vector<HWND> WindowsOfThread()
{
    std::vector<HWND> windows;
    EnumThreadWindows(GetCurrentThreadId(), AddWindow, AsParameter(&windows));
    return windows;
}

HWND Topmost()
{
    HWND const active = GetActiveWindow();
    if (active != nullptr && IsWaiting(active)) return active;
    for (HWND window : WindowsOfThread()) {
        if (IsWaiting(window)) return window;
    }
    return nullptr;
}

} // namespace vark::test
