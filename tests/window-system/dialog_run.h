// A dialog whose procedure is a lambda, for tests.
#pragma once

#include <functional>
#include <string>

#include "window-system/include/dialog_table.h"
#include "window-system/include/varkui.h"

using DialogHandler = std::function<INT_PTR(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)>;

// What a handler answers to WM_INITDIALOG when it has set the focus itself.
inline constexpr INT_PTR focusIsSet = -99;

// Hands every message to the handler that came as the parameter of WM_INITDIALOG. What the handler leaves is
// answered as the simplest dialog would: OK and Cancel end it with their ids.
inline INT_PTR CALLBACK ForwardToHandler(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_INITDIALOG) SetWindowLongPtrA(dialog, DWLP_USER, lParam);
    const auto *handler = reinterpret_cast<const DialogHandler *>(GetWindowLongPtrA(dialog, DWLP_USER));
    if (handler != nullptr && *handler) {
        const INT_PTR handled = (*handler)(dialog, message, wParam, lParam);
        if (handled == focusIsSet) return FALSE;
        if (handled != 0) return handled;
    }
    if (message == WM_INITDIALOG) return TRUE;
    if (message == WM_COMMAND && (LOWORD(wParam) == IDOK || LOWORD(wParam) == IDCANCEL) &&
        HIWORD(wParam) == BN_CLICKED) {
        EndDialog(dialog, LOWORD(wParam));
        return TRUE;
    }
    return FALSE;
}

inline INT_PTR RunTable(const varkui::DialogTable &table, const DialogHandler &handler = {},
                        HWND owner = nullptr)
{
    DLGTEMPLATE *made = varkui::MakeDialogTemplate(table);
    const INT_PTR result =
        DialogBoxIndirectParamA(nullptr, made, owner, ForwardToHandler, reinterpret_cast<LPARAM>(&handler));
    varkui::FreeDialogTemplate(made);
    return result;
}

// `handler` has to live as long as the dialog.
inline HWND MakeFromTable(const varkui::DialogTable &table, const DialogHandler *handler = nullptr,
                          HWND owner = nullptr)
{
    DLGTEMPLATE *made = varkui::MakeDialogTemplate(table);
    HWND dialog =
        CreateDialogIndirectParamA(nullptr, made, owner, ForwardToHandler, reinterpret_cast<LPARAM>(handler));
    varkui::FreeDialogTemplate(made);
    return dialog;
}

inline std::string TextOf(HWND window)
{
    char text[512];
    GetWindowTextA(window, text, sizeof text);
    return text;
}

inline std::string TextOf(HWND dialog, int id) { return TextOf(GetDlgItem(dialog, id)); }
