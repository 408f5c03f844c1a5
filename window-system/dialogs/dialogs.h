// Making dialogs from templates, running and ending them.
#pragma once

#include "window-system/model/threads.h"

namespace varkui {

// Makes the dialog of a template, modeless ones shown if their style says so. Null when it could not be made
// or is gone already. `loop` (null: modeless) is entered into its thread's modal loops.
HWND MakeDialog(LPCDLGTEMPLATEA dialogTemplate, HWND owner, DLGPROC procedure, LPARAM parameter,
                ModalLoop *loop);

// Runs a modal dialog from its template, as DialogBoxIndirectParamA.
INT_PTR RunDialog(LPCDLGTEMPLATEA dialogTemplate, HWND owner, DLGPROC procedure, LPARAM parameter);

} // namespace varkui
