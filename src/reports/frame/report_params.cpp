#include "src/reports/frame/report_params.h"

#include "src/model/accounts.h"
#include "src/values/account_numbers.h"
#include "src/values/dates.h"
#include "text/fixed_text.h"
#include "text/windows1252.h"

#include <cstdio>
#include <cstring>

namespace vark {

using namespace text;

namespace {

const char *const monthNames[12] = {"Januar", "Februar", "März"_w,    "April",   "Mai",      "Juni",
                                    "Juli",   "August",  "September", "Oktober", "November", "Dezember"};

void SpreadPeriod(const ThreadContext &context, const ReportParams &params, PeriodSelection &period)
{
    period = {};
    if ((params.ParamFlags & ParamArchivJahr) != 0)
        period.ArchivJahr = static_cast<int16_t>(params.ArchivJahr);
    period.Code = periodNotChosen;
    if ((params.ParamFlags & ParamZeitraum) != 0) {
        period.Code = static_cast<int16_t>(params.Zeitraum);
        if (period.Code < 0 || period.Code > periodWholeYear) period.Code = periodWholeYear;
    }
    if ((params.ParamFlags & ParamDaten) != 0) {
        CallerDateToBookDate(context, params.VonDatum, period.VonDatum);
        CallerDateToBookDate(context, params.BisDatum, period.BisDatum);
        const bool hasVon = period.VonDatum[0] != 0;
        const bool hasBis = period.BisDatum[0] != 0;
        const bool takesVon = hasBis && PostableYear(context, FiscalYearOf(period.BisDatum)) != 0;
        if (takesVon ? hasVon : hasBis) {
            period.Jahr = static_cast<int16_t>(FiscalYearOf(takesVon ? period.VonDatum : period.BisDatum));
        }
    }
    if ((params.ParamFlags & ParamJahr) != 0) period.Jahr = static_cast<int16_t>(params.JahrIndex);
}

void SpreadRanges(const ReportParams &params, AccountRangeSelection &ranges)
{
    ranges = {};
    if ((params.ParamFlags & ParamKontoArt) != 0) ranges.KontoArt = static_cast<int16_t>(params.KontoArt);
    if ((params.ParamFlags & ParamKonten) != 0) {
        CopyText(ranges.Sachkonto.Von, params.SachkontoVon);
        CopyText(ranges.Sachkonto.Bis, params.SachkontoBis);
        CopyText(ranges.Kreditor.Von, params.KreditorVon);
        CopyText(ranges.Kreditor.Bis, params.KreditorBis);
        CopyText(ranges.Debitor.Von, params.DebitorVon);
        CopyText(ranges.Debitor.Bis, params.DebitorBis);
        CopyText(ranges.Kostenstelle.Von, params.KostenstelleVon);
        CopyText(ranges.Kostenstelle.Bis, params.KostenstelleBis);
    }
    ranges.Einzeln = (params.ParamFlags & ParamEinzeln) != 0 ? 1 : 0;
}

const AccountLimits &LimitsOf(const AccountRangeSelection &selection)
{
    return LimitsOf(const_cast<AccountRangeSelection &>(selection), selection.KontoArt);
}

// The kind of a selection; Sachkonten for one that is none.
const AccountKind &KindOf(const AccountRangeSelection &selection)
{
    const AccountKind *const kind = FindKind(selection.KontoArt);
    return kind != nullptr ? *kind : accountKinds[0];
}

bool AsksForOne(const AccountRangeSelection &selection)
{
    return selection.HasSingle != 0 && selection.Einzeln == 1;
}

// A text put together piece by piece, cut at the end of its field.
template <size_t Size> struct Line {
    char (&Text)[Size];
    size_t Length = 0;

    void Add(const char *piece)
    {
        const size_t length = strnlen(piece, Size - 1 - Length);
        std::memcpy(Text + Length, piece, length);
        Length += length;
        Text[Length] = 0;
    }
    void Add(int number)
    {
        char digits[12];
        std::snprintf(digits, sizeof digits, "%d", number);
        Add(digits);
    }
};

} // namespace

AccountLimits &LimitsOf(AccountRangeSelection &selection, int32_t kontoart)
{
    switch (kontoart) {
    case KontoartKreditor: return selection.Kreditor;
    case KontoartDebitor: return selection.Debitor;
    case KontoartKostenstelle: return selection.Kostenstelle;
    default: return selection.Sachkonto;
    }
}

void SpreadReportParams(const ThreadContext &context, const ReportParams &params, PeriodSelection *period,
                        AccountRangeSelection *ranges, int32_t *ausgabe)
{
    if (period != nullptr) SpreadPeriod(context, params, *period);
    if (ranges != nullptr) SpreadRanges(params, *ranges);
    if (ausgabe != nullptr) *ausgabe = (params.ParamFlags & ParamAusgabe) != 0 ? params.Ausgabe : 0;
}

void GatherReportParams(const ThreadContext &context, ReportParams &params, const PeriodSelection *period,
                        const AccountRangeSelection *ranges, const int32_t *ausgabe)
{
    if (period != nullptr) {
        params.ParamFlags &= ~static_cast<uint32_t>(ParamZeitraum | ParamDaten | ParamJahr);
        params.ParamFlags |= ParamZeitraum;
        params.Zeitraum = period->Code;
        if ((period->Options & PeriodDayExact) != 0) {
            params.ParamFlags |= ParamDaten;
            BookDateToCallerDate(context, period->VonDatum, params.VonDatum);
            BookDateToCallerDate(context, period->BisDatum, params.BisDatum);
        }
        if ((period->Options & PeriodYear) != 0) {
            params.ParamFlags |= ParamJahr;
            params.JahrIndex = period->Jahr;
        }
    }
    if (ranges != nullptr) {
        params.ParamFlags |= ParamKontoArt | ParamKonten;
        params.ParamFlags &= ~static_cast<uint32_t>(ParamEinzeln);
        if (AsksForOne(*ranges)) params.ParamFlags |= ParamEinzeln;
        params.KontoArt = ranges->KontoArt;
        CopyText(params.SachkontoVon, ranges->Sachkonto.Von);
        CopyText(params.SachkontoBis, ranges->Sachkonto.Bis);
        CopyText(params.KreditorVon, ranges->Kreditor.Von);
        CopyText(params.KreditorBis, ranges->Kreditor.Bis);
        CopyText(params.DebitorVon, ranges->Debitor.Von);
        CopyText(params.DebitorBis, ranges->Debitor.Bis);
        CopyText(params.KostenstelleVon, ranges->Kostenstelle.Von);
        CopyText(params.KostenstelleBis, ranges->Kostenstelle.Bis);
    }
    if (ausgabe != nullptr) {
        params.ParamFlags |= ParamAusgabe;
        params.Ausgabe = *ausgabe;
    }
}

void CallerDateToBookDate(const ThreadContext &context, const char *text, PackedDate &out)
{
    char digits[7];
    CopyText(digits, text);
    char dotted[9] = {digits[0], digits[1], '.', digits[2], digits[3], '.', digits[4], digits[5], 0};
    const bool isDate =
        std::strlen(digits) == 6 && ParseDateText(context, dotted, sizeof dotted, false) == DateGood;
    CopyText(out, isDate ? dotted : "");
}

void BookDateToCallerDate(const ThreadContext &context, const PackedDate &date, char (&out)[7])
{
    PackedDate calendar;
    CopyText(calendar, date);
    if (calendar[0] != 0) {
        const int month = FiscalMonthOf(date) + context.FirstFiscalMonth;
        const int year = FiscalYearOf(date) + 80 + (month > 13 ? 1 : 0);
        MakePackedDate(calendar, DayOf(date), (month - 2) % 12 + 1, year);
    }
    std::memcpy(out, calendar, sizeof out);
}

void ComputePeriodDates(const ThreadContext &context, PeriodSelection &selection)
{
    const bool isCalendar = (selection.Options & PeriodCalendar) != 0;
    FiscalPeriod period;
    if (!PeriodOfCode(selection.Code, selection.Jahr, isCalendar, context.FirstFiscalMonth, period)) return;
    selection.VonPeriode = static_cast<int16_t>(period.FirstMonth);
    selection.BisPeriode = static_cast<int16_t>(period.LastMonth);
    selection.Jahr = static_cast<int16_t>(period.Year);
    CopyText(selection.VonDatum, period.FirstDay);
    CopyText(selection.BisDatum, period.LastDay);
}

void BuildPeriodTitle(const ThreadContext &context, const PeriodSelection &selection, PeriodTitle &out,
                      bool perOnly, bool calendarWording)
{
    out[0] = 0;
    Line<sizeof out> line{out};
    const int firstMonth = context.FirstFiscalMonth;
    const bool isNextYear = selection.VonPeriode + firstMonth > 13;
    if (selection.Code < 0) return;
    if (selection.Code == periodDayExact) {
        DateText von;
        DateText bis;
        FormatDate(selection.VonDatum, von, true, firstMonth);
        FormatDate(selection.BisDatum, bis, true, firstMonth);
        if (perOnly) {
            line.Add("per ");
        } else {
            line.Add("vom ");
            line.Add(von);
            line.Add(" bis zum ");
        }
        line.Add(bis);
        return;
    }
    if (selection.Code <= 12) {
        line.Add(monthNames[(selection.VonPeriode + 10 + firstMonth) % 12]);
        line.Add(" ");
        line.Add(selection.Jahr + firstYear + (isNextYear ? 1 : 0));
        return;
    }
    const int year = selection.Jahr + firstYear + (isNextYear ? 1 : 0);
    if (selection.Code <= periodLastQuarter) {
        line.Add(selection.Code - periodFirstQuarter + 1);
        line.Add(". Quartal ");
        line.Add(year);
    } else if (firstMonth == 1) {
        line.Add(year);
    } else if (calendarWording) {
        line.Add("Kalenderjahr ");
        line.Add(year);
    } else {
        line.Add(year);
        line.Add("/");
        line.Add(selection.Jahr + 81);
    }
}

const char *MonthNameOfDate(const ThreadContext &context, const PackedDate &date)
{
    if (date[0] == 0) return "";
    PackedDate calendar;
    PackedToCalendar(date, calendar, context.FirstFiscalMonth);
    return monthNames[(FiscalMonthOf(calendar) + 11) % 12];
}

TableId RangeLimits(const AccountRangeSelection &selection, AccountNumber &von, AccountNumber &bis)
{
    const AccountLimits &limits = LimitsOf(selection);
    JustifyLimit(von, limits.Von);
    JustifyLimit(bis, AsksForOne(selection) ? limits.Von : limits.Bis);
    return KindOf(selection).Table;
}

void RangeTexts(const AccountRangeSelection &selection, RangeWord *kindWord, RangeText &rangeText,
                bool isSingular)
{
    const AccountLimits &limits = LimitsOf(selection);
    AccountNumber von;
    AccountNumber bis;
    CopyText(von, limits.Von);
    CopyText(bis, AsksForOne(selection) ? limits.Von : limits.Bis);
    const bool areEqual = std::strcmp(von, bis) == 0;

    if (kindWord != nullptr) {
        const AccountKind &kind = KindOf(selection);
        CopyText(*kindWord, isSingular && areEqual ? kind.One : kind.Many);
    }

    rangeText[0] = 0;
    Line<sizeof rangeText> line{rangeText};
    if (von[0] != 0) {
        if (!areEqual) line.Add("von ");
        line.Add(von);
    }
    if (areEqual || bis[0] == 0) return;
    if (von[0] != 0) line.Add(" ");
    line.Add("bis ");
    line.Add(bis);
}

} // namespace vark
