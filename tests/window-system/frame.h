// A frame as programs build one: a window of a class of its own with a bar of buttons at its lower edge, a
// modeless dialog, and a view above it that comes and goes.
#pragma once

#include <string>
#include <vector>

#include "dialog_run.h"

namespace frame {

using varkui::DialogControlKind;

constexpr UINT attachMessage = WM_USER + 2; // lParam: the new view
constexpr UINT pressNotice = 0x111;

inline constexpr varkui::DialogControl barControls[] = {
    {DialogControlKind::PushButton, 1094, "voriger Monat", 4, 3, 70, 14, 0, 0},
    {DialogControlKind::PushButton, 1095, "nächster Monat", 78, 3, 70, 14, 0, 0},
    {DialogControlKind::PushButton, 3, "neue Auswahl ...", 152, 3, 70, 14, 0, 0},
};
inline constexpr varkui::DialogTable barTable = {
    115, "", 226, 20, barControls, static_cast<uint16_t>(std::size(barControls)), WS_CHILD | DS_CONTROL};

struct PressNotice {
    NMHDR Head;
    WPARAM Pressed;
};

// What a frame keeps; the first pointer of its window's extra bytes leads here.
struct State {
    HWND Bar = nullptr;
    HWND View = nullptr;
    std::vector<int> Pressed;
    std::vector<std::string> Heard;
};

inline INT_PTR CALLBACK BarProcedure(HWND bar, UINT message, WPARAM wParam, LPARAM /*lParam*/)
{
    if (message != WM_COMMAND) return FALSE;
    PressNotice notice = {{bar, static_cast<UINT_PTR>(GetDlgCtrlID(bar)), pressNotice}, wParam};
    SendMessageA(GetParent(bar), WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&notice));
    return TRUE;
}

inline void Arrange(HWND window, const State &state)
{
    RECT inside = {};
    RECT bar = {};
    GetClientRect(window, &inside);
    GetClientRect(state.Bar, &bar);
    const LONG top = inside.bottom - bar.bottom;
    const LONG left = inside.right > bar.right ? (inside.right - bar.right) / 2 : 0;
    if (top > 0) {
        SetWindowPos(state.Bar, nullptr, left, top, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_SHOWWINDOW);
    } else {
        ShowWindow(state.Bar, SW_HIDE);
    }
    MoveWindow(state.View, 0, 0, inside.right, top > 0 ? top : inside.bottom, TRUE);
}

inline void Attach(HWND window, State &state, HWND view)
{
    const DWORD own = WS_POPUP | WS_OVERLAPPEDWINDOW;
    const auto style = static_cast<DWORD>(GetWindowLongPtrA(view, GWL_STYLE));
    SetWindowLongPtrA(view, GWL_STYLE, static_cast<LONG>((style & ~own) | WS_CHILD));
    SetParent(view, window);
    HWND before = state.View;
    state.View = view;
    Arrange(window, state);
    ShowWindow(view, SW_SHOW);
    if (before != nullptr) DestroyWindow(before);
}

inline const char *NameOf(UINT message)
{
    switch (message) {
    case WM_CREATE: return "create";
    case WM_DESTROY: return "destroy";
    case WM_NCDESTROY: return "ncdestroy";
    case WM_ACTIVATE: return "activate";
    case WM_CHILDACTIVATE: return "childactivate";
    case WM_PARENTNOTIFY: return "parentnotify";
    case WM_SIZE: return "size";
    default: return nullptr;
    }
}

inline LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_NCCREATE) {
        const auto *create = reinterpret_cast<const CREATESTRUCTA *>(lParam);
        const void *state = create->lpCreateParams;
        if ((create->dwExStyle & WS_EX_MDICHILD) != 0)
            state = reinterpret_cast<const void *>(static_cast<const MDICREATESTRUCTA *>(state)->lParam);
        SetWindowLongPtrA(window, 0, reinterpret_cast<LONG_PTR>(state));
    }
    auto *state = reinterpret_cast<State *>(GetWindowLongPtrA(window, 0));
    if (state == nullptr) return DefWindowProcA(window, message, wParam, lParam);
    const char *name = NameOf(message);
    if (name != nullptr) state->Heard.emplace_back(name);
    switch (message) {
    case WM_CREATE: {
        DLGTEMPLATE *made = varkui::MakeDialogTemplate(barTable);
        state->Bar = CreateDialogIndirectParamA(nullptr, made, window, BarProcedure, 0);
        varkui::FreeDialogTemplate(made);
        return state->Bar != nullptr ? 0 : -1;
    }
    case WM_SIZE: Arrange(window, *state); return 0;
    case WM_NOTIFY: {
        const auto *notice = reinterpret_cast<const PressNotice *>(lParam);
        if (notice->Head.hwndFrom == state->Bar && notice->Head.code == pressNotice)
            state->Pressed.push_back(LOWORD(notice->Pressed));
        return 0;
    }
    case attachMessage: Attach(window, *state, reinterpret_cast<HWND>(lParam)); return 0;
    case WM_NCDESTROY: SetWindowLongPtrA(window, 0, 0); return 0;
    default: return DefMDIChildProcA(window, message, wParam, lParam);
    }
}

inline void Register()
{
    WNDCLASSA made = {};
    made.style = CS_PARENTDC;
    made.lpfnWndProc = Procedure;
    made.cbWndExtra = sizeof(void *);
    made.hIcon = LoadIconA(nullptr, MAKEINTRESOURCEA(114));
    made.hCursor = LoadCursorA(nullptr, IDC_ARROW);
    made.lpszClassName = "Frame";
    RegisterClassA(&made);
}

inline HWND Make(State &state, HWND parent = nullptr, DWORD style = WS_OVERLAPPEDWINDOW, DWORD exStyle = 0)
{
    return CreateWindowExA(exStyle, "Frame", "Kontenblatt", style, 20, 30, 600, 400, parent, nullptr, nullptr,
                           &state);
}

// A view as the report engine opens one: a window of its own with a field, not shown yet.
inline HWND MakeView(const char *text, DWORD style = WS_OVERLAPPEDWINDOW)
{
    HWND view = CreateWindowExA(WS_EX_CONTROLPARENT, "Plain", text, style | WS_CLIPCHILDREN, 0, 0, 300, 200,
                                nullptr, nullptr, nullptr, nullptr);
    CreateWindowExA(0, "Edit", text, WS_CHILD | WS_VISIBLE | WS_TABSTOP, 10, 10, 120, 24, view,
                    reinterpret_cast<HMENU>(intptr_t{11}), nullptr, nullptr);
    return view;
}

inline void RegisterPlain()
{
    WNDCLASSA made = {};
    made.lpfnWndProc = DefWindowProcA;
    made.lpszClassName = "Plain";
    RegisterClassA(&made);
}

} // namespace frame
