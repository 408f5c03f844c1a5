// Controls by their id.
#include "window-system/model/handles.h"
#include "window-system/model/model.h"
#include "window-system/model/window.h"

#include <cstdint>

using namespace varkui;

HWND GetDlgItem(HWND dialog, int id)
{
    const Locked locked;
    const Window *found = Find(dialog);
    if (found == nullptr) return nullptr;
    for (const Window *child = found->FirstChild; child != nullptr; child = child->Next) {
        if (static_cast<int>(child->Id) == id) return child->Handle;
    }
    return nullptr;
}

int GetDlgCtrlID(HWND window)
{
    const Locked locked;
    const Window *found = Find(window);
    return found != nullptr && found->Parent != nullptr ? static_cast<int>(found->Id) : 0;
}

LRESULT SendDlgItemMessageA(HWND dialog, int id, UINT message, WPARAM wParam, LPARAM lParam)
{
    return SendMessageA(GetDlgItem(dialog, id), message, wParam, lParam);
}

BOOL SetDlgItemTextA(HWND dialog, int id, LPCSTR text)
{
    return SetWindowTextA(GetDlgItem(dialog, id), text);
}

UINT GetDlgItemTextA(HWND dialog, int id, LPSTR text, int size)
{
    return static_cast<UINT>(GetWindowTextA(GetDlgItem(dialog, id), text, size));
}

BOOL SetDlgItemInt(HWND dialog, int id, UINT value, BOOL isSigned)
{
    char digits[12] = {};
    char *at = digits + sizeof digits - 1;
    const bool negative = isSigned != FALSE && static_cast<int>(value) < 0;
    UINT rest = negative ? 0u - value : value;
    do {
        *--at = static_cast<char>('0' + rest % 10);
        rest /= 10;
    } while (rest != 0);
    if (negative) *--at = '-';
    return SetDlgItemTextA(dialog, id, at);
}

UINT GetDlgItemInt(HWND dialog, int id, BOOL *translated, BOOL isSigned)
{
    if (translated != nullptr) *translated = FALSE;
    char text[64];
    if (GetDlgItemTextA(dialog, id, text, sizeof text) == 0) return 0;
    const char *at = text;
    while (*at == ' ' || *at == '\t') {
        ++at;
    }
    const bool negative = isSigned != FALSE && *at == '-';
    if (negative || (isSigned != FALSE && *at == '+')) ++at;
    if (*at < '0' || *at > '9') return 0;
    int64_t value = 0;
    for (; *at >= '0' && *at <= '9'; ++at) {
        value = value * 10 + (*at - '0');
        if (value > UINT32_MAX) return 0;
    }
    if (negative) value = -value;
    if (isSigned != FALSE && (value < INT32_MIN || value > INT32_MAX)) return 0;
    if (translated != nullptr) *translated = TRUE;
    return static_cast<UINT>(value);
}

BOOL CheckDlgButton(HWND dialog, int id, UINT check)
{
    HWND button = GetDlgItem(dialog, id);
    if (button == nullptr) return FALSE;
    SendMessageA(button, BM_SETCHECK, check, 0);
    return TRUE;
}

UINT IsDlgButtonChecked(HWND dialog, int id)
{
    return static_cast<UINT>(SendDlgItemMessageA(dialog, id, BM_GETCHECK, 0, 0));
}

BOOL CheckRadioButton(HWND dialog, int first, int last, int id)
{
    if (IsWindow(dialog) == FALSE || last < first) return FALSE;
    for (HWND child = GetWindow(dialog, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
        const int own = GetDlgCtrlID(child);
        if (own < first || own > last) continue;
        SendMessageA(child, BM_SETCHECK, own == id ? BST_CHECKED : BST_UNCHECKED, 0);
    }
    return TRUE;
}
