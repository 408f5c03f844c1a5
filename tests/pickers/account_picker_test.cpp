// VARK_HoleKonto, dialog 102.
#include "src/frame/lifecycle.h"
#include "src/platform/window_api.h"
#include "tests/pickers/pick_books.h"
#include "tests/support/engine_faults.h"

#include <gtest/gtest.h>

using namespace vark;
using namespace vark::test;

namespace {

SakoRecord Sako(const char *konto, const char *kuerzel, const char *name)
{
    SakoRecord record = MakeSako(konto);
    SetText(record.Kuerzel, kuerzel);
    SetText(record.Name, name);
    return record;
}

// By number: 99, 1000, 1200, 1210, 8400. By Kürzel: BANK, BANK2, ERLÖSE, KASSE, VORTRAG.
void AddAccounts(Books &books)
{
    books.AddMandant(1);
    books.Insert(1, TableSako, Sako("1000", "KASSE", "Hauptkasse"));
    books.Insert(1, TableSako, Sako("1200", "BANK", "Sparkasse Köln"));
    books.Insert(1, TableSako, Sako("99", "VORTRAG", "Saldenvorträge"));
    books.Insert(1, TableSako, Sako("8400", "ERLÖSE", "Erlöse 16 %"));
    books.Insert(1, TableSako, Sako("1210", "BANK2", "Volksbank"));
}

} // namespace

TEST(AccountPicker, ListsNumberKuerzelAndNameInTheOrderOfTheNumbers)
{
    PickBooks books("dialog 102\n"
                    "expect title Sachkontenauswahl\n"
                    "expect label 1000 &Liste:\n"
                    "expect label 1006 &Suche:\n"
                    "expect focus 1000\n"
                    "expect checked 1002\n"
                    "expect unchecked 1003\n"
                    "expect rows 1000 5\n"
                    "expect row 1000 99\tVORTRAG\tSaldenvorträge\n"
                    "expect text 1006 99\n"
                    "key Down\n"
                    "expect row 1000 1000\tKASSE\tHauptkasse\n"
                    "expect text 1006 1000\n"
                    "select 1000 2\n"
                    "expect row 1000 1200\tBANK\tSparkasse Köln\n"
                    "select 1000 3\n"
                    "expect row 1000 1210\tBANK2\tVolksbank\n"
                    "select 1000 4\n"
                    "expect row 1000 8400\tERLÖSE\tErlöse 16 %\n"
                    "expect text 1006 8400\n"
                    "select 1000 0\n"
                    "press 1\n");
    AddAccounts(books);
    char konto[8];
    EXPECT_EQ(1, VARK_HoleKonto(nullptr, 1, 1, nullptr, nullptr, konto));
    EXPECT_EQ("", books.Trouble());
    EXPECT_STREQ("99", konto);
    EXPECT_EQ("-", books.Remembered("Konto")) << "accounts are not remembered";
}

TEST(AccountPicker, SortedByKuerzelTheNumberIsTheSecondColumn)
{
    PickBooks books("press 1003\n"
                    "expect checked 1003\n"
                    "expect unchecked 1002\n"
                    "expect focus 1000\n"
                    "expect rows 1000 5\n"
                    "expect row 1000 BANK\t1200\tSparkasse Köln\n"
                    "expect text 1006 BANK\n"
                    "select 1000 1\n"
                    "expect row 1000 BANK2\t1210\tVolksbank\n"
                    "select 1000 2\n"
                    "expect row 1000 ERLÖSE\t8400\tErlöse 16 %\n"
                    "select 1000 3\n"
                    "expect row 1000 KASSE\t1000\tHauptkasse\n"
                    "select 1000 4\n"
                    "expect row 1000 VORTRAG\t99\tSaldenvorträge\n"
                    "activate 1000 2\n");
    AddAccounts(books);
    char konto[8];
    EXPECT_EQ(1, VARK_HoleKonto(nullptr, 1, 1, "", "", konto));
    EXPECT_EQ("", books.Trouble());
    EXPECT_STREQ("8400", konto);
}

TEST(AccountPicker, BothLimitsBelongToTheRangeInEitherSorting)
{
    PickBooks books("expect rows 1000 3\n"
                    "expect row 1000 1000\tKASSE\tHauptkasse\n"
                    "select 1000 2\n"
                    "expect row 1000 1210\tBANK2\tVolksbank\n"
                    "press 1003\n"
                    "expect rows 1000 3\n"
                    "expect row 1000 BANK\t1200\tSparkasse Köln\n"
                    "select 1000 1\n"
                    "expect row 1000 BANK2\t1210\tVolksbank\n"
                    "select 1000 2\n"
                    "expect row 1000 KASSE\t1000\tHauptkasse\n"
                    "press 1\n");
    AddAccounts(books);
    char konto[8];
    EXPECT_EQ(1, VARK_HoleKonto(nullptr, 1, 1, "1000", "1210", konto));
    EXPECT_EQ("", books.Trouble());
    EXPECT_STREQ("1000", konto);
}

