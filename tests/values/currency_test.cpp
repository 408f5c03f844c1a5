#include "src/values/currency.h"

#include "src/frame/lifecycle.h"
#include "src/frame/mandant.h"
#include "src/frame/record_store.h"
#include "src/values/amounts.h"
#include "tests/support/books.h"
#include "tests/support/engine_faults.h"
#include "tests/values/exact_double.h"

#include <cstring>
#include <gtest/gtest.h>
#include <random>

using namespace vark;
using namespace vark::test;

namespace {

constexpr uint16_t operationOpen = 0;
constexpr uint16_t operationGetEqual = 5;
constexpr uint16_t operationGetNext = 6;
constexpr uint16_t operationGetGreaterEqual = 9;

struct Rates : testing::Test {
    Books books;
    ThreadContext *context = nullptr;

    void SetUp() override
    {
        books.AddMandant(1);
        ASSERT_EQ(1, EnterExport(context));
        FistaRecord fista{};
        ASSERT_EQ(1, SelectMandant(*context, 1, fista));
    }
    void TearDown() override { VARK_SchliesseDB(); }

    void Add(const std::string &waehrung, const std::string &sortDate, const std::string &kurs,
             bool durchschnitt = false)
    {
        books.Insert(1, TableKurse, MakeKurs(waehrung, sortDate, kurs, 1, durchschnitt));
    }

    // The Kurs found for a currency and a PackedDate, or "none".
    std::string Find(const char *waehrung, const std::string &date)
    {
        PackedDate packed = {};
        date.copy(packed, sizeof packed - 1);
        KurseRecord record{};
        const int before = context->OpenCounts[TableKurse];
        const bool found = FindRate(*context, record, waehrung, packed);
        EXPECT_EQ(before, context->OpenCounts[TableKurse]) << "kurse is closed again";
        return found ? TextOf(record.Kurs) : "none";
    }
};

struct Conversion : testing::Test {
    ThreadContext context{};
    AmountText out = {};

    std::string Convert(const std::string &amount, const std::string &kurs, int16_t einheit = 1)
    {
        AmountText text = {};
        SetText(text, amount);
        SetText(out, "000000077,77");
        const bool fits = ConvertAmount(context, MakeKurs("USD", "180101", kurs, einheit), text, out);
        return TextOf(out) + (fits ? "" : " refused");
    }
};

} // namespace

TEST_F(Rates, ADayRateServesItsDayOnly)
{
    Add("USD", "180315", "000000001,80");
    EXPECT_EQ("000000001,80", Find("USD", "150318"));
    EXPECT_EQ("none", Find("USD", "160318"));
    EXPECT_EQ("none", Find("USD", "140318"));
    EXPECT_EQ("none", Find("USD", "150418"));
    EXPECT_EQ("none", Find("USD", "150319"));
}

TEST_F(Rates, AnAverageRateServesItsWholeMonth)
{
    Add("USD", "180320", "000000001,75", true);
    EXPECT_EQ("000000001,75", Find("USD", "010318"));
    EXPECT_EQ("000000001,75", Find("USD", "200318"));
    EXPECT_EQ("000000001,75", Find("USD", "310318"));
    EXPECT_EQ("none", Find("USD", "280218"));
    EXPECT_EQ("none", Find("USD", "010418"));
}

TEST_F(Rates, ADayRateWinsOverTheAverage)
{
    Add("USD", "180301", "000000001,75", true);
    Add("USD", "180315", "000000001,80");
    EXPECT_EQ("000000001,80", Find("USD", "150318"));
    EXPECT_EQ("000000001,75", Find("USD", "160318"));
}

TEST_F(Rates, TheAverageIsFoundBehindDayRates)
{
    Add("USD", "180301", "000000001,70");
    Add("USD", "180302", "000000001,71");
    Add("USD", "180331", "000000001,75", true);
    EXPECT_EQ("000000001,75", Find("USD", "030318"));
}

TEST_F(Rates, TheSameMonthOfAnotherYearIsAnotherMonth)
{
    Add("USD", "190301", "000000001,90", true);
    EXPECT_EQ("none", Find("USD", "150318"));
}

