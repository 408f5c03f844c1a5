#include "src/booking/account_queries.h"

#include "include/vark40.h"
#include "src/frame/lifecycle.h"
#include "tests/booking/ledger.h"
#include "tests/support/engine_faults.h"

#include <gtest/gtest.h>

using namespace vark;
using namespace vark::test;

namespace {

struct Accounts : ::testing::Test {
    int32_t Find(const char *konto)
    {
        AccountNumber number;
        SetText(number, Justified(konto));
        return FindAccount(BoundContext(), number, sako, hasUstId);
    }

    Ledger books;
    SakoRecord sako{};
    bool hasUstId = false;
};

// An installation with these numbers as Debitoren, and others elsewhere.
struct FreeNumbers : ::testing::Test {
    FreeNumbers() { books.AddMandant(1); }
    void Debitor(const char *konto) { books.Insert(1, TableDebi, MakePersonal(konto)); }
    void Kreditor(const char *konto) { books.Insert(1, TableKred, MakePersonal(konto)); }
    void Sachkonto(const char *konto) { books.Insert(1, TableSako, MakeSako(konto)); }
    // The next free number, or the code.
    std::string Next(int32_t art = KontoartDebitor)
    {
        char out[8] = "unset";
        const int32_t code = VARK_HoleFreieKontonr(1, art, out);
        return code == 1 ? out : std::to_string(code);
    }

    Books books;
};

} // namespace

TEST_F(Accounts, AreSearchedAmongSachkontenDebitorenKreditoren)
{
    EXPECT_EQ(1, Find("1200"));
    EXPECT_EQ("Sachkonto 1200", TextOf(sako.Name));
    EXPECT_EQ(4, Find("10000"));
    EXPECT_EQ(2, Find("70000"));
    EXPECT_EQ(16, Find("5"));
}

TEST_F(Accounts, TheFirstKindThatHasTheNumberCounts)
{
    books.Insert(1, TableKred, MakePersonal("10000"));
    EXPECT_EQ(4, Find("10000"));
    books.Insert(1, TableSako, MakeSako("10000"));
    EXPECT_EQ(1, Find("10000"));
}

TEST_F(Accounts, UstIdIsToldForPersonalAccountsOnly)
{
    PersonalRecord kreditor = MakePersonal("70002");
    SetText(kreditor.UstId, "NL1");
    books.Insert(1, TableKred, kreditor);
    Find("10001");
    EXPECT_TRUE(hasUstId);
    Find("10000");
    EXPECT_FALSE(hasUstId);
    Find("70002");
    EXPECT_TRUE(hasUstId);
    Find("1200");
    EXPECT_FALSE(hasUstId);
    hasUstId = true;
    Find("5");
    EXPECT_FALSE(hasUstId);
}

TEST_F(Accounts, AnEngineFailureInAnyOfTheTablesIsZero)
{
    BoundContext();
    ThreadContext &context = BoundContext();
    AccountNumber number;
    SetText(number, Justified("5"));
    for (int n = 1; n <= 3; ++n) {
        FailEngineCall(n);
        EXPECT_EQ(0, FindAccount(context, number, sako, hasUstId));
        StopEngineFaults();
        EXPECT_EQ(Lines{"I/O Error"}, books.TakeBoxes());
    }
}

TEST_F(Accounts, ExistiertKontoLooksIntoTheTableOfTheKind)
{
    books.Insert(1, TableKore, MakeKore("100"));
    EXPECT_EQ(1, VARK_ExistiertKonto(1, "1200", 1));
    EXPECT_EQ(0, VARK_ExistiertKonto(1, "1200", 2));
    EXPECT_EQ(0, VARK_ExistiertKonto(1, "1200", 4));
    EXPECT_EQ(0, VARK_ExistiertKonto(1, "1200", 8));
    EXPECT_EQ(1, VARK_ExistiertKonto(1, "70000", 2));
    EXPECT_EQ(1, VARK_ExistiertKonto(1, "10000", 4));
    EXPECT_EQ(1, VARK_ExistiertKonto(1, "100", 8));
}

TEST_F(Accounts, ExistiertKontoRefusesOtherKinds)
{
    for (const int32_t art : {0, 3, 5, 7, 16, -1, INT32_MAX, INT32_MIN}) {
        EXPECT_EQ(-7, VARK_ExistiertKonto(1, "1200", art)) << art;
    }
}

TEST_F(Accounts, ExistiertKontoSelectsTheMandantFirstAndShowsNothing)
{
    BoundContext().ShowMessages = 1;
    EXPECT_EQ(-5, VARK_ExistiertKonto(9, "1200", 3));
    EXPECT_EQ(-5, VARK_ExistiertKonto(-1, "1200", 1));
    EXPECT_EQ(-5, VARK_ExistiertKonto(65537, "1200", 1));
    EXPECT_EQ(Lines{}, books.TakeBoxes());
}

TEST_F(Accounts, ExistiertKontoTakesAnyText)
{
    EXPECT_EQ(1, VARK_ExistiertKonto(1, "   1200", 1));
    EXPECT_EQ(1, VARK_ExistiertKonto(1, "   12009", 1)) << "cut to seven characters";
    EXPECT_EQ(0, VARK_ExistiertKonto(1, "1200 ", 1));
    EXPECT_EQ(0, VARK_ExistiertKonto(1, "", 1));
    EXPECT_EQ(0, VARK_ExistiertKonto(1, nullptr, 1));
    EXPECT_EQ(0, VARK_ExistiertKonto(1, std::string(100000, '9').c_str(), 1));
}

