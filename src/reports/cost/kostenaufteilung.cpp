// Kostenaufteilung: for each Kostenstelle of a range, on which Sachkonten its costs of a period arose. A
// cost line with two objects counts under each of them, so the sums of all Kostenstellen are no total of the
// costs.
#include "src/frame/held_tables.h"
#include "src/frame/mandant.h"
#include "src/reports/frame/report_run.h"
#include "src/values/account_numbers.h"
#include "src/values/amounts.h"
#include "src/values/sums.h"
#include "src/walks/account_walk.h"
#include "src/walks/cost_lines.h"
#include "text/fixed_text.h"

#include <cstddef>
#include <cstdlib>

namespace vark {

using text::CopyText;

namespace {

constexpr int controlInklStapel = 1034;

#pragma pack(push, 1)

struct AufteilungHeader {
    char Mandant[41];
    char Zeitraum[50];
    RangeText Bereich;
};

struct KostenStellenHead {
    AccountNumber Nummer; // without leading blanks
    char Kuerzel[9];
    char Name[31];
};

struct AufteilungLine {
    AccountNumber Konto; // without leading blanks
    char Name[41];
    SollHaben Gesetzt; // lines with the mark of the Kostenschablone
    SollHaben Uebrige; // and those without
};

#pragma pack(pop)

static_assert(offsetof(AufteilungHeader, Zeitraum) == 41);
static_assert(offsetof(AufteilungHeader, Bereich) == 91);
static_assert(sizeof(AufteilungHeader) == 121);
static_assert(offsetof(KostenStellenHead, Kuerzel) == 8);
static_assert(offsetof(KostenStellenHead, Name) == 17);
static_assert(sizeof(KostenStellenHead) == 48);
static_assert(offsetof(AufteilungLine, Name) == 8);
static_assert(offsetof(AufteilungLine, Gesetzt) == 49);
static_assert(offsetof(AufteilungLine, Uebrige) == 75);
static_assert(sizeof(AufteilungLine) == 101);

// An account that costs arose on. It keeps its place for the whole report; its sums are those of one
// Kostenstelle.
struct AufteilungNode {
    AccountNumber Konto; // right-justified
    AufteilungLine Line;
    int32_t LastKostenstelle; // for which the sums were started last
    AufteilungNode *Next;
};

struct Aufteilung {
    const ReportRun *Run;
    ThreadContext *Context;
    bool WithStapel;
    CostTables Tables;
    int32_t Kostenstelle = 0;       // counts them from 1
    AufteilungNode *Head = nullptr; // the newest account

