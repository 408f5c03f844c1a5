// Umsatzsteuerverprobung: the figures by which a tax return is checked by hand. First the accounts behind
// each Kennzahl, then the tax accounts that the tax keys name. Its sign is the opposite of the return's: Soll
// less Haben.
#include "src/frame/held_tables.h"
#include "src/frame/record_store.h"
#include "src/reports/frame/report_run.h"
#include "src/values/account_numbers.h"
#include "src/values/amounts.h"
#include "src/values/sums.h"
#include "src/walks/account_walk.h"
#include "src/walks/other_year.h"
#include "text/fixed_text.h"

#include <cstddef>
#include <cstdlib>

namespace vark {

using text::CopyText;

namespace {

#pragma pack(push, 1)

struct VerprobungHeader {
    char Mandant[41];
    char Zeitraum[80];
};

struct SectionTitle {
    char Titel[50];
    int32_t IsKennzahlen;
};

struct GroupHead {
    char Titel[50]; // empty for a Kennzahl
};

struct KontoFields {
    AccountNumber Konto; // without leading blanks
    char Kuerzel[10];
    char Name[41];
};

struct KennzahlLine {
    KontoFields Konto;
    int32_t Kennzahl;
    AmountText Betrag;
};

struct SteuerkontoLine {
    KontoFields Konto;
    AmountText Betrag;
};

#pragma pack(pop)

static_assert(sizeof(VerprobungHeader) == 121);
static_assert(offsetof(SectionTitle, IsKennzahlen) == 50);
static_assert(offsetof(KennzahlLine, Konto.Kuerzel) == 8);
static_assert(offsetof(KennzahlLine, Konto.Name) == 18);
static_assert(offsetof(KennzahlLine, Kennzahl) == 59);
static_assert(offsetof(KennzahlLine, Betrag) == 63);
static_assert(offsetof(SteuerkontoLine, Betrag) == 59);

enum RecordKind : int32_t { Header = 0, Section = 1, Group = 2, Kennzahlkonto = 3, Steuerkonto = 4 };

enum class Steuergruppe : uint8_t { Umsatzsteuer, Vorsteuer };

struct Verprobungsknoten {
    KontoFields Konto;
    AccountNumber Number; // right-justified
    int32_t Kennzahl;     // of the list of Kennzahlen
    Steuergruppe Gruppe;  // of the list of tax accounts
    AmountText Betrag;
    Verprobungsknoten *Next;
};

// Frees its nodes at the end of the scope.
struct Verprobungsliste {
    Verprobungsknoten *Head = nullptr;

