// The account group of a report's dialog: kinds, limits typed as numbers or as the beginning of a Kürzel, and
// the single account.
#include "src/reports/frame/account_range.h"

#include "tests/reports/frame/played_dialog.h"
#include "tests/support/alloc_faults.h"

#include <gtest/gtest.h>

using namespace vark;
using namespace vark::test;

namespace {

ReportDialog DialogWith(KontoartSet kinds, bool hasSingle = false)
{
    return {.Id = 900, .Title = "Konten", .HelpContext = 0, .Kontoarten = kinds, .HasSingle = hasSingle};
}

ReportParams Kind(int32_t kind)
{
    ReportParams params{};
    params.ParamFlags = ParamKontoArt;
    params.KontoArt = kind;
    return params;
}

void Plays(const std::string &script, const ReportDialog &dialog, const ReportParams &params = {})
{
    Played run(script, dialog, params);
    EXPECT_EQ("", run.Refusals());
    EXPECT_TRUE(run.Accepted);
}

struct Kinds {
    int32_t Given;
    KontoartSet Offered;
    int32_t Wanted;
};

struct KindOffered : testing::TestWithParam<Kinds> {};

} // namespace

TEST_P(KindOffered, KindWithoutAButtonGivesWayInOrder)
{
    Played run("dialog 900\npress 1\n", DialogWith(GetParam().Offered), Kind(GetParam().Given));
    EXPECT_EQ("", run.Refusals());
    EXPECT_EQ(GetParam().Wanted, run.Choice.Range.KontoArt);
}

INSTANTIATE_TEST_SUITE_P(AccountRange, KindOffered,
                         testing::Values(Kinds{1, 15, 1}, Kinds{2, 15, 2}, Kinds{4, 15, 4}, Kinds{8, 15, 8},
                                         Kinds{0, 15, 1}, Kinds{3, 15, 1}, Kinds{-1, 15, 1}, // no kind
                                         Kinds{8, 7, 1}, Kinds{8, 6, 2}, Kinds{8, 4, 4},     // to the first
                                         Kinds{1, 14, 2}, Kinds{1, 12, 4}, Kinds{1, 8, 8},   // and on
                                         Kinds{2, 13, 4}, Kinds{2, 9, 8}, Kinds{4, 11, 8}));

TEST(AccountRange, LimitsAreReadAtOkWithoutLeavingTheField)
{
    Played run("dialog 111\ntext 20054 K12\ntext 20055 \" 1200\"\npress 1\n", perDialog);
    EXPECT_EQ("", run.Refusals());
    EXPECT_STREQ("1200", run.Choice.Range.Sachkonto.Von);
    EXPECT_STREQ("1200", run.Choice.Range.Sachkonto.Bis) << "without leading blanks";
}

TEST(AccountRange, KuerzelComesFromTheTableOfTheKind)
{
    Played run(
        "dialog 111\ncheck 20052\nfocus 20054\ntext 20054 K\nfocus 20055\nexpect text 20054 70000\npress 1\n",
        perDialog);
    EXPECT_EQ("", run.Refusals());
    EXPECT_STREQ("70000", run.Choice.Range.Debitor.Von);
    EXPECT_STREQ("", run.Choice.Range.Sachkonto.Von);
}

TEST(AccountRange, KuerzelIsComparedByteByByte)
{
    // "k1" begins no Kürzel, and behind "K7" comes none that begins so.
    Plays("dialog 111\nfocus 20054\ntext 20054 k1\nfocus 20055\nexpect text 20054 k1\ntext 20055 K7\nfocus "
          "20054\n"
          "expect text 20055 K7\npress 1\n",
          perDialog);
}

TEST(AccountRange, SevenCharactersOfALimitCount)
{
    Played run("dialog 111\ntext 20054 123456789\npress 1\n", perDialog);
    EXPECT_STREQ("1234567", run.Choice.Range.Sachkonto.Von);
}

TEST(AccountRange, LimitsComeBackFromTheBlock)
{
    ReportParams params{};
    params.ParamFlags = ParamKontoArt | ParamKonten;
    params.KontoArt = 4;
    std::memcpy(params.SachkontoVon, "1000", 5);
    std::memcpy(params.DebitorVon, "10000", 6);
    std::memcpy(params.DebitorBis, "19999", 6);
    Played run(
        "dialog 111\nexpect checked 20052\nexpect text 20054 10000\nexpect text 20055 19999\ncheck 20050\n"
        "expect text 20054 1000\nexpect text 20055 \ncheck 20051\nexpect text 20054 \npress 1\n",
        perDialog, params);
    EXPECT_EQ("", run.Refusals());
    EXPECT_EQ(2, run.Choice.Range.KontoArt);
    EXPECT_STREQ("19999", run.Choice.Range.Debitor.Bis);
}