TEST(AccountPicker, ALineMayBeginAsAnEarlierOneDoes)
{
    PickBooks books("press 1003\n"
                    "select 1000 1\n"
                    "expect row 1000 BANK\t1300\tPostbank\n"
                    "expect text 1006 BANK\n"
                    "press 1\n");
    books.AddMandant(1);
    books.Insert(1, TableSako, Sako("1200", "BANK", "Sparkasse"));
    books.Insert(1, TableSako, Sako("1300", "BANK", "Postbank"));
    char konto[8];
    EXPECT_EQ(1, VARK_HoleKonto(nullptr, 1, 1, "", "", konto));
    EXPECT_EQ("", books.Trouble());
    EXPECT_STREQ("1300", konto);
}

TEST(AccountPicker, ClickingTheActiveSortingChangesNothing)
{
    PickBooks books(R"(
        select 1000 3
        press 1002
        expect focus 1002
        expect row 1000 3
        press 1003
        select 1000 4
        press 1003
        expect row 1000 4
        press 1002
        expect row 1000 0
        expect text 1006 99
        press 2
    )");
    AddAccounts(books);
    char konto[8] = "unset";
    EXPECT_EQ(0, VARK_HoleKonto(nullptr, 1, 1, nullptr, nullptr, konto));
    EXPECT_EQ("", books.Trouble());
    EXPECT_STREQ("unset", konto);
}

TEST(AccountPicker, TypingSelectsTheFirstLineThatBeginsSo)
{
    PickBooks books("key Alt+s\n"
                    "key 1\n"
                    "expect row 1000 1000\tKASSE\tHauptkasse\n"
                    "expect text 1006 1\n"
                    "key 2\n"
                    "expect row 1000 1200\tBANK\tSparkasse Köln\n"
                    "key 1\n"
                    "expect row 1000 1210\tBANK2\tVolksbank\n"
                    "key 7\n"
                    "expect row 1000 1210\tBANK2\tVolksbank\n"
                    "expect text 1006 1217\n"
                    "text 1006 84\n"
                    "expect row 1000 8400\tERLÖSE\tErlöse 16 %\n"
                    "expect text 1006 84\n"
                    "press 1003\n"
                    "text 1006 erl\n"
                    "expect row 1000 ERLÖSE\t8400\tErlöse 16 %\n"
                    "text 1006 123456789\n"
                    "expect text 1006 12345678\n"
                    "expect row 1000 ERLÖSE\t8400\tErlöse 16 %\n"
                    "press 1\n");
    AddAccounts(books);
    char konto[8];
    EXPECT_EQ(1, VARK_HoleKonto(nullptr, 1, 1, nullptr, nullptr, konto));
    EXPECT_EQ("", books.Trouble());
    EXPECT_STREQ("8400", konto);
}

TEST(AccountPicker, TheRangeBoundsTheNumbersInEitherOrder)
{
    PickBooks books("expect rows 1000 3\n"
                    "expect row 1000 1000\tKASSE\tHauptkasse\n"
                    "select 1000 2\n"
                    "expect row 1000 1210\tBANK2\tVolksbank\n"
                    "press 1003\n"
                    "expect rows 1000 3\n"
                    "expect row 1000 BANK\t1200\tSparkasse Köln\n"
                    "select 1000 2\n"
                    "expect row 1000 KASSE\t1000\tHauptkasse\n"
                    "press 1\n"
                    "expect rows 1000 2\n"
                    "expect row 1000 1210\tBANK2\tVolksbank\n"
                    "press 2\n"
                    "expect rows 1000 2\n"
                    "expect row 1000 99\tVORTRAG\tSaldenvorträge\n"
                    "press 2\n");
    AddAccounts(books);
    char konto[8];
    EXPECT_EQ(1, VARK_HoleKonto(nullptr, 1, 1, "100", "1210", konto));
    EXPECT_STREQ("1000", konto);
    EXPECT_EQ(0, VARK_HoleKonto(nullptr, 1, 1, "1201", nullptr, konto));
    EXPECT_EQ(0, VARK_HoleKonto(nullptr, 1, 1, nullptr, "   1000", konto));
    EXPECT_EQ("", books.Trouble());
}

TEST(AccountPicker, NothingInTheRangeNeedsNoDialog)
{
    Books books;
    AddAccounts(books);
    char konto[8];
    EXPECT_EQ(-1, VARK_HoleKonto(nullptr, 1, 1, "1211", "8399", konto));
    EXPECT_EQ(-1, VARK_HoleKonto(nullptr, 1, 1, "8401", nullptr, konto));
    EXPECT_EQ(-1, VARK_HoleKonto(nullptr, 1, 1, nullptr, "98", konto));
    EXPECT_EQ(-1, VARK_HoleKonto(nullptr, 1, 1, "1210", "1200", konto));
    EXPECT_EQ(-1, VARK_HoleKonto(nullptr, 1, 2, nullptr, nullptr, konto)) << "an empty table";
    EXPECT_EQ(Lines{}, books.TakeLog());
    EXPECT_EQ(1, GetThreadContext()->OpenCounts[TableSako]) << "as the Mandant's selection left it";
}

