#include "src/reports/frame/report_params.h"

#include "text/windows1252.h"

#include <cstring>
#include <gtest/gtest.h>

using namespace vark;
using namespace text;

namespace {

constexpr PackedDate noDate = "";

struct ReportParameters : testing::Test {
    ThreadContext context{};
    ReportParams params{};
    PeriodSelection period{};
    AccountRangeSelection range{};
    int32_t ausgabe = 0;

    void SetUp() override { UseFiscalYear(1); }

    void UseFiscalYear(int32_t firstMonth)
    {
        context.FirstFiscalMonth = firstMonth;
        std::memcpy(context.FirstOpenYear, "1997", 5);
        std::memcpy(context.MandantYear, "1998", 5);
        std::memcpy(context.TodayShort, "15.06.98", 9);
        std::memcpy(context.TodayLong, "15.06.1998", 11);
    }
    void SetDates(const char *von, const char *bis)
    {
        std::memcpy(params.VonDatum, von, 7);
        std::memcpy(params.BisDatum, bis, 7);
        params.ParamFlags |= ParamDaten;
    }
    PeriodSelection Computed(int16_t code, int16_t jahr, uint32_t options = 0) const
    {
        PeriodSelection selection{};
        selection.Code = code;
        selection.Jahr = jahr;
        selection.Options = options;
        ComputePeriodDates(context, selection);
        return selection;
    }
    std::string Title(PeriodSelection selection, bool perOnly = false, bool calendarWording = false) const
    {
        PeriodTitle out;
        BuildPeriodTitle(context, selection, out, perOnly, calendarWording);
        return out;
    }
    PeriodSelection Chosen(int16_t code, int16_t jahr, uint32_t options = 0) const
    {
        return Computed(code, jahr, options);
    }
};

} // namespace

TEST_F(ReportParameters, ClearedBlockChoosesNothing)
{
    SpreadReportParams(context, params, &period, &range, &ausgabe);
    EXPECT_EQ(-1, period.Code);
    EXPECT_STREQ("", period.VonDatum);
    EXPECT_EQ(0, period.ArchivJahr);
    EXPECT_EQ(0, range.KontoArt);
    EXPECT_EQ(0u, range.Einzeln);
    EXPECT_EQ(0, ausgabe);
}

TEST_F(ReportParameters, PeriodCodeOutsideItsRangeIsTheWholeYear)
{
    params.ParamFlags = ParamZeitraum;
    for (const int32_t code : {-1, 18, 32767, -40000}) {
        params.Zeitraum = code;
        SpreadReportParams(context, params, &period, nullptr, nullptr);
        EXPECT_EQ(17, period.Code) << code;
    }
    params.Zeitraum = 0x10003; // the low word counts
    SpreadReportParams(context, params, &period, nullptr, nullptr);
    EXPECT_EQ(3, period.Code);
}

TEST_F(ReportParameters, DatesOfTheCallerBecomeBookDatesAndNameTheYear)
{
    UseFiscalYear(7);
    SetDates("010797", "150398");
    SpreadReportParams(context, params, &period, nullptr, nullptr);
    EXPECT_STREQ("010117", period.VonDatum);
    EXPECT_STREQ("150917", period.BisDatum);
    EXPECT_EQ(17, period.Jahr);
}

TEST_F(ReportParameters, YearIsThatOfTheFirstDayWhileTheLastDayIsBookableElseThatOfTheLast)
{
    SetDates("010196", "310397");
    SpreadReportParams(context, params, &period, nullptr, nullptr);
    EXPECT_EQ(16, period.Jahr);
    SetDates("010197", "310390");
    SpreadReportParams(context, params, &period, nullptr, nullptr);
    EXPECT_EQ(10, period.Jahr);
}

TEST_F(ReportParameters, JahrIndexGoesBeforeTheDates)
{
    SetDates("010197", "310397");
    params.ParamFlags |= ParamJahr;
    params.JahrIndex = 18;
    SpreadReportParams(context, params, &period, nullptr, nullptr);
    EXPECT_EQ(18, period.Jahr);
}

TEST_F(ReportParameters, TextThatIsNoDateBecomesTheEmptyOne)
{
    for (const char *text : {"310298", "990198", "abcdef", "0101", "010100", "\xFF\xFF\xFF\xFF\xFF\xFF"}) {
        PackedDate out;
        CallerDateToBookDate(context, text, out);
        EXPECT_STREQ("", out) << text;
    }
    SetDates("xxxxxx", "xxxxxx");
    SpreadReportParams(context, params, &period, nullptr, nullptr);
    EXPECT_EQ(0, period.Jahr) << "an empty date takes no year";
}