TEST(AccountRange, SingleAccountHidesWhatARangeNeeds)
{
    Plays("dialog 900\nexpect text 20057 vo&n:\nexpect visible 20055\nexpect enabled 20050\ntext 20054 1000\n"
          "check 20056\nexpect text 20057 Ko&nto:\nexpect hidden 20055\nexpect hidden 20058\nexpect disabled "
          "20050\n"
          "expect disabled 20053\nuncheck 20056\nexpect text 20057 vo&n:\nexpect visible 20055\n"
          "expect visible 20058\nexpect enabled 20050\npress 1\n",
          DialogWith(15, true));
}

TEST(AccountRange, SingleAccountOfTheBlockIsShown)
{
    ReportParams params{};
    params.ParamFlags = ParamKontoArt | ParamKonten | ParamEinzeln;
    params.KontoArt = 2;
    std::memcpy(params.KreditorVon, "70000", 6);
    Played run("dialog 900\nexpect checked 20056\nexpect hidden 20055\nexpect text 20054 70000\npress 1\n",
               DialogWith(15, true), params);
    EXPECT_EQ("", run.Refusals());
    EXPECT_EQ(1u, run.Choice.Range.Einzeln);
    EXPECT_EQ(2, run.Choice.Range.KontoArt);
    ReportParams back{};
    GatherReportParams(*run.Context, back, nullptr, &run.Choice.Range, nullptr);
    EXPECT_EQ(uint32_t{ParamEinzeln}, back.ParamFlags & ParamEinzeln);
}

TEST(AccountRange, SingleAccountIsLookedForByKuerzelInTheOrderOfKinds)
{
    // Sachkonten and Kreditoren both have a Kürzel on K; those of the Sachkonten come first.
    Played run("dialog 900\ncheck 20056\ntext 20054 K\npress 1\n", DialogWith(15, true));
    EXPECT_EQ("", run.Refusals());
    EXPECT_EQ(1, run.Choice.Range.KontoArt);
    EXPECT_STREQ("1000", run.Choice.Range.Sachkonto.Von);
}

TEST(AccountRange, SingleAccountOfAKindThatIsNotOfferedDoesNotExist)
{
    Played run("dialog 900\ncheck 20056\ntext 20054 1000\npress 1\n"
               "box ok Es existiert kein Konto mit dieser Kontonummer!\nexpect focus 20054\npress 2\n",
               DialogWith(2 | 4, true));
    EXPECT_EQ("", run.Refusals());
    EXPECT_FALSE(run.Accepted);
}

TEST(AccountRange, SingleAccountWithoutANumberDoesNotExist)
{
    Played run("dialog 900\ncheck 20056\ntext 20054 \npress 1\n"
               "box ok Es existiert kein Konto mit dieser Kontonummer!\npress 2\n",
               DialogWith(15, true));
    EXPECT_EQ("", run.Refusals());
}

TEST(AccountRange, FocusLeavesAButtonThatTheSingleAccountDisables)
{
    Played run(
        "dialog 900\nfocus 20051\nexpect focus 20051\ncheck 20056\npress 1\nbox ok kein Konto\npress 2\n",
        DialogWith(15, true), {});
    EXPECT_EQ("", run.Refusals());
}

TEST(AccountRange, EditsThatTakeAnAccountHangOnTheDialog)
{
    Played run("dialog 111\npress 2\n", perDialog, {}, 1, false, [](HWND dialog) {
        const auto *list = static_cast<const AccountEditList *>(GetPropA(dialog, "tervoTKKonto"));
        ASSERT_NE(nullptr, list);
        EXPECT_EQ(1u, list->Active);
        EXPECT_EQ(2u, list->Count);
        EXPECT_EQ(GetDlgItem(dialog, 20054), list->Edits[0]);
        EXPECT_EQ(GetDlgItem(dialog, 20055), list->Edits[1]);
    });
    EXPECT_EQ("", run.Refusals());
}

TEST(AccountRange, DialogGoesOnWithoutMemoryForItsListOfEdits)
{
    const std::string once = "dialog 111\npress 1\n";
    Books installation(once + once + once);
    installation.AddMandant(1);
    ReportRun run{};
    run.Dialog = &perDialog;
    ASSERT_EQ(1, EnterExport(run.Context));
    ASSERT_EQ(1, SelectMandant(*run.Context, 1, run.Mandant));
    run.Choice.Period.Code = periodNotChosen;
    bool hasList = true;
    // Behind the dialog's template and, where that is the library's own work, the reading of an ini file.
    for (int n = 2; hasList && n <= 4; ++n) {
        const Onlooker onlooker([&](HWND dialog) { hasList = GetPropA(dialog, "tervoTKKonto") != nullptr; });
        FailAllocation(n);
        EXPECT_TRUE(RunReportDialog(run, nullptr)) << n;
        StopAllocationFaults();
    }
    EXPECT_FALSE(hasList);
    EXPECT_EQ(1, run.Choice.Range.KontoArt);
    VARK_SchliesseDB();
}
