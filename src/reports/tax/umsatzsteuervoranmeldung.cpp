// Umsatzsteuervoranmeldung: the turnover tax return of a month, quarter or year, box by box. Once it is
// printed, the books are locked up to the end of its period.
#include "src/frame/held_tables.h"
#include "src/frame/messages.h"
#include "src/frame/record_store.h"
#include "src/reports/frame/report_run.h"
#include "src/reports/tax/form_record.h"
#include "src/reports/tax/kennzahlen.h"
#include "src/values/dates.h"
#include "text/fixed_text.h"

namespace vark {

namespace {

constexpr int controlBerichtigt = 1053;
constexpr int firstYearOfForm7 = 1997;

bool IsForPrinter(const ReportChoice &choice)
{
    return choice.Ausgabe == static_cast<int32_t>(Ausgabe::Drucker);
}

ReportRow RowOf(const ReportRun &run)
{
    if (HasExactForm(run.Mandant)) return ReportUstva;
    const bool isForm7 = FormYear(*run.Context, run.Choice.Period) >= firstYearOfForm7;
    return isForm7 ? ReportUstvaDruck7 : ReportUstvaDruck;
}

// Only the form with whole amounts knows a corrected return.
bool HideBerichtigt(ReportRun &run)
{
    OptionOf(run, controlBerichtigt).Hidden = HasExactForm(run.Mandant);
    return true;
}

// Before anything is printed the person is told that this locks the period.
bool AskForLock(HWND, const ReportRun &, const ReportChoice &chosen)
{
    return !IsForPrinter(chosen) || ShowMessage(Message::ZeitraumSperren, 0, nullptr, -1) == 1;
}

bool SendForm(ReportRun &run)
{
    const PeriodSelection &period = run.Choice.Period;
    Kennzahlliste list;
    FormRecord form;
    return CollectKennzahlen(*run.Context, run.Mandant, period, list) &&
           FillForm(*run.Context, run.Mandant, period, list, IsChosen(run, controlBerichtigt), form) &&
           AddReportRecord(run.Report, 0, &form);
}

// Moves the Buchungssperre to the end of the period, never back. The record is read afresh, under its lock:
// what others have changed of it since the report began stays as they left it.
void MoveLock(const ReportRun &run)
{
    ThreadContext &context = *run.Context;
    const PackedDate &end = run.Choice.Period.BisDatum;
    HeldTables held(context);
    if (!Hold(held, TableFista)) return;
    FistaRecord mandant;
    bool found = false;
    LockNext(context);
    const KeyBuffer key = KeyOfShortNumber(static_cast<uint16_t>(run.Mandant.Nummer));
    if (!GetEqual(context, &mandant, key, found, TableFista) || !found) return;
    bool isMoved = false;
    if (DateIsAfter(end, mandant.Buchungssperre)) {
        text::CopyText(mandant.Buchungssperre, end);
        isMoved = Update(context, &mandant, TableFista);
    }
    if (!isMoved) Unlock(context, TableFista);
}

// A return that did not come out of the printer is no return: it neither counts as finished nor locks.
bool LockPeriod(ReportRun &run)
{
    if (!IsForPrinter(run.Choice)) return true;
    if (run.Context->LastPrintResult == 0) return false;
    MoveLock(run);
    return true;
}

constexpr ReportOption options[] = {
    {OptionKind::Check, controlBerichtigt, "&Berichtigte Anmeldung", nullptr, false, 0, 0},
};

constexpr ReportKind umsatzsteuervoranmeldung = {
    .Dialog = {.Id = 122,
               .Title = "Umsatzsteuervoranmeldung",
               .HelpContext = 3012,
               .PeriodOptions = PeriodMonths | PeriodQuarters | PeriodYear | PeriodCalendar,
               .Options = {options, 1},
               .Words = {.Zeitraum = "&Zeitraum", .Ausgabe = "Aus&gabe"},
               .Check = AskForLock},
    .RowOf = RowOf,
    .Before = HideBerichtigt,
    .Send = SendForm,
    .After = LockPeriod,
};

} // namespace

} // namespace vark

VarkWindow VARK_CALL VARK_UmsatzSteuerVoranmeldung(int32_t mandant, VarkWindow parent, ReportParams *params)
{
    return vark::RunReport(vark::umsatzsteuervoranmeldung, mandant, parent, params);
}
