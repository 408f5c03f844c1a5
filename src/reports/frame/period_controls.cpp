#include "src/reports/frame/period_controls.h"

#include "src/frame/messages.h"
#include "src/platform/platform.h"
#include "src/reports/frame/dialog_buttons.h"
#include "src/values/dates.h"
#include "src/values/dialog_fields.h"
#include "text/fixed_text.h"

#include <charconv>
#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <utility>

namespace vark {

using text::CopyText;

namespace {

constexpr UINT messagePeriod =
    WM_USER + 4; // a notification of a control of the group, after its own handling

bool Offers(const PeriodDialogState &state, uint32_t option) { return (state.Options & option) != 0; }

bool IsMonth(int code) { return code >= 1 && code <= 12; }
bool IsQuarter(int code) { return code >= periodFirstQuarter && code <= periodLastQuarter; }

// A fiscal month that lies in the calendar year after the one in which its fiscal year began.
bool IsInNextYear(const PeriodDialogState &state, int code)
{
    return IsMonth(code) && state.Context->FirstFiscalMonth + code > 13;
}

void TodayAsBookDate(const ThreadContext &context, PackedDate &date)
{
    char today[sizeof context.TodayLong];
    CopyText(today, context.TodayLong);
    CopyText(date, ParseDateText(context, today, sizeof today, false) == DateGood ? today : "");
}

void SetYear(PackedDate &date, int year)
{
    if (date[0] != 0) MakePackedDate(date, DayOf(date), FiscalMonthOf(date), year);
}

// The year is looked at as the two first characters of its decimal text, so one below 10 never is bookable.
bool IsBookableNumber(const ThreadContext &context, int year)
{
    if (year < 10) return false;
    while (year > 99) {
        year /= 10;
    }
    return PostableYear(context, year) != 0;
}

int16_t CurrentBusinessYear(const ThreadContext &context)
{
    int year = firstYear;
    std::from_chars(context.MandantYear,
                    context.MandantYear + strnlen(context.MandantYear, sizeof context.MandantYear), year);
    return static_cast<int16_t>(year - firstYear);
}

void ShowDate(HWND dialog, int control, const PackedDate &date, const ThreadContext &context)
{
    DateText shown;
    FormatDate(date, shown, true, context.FirstFiscalMonth);
    SetDlgItemTextA(dialog, control, shown);
}

void Enable(HWND dialog, int control, bool isEnabled)
{
    if (HWND window = GetDlgItem(dialog, control); window != nullptr)
        EnableWindow(window, isEnabled ? TRUE : FALSE);
}

int ButtonOfCode(const PeriodDialogState &state)
{
    const int code = state.Selection.Code;
    if (code == periodDayExact) return controlDayExact;
    if (IsMonth(code)) return (state.Context->FirstFiscalMonth - 2 + code) % 12 + controlFirstMonth;
    return IsQuarter(code) ? controlYear + code : controlWholeYear;
}

// Checks the button of the chosen period in the groups that the dialog has, and enables what goes with it.
void ShowPeriodControls(HWND dialog, const PeriodDialogState &state)
{
    const struct {
        uint32_t Option;
        int First;
        int Last;
    } groups[] = {
        {PeriodMonths, controlFirstMonth, controlFirstMonth + 11},
        {PeriodQuarters, controlFirstQuarter, controlFirstQuarter + 3},
        {PeriodYear, controlWholeYear, controlWholeYear},
        {PeriodDayExact, controlDayExact, controlDayExact},
    };
    const int chosen = ButtonOfCode(state);
    for (const auto &group : groups) {
        if (!Offers(state, group.Option)) continue;
        for (int button = group.First; button <= group.Last; ++button) {
            SetChecked(dialog, button, button == chosen);
        }
    }
    const bool isArchive = state.Selection.ArchivJahr != 0;
    if (!Offers(state, PeriodDayExact)) {
        if (isArchive) Enable(dialog, controlYear, false);
        return;
    }
    const bool isDayExact = state.Selection.Code == periodDayExact;
    Enable(dialog, controlVon, isDayExact);
    Enable(dialog, controlBis, isDayExact);
    Enable(dialog, controlYear, !isDayExact && !isArchive);
}

// The code that the dialog starts with: what was chosen, moved to something that the dialog offers.
int StartCode(const PeriodDialogState &state, int stored)
{
    int code = stored < 0 ? periodDayExact : stored;
    if (stored < 0 || (code == periodDayExact && !Offers(state, PeriodDayExact))) {
        code = FiscalMonthOf(state.Selection.BisDatum);
    }
    if (IsMonth(code) && !Offers(state, PeriodMonths)) code = (stored - 1) / 3 + periodFirstQuarter;
    if (IsQuarter(code) && !Offers(state, PeriodQuarters)) code = periodWholeYear;
    if (code == periodWholeYear && !Offers(state, PeriodYear)) code = periodDayExact;
    return code;
}

void SettleYear(PeriodDialogState &state)
{
    PeriodSelection &selection = state.Selection;
    if (selection.ArchivJahr != 0) {
        selection.Jahr = static_cast<int16_t>(selection.ArchivJahr - firstYear);
        SetYear(selection.VonDatum, selection.Jahr);
        SetYear(selection.BisDatum, selection.Jahr);
        return;
    }
    const ThreadContext &context = *state.Context;
    if (!IsBookableNumber(context, selection.Jahr)) selection.Jahr = CurrentBusinessYear(context);
    for (PackedDate *date : {&selection.VonDatum, &selection.BisDatum}) {
        if (PostableYear(context, FiscalYearOf(*date)) == 0) SetYear(*date, selection.Jahr);
    }
}

// A radio button was clicked: the year's field is read by the old period and shown by the new one.
void ChooseButton(HWND dialog, PeriodDialogState &state, int button)
{
    PeriodSelection &selection = state.Selection;
    char text[12] = {};
    GetDlgItemTextA(dialog, controlYear, text, sizeof text);
    int year = -1;
    std::from_chars(text, text + std::strlen(text), year);
    if (year >= 0 && IsInNextYear(state, selection.Code)) --year;

    if (button == controlDayExact) {
        selection.Code = periodDayExact;
    } else if (button < controlFirstQuarter) {
        // Calendar month to fiscal month, as ButtonOfCode the other way round.
        const int calendarMonth = button - controlFirstMonth + 1;
        selection.Code =
            static_cast<int16_t>((calendarMonth - state.Context->FirstFiscalMonth + 12) % 12 + 1);
        if (year >= 0 && state.SetzeJahr != 0 && IsInNextYear(state, selection.Code)) ++year;
    } else {
        selection.Code =
            static_cast<int16_t>(button == controlWholeYear ? periodWholeYear : button - controlYear);
    }
    ShowPeriodControls(dialog, state);
    if (state.SetzeJahr == 0) return;
    if (year < 0) {
        SetDlgItemTextA(dialog, controlYear, state.Context->MandantYear);
    } else {
        SetDlgItemInt(dialog, controlYear, static_cast<UINT>(year < 100 ? year + 1900 : year), FALSE);
    }
}

void CheckYearControl(HWND dialog, PeriodDialogState &state)
{
    if (std::exchange(state.Validating, 0u) == 0 || !HasControl(dialog, controlYear)) return;
    PeriodSelection &selection = state.Selection;
    state.InvalidFields |= InvalidYear;
    char text[12] = {};
    GetDlgItemTextA(dialog, controlYear, text, sizeof text);
    int year = 0;
    int message = CheckYearField(text, sizeof text, year);
    if (message == 0) {
        if (IsInNextYear(state, selection.Code)) --year;
        if (!Offers(state, PeriodCalendar)) message = CheckYear(*state.Context, year, selection.ArchivJahr);
    }
    if (message != 0) {
        ShowMessage(message, controlYear, nullptr, -1);
        return;
    }
    state.InvalidFields &= ~static_cast<uint32_t>(InvalidYear);
    selection.Jahr = static_cast<int16_t>(year);
}

// Outside the check of OK a date that can be read is shown in its full form, and anything else left alone.
void TidyDateControl(HWND dialog, const PeriodDialogState &state, int control)
{
    char text[20] = {};
    GetDlgItemTextA(dialog, control, text, sizeof text);
    if (text[0] == 0 || ParseDateText(*state.Context, text, sizeof text, false) != DateGood) return;
    PackedDate date;
    CopyText(date, text);
    ShowDate(dialog, control, date, *state.Context);
}

void CheckDateControl(HWND dialog, PeriodDialogState &state, int control)
{
    if (!HasControl(dialog, control)) return;
    if (std::exchange(state.Validating, 0u) == 0) {
        TidyDateControl(dialog, state, control);
        return;
    }
    const uint32_t field = control == controlVon ? InvalidVon : InvalidBis;
    state.InvalidFields |= field;
    PackedDate date;
    if (!ReadDateField(*state.Context, dialog, control, date)) return;
    const int message = CheckYear(*state.Context, FiscalYearOf(date), state.Selection.ArchivJahr);
    if (message != 0) {
        ShowMessage(message, static_cast<uint16_t>(control), nullptr, -1);
        return;
    }
    CopyText(control == controlVon ? state.Selection.VonDatum : state.Selection.BisDatum, date);
    state.InvalidFields &= ~field;
}

bool IsPeriodControl(int control)
{
    return (control >= controlYear && control <= controlDayExact) || control == controlVon ||
           control == controlBis;
}

// Has a field checked as if the focus had left it, and that one alone: a click may have taken the focus
// from it, which the field tells while the message of the check is open.
void LeaveField(HWND dialog, PeriodDialogState &state, int control)
{
    state.Validating = 1;
    SendMessageA(dialog, messagePeriod, MAKEWPARAM(control, EN_KILLFOCUS), 0);
    state.Validating = 0;
}

// What was chosen before. Free dates in a dialog without them stand for the month of the last day; without
// one they name no period at all.
int StoredCode(const PeriodDialogState &state, const PeriodSelection &selection)
{
    const bool isFree = selection.Code == periodDayExact && !Offers(state, PeriodDayExact);
    return isFree && selection.BisDatum[0] == 0 ? periodNotChosen : selection.Code;
}

} // namespace

void InitPeriodControls(HWND dialog, uint32_t options, const PeriodSelection &selection,
                        const ThreadContext &context, PeriodDialogState &state)
{
    state = {};
    state.Context = &context;
    state.Options = options;
    char setzeJahr[4];
    state.SetzeJahr =
        ReadProfileText("TOLKA", "SetzeJahr", setzeJahr, sizeof setzeJahr, "tolka.ini") != 0 ? 1 : 0;

    PeriodSelection &working = state.Selection;
    working = selection;
    PackedDate today;
    TodayAsBookDate(context, today);
    const int stored = StoredCode(state, selection);
    if (stored < 0) {
        MakePackedDate(working.VonDatum, 1, 1, FiscalYearOf(today));
        CopyText(working.BisDatum, today);
        working.Jahr = static_cast<int16_t>(FiscalYearOf(today));
    } else if (stored == periodDayExact && !HasControl(dialog, controlVon)) {
        MakePackedDate(working.VonDatum, 1, 1, FiscalYearOf(today));
    }
    working.Code = static_cast<int16_t>(StartCode(state, stored));
    working.Options = options;
    SettleYear(state);
    if (Offers(state, PeriodDayExact)) {
        if (working.Code != periodDayExact) {
            CopyText(working.BisDatum, today);
            if (working.ArchivJahr != 0) SetYear(working.BisDatum, working.Jahr);
            MakePackedDate(working.VonDatum, 1, FiscalMonthOf(working.BisDatum),
                           FiscalYearOf(working.BisDatum));
        }
        ShowDate(dialog, controlVon, working.VonDatum, context);
        ShowDate(dialog, controlBis, working.BisDatum, context);
    }
    if (Offers(state, PeriodYear)) {
        const int year = working.Jahr + firstYear + (IsInNextYear(state, working.Code) ? 1 : 0);
        SetDlgItemInt(dialog, controlYear, static_cast<UINT>(year), FALSE);
    }
    ShowPeriodControls(dialog, state);
}

bool PeriodControlMessage(PeriodDialogState &state, HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
{
    const int control = LOWORD(wParam);
    const int notification = HIWORD(wParam);
    if (message == WM_COMMAND && IsPeriodControl(control)) {
        // Handled after the control itself, and not while another window has the focus.
        HWND active = GetActiveWindow();
        const bool isOurs = active != nullptr && (active == dialog || active == GetParent(dialog));
        if (isOurs) PostMessageA(dialog, messagePeriod, wParam, lParam);
        return isOurs;
    }
    if (message != messagePeriod) return false;
    if (control >= controlFirstMonth && control <= controlDayExact) {
        if (notification == BN_CLICKED) ChooseButton(dialog, state, control);
    } else if (notification == EN_KILLFOCUS && control == controlYear) {
        CheckYearControl(dialog, state);
    } else if (notification == EN_KILLFOCUS && (control == controlVon || control == controlBis)) {
        CheckDateControl(dialog, state, control);
    }
    return true;
}

bool AcceptPeriodControls(HWND dialog, PeriodDialogState &state, PeriodSelection &selection)
{
    PeriodSelection &working = state.Selection;
    const ThreadContext &context = *state.Context;
    state.InvalidFields = 0;
    if (working.Code != periodDayExact || !Offers(state, PeriodDayExact)) {
        LeaveField(dialog, state, controlYear);
    } else {
        LeaveField(dialog, state, controlVon);
        if (state.InvalidFields == 0) LeaveField(dialog, state, controlBis);
        if (!HasControl(dialog, controlVon)) SetYear(working.VonDatum, FiscalYearOf(working.BisDatum));
        working.Jahr = static_cast<int16_t>(FiscalYearOf(working.BisDatum));
    }
    if (state.InvalidFields != 0) return false;
    ComputePeriodDates(context, working);
    const std::to_chars_result year = std::to_chars(
        working.JahrText, working.JahrText + sizeof working.JahrText - 1, working.Jahr + firstYear);
    *(year.ec == std::errc() ? year.ptr : working.JahrText) = 0;

    if (Offers(state, PeriodCalendar)) {
        const int ofVon = CheckYear(context, FiscalYearOf(working.VonDatum), working.ArchivJahr);
        const int ofBis = CheckYear(context, FiscalYearOf(working.BisDatum), working.ArchivJahr);
        if (ofVon != 0 && ofBis != 0) {
            ShowMessage(ofBis, 0, nullptr, -1);
            return false;
        }
    } else if (HasControl(dialog, controlVon) && HasControl(dialog, controlBis)) {
        const int message = CheckDatePair(working.VonDatum, working.BisDatum);
        if (message != 0) {
            ShowMessage(message,
                        static_cast<uint16_t>(message == Message::GeschaeftsjahreVerschieden ? controlBis
                                                                                             : controlVon),
                        nullptr, -1);
            return false;
        }
    }
    selection = working;
    return true;
}

} // namespace vark