    Verprobungsliste() = default;
    Verprobungsliste(const Verprobungsliste &) = delete;
    Verprobungsliste &operator=(const Verprobungsliste &) = delete;
    ~Verprobungsliste()
    {
        while (Head != nullptr) {
            Verprobungsknoten *const next = Head->Next;
            std::free(Head);
            Head = next;
        }
    }
};

struct Verprobung {
    const ReportRun *Run;
    ThreadContext *Context;
    const YearPart *Working;
    const YearPart *Earlier; // null unless both years count; its sako lies under slot 29
};

constexpr int32_t beforeAllKennzahlen = -1;

// Soll less Haben of the period, in both of its years.
bool SumPeriod(const Verprobung &verprobung, const SakoRecord &account, AmountText &sum)
{
    const YearPart &working = *verprobung.Working;
    CopyText(sum, zeroAmount);
    if (!AddMonthBalances(sum, account.Umsaetze, working.FirstMonth, working.LastMonth)) return false;
    if (verprobung.Earlier == nullptr) return true;
    const YearPart &earlier = *verprobung.Earlier;
    AnyAccount before;
    bool found = false;
    if (!ReadAccount(*verprobung.Context, SlotFree29, account.Konto, before, found)) return false;
    return !found || AddMonthBalances(sum, before.Sako.Umsaetze, earlier.FirstMonth, earlier.LastMonth);
}

// A node of an account, not yet in a list. Null when memory has run out or a sum has no room.
Verprobungsknoten *MakeNode(const Verprobung &verprobung, const SakoRecord &account)
{
    auto *node = static_cast<Verprobungsknoten *>(std::calloc(1, sizeof(Verprobungsknoten)));
    if (node == nullptr) return nullptr;
    StripNumber(node->Konto.Konto, account.Konto);
    CopyText(node->Konto.Kuerzel, account.Kuerzel);
    CopyText(node->Konto.Name, account.Name);
    CopyText(node->Number, account.Konto);
    node->Kennzahl = account.Kennzahl;
    if (SumPeriod(verprobung, account, node->Betrag)) return node;
    std::free(node);
    return nullptr;
}

// ---- Kennzahlen ----

// Before the first node of the same or a higher Kennzahl, so that of one Kennzahl the accounts fall.
void InsertByKennzahl(Verprobungsliste &list, Verprobungsknoten *node)
{
    Verprobungsknoten **place = &list.Head;
    while (*place != nullptr && (*place)->Kennzahl < node->Kennzahl) {
        place = &(*place)->Next;
    }
    node->Next = *place;
    *place = node;
}

bool CollectKennzahlkonten(const Verprobung &verprobung, Verprobungsliste &list)
{
    AccountScan scan;
    bool isGood = BeginAllAccounts(scan, *verprobung.Context, KindOfTable(TableSako));
    while (isGood && scan.Found) {
        if (scan.Record.Sako.Kennzahl != 0) {
            Verprobungsknoten *const node = MakeNode(verprobung, scan.Record.Sako);
            if (node == nullptr) return false;
            InsertByKennzahl(list, node);
        }
        isGood = NextAccount(scan);
    }
    return isGood;
}

bool SendSection(const Verprobung &verprobung, const char *title, bool isKennzahlen)
{
    SectionTitle section{};
    CopyText(section.Titel, title);
    section.IsKennzahlen = isKennzahlen ? 1 : 0;
    return AddReportRecord(verprobung.Run->Report, Section, &section);
}

bool SendGroup(const Verprobung &verprobung, const char *title)
{
    GroupHead head{};
    CopyText(head.Titel, title);
    return AddReportRecord(verprobung.Run->Report, Group, &head);
}

bool SendKennzahlen(const Verprobung &verprobung, const Verprobungsliste &list)
{
    if (!SendSection(verprobung, "Kennzifferzuordnung", true)) return false;
    int32_t last = beforeAllKennzahlen;
    for (const Verprobungsknoten *node = list.Head; node != nullptr; node = node->Next) {
        if (node->Kennzahl != last && !SendGroup(verprobung, "")) return false;
        last = node->Kennzahl;
        KennzahlLine line{};
        line.Konto = node->Konto;
        line.Kennzahl = node->Kennzahl;
        CopyText(line.Betrag, node->Betrag);
        if (!AddReportRecord(verprobung.Run->Report, Kennzahlkonto, &line)) return false;
    }
    return true;
}

// ---- Tax accounts ----

bool IsListed(const Verprobungsliste &list, const AccountNumber &number, Steuergruppe group)
{
    for (const Verprobungsknoten *node = list.Head; node != nullptr; node = node->Next) {
        if (node->Gruppe == group && text::SameText(node->Number, number)) return true;
    }
    return false;
}

// An account of a tax key; each is listed once a group, one that is not there not at all.
bool CollectSteuerkonto(const Verprobung &verprobung, Verprobungsliste &list, const AccountNumber &number,
                        Steuergruppe group)
{
    if (number[0] == 0 || IsListed(list, number, group)) return true;
    AnyAccount account;
    bool found = false;
    if (!ReadAccount(*verprobung.Context, TableSako, number, account, found)) return false;
    if (!found) return true;
    Verprobungsknoten *const node = MakeNode(verprobung, account.Sako);
    if (node == nullptr) return false;
    node->Gruppe = group;
    node->Next = list.Head;
    list.Head = node;
    return true;
}

bool CollectSteuerkonten(const Verprobung &verprobung, Verprobungsliste &list)
{
    ThreadContext &context = *verprobung.Context;
    StekeRecord row;
    bool found = false;
    bool isGood = GetFirstF(context, &row, found, TableSteke);
    while (isGood && found) {
        isGood = CollectSteuerkonto(verprobung, list, row.Umsatzsteuerkonto, Steuergruppe::Umsatzsteuer) &&
                 CollectSteuerkonto(verprobung, list, row.Vorsteuerkonto, Steuergruppe::Vorsteuer) &&
                 GetNextF(context, &row, found, TableSteke);
    }
    return isGood;
}

bool SendSteuerkontenOf(const Verprobung &verprobung, const Verprobungsliste &list, const char *title,
                        Steuergruppe group)
{
    if (!SendGroup(verprobung, title)) return false;
    for (const Verprobungsknoten *node = list.Head; node != nullptr; node = node->Next) {
        if (node->Gruppe != group) continue;
        SteuerkontoLine line{};
        line.Konto = node->Konto;
        CopyText(line.Betrag, node->Betrag);
        if (!AddReportRecord(verprobung.Run->Report, Steuerkonto, &line)) return false;
    }
    return true;
}

// ---- The report ----

bool SendHeader(const ReportRun &run)
{
    VerprobungHeader header{};
    CopyText(header.Mandant, run.Mandant.Name);
    PeriodTitle title;
    BuildPeriodTitle(*run.Context, run.Choice.Period, title, false, true);
    CopyText(header.Zeitraum, title);
    return AddReportRecord(run.Report, Header, &header);
}

bool SendRecords(ReportRun &run)
{
    ThreadContext &context = *run.Context;
    const PeriodSelection &period = run.Choice.Period;
    const PeriodYears years =
        YearsOfPeriod(context, period.VonDatum, period.BisDatum, period.VonPeriode, period.BisPeriode);
    const Verprobung verprobung = {&run, &context, &WorkingPart(years), EarlierPart(years)};
    HeldTables held(context);
    if (!SelectYearsOf(held, years, TableSako)) return false;
    Verprobungsliste kennzahlen;
    Verprobungsliste steuerkonten;
    return SendHeader(run) && CollectKennzahlkonten(verprobung, kennzahlen) &&
           SendKennzahlen(verprobung, kennzahlen) && SendSection(verprobung, "Steuerkonten", false) &&
           CollectSteuerkonten(verprobung, steuerkonten) &&
           SendSteuerkontenOf(verprobung, steuerkonten, "Umsatzsteuerkonten", Steuergruppe::Umsatzsteuer) &&
           SendSteuerkontenOf(verprobung, steuerkonten, "Vorsteuerkonten", Steuergruppe::Vorsteuer);
}

// The tax keys stay open from before the dialog to the end; without them there is no dialog.
bool OpenKeys(ReportRun &run) { return OpenTable(*run.Context, TableSteke); }

void CloseKeys(ReportRun &run)
{
    if (run.Context->OpenCounts[TableSteke] > 0) CloseTable(*run.Context, TableSteke);
}

constexpr ReportKind umsatzsteuerverprobung = {
    .Dialog = {.Id = 128,
               .Title = "Umsatzsteuerverprobung",
               .HelpContext = 10023,
               .PeriodOptions = PeriodMonths | PeriodQuarters | PeriodYear | PeriodCalendar,
               .Words = {.Zeitraum = "&Zeitraum", .Ausgabe = "Aus&gabe"}},
    .RowOf = [](const ReportRun &) { return ReportVerprobung; },
    .Before = OpenKeys,
    .Send = SendRecords,
    .Close = CloseKeys,
};

} // namespace

} // namespace vark

VarkWindow VARK_CALL VARK_UmsatzSteuerVerprobung(int32_t mandant, VarkWindow parent, ReportParams *params)
{
    return vark::RunReport(vark::umsatzsteuerverprobung, mandant, parent, params);
}
