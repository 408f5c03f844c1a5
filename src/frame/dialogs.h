// Modal dialogs of the library: made from their tables, over a window of the caller, with a state of their
// own.
#pragma once

#include "src/platform/window_api.h"
#include "window-system/include/dialog_table.h"

namespace vark {

// Runs a dialog over `owner`; null or no window means the thread's active window. `state` reaches the
// procedure with WM_INITDIALOG, and what comes of the dialog the procedure puts there: a dialog that goes
// with its owner leaves it untouched. False, after message 1449, when there was no memory to make the dialog.
bool RunDialog(const varkui::DialogTable &table, HWND owner, DLGPROC procedure, void *state);

// The state of a dialog, for the first line of its procedure; null for what comes before WM_INITDIALOG.
void *KeepDialogState(HWND dialog, UINT message, LPARAM lParam);

template <typename State> State *DialogState(HWND dialog, UINT message, LPARAM lParam)
{
    return static_cast<State *>(KeepDialogState(dialog, message, lParam));
}

} // namespace vark