TEST_F(ReportParameters, BookDatesGoBackToTheCalendar)
{
    char out[7];
    UseFiscalYear(7);
    BookDateToCallerDate(context, "150917", out); // fiscal month 9 of the year from July 1997
    EXPECT_STREQ("150398", out);
    BookDateToCallerDate(context, "010117", out);
    EXPECT_STREQ("010797", out);
    BookDateToCallerDate(context, "310619", out); // December 1999
    EXPECT_STREQ("311299", out);
    BookDateToCallerDate(context, "010719", out); // January 2000
    EXPECT_STREQ("010100", out);
    BookDateToCallerDate(context, noDate, out);
    EXPECT_STREQ("", out);
}

TEST_F(ReportParameters, WhatWasChosenIsWrittenBackWithItsFlags)
{
    period.Code = 0;
    period.Options = PeriodDayExact | PeriodYear;
    period.Jahr = 18;
    std::memcpy(period.VonDatum, "010118", 7);
    std::memcpy(period.BisDatum, "310318", 7);
    range.KontoArt = 4;
    std::memcpy(range.Debitor.Von, "10000", 6);
    ausgabe = 1;
    params.ParamFlags = ParamEinzeln;
    GatherReportParams(context, params, &period, &range, &ausgabe);
    EXPECT_EQ(uint32_t{ParamZeitraum | ParamDaten | ParamJahr | ParamKontoArt | ParamKonten | ParamAusgabe},
              uint32_t{params.ParamFlags});
    EXPECT_EQ(0, int32_t{params.Zeitraum});
    EXPECT_STREQ("010198", params.VonDatum);
    EXPECT_STREQ("310398", params.BisDatum);
    EXPECT_EQ(18, int32_t{params.JahrIndex});
    EXPECT_EQ(4, int32_t{params.KontoArt});
    EXPECT_STREQ("10000", params.DebitorVon);
    EXPECT_EQ(1, int32_t{params.Ausgabe});
}

TEST_F(ReportParameters, FieldsThatADialogDoesNotHaveLoseTheirFlag)
{
    params.ParamFlags = ParamDaten | ParamJahr | ParamArchivJahr;
    period.Code = 5;
    GatherReportParams(context, params, &period, nullptr, nullptr);
    EXPECT_EQ(uint32_t{ParamZeitraum | ParamArchivJahr}, uint32_t{params.ParamFlags});
}

TEST_F(ReportParameters, SingleAccountIsToldOnlyWhereItWasOffered)
{
    range.Einzeln = 1;
    GatherReportParams(context, params, nullptr, &range, nullptr);
    EXPECT_EQ(0u, params.ParamFlags & ParamEinzeln);
    range.HasSingle = 1;
    GatherReportParams(context, params, nullptr, &range, nullptr);
    EXPECT_EQ(uint32_t{ParamEinzeln}, params.ParamFlags & ParamEinzeln);
}

TEST_F(ReportParameters, FieldsWithoutNulAreReadUpToTheirWidthLessOne)
{
    std::memset(&params, '9', sizeof params);
    SpreadReportParams(context, params, &period, &range, &ausgabe);
    EXPECT_STREQ("9999999", range.Sachkonto.Von);
    EXPECT_STREQ("9999999", range.Kostenstelle.Bis);
}

TEST_F(ReportParameters, MonthQuarterAndYearHaveTheirFirstAndLastDay)
{
    EXPECT_STREQ("010218", Computed(2, 18).VonDatum);
    EXPECT_STREQ("280218", Computed(2, 18).BisDatum);
    EXPECT_STREQ("290220", Computed(2, 20).BisDatum); // 2000
    EXPECT_STREQ("010718", Computed(15, 18).VonDatum);
    EXPECT_STREQ("300918", Computed(15, 18).BisDatum);
    EXPECT_STREQ("010118", Computed(17, 18).VonDatum);
    EXPECT_STREQ("311218", Computed(17, 18).BisDatum);
}

TEST_F(ReportParameters, FirstCalendarQuarterLiesInTheBusinessYearBefore)
{
    UseFiscalYear(4);
    const PeriodSelection quarter = Computed(13, 18, PeriodCalendar);
    EXPECT_EQ(10, quarter.VonPeriode);
    EXPECT_EQ(12, quarter.BisPeriode);
    EXPECT_EQ(17, quarter.Jahr);
    EXPECT_STREQ("011017", quarter.VonDatum);
    EXPECT_STREQ("311217", quarter.BisDatum);
}

TEST_F(ReportParameters, WholeCalendarYearSpansTwoBusinessYears)
{
    UseFiscalYear(4);
    const PeriodSelection year = Computed(17, 18, PeriodCalendar);
    EXPECT_EQ(10, year.VonPeriode);
    EXPECT_EQ(9, year.BisPeriode);
    EXPECT_STREQ("011017", year.VonDatum);
    EXPECT_STREQ("310918", year.BisDatum); // December 1998
}

