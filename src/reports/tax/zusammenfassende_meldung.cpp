// Zusammenfassende Meldung: the turnover of every Debitor whose USt-IdNr names another country than the
// Mandant's. Only the Soll side counts: credit notes and payments on the Haben side do not reduce it.
#include "src/frame/held_tables.h"
#include "src/reports/frame/report_run.h"
#include "src/values/amounts.h"
#include "src/values/sums.h"
#include "src/walks/account_walk.h"
#include "src/walks/other_year.h"
#include "text/fixed_text.h"

#include <cstddef>

namespace vark {

using text::CopyText;

namespace {

#pragma pack(push, 1)

struct MeldungHeader {
    char Mandant[41];
    char Zeitraum[50];
};

struct MeldungLine {
    AccountNumber Konto; // as the record has it
    char Kuerzel[9];
    char Name[26];
    char UstId[16];
    AmountText Umsatz;
    int32_t IsKennzeichenEins;
};

#pragma pack(pop)

static_assert(offsetof(MeldungHeader, Zeitraum) == 41);
static_assert(offsetof(MeldungLine, Kuerzel) == 8);
static_assert(offsetof(MeldungLine, Name) == 17);
static_assert(offsetof(MeldungLine, UstId) == 43);
static_assert(offsetof(MeldungLine, Umsatz) == 59);
static_assert(offsetof(MeldungLine, IsKennzeichenEins) == 72);
static_assert(sizeof(MeldungLine) == 76);

struct Meldung {
    const ReportRun *Run;
    ThreadContext *Context;
    const YearPart *Working;
    const YearPart *Earlier; // null unless both years count; its debi lies under slot 29
};

char Upper(char letter)
{
    return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
}

// Two letters name the country; a shorter text ends at its NUL.
bool AreOfOneCountry(const char *a, const char *b)
{
    for (int i = 0; i < 2; ++i) {
        if (Upper(a[i]) != Upper(b[i])) return false;
        if (a[i] == 0) break;
    }
    return true;
}

bool SumPeriod(const Meldung &meldung, const PersonalRecord &debitor, AmountText &sum)
{
    const YearPart &working = *meldung.Working;
    CopyText(sum, zeroAmount);
    if (!SumMonthsSoll(sum, debitor.Umsaetze, working.FirstMonth, working.LastMonth)) return false;
    if (meldung.Earlier == nullptr) return true;
    const YearPart &earlier = *meldung.Earlier;
    AnyAccount before;
    bool found = false;
    if (!ReadAccount(*meldung.Context, SlotFree29, debitor.Konto, before, found)) return false;
    return !found || SumMonthsSoll(sum, before.Personal.Umsaetze, earlier.FirstMonth, earlier.LastMonth);
}

bool SendDebitor(const Meldung &meldung, const PersonalRecord &debitor)
{
    MeldungLine line{};
    CopyText(line.Konto, debitor.Konto);
    CopyText(line.Kuerzel, debitor.Kuerzel);
    CopyText(line.Name, debitor.Name1);
    CopyText(line.UstId, debitor.UstId);
    line.IsKennzeichenEins = debitor.Kennzeichen == 1 ? 1 : 0;
    return SumPeriod(meldung, debitor, line.Umsatz) && AddReportRecord(meldung.Run->Report, 1, &line);
}

bool SendDebitoren(const Meldung &meldung)
{
    const char *const own = meldung.Run->Mandant.UstId;
    AccountScan scan;
    bool isGood = BeginAllAccounts(scan, *meldung.Context, KindOfTable(TableDebi));
    while (isGood && scan.Found) {
        const PersonalRecord &debitor = scan.Record.Personal;
        const bool isListed = debitor.UstId[0] != 0 && !AreOfOneCountry(debitor.UstId, own);
        isGood = (!isListed || SendDebitor(meldung, debitor)) && NextAccount(scan);
    }
    return isGood;
}

bool SendHeader(const ReportRun &run)
{
    MeldungHeader header{};
    CopyText(header.Mandant, run.Mandant.Name);
    PeriodTitle title;
    BuildPeriodTitle(*run.Context, run.Choice.Period, title, false, true);
    CopyText(header.Zeitraum, title);
    return AddReportRecord(run.Report, 0, &header);
}

bool SendRecords(ReportRun &run)
{
    ThreadContext &context = *run.Context;
    const PeriodSelection &period = run.Choice.Period;
    const PeriodYears years =
        YearsOfPeriod(context, period.VonDatum, period.BisDatum, period.VonPeriode, period.BisPeriode);
    const Meldung meldung = {&run, &context, &WorkingPart(years), EarlierPart(years)};
    HeldTables held(context);
    return SelectYearsOf(held, years, TableDebi) && SendHeader(run) && SendDebitoren(meldung);
}

constexpr ReportKind zusammenfassendeMeldung = {
    .Dialog = {.Id = 123,
               .Title = "Zusammenfassende Meldung",
               .HelpContext = 3083,
               .PeriodOptions = PeriodMonths | PeriodQuarters | PeriodYear | PeriodCalendar,
               .Words = {.Zeitraum = "&Zeitraum", .Ausgabe = "Aus&gabe"}},
    .RowOf = [](const ReportRun &) { return ReportZusammenfassendeMeldung; },
    .Send = SendRecords,
};

} // namespace

} // namespace vark

VarkWindow VARK_CALL VARK_ZusammenfassendeMeldung(int32_t mandant, VarkWindow parent, ReportParams *params)
{
    return vark::RunReport(vark::zusammenfassendeMeldung, mandant, parent, params);
}
