// The period group of a report's dialog: months, quarters, the year, free dates. One set of routines serves
// every dialog; a control that a dialog does not have makes the step that would read it do nothing.
#pragma once

#include "src/platform/window_api.h"
#include "src/reports/frame/report_params.h"

#include <cstdint>

namespace vark {

// Controls by id.
inline constexpr int controlYear = 20000;         // edit
inline constexpr int controlFirstMonth = 20001;   // radio buttons in calendar order, January first
inline constexpr int controlFirstQuarter = 20013; // radio buttons
inline constexpr int controlWholeYear = 20017;    // radio button
inline constexpr int controlDayExact = 20018;     // radio button
inline constexpr int controlVon = 22990;          // edits
inline constexpr int controlBis = 22991;

// Fields that failed their check.
enum InvalidField : uint32_t { InvalidYear = 1, InvalidVon = 2, InvalidBis = 4 };

// The state of one open dialog.
struct PeriodDialogState {
    const ThreadContext *Context;
    uint32_t Validating;    // 1 from the call of OK's check for a field to its answer
    uint32_t Options;       // PeriodOption bits
    uint32_t InvalidFields; // InvalidField bits
    uint32_t SetzeJahr;     // the year's field shows the calendar year of the chosen month
    PeriodSelection Selection;
};

// At WM_INITDIALOG: fills the state from what was chosen before and shows it.
void InitPeriodControls(HWND dialog, uint32_t options, const PeriodSelection &selection,
                        const ThreadContext &context, PeriodDialogState &state);

// Shows every message to the group first. True if it was the group's own; the dialog then does nothing.
bool PeriodControlMessage(PeriodDialogState &state, HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);

// At OK: checks the fields (each failure shows its message and focuses the field) and writes the chosen
// period to `selection`. False keeps the dialog open.
bool AcceptPeriodControls(HWND dialog, PeriodDialogState &state, PeriodSelection &selection);

} // namespace vark
