// Kostensaldenliste: for a period and a range of Kostenstellen, what fell on each, from its month fields.
#include "src/frame/held_tables.h"
#include "src/frame/mandant.h"
#include "src/reports/frame/report_run.h"
#include "src/values/amounts.h"
#include "src/values/sums.h"
#include "src/walks/account_walk.h"
#include "text/fixed_text.h"

#include <cstddef>

namespace vark {

using text::CopyText;

namespace {

#pragma pack(push, 1)

struct KostenSaldenHeader {
    char Mandant[41];
    char Zeitraum[50];
    RangeText Bereich;
};

struct KostenSaldenLine {
    AccountNumber Nummer; // without leading blanks
    char Kuerzel[9];
    char Name[31];
    char Text[41];
    AmountText Summe;
};

#pragma pack(pop)

static_assert(offsetof(KostenSaldenHeader, Zeitraum) == 41);
static_assert(offsetof(KostenSaldenHeader, Bereich) == 91);
static_assert(sizeof(KostenSaldenHeader) == 121);
static_assert(offsetof(KostenSaldenLine, Kuerzel) == 8);
static_assert(offsetof(KostenSaldenLine, Name) == 17);
static_assert(offsetof(KostenSaldenLine, Text) == 48);
static_assert(offsetof(KostenSaldenLine, Summe) == 89);
static_assert(sizeof(KostenSaldenLine) == 102);

bool SendHeader(const ReportRun &run)
{
    KostenSaldenHeader header{};
    CopyText(header.Mandant, run.Mandant.Name);
    PeriodTitle zeitraum;
    BuildPeriodTitle(*run.Context, run.Choice.Period, zeitraum, false, false);
    CopyText(header.Zeitraum, zeitraum);
    RangeTexts(run.Choice.Range, nullptr, header.Bereich, false);
    return AddReportRecord(run.Report, 0, &header);
}

bool SendLine(const ReportRun &run, const AccountScan &scan)
{
    const PeriodSelection &period = run.Choice.Period;
    const KoreRecord &record = scan.Record.Kore;
    KostenSaldenLine line{};
    FillAccount(line.Nummer, line.Kuerzel, line.Name, *scan.Kind, scan.Record);
    CopyText(line.Text, record.Text);
    CopyText(line.Summe, zeroAmount);
    if (!SumMonths(line.Summe, record.Monat, period.VonPeriode, period.BisPeriode)) return false;
    return AddReportRecord(run.Report, 1, &line);
}

bool SendRecords(ReportRun &run)
{
    ThreadContext &context = *run.Context;
    if (!SelectYear(context, run.Choice.Period.JahrText)) return false;
    AccountNumber von;
    AccountNumber bis;
    const TableId table = RangeLimits(run.Choice.Range, von, bis);
    HeldTables held(context);
    if (!SendHeader(run) || !Hold(held, table)) return false;
    AccountScan scan;
    bool isGood = BeginAccounts(scan, context, KindOfTable(table), von, bis);
    while (isGood && scan.Found) {
        isGood = SendLine(run, scan) && NextAccount(scan);
    }
    return isGood;
}

constexpr ReportKind kostenSaldenListe = {
    .Dialog = {.Id = 117,
               .Title = "Kostensalden",
               .HelpContext = 10004,
               .PeriodOptions = PeriodMonths | PeriodQuarters | PeriodYear,
               .Kontoarten = KontoartKostenstelle,
               .Words = {.Konten = "&Kostenstellen"}},
    .RowOf = [](const ReportRun &) { return ReportKostensalden; },
    .Send = SendRecords,
};

} // namespace

} // namespace vark

VarkWindow VARK_CALL VARK_KostenSaldenListe(int32_t mandant, VarkWindow parent, ReportParams *params)
{
    return vark::RunReport(vark::kostenSaldenListe, mandant, parent, params);
}
