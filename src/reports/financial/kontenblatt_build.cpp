// The building of a report of sheets: header, dialogs, and the accounts of the range.
#include "src/reports/financial/kontenblatt_build.h"

#include "src/frame/mandant.h"
#include "src/frame/report_engine.h"
#include "src/reports/financial/kontenblatt_sheet.h"
#include "src/values/dates.h"
#include "text/fixed_text.h"
#include "text/windows1252.h"

#include <cstddef>

namespace vark {

using namespace text;

namespace {

#pragma pack(push, 1)

struct SheetsHeader {
    char Mandant[41];
};

struct KostenHeader {
    char Mandant[30];
    int32_t MitBuchungen;
};

#pragma pack(pop)

static_assert(sizeof(SheetsHeader) == 41);
static_assert(offsetof(KostenHeader, MitBuchungen) == 30);
static_assert(sizeof(KostenHeader) == 34);

constexpr int controlAufloesen = 1022; // check boxes
constexpr int controlOhneBuchungen = 1023;
constexpr int controlNurBebuchte = 1024;

constexpr uint32_t sheetPeriods = PeriodDayExact | PeriodMonths | PeriodQuarters | PeriodYear;

// ---- Sending ----

bool SendSheetsHeader(const SheetRun &sheet)
{
    SheetsHeader header{};
    CopyText(header.Mandant, sheet.Run->Mandant.Name);
    return AddReportRecord(sheet.Run->Report, 0, &header);
}

bool SendKostenHeader(const SheetRun &sheet)
{
    KostenHeader header{};
    CopyText(header.Mandant, sheet.Run->Mandant.Name);
    header.MitBuchungen = IsChosen(*sheet.Run, controlOhneBuchungen) ? 0 : 1;
    return AddReportRecord(sheet.Run->Report, 0, &header);
}

SheetRun SheetsOf(ReportRun &run)
{
    const PeriodSelection &period = run.Choice.Period;
    SheetRun sheet{};
    sheet.Run = &run;
    BuildPeriodTitle(*run.Context, period, sheet.Zeitraum, false, false);
    sheet.Days = DaysOf(period.VonDatum, period.BisDatum);
    return sheet;
}

// The accounts of the range, each with what sends its sheet.
template <typename SendOne> bool SendRange(const SheetRun &sheet, SendOne sendOne)
{
    AccountNumber von;
    AccountNumber bis;
    const TableId table = RangeLimits(sheet.Run->Choice.Range, von, bis);
    AccountScan scan;
    bool isGood = BeginAccounts(scan, *sheet.Run->Context, KindOfTable(table), von, bis);
    while (isGood && scan.Found) {
        isGood = sendOne(scan) && NextAccount(scan);
    }
    return isGood;
}

bool SendSheets(ReportRun &run)
{
    SheetRun sheet = SheetsOf(run);
    sheet.Aufloesen = IsChosen(run, controlAufloesen);
    sheet.NurBebuchte = IsChosen(run, controlNurBebuchte);
    return HasPostings(*run.Context, sheet.Days, sheet.HasPostings) && SendSheetsHeader(sheet) &&
           SendRange(sheet, [&](const AccountScan &scan) { return SendAccountSheet(sheet, scan); });
}

bool SendKostenSheets(ReportRun &run)
{
    const SheetRun sheet = SheetsOf(run);
    return SendKostenHeader(sheet) && SendRange(sheet, [&](const AccountScan &scan) {
               return SendKostenSheet(sheet, scan.Record.Kore);
           });
}

// ---- Dialogs ----

constexpr ReportOption sheetOptions[] = {
    {.Kind = OptionKind::Check, .Id = controlAufloesen, .Label = "&Sammelbuchungen auflösen"_w},
    {.Kind = OptionKind::Check, .Id = controlOhneBuchungen, .Label = "ohne Bu&chungen"},
    {.Kind = OptionKind::Check, .Id = controlNurBebuchte, .Label = "n&ur bebuchte Konten"},
};

constexpr ReportOption kostenOptions[] = {
    {.Kind = OptionKind::Check, .Id = controlOhneBuchungen, .Label = "ohne Bu&chungen"},
};

// The first build of sheets goes to the year that was chosen; what is built again stays where that was.
bool SendFirst(ReportRun &run)
{
    return SelectYear(*run.Context, run.Choice.Period.JahrText) && SendSheets(run);
}

bool SendFirstKosten(ReportRun &run)
{
    return SelectYear(*run.Context, run.Choice.Period.JahrText) && SendKostenSheets(run);
}

ReportRow SheetRow(const ReportRun &run)
{
    return IsChosen(run, controlOhneBuchungen) ? ReportKontenblattOhne : ReportKontenblattMit;
}

constexpr ReportKind sheets = {
    .Dialog = {.Id = 114,
               .Title = "Kontenblatt",
               .HelpContext = 3009,
               .PeriodOptions = sheetPeriods,
               .Kontoarten = KontoartSachkonto | KontoartKreditor | KontoartDebitor,
               .HasSingle = true,
               .RangeFirst = true,
               .Options = {sheetOptions, 3},
               .Words = {.Von = "&vom:", .Bis = "&bis zum:", .Konten = "&Konten", .Einzeln = "&einzeln"}},
    .RowOf = SheetRow,
    .Send = SendFirst,
};

constexpr ReportKind kostenSheets = {
    .Dialog =
        {.Id = 132,
         .Title = "Kostenstellenauswertung",
         .HelpContext = 3009,
         .PeriodOptions = sheetPeriods,
         .Kontoarten = KontoartKostenstelle,
         .HasSingle = true,
         .UnknownAccount = Message::KostenstellennummerExistiertNicht,
         .RangeFirst = true,
         .Options = {kostenOptions, 1},
         .Words = {.Von = "&vom:", .Bis = "&bis zum:", .Konten = "&Kostenstellen", .Einzeln = "&einzeln"}},
    .RowOf = [](const ReportRun &) { return ReportKostenstellenauswertung; },
    .Send = SendFirstKosten,
};

// Where the account buttons go on from.
void KeepRange(SheetBuild &build)
{
    AccountNumber bis;
    build.Table = RangeLimits(build.Run.Choice.Range, build.CurrentKey, bis);
}

} // namespace

const ReportKind &SheetKind(bool isKosten) { return isKosten ? kostenSheets : sheets; }

bool HoldSheetTables(HeldTables &held, bool isKosten)
{
    if (isKosten) return Hold(held, TableKore) && Hold(held, TableKobu) && Hold(held, TableBube);
    return Hold(held, TableKred) && Hold(held, TableDebi) && Hold(held, TableSako) && Hold(held, TableBube) &&
           Hold(held, TableSteke);
}

bool SelectSheetBooks(const SheetBuild &build)
{
    FistaRecord mandant;
    ThreadContext &context = *build.Run.Context;
    return SelectMandant(context, build.MandantNummer, mandant) >= 1 && SelectYear(context, build.DatenJahr);
}

VarkWindow AskAndBuildSheets(SheetBuild &build, VarkWindow parent, bool &accepted, bool &done)
{
    ReportRun &run = build.Run;
    accepted = RunReportDialog(run, parent);
    if (!accepted) return nullptr;
    KeepRange(build);
    CopyText(build.DatenJahr, run.Choice.Period.JahrText);
    const ReportKind &kind = SheetKind(build.IsKosten);
    const ReportRow row = kind.RowOf(run);
    if (!BuildReport(kind, row, run)) return nullptr;
    VarkWindow view = nullptr;
    const auto ausgabe = static_cast<Ausgabe>(run.Choice.Ausgabe);
    done = ShowOrPrintReport(*run.Context, row, run.Report, ausgabe, parent, view);
    return view;
}

VarkWindow RebuildSheets(SheetBuild &build, VarkWindow view)
{
    ReportRun &run = build.Run;
    const ReportKind &kind = SheetKind(build.IsKosten);
    const ReportRow row = kind.RowOf(run);
    KeepRange(build);
    const uint16_t first = run.Report;
    run.Report = 0;
    const bool isSelected = SelectSheetBooks(build);
    HeldTables held(*run.Context);
    if (isSelected && HoldSheetTables(held, build.IsKosten)) run.Report = CopyReportTemplate(row, first);
    if (run.Report == 0 || !(build.IsKosten ? SendKostenSheets(run) : SendSheets(run))) {
        AbandonReport(row, run.Report);
        return nullptr;
    }
    VarkWindow newView = nullptr;
    CopyReportView(row, view, run.Report, 0, newView);
    if (newView == nullptr) reportEngine.CloseReport(run.Report);
    return newView;
}

} // namespace vark
