// Hauptabschlussübersicht: the Sachkonten of one of the three trees in its order, each with what was carried
// forward, the turnover of the year, its closing entries (slot 0) and the sums.
#include "src/frame/held_tables.h"
#include "src/frame/mandant.h"
#include "src/reports/frame/report_run.h"
#include "src/values/dates.h"
#include "src/values/sums.h"
#include "src/walks/account_walk.h"
#include "src/walks/tree_walk.h"
#include "text/fixed_text.h"
#include "text/windows1252.h"

#include <cstddef>

namespace vark {

using namespace text;

namespace {

constexpr int bilanzAktiv = 1010; // radio buttons
constexpr int bilanzPassiv = 1011;
constexpr int guv = 1012;

#pragma pack(push, 1)

struct AbschlussHeader {
    char Mandant[41];
    uint32_t Jahr;       // in full
    PackedDate VonDatum; // calendar month and year
    PackedDate BisDatum;
    char Auswahl[50];
};

struct AbschlussLine {
    AccountNumber Konto; // without leading blanks
    char Kuerzel[9];
    char Name[26];
    SollHaben Vortrag;
    SollHaben Jahr; // months 1 to 12
    SollHaben Slot0;
    SollHaben Summe;
    uint32_t HasMovement;
};

#pragma pack(pop)

static_assert(offsetof(AbschlussHeader, Jahr) == 41);
static_assert(offsetof(AbschlussHeader, VonDatum) == 45);
static_assert(offsetof(AbschlussHeader, BisDatum) == 52);
static_assert(offsetof(AbschlussHeader, Auswahl) == 59);
static_assert(sizeof(AbschlussHeader) == 109);
static_assert(offsetof(AbschlussLine, Kuerzel) == 8);
static_assert(offsetof(AbschlussLine, Name) == 17);
static_assert(offsetof(AbschlussLine, Vortrag) == 43);
static_assert(offsetof(AbschlussLine, Jahr) == 69);
static_assert(offsetof(AbschlussLine, Slot0) == 95);
static_assert(offsetof(AbschlussLine, Summe) == 121);
static_assert(offsetof(AbschlussLine, HasMovement) == 147);
static_assert(sizeof(AbschlussLine) == 151);

struct Auswahl {
    TableId Tree;
    const char *Text;
};

Auswahl AuswahlOf(const ReportRun &run)
{
    if (IsChosen(run, guv)) return {TableGuvauf, "Gewinn- und Verlustrechnung"};
    if (IsChosen(run, bilanzPassiv)) return {TableBilpasau, "Bilanz Passiva"};
    return {TableBilaktau, "Bilanz Aktiva"};
}

bool SendHeader(const ReportRun &run, const char *auswahl)
{
    const PeriodSelection &period = run.Choice.Period;
    const int firstMonth = run.Context->FirstFiscalMonth;
    AbschlussHeader header{};
    CopyText(header.Mandant, run.Mandant.Name);
    header.Jahr = static_cast<uint32_t>(period.Jahr + firstYear);
    PackedToCalendar(period.VonDatum, header.VonDatum, firstMonth);
    PackedToCalendar(period.BisDatum, header.BisDatum, firstMonth);
    CopyText(header.Auswahl, auswahl);
    return AddReportRecord(run.Report, 0, &header);
}

bool SendAccount(const ReportRun &run, const AnyAccount &record)
{
    const AccountKind &kind = KindOfTable(TableSako);
    const AccountSums &sums = SumsOf(kind, record);
    AbschlussLine line{};
    FillAccount(line.Konto, line.Kuerzel, line.Name, kind, record);
    CopyAmounts(line.Vortrag, sums.Vortrag);
    CopyAmounts(line.Jahr, {});
    if (!SumMonths(line.Jahr, sums, 1, 12)) return false;
    CopyAmounts(line.Slot0, sums.Slot0);
    CopyAmounts(line.Summe, line.Vortrag);
    if (!AddPair(line.Summe, line.Jahr) || !AddPair(line.Summe, line.Slot0)) return false;
    line.HasMovement = HasAmount(line.Vortrag) || HasAmount(line.Jahr) || HasAmount(line.Slot0) ? 1 : 0;
    return AddReportRecord(run.Report, 1, &line);
}

// Groups have no line, Gegenposten leaves neither, and an account that is no longer there is passed over.
bool SendNode(const ReportRun &run, const TreeScan &tree)
{
    if (tree.Place == TreePlace::Group || tree.IsGegenposten) return true;
    AnyAccount record{};
    bool found = false;
    if (!ReadAccount(*run.Context, TableSako, tree.Konto, record, found)) return false;
    return !found || SendAccount(run, record);
}

bool SendRecords(ReportRun &run)
{
    ThreadContext &context = *run.Context;
    const Auswahl auswahl = AuswahlOf(run);
    if (!SelectYear(context, run.Choice.Period.JahrText)) return false;
    HeldTables held(context);
    if (!Hold(held, auswahl.Tree) || !Hold(held, TableSako) || !SendHeader(run, auswahl.Text)) return false;
    TreeScan tree(context);
    bool isGood = BeginTree(tree, auswahl.Tree);
    while (isGood && tree.Found) {
        isGood = SendNode(run, tree) && NextNode(tree);
    }
    return isGood;
}

// The year is asked for alone, so a period of the caller's block begins as one that was not chosen; free
// dates keep theirs, and with it the year that they name.
bool ForgetPeriod(ReportRun &run)
{
    PeriodSelection &period = run.Choice.Period;
    if (period.Code != periodDayExact) period.Code = periodNotChosen;
    return true;
}

constexpr ReportOption options[] = {
    {.Kind = OptionKind::Radio,
     .Id = bilanzAktiv,
     .Label = "Bilanz &aktiv",
     .Group = "Auswahl",
     .Checked = true},
    {.Kind = OptionKind::Radio, .Id = bilanzPassiv, .Label = "Bilanz &passiv"},
    {.Kind = OptionKind::Radio, .Id = guv, .Label = "&GuV"},
};

constexpr ReportKind hauptabschluss = {
    .Dialog = {.Id = 112,
               .Title = "Hauptabschlussübersicht"_w,
               .HelpContext = 3042,
               .PeriodOptions = PeriodYear,
               .Options = {options, 3},
               .Words = {.Jahr = "Geschäfts-&Jahr:"_w}},
    .RowOf = [](const ReportRun &) { return ReportHauptabschluss; },
    .Before = ForgetPeriod,
    .Send = SendRecords,
};

} // namespace

} // namespace vark

VarkWindow VARK_CALL VARK_HauptAbschluss(int32_t mandant, VarkWindow parent, ReportParams *params)
{
    return vark::RunReport(vark::hauptabschluss, mandant, parent, params);
}