    Aufteilung() = default;
    Aufteilung(const Aufteilung &) = delete;
    Aufteilung &operator=(const Aufteilung &) = delete;
    ~Aufteilung()
    {
        while (Head != nullptr) {
            AufteilungNode *const next = Head->Next;
            std::free(Head);
            Head = next;
        }
    }
};

// The node of an account, new at the head when it has none. One that sako does not hold has no name. Null
// when the record store failed or memory has run out.
AufteilungNode *NodeOf(Aufteilung &aufteilung, const AccountNumber &konto)
{
    for (AufteilungNode *node = aufteilung.Head; node != nullptr; node = node->Next) {
        if (text::SameText(node->Konto, konto)) return node;
    }
    AnyAccount account;
    bool found = false;
    if (!ReadAccount(*aufteilung.Context, TableSako, konto, account, found)) return nullptr;
    auto *const node = static_cast<AufteilungNode *>(std::calloc(1, sizeof(AufteilungNode)));
    if (node == nullptr) return nullptr;
    CopyText(node->Konto, konto);
    StripNumber(node->Line.Konto, konto);
    if (found) CopyText(node->Line.Name, account.Sako.Name);
    node->Next = aufteilung.Head;
    aufteilung.Head = node;
    return node;
}

void ClearSums(SollHaben &sums)
{
    CopyText(sums.Soll, zeroAmount);
    CopyText(sums.Haben, zeroAmount);
}

bool TakeLine(Aufteilung &aufteilung, const KobuRecord &cost)
{
    AccountNumber konto;
    bool found = false;
    if (!FindCostAccount(*aufteilung.Context, cost, konto, found) || !found) return false;
    AufteilungNode *const node = NodeOf(aufteilung, konto);
    if (node == nullptr) return false;
    if (node->LastKostenstelle < aufteilung.Kostenstelle) {
        node->LastKostenstelle = aufteilung.Kostenstelle;
        ClearSums(node->Line.Gesetzt);
        ClearSums(node->Line.Uebrige);
    }
    SollHaben &sums = (cost.Flag & KobuArt) != 0 ? node->Line.Gesetzt : node->Line.Uebrige;
    return AccumulateAmount(IsOnHaben(cost) ? sums.Haben : sums.Soll, cost.Betrag);
}

// The lines of one table that have the Kostenstelle as this cost object.
bool TakeLinesOf(Aufteilung &aufteilung, const AccountNumber &nummer, TableId kobu, CostObject object)
{
    const PeriodSelection &period = aufteilung.Run->Choice.Period;
    CostScan scan;
    bool isGood =
        BeginCostLinesOf(scan, *aufteilung.Context, kobu, nummer, object, period.VonDatum, period.BisDatum);
    while (isGood && scan.Found) {
        const bool counts = aufteilung.WithStapel || IsFinal(scan.Line);
        isGood = (!counts || TakeLine(aufteilung, scan.Line)) && NextCostLine(scan);
    }
    return isGood;
}

bool SendKostenstelle(Aufteilung &aufteilung, const AccountScan &scan)
{
    const KoreRecord &record = scan.Record.Kore;
    const uint16_t report = aufteilung.Run->Report;
    KostenStellenHead head{};
    FillAccount(head.Nummer, head.Kuerzel, head.Name, *scan.Kind, scan.Record);
    if (!AddReportRecord(report, 1, &head)) return false;
    ++aufteilung.Kostenstelle;
    for (int i = 0; i < aufteilung.Tables.Count; ++i) {
        const TableId kobu = aufteilung.Tables.Tables[i];
        if (!TakeLinesOf(aufteilung, record.Nummer, kobu, CostObject::First) ||
            !TakeLinesOf(aufteilung, record.Nummer, kobu, CostObject::Second))
            return false;
    }
    for (const AufteilungNode *node = aufteilung.Head; node != nullptr; node = node->Next) {
        const bool isMet = node->LastKostenstelle == aufteilung.Kostenstelle;
        if (isMet && !AddReportRecord(report, 2, &node->Line)) return false;
    }
    return true;
}

bool SendHeader(const ReportRun &run)
{
    AufteilungHeader header{};
    CopyText(header.Mandant, run.Mandant.Name);
    PeriodTitle zeitraum;
    BuildPeriodTitle(*run.Context, run.Choice.Period, zeitraum, false, false);
    CopyText(header.Zeitraum, zeitraum);
    RangeTexts(run.Choice.Range, nullptr, header.Bereich, false);
    return AddReportRecord(run.Report, 0, &header);
}

bool SendKostenstellen(Aufteilung &aufteilung)
{
    AccountNumber von;
    AccountNumber bis;
    const TableId table = RangeLimits(aufteilung.Run->Choice.Range, von, bis);
    AccountScan scan;
    bool isGood = BeginAccounts(scan, *aufteilung.Context, KindOfTable(table), von, bis);
    while (isGood && scan.Found) {
        isGood = SendKostenstelle(aufteilung, scan) && NextAccount(scan);
    }
    return isGood;
}

bool SendRecords(ReportRun &run)
{
    ThreadContext &context = *run.Context;
    if (!SelectYear(context, run.Choice.Period.JahrText) || !SendHeader(run)) return false;
    Aufteilung aufteilung;
    aufteilung.Run = &run;
    aufteilung.Context = &context;
    aufteilung.WithStapel = IsChosen(run, controlInklStapel);
    HeldTables held(context);
    return HoldCostTables(held, aufteilung.Tables) && SendKostenstellen(aufteilung);
}

constexpr ReportOption options[] = {
    {OptionKind::Check, controlInklStapel, "inkl. &Stapel", nullptr, false, 0, 0},
};

constexpr ReportKind kostenaufteilung = {
    .Dialog = {.Id = 121,
               .Title = "Kostenaufteilung",
               .HelpContext = 10011,
               .PeriodOptions = PeriodDayExact | PeriodMonths | PeriodQuarters | PeriodYear,
               .Kontoarten = KontoartKostenstelle,
               .HasSingle = true,
               .RangeFirst = true,
               .Options = {options, 1},
               .Words = {.Konten = "&Kostenstellen", .Einzeln = "&einzeln"}},
    .RowOf = [](const ReportRun &) { return ReportKostenaufteilung; },
    .Send = SendRecords,
};

} // namespace

} // namespace vark

VarkWindow VARK_CALL VARK_KostenAufteilung(int32_t mandant, VarkWindow parent, ReportParams *params)
{
    return vark::RunReport(vark::kostenaufteilung, mandant, parent, params);
}