TEST_F(ReportParameters, FreeDatesStayAsTheyAre)
{
    std::memcpy(period.VonDatum, "020118", 7);
    period.Code = 0;
    ComputePeriodDates(context, period);
    EXPECT_STREQ("020118", period.VonDatum);
}

TEST_F(ReportParameters, TitleOfFreeDatesNamesOneOrBoth)
{
    std::memcpy(period.VonDatum, "010118", 7);
    std::memcpy(period.BisDatum, "310318", 7);
    EXPECT_EQ("per 31.03.1998", Title(period, true));
    EXPECT_EQ("vom 01.01.1998 bis zum 31.03.1998", Title(period));
    period.Code = -1;
    EXPECT_EQ("", Title(period));
}

TEST_F(ReportParameters, TitleOfAMonthNamesTheCalendarMonth)
{
    EXPECT_EQ("M\xE4rz 1998", Title(Chosen(3, 18)));
    UseFiscalYear(7);
    EXPECT_EQ("Juli 1997", Title(Chosen(1, 17)));
    EXPECT_EQ("Dezember 1997", Title(Chosen(6, 17)));
    EXPECT_EQ("Januar 1998", Title(Chosen(7, 17)));
}

TEST_F(ReportParameters, TitleOfAQuarterOrYear)
{
    EXPECT_EQ("1. Quartal 1998", Title(Chosen(13, 18)));
    EXPECT_EQ("4. Quartal 1998", Title(Chosen(16, 18)));
    EXPECT_EQ("1998", Title(Chosen(17, 18)));
    UseFiscalYear(7);
    EXPECT_EQ("1998/99", Title(Chosen(17, 18)));
    EXPECT_EQ("Kalenderjahr 1998", Title(Chosen(17, 18), false, true));
}

TEST_F(ReportParameters, ShortSecondYearIsAPlainSum)
{
    UseFiscalYear(7);
    EXPECT_EQ("1999/100", Title(Chosen(17, 19)));
}

TEST_F(ReportParameters, MonthNameFollowsTheCalendar)
{
    UseFiscalYear(7);
    EXPECT_STREQ("M\xE4rz", MonthNameOfDate(context, "150917"));
    EXPECT_STREQ("Juli", MonthNameOfDate(context, "010117"));
    EXPECT_STREQ("", MonthNameOfDate(context, noDate));
}

TEST_F(ReportParameters, LimitsAreJustifiedAndEmptyOnesStayOpen)
{
    AccountNumber von;
    AccountNumber bis;
    range.KontoArt = 2;
    std::memcpy(range.Kreditor.Von, "70000", 6);
    EXPECT_EQ(TableKred, RangeLimits(range, von, bis));
    EXPECT_STREQ("  70000", von);
    EXPECT_STREQ("", bis);
}

TEST_F(ReportParameters, SingleAccountIsBothLimits)
{
    AccountNumber von;
    AccountNumber bis;
    range.KontoArt = 8;
    range.HasSingle = 1;
    range.Einzeln = 1;
    std::memcpy(range.Kostenstelle.Von, "400", 4);
    std::memcpy(range.Kostenstelle.Bis, "999", 4);
    EXPECT_EQ(TableKore, RangeLimits(range, von, bis));
    EXPECT_STREQ("    400", von);
    EXPECT_STREQ("    400", bis);
}

TEST_F(ReportParameters, RangeIsSaidInWords)
{
    const struct {
        int16_t Kontoart;
        const char *Von;
        const char *Bis;
        bool Singular;
        const char *Word;
        const char *Text;
    } rows[] = {
        {1, "", "", false, "Sachkonten", ""},
        {1, "1000", "", false, "Sachkonten", "von 1000"},
        {1, "1000", "1999", false, "Sachkonten", "von 1000 bis 1999"},
        {1, "", "1999", false, "Sachkonten", "bis 1999"},
        {1, "1000", "1000", false, "Sachkonten", "1000"},
        {1, "1000", "1000", true, "Sachkonto", "1000"},
        {2, "70000", "70000", true, "Kreditor", "70000"},
        {4, "", "", true, "Debitor", ""},
        {4, "1", "2", true, "Debitoren", "von 1 bis 2"},
        {8, "400", "400", true, "Kostenstelle", "400"},
        {8, "400", "401", true, "Kostenstellen", "von 400 bis 401"},
    };
    for (const auto &row : rows) {
        range = {};
        range.KontoArt = row.Kontoart;
        AccountLimits &limits = LimitsOf(range, row.Kontoart);
        std::memcpy(limits.Von, row.Von, std::strlen(row.Von) + 1);
        std::memcpy(limits.Bis, row.Bis, std::strlen(row.Bis) + 1);
        RangeWord word;
        RangeText said;
        RangeTexts(range, &word, said, row.Singular);
        EXPECT_STREQ(row.Word, word);
        EXPECT_STREQ(row.Text, said);
    }
}
