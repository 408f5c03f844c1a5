// Summen- und Saldenliste: for a day and a range of accounts of one kind, what was carried forward, the
// month's turnover up to the day, the cumulated turnover, and the sums.
#include "src/booking/balances.h"
#include "src/frame/mandant.h"
#include "src/frame/record_store.h"
#include "src/reports/frame/report_run.h"
#include "src/values/account_numbers.h"
#include "src/values/amounts.h"
#include "src/values/dates.h"
#include "text/fixed_text.h"

#include <cstddef>

namespace vark {

using text::CopyText;

namespace {

#pragma pack(push, 1)

struct SaldenHeader {
    char Mandant[41];
    PackedDate BisDatum; // calendar month and year
    char Monat[20];      // name of that month
    RangeWord Kontoart;
    RangeText Bereich;
};

struct SaldenLine {
    AccountNumber Konto; // without leading blanks
    char Kuerzel[9];
    char Name[41];
    SollHaben Vortrag;
    SollHaben Monat;     // the month of the day, up to the day
    SollHaben Kumuliert; // with the months before it
    SollHaben Summe;     // with what was carried forward
    uint32_t HasMovement;
};

#pragma pack(pop)

static_assert(offsetof(SaldenHeader, BisDatum) == 41);
static_assert(offsetof(SaldenHeader, Monat) == 48);
static_assert(offsetof(SaldenHeader, Kontoart) == 68);
static_assert(offsetof(SaldenHeader, Bereich) == 98);
static_assert(offsetof(SaldenLine, Kuerzel) == 8);
static_assert(offsetof(SaldenLine, Name) == 17);
static_assert(offsetof(SaldenLine, Vortrag) == 58);
static_assert(offsetof(SaldenLine, Monat) == 84);
static_assert(offsetof(SaldenLine, Kumuliert) == 110);
static_assert(offsetof(SaldenLine, Summe) == 136);
static_assert(offsetof(SaldenLine, HasMovement) == 162);
static_assert(sizeof(SaldenLine) == 166);

// What a line takes from an account's record, whichever of the two layouts that has.
union AccountRecord {
    SakoRecord Sako;
    PersonalRecord Personal;
};

bool SendHeader(const ReportRun &run)
{
    const ThreadContext &context = *run.Context;
    SaldenHeader header{};
    CopyText(header.Mandant, run.Mandant.Name);
    PackedToCalendar(run.Choice.Period.BisDatum, header.BisDatum, context.FirstFiscalMonth);
    CopyText(header.Monat, MonthNameOfDate(context, run.Choice.Period.BisDatum));
    RangeTexts(run.Choice.Range, &header.Kontoart, header.Bereich, false);
    return AddReportRecord(run.Report, 0, &header);
}

// An empty field of a record goes out as the zero amount.
void CopyAmounts(SollHaben &to, const SollHaben &from)
{
    CopyText(to.Soll, from.Soll[0] != 0 ? from.Soll : zeroAmount);
    CopyText(to.Haben, from.Haben[0] != 0 ? from.Haben : zeroAmount);
}

bool Accumulate(SollHaben &total, const SollHaben &more)
{
    return AccumulateAmount(total.Soll, more.Soll) && AccumulateAmount(total.Haben, more.Haben);
}

bool HasAmount(const SollHaben &amounts)
{
    return !IsZeroAmount(amounts.Soll) || !IsZeroAmount(amounts.Haben);
}

bool SendLine(const ReportRun &run, TableId table, const AccountRecord &record)
{
    const bool isSako = table == TableSako;
    const AccountSums &sums = isSako ? record.Sako.Umsaetze : record.Personal.Umsaetze;
    const PackedDate &date = run.Choice.Period.BisDatum;
    SaldenLine line{};
    CopyText(line.Konto, record.Sako.Konto);
    TrimLeft(line.Konto, sizeof line.Konto);
    CopyText(line.Kuerzel, record.Sako.Kuerzel);
    if (isSako) {
        CopyText(line.Name, record.Sako.Name);
    } else {
        CopyText(line.Name, record.Personal.Name1);
    }
    CopyAmounts(line.Vortrag, sums.Vortrag);
    if (!AccountSumsToDate(*run.Context, record.Sako.Konto, sums, date, 0, TableBube, line.Monat))
        return false;
    CopyAmounts(line.Kumuliert, line.Monat);
    for (int month = 1; month < FiscalMonthOf(date); ++month) {
        if (!Accumulate(line.Kumuliert, sums.Monat[month - 1])) return false;
    }
    CopyAmounts(line.Summe, line.Vortrag);
    if (!Accumulate(line.Summe, line.Kumuliert)) return false;
    line.HasMovement = HasAmount(line.Vortrag) || HasAmount(line.Kumuliert) ? 1 : 0;
    return AddReportRecord(run.Report, 1, &line);
}

bool SendRecords(ReportRun &run)
{
    ThreadContext &context = *run.Context;
    if (!SelectYear(context, run.Choice.Period.JahrText)) return false;
    AccountNumber von;
    AccountNumber bis;
    const TableId table = RangeLimits(run.Choice.Range, von, bis);
    if (!SendHeader(run) || !OpenTable(context, table)) return false;
    AccountRecord record{};
    bool found = false;
    bool isGood = GetGreaterEqualF(context, &record, KeyOfText(von, sizeof von), found, table);
    while (isGood && found && !IsBehindLimit(record.Sako.Konto, bis)) {
        isGood = SendLine(run, table, record) && GetNextF(context, &record, found, table);
    }
    CloseTable(context, table);
    return isGood;
}

constexpr ReportKind summenSaldenListe = {
    .Dialog = {.Id = 111,
               .Title = "Summen- und Saldenliste",
               .HelpContext = 3008,
               .PeriodOptions = PeriodDayExact,
               .PerOnly = true,
               .Kontoarten = KontoartSachkonto | KontoartKreditor | KontoartDebitor},
    .RowOf = [](const ReportRun &) { return ReportSummenSalden; },
    .Send = SendRecords,
};

} // namespace

} // namespace vark

VarkWindow VARK_CALL VARK_SummenSaldenListe(int32_t mandant, VarkWindow parent, ReportParams *params)
{
    return vark::RunReport(vark::summenSaldenListe, mandant, parent, params);
}
