#include "src/reports/frame/account_range.h"

#include "src/frame/record_store.h"
#include "src/model/accounts.h"
#include "src/reports/frame/dialog_buttons.h"
#include "src/values/account_numbers.h"
#include "src/walks/account_walk.h"
#include "text/fixed_text.h"

#include <cstdlib>
#include <cstring>
#include <initializer_list>

namespace vark {

using text::CopyText;

namespace {

constexpr UINT messageRange = WM_USER + 5; // a notification of a control of the group, after its own handling

// The radio button of a kind: they follow each other as the kinds do.
int ButtonOf(const AccountKind &kind) { return controlSachkonten + static_cast<int>(&kind - accountKinds); }

static_assert(controlKreditoren == controlSachkonten + 1 && controlDebitoren == controlSachkonten + 2 &&
              controlKostenstellen == controlSachkonten + 3);

void ShowKind(HWND dialog, int16_t kontoart)
{
    for (const AccountKind &kind : accountKinds) {
        SetChecked(dialog, ButtonOf(kind), kind.Art == kontoart);
    }
}

void ShowAccountRange(HWND dialog, AccountRangeState &state)
{
    ShowKind(dialog, state.Selection.KontoArt);
    const AccountLimits &limits = LimitsOf(state.Selection, state.Selection.KontoArt);
    SetDlgItemTextA(dialog, controlKontoVon, limits.Von);
    SetDlgItemTextA(dialog, controlKontoBis, limits.Bis);
}

void ShowEinzeln(HWND dialog, const AccountRangeState &state)
{
    if (!HasControl(dialog, controlEinzeln)) return;
    const bool isSingle = state.EinzelnState != 0;
    SetChecked(dialog, controlEinzeln, isSingle);
    for (const AccountKind &kind : accountKinds) {
        if (HWND button = GetDlgItem(dialog, ButtonOf(kind)); button != nullptr)
            EnableWindow(button, isSingle ? FALSE : TRUE);
    }
    for (const int control : {controlKontoBis, controlBisLabel}) {
        if (HWND window = GetDlgItem(dialog, control); window != nullptr)
            ShowWindow(window, isSingle ? SW_HIDE : SW_SHOW);
    }
    SetDlgItemTextA(dialog, controlVonLabel, isSingle ? "Ko&nto:" : "vo&n:");
    HWND focus = GetFocus();
    if (focus != nullptr && IsChild(dialog, focus) && !IsWindowEnabled(focus)) {
        SendMessageA(dialog, WM_NEXTDLGCTL, 0, FALSE);
    }
}

bool IsAllDigits(const char *text)
{
    while (*text >= '0' && *text <= '9') {
        ++text;
    }
    return *text == 0;
}

// Writes a record's number without blanks to `out` and into the edit.
void TakeNumber(HWND dialog, int control, const AnyAccount &record, AccountNumber &out)
{
    StripNumber(out, record.Head.Konto);
    SetDlgItemTextA(dialog, control, out);
}

bool FindByKuerzel(ThreadContext &context, TableId table, const char *begin, AnyAccount &record)
{
    const bool wasOpen = context.OpenCounts[table] != 0;
    bool found = false;
    const KeyBuffer key = KeyOfText(begin, sizeof record.Head.Kuerzel);
    const bool read = GetGreaterEqualF(context, &record, key, found, KeyCode(table, 1));
    if (!wasOpen) CloseTable(context, table);
    return read && found && std::strncmp(record.Head.Kuerzel, begin, std::strlen(begin)) == 0;
}

// Turns what stands in an edit into a number. `kontoart` 0 looks through all kinds. Returns the kind, 0 for
// none.
int16_t ResolveAccountText(HWND dialog, ThreadContext &context, int control, int16_t kontoart,
                           AccountNumber &out)
{
    char typed[9] = {};
    GetDlgItemTextA(dialog, control, typed, sizeof typed - 1);
    TrimLeft(typed, sizeof typed);
    AnyAccount record{};
    if (!IsAllDigits(typed)) {
        for (const AccountKind &kind : accountKinds) {
            if (kontoart != 0 && kind.Art != kontoart) continue;
            if (!FindByKuerzel(context, kind.Table, typed, record)) continue;
            TakeNumber(dialog, control, record, out);
            return kind.Art;
        }
    }
    CopyText(out, typed);
    if (kontoart != 0) return kontoart;
    AccountNumber number;
    JustifyNumber(number, typed);
    for (const AccountKind &kind : accountKinds) {
        bool found = false;
        if (!ReadAccount(context, kind.Table, number, record, found) || !found) continue;
        TakeNumber(dialog, control, record, out);
        return kind.Art;
    }
    return 0;
}

int16_t FirstOffered(HWND dialog)
{
    for (const AccountKind &kind : accountKinds) {
        if (HasControl(dialog, ButtonOf(kind))) return kind.Art;
    }
    return KontoartSachkonto;
}

void AcceptSingle(HWND dialog, AccountRangeState &state, AccountRangeSelection &selection)
{
    selection.Einzeln = 1;
    AccountNumber number{};
    int16_t kontoart = ResolveAccountText(dialog, *state.Context, controlKontoVon, 0, number);
    const AccountKind *const kind = FindKind(kontoart);
    if (kind == nullptr || !HasControl(dialog, ButtonOf(*kind))) {
        // A kind that is offered: with none checked, limits typed next would never be read.
        state.NotFound = 1;
        kontoart = FirstOffered(dialog);
    } else {
        CopyText(LimitsOf(selection, kontoart).Von, number);
    }
    selection.KontoArt = kontoart;
    ShowKind(dialog, kontoart);
}

void AttachEditList(HWND dialog)
{
    auto *list = static_cast<AccountEditList *>(std::calloc(1, sizeof(AccountEditList)));
    if (list == nullptr) return;
    list->Active = 1;
    for (const int control : {controlKontoVon, controlKontoBis}) {
        if (HWND edit = GetDlgItem(dialog, control); edit != nullptr) list->Edits[list->Count++] = edit;
    }
    if (!SetPropA(dialog, accountEditProperty, list)) std::free(list);
}

// A notification of the group's own controls.
void HandleNotification(AccountRangeState &state, HWND dialog, int control, int notification)
{
    if (control == controlEinzeln && notification == BN_CLICKED) {
        state.EinzelnState = IsChecked(dialog, controlEinzeln) ? 1 : 0;
        if (state.EinzelnState != 0) {
            SendMessageA(dialog, messageRange, MAKEWPARAM(controlKontoVon, EN_KILLFOCUS), 0);
        }
        ShowEinzeln(dialog, state);
        return;
    }
    if ((control == controlKontoVon || control == controlKontoBis) && notification == EN_KILLFOCUS) {
        AcceptAccountRange(dialog, state, state.Selection);
        return;
    }
    if (notification != BN_CLICKED) return;
    for (const AccountKind &kind : accountKinds) {
        if (ButtonOf(kind) != control) continue;
        // The old kind's button is still checked, so what was typed is kept under the old kind.
        AcceptAccountRange(dialog, state, state.Selection);
        state.Selection.KontoArt = kind.Art;
        ShowAccountRange(dialog, state);
    }
}

} // namespace

void InitAccountRange(HWND dialog, bool hasSingle, AccountRangeSelection &selection, ThreadContext &context,
                      AccountRangeState &state)
{
    selection.HasSingle = hasSingle ? 1 : 0;
    state = {};
    state.Context = &context;
    state.Selection = selection;
    int16_t &kontoart = state.Selection.KontoArt;
    if (FindKind(kontoart) == nullptr) kontoart = KontoartSachkonto;
    // One pass in this order: each kind without a button gives way to the next.
    if (kontoart == KontoartKostenstelle && !HasControl(dialog, controlKostenstellen))
        kontoart = KontoartSachkonto;
    if (kontoart == KontoartSachkonto && !HasControl(dialog, controlSachkonten)) kontoart = KontoartKreditor;
    if (kontoart == KontoartKreditor && !HasControl(dialog, controlKreditoren)) kontoart = KontoartDebitor;
    if (kontoart == KontoartDebitor && !HasControl(dialog, controlDebitoren)) kontoart = KontoartKostenstelle;
    ShowAccountRange(dialog, state);
    state.EinzelnState = state.Selection.Einzeln;
    ShowEinzeln(dialog, state);
    AttachEditList(dialog);
}

bool AccountRangeMessage(AccountRangeState &state, HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
{
    const int control = LOWORD(wParam);
    if (message == WM_DESTROY) {
        std::free(RemovePropA(dialog, accountEditProperty));
        return false;
    }
    if (message == WM_COMMAND && control >= controlSachkonten && control <= controlEinzeln && lParam != 0) {
        PostMessageA(dialog, messageRange, wParam, lParam);
        return true;
    }
    if (message != messageRange) return false;
    HandleNotification(state, dialog, control, HIWORD(wParam));
    return true;
}

void AcceptAccountRange(HWND dialog, AccountRangeState &state, AccountRangeSelection &selection)
{
    AccountRangeSelection &working = state.Selection;
    state.NotFound = 0;
    working.HasSingle = HasControl(dialog, controlEinzeln) ? 1 : 0;
    if (working.HasSingle != 0 && IsChecked(dialog, controlEinzeln)) {
        AcceptSingle(dialog, state, working);
    } else {
        working.Einzeln = 0;
        for (const AccountKind &kind : accountKinds) {
            if (!IsChecked(dialog, ButtonOf(kind))) continue;
            working.KontoArt = kind.Art;
            if (!HasControl(dialog, controlKontoVon)) break;
            AccountLimits &limits = LimitsOf(working, kind.Art);
            ResolveAccountText(dialog, *state.Context, controlKontoVon, kind.Art, limits.Von);
            ResolveAccountText(dialog, *state.Context, controlKontoBis, kind.Art, limits.Bis);
            break;
        }
    }
    selection = working;
}

} // namespace vark