TEST_F(Accounts, ExistiertKontoTellsAnEngineFailure)
{
    ASSERT_EQ(1, VARK_ExistiertKonto(1, "1200", 1));
    FailEngineCall(2); // the first reads the Mandant
    EXPECT_EQ(-3, VARK_ExistiertKonto(1, "1200", 1));
    StopEngineFaults();
    EXPECT_EQ(Lines{"I/O Error"}, books.TakeBoxes());
}

TEST_F(FreeNumbers, OneAboveTheHighest)
{
    Debitor("10000");
    Debitor("19999");
    EXPECT_EQ("20000", Next());
}

TEST_F(FreeNumbers, NumbersOfAllAccountsAreLeftOut)
{
    Debitor("19999");
    Sachkonto("20000");
    Kreditor("20001");
    Sachkonto("20003");
    EXPECT_EQ("20002", Next());
}

TEST_F(FreeNumbers, BeginWithTenAndSeventyThousand)
{
    EXPECT_EQ("10000", Next(KontoartDebitor));
    EXPECT_EQ("70000", Next(KontoartKreditor));
    Sachkonto("10000");
    EXPECT_EQ("10000", Next()) << "no search takes place";
}

TEST_F(FreeNumbers, AreAskedOfTheKindsOwnTable)
{
    Debitor("10005");
    Kreditor("70009");
    EXPECT_EQ("10006", Next(KontoartDebitor));
    EXPECT_EQ("70010", Next(KontoartKreditor));
}

TEST_F(FreeNumbers, EndWithSevenDigits)
{
    Debitor("9999998");
    EXPECT_EQ("9999999", Next());
    Debitor("9999999");
    EXPECT_EQ("-37", Next());
    EXPECT_EQ(Lines{}, books.TakeBoxes());
}

TEST_F(FreeNumbers, KeepAPrefix)
{
    Debitor("K100");
    EXPECT_EQ("K101", Next());
}

TEST_F(FreeNumbers, ZerosBehindAPrefixAreNotKept)
{
    Debitor("K007");
    EXPECT_EQ("K7", Next());
    Kreditor("K7");
    EXPECT_EQ("K8", Next());
}

TEST_F(FreeNumbers, APrefixWithoutDigitsGetsThem)
{
    Debitor("MEIER");
    EXPECT_EQ("MEIER1", Next());
}

TEST_F(FreeNumbers, DigitsWriteOverTheEndOfAPrefixThatLeavesNoRoom)
{
    Debitor("MUELLER");
    EXPECT_EQ("MUELLE1", Next());
}

TEST_F(FreeNumbers, ADigitMoreWritesOverThePrefix)
{
    Debitor("ABCDE99");
    EXPECT_EQ("ABCD100", Next());
}

TEST_F(FreeNumbers, DigitsInFrontOfLettersBelongToThePrefix)
{
    Debitor("1A9");
    EXPECT_EQ("1A10", Next());
}

TEST_F(FreeNumbers, AHighestNumberZeroIsAPrefixWithoutLetters)
{
    Debitor("0");
    EXPECT_EQ("", Next()) << "the digits of zero are none";
}

TEST_F(FreeNumbers, RefuseOtherKindsBeforeAnythingElse)
{
    for (const int32_t art : {0, 1, 3, 6, 8, 16, -4}) {
        EXPECT_EQ("-7", Next(art)) << art;
    }
    char out[8];
    EXPECT_EQ(-7, VARK_HoleFreieKontonr(9, 1, out));
    EXPECT_EQ(Lines{}, books.TakeBoxes());
}

TEST_F(FreeNumbers, AnUnknownMandantIsShownAsTheLastCallWished)
{
    char out[8];
    EXPECT_EQ(-5, VARK_HoleFreieKontonr(9, 4, out));
    EXPECT_EQ(Lines{}, books.TakeBoxes());
    BoundContext().ShowMessages = 1;
    EXPECT_EQ(-5, VARK_HoleFreieKontonr(9, 4, out));
    EXPECT_EQ(Lines{"Der Mandant existiert nicht!"}, books.TakeBoxes());
}

TEST_F(FreeNumbers, TheAnswerMayBeUnwanted)
{
    Debitor("10000");
    EXPECT_EQ(1, VARK_HoleFreieKontonr(1, 4, nullptr));
}

TEST_F(FreeNumbers, TheAnswerStaysUntouchedOnFailure)
{
    Debitor("9999999");
    char out[8] = "unset";
    EXPECT_EQ(-37, VARK_HoleFreieKontonr(1, 4, out));
    EXPECT_STREQ("unset", out);
}

TEST_F(FreeNumbers, EveryFailureOfTheEngineIsToldAndOpensNothingForGood)
{
    Debitor("10000");
    Sachkonto("10001");
    ASSERT_EQ("10002", Next());
    const ThreadContext &context = BoundContext();
    const int32_t before = context.OpenCounts[TableDebi];
    FailEngineCall(0);
    Next();
    const int calls = StopEngineFaults();
    EXPECT_EQ(6, calls) << "Mandant, highest, twice the tables as far as needed";
    books.TakeBoxes();
    for (int n = 1; n <= calls; ++n) {
        FailEngineCall(n);
        EXPECT_EQ("-3", Next()) << n;
        StopEngineFaults();
        EXPECT_EQ(Lines{"I/O Error"}, books.TakeBoxes());
        EXPECT_EQ(before, context.OpenCounts[TableDebi]);
    }
}
