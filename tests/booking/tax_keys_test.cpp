#include "src/booking/tax.h"

#include "src/frame/record_store.h"
#include "tests/booking/ledger.h"
#include "tests/support/engine_faults.h"

#include <gtest/gtest.h>

using namespace vark;
using namespace vark::test;

namespace {

struct KeyChoice {
    uint8_t Key;
    uint16_t Seite;

    bool operator==(const KeyChoice &) const = default;
};

void PrintTo(const KeyChoice &choice, std::ostream *out)
{
    *out << "key " << int{choice.Key} << " side " << choice.Seite;
}

KeyChoice Choose(unsigned sollKey, unsigned habenKey, int16_t sollZuordnung, int16_t habenZuordnung)
{
    KeyChoice choice{};
    ChooseTaxKey(static_cast<uint8_t>(sollKey), static_cast<uint8_t>(habenKey), sollZuordnung, habenZuordnung,
                 choice.Key, choice.Seite);
    return choice;
}

constexpr KeyChoice none{0, SteuerseiteKeine};

struct RateCase : ::testing::Test {
    // "key 2, sequence 0, 16,00, account 1776", or "none".
    std::string Find(uint8_t key, const char *date)
    {
        PackedDate packed;
        SetText(packed, date);
        SplitRecord image{};
        if (!RateAt(BoundContext(), key, packed, image)) return "none";
        return "key " + std::to_string(image.Steuerschluessel) + ", sequence " +
               std::to_string(image.Steuerfolge) + ", " + TextOf(image.Steuersatz) + ", account " +
               TextOf(image.Steuerkonto);
    }
    void Rate(uint16_t code, uint16_t folge, const char *ab, const char *satz)
    {
        books.Insert(1, TableSteke, MakeSteke(code, folge, ab, satz, "1776", "1576"));
    }
    RateCase() { books.AddMandant(1); }

    Books books;
};

} // namespace

TEST(ChooseTaxKey, KeyOfTheOnlySideThatHasOne)
{
    EXPECT_EQ((KeyChoice{2, SteuerseiteSoll}), Choose(2, 0, ZuordnungAktiva, ZuordnungAktiva));
    EXPECT_EQ((KeyChoice{4, SteuerseiteHaben}), Choose(0, 4, ZuordnungAktiva, ZuordnungAktiva));
    EXPECT_EQ((KeyChoice{0x22, SteuerseiteSoll}), Choose(0x22, 0, ZuordnungGuv, ZuordnungKeine));
    EXPECT_EQ((KeyChoice{0x84, SteuerseiteHaben}), Choose(0, 0x84, ZuordnungKeine, ZuordnungGuv));
}

TEST(ChooseTaxKey, NoneWithoutAnyKey) { EXPECT_EQ(none, Choose(0, 0, ZuordnungAktiva, ZuordnungAktiva)); }

TEST(ChooseTaxKey, NoneWithAKeyOnBothSides)
{
    EXPECT_EQ(none, Choose(2, 2, ZuordnungAktiva, ZuordnungGuv));
    EXPECT_EQ(none, Choose(2, 0x24, ZuordnungAktiva, ZuordnungGuv));
}

TEST(ChooseTaxKey, AKeyOfTheVorsteuerBitAloneCountsAsEmptyOnTheOtherSide)
{
    EXPECT_EQ((KeyChoice{2, SteuerseiteSoll}), Choose(2, 0x20, ZuordnungAktiva, ZuordnungAktiva));
    EXPECT_EQ((KeyChoice{2, SteuerseiteHaben}), Choose(0x20, 2, ZuordnungAktiva, ZuordnungAktiva));
}

TEST(ChooseTaxKey, AVorsteuerBitAloneOnHabenIsAKeyWithASide)
{
    EXPECT_EQ((KeyChoice{0x20, SteuerseiteHaben}), Choose(0, 0x20, ZuordnungAktiva, ZuordnungAktiva));
}

TEST(ChooseTaxKey, NoneWhenTheSideWithoutKeyIsAGuvAccount)
{
    EXPECT_EQ(none, Choose(0, 2, ZuordnungGuv, ZuordnungAktiva));
    EXPECT_EQ(none, Choose(2, 0, ZuordnungAktiva, ZuordnungGuv));
}

TEST(ChooseTaxKey, NoneWhenTheSideWithTheKeyIsAPassivaAccount)
{
    EXPECT_EQ(none, Choose(0, 2, ZuordnungAktiva, ZuordnungPassiva));
    EXPECT_EQ(none, Choose(2, 0, ZuordnungPassiva, ZuordnungAktiva));
}

