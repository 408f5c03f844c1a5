// Umsatzstatistik: the turnover of Debitoren or Kreditoren in a period, gross from their months or net from
// the postings, of those that are large enough and live where they are asked for.
#include "src/frame/held_tables.h"
#include "src/frame/mandant.h"
#include "src/frame/messages.h"
#include "src/reports/frame/report_run.h"
#include "src/values/amount_texts.h"
#include "src/values/amounts.h"
#include "src/values/sums.h"
#include "src/walks/account_walk.h"
#include "src/walks/posting_walk.h"
#include "text/fixed_text.h"
#include "text/windows1252.h"

#include <array> // std::size
#include <cstddef>
#include <cstring>

namespace vark {

using namespace text;

namespace {

constexpr int controlMinimum = 1005; // fields
constexpr int controlLand = 1032;
constexpr int controlPlz = 1033;
constexpr int controlNet = 1031; // check box

using FilterText = char[81];

#pragma pack(push, 1)

struct UmsatzHeader {
    char Mandant[41];
    char Zeitraum[50];
    RangeWord Kontoart;
    RangeText Bereich;
    FilterText Auswahl;
    int32_t IsNet;
};

struct UmsatzLine {
    AccountNumber Konto; // without leading blanks
    char Kuerzel[9];
    char Name1[26];
    char Name2[26];
    AmountText Umsatz;
    char Adresse1[31];
    char Plz[7];
    char Land[4];
    char Ort[32];
};

#pragma pack(pop)

static_assert(offsetof(UmsatzHeader, Zeitraum) == 41);
static_assert(offsetof(UmsatzHeader, Kontoart) == 91);
static_assert(offsetof(UmsatzHeader, Bereich) == 121);
static_assert(offsetof(UmsatzHeader, Auswahl) == 151);
static_assert(offsetof(UmsatzHeader, IsNet) == 232);
static_assert(sizeof(UmsatzHeader) == 236);
static_assert(offsetof(UmsatzLine, Kuerzel) == 8);
static_assert(offsetof(UmsatzLine, Name1) == 17);
static_assert(offsetof(UmsatzLine, Name2) == 43);
static_assert(offsetof(UmsatzLine, Umsatz) == 69);
static_assert(offsetof(UmsatzLine, Adresse1) == 82);
static_assert(offsetof(UmsatzLine, Plz) == 113);
static_assert(offsetof(UmsatzLine, Land) == 120);
static_assert(offsetof(UmsatzLine, Ort) == 124);
static_assert(sizeof(UmsatzLine) == 156);

struct Umsatzstatistik {
    const ReportRun *Run;
    ThreadContext *Context;
    const AccountKind *Kind;
    bool IsNet;
    AmountText Minimum; // empty for none
    const char *Land;   // empty for all, as the next one
    const char *Plz;
    DayRange Days;
};

// The Mindestumsatz that was typed; empty where the field is. False for what is no amount above 0.
bool MinimumOf(const OptionValue &value, AmountText &minimum)
{
    CopyText(minimum, "");
    if (value.Text[0] == 0) return true;
    char typed[16];
    CopyText(typed, value.Text);
    if (CheckAmountField(typed, sizeof typed, amountWidth) != 0) return false;
    CopyText(minimum, typed);
    return !IsZeroAmount(minimum);
}

bool CheckMinimum(HWND, const ReportRun &run, const ReportChoice &chosen)
{
    AmountText minimum;
    if (MinimumOf(OptionOf(run.Dialog->Options, chosen.Options, controlMinimum), minimum)) return true;
    ShowMessage(Message::MindestumsatzErwartet, controlMinimum, nullptr, -1);
    return false;
}

// ---- Header ----

void AddFilter(FilterText &filter, const char *label, const char *value)
{
    if (value[0] == 0) return;
    const char *const parts[] = {filter[0] != 0 ? ", " : "", label, value};
    for (const char *part : parts) {
        const size_t used = std::strlen(filter);
        CopyText(filter + used, sizeof filter - used, part, std::strlen(part));
    }
}

bool SendHeader(const Umsatzstatistik &umsatz)
{
    const ReportRun &run = *umsatz.Run;
    UmsatzHeader header{};
    CopyText(header.Mandant, run.Mandant.Name);
    PeriodTitle title;
    BuildPeriodTitle(*umsatz.Context, run.Choice.Period, title, false, false);
    CopyText(header.Zeitraum, title);
    RangeTexts(run.Choice.Range, &header.Kontoart, header.Bereich, true);
    FormattedAmount minimum{};
    CopyText(minimum, umsatz.Minimum);
    if (minimum[0] != 0) GroupAmount(minimum);
    AddFilter(header.Auswahl, "Mindestumsatz: ", minimum);
    AddFilter(header.Auswahl, "Land: ", umsatz.Land);
    AddFilter(header.Auswahl, "PLZ-Bereich: ", umsatz.Plz);
    header.IsNet = umsatz.IsNet ? 1 : 0;
    return AddReportRecord(run.Report, 0, &header);
}

// ---- Accounts ----

bool LivesWhereAsked(const Umsatzstatistik &umsatz, const PersonalRecord &record)
{
    if (umsatz.Land[0] != 0 && std::strncmp(record.Land, umsatz.Land, sizeof record.Land) != 0) return false;
    const size_t digits = std::strlen(umsatz.Plz);
    return digits <= sizeof record.Plz && std::strncmp(record.Plz, umsatz.Plz, digits) == 0;
}

bool IsDebitor(const Umsatzstatistik &umsatz) { return umsatz.Kind->Art == KontoartDebitor; }

// Net turnover: of a posting on a personal account the other column holds the net amount.
bool AddNet(const Umsatzstatistik &umsatz, const AccountNumber &konto, AmountText &total)
{
    const PostingAccount which = IsDebitor(umsatz) ? PostingAccount::Soll : PostingAccount::Haben;
    PostingScan scan;
    bool isGood = BeginPostingsOf(scan, *umsatz.Context, konto, which, umsatz.Days);
    while (isGood && scan.Found) {
        if ((scan.Record.Status & BubeOhneNetto) == 0) {
            isGood = AccumulateAmount(total, IsDebitor(umsatz) ? scan.Record.Haben : scan.Record.Soll);
        }
        isGood = isGood && NextPosting(scan);
    }
    return isGood;
}

// False when the record store failed, and on overflow.
bool FindTurnover(const Umsatzstatistik &umsatz, const PersonalRecord &record, AmountText &total)
{
    CopyText(total, zeroAmount);
    if (umsatz.IsNet) return AddNet(umsatz, record.Konto, total);
    const PeriodSelection &period = umsatz.Run->Choice.Period;
    return IsDebitor(umsatz) ? SumMonthsSoll(total, record.Umsaetze, period.VonPeriode, period.BisPeriode)
                             : SumMonthsHaben(total, record.Umsaetze, period.VonPeriode, period.BisPeriode);
}

bool IsTooSmall(const Umsatzstatistik &umsatz, const AmountText &turnover)
{
    return umsatz.Minimum[0] != 0 &&
           (IsNegativeAmount(turnover) || std::memcmp(turnover, umsatz.Minimum, amountWidth) < 0);
}

bool SendAccount(const Umsatzstatistik &umsatz, const AnyAccount &account)
{
    const PersonalRecord &record = account.Personal;
    if (!LivesWhereAsked(umsatz, record)) return true;
    UmsatzLine line{};
    if (!FindTurnover(umsatz, record, line.Umsatz)) return false;
    if (IsTooSmall(umsatz, line.Umsatz)) return true;
    CopyNumberAndKuerzel(line.Konto, line.Kuerzel, account);
    CopyText(line.Name1, record.Name1);
    CopyText(line.Name2, record.Name2);
    CopyText(line.Adresse1, record.Adresse1);
    CopyText(line.Plz, record.Plz);
    CopyText(line.Land, record.Land);
    CopyText(line.Ort, record.Adresse2);
    return AddReportRecord(umsatz.Run->Report, 1, &line);
}

bool SendAccounts(const Umsatzstatistik &umsatz, const AccountNumber &von, const AccountNumber &bis)
{
    AccountScan scan;
    bool isGood = BeginAccounts(scan, *umsatz.Context, *umsatz.Kind, von, bis);
    while (isGood && scan.Found) {
        isGood = SendAccount(umsatz, scan.Record) && NextAccount(scan);
    }
    return isGood;
}

bool SendRecords(ReportRun &run)
{
    ThreadContext &context = *run.Context;
    if (!SelectYear(context, run.Choice.Period.JahrText)) return false;
    Umsatzstatistik umsatz{};
    AccountNumber von;
    AccountNumber bis;
    umsatz.Run = &run;
    umsatz.Context = &context;
    umsatz.Kind = &KindOfTable(RangeLimits(run.Choice.Range, von, bis));
    umsatz.IsNet = IsChosen(run, controlNet);
    MinimumOf(OptionOf(run, controlMinimum), umsatz.Minimum);
    umsatz.Land = OptionOf(run, controlLand).Text;
    umsatz.Plz = OptionOf(run, controlPlz).Text;
    umsatz.Days = DaysOf(run.Choice.Period.VonDatum, run.Choice.Period.BisDatum);
    HeldTables held(context);
    bool hasPostings = true;
    if (!SendHeader(umsatz) || !Hold(held, umsatz.Kind->Table)) return false;
    if (umsatz.IsNet && (!Hold(held, TableBube) || !HasPostings(context, umsatz.Days, hasPostings)))
        return false;
    return !hasPostings || SendAccounts(umsatz, von, bis);
}

constexpr ReportOption umsatzRows[] = {
    {OptionKind::Check, controlNet, "Nettobe&träge"_w, "Umsatz", true, 0, 0},
    {OptionKind::Amount, controlMinimum, "&Mindestumsatz:", nullptr, false, 0, 12},
    {OptionKind::Text, controlLand, "&Land:", nullptr, false, 0, 3},
    {OptionKind::Text, controlPlz, "&PLZ-Bereich:", nullptr, false, 0, 6},
};

constexpr ReportKind umsatzKind = {
    .Dialog = {.Id = 119,
               .Title = "Umsatzstatistik",
               .HelpContext = 3094,
               .PeriodOptions = PeriodMonths | PeriodQuarters | PeriodYear,
               .Kontoarten = KontoartKreditor | KontoartDebitor,
               .HasSingle = true,
               .RangeFirst = true,
               .Options = {umsatzRows, static_cast<int>(std::size(umsatzRows))},
               .Words = {.Konten = "Aus&wahl", .Einzeln = "&einzeln", .Bildschirm = "Bildschirm"},
               .Check = CheckMinimum},
    .RowOf = [](const ReportRun &) { return ReportUmsatzstatistik; },
    .Send = SendRecords,
};

} // namespace

} // namespace vark

VarkWindow VARK_CALL VARK_UmsatzStatistik(int32_t mandant, VarkWindow parent, ReportParams *params)
{
    return vark::RunReport(vark::umsatzKind, mandant, parent, params);
}
