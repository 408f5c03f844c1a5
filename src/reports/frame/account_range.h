// The account group of a report's dialog: the kind of account, and a range of numbers or one single account.
// A limit is typed as a number or as the beginning of a Kürzel, which is turned into its number.
#pragma once

#include "src/platform/window_api.h"
#include "src/reports/frame/report_params.h"

#include <cstdint>

namespace vark {

// Controls by id.
inline constexpr int controlSachkonten = 20050; // radio buttons
inline constexpr int controlKreditoren = 20051;
inline constexpr int controlDebitoren = 20052;
inline constexpr int controlKostenstellen = 20053;
inline constexpr int controlKontoVon = 20054; // edits
inline constexpr int controlKontoBis = 20055;
inline constexpr int controlEinzeln = 20056; // check button: one single account
inline constexpr int controlVonLabel = 20057;
inline constexpr int controlBisLabel = 20058;

// Which edits of a dialog take an account, for the key handling of modeless dialogs. Hangs on the dialog
// under this property.
inline constexpr char accountEditProperty[] = "tervoTKKonto";

struct AccountEditList {
    uint32_t Active; // 1
    uint16_t Count;
    HWND Edits[2];
};

// The state of one open dialog.
struct AccountRangeState {
    ThreadContext *Context;
    uint32_t NotFound;     // at OK: the single account could not be resolved
    uint32_t EinzelnState; // the check of controlEinzeln
    AccountRangeSelection Selection;
};

// At WM_INITDIALOG. The kind is moved to one whose radio button exists.
void InitAccountRange(HWND dialog, bool hasSingle, AccountRangeSelection &selection, ThreadContext &context,
                      AccountRangeState &state);

// Shows every message to the group first. True if it was the group's own.
bool AccountRangeMessage(AccountRangeState &state, HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);

// Reads the controls and resolves what was typed; at OK and whenever a field or button of the group changes.
void AcceptAccountRange(HWND dialog, AccountRangeState &state, AccountRangeSelection &selection);

} // namespace vark