TEST(ChooseTaxKey, APassivaAccountWithoutKeyDoesNotTakeTheOtherSidesKeyAway)
{
    EXPECT_EQ((KeyChoice{2, SteuerseiteHaben}), Choose(0, 2, ZuordnungPassiva, ZuordnungGuv));
    EXPECT_EQ((KeyChoice{2, SteuerseiteSoll}), Choose(2, 0, ZuordnungGuv, ZuordnungPassiva));
}

TEST_F(RateCase, TheNewestRateFromItsFirstDayOn)
{
    Rate(2, 0, "010418", "16,00");
    Rate(2, 1, "", "15,00");
    EXPECT_EQ("key 2, sequence 0, 16,00, account    1776", Find(2, "010418"));
    EXPECT_EQ("key 2, sequence 1, 15,00, account    1776", Find(2, "310318"));
}

TEST_F(RateCase, AnOlderRateIsFoundOverSeveralSteps)
{
    Rate(2, 0, "010418", "16,00");
    Rate(2, 1, "010113", "15,00");
    Rate(2, 2, "", "14,00");
    EXPECT_EQ("key 2, sequence 1, 15,00, account    1776", Find(2, "010113"));
    EXPECT_EQ("key 2, sequence 2, 14,00, account    1776", Find(2, "311212"));
}

TEST_F(RateCase, NoneWhenAllRatesAreYounger)
{
    Rate(2, 0, "010418", "16,00");
    Rate(2, 1, "010113", "15,00");
    EXPECT_EQ("none", Find(2, "010112"));
}

TEST_F(RateCase, RatesThatAreNotNumberedFromZeroEndWithTheFirst)
{
    Rate(2, 1, "010418", "16,00");
    Rate(2, 2, "", "15,00");
    EXPECT_EQ("key 2, sequence 1, 16,00, account    1776", Find(2, "010418"));
    EXPECT_EQ("none", Find(2, "310318"));
}

TEST_F(RateCase, TheVorsteuerBitChoosesTheOtherTaxAccount)
{
    Rate(2, 0, "", "16,00");
    EXPECT_EQ("key 2, sequence 0, 16,00, account    1576", Find(0x22, "150518"));
}

TEST_F(RateCase, TheRateOfAnotherCodeIsTakenWhereTheCodeHasNone)
{
    Rate(4, 0, "", "07,00");
    EXPECT_EQ("key 2, sequence 0, 07,00, account    1776", Find(2, "150518"));
    EXPECT_EQ("key 0, sequence 0, 07,00, account    1776", Find(SteuerEg, "150518"));
}

TEST_F(RateCase, ARateOfAnotherCodeThatIsNotYetValidIsNone)
{
    Rate(4, 0, "010418", "07,00");
    EXPECT_EQ("none", Find(2, "310318"));
}

TEST_F(RateCase, NoneWithoutAnyRow)
{
    EXPECT_EQ("none", Find(2, "150518"));
    EXPECT_EQ(Lines{}, books.TakeBoxes());
}

TEST_F(RateCase, CodeAndSequenceAreSetAlsoWhenThereIsNoRate)
{
    PackedDate date;
    SetText(date, "150518");
    SplitRecord image{};
    image.Steuerfolge = 9;
    SetText(image.Steuersatz, "11,00");
    EXPECT_FALSE(RateAt(BoundContext(), 0x22, date, image));
    EXPECT_EQ(2, +image.Steuerschluessel);
    EXPECT_EQ(0, +image.Steuerfolge);
    EXPECT_EQ("11,00", TextOf(image.Steuersatz));
}

TEST_F(RateCase, AnEngineFailureIsNoRateAndIsShown)
{
    Rate(2, 0, "010418", "16,00");
    Rate(2, 1, "", "15,00");
    BoundContext();
    PackedDate date;
    SetText(date, "310318");
    SplitRecord image{};
    ThreadContext &context = BoundContext();
    FailEngineOperation(5, 1, 2); // the second row is read by Get Equal
    EXPECT_FALSE(RateAt(context, 2, date, image));
    StopEngineFaults();
    EXPECT_EQ(Lines{"I/O Error"}, books.TakeBoxes());
}

TEST_F(RateCase, TheTableIsAsOpenAsBefore)
{
    Rate(2, 0, "", "16,00");
    ThreadContext &context = BoundContext();
    const int32_t before = context.OpenCounts[TableSteke];
    Find(2, "150518");
    Find(8, "150518");
    EXPECT_EQ(before, context.OpenCounts[TableSteke]);
}