TEST_F(Rates, AnotherCurrencyNeverStandsIn)
{
    Add("USDX", "180301", "000000009,99", true);
    Add("GBP", "180301", "000000002,90", true);
    EXPECT_EQ("none", Find("USD", "150318"));
    EXPECT_EQ("000000002,90", Find("GBP", "150318"));
    EXPECT_EQ("000000009,99", Find("USDX", "150318"));
}

TEST_F(Rates, NoRatesAtAll) { EXPECT_EQ("none", Find("USD", "150318")); }

TEST_F(Rates, AFailureOfTheRecordStoreIsNoRate)
{
    Add("USD", "180301", "000000001,70");
    Add("USD", "180302", "000000001,75", true);
    for (const uint16_t operation :
         {operationOpen, operationGetEqual, operationGetGreaterEqual, operationGetNext}) {
        FailEngineOperation(operation, 1, 3);
        EXPECT_EQ("none", Find("USD", "150318")) << operation;
        EXPECT_EQ(1, StopEngineFaults());
    }
    EXPECT_EQ("000000001,75", Find("USD", "150318"));
}

TEST_F(Conversion, MultipliesByTheKurs)
{
    EXPECT_EQ("000000180,00", Convert("000000100,00", "000000001,80"));
    EXPECT_EQ("000000000,00", Convert("000000000,00", "000000001,80"));
    EXPECT_EQ("000000000,00", Convert("", "000000001,80"));
    EXPECT_EQ("000000000,00", Convert("000000100,00", ""));
}

TEST_F(Conversion, DividesByTheUnits)
{
    EXPECT_EQ("000000100,00", Convert("000000100,00", "000000001,00", 1));
    EXPECT_EQ("000000010,00", Convert("000000100,00", "000000001,00", 10));
    EXPECT_EQ("000000001,00", Convert("000000100,00", "000000001,00", 2));
    EXPECT_EQ("000000000,10", Convert("000000100,00", "000000001,00", 3));
    EXPECT_EQ("000000001,00", Convert("000100000,00", "000000001,00", 5));
}

TEST_F(Conversion, RoundsHalfUp)
{
    EXPECT_EQ("000000000,13", Convert("000000000,25", "000000000,50"));    // 0,125
    EXPECT_EQ("000000000,38", Convert("000000000,75", "000000000,50"));    // 0,375
    EXPECT_EQ("000000003,13", Convert("000000006,25", "000000000,50"));    // 3,125
    EXPECT_EQ("000000001,01", Convert("000000100,56", "000000001,00", 2)); // 1,0056
}

TEST_F(Conversion, LessThanOnePfennigIsZeroWithItsMark)
{
    EXPECT_EQ("000000000,00", Convert("000000000,01", "000000000,99"));
    EXPECT_EQ("000000000-00", Convert("000000000-01", "000000000,99"));
}

TEST_F(Conversion, TheSignOfTheAmountStays)
{
    EXPECT_EQ("000000180-00", Convert("000000100-00", "000000001,80"));
    EXPECT_EQ("000000180,00", Convert("000000100,00", "000000001-80"));
}

TEST_F(Conversion, TheResultMayReplaceTheAmount)
{
    AmountText amount = {};
    SetText(amount, "000000100-00");
    EXPECT_TRUE(ConvertAmount(context, MakeKurs("USD", "180101", "000000001,80"), amount, amount));
    EXPECT_EQ("000000180-00", TextOf(amount));
}

TEST_F(Conversion, AnAmountThatDoesNotFitIsRefused)
{
    EXPECT_EQ("999999999,99", Convert("999999999,99", "000000001,00"));
    EXPECT_EQ("000000077,77 refused", Convert("999999999,99", "000000001,01"));
    EXPECT_EQ("000000077,77 refused", Convert("999999999,99", "999999999,99"));
    EXPECT_EQ("000000077,77 refused", Convert("000000100,00", "000000001,00", 0)) << "no units at all";
    EXPECT_EQ("000000077,77 refused", Convert("000000000,00", "000000001,00", 0));
}