TEST(AccountPicker, EachKindHasItsTitleAndNames)
{
    PickBooks books("expect title Kreditorenkontenauswahl\n"
                    "expect row 1000 70000\tK70000\tKonto 70000\n"
                    "press 1\n"
                    "expect title Debitorenkontenauswahl\n"
                    "expect row 1000 10000\tK10000\tKonto 10000\n"
                    "press 1\n"
                    "expect title Kostenstellenauswahl\n"
                    "expect row 1000 100\tK100\tKostenstelle 100\n"
                    "press 1\n");
    AddAccounts(books);
    books.Insert(1, TableKred, MakePersonal("70000"));
    books.Insert(1, TableDebi, MakePersonal("10000"));
    books.Insert(1, TableKore, MakeKore("100"));
    char konto[8];
    EXPECT_EQ(1, VARK_HoleKonto(nullptr, 1, 2, nullptr, nullptr, konto));
    EXPECT_STREQ("70000", konto);
    EXPECT_EQ(1, VARK_HoleKonto(nullptr, 1, 4, nullptr, nullptr, konto));
    EXPECT_STREQ("10000", konto);
    EXPECT_EQ(1, VARK_HoleKonto(nullptr, 1, 8, nullptr, nullptr, nullptr)) << "the number is not wanted";
    EXPECT_EQ("", books.Trouble());
}

TEST(AccountPicker, ABadKontoartAndAnUnknownMandantAreRefused)
{
    Books books;
    AddAccounts(books);
    char konto[8] = "unset";
    for (const int32_t art : {0, 3, 5, 16, -1}) {
        EXPECT_EQ(-7, VARK_HoleKonto(nullptr, 1, art, nullptr, nullptr, konto)) << art;
    }
    EXPECT_EQ(-5, VARK_HoleKonto(nullptr, 2, 1, nullptr, nullptr, konto));
    EXPECT_EQ(-5, VARK_HoleKonto(nullptr, 2, 3, nullptr, nullptr, konto)) << "the Mandant comes first";
    EXPECT_EQ(Lines{}, books.TakeLog());
    EXPECT_STREQ("unset", konto);
}

TEST(AccountPicker, AFullListEndsTheDialog)
{
    PickBooks books(R"(
        box ok Die Listbox kann nicht vollständig gefüllt werden!
    )");
    AddAccounts(books);
    VarkUiLimitLists(4);
    char konto[8];
    EXPECT_EQ(-2, VARK_HoleKonto(nullptr, 1, 1, nullptr, nullptr, konto));
    EXPECT_EQ("", books.Trouble());
}

TEST(AccountPicker, AnyFailureOfTheEngineEndsWithACode)
{
    Books books;
    AddAccounts(books);
    char konto[8];
    EXPECT_EQ(0, VARK_HoleKonto(nullptr, 1, 1, nullptr, nullptr, konto));
    books.TakeLog();
    for (int n = 1;; ++n) {
        FailEngineCall(n);
        const int32_t result = VARK_HoleKonto(nullptr, 1, 1, nullptr, nullptr, konto);
        const bool hit = StopEngineFaults() >= n;
        EXPECT_EQ(1, GetThreadContext()->OpenCounts[TableSako]) << n;
        const Lines log = books.TakeLog();
        if (!hit) {
            EXPECT_EQ(0, result);
            break;
        }
        ASSERT_LT(n, 20);
        EXPECT_EQ(-3, result) << n;
        EXPECT_EQ(Lines{"box I/O Error"}, log) << n;
    }
}

TEST(AccountPicker, AFailureWhileSortingAnewEndsTheDialog)
{
    // The first record is read at the opening, and again for the other order.
    PickBooks books(R"(
        press 1003
        box ok I/O Error
    )");
    AddAccounts(books);
    char konto[8];
    FailEngineOperation(12, 2, 2);
    EXPECT_EQ(-3, VARK_HoleKonto(nullptr, 1, 1, nullptr, nullptr, konto));
    StopEngineFaults();
    EXPECT_EQ("", books.Trouble());
}

TEST(AccountPicker, TabGoesFromTheFieldThroughTheSortingToTheListAndTheButtons)
{
    PickBooks books(R"(
        expect focus 1000
        key Tab
        expect focus 1
        key Tab
        expect focus 2
        key Tab
        expect focus 1006
        key Tab
        expect focus 1002
        key Tab
        expect focus 1000
        key Alt+s
        expect focus 1006
        key Alt+l
        expect focus 1000
        key Alt+k
        expect checked 1003
        expect focus 1000
        key Alt+n
        expect checked 1002
        key Alt+a
    )");
    AddAccounts(books);
    EXPECT_EQ(0, VARK_HoleKonto(nullptr, 1, 1, nullptr, nullptr, nullptr));
    EXPECT_EQ("", books.Trouble());
}
