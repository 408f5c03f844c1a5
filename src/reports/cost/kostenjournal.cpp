// Kostenjournal: the cost lines of a period by date, each with Beleg, text and account of its posting. Lines
// of the working year come first, then those of it that were written into the Mandant's year.
#include "src/frame/held_tables.h"
#include "src/frame/mandant.h"
#include "src/reports/frame/report_run.h"
#include "src/values/account_numbers.h"
#include "src/values/amounts.h"
#include "src/values/dates.h"
#include "src/values/sums.h"
#include "src/walks/cost_lines.h"
#include "text/fixed_text.h"

#include <cstddef>

namespace vark {

using text::CopyText;

namespace {

constexpr int controlInklStapel = 1034;

#pragma pack(push, 1)

struct KostenJournalHeader {
    char Mandant[41];
    char Zeitraum[50];
    uint32_t InklStapel;
};

struct KostenJournalLine {
    PackedDate Datum; // calendar month and year
    char Beleg[9];
    AccountNumber Konto; // without leading blanks, like both cost objects
    AccountNumber Kostenobjekt1;
    AccountNumber Kostenobjekt2;
    char Text[81];
    SollHaben Betrag; // zero on the other side
    uint32_t IsGesetzt;
    uint32_t IsFinal;
};

#pragma pack(pop)

static_assert(offsetof(KostenJournalHeader, Zeitraum) == 41);
static_assert(offsetof(KostenJournalHeader, InklStapel) == 91);
static_assert(sizeof(KostenJournalHeader) == 95);
static_assert(offsetof(KostenJournalLine, Beleg) == 7);
static_assert(offsetof(KostenJournalLine, Konto) == 16);
static_assert(offsetof(KostenJournalLine, Kostenobjekt1) == 24);
static_assert(offsetof(KostenJournalLine, Kostenobjekt2) == 32);
static_assert(offsetof(KostenJournalLine, Text) == 40);
static_assert(offsetof(KostenJournalLine, Betrag) == 121);
static_assert(offsetof(KostenJournalLine, IsGesetzt) == 147);
static_assert(offsetof(KostenJournalLine, IsFinal) == 151);
static_assert(sizeof(KostenJournalLine) == 155);

bool SendHeader(const ReportRun &run)
{
    KostenJournalHeader header{};
    CopyText(header.Mandant, run.Mandant.Name);
    PeriodTitle zeitraum;
    BuildPeriodTitle(*run.Context, run.Choice.Period, zeitraum, false, false);
    CopyText(header.Zeitraum, zeitraum);
    header.InklStapel = IsChosen(run, controlInklStapel) ? 1 : 0;
    return AddReportRecord(run.Report, 0, &header);
}

// The final posting that was looked up last. The lines of one posting mostly come one after another.
struct LastPosting {
    int32_t Number; // 0: none yet
    CostWords Words;
};

// A posting that is not there is a failure: the line would have no words.
bool FindWords(ThreadContext &context, const KobuRecord &cost, LastPosting &last, CostWords &words)
{
    if (IsFinal(cost) && cost.FinaleBuchung == last.Number) {
        words = last.Words;
        CopyText(words.Konto, cost.Konto);
        return true;
    }
    bool found = false;
    if (!FindCostWords(context, cost, words, found) || !found) return false;
    if (IsFinal(cost)) last = {cost.FinaleBuchung, words};
    return true;
}

bool SendLine(const ReportRun &run, const KobuRecord &cost, LastPosting &last)
{
    CostWords words;
    if (!FindWords(*run.Context, cost, last, words)) return false;
    KostenJournalLine line{};
    PackedDate day;
    CopyText(day, cost.Datum);
    ToSortDate(day); // and back again
    PackedToCalendar(day, line.Datum, run.Context->FirstFiscalMonth);
    CopyText(line.Beleg, words.Beleg);
    StripNumber(line.Konto, words.Konto);
    StripNumber(line.Kostenobjekt1, cost.Kostenobjekt1);
    StripNumber(line.Kostenobjekt2, cost.Kostenobjekt2);
    CopyText(line.Text, words.Text);
    CopyText(line.Betrag.Soll, zeroAmount);
    CopyText(line.Betrag.Haben, zeroAmount);
    CopyAmount(IsOnHaben(cost) ? line.Betrag.Haben : line.Betrag.Soll, cost.Betrag);
    line.IsGesetzt = (cost.Flag & KobuArt) != 0 ? 1 : 0;
    line.IsFinal = IsFinal(cost) ? 1 : 0;
    return AddReportRecord(run.Report, 1, &line);
}

bool SendLines(const ReportRun &run, TableId kobu)
{
    const PeriodSelection &period = run.Choice.Period;
    const bool withStapel = IsChosen(run, controlInklStapel);
    LastPosting last{};
    CostScan scan;
    bool isGood = BeginCostLines(scan, *run.Context, kobu, period.VonDatum, period.BisDatum);
    while (isGood && scan.Found) {
        const bool isShown = withStapel || IsFinal(scan.Line);
        isGood = (!isShown || SendLine(run, scan.Line, last)) && NextCostLine(scan);
    }
    return isGood;
}

bool SendRecords(ReportRun &run)
{
    if (!SelectYear(*run.Context, run.Choice.Period.JahrText) || !SendHeader(run)) return false;
    HeldTables held(*run.Context);
    CostTables tables;
    if (!HoldCostTables(held, tables)) return false;
    bool isGood = true;
    for (int i = 0; isGood && i < tables.Count; ++i) {
        isGood = SendLines(run, tables.Tables[i]);
    }
    return isGood;
}

constexpr ReportOption options[] = {
    {OptionKind::Check, controlInklStapel, "inkl. &Stapel", nullptr, false, 0, 0},
};

constexpr ReportKind kostenjournal = {
    .Dialog = {.Id = 120,
               .Title = "Kostenjournal",
               .HelpContext = 10005,
               .PeriodOptions = PeriodDayExact | PeriodMonths | PeriodQuarters | PeriodYear,
               .Options = {options, 1}},
    .RowOf = [](const ReportRun &) { return ReportKostenjournal; },
    .Send = SendRecords,
};

} // namespace

} // namespace vark

VarkWindow VARK_CALL VARK_Kostenjournal(int32_t mandant, VarkWindow parent, ReportParams *params)
{
    return vark::RunReport(vark::kostenjournal, mandant, parent, params);
}
