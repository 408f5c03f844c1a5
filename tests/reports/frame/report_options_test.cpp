// Controls of a report's own, on a dialog that has one of each kind: told in a table, played by scripts, read
// back row by row; and dialogs with two pages as reports run them.
#include "tests/reports/frame/played_dialog.h"

#include "src/frame/messages.h"

#include <gtest/gtest.h>

using namespace vark;
using namespace vark::test;

namespace {

constexpr ReportOption rows[] = {
    {.Kind = OptionKind::Radio, .Id = 1010, .Label = "&eins", .Group = "Auswahl"},
    {.Kind = OptionKind::Radio, .Id = 1011, .Label = "z&wei", .Checked = true},
    {.Kind = OptionKind::Radio, .Id = 1012, .Label = "d&rei"},
    {.Kind = OptionKind::Check, .Id = 1047, .Label = "mit &Konten", .Group = "Umfang", .Checked = true},
    {.Kind = OptionKind::Check, .Id = 1042, .Label = "nur &bebuchte", .EnabledWhile = 1047},
    {.Kind = OptionKind::Amount, .Id = 1005, .Label = "&Mindestumsatz:", .MostCharacters = 12},
    {.Kind = OptionKind::Text, .Id = 1032, .Label = "&Land:", .MostCharacters = 3},
};

constexpr uint16_t refusal = 1448;

bool RefusesBerlin(HWND, const ReportRun &, const ReportChoice &chosen)
{
    if (std::string(chosen.Options[6].Text) != "B") return true;
    ShowMessage(refusal, 1005, nullptr, -1);
    return false;
}

constexpr ReportDialog optionDialog = {
    .Id = 900, .Title = "Auswahl", .HelpContext = 0, .Options = {rows, 7}, .Check = RefusesBerlin};

constexpr ReportDialog pagesDialog = {
    .Id = 901, .Title = "Zwei Zeiträume", .HelpContext = 0, .Pages = PeriodPages::Guv};

} // namespace

TEST(ReportOptions, StartAsTheTableSays)
{
    Played run("dialog 900\nexpect unchecked 1010\nexpect checked 1011\nexpect checked 1047\n"
               "expect unchecked 1042\nexpect enabled 1042\nexpect text 1005\npress 1\n",
               optionDialog);
    EXPECT_EQ("", run.Refusals());
    EXPECT_TRUE(run.Accepted);
    EXPECT_TRUE(IsChosen(run.Run, 1011));
    EXPECT_FALSE(IsChosen(run.Run, 1010));
    EXPECT_TRUE(IsChosen(run.Run, 1047));
    EXPECT_STREQ("", OptionOf(run.Run, 1005).Text);
}

TEST(ReportOptions, NobodyBeforeTheScreenKeepsWhatTheyStartWith)
{
    Played run("", optionDialog);
    EXPECT_TRUE(run.Accepted);
    EXPECT_TRUE(IsChosen(run.Run, 1011));
    EXPECT_TRUE(IsChosen(run.Run, 1047));
}

TEST(ReportOptions, OneOfASetIsChosen)
{
    Played run("dialog 900\ncheck 1012\nexpect unchecked 1011\nexpect checked 1012\ncheck 1010\n"
               "expect unchecked 1012\npress 1\n",
               optionDialog);
    EXPECT_EQ("", run.Refusals());
    EXPECT_TRUE(IsChosen(run.Run, 1010));
    EXPECT_FALSE(IsChosen(run.Run, 1012));
}

TEST(ReportOptions, BoxIsEnabledOnlyWhileAnotherIsTickedAndKeepsItsOwnTick)
{
    Played run("dialog 900\ncheck 1042\nuncheck 1047\nexpect disabled 1042\nexpect checked 1042\npress 1\n",
               optionDialog);
    EXPECT_EQ("", run.Refusals());
    EXPECT_FALSE(IsChosen(run.Run, 1047));
    EXPECT_TRUE(IsChosen(run.Run, 1042)) << "a disabled box is read as it stands";
}