TEST_F(Conversion, AgreesWithFloatingPointDoneInIntegers)
{
    std::mt19937_64 random(1);
    const exact::Double pfennig = exact::Ratio(1, 100);
    for (int i = 0; i < 100'000; ++i) {
        const auto magnitude = static_cast<int64_t>(random() % 100'000'000 >> random() % 24);
        const auto kurs = static_cast<int64_t>(random() % 100'000 >> random() % 14);
        const auto code = static_cast<int16_t>(1 + random() % 5);
        const exact::Double product = exact::Multiply(exact::Ratio(static_cast<uint64_t>(magnitude), 100),
                                                      exact::Ratio(static_cast<uint64_t>(kurs), 100));
        const exact::Double value =
            exact::Divide(product, exact::Ratio(static_cast<uint64_t>(UnitsOfCode(code)), 1));
        const bool isBelow = value.Mantissa == 0 || value.Exponent < pfennig.Exponent ||
                             (value.Exponent == pfennig.Exponent && value.Mantissa < pfennig.Mantissa);
        const int64_t expected = isBelow ? 0 : exact::RoundedDecimals(value, 2);
        AmountText amount = {};
        KurseRecord rate{};
        AmountOfMagnitude(amount, magnitude, false);
        AmountOfMagnitude(rate.Kurs, kurs, false);
        rate.Einheit = code;
        ASSERT_TRUE(ConvertAmount(context, rate, amount, out));
        ASSERT_EQ(expected, MagnitudeOf(out)) << amount << " " << rate.Kurs << " " << code;
    }
}

TEST_F(Rates, ARefusedConversionShowsItsMessage)
{
    KurseRecord rate = MakeKurs("USD", "180101", "000000002,00");
    AmountText amount = {};
    SetText(amount, "999999999,99");
    context->ShowMessages = 1;
    EXPECT_FALSE(ConvertAmount(*context, rate, amount, amount));
    EXPECT_EQ(Lines{"Der Betrag kann nicht umgerechnet werden!"}, books.TakeBoxes());
    context->ShowMessages = 0;
    EXPECT_FALSE(ConvertAmount(*context, rate, amount, amount));
    EXPECT_EQ(Lines{}, books.TakeBoxes());
}

TEST(Units, CodesAreIndexesFromAHundred)
{
    EXPECT_EQ(1, UnitsOfCode(1));
    EXPECT_EQ(10, UnitsOfCode(10));
    EXPECT_EQ(100, UnitsOfCode(2));
    EXPECT_EQ(1000, UnitsOfCode(3));
    EXPECT_EQ(10000, UnitsOfCode(4));
    EXPECT_EQ(100000, UnitsOfCode(5));
    EXPECT_EQ(0, UnitsOfCode(0));
    EXPECT_EQ(6, UnitsOfCode(6));
    EXPECT_EQ(-1, UnitsOfCode(-1));

    EXPECT_EQ(1, CodeOfUnits(1));
    EXPECT_EQ(10, CodeOfUnits(10));
    EXPECT_EQ(2, CodeOfUnits(100));
    EXPECT_EQ(3, CodeOfUnits(1000));
    EXPECT_EQ(4, CodeOfUnits(10000));
    EXPECT_EQ(5, CodeOfUnits(100000));
    EXPECT_EQ(5, CodeOfUnits(5)) << "below 11 as they are";
    EXPECT_EQ(50, CodeOfUnits(50));
    EXPECT_EQ(0, CodeOfUnits(0));
}

TEST(FormatRateRow, JoinsItsColumnsByTabs)
{
    RateRow row;
    FormatRateRow(MakeKurs("USD", "180315", "000000001,80", 2), row, 1);
    EXPECT_EQ("15.03.98\t\t" + std::string(20, ' ') + "1,80\t100", std::string(row));
    FormatRateRow(MakeKurs("ITL", "180315", "000001234,50", 3, true), row, 1);
    EXPECT_EQ("15.03.98\tD\t" + std::string(13, ' ') + "1.234,50\t1000", std::string(row));
    // In a fiscal year from July month 9 is March of the next year.
    FormatRateRow(MakeKurs("USD", "170915", "000000001,80"), row, 7);
    EXPECT_EQ("15.03.98\t\t" + std::string(20, ' ') + "1,80\t1", std::string(row));
}
