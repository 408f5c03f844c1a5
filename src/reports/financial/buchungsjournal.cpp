// Buchungsjournal: the postings of a period by their date or by the day on which they were entered, the
// Teilbuchungen of a Splitbuchung together below their head, with net amounts and tax.
#include "src/frame/held_tables.h"
#include "src/frame/mandant.h"
#include "src/frame/record_store.h"
#include "src/reports/frame/report_run.h"
#include "src/values/account_numbers.h"
#include "src/values/amounts.h"
#include "src/values/dates.h"
#include "src/values/sums.h"
#include "src/walks/posting_walk.h"
#include "text/fixed_text.h"

#include <algorithm>
#include <array> // std::size
#include <cstddef>
#include <cstring>

namespace vark {

using text::CopyText;

namespace {

#pragma pack(push, 1)

struct JournalHeader {
    char Mandant[41];
    char Zeitraum[50];
    int32_t HasUsers;
};

struct PostingHead {
    PackedDate Datum;         // calendar month and year
    PackedDate Buchungsdatum; // likewise
    char Beleg[9];
    AccountNumber Hauptkonto; // of a Splitbuchung, without leading blanks
    int32_t Split;            // SplitKind
    char Benutzer[32];
};

struct PostingLine {
    int32_t Buchungsnummer;
    AccountNumber Sollkonto; // without leading blanks, as the other two
    AccountNumber Habenkonto;
    AccountNumber Steuerkonto;
    RateText Steuersatz;
    char Text[40];
    SollHaben Brutto;
    SollHaben Netto;
    SollHaben Steuer;
};

// The folded lines of a posting as one: accounts and text of the first.
struct SummaryLine {
    int32_t Buchungsnummer;
    AccountNumber Sollkonto;
    AccountNumber Habenkonto;
    char Text[40];
    SollHaben Summe;
};

#pragma pack(pop)

static_assert(offsetof(JournalHeader, Zeitraum) == 41);
static_assert(offsetof(JournalHeader, HasUsers) == 91);
static_assert(sizeof(JournalHeader) == 95);
static_assert(offsetof(PostingHead, Buchungsdatum) == 7);
static_assert(offsetof(PostingHead, Beleg) == 14);
static_assert(offsetof(PostingHead, Hauptkonto) == 23);
static_assert(offsetof(PostingHead, Split) == 31);
static_assert(offsetof(PostingHead, Benutzer) == 35);
static_assert(sizeof(PostingHead) == 67);
static_assert(offsetof(PostingLine, Sollkonto) == 4);
static_assert(offsetof(PostingLine, Habenkonto) == 12);
static_assert(offsetof(PostingLine, Steuerkonto) == 20);
static_assert(offsetof(PostingLine, Steuersatz) == 28);
static_assert(offsetof(PostingLine, Text) == 34);
static_assert(offsetof(PostingLine, Brutto) == 74);
static_assert(offsetof(PostingLine, Netto) == 100);
static_assert(offsetof(PostingLine, Steuer) == 126);
static_assert(sizeof(PostingLine) == 152);
static_assert(offsetof(SummaryLine, Sollkonto) == 4);
static_assert(offsetof(SummaryLine, Habenkonto) == 12);
static_assert(offsetof(SummaryLine, Text) == 20);
static_assert(offsetof(SummaryLine, Summe) == 60);
static_assert(sizeof(SummaryLine) == 86);

constexpr int controlByEntry = 1018;

enum SplitKind : int32_t { SplitNone = 0, SplitMainHaben = 1, SplitMainSoll = 2 };

struct KnownUser {
    char Key[sizeof(BubeRecord::Benutzer)];
    char Name[32]; // empty for an unknown one
};

constexpr int maxKnownUsers = 16; // as many people as enter postings at the same time

struct Journal {
    const ReportRun *Run;
    ThreadContext *Context;
    bool HasUsers;
    KnownUser Users[maxKnownUsers]; // those looked up last
    int UserCount;
    int OldestUser; // gives way to the next one once all are taken
};

Journal &JournalOf(const ReportRun &run) { return *static_cast<Journal *>(run.State); }

bool IsFolded(const BubeRecord &record) { return (record.Status & BubeGefaltet) != 0; }

SplitKind SplitOf(const BubeRecord &record)
{
    if ((record.Status & BubeSplitSoll) != 0) return SplitMainSoll;
    return (record.Status & BubeSplitHaben) != 0 ? SplitMainHaben : SplitNone;
}

// Teilbuchungen behind a head. The count of any other posting is none: it would take its neighbours for them.
int LinesBehind(const BubeRecord &record)
{
    return SplitOf(record) != SplitNone ? std::max<int>(record.Anzahl, 0) : 0;
}

// ---- Records ----

bool SendHeader(const Journal &journal)
{
    const ReportRun &run = *journal.Run;
    JournalHeader header{};
    CopyText(header.Mandant, run.Mandant.Name);
    PeriodTitle title;
    BuildPeriodTitle(*journal.Context, run.Choice.Period, title, false, false);
    CopyText(header.Zeitraum, title);
    header.HasUsers = journal.HasUsers ? 1 : 0;
    return AddReportRecord(run.Report, 0, &header);
}

// The user who made a posting. A few people enter all of them, so the last ones found are kept. Null when the
// read failed.
const KnownUser *FindUser(Journal &journal, const BubeRecord &record)
{
    for (int i = 0; i < journal.UserCount; ++i) {
        const KnownUser &known = journal.Users[i];
        if (std::memcmp(known.Key, record.Benutzer, sizeof known.Key) == 0) return &known;
    }
    UserRecord user;
    bool found = false;
    const KeyBuffer key = KeyOfText(record.Benutzer, sizeof record.Benutzer + 1);
    if (!GetEqual(*journal.Context, &user, key, found, TableUser)) return nullptr;
    int place = journal.UserCount;
    if (place < maxKnownUsers) {
        ++journal.UserCount;
    } else {
        place = journal.OldestUser;
        journal.OldestUser = (place + 1) % maxKnownUsers;
    }
    KnownUser &known = journal.Users[place];
    std::memcpy(known.Key, record.Benutzer, sizeof known.Key);
    CopyText(known.Name, found ? user.Name : "");
    return &known;
}

bool SendHead(Journal &journal, const BubeRecord &record)
{
    const int firstMonth = journal.Context->FirstFiscalMonth;
    PostingHead head{};
    PackedToCalendar(record.Datum, head.Datum, firstMonth);
    CopyText(head.Buchungsdatum, record.Buchungsdatum);
    ToSortDate(head.Buchungsdatum);
    PackedToCalendar(head.Buchungsdatum, head.Buchungsdatum, firstMonth);
    CopyText(head.Beleg, record.Beleg);
    head.Split = SplitOf(record);
    if (head.Split == SplitMainHaben) StripNumber(head.Hauptkonto, record.Habenkonto);
    if (head.Split == SplitMainSoll) StripNumber(head.Hauptkonto, record.Sollkonto);
    if (journal.HasUsers) {
        const KnownUser *user = FindUser(journal, record);
        if (user == nullptr) return false;
        CopyText(head.Benutzer, user->Name);
    }
    return AddReportRecord(journal.Run->Report, 1, &head);
}

// The net amount lies on the side that carries the tax; the tax column is named after the other one, and
// negative where the posting takes tax back. False on overflow.
bool FillTax(PostingLine &line, const BubeRecord &record)
{
    const bool isMinus = (record.Steuerflags & BubeSteuerMinus) != 0;
    const bool isPlus = (record.Steuerflags & BubeSteuerPlus) != 0;
    const bool isOfSoll = (record.Steuerherkunft & BubeVorsteuer) != 0;
    AmountText &net = isOfSoll ? line.Netto.Soll : line.Netto.Haben;
    AmountText &tax = isOfSoll ? line.Steuer.Haben : line.Steuer.Soll;
    const bool isRaised = isOfSoll ? isMinus : isPlus;
    const bool isNegated = isOfSoll ? isPlus : isMinus;
    CopyText(line.Steuersatz, record.Steuersatz);
    CopyAmount(tax, record.Steuer);
    if (!(isRaised ? AccumulateAmount(net, record.Steuer) : DeductAmount(net, record.Steuer))) return false;
    if (isNegated) SubtractAmounts(tax, zeroAmount, record.Steuer);
    return true;
}

bool SendLine(const Journal &journal, const BubeRecord &record)
{
    PostingLine line{};
    line.Buchungsnummer = record.Buchungsnummer;
    StripNumber(line.Sollkonto, record.Sollkonto);
    StripNumber(line.Habenkonto, record.Habenkonto);
    StripNumber(line.Steuerkonto, record.Steuerkonto);
    CopyText(line.Steuersatz, zeroRate);
    CopyText(line.Text, record.Text);
    CopyAmount(line.Brutto.Soll, record.Soll);
    CopyAmount(line.Brutto.Haben, record.Haben);
    line.Netto = line.Brutto;
    CopyAmounts(line.Steuer, {});
    if (line.Steuerkonto[0] != 0 && !FillTax(line, record)) return false;
    return AddReportRecord(journal.Run->Report, 2, &line);
}

// Adds a folded line to the summary; the first one gives it accounts and text.
bool Fold(SummaryLine &summary, bool isFirst, const BubeRecord &record)
{
    if (isFirst) {
        summary.Buchungsnummer = record.Buchungsnummer;
        StripNumber(summary.Sollkonto, record.Sollkonto);
        StripNumber(summary.Habenkonto, record.Habenkonto);
        CopyText(summary.Text, record.Text);
        CopyAmounts(summary.Summe, {});
    }
    return AccumulateAmount(summary.Summe.Soll, record.Soll) &&
           AccumulateAmount(summary.Summe.Haben, record.Haben);
}

// ---- Postings ----

// Sends a posting with the lines behind it, which are read in the order of dates. `atEnd` tells that the
// table came to its end among them.
bool SendPosting(Journal &journal, const BubeRecord &posting, bool &atEnd)
{
    if (!IsFolded(posting) && !SendHead(journal, posting)) return false;
    BubeRecord line = posting;
    SummaryLine summary{};
    bool hasFolded = false;
    for (int left = LinesBehind(posting);; --left) {
        if (!IsFolded(line)) {
            if (!SendLine(journal, line)) return false;
        } else {
            if (!Fold(summary, !hasFolded, line)) return false;
            hasFolded = true;
        }
        if (left == 0) break;
        bool found = false;
        if (!GetNextF(*journal.Context, &line, found, TableBube)) return false;
        if (!found) {
            atEnd = true;
            break;
        }
    }
    return !hasFolded || AddReportRecord(journal.Run->Report, 3, &summary);
}

// Leads the walk by the day of entry back to a head. Another posting with its number would lead it astray,
// perhaps for ever.
bool ReturnToHead(const PostingScan &scan)
{
    BubeRecord head;
    bool found = false;
    return FindPosting(*scan.Context, scan.Record.Buchungsnummer, head, found) && found &&
           std::memcmp(&head.Schluessel, &scan.Record.Schluessel, sizeof head.Schluessel) == 0 &&
           RereadCurrent(*scan.Context, scan.Code);
}

// A Teilbuchung that is met by itself prints nothing, and neither does a head that is folded.
bool SendScanned(Journal &journal, PostingScan &scan)
{
    const BubeRecord &posting = scan.Record;
    bool atEnd = false;
    if (SplitOf(posting) == SplitNone) return SendPosting(journal, posting, atEnd);
    if (LinesBehind(posting) == 0 || IsFolded(posting)) return true;
    if (scan.Code == TableBube) {
        if (!SendPosting(journal, posting, atEnd)) return false;
        scan.Found = !atEnd;
        return true;
    }
    return RereadCurrent(*scan.Context, TableBube) && SendPosting(journal, posting, atEnd) &&
           ReturnToHead(scan);
}

bool SendPostings(Journal &journal)
{
    const ReportRun &run = *journal.Run;
    const DayRange days = DaysOf(run.Choice.Period.VonDatum, run.Choice.Period.BisDatum);
    PostingScan scan;
    bool isGood = IsChosen(run, controlByEntry) ? BeginPostingsByEntry(scan, *journal.Context, days)
                                                : BeginPostings(scan, *journal.Context, days);
    while (isGood && scan.Found) {
        isGood = SendScanned(journal, scan);
        if (!isGood || !scan.Found) break;
        isGood = NextPosting(scan);
    }
    return isGood;
}

bool SendRecords(ReportRun &run)
{
    ThreadContext &context = *run.Context;
    if (!SelectYear(context, run.Choice.Period.JahrText)) return false;
    Journal &journal = JournalOf(run);
    HeldTables held(context);
    return Hold(held, TableBube) && (!journal.HasUsers || Hold(held, TableUser)) && SendHeader(journal) &&
           SendPostings(journal);
}

// The users are counted before the dialog. A table that cannot be counted has none, and the report goes on.
bool CountUsers(ReportRun &run)
{
    Journal &journal = JournalOf(run);
    journal.Run = &run;
    journal.Context = run.Context;
    journal.HasUsers = RecordCount(*run.Context, TableUser) > 0;
    return true;
}

constexpr ReportOption journalRows[] = {
    {OptionKind::Check, controlByEntry, "Buchungs&datum", "Sortierung", false, 0, 0},
};

constexpr ReportKind journalKind = {
    .Dialog = {.Id = 113,
               .Title = "Buchungsjournal",
               .HelpContext = 3015,
               .PeriodOptions = PeriodDayExact | PeriodMonths | PeriodQuarters | PeriodYear,
               .Options = {journalRows, static_cast<int>(std::size(journalRows))},
               .Words = {.Von = "&vom:", .Bis = "&bis zum:"}},
    .RowOf = [](const ReportRun &) { return ReportBuchungsjournal; },
    .Before = CountUsers,
    .Send = SendRecords,
};

} // namespace

} // namespace vark

VarkWindow VARK_CALL VARK_Buchungsjournal(int32_t mandant, VarkWindow parent, ReportParams *params)
{
    vark::Journal journal{};
    return vark::RunReport(vark::journalKind, mandant, parent, params, &journal);
}
