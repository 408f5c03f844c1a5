// Kontenplan: the Sachkonten in the order of the trees of GuV and Bilanz, so that each shows where it
// belongs, then those that no tree holds; Kreditoren and Debitoren as a plain list with their master data.
#include "src/booking/tax_rates.h"
#include "src/frame/mandant.h"
#include "src/frame/record_store.h"
#include "src/model/structure_records.h"
#include "src/reports/frame/report_run.h"
#include "src/values/account_numbers.h"
#include "src/values/amounts.h"
#include "src/values/dates.h"
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
    int NodesLeft; // a damaged tree whose nodes go round comes to an end as well
};

// Where a line stands.
struct GroupPath {
    GroupLabel Label;
    GroupTitle Title;
};

constexpr int mostNodes = 1000000;
constexpr int deepestTree = 100;
constexpr char noTax[] = "00,00";

bool SendHeader(const ReportRun &run)
{
    KontenplanHeader header{};
    CopyText(header.Mandant, run.Mandant.Name);
    RangeTexts(run.Choice.Range, &header.Kontoart, header.Bereich, false);
    return AddReportRecord(run.Report, 0, &header);
}

// ---- Kreditoren and Debitoren ----

bool SendPeko(const Kontenplan &plan, const PersonalRecord &record)
{
    const ThreadContext &context = *plan.Context;
    PekoLine line{};
    CopyText(line.Konto, record.Konto);
    TrimLeft(line.Konto, sizeof line.Konto);
    CopyText(line.Kuerzel, record.Kuerzel);
    line.IsZustandEins = record.Zustand == 1 ? 1 : 0;
    PackedToCalendar(record.Datum, line.Datum, context.FirstFiscalMonth);
    CopyText(line.Name1, record.Name1);
    CopyText(line.Name2, record.Name2);
    CopyText(line.Adresse1, record.Adresse1);
    CopyText(line.Plz, record.Plz);
    CopyText(line.Land, record.Land);
    CopyText(line.Adresse2, record.Adresse2);
    CopyText(line.Gegenkonto, record.Gegenkonto);
    TrimLeft(line.Gegenkonto, sizeof line.Gegenkonto);
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

bool SendPekos(const Kontenplan &plan, TableId table)
{
    ThreadContext &context = *plan.Context;
    if (!SendHeader(*plan.Run) || !OpenTable(context, table)) return false;
    PersonalRecord record{};
    bool found = false;
    bool isGood = GetGreaterEqualF(context, &record, KeyOfText(plan.Von, sizeof plan.Von), found, table);
    while (isGood && found && !IsBehindLimit(record.Konto, plan.Bis)) {
        isGood = SendPeko(plan, record) && GetNextF(context, &record, found, table);
    }
    CloseTable(context, table);
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

bool SendSachkonto(const Kontenplan &plan, const SakoRecord &record, const GroupPath &path)
{
    SachkontoLine line{};
    CopyText(line.Konto, record.Konto);
    TrimLeft(line.Konto, sizeof line.Konto);
    CopyText(line.Kuerzel, record.Kuerzel);
    line.IsZustandEins = record.Zustand == 1 ? 1 : 0;
    PackedToCalendar(record.Datum, line.Datum, plan.Context->FirstFiscalMonth);
    CopyText(line.Name, record.Name);
    CopyText(line.Liste, path.Label);
    CopyText(line.Gruppe, path.Title);
    FillTax(plan, record, line);
    line.HasFestenSatz = record.FesterSatz != 0 ? 1 : 0;
    line.HasKontenplanflag = record.Kontenplanflag != 0 ? 1 : 0;
    line.Kennzahl = record.Kennzahl;
    line.HasKosten = record.MitKosten != 0 ? 1 : 0;
    return AddReportRecord(plan.Run->Report, 1, &line);
}

void NumberOfNode(const StructureRecord &node, AccountNumber &number)
{
    CopyText(number, node.Text);
    RightJustify(number, accountDigits);
}

bool FindSachkonto(const Kontenplan &plan, const StructureRecord &node, SakoRecord &record, bool &found)
{
    AccountNumber number;
    NumberOfNode(node, number);
    return GetEqual(*plan.Context, &record, KeyOfText(number, sizeof number), found, TableSako);
}

// A leaf of the tree. One without its account is left out.
bool SendLeaf(const Kontenplan &plan, const StructureRecord &node, const GroupPath &path)
{
    AccountNumber number;
    NumberOfNode(node, number);
    const bool isBefore = plan.Von[0] != 0 && std::memcmp(number, plan.Von, accountDigits) < 0;
    if (isBefore || IsBehindLimit(number, plan.Bis)) return true;
    SakoRecord record{};
    bool found = false;
    if (!FindSachkonto(plan, node, record, found)) return false;
    return !found || SendSachkonto(plan, record, path);
}

// The node `id`, what hangs below it, and the siblings behind it. A node that is missing is a damaged tree.
bool Walk(Kontenplan &plan, TableId table, const GroupPath &path, int32_t id, int depth)
{
    if (depth > deepestTree) return false;
    StructureRecord node{};
    for (; id != 0; id = node.Next) {
        bool found = false;
        if (--plan.NodesLeft < 0) return false;
        if (!GetEqual(*plan.Context, &node, KeyOfNumber(id), found, table) || !found) return false;
        if ((node.Art & StructureGruppe) != 0) {
            GroupPath inner = path;
            CopyText(inner.Title, node.Text);
            if (node.Child != 0 && !Walk(plan, table, inner, node.Child, depth + 1)) return false;
        } else if ((node.Art & StructureGegenposten) == 0 && !SendLeaf(plan, node, path)) {
            return false;
        }
    }
    return true;
}

// The accounts that were placed in a table but in no group of it. Only the upper limit ends their list, and
// here an account that is missing is a failure.
bool SendUngrouped(const Kontenplan &plan, TableId table, const GroupPath &path)
{
    ThreadContext &context = *plan.Context;
    StructureRecord node{};
    bool found = false;
    bool isGood = GetEqual(context, &node, KeyOfNumber(0), found, table);
    while (isGood && found && node.Id == 0) {
        SakoRecord record{};
        bool exists = false;
        if (!FindSachkonto(plan, node, record, exists) || !exists) return false;
        if (IsBehindLimit(record.Konto, plan.Bis)) break;
        isGood = SendSachkonto(plan, record, path) && GetNextF(context, &node, found, table);
    }
    return isGood;
}

bool SendTree(Kontenplan &plan, TableId table, const char *label)
{
    GroupPath path{};
    CopyText(path.Label, label);
    if (!OpenTable(*plan.Context, table)) return false;
    plan.NodesLeft = mostNodes;
    bool isGood = Walk(plan, table, path, structureRoot, 0);
    CopyText(path.Title, "ohne Zuordnung");
    isGood = isGood && SendUngrouped(plan, table, path);
    CloseTable(*plan.Context, table);
    return isGood;
}

// The accounts that belong nowhere.
bool SendUnassigned(const Kontenplan &plan)
{
    ThreadContext &context = *plan.Context;
    GroupPath path{};
    CopyText(path.Label, "ohne Zuordnung");
    SakoRecord record{};
    bool found = false;
    bool isGood = GetGreaterEqualF(context, &record, KeyOfText(plan.Von, sizeof plan.Von), found, TableSako);
    while (isGood && found && !IsBehindLimit(record.Konto, plan.Bis)) {
        if (record.Zuordnung == ZuordnungKeine) isGood = SendSachkonto(plan, record, path);
        isGood = isGood && GetNextF(context, &record, found, TableSako);
    }
    return isGood;
}

bool SendSachkonten(Kontenplan &plan)
{
    ThreadContext &context = *plan.Context;
    FindRates(plan);
    if (!SendHeader(*plan.Run) || !OpenTable(context, TableSako)) return false;
    const bool isGood = SendTree(plan, TableGuvauf, "GuV") && SendTree(plan, TableBilaktau, "Bilanz Aktiv") &&
                        SendTree(plan, TableBilpasau, "Bilanz Passiv") && SendUnassigned(plan);
    CloseTable(context, TableSako);
    return isGood;
}

bool SendRecords(ReportRun &run)
{
    Kontenplan plan{};
    plan.Run = &run;
    plan.Context = run.Context;
    const TableId table = RangeLimits(run.Choice.Range, plan.Von, plan.Bis);
    return table == TableSako ? SendSachkonten(plan) : SendPekos(plan, table);
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
