// OP-Liste: the open items of a range of Kreditoren or Debitoren by the day of their Skonto, by the day they
// are due, or by account.
#include "src/frame/held_tables.h"
#include "src/frame/mandant.h"
#include "src/frame/record_store.h"
#include "src/reports/frame/report_run.h"
#include "src/values/account_numbers.h"
#include "src/values/dates.h"
#include "src/values/sums.h"
#include "text/fixed_text.h"
#include "text/windows1252.h"

#include <array> // std::size
#include <cstddef>
#include <cstring>

namespace vark {

using namespace text;

namespace {

#pragma pack(push, 1)

struct OpHeader {
    char Mandant[41];
    RangeWord Kontoart;
    RangeText Bereich;
    int32_t Gruppierung;
    int32_t IsDebitoren;
};

struct OpGroup {
    AccountNumber Konto; // without leading blanks, under grouping by account
    PackedDate Datum;    // calendar month and year, under the others; else today
};

struct OpLine {
    AccountNumber Konto; // without leading blanks, as the other two
    char Referenz1[10];
    char Text1[26];
    char Referenz2[10];
    PackedDate Datum1; // calendar month and year, as the other two
    PackedDate Termin;
    PackedDate Skontodatum;
    char Text2[40];
    int32_t HasFlag;
    AmountText Betrag; // in the currency of the item
    AccountNumber Konto2;
    AccountNumber Konto3;
    RateText Satz;
    int32_t Wert1;
    int32_t Wert2;
    AmountText Betrag3;
    AmountText Betrag4;
    AmountText Betrag2;
    int32_t Wert3;
    char Waehrung[5];
    char Zahlungsart[30];
};

#pragma pack(pop)

static_assert(offsetof(OpHeader, Kontoart) == 41);
static_assert(offsetof(OpHeader, Bereich) == 71);
static_assert(offsetof(OpHeader, Gruppierung) == 101);
static_assert(offsetof(OpHeader, IsDebitoren) == 105);
static_assert(sizeof(OpHeader) == 109);
static_assert(offsetof(OpGroup, Datum) == 8);
static_assert(sizeof(OpGroup) == 15);
static_assert(offsetof(OpLine, Referenz1) == 8);
static_assert(offsetof(OpLine, Text1) == 18);
static_assert(offsetof(OpLine, Referenz2) == 44);
static_assert(offsetof(OpLine, Datum1) == 54);
static_assert(offsetof(OpLine, Termin) == 61);
static_assert(offsetof(OpLine, Skontodatum) == 68);
static_assert(offsetof(OpLine, Text2) == 75);
static_assert(offsetof(OpLine, HasFlag) == 115);
static_assert(offsetof(OpLine, Betrag) == 119);
static_assert(offsetof(OpLine, Konto2) == 132);
static_assert(offsetof(OpLine, Konto3) == 140);
static_assert(offsetof(OpLine, Satz) == 148);
static_assert(offsetof(OpLine, Wert1) == 154);
static_assert(offsetof(OpLine, Wert2) == 158);
static_assert(offsetof(OpLine, Betrag3) == 162);
static_assert(offsetof(OpLine, Betrag4) == 175);
static_assert(offsetof(OpLine, Betrag2) == 188);
static_assert(offsetof(OpLine, Wert3) == 201);
static_assert(offsetof(OpLine, Waehrung) == 205);
static_assert(offsetof(OpLine, Zahlungsart) == 210);
static_assert(sizeof(OpLine) == 240);

constexpr int controlSkonto = 1002; // radio buttons
constexpr int controlTermin = 1003;
constexpr int controlKontonummer = 1004;

// The groupings with the key of the table that gives their order, and where in the record their value lies.
struct Grouping {
    int32_t Number;
    unsigned Key;
    size_t Offset;
};

constexpr Grouping bySkonto = {0, 2, offsetof(OpenItemRecord, Skontodatum)};
constexpr Grouping byTermin = {1, 3, offsetof(OpenItemRecord, Termin)};
constexpr Grouping byAccount = {2, 1, offsetof(OpenItemRecord, Konto)};

constexpr size_t groupWidth = sizeof(AccountNumber);
static_assert(sizeof(SortDate) < groupWidth);

const Grouping &GroupingOf(const ReportRun &run)
{
    if (IsChosen(run, controlKontonummer)) return byAccount;
    return IsChosen(run, controlTermin) ? byTermin : bySkonto;
}

struct OpListe {
    const ReportRun *Run;
    ThreadContext *Context;
    TableId Table;
    Grouping By;
    AccountNumber Von; // in the form of the key
    AccountNumber Bis;
    char Kept[groupWidth]; // the value of the group in hand
    OpGroup Group;
};

const char *ZahlungsartOf(uint8_t zahlungsart)
{
    switch (zahlungsart) {
    case 1: return "Überweisung"_w;
    case 2: return "Scheck";
    case 3: return "Einzug";
    case 4: return "Abbuchung";
    default: return "sonstige";
    }
}

bool SendHeader(const OpListe &list)
{
    const ReportRun &run = *list.Run;
    OpHeader header{};
    CopyText(header.Mandant, run.Mandant.Name);
    RangeTexts(run.Choice.Range, &header.Kontoart, header.Bereich, true);
    header.Gruppierung = list.By.Number;
    header.IsDebitoren = list.Table == TableOpdebi ? 1 : 0;
    return AddReportRecord(run.Report, 0, &header);
}

void CopyDate(const OpListe &list, PackedDate &to, const SortDate &from)
{
    CopyText(to, from);
    ToSortDate(to);
    PackedToCalendar(to, to, list.Context->FirstFiscalMonth);
}

// The value by which an item is grouped, as long as the longest of them.
void CopyGroupValue(const OpListe &list, const OpenItemRecord &record, char (&value)[groupWidth])
{
    const char *const field = reinterpret_cast<const char *>(&record) + list.By.Offset;
    CopyText(value, sizeof value, field, list.By.Key == byAccount.Key ? accountDigits : sizeof(SortDate) - 1);
}

// Sends the head of a new group where the item begins one.
bool SendGroup(OpListe &list, const OpenItemRecord &record)
{
    char value[groupWidth];
    CopyGroupValue(list, record, value);
    if (SameText(value, list.Kept)) return true;
    CopyText(list.Kept, value);
    if (list.By.Key == byAccount.Key) {
        StripNumber(list.Group.Konto, record.Konto);
    } else {
        CopyDate(list, list.Group.Datum, list.By.Key == byTermin.Key ? record.Termin : record.Skontodatum);
    }
    return AddReportRecord(list.Run->Report, 1, &list.Group);
}

bool SendItem(const OpListe &list, const OpenItemRecord &record)
{
    OpLine line{};
    StripNumber(line.Konto, record.Konto);
    CopyText(line.Referenz1, record.Referenz1);
    CopyText(line.Text1, record.Text1);
    CopyText(line.Referenz2, record.Referenz2);
    CopyDate(list, line.Datum1, record.Datum1);
    CopyDate(list, line.Termin, record.Termin);
    CopyDate(list, line.Skontodatum, record.Skontodatum);
    CopyText(line.Text2, record.Text2);
    line.HasFlag = record.Flag != 0 ? 1 : 0;
    CopyAmount(line.Betrag, record.Waehrung[0] != 0 ? record.Waehrungsbetrag : record.Betrag1);
    StripNumber(line.Konto2, record.Konto2);
    StripNumber(line.Konto3, record.Konto3);
    CopyText(line.Satz, record.Satz);
    line.Wert1 = record.Wert1;
    line.Wert2 = record.Wert2;
    CopyAmount(line.Betrag3, record.Betrag3);
    CopyAmount(line.Betrag4, record.Betrag4);
    CopyAmount(line.Betrag2, record.Betrag2);
    line.Wert3 = record.Wert3;
    CopyText(line.Waehrung, record.Waehrung);
    if (line.Waehrung[0] == 0) CopyText(line.Waehrung, list.Context->MandantWaehrung);
    CopyText(line.Zahlungsart, ZahlungsartOf(record.Zahlungsart));
    return AddReportRecord(list.Run->Report, 2, &line);
}

// Items of accounts beyond the limits are passed over, so that they begin no group either.
bool SendItems(OpListe &list)
{
    const TableKeyCode code = KeyCode(list.Table, list.By.Key);
    OpenItemRecord record;
    bool found = false;
    bool isGood = GetFirstF(*list.Context, &record, found, code);
    while (isGood && found) {
        if (!IsBeforeLimit(record.Konto, list.Von) && !IsBehindLimit(record.Konto, list.Bis)) {
            isGood = SendGroup(list, record) && SendItem(list, record);
        }
        isGood = isGood && GetNextF(*list.Context, &record, found, code);
    }
    return isGood;
}

bool SendRecords(ReportRun &run)
{
    OpListe list{};
    list.Run = &run;
    list.Context = run.Context;
    list.By = GroupingOf(run);
    const TableId accounts = RangeLimits(run.Choice.Range, list.Von, list.Bis);
    list.Table = accounts == TableDebi ? TableOpdebi : TableOpkred;
    CopyText(list.Group.Datum, run.Context->TodayPacked);
    HeldTables held(*run.Context);
    return SendHeader(list) && Hold(held, list.Table) && SendItems(list);
}

constexpr ReportOption opRows[] = {
    {OptionKind::Radio, controlSkonto, "Skonto", "Gru&ppierung", true, 0, 0},
    {OptionKind::Radio, controlTermin, "Termin", nullptr, false, 0, 0},
    {OptionKind::Radio, controlKontonummer, "Kontonummer", nullptr, false, 0, 0},
};

constexpr ReportKind opKind = {
    .Dialog = {.Id = 129,
               .Title = "OP-Liste",
               .HelpContext = 3072,
               .Kontoarten = KontoartKreditor | KontoartDebitor,
               .Options = {opRows, static_cast<int>(std::size(opRows))},
               .Words = {.Konten = "&Konten"}},
    .RowOf = [](const ReportRun &) { return ReportOpListe; },
    .Send = SendRecords,
};

} // namespace

} // namespace vark

VarkWindow VARK_CALL VARK_OPListe(int32_t mandant, VarkWindow parent, ReportParams *params)
{
    return vark::RunReport(vark::opKind, mandant, parent, params);
}
