// What becomes of a broken belief where a host runs: nothing is written, and the next call works.
#include "src/frame/beliefs.h"

#include "include/vark40.h"
#include "src/booking/written_posting.h"
#include "src/frame/lifecycle.h"
#include "src/frame/record_store.h"
#include "src/frame/transactions.h"
#include "src/values/amount_texts.h"
#include "tests/booking/ledger.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>

using namespace vark;
using namespace vark::test;

namespace {

struct Beliefs : testing::Test {
    Ledger books;

    void SetUp() override { StopsAtBrokenBelief = false; }
    void TearDown() override
    {
        StopsAtBrokenBelief = true;
        VARK_SchliesseDB();
    }

    static int32_t Post()
    {
        return VARK_BuchungEinfuegenDirekt(1, 1, 16, "15.04.1998", "B1", "Text", "1200", 1, "1000", 1,
                                           "100,00", "", "");
    }
    // The posting fails as by the engine while `break` holds, and works once it is mended.
    void ExpectUndone(const std::function<void(ThreadContext &)> &breakIt,
                      const std::function<void(ThreadContext &)> &mend)
    {
        ASSERT_EQ(1, Post());
        const size_t before = books.Postings().size();
        ThreadContext &context = *GetThreadContext();
        breakIt(context);
        EXPECT_EQ(engineFailure, Post());
        EXPECT_TRUE(HasBrokenBelief(context));
        EXPECT_EQ(0, context.TransactionDepth);
        mend(context);
        EXPECT_EQ(before, books.Postings().size());
        EXPECT_EQ(1, Post());
        EXPECT_FALSE(HasBrokenBelief(context));
        EXPECT_EQ(before + 1, books.Postings().size());
    }
};

// A posting with one Teilbuchung, as it would be written.
Buchung OnePosting()
{
    Buchung buchung{};
    buchung.Bat.Stapel = 16;
    SetText(buchung.Bat.Buchungsdatum, "150418");
    SetText(buchung.Bat.ZweitesDatum, "150418");
    buchung.Bat.Anzahl = 1;
    return buchung;
}

} // namespace

TEST_F(Beliefs, ATableWithLessThanNoUsersFailsThePosting)
{
    ExpectUndone([](ThreadContext &context) { context.OpenCounts[TableBat] = -1; },
                 [](ThreadContext &context) { context.OpenCounts[TableBat] = 1; });
}

TEST_F(Beliefs, TablesHeldOpenWithoutATransactionFailThePosting)
{
    ExpectUndone([](ThreadContext &context) { context.HoldOpen = 1; },
                 [](ThreadContext &context) { context.HoldOpen = 0; });
}

TEST_F(Beliefs, ALockThatWaitsFailsThePosting)
{
    ExpectUndone([](ThreadContext &context) { context.LockBias = 100; },
                 [](ThreadContext &context) { context.LockBias = 0; });
}

TEST_F(Beliefs, CountsOfAPostingThatDoNotAgreeKeepItOutOfTheBooks)
{
    ASSERT_EQ(1, Post());
    const size_t before = books.Postings().size();
    ThreadContext &context = *GetThreadContext();
    const auto isWritten = [&](const std::function<void(Buchung &)> &change) {
        Buchung buchung = OnePosting();
        change(buchung);
        const bool written = WriteBuchung(context, buchung, 0);
        EXPECT_EQ(0, context.TransactionDepth);
        EXPECT_EQ(0, context.HoldOpen);
        return written;
    };
    EXPECT_FALSE(isWritten([](Buchung &buchung) { buchung.Bat.Anzahl = 2; })) << "one Teilbuchung is nowhere";
    EXPECT_FALSE(isWritten([](Buchung &buchung) { buchung.Bat.Anzahl = 0; }));
    EXPECT_FALSE(isWritten([](Buchung &buchung) { buchung.Bat.Teil.Kostenzeilen = 1; })) << "no lines";
    EXPECT_FALSE(isWritten([](Buchung &buchung) { buchung.WeiterePlaetze = 1; })) << "room that is nowhere";
    EXPECT_FALSE(isWritten([](Buchung &) {})) << "nothing is written until the next export";
    EXPECT_EQ(before, books.Postings().size());
    EXPECT_EQ(1, Post());
    EXPECT_TRUE(isWritten([](Buchung &) {}));
    EXPECT_EQ(before + 2, books.Postings().size());
}

TEST_F(Beliefs, ATransactionInWhichOneBreaksIsUndone)
{
    ASSERT_EQ(1, Post());
    const size_t before = books.Postings().size();
    ThreadContext &context = *GetThreadContext();
    ASSERT_TRUE(Transaction(context, TransactionAction::Begin));
    Buchung buchung = OnePosting();
    ASSERT_TRUE(Insert(context, &buchung.Bat, TableBat));
    EXPECT_FALSE(Holds(1 + 1 == 3));
    EXPECT_FALSE(Insert(context, &buchung.Bat, TableBat));
    EXPECT_FALSE(Transaction(context, TransactionAction::End));
    EXPECT_EQ(0, context.TransactionDepth);
    EXPECT_EQ(0, context.HoldOpen);
    EXPECT_EQ(before, books.Postings().size());
    EXPECT_EQ(1, Post());
    EXPECT_EQ(before + 1, books.Postings().size());
}

TEST_F(Beliefs, AnExportInsideOfATransactionForgetsNothing)
{
    ASSERT_EQ(1, Post());
    ThreadContext *context = GetThreadContext();
    ASSERT_TRUE(Transaction(*context, TransactionAction::Begin));
    Holds(false);
    ASSERT_EQ(ready, EnterExport(context));
    EXPECT_TRUE(HasBrokenBelief(*context));
    EXPECT_FALSE(Transaction(*context, TransactionAction::End));
    ASSERT_EQ(ready, EnterExport(context));
    EXPECT_FALSE(HasBrokenBelief(*context));
}

TEST_F(Beliefs, AFieldOfAWidthThatNoAmountHasIsNoted)
{
    ASSERT_EQ(1, Post());
    ThreadContext &context = *GetThreadContext();
    char text[16] = "1,00";
    NormalizeAmountInput(text, sizeof text, 7, false);
    EXPECT_TRUE(HasBrokenBelief(context));
    EXPECT_FALSE(Transaction(context, TransactionAction::Begin));
    EXPECT_EQ(1, Post());
}

TEST_F(Beliefs, UpdatesAndDeletionsAreRefusedAsWell)
{
    ASSERT_EQ(1, Post());
    ThreadContext &context = *GetThreadContext();
    BatRecord bat{};
    bool found = false;
    ASSERT_TRUE(GetFirstF(context, &bat, found, TableBat));
    ASSERT_TRUE(found);
    Holds(false);
    EXPECT_FALSE(Update(context, &bat, TableBat));
    EXPECT_FALSE(Delete(context, TableBat));
    ForgetBrokenBeliefs(context);
    EXPECT_TRUE(Update(context, &bat, TableBat));
}

#ifndef NDEBUG
TEST(BeliefsDeathTest, StopABuildWithAssertions)
{
    // A child that is only forked has the standard error of this process, which was open for messages when
    // the library was loaded. One that is started anew would begin with the file into which it is caught.
    testing::GTEST_FLAG(death_test_style) = "fast";
    EXPECT_DEATH(Holds(false), "interner Fehler, .*beliefs_test.cpp");
}
#endif
