#include "src/pickers/rate_entry.h"

#include "src/frame/dialogs.h"
#include "src/frame/held_tables.h"
#include "src/frame/messages.h"
#include "src/frame/record_store.h"
#include "src/frame/transactions.h"
#include "src/pickers/pick_list.h"
#include "src/values/currency.h"
#include "src/values/dates.h"
#include "src/values/dialog_fields.h"
#include "text/fixed_text.h"
#include "text/windows1252.h"

#include <array> // std::size
#include <cstring>

namespace vark {

namespace {

using namespace text;
using varkui::DialogControlKind;

constexpr int waehrungField = 30119;
constexpr int deleteButton = 30121;
constexpr int rateList = 30122;
constexpr int kursField = 30125;
constexpr int averageBox = 30126;
constexpr int unitsField = 30127;
constexpr int dateField = 22994;

constexpr size_t longestWaehrung = sizeof KurseRecord::Waehrung - 1;
constexpr WPARAM longestUnits = 6;
constexpr const char *units[] = {"1", "10", "100", "1000", "10000", "100000"};
constexpr WPARAM unitsOfNewCurrency = 2; // 100

constexpr varkui::DialogControl controls[] = {
    {DialogControlKind::Text, -1, "&Währung :"_w, 7, 9, 66, 8, 0, 0},
    {DialogControlKind::ComboBox, waehrungField, "", 76, 7, 60, 14, CBS_SORT, 0},
    {DialogControlKind::CheckBox, averageBox, "Durch&schnittskurs"_w, 76, 26, 90, 10, 0, 0},
    {DialogControlKind::Text, -1, "&Datum :", 7, 43, 66, 8, 0, 0},
    {DialogControlKind::Edit, dateField, "", 76, 41, 60, 14, 0, 0},
    {DialogControlKind::Text, -1, "&Kurs :", 7, 62, 66, 8, 0, 0},
    {DialogControlKind::Edit, kursField, "", 76, 60, 60, 14, 0, 0},
    {DialogControlKind::Text, -1, "&Einheitenanzahl :"_w, 7, 81, 66, 8, 0, 0},
    {DialogControlKind::ComboBox, unitsField, "", 76, 79, 60, 14, 0, 0},
    {DialogControlKind::Text, -1, "E&rfaßte Kurse :"_w, 7, 101, 160, 8, 0, 0},
    {DialogControlKind::ListBox, rateList, "", 7, 112, 180, 90, 0, 0},
    {DialogControlKind::DefaultButton, IDOK, "&Neu", 194, 7, 55, 14, 0, 0},
    {DialogControlKind::PushButton, deleteButton, "&Löschen"_w, 194, 25, 55, 14, 0, 0},
    {DialogControlKind::PushButton, IDCANCEL, "&Beenden", 194, 43, 55, 14, 0, 0},
};

constexpr varkui::DialogTable dialogTable = {131,      "Fremdwährungsverwaltung"_w, 256, 209,
                                             controls, std::size(controls),         0};

struct RateDialog {
    ThreadContext &Context;
    WaehrungText Shown;       // the currency whose rates the list shows
    WaehrungText Provisional; // typed, entered into the list of currencies and without a rate so far
};

LRESULT SendText(HWND dialog, int id, UINT message, WPARAM wParam, const char *text)
{
    return SendDlgItemMessageA(dialog, id, message, wParam, reinterpret_cast<LPARAM>(text));
}

int FindWaehrung(HWND dialog, const char *waehrung)
{
    return static_cast<int>(
        SendText(dialog, waehrungField, CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1), waehrung));
}

// ---- Lists ----

void FillWaehrungen(HWND dialog, const RateDialog &state)
{
    KurseRecord record;
    bool found = false;
    HoldDrawing(dialog, waehrungField);
    bool read = GetGreaterEqualF(state.Context, &record, KeyBuffer{}, found, TableKurse);
    while (read && found) {
        WaehrungText waehrung;
        CopyText(waehrung, record.Waehrung);
        if (SendText(dialog, waehrungField, CB_ADDSTRING, 0, waehrung) < 0) {
            ShowMessage(Message::ListeUnvollstaendig, 0, nullptr, -1);
            break;
        }
        // Behind every date of this currency.
        constexpr SortDate lastDate = {'\xFF', '\xFF', '\xFF', '\xFF', '\xFF', '\xFF'};
        read = GetGreaterF(state.Context, &record, KeyOfRate(waehrung, lastDate), found, TableKurse);
    }
    ResumeDrawing(dialog, waehrungField);
}

bool AddRate(HWND dialog, const RateDialog &state, const KurseRecord &record)
{
    RateRow row;
    FormatRateRow(record, row, state.Context.FirstFiscalMonth);
    if (SendText(dialog, rateList, LB_ADDSTRING, 0, row) >= 0) return true;
    ShowMessage(Message::ListeUnvollstaendig, 0, nullptr, -1);
    return false;
}

// Adds the rates of the currency in view as far as they fit. How many were read, the last of them in `last`;
// -1 when they could not be read.
int AddRates(HWND dialog, const RateDialog &state, KurseRecord &last)
{
    KurseRecord record;
    bool found = false;
    bool fits = true;
    int count = 0;
    if (!GetGreaterEqualF(state.Context, &record, KeyOfRate(state.Shown, SortDate{}), found, TableKurse))
        return -1;
    while (fits && found && SameText(record.Waehrung, state.Shown)) {
        last = record;
        ++count;
        fits = AddRate(dialog, state, record);
        if (fits && !GetNextF(state.Context, &record, found, TableKurse)) return -1;
    }
    return count;
}

void ShowUnits(HWND dialog, const KurseRecord &record)
{
    SetDlgItemInt(dialog, unitsField, static_cast<UINT>(UnitsOfCode(record.Einheit)), TRUE);
}

// What was typed on the way to a currency is no currency: only the last entry without a rate stays.
void TakeBackProvisional(HWND dialog, RateDialog &state)
{
    if (state.Provisional[0] == 0) return;
    const int index = FindWaehrung(dialog, state.Provisional);
    if (index >= 0)
        SendDlgItemMessageA(dialog, waehrungField, CB_DELETESTRING, static_cast<WPARAM>(index), 0);
    state.Provisional[0] = 0;
}

void EnterNewWaehrung(HWND dialog, RateDialog &state)
{
    SendDlgItemMessageA(dialog, unitsField, CB_SETCURSEL, unitsOfNewCurrency, 0);
    if (FindWaehrung(dialog, state.Shown) >= 0) return;
    if (SendText(dialog, waehrungField, CB_ADDSTRING, 0, state.Shown) < 0) return;
    CopyText(state.Provisional, state.Shown);
}

void ShowRatesOf(HWND dialog, RateDialog &state, const char *waehrung)
{
    if (waehrung[0] == 0) return;
    CopyText(state.Shown, waehrung);
    if (!SameText(state.Shown, state.Provisional)) TakeBackProvisional(dialog, state);
    HoldDrawing(dialog, rateList);
    SendDlgItemMessageA(dialog, rateList, LB_RESETCONTENT, 0, 0);
    KurseRecord last{};
    const int count = AddRates(dialog, state, last);
    if (count > 0) {
        ShowUnits(dialog, last);
        const LRESULT rows = SendDlgItemMessageA(dialog, rateList, LB_GETCOUNT, 0, 0);
        SendDlgItemMessageA(dialog, rateList, LB_SETCURSEL, static_cast<WPARAM>(rows - 1), 0);
    } else if (count == 0) {
        EnterNewWaehrung(dialog, state);
    }
    ResumeDrawing(dialog, rateList);
}

// ---- Opening ----

// False when the focus has been set.
bool Begin(HWND dialog, RateDialog &state)
{
    ThreadContext &context = state.Context;
    int tabStops[] = {28, 31, 45};
    SendDlgItemMessageA(dialog, rateList, LB_SETTABSTOPS, std::size(tabStops),
                        reinterpret_cast<LPARAM>(tabStops));
    SendDlgItemMessageA(dialog, waehrungField, CB_LIMITTEXT, longestWaehrung, 0);
    SendDlgItemMessageA(dialog, unitsField, CB_LIMITTEXT, longestUnits, 0);
    SendDlgItemMessageA(dialog, dateField, EM_LIMITTEXT, longestDateInput, 0);
    SendDlgItemMessageA(dialog, kursField, EM_LIMITTEXT, longestAmountInput, 0);
    FillWaehrungen(dialog, state);
    for (const char *each : units) {
        SendText(dialog, unitsField, CB_ADDSTRING, 0, each);
    }
    if (context.PendingRateDate[0] == 0) {
        // In the form of the books, as this dialog has always done: not what a person would type, and to be
        // typed over. Who opens the dialog for a person makes today the pending date.
        SetDlgItemTextA(dialog, dateField, context.TodayPacked);
        return true;
    }
    // With four digits of the year: of two, "00" would not be read as a year.
    DateText date;
    FormatDate(context.PendingRateDate, date, true, context.FirstFiscalMonth);
    SetDlgItemTextA(dialog, dateField, date);
    WaehrungText waehrung;
    CopyText(waehrung, context.PendingWaehrung);
    context.PendingRateDate[0] = 0;
    context.PendingWaehrung[0] = 0;
    if (waehrung[0] == 0) return true;
    SetDlgItemTextA(dialog, waehrungField, waehrung);
    ShowRatesOf(dialog, state, waehrung);
    SetFocus(GetDlgItem(dialog, kursField));
    return false;
}

// ---- New rate ----

// Reads how many foreign units a Kurs stands for. A rate for no units, or more than the record can tell,
// would convert nothing.
bool ReadUnits(HWND dialog, KurseRecord &record)
{
    const UINT count = GetDlgItemInt(dialog, unitsField, nullptr, FALSE);
    const int32_t code = CodeOfUnits(static_cast<int32_t>(count));
    if (code < 1 || code > INT16_MAX) {
        ShowMessage(Message::EingabeFehlt, unitsField, nullptr, -1);
        return false;
    }
    record.Einheit = static_cast<int16_t>(code);
    return true;
}

enum class Clash { None, Unreadable, SameDay, SameMonth };

// Whether the books have a rate that the new one would contradict: one of that very day or, where one of the
// two is an average, the first of its month.
Clash FindClash(ThreadContext &context, const KurseRecord &rate)
{
    KurseRecord other;
    bool found = false;
    if (!GetEqual(context, &other, KeyOfRate(rate.Waehrung, rate.Datum), found, TableKurse))
        return Clash::Unreadable;
    if (found && other.Durchschnitt == 0) return Clash::SameDay;
    KurseRecord first = rate;
    BeginOfMonth(first.Datum);
    if (!GetGreaterEqualF(context, &other, KeyOfRate(first.Waehrung, first.Datum), found, TableKurse))
        return Clash::Unreadable;
    const bool isInMonth = found && IsRateOfMonth(other, rate.Waehrung, rate.Datum);
    if (!isInMonth || (other.Durchschnitt == 0 && rate.Durchschnitt == 0)) return Clash::None;
    return other.Durchschnitt != 0 && rate.Durchschnitt != 0 ? Clash::SameMonth : Clash::SameDay;
}

bool RefuseClash(Clash clash)
{
    if (clash == Clash::SameDay) ShowMessage(Message::KursExistiert, 0, nullptr, -1);
    if (clash == Clash::SameMonth) ShowMessage(Message::DurchschnittskursExistiert, 0, nullptr, -1);
    return clash != Clash::None;
}

bool ReadRate(HWND dialog, const RateDialog &state, KurseRecord &rate)
{
    WaehrungText waehrung;
    GetDlgItemTextA(dialog, waehrungField, waehrung, sizeof waehrung);
    if (waehrung[0] == 0) {
        ShowMessage(Message::WaehrungWaehlen, waehrungField, nullptr, -1);
        return false;
    }
    CopyText(rate.Waehrung, waehrung);
    PackedDate date;
    if (!ReadDateField(state.Context, dialog, dateField, date)) return false;
    CopyText(rate.Datum, date);
    ToSortDate(rate.Datum);
    rate.Durchschnitt = IsDlgButtonChecked(dialog, averageBox) == BST_CHECKED ? 1 : 0;
    return ReadUnits(dialog, rate) && !RefuseClash(FindClash(state.Context, rate)) &&
           ReadAmountField(dialog, kursField, rate.Kurs);
}

// Others may have entered rates since they were looked at. Reading them in a transaction locks them, so what
// is found in it holds until the new one is written.
bool WriteRate(ThreadContext &context, KurseRecord &rate)
{
    HeldTables held(context); // reads inside a transaction leave the count higher
    if (!Hold(held, TableKurse) || !Transaction(context, TransactionAction::Begin)) return false;
    const Clash clash = FindClash(context, rate);
    if (clash == Clash::None && Insert(context, &rate, TableKurse))
        return Transaction(context, TransactionAction::End);
    Transaction(context, TransactionAction::Abort);
    RefuseClash(clash);
    return false;
}

void EnterRate(HWND dialog, RateDialog &state)
{
    KurseRecord rate{};
    if (!ReadRate(dialog, state, rate) || !WriteRate(state.Context, rate)) return;
    if (SameText(rate.Waehrung, state.Provisional)) state.Provisional[0] = 0;
    if (AddRate(dialog, state, rate)) {
        const LRESULT rows = SendDlgItemMessageA(dialog, rateList, LB_GETCOUNT, 0, 0);
        SendDlgItemMessageA(dialog, rateList, LB_SETTOPINDEX, static_cast<WPARAM>(rows - 1), 0);
    }
    SetFocus(GetDlgItem(dialog, waehrungField));
}

// ---- Deletion ----

// Deletes the rate that a row shows. The row's date is read as a person's would be, so a rate of the year 00
// is not found.
bool DeleteFromBooks(const RateDialog &state, RateRow &row)
{
    row[strcspn(row, "\t")] = 0;
    if (ParseDateText(state.Context, row, sizeof row, false) != DateGood) return false;
    PackedDate date;
    CopyText(date, row);
    ToSortDate(date);
    KurseRecord record;
    bool found = false;
    return GetEqual(state.Context, &record, KeyOfRate(state.Shown, date), found, TableKurse) && found &&
           Delete(state.Context, TableKurse);
}

void DeleteRate(HWND dialog, RateDialog &state)
{
    const int line = SelectedLine(dialog, rateList);
    if (line == noLine) {
        ShowMessage(Message::KursWaehlen, rateList, nullptr, -1);
        return;
    }
    RateRow row = {};
    SendText(dialog, rateList, LB_GETTEXT, static_cast<WPARAM>(line), row);
    if (!DeleteFromBooks(state, row)) {
        ShowMessage(Message::KursNichtGeloescht, 0, nullptr, -1);
        return;
    }
    SendDlgItemMessageA(dialog, rateList, LB_DELETESTRING, static_cast<WPARAM>(line), 0);
    SendDlgItemMessageA(dialog, rateList, LB_SETCURSEL, 0, 0);
}

// ---- The dialog ----

// The currency that is in the field now; the field itself follows a choice from its list only later.
void FollowWaehrung(HWND dialog, RateDialog &state, int notice)
{
    char waehrung[64] = {};
    const LRESULT chosen = SendDlgItemMessageA(dialog, waehrungField, CB_GETCURSEL, 0, 0);
    if (notice == CBN_SELCHANGE && chosen >= 0) {
        const auto index = static_cast<WPARAM>(chosen);
        const LRESULT length = SendDlgItemMessageA(dialog, waehrungField, CB_GETLBTEXTLEN, index, 0);
        if (length < 0 || length >= static_cast<LRESULT>(sizeof waehrung)) return;
        SendDlgItemMessageA(dialog, waehrungField, CB_GETLBTEXT, index, reinterpret_cast<LPARAM>(waehrung));
    } else {
        GetDlgItemTextA(dialog, waehrungField, waehrung, sizeof waehrung);
    }
    ShowRatesOf(dialog, state, waehrung);
}

INT_PTR CALLBACK Procedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
{
    auto *state = DialogState<RateDialog>(dialog, message, lParam);
    if (state == nullptr) return FALSE;
    if (message == WM_INITDIALOG) return Begin(dialog, *state) ? TRUE : FALSE;
    if (message != WM_COMMAND) return FALSE;
    const int id = LOWORD(wParam);
    const int notice = HIWORD(wParam);
    if (id == waehrungField && (notice == CBN_EDITCHANGE || notice == CBN_SELCHANGE)) {
        FollowWaehrung(dialog, *state, notice);
    } else if (id == IDOK && notice == BN_CLICKED) {
        EnterRate(dialog, *state);
    } else if (id == deleteButton && notice == BN_CLICKED) {
        DeleteRate(dialog, *state);
    } else if (id == IDCANCEL && notice == BN_CLICKED) {
        EndDialog(dialog, IDCANCEL);
    } else {
        return FALSE;
    }
    return TRUE;
}

} // namespace

void RunRateDialog(ThreadContext &context, HWND owner)
{
    HeldTables held(context);
    if (!Hold(held, TableKurse)) return;
    RateDialog state = {context, {}, {}};
    RunDialog(dialogTable, owner, Procedure, &state);
}

bool FindRateOrAsk(ThreadContext &context, HWND owner, KurseRecord &record, const char *waehrung,
                   const PackedDate &date)
{
    while (!FindRate(context, record, waehrung, date)) {
        if (ShowMessage(Message::KursErfassen, 0, nullptr, -1) == 0) return false;
        CopyText(context.PendingRateDate, date);
        CopyText(context.PendingWaehrung, waehrung);
        RunRateDialog(context, owner);
    }
    return true;
}

} // namespace vark
