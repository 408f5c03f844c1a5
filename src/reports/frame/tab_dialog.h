// Dialogs with two periods on two pages. The keys of a tab control need a message loop that knows of it, so
// such a dialog is modeless and runs in a loop of the library's own; VARK_IsMessage lets a host's loop serve
// it as well. That export lies here.
#pragma once

#include "src/platform/window_api.h"
#include "src/reports/frame/period_controls.h"
#include "window-system/include/dialog_table.h"

#include <atomic>
#include <cstdint>

namespace vark {

// Controls by id.
inline constexpr int controlPeriodTabs = 1044; // tab control
inline constexpr int controlPagePlace = 1045;  // its rectangle is that of the pages
inline constexpr int controlCompare = 1046;    // check box

// The tabbed dialog that is active now and the bar of the sheet that was last active, in the whole process;
// null for none. Each may be a window that has gone: VARK_IsMessage forgets it then.
extern std::atomic<HWND> ActiveTabDialog;
extern std::atomic<HWND> ActiveBarWindow;

// Runs a dialog over `parent` (for a child window, its parent; null or no window: the thread's active
// window), which is disabled meanwhile, until EndTabDialog, whose result it returns; 0 when the dialog was
// destroyed without an end, when the program is to end (WM_QUIT, which is posted again for the loops
// outside), or, after message 1449, when there was no memory to make it. `state` reaches the procedure with
// WM_INITDIALOG.
int32_t RunTabDialog(const varkui::DialogTable &table, VarkWindow parent, DLGPROC procedure, void *state);

// Has the dialog's loop end with `result` and returns 1. A dialog that runs in no loop is destroyed; 0 then.
int32_t EndTabDialog(HWND dialog, uint32_t result);

// Names the tab control whose pages Ctrl+Tab turns.
void AttachTabControl(HWND dialog, int id);

// The pages' part of a dialog's state.
struct PeriodTabs {
    PeriodSelection Selections[2]; // of the report and of the comparison, as each page was last accepted
    PeriodDialogState PageStates[2];
    HWND PageWindows[2];
    int32_t CurrentPage; // 0 or 1
    uint32_t CompareOn;  // 0: the second page is never checked
};

// At WM_INITDIALOG: makes both pages (with quarters if `isGuv`) from their selections, shows the first and
// names the tabs. False, with nothing left behind, when a page could not be made.
bool InitPeriodTabs(HWND dialog, int tabId, bool isGuv, const ThreadContext &context, PeriodTabs &tabs);

// The options of the pages, for the dialog's layout.
uint32_t PageOptions(bool isGuv);

// Shows every message to the tabs first. True if it was their own; the answer to a notification then stands
// in the dialog's message result.
bool PeriodTabMessage(PeriodTabs &tabs, HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);

// Checks the page in view, at OK and before another one comes; what fails has been shown. A page that was
// left was checked then. The comparison is not looked at while it is off.
bool AcceptCurrentPage(PeriodTabs &tabs);

// The same at OK, and then, with the comparison on, the page that is not in view as well: nobody may have
// looked at it. One that is refused is turned to.
bool AcceptBothPages(PeriodTabs &tabs, HWND dialog);

// Makes a modeless dialog that lives as a child of `owner`, not yet shown; null when it could not be made.
HWND CreateChildDialog(HWND owner, const varkui::DialogTable &table, DLGPROC procedure, void *state);

} // namespace vark
