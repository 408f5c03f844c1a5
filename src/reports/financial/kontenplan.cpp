// Kontenplan: the Sachkonten in the order of the trees of GuV and Bilanz, so that each shows where it
// belongs, then those that no tree holds; Kreditoren and Debitoren as a plain list with their master data.
#include "src/booking/tax_rates.h"
#include "src/frame/mandant.h"
#include "src/frame/record_store.h"
#include "src/reports/frame/report_run.h"
#include "src/values/account_numbers.h"
#include "src/values/dates.h"
#include "src/walks/account_walk.h"
#include "src/walks/tree_walk.h"
#include "text/fixed_text.h"
#include "text/windows1252.h"

#include <cstddef>
#include <cstring>

namespace vark {

using namespace text;

namespace {

using GroupLabel = char[30];
using GroupTitle = char[26];

#pragma pack(push, 1)

struct KontenplanHeader {
    char Mandant[41];
    RangeWord Kontoart;
    RangeText Bereich;
};

struct SachkontoLine {
    AccountNumber Konto; // without leading blanks
    char Kuerzel[9];
    uint32_t IsZustandEins;
    PackedDate Datum; // calendar month and year
    char Name[41];
    GroupLabel Liste;
    GroupTitle Gruppe;
    char Steuertext[40];
    RateText Steuersatz;
    uint32_t HasFestenSatz;
    uint32_t HasKontenplanflag;
    int32_t Kennzahl;
    uint32_t HasKosten;
};

struct PekoLine {
    AccountNumber Konto; // without leading blanks
    char Kuerzel[9];
    uint32_t IsZustandEins;
    PackedDate Datum; // calendar month and year
    char Name1[26];
    char Name2[26];
    char Adresse1[31];
    char Plz[7];
    char Land[4];
    char Adresse2[31];
    AccountNumber Gegenkonto; // without leading blanks
    char Blz[9];
    char Bankkonto[11];
    char Bank[28];
    int32_t Wert1;
    int32_t Wert2;
    RateText Skonto;
    int32_t Mahnkennziffer;
    char Freitext[16];
    char Waehrung[5];
    uint32_t IsKennzeichenEins;
    char Text[28];
};

#pragma pack(pop)

static_assert(offsetof(KontenplanHeader, Kontoart) == 41);
static_assert(offsetof(KontenplanHeader, Bereich) == 71);
static_assert(offsetof(SachkontoLine, Kuerzel) == 8);
static_assert(offsetof(SachkontoLine, IsZustandEins) == 17);
static_assert(offsetof(SachkontoLine, Datum) == 21);
static_assert(offsetof(SachkontoLine, Name) == 28);
static_assert(offsetof(SachkontoLine, Liste) == 69);
static_assert(offsetof(SachkontoLine, Gruppe) == 99);
static_assert(offsetof(SachkontoLine, Steuertext) == 125);
static_assert(offsetof(SachkontoLine, Steuersatz) == 165);
static_assert(offsetof(SachkontoLine, HasFestenSatz) == 171);
static_assert(offsetof(SachkontoLine, HasKontenplanflag) == 175);
static_assert(offsetof(SachkontoLine, Kennzahl) == 179);
static_assert(offsetof(SachkontoLine, HasKosten) == 183);
static_assert(sizeof(SachkontoLine) == 187);
static_assert(offsetof(PekoLine, IsZustandEins) == 17);
static_assert(offsetof(PekoLine, Datum) == 21);
static_assert(offsetof(PekoLine, Name1) == 28);
static_assert(offsetof(PekoLine, Name2) == 54);
static_assert(offsetof(PekoLine, Adresse1) == 80);
static_assert(offsetof(PekoLine, Plz) == 111);
static_assert(offsetof(PekoLine, Land) == 118);
static_assert(offsetof(PekoLine, Adresse2) == 122);
static_assert(offsetof(PekoLine, Gegenkonto) == 153);
static_assert(offsetof(PekoLine, Blz) == 161);
static_assert(offsetof(PekoLine, Bankkonto) == 170);
static_assert(offsetof(PekoLine, Bank) == 181);
static_assert(offsetof(PekoLine, Wert1) == 209);
static_assert(offsetof(PekoLine, Wert2) == 213);
static_assert(offsetof(PekoLine, Skonto) == 217);
static_assert(offsetof(PekoLine, Mahnkennziffer) == 223);
static_assert(offsetof(PekoLine, Freitext) == 227);
static_assert(offsetof(PekoLine, Waehrung) == 243);
static_assert(offsetof(PekoLine, IsKennzeichenEins) == 248);
static_assert(offsetof(PekoLine, Text) == 252);
static_assert(sizeof(PekoLine) == 280);

// What the lines of one report have in common.
struct Kontenplan {
    const ReportRun *Run;
    ThreadContext *Context;
    AccountNumber Von; // in the form of the tables' keys
    AccountNumber Bis;
    RateText Regelsatz; // of today
    RateText Ermaessigt;
};

// The trees in the order of the report.
constexpr struct {
    TableId Table;
    const char *Label;
} trees[] = {{TableGuvauf, "GuV"}, {TableBilaktau, "Bilanz Aktiv"}, {TableBilpasau, "Bilanz Passiv"}};

constexpr char notAssigned[] = "ohne Zuordnung";
constexpr char noTax[] = "00,00";

bool SendHeader(const ReportRun &run)
{
    KontenplanHeader header{};
    CopyText(header.Mandant, run.Mandant.Name);
    RangeTexts(run.Choice.Range, &header.Kontoart, header.Bereich, false);
    return AddReportRecord(run.Report, 0, &header);
}

// ---- Kreditoren and Debitoren ----

bool SendPeko(const Kontenplan &plan, const AccountScan &account)
{
    const ThreadContext &context = *plan.Context;
    const PersonalRecord &record = account.Record.Personal;
    PekoLine line{};
    FillAccount(line.Konto, line.Kuerzel, line.Name1, *account.Kind, account.Record);
    line.IsZustandEins = record.Zustand == 1 ? 1 : 0;
    PackedToCalendar(record.Datum, line.Datum, context.FirstFiscalMonth);
    CopyText(line.Name2, record.Name2);
    CopyText(line.Adresse1, record.Adresse1);
    CopyText(line.Plz, record.Plz);
    CopyText(line.Land, record.Land);
    CopyText(line.Adresse2, record.Adresse2);
    StripNumber(line.Gegenkonto, record.Gegenkonto);
    CopyText(line.Blz, record.Blz);
    CopyText(line.Bankkonto, record.Bankkonto);
    CopyText(line.Bank, record.Bank);
    line.Wert1 = record.Wert1;
    line.Wert2 = record.Wert2;
    CopyText(line.Skonto, record.Skonto);
    line.Mahnkennziffer = record.Mahnkennziffer;
    CopyText(line.Freitext, record.UstId);
    CopyText(line.Waehrung, record.Waehrung);
    if (line.Waehrung[0] == 0) CopyText(line.Waehrung, context.MandantWaehrung);
    line.IsKennzeichenEins = record.Kennzeichen == 1 ? 1 : 0;
    CopyText(line.Text, record.Kontenplantext);
    return AddReportRecord(plan.Run->Report, 1, &line);
}

bool SendPekos(const Kontenplan &plan, const AccountKind &kind)
{
    AccountScan account;
    bool isGood = SendHeader(*plan.Run) && BeginAccounts(account, *plan.Context, kind, plan.Von, plan.Bis);
    while (isGood && account.Found) {
        isGood = SendPeko(plan, account) && NextAccount(account);
    }
    return isGood;
}

// ---- Sachkonten ----

// The rates that regular and reduced accounts show. Today is read as its six packed digits, whose year counts
// from 1980, as if they were the calendar's: a day some twenty years ahead, for which the newest rate holds.
// The reduced rate is the one with the number that the regular one has: the two codes are numbered alike.
void FindRates(Kontenplan &plan)
{
    ThreadContext &context = *plan.Context;
    CopyText(plan.Regelsatz, noTax);
    CopyText(plan.Ermaessigt, noTax);
    char today[sizeof context.TodayLong] = {};
    CopyText(today, context.TodayPacked);
    ParseDateText(context, today, sizeof today, false);
    PackedDate ahead;
    CopyText(ahead, today);
    StekeRecord row{};
    bool found = false;
    if (!FindTaxRate(context, SteuerRegelsatz, ahead, row, found) || !found) return;
    CopyText(plan.Regelsatz, row.Satz);
    StekeRecord reduced{};
    const KeyBuffer key = KeyOfShortNumber(SteuerErmaessigt, row.Folge);
    if (GetEqual(context, &reduced, key, found, KeyCode(TableSteke, 2)) && found)
        CopyText(plan.Ermaessigt, reduced.Satz);
}

void FillTax(const Kontenplan &plan, const SakoRecord &record, SachkontoLine &line)
{
    CopyText(line.Steuersatz, record.Steuersatz);
    switch (record.Steuerflags & ~SteuerVorsteuer) {
    case 0:
        CopyText(line.Steuertext, "keine");
        CopyText(line.Steuersatz, noTax);
        break;
    case SteuerRegelsatz:
        CopyText(line.Steuertext, "Regelsteuersatz");
        CopyText(line.Steuersatz, plan.Regelsatz);
        break;
    case SteuerErmaessigt:
        CopyText(line.Steuertext, "ermäßigter Satz"_w);
        CopyText(line.Steuersatz, plan.Ermaessigt);
        break;
    case SteuerNullsatz: CopyText(line.Steuertext, "Nullsteuersatz"); break;
    case SteuerSonstigerSatz: CopyText(line.Steuertext, "sonstiger Satz"); break;
    case SteuerEg: CopyText(line.Steuertext, "EG-Steuersatz"); break;
    default: break;
    }
}

// The line of an account under a list's label and a group's title.
bool SendSachkonto(const Kontenplan &plan, const AnyAccount &account, const char *label, const char *title)
{
    const SakoRecord &record = account.Sako;
    SachkontoLine line{};
    FillAccount(line.Konto, line.Kuerzel, line.Name, KindOfTable(TableSako), account);
    line.IsZustandEins = record.Zustand == 1 ? 1 : 0;
    PackedToCalendar(record.Datum, line.Datum, plan.Context->FirstFiscalMonth);
    CopyText(line.Liste, label);
    CopyText(line.Gruppe, title);
    FillTax(plan, record, line);
    line.HasFestenSatz = record.FesterSatz != 0 ? 1 : 0;
    line.HasKontenplanflag = record.Kontenplanflag != 0 ? 1 : 0;
    line.Kennzahl = record.Kennzahl;
    line.HasKosten = record.MitKosten != 0 ? 1 : 0;
    return AddReportRecord(plan.Run->Report, 1, &line);
}

// A leaf of a tree. One without its account is left out.
bool SendLeaf(const Kontenplan &plan, const TreeScan &tree, const char *label)
{
    if (tree.IsGegenposten || IsBeforeLimit(tree.Konto, plan.Von) || IsBehindLimit(tree.Konto, plan.Bis))
        return true;
    AnyAccount account;
    bool found = false;
    if (!ReadAccount(*plan.Context, TableSako, tree.Konto, account, found)) return false;
    return !found || SendSachkonto(plan, account, label, TitleAbove(tree));
}

// An account that was placed in the table but in no group. Only the upper limit ends their list, and here an
// account that is missing is a failure.
bool SendUngrouped(const Kontenplan &plan, TreeScan &tree, const char *label)
{
    AnyAccount account;
    bool found = false;
    if (!ReadAccount(*plan.Context, TableSako, tree.Konto, account, found) || !found) return false;
    if (!IsBehindLimit(tree.Konto, plan.Bis)) return SendSachkonto(plan, account, label, notAssigned);
    EndTree(tree);
    return true;
}

bool SendNode(const Kontenplan &plan, TreeScan &tree, const char *label)
{
    switch (tree.Place) {
    case TreePlace::Leaf: return SendLeaf(plan, tree, label);
    case TreePlace::Ungrouped: return SendUngrouped(plan, tree, label);
    default: return true;
    }
}

bool SendTree(const Kontenplan &plan, TableId table, const char *label)
{
    TreeScan tree(*plan.Context);
    bool isGood = BeginTree(tree, table);
    while (isGood && tree.Found) {
        isGood = SendNode(plan, tree, label) && NextNode(tree);
    }
    return isGood;
}

// The accounts that belong nowhere.
bool SendUnassigned(const Kontenplan &plan)
{
    AccountScan account;
    bool isGood = BeginAccounts(account, *plan.Context, KindOfTable(TableSako), plan.Von, plan.Bis);
    while (isGood && account.Found) {
        const bool isUnassigned = account.Record.Sako.Zuordnung == ZuordnungKeine;
        isGood =
            (!isUnassigned || SendSachkonto(plan, account.Record, notAssigned, "")) && NextAccount(account);
    }
    return isGood;
}

bool SendSachkonten(Kontenplan &plan)
{
    FindRates(plan);
    if (!SendHeader(*plan.Run)) return false;
    for (const auto &tree : trees) {
        if (!SendTree(plan, tree.Table, tree.Label)) return false;
    }
    return SendUnassigned(plan);
}

bool SendRecords(ReportRun &run)
{
    Kontenplan plan{};
    plan.Run = &run;
    plan.Context = run.Context;
    const AccountKind &kind = KindOfTable(RangeLimits(run.Choice.Range, plan.Von, plan.Bis));
    return kind.Table == TableSako ? SendSachkonten(plan) : SendPekos(plan, kind);
}

ReportRow RowOf(const ReportRun &run)
{
    return run.Choice.Range.KontoArt == KontoartSachkonto ? ReportKontenplanSako : ReportKontenplanPeko;
}

constexpr ReportKind kontenplan = {
    .Dialog = {.Id = 110,
               .Title = "Kontenplan",
               .HelpContext = 3007,
               .Kontoarten = KontoartSachkonto | KontoartKreditor | KontoartDebitor},
    .RowOf = RowOf,
    .Send = SendRecords,
};

} // namespace

} // namespace vark

VarkWindow VARK_CALL VARK_Kontenplan(int32_t mandant, VarkWindow parent, ReportParams *params)
{
    return vark::RunReport(vark::kontenplan, mandant, parent, params);
}