TEST(ReportOptions, AmountIsShownInItsDisplayFormOnceTheFieldIsLeft)
{
    Played run("dialog 900\nfocus 1005\ntext 1005 1234,5\nfocus 1032\nexpect text 1005 1.234,50\n"
               "focus 1005\ntext 1005 zwölf\nfocus 1032\nexpect text 1005 zwölf\n"
               "focus 1005\ntext 1005\nfocus 1032\nexpect text 1005\npress 1\n",
               optionDialog);
    EXPECT_EQ("", run.Refusals());
    EXPECT_TRUE(run.Accepted);
}

TEST(ReportOptions, FieldTakesSoManyCharacters)
{
    Played run("dialog 900\nfocus 1032\nkey A\nkey U\nkey T\nkey X\nexpect text 1032 AUT\npress 1\n",
               optionDialog);
    EXPECT_EQ("", run.Refusals());
    EXPECT_STREQ("AUT", OptionOf(run.Run, 1032).Text);
}

TEST(ReportOptions, LastCheckKeepsTheDialogOpenAndTheChoiceAsItWas)
{
    Played run(
        "dialog 900\ntext 1032 B\ncheck 1010\npress 1\nbox ok Mindestumsatz\nexpect focus 1005\npress 2\n",
        optionDialog);
    EXPECT_EQ("", run.Refusals());
    EXPECT_FALSE(run.Accepted);
    EXPECT_TRUE(IsChosen(run.Run, 1011)) << "what was refused is not kept";
}

TEST(ReportPages, BothPeriodsStartAlikeAndAreChosenApart)
{
    Played run("dialog 901\nexpect unchecked 1046\ncheck 1046\nselect 1044 1\ncheck 20013\ntext 20000 1997\n"
               "press 1\n",
               pagesDialog, PeriodCode(3, 18));
    EXPECT_EQ("", run.Refusals());
    EXPECT_TRUE(run.Accepted);
    EXPECT_TRUE(run.Choice.Vergleich);
    EXPECT_EQ(3, run.Choice.Period.Code);
    EXPECT_STREQ("1998", run.Choice.Period.JahrText);
    EXPECT_EQ(13, run.Choice.ComparePeriod.Code);
    EXPECT_STREQ("1997", run.Choice.ComparePeriod.JahrText);
}

TEST(ReportPages, ComparisonThatNobodyLookedAtIsAcceptedAtOkAsWell)
{
    Played run("dialog 901\ncheck 1046\npress 1\n", pagesDialog, PeriodCode(3, 18));
    EXPECT_EQ("", run.Refusals());
    EXPECT_TRUE(run.Accepted);
    EXPECT_STREQ("010318", run.Choice.ComparePeriod.VonDatum) << "it has its dates";
    EXPECT_STREQ("1998", run.Choice.ComparePeriod.JahrText);
}

TEST(ReportPages, PageThatIsRefusedIsTurnedTo)
{
    Played run("dialog 901\ncheck 1046\nselect 1044 1\ntext 20000 1997\nselect 1044 0\ntext 20000 abc\n"
               "select 1044 1\nbox ok Jahresangabe\nexpect row 1044 0\ntext 20000 1998\nselect 1044 1\n"
               "uncheck 1046\ntext 20000 abc\nselect 1044 0\ncheck 1046\npress 1\nbox ok Jahresangabe\n"
               "expect row 1044 1\ntext 20000 1997\npress 1\n",
               pagesDialog, PeriodCode(3, 18));
    EXPECT_EQ("", run.Refusals());
    EXPECT_TRUE(run.Accepted);
}

TEST(ReportPages, UnusedComparisonIsNeverChecked)
{
    Played run("dialog 901\nselect 1044 1\ntext 20000 abc\npress 1\n", pagesDialog, PeriodCode(3, 18));
    EXPECT_EQ("", run.Refusals());
    EXPECT_TRUE(run.Accepted);
    EXPECT_FALSE(run.Choice.Vergleich);
}
