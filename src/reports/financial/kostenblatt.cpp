// The sheet of one Kostenstelle: what fell on it before the period, then its cost lines with the words of
// their postings, first those that have it as first cost object, then those that have it as second.
#include "src/reports/financial/kontenblatt_sheet.h"
#include "src/values/amount_texts.h"
#include "src/values/amounts.h"
#include "src/values/dates.h"
#include "src/values/sums.h"
#include "src/walks/cost_lines.h"
#include "text/fixed_text.h"

#include <cstddef>

namespace vark {

using text::CopyText;

namespace {

#pragma pack(push, 1)

struct KostenHead {
    AccountNumber Nummer; // without leading blanks
    char Name[31];
    char Zeitraum[50];
    AmountText Vortrag;
};

struct KostenLine {
    AccountNumber Konto;  // without leading blanks
    AccountNumber Objekt; // the other cost object, without leading blanks
    char Beleg[11];
    PackedDate Datum; // calendar month and year
    char Text[36];
    char Kostentext[41];
    AmountText Soll;
    AmountText Haben;
    uint32_t Flag;
};

#pragma pack(pop)

static_assert(offsetof(KostenHead, Name) == 8);
static_assert(offsetof(KostenHead, Zeitraum) == 39);
static_assert(offsetof(KostenHead, Vortrag) == 89);
static_assert(sizeof(KostenHead) == 102);
static_assert(offsetof(KostenLine, Objekt) == 8);
static_assert(offsetof(KostenLine, Beleg) == 16);
static_assert(offsetof(KostenLine, Datum) == 27);
static_assert(offsetof(KostenLine, Text) == 34);
static_assert(offsetof(KostenLine, Kostentext) == 70);
static_assert(offsetof(KostenLine, Soll) == 111);
static_assert(offsetof(KostenLine, Haben) == 124);
static_assert(offsetof(KostenLine, Flag) == 137);
static_assert(sizeof(KostenLine) == 141);

constexpr CostObject passes[] = {CostObject::First, CostObject::Second};

CostObject Other(CostObject which)
{
    return which == CostObject::First ? CostObject::Second : CostObject::First;
}

// Adds the final lines of the days before the period in its first month.
bool AddDaysBefore(const SheetRun &sheet, const KoreRecord &record, AmountText &vortrag)
{
    ThreadContext &context = *sheet.Run->Context;
    PackedDate first;
    PackedDate last;
    CopyText(last, sheet.Run->Choice.Period.VonDatum);
    if (DayOf(last) <= 1) return true;
    MakePackedDate(first, 1, FiscalMonthOf(last), FiscalYearOf(last));
    MakePackedDate(last, DayOf(last) - 1, FiscalMonthOf(last), FiscalYearOf(last));
    for (const CostObject pass : passes) {
        CostScan scan;
        bool isGood = BeginCostLinesOf(scan, context, TableKobu, record.Nummer, pass, first, last);
        while (isGood && scan.Found) {
            const bool isAdded =
                !IsFinal(scan.Line) || (IsOnHaben(scan.Line) ? DeductAmount(vortrag, scan.Line.Betrag)
                                                             : AccumulateAmount(vortrag, scan.Line.Betrag));
            isGood = isAdded && NextCostLine(scan);
        }
        if (!isGood) return false;
    }
    return true;
}

bool SendHead(const SheetRun &sheet, const KoreRecord &record)
{
    KostenHead head{};
    CopyText(head.Nummer, record.Nummer);
    TrimLeft(head.Nummer, sizeof head.Nummer);
    CopyText(head.Name, record.Name);
    CopyText(head.Zeitraum, sheet.Zeitraum);
    CopyText(head.Vortrag, zeroAmount);
    const int month = FiscalMonthOf(sheet.Run->Choice.Period.VonDatum);
    return SumMonths(head.Vortrag, record.Monat, 1, month - 1) &&
           AddDaysBefore(sheet, record, head.Vortrag) && AddReportRecord(sheet.Run->Report, 1, &head);
}

// A line whose posting is not there goes out without its words: its amount is in the month's figure as well.
bool SendLine(const SheetRun &sheet, const KobuRecord &record, CostObject pass)
{
    ThreadContext &context = *sheet.Run->Context;
    CostWords words{};
    bool found = false;
    if (!FindCostWords(context, record, words, found)) return false;
    KostenLine line{};
    CopyText(line.Konto, record.Konto);
    TrimLeft(line.Konto, sizeof line.Konto);
    CopyText(line.Objekt, ObjectOf(record, Other(pass)));
    TrimLeft(line.Objekt, sizeof line.Objekt);
    if (found) {
        CopyText(line.Beleg, words.Beleg);
        CopyText(line.Text, words.Text);
    }
    PackedDate date;
    CopyText(date, record.Datum);
    ToSortDate(date);
    PackedToCalendar(date, line.Datum, context.FirstFiscalMonth);
    CopyText(line.Kostentext, record.Text);
    CopyText(line.Soll, zeroAmount);
    CopyText(line.Haben, zeroAmount);
    CopyAmount(IsOnHaben(record) ? line.Haben : line.Soll, record.Betrag);
    line.Flag = record.Flag;
    return AddReportRecord(sheet.Run->Report, 2, &line);
}

bool SendLines(const SheetRun &sheet, const AccountNumber &nummer, CostObject pass)
{
    const PeriodSelection &period = sheet.Run->Choice.Period;
    CostScan scan;
    bool isGood = BeginCostLinesOf(scan, *sheet.Run->Context, TableKobu, nummer, pass, period.VonDatum,
                                   period.BisDatum);
    while (isGood && scan.Found) {
        isGood = (!IsFinal(scan.Line) || SendLine(sheet, scan.Line, pass)) && NextCostLine(scan);
    }
    return isGood;
}

} // namespace

bool SendKostenSheet(const SheetRun &sheet, const KoreRecord &record)
{
    return SendHead(sheet, record) && SendLines(sheet, record.Nummer, CostObject::First) &&
           SendLines(sheet, record.Nummer, CostObject::Second);
}

} // namespace vark
