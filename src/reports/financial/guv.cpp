// Gewinn- und Verlustrechnung: the accounts of the tree of the GuV with their Soll and Haben in a period,
// beside another one where that is asked for.
#include "src/booking/balances.h"
#include "src/frame/mandant.h"
#include "src/reports/financial/group_lines.h"
#include "src/values/amounts.h"
#include "src/values/dates.h"
#include "src/values/sums.h"
#include "src/walks/account_walk.h"
#include "text/fixed_text.h"

#include <cstddef>

namespace vark {

using text::CopyText;

namespace {

#pragma pack(push, 1)

struct GuvHeader {
    char Mandant[41];
    char Titel[50];
    char Vergleichstitel[50];
    uint32_t Vergleich;
    uint32_t Kontenstruktur;
    uint32_t ErsteEbeneUnter;
    int32_t Ebene;
    uint32_t MitKonten;
};

struct GuvLine {
    AccountNumber Konto; // without leading blanks
    char Kuerzel[9];
    char Name[41];
    SollHaben Zeitraum;
    SollHaben Vergleich;
};

#pragma pack(pop)

static_assert(offsetof(GuvHeader, Titel) == 41);
static_assert(offsetof(GuvHeader, Vergleichstitel) == 91);
static_assert(offsetof(GuvHeader, Vergleich) == 141);
static_assert(offsetof(GuvHeader, Kontenstruktur) == 145);
static_assert(offsetof(GuvHeader, ErsteEbeneUnter) == 149);
static_assert(offsetof(GuvHeader, Ebene) == 153);
static_assert(offsetof(GuvHeader, MitKonten) == 157);
static_assert(sizeof(GuvHeader) == 161);
static_assert(offsetof(GuvLine, Kuerzel) == 8);
static_assert(offsetof(GuvLine, Name) == 17);
static_assert(offsetof(GuvLine, Zeitraum) == 58);
static_assert(offsetof(GuvLine, Vergleich) == 84);
static_assert(sizeof(GuvLine) == 110);

constexpr int lastLeafKind = 8;

struct Guv {
    const ReportRun *Run;
    ThreadContext *Context;
    StructureChoice Chosen;
    Comparison Compared;
};

bool SendHeader(const Guv &guv)
{
    const ReportRun &run = *guv.Run;
    GuvHeader header{};
    CopyText(header.Mandant, run.Mandant.Name);
    FillTitles(run, guv.Compared, header.Titel, header.Vergleichstitel);
    header.Vergleich = guv.Compared.Period != nullptr ? 1 : 0;
    header.Kontenstruktur = guv.Chosen.Kontenstruktur;
    header.ErsteEbeneUnter = guv.Chosen.ErsteEbeneUnter;
    header.Ebene = guv.Chosen.Ebene;
    header.MitKonten = guv.Chosen.MitKonten;
    return AddReportRecord(run.Report, 0, &header);
}

// The sums of an account in a period. To a day they begin with the year and what was carried forward; of any
// other period they are its months alone. False when the record store failed, and on overflow.
bool SumsOfPeriod(const Guv &guv, const SakoRecord &record, const PeriodSelection &period, TableId bube,
                  SollHaben &sums)
{
    const bool isToDay = period.Code == periodDayExact;
    const uint32_t options = isToDay ? SumEarlierMonths | SumVortrag : 0;
    if (!AccountSumsToDate(*guv.Context, record.Konto, record.Umsaetze, period.BisDatum, options, bube, sums))
        return false;
    return isToDay || SumMonths(sums, record.Umsaetze, period.VonPeriode, period.BisPeriode - 1);
}

bool CompareSums(const Guv &guv, const AccountNumber &konto, SollHaben &sums)
{
    const Comparison &compared = guv.Compared;
    CopyAmounts(sums, {});
    if (compared.Period == nullptr) return true;
    AnyAccount then;
    bool found = false;
    if (!ReadAccount(*guv.Context, compared.Tables.Sako, konto, then, found)) return false;
    return !found || SumsOfPeriod(guv, then.Sako, *compared.Period, compared.Tables.Bube, sums);
}

// A leaf, or an account outside the tree. One that is no longer there is left out.
bool SendLeaf(const Guv &guv, const TreeScan &scan)
{
    AnyAccount record;
    bool found = false;
    if (!ReadAccount(*guv.Context, TableSako, scan.Konto, record, found)) return false;
    if (!found) return true;
    GuvLine line{};
    if (!SumsOfPeriod(guv, record.Sako, guv.Run->Choice.Period, TableBube, line.Zeitraum) ||
        !CompareSums(guv, scan.Konto, line.Vergleich)) {
        return false;
    }
    const bool isMoved = HasAmount(line.Zeitraum) || HasAmount(line.Vergleich);
    if (guv.Chosen.NurBebuchte != 0 && !isMoved) return true;
    FillAccount(line.Konto, line.Kuerzel, line.Name, KindOfTable(TableSako), record);
    return AddReportRecord(guv.Run->Report, KindOfLeaf(scan.Depth, lastLeafKind), &line);
}

bool SendTree(const Guv &guv)
{
    TreeScan scan(*guv.Context);
    bool isGood = BeginTree(scan, TableGuvauf);
    while (isGood && scan.Found) {
        isGood = scan.Place == TreePlace::Group ? SendGroup(*guv.Run, scan) : SendLeaf(guv, scan);
        isGood = isGood && NextNode(scan);
    }
    return isGood;
}

bool SendRecords(ReportRun &run)
{
    ThreadContext &context = *run.Context;
    if (!SelectYear(context, run.Choice.Period.JahrText)) return false;
    Guv guv{};
    guv.Run = &run;
    guv.Context = &context;
    guv.Chosen = StructureChoiceOf(run);
    HeldTables held(context);
    return Hold(held, TableSako) && Hold(held, TableGuvauf) && HoldComparison(held, run, guv.Compared) &&
           SendHeader(guv) && SendTree(guv);
}

constexpr ReportKind guvKind = {
    .Dialog = {.Id = 124,
               .Title = "GuV",
               .HelpContext = 3000,
               .Pages = PeriodPages::Guv,
               .Options = structureOptions},
    .RowOf = [](const ReportRun &) { return ReportGuv; },
    .Before = StartStructureOptions,
    .Send = SendRecords,
};

} // namespace

} // namespace vark

VarkWindow VARK_CALL VARK_GUV(int32_t mandant, VarkWindow parent, ReportParams *params)
{
    return vark::RunReport(vark::guvKind, mandant, parent, params);
}
