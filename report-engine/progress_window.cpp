#include "report-engine/progress_window.h"

#include "text/windows1252.h"
#include "window-system/include/dialog_table.h"

#include <array> // std::size
#include <cstdio>
#include <ctime>

namespace rs {

namespace {

using namespace text;
using varkui::DialogControlKind;

constexpr int figureText = 301;

constexpr varkui::DialogControl controls[] = {
    {DialogControlKind::Text, figureText, "", 7, 9, 166, 8, 0, 0},
    {DialogControlKind::PushButton, IDCANCEL, "&Abbrechen"_w, 123, 26, 50, 14, 0, 0},
};
constexpr varkui::DialogTable table = {142, "", 180, 47, controls, std::size(controls), 0};

constexpr int64_t patience_ms = 500;
constexpr int64_t betweenFigures_ms = 150;

int64_t Now_ms()
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1'000'000;
}

INT_PTR CALLBACK OnMessage(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_INITDIALOG) {
        SetWindowLongPtrA(dialog, DWLP_USER, static_cast<LONG_PTR>(lParam));
        return TRUE;
    }
    if (message != WM_COMMAND || LOWORD(wParam) != IDCANCEL) return FALSE;
    auto *window = reinterpret_cast<ProgressWindow *>(GetWindowLongPtrA(dialog, DWLP_USER)); // NOLINT
    if (window != nullptr) window->IsStopped = true;
    return TRUE;
}

HWND OutermostOf(HWND window)
{
    while (window != nullptr && (GetWindowLongPtrA(window, GWL_STYLE) & WS_CHILD) != 0) {
        window = GetParent(window);
    }
    return window;
}

void Open(ProgressWindow &window)
{
    DLGTEMPLATE *made = varkui::MakeDialogTemplate(table);
    if (made == nullptr) return;
    window.Dialog =
        CreateDialogIndirectParamA(nullptr, made, window.Owner, OnMessage, reinterpret_cast<LPARAM>(&window));
    varkui::FreeDialogTemplate(made);
    if (window.Dialog == nullptr) return;
    SetWindowTextA(window.Dialog, window.Title);
    window.Disabled = OutermostOf(window.Owner);
    if (window.Disabled != nullptr) EnableWindow(window.Disabled, FALSE);
    ShowWindow(window.Dialog, SW_SHOW);
}

// Handles what has come meanwhile, as the loop of a modal dialog would.
void HandleMessages(ProgressWindow &window)
{
    MSG message;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
        if (message.message == WM_QUIT) {
            PostQuitMessage(static_cast<int>(message.wParam));
            window.IsStopped = true;
            return;
        }
        if (IsDialogMessageA(window.Dialog, &message) != FALSE) continue;
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
    // The window around it has gone, and nobody waits any more.
    if (IsWindow(window.Dialog) == FALSE) window.IsStopped = true;
}

bool Tell(void *context, int64_t done, int64_t whole)
{
    auto &window = *static_cast<ProgressWindow *>(context);
    const int64_t now = Now_ms();
    if (window.IsStopped || now - window.Began_ms < patience_ms) return !window.IsStopped;
    if (window.Shown_ms == 0 && VarkUiHasUser() != FALSE) Open(window);
    if (now - window.Shown_ms < betweenFigures_ms) return true;
    window.Shown_ms = now;
    if (window.Dialog == nullptr) return true;
    char text[64] = "Bitte warten ...";
    if (whole > 0) std::snprintf(text, sizeof text, "%d %%", static_cast<int>(done * 100 / whole));
    SetDlgItemTextA(window.Dialog, figureText, text);
    HandleMessages(window);
    return !window.IsStopped;
}

} // namespace

Progress WatchProgress(ProgressWindow &window, HWND owner, const char *title)
{
    window = {owner, title, nullptr, nullptr, Now_ms(), 0, false};
    return {Tell, &window};
}

void EndProgress(ProgressWindow &window)
{
    if (window.Disabled != nullptr) EnableWindow(window.Disabled, TRUE);
    if (window.Dialog != nullptr) DestroyWindow(window.Dialog);
    window.Dialog = nullptr;
}

} // namespace rs
