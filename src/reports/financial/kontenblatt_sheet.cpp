// The sheet of one account: what was carried forward, then its postings, first all on Soll, then all on
// Haben, then those on which its tax lies. Postings of a day to an account that many others move are summed
// up.
#include "src/reports/financial/kontenblatt_sheet.h"

#include "src/booking/balances.h"
#include "src/booking/tax_rates.h"
#include "src/frame/record_store.h"
#include "src/frame/report_engine.h"
#include "src/values/amount_texts.h"
#include "src/values/amounts.h"
#include "src/values/dates.h"
#include "src/values/sums.h"
#include "text/fixed_text.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace vark {

using text::CopyText;

namespace {

#pragma pack(push, 1)

struct SheetHead {
    AccountNumber Konto; // without leading blanks
    char Name[41];
    char Kontoart[20];
    char Zeitraum[50];
    SollHaben Vortrag;
    int32_t Seiten; // of the earlier months; 0 if they are not counted
};

struct SheetLine {
    int32_t Buchungsnummer;
    uint32_t IsInSum;         // 0 for a posting that stands alone, outside the month's totals
    int32_t SplitKind;        // 1 main account on Soll, 2 on Haben, 0 no split
    AccountNumber Gegenkonto; // without leading blanks
    char Beleg[11];
    PackedDate Datum; // calendar month and year
    char Text[40];
    AmountText Soll;
    AmountText Haben;
    RateText Satz; // empty for a summary line
};

#pragma pack(pop)

static_assert(offsetof(SheetHead, Name) == 8);
static_assert(offsetof(SheetHead, Kontoart) == 49);
static_assert(offsetof(SheetHead, Zeitraum) == 69);
static_assert(offsetof(SheetHead, Vortrag) == 119);
static_assert(offsetof(SheetHead, Seiten) == 145);
static_assert(sizeof(SheetHead) == 149);
static_assert(offsetof(SheetLine, IsInSum) == 4);
static_assert(offsetof(SheetLine, SplitKind) == 8);
static_assert(offsetof(SheetLine, Gegenkonto) == 12);
static_assert(offsetof(SheetLine, Beleg) == 20);
static_assert(offsetof(SheetLine, Datum) == 31);
static_assert(offsetof(SheetLine, Text) == 38);
static_assert(offsetof(SheetLine, Soll) == 78);
static_assert(offsetof(SheetLine, Haben) == 91);
static_assert(offsetof(SheetLine, Satz) == 104);
static_assert(sizeof(SheetLine) == 110);

constexpr char noRate[] = "  -";

// Kinds of what a counting report is told.
constexpr int32_t countedHeader = 0;
constexpr int32_t countedHead = 1;
constexpr int32_t countedLine = 2;

// The lines of one account as they are sent.
struct LinesRun {
    const SheetRun *Sheet;
    AccountNumber Konto;
    bool SumsUp;  // postings of a day make one line
    bool HasOpen; // a summary line is open
    SheetLine Open;
    PackedDate OpenDate; // of the summary in hand; kept from pass to pass
};

bool Send(const SheetRun &sheet, int32_t kind, const void *record)
{
    return AddReportRecord(sheet.Run->Report, kind, record);
}

// ---- Head ----

bool FindVortrag(const SheetRun &sheet, const AccountScan &scan, SollHaben &vortrag)
{
    const AccountSums &sums = SumsOf(*scan.Kind, scan.Record);
    PackedDate date;
    CopyText(date, sheet.Run->Choice.Period.VonDatum);
    ThreadContext &context = *sheet.Run->Context;
    if (DayOf(date) == 1 && FiscalMonthOf(date) == 1) {
        CopyAmounts(vortrag, sums.Vortrag);
        return true;
    }
    return PreviousDay(date, context.FirstFiscalMonth) &&
           AccountSumsToDate(context, scan.Record.Head.Konto, sums, date, SumEarlierMonths | SumVortrag,
                             TableBube, vortrag);
}

// Pages that the sheets of the earlier months took, by their numbers of postings.
bool CountEarlierPages(const SheetRun &sheet, const AccountScan &scan, int32_t &pages)
{
    pages = 0;
    const int code = sheet.Run->Choice.Period.Code;
    if (sheet.Aufloesen || code < 2 || code > 12) return true;
    const int32_t counting = reportEngine.OpenVirtualReport(sheet.Run->Report) & 0xFFFF;
    if (counting == 0) return false;
    const AccountSums &sums = SumsOf(*scan.Kind, scan.Record);
    bool isGood = reportEngine.AddVirtualData(counting, countedHeader, 1) != 0;
    for (int month = 1; isGood && month < code; ++month) {
        const int32_t postings = std::max<int32_t>(CountPostings(sums, month, month), 0);
        isGood = reportEngine.AddVirtualData(counting, countedHead, 1) != 0 &&
                 reportEngine.AddVirtualData(counting, countedLine, postings) != 0;
    }
    if (isGood) pages = reportEngine.GetVirtualPages(counting);
    reportEngine.CloseVirtualReport(counting);
    return isGood;
}

bool SendHead(const SheetRun &sheet, const AccountScan &scan)
{
    SheetHead head{};
    char kuerzel[9];
    FillAccount(head.Konto, kuerzel, head.Name, *scan.Kind, scan.Record);
    CopyText(head.Kontoart, scan.Kind->One);
    CopyText(head.Zeitraum, sheet.Zeitraum);
    // No reference to the record's own field: a number in it may stand at an odd address.
    int32_t pages = 0;
    if (!FindVortrag(sheet, scan, head.Vortrag) || !CountEarlierPages(sheet, scan, pages)) return false;
    head.Seiten = pages;
    return Send(sheet, 1, &head);
}

// ---- Which accounts are summed up ----

// Whether a tax key that is valid on the first day names the account. The second account of a rate has no
// key, so all rates are looked at.
bool IsTaxAccount(const SheetRun &sheet, const AccountNumber &konto, bool &isOne)
{
    isOne = false;
    ThreadContext &context = *sheet.Run->Context;
    const TableKeyCode code = KeyCode(TableSteke, 1);
    StekeRecord rate{};
    bool found = false;
    bool isGood = GetFirstF(context, &rate, found, code);
    while (isGood && found && !isOne) {
        const bool names = std::memcmp(rate.Umsatzsteuerkonto, konto, sizeof konto) == 0 ||
                           std::memcmp(rate.Vorsteuerkonto, konto, sizeof konto) == 0;
        isOne = names && !DateIsAfter(rate.GueltigAb, sheet.Run->Choice.Period.VonDatum);
        isGood = isOne || GetNextF(context, &rate, found, code);
    }
    return isGood;
}

bool IsSummedUp(const SheetRun &sheet, const AccountScan &scan, bool &sumsUp)
{
    sumsUp = false;
    if (sheet.Aufloesen || scan.Kind->Table != TableSako) return true;
    const FistaRecord &mandant = sheet.Run->Mandant;
    const AccountNumber &konto = scan.Record.Head.Konto;
    sumsUp = std::memcmp(mandant.Sammelkonto1, konto, sizeof konto) == 0 ||
             std::memcmp(mandant.Sammelkonto2, konto, sizeof konto) == 0;
    return sumsUp || IsTaxAccount(sheet, konto, sumsUp);
}

// ---- Lines ----

// A posting without a date of its own has the one in its key.
void DateOf(const BubeRecord &posting, PackedDate &date)
{
    CopyText(date, posting.Datum);
    if (date[0] != 0) return;
    std::memcpy(date, posting.Schluessel.Folge, 6);
    date[6] = 0;
    ToSortDate(date);
}

bool SendOpenSummary(LinesRun &lines)
{
    if (!lines.HasOpen) return true;
    lines.HasOpen = false;
    return Send(*lines.Sheet, 2, &lines.Open);
}

void BeginSummary(LinesRun &lines, const BubeRecord &posting, const PackedDate &date)
{
    lines.HasOpen = true;
    lines.Open = {};
    lines.Open.Buchungsnummer = posting.Buchungsnummer;
    lines.Open.IsInSum = 1;
    CopyText(lines.Open.Soll, zeroAmount);
    CopyText(lines.Open.Haben, zeroAmount);
    PackedToCalendar(date, lines.Open.Datum, lines.Sheet->Run->Context->FirstFiscalMonth);
    CopyText(lines.Open.Text, "Sammelbuchung");
    CopyText(lines.OpenDate, date);
}

void FillLine(const LinesRun &lines, const BubeRecord &posting, const PackedDate &date, SheetLine &line)
{
    line.Buchungsnummer = posting.Buchungsnummer;
    line.IsInSum = (posting.Status & BubeOhneNetto) == 0 ? 1 : 0;
    line.SplitKind = (posting.Status & BubeSplitSoll) != 0    ? 1
                     : (posting.Status & BubeSplitHaben) != 0 ? 2
                                                              : 0;
    CopyText(line.Beleg, posting.Beleg);
    PackedToCalendar(date, line.Datum, lines.Sheet->Run->Context->FirstFiscalMonth);
    CopyText(line.Text, posting.Text);
    CopyText(line.Soll, zeroAmount);
    CopyText(line.Haben, zeroAmount);
    CopyText(line.Satz, posting.Steuersatz[0] != 0 ? posting.Steuersatz : zeroRate);
}

// Adds what the posting moves on the account to a line, and names the account on its other side.
bool AddPosting(SheetLine &line, const BubeRecord &posting, PostingAccount pass,
                const AccountNumber *&gegenkonto)
{
    const bool isTaxOnHaben = (posting.Steuerflags & BubeSteuerPlus) != 0;
    switch (pass) {
    case PostingAccount::Soll:
        gegenkonto = &posting.Habenkonto;
        return AccumulateAmount(line.Soll, posting.Soll);
    case PostingAccount::Haben:
        gegenkonto = &posting.Sollkonto;
        return AccumulateAmount(line.Haben, posting.Haben);
    case PostingAccount::Steuer: break;
    }
    gegenkonto = isTaxOnHaben ? &posting.Sollkonto : &posting.Habenkonto;
    return AccumulateAmount(isTaxOnHaben ? line.Haben : line.Soll, posting.Steuer);
}

// A part of a split names its own account on both sides: the other one stands on the posting before it. The
// table's position goes there and comes back. A Buchungsnummer that leads to another posting ends the report,
// since the walk would go on from there for ever.
bool FindSplitNeighbour(ThreadContext &context, const PostingScan &scan, PostingAccount pass,
                        AccountNumber &gegenkonto)
{
    BubeRecord neighbour{};
    bool found = false;
    if (!RereadCurrent(context, TableBube) || !GetPreviousF(context, &neighbour, found, TableBube))
        return false;
    if (found) {
        CopyText(gegenkonto, pass == PostingAccount::Soll ? neighbour.Habenkonto : neighbour.Sollkonto);
    }
    BubeRecord again{};
    return FindPosting(context, scan.Record.Buchungsnummer, again, found) && found &&
           std::memcmp(&again.Schluessel, &scan.Record.Schluessel, sizeof again.Schluessel) == 0 &&
           RereadCurrent(context, scan.Code);
}

// A field that holds no rate gives way to the one that the amounts make.
void SettleRate(SheetLine &line, const BubeRecord &posting)
{
    char typed[sizeof line.Satz + 1] = {};
    CopyText(typed, line.Satz);
    if (line.Satz[0] == 0 || NormalizeAmountInput(typed, sizeof typed, 5, false)) return;
    RateText rate;
    const bool isKnown = RateFromAmounts(posting.Soll, posting.Haben, rate);
    CopyText(line.Satz, isKnown ? rate : noRate);
}

bool SendPosting(LinesRun &lines, const PostingScan &scan, PostingAccount pass)
{
    const BubeRecord &posting = scan.Record;
    PackedDate date;
    DateOf(posting, date);
    if (lines.HasOpen && std::strcmp(date, lines.OpenDate) != 0) {
        if (!SendOpenSummary(lines)) return false;
        CopyText(lines.OpenDate, date);
    }
    const bool standsAlone = (posting.Status & BubeOhneNetto) != 0;
    if (!standsAlone && lines.SumsUp && !lines.HasOpen) BeginSummary(lines, posting, date);

    const AccountNumber *gegenkonto = nullptr;
    if (!standsAlone && lines.HasOpen) return AddPosting(lines.Open, posting, pass, gegenkonto);

    SheetLine line{};
    FillLine(lines, posting, date, line);
    if (!AddPosting(line, posting, pass, gegenkonto)) return false;
    CopyText(line.Gegenkonto, *gegenkonto);
    const bool isSplitPart = !lines.HasOpen && (posting.Status & BubeGefaltet) != 0;
    if (isSplitPart && !FindSplitNeighbour(*lines.Sheet->Run->Context, scan, pass, line.Gegenkonto))
        return false;
    SettleRate(line, posting);
    TrimLeft(line.Gegenkonto, sizeof line.Gegenkonto);
    return Send(*lines.Sheet, 2, &line);
}

bool SendPass(LinesRun &lines, PostingAccount pass)
{
    PostingScan scan;
    bool isGood = BeginPostingsOf(scan, *lines.Sheet->Run->Context, lines.Konto, pass, lines.Sheet->Days);
    while (isGood && scan.Found) {
        isGood = SendPosting(lines, scan, pass) && NextPosting(scan);
    }
    return isGood && SendOpenSummary(lines);
}

} // namespace

bool SendAccountSheet(const SheetRun &sheet, const AccountScan &scan)
{
    const PeriodSelection &period = sheet.Run->Choice.Period;
    if (sheet.NurBebuchte) {
        // Free dates have no months of their own.
        const bool isFree = period.Code == periodDayExact;
        const int von = isFree ? FiscalMonthOf(period.VonDatum) : period.VonPeriode;
        const int bis = isFree ? FiscalMonthOf(period.BisDatum) : period.BisPeriode;
        if (CountPostings(SumsOf(*scan.Kind, scan.Record), von, bis) == 0) return true;
    }
    if (!SendHead(sheet, scan)) return false;
    if (!sheet.HasPostings) return true;
    LinesRun lines{};
    lines.Sheet = &sheet;
    CopyText(lines.Konto, scan.Record.Head.Konto);
    return IsSummedUp(sheet, scan, lines.SumsUp) && SendPass(lines, PostingAccount::Soll) &&
           SendPass(lines, PostingAccount::Haben) && SendPass(lines, PostingAccount::Steuer);
}

} // namespace vark
