// Kostenstellenliste: the master data of a range of Kostenstellen. It is the list of the last bookable year,
// whatever year the report before it was of.
#include "src/frame/held_tables.h"
#include "src/reports/frame/report_run.h"
#include "src/walks/account_walk.h"
#include "text/fixed_text.h"

#include <cstddef>

namespace vark {

using text::CopyText;

namespace {

#pragma pack(push, 1)

struct KostenstellenHeader {
    char Mandant[41];
    RangeText Bereich;
};

struct KostenstellenLine {
    AccountNumber Nummer; // without leading blanks
    char Kuerzel[9];
    char Name[31];
    char Text[41];
    uint32_t HasKennzeichen;
};

#pragma pack(pop)

static_assert(offsetof(KostenstellenHeader, Bereich) == 41);
static_assert(sizeof(KostenstellenHeader) == 71);
static_assert(offsetof(KostenstellenLine, Kuerzel) == 8);
static_assert(offsetof(KostenstellenLine, Name) == 17);
static_assert(offsetof(KostenstellenLine, Text) == 48);
static_assert(offsetof(KostenstellenLine, HasKennzeichen) == 89);
static_assert(sizeof(KostenstellenLine) == 93);

bool SendHeader(const ReportRun &run)
{
    KostenstellenHeader header{};
    CopyText(header.Mandant, run.Mandant.Name);
    RangeTexts(run.Choice.Range, nullptr, header.Bereich, false);
    return AddReportRecord(run.Report, 0, &header);
}

bool SendLine(const ReportRun &run, const AccountScan &scan)
{
    KostenstellenLine line{};
    FillAccount(line.Nummer, line.Kuerzel, line.Name, *scan.Kind, scan.Record);
    CopyText(line.Text, scan.Record.Kore.Text);
    line.HasKennzeichen = scan.Record.Kore.Kennzeichen == 1 ? 1 : 0;
    return AddReportRecord(run.Report, 1, &line);
}

bool SendRecords(ReportRun &run)
{
    AccountNumber von;
    AccountNumber bis;
    const TableId table = RangeLimits(run.Choice.Range, von, bis);
    HeldTables held(*run.Context);
    if (!SendHeader(run) || !Hold(held, table)) return false;
    AccountScan scan;
    bool isGood = BeginAccounts(scan, *run.Context, KindOfTable(table), von, bis);
    while (isGood && scan.Found) {
        isGood = SendLine(run, scan) && NextAccount(scan);
    }
    return isGood;
}

constexpr ReportKind kostenstellenListe = {
    .Dialog = {.Id = 118,
               .Title = "Kostenstellenliste",
               .HelpContext = 10003,
               .Kontoarten = KontoartKostenstelle,
               .Words = {.Konten = "&Kostenstellen"}},
    .RowOf = [](const ReportRun &) { return ReportKostenstellen; },
    .Send = SendRecords,
};

} // namespace

} // namespace vark

VarkWindow VARK_CALL VARK_KostenstellenListe(int32_t mandant, VarkWindow parent, ReportParams *params)
{
    return vark::RunReport(vark::kostenstellenListe, mandant, parent, params);
}
