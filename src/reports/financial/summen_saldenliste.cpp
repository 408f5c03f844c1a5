// Summen- und Saldenliste: for a day and a range of accounts of one kind, what was carried forward, the
// month's turnover up to the day, the cumulated turnover, and the sums.
#include "src/booking/balances.h"
#include "src/frame/mandant.h"
#include "src/reports/frame/report_run.h"
#include "src/values/dates.h"
#include "src/values/sums.h"
#include "src/walks/account_walk.h"
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

bool SendLine(const ReportRun &run, const AccountScan &account)
{
    const AccountSums &sums = SumsOf(*account.Kind, account.Record);
    const PackedDate &date = run.Choice.Period.BisDatum;
    SaldenLine line{};
    FillAccount(line.Konto, line.Kuerzel, line.Name, *account.Kind, account.Record);
    CopyAmounts(line.Vortrag, sums.Vortrag);
    if (!AccountSumsToDate(*run.Context, account.Record.Head.Konto, sums, date, 0, TableBube, line.Monat))
        return false;
    CopyAmounts(line.Kumuliert, line.Monat);
    if (!SumMonths(line.Kumuliert, sums, 1, FiscalMonthOf(date) - 1)) return false;
    CopyAmounts(line.Summe, line.Vortrag);
    if (!AddPair(line.Summe, line.Kumuliert)) return false;
    line.HasMovement = HasAmount(line.Vortrag) || HasAmount(line.Kumuliert) ? 1 : 0;
    return AddReportRecord(run.Report, 1, &line);
}

bool SendRecords(ReportRun &run)
{
    ThreadContext &context = *run.Context;
    if (!SelectYear(context, run.Choice.Period.JahrText)) return false;
    AccountNumber von;
    AccountNumber bis;
    const AccountKind &kind = KindOfTable(RangeLimits(run.Choice.Range, von, bis));
    AccountScan account;
    bool isGood = SendHeader(run) && BeginAccounts(account, context, kind, von, bis);
    while (isGood && account.Found) {
        isGood = SendLine(run, account) && NextAccount(account);
    }
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
