// Bilanz and Eröffnungsbilanz: what may go wrong, damaged trees and lists, the dialog's ways out.
#include "tests/reports/financial/closing_books.h"
#include "tests/support/engine_faults.h"
#include "tests/support/report_faults.h"

using namespace vark;
using namespace vark::test;

namespace {

constexpr char failure[] = "Die Bilanz konnte nicht erstellt werden!";

struct Bilanz : testing::Test {
    Books books;
    RecordingEngine sent;
    ReportParams params = PeriodBlock(1, 18);

    void SetUp() override
    {
        books.AddMandant(1);
        books.Insert(1, TableSako, SakoWith("1000", ZuordnungAktiva, "000000010,00", "000000000,00"));
        books.Insert(1, TableSako, SakoWith("1200", ZuordnungAktiva, "000000000,00", "000000004,00"));
        EXPECT_EQ(1, VARK_Status());
        sent.Install();
    }
    void TearDown() override { VARK_SchliesseDB(); }

    void SetTrees(const Lines &aktiva, const Lines &passiva)
    {
        InsertTree(books, 1, TableBilaktau, aktiva);
        InsertTree(books, 1, TableBilpasau, passiva);
    }
    void ExpectFailure()
    {
        EXPECT_EQ(nullptr, VARK_Bilanz(1, 0, nullptr, &params));
        EXPECT_EQ(0u, uint32_t{params.ViewResult});
        EXPECT_EQ(Lines{failure}, books.TakeBoxes());
        EXPECT_EQ("close 7", sent.Calls.back());
    }
    void ExpectReport() { EXPECT_NE(nullptr, VARK_Bilanz(1, 0, nullptr, &params)); }

    // The numbers and amounts of all account lines, in order.
    [[nodiscard]] Lines AccountLines() const
    {
        Lines lines;
        for (const std::string &call : sent.Calls) {
            if (call[0] < '4' || call[0] > '7') continue;
            const size_t betrag = call.find("Betrag=") + 7;
            lines.push_back(call.substr(call.find("Konto=") + 6, 7) + " " + call.substr(betrag, 12));
        }
        return lines;
    }
};

StructureRecord Node(int32_t id, int32_t next, int32_t child, const std::string &text, uint16_t art)
{
    StructureRecord node{};
    node.Id = id;
    node.Next = next;
    node.Child = child;
    node.Art = art;
    SetText(node.Text, text);
    return node;
}

} // namespace

TEST_F(Bilanz, WhateverFailsTheReportIsWholeOrNotThere)
{
    // A day inside a month, a Gegenposten and an account outside the tree: every read there is.
    params = {};
    params.ParamFlags = ParamZeitraum | ParamDaten;
    SetText(params.VonDatum, "010198");
    SetText(params.BisDatum, "150198");
    books.Insert(1, TableBube, MakeBube(1, "200118", "1000", "1200", "000000001,00"));
    SetTrees({"Umlauf", "  1000", "1200", "ohne 1000"}, {"1200 gegen"});
    ExpectWholeOrNotThere({.Installation = &books,
                           .Sent = &sent,
                           .Params = params,
                           .Call = [](ReportParams *block) { return VARK_Bilanz(1, 0, nullptr, block); },
                           .Failure = failure});
}

TEST_F(Bilanz, WhateverFailsWithAComparisonBothFreeSlotsAreClosed)
{
    SakoRecord before = SakoWith("1000", ZuordnungAktiva, "000000003,00", "000000000,00");
    books.Insert(1, TableSako, before, "1997");
    SetTrees({"1000"}, {});
    ExpectWholeOrNotThere({.Installation = &books,
                           .Sent = &sent,
                           .Params = params,
                           .Call =
                               [](ReportParams *block) {
                                   CompareWith("1997");
                                   return VARK_Bilanz(1, 0, nullptr, block);
                               },
                           .Failure = failure,
                           .Judge =
                               [] {
                                   EXPECT_EQ(0, GetThreadContext()->OpenCounts[SlotFree29]);
                                   EXPECT_EQ(0, GetThreadContext()->OpenCounts[SlotFree30]);
                               }});
    CompareWith("1997");
    sent.Calls.clear();
    ExpectReport();
    EXPECT_EQ(Lines{"Konto=   1000 | Kuerzel=K1000 | Name=Sachkonto 1000 | Betrag=000000010,00 | "
                    "Vergleich=000000003,00"},
              sent.Records(4));
}

TEST_F(Bilanz, ComparisonOfOneReportDoesNotReachTheNext)
{
    books.Insert(1, TableSako, SakoWith("1000", ZuordnungAktiva, "000000003,00", "000000000,00"), "1997");
    SetTrees({"1000"}, {});
    InsertTree(books, 1, TableBilaktau, {"1000"}, "1997");
    InsertTree(books, 1, TableBilpasau, {}, "1997");
    CompareWith("1997");
    ExpectReport();
    params = PeriodBlock(1, 17);
    sent.Calls.clear();
    CompareWith("1998");
    ExpectReport();
    EXPECT_EQ(Lines{"Konto=   1000 | Kuerzel=K1000 | Name=Sachkonto 1000 | Betrag=000000003,00 | "
                    "Vergleich=000000010,00"},
              sent.Records(4));
}

TEST_F(Bilanz, MissingTablesOfTheComparisonFailTheReportBeforeItsHeader)
{
    SetTrees({"1000"}, {});
    VARK_SchliesseDB();
    std::filesystem::remove_all(books.YearDirectory(1, "1997"));
    CompareWith("1997");
    EXPECT_EQ(nullptr, VARK_Bilanz(1, 0, nullptr, &params));
    EXPECT_EQ(failure, books.TakeBoxes().back());
    EXPECT_EQ((Lines{"open or_bil.rs tervoBILANZ0.0 0", "close 7"}), sent.Calls);
}

TEST_F(Bilanz, TreeWithoutRootFails)
{
    InsertTree(books, 1, TableBilpasau, {});
    ExpectFailure();
    EXPECT_EQ(Lines{"Aktiva=1"}, sent.Records(8));
}

TEST_F(Bilanz, MissingNodeFails)
{
    books.Insert(1, TableBilaktau, Node(1, 0, 2, "Aktiva", StructureGruppe));
    books.Insert(1, TableBilaktau, Node(2, 3, 0, "   1000", 0));
    InsertTree(books, 1, TableBilpasau, {});
    ExpectFailure();
    EXPECT_EQ(1u, sent.Records(4).size());
}

TEST_F(Bilanz, TreeThatGoesRoundFailsAfterAsManyNodesAsItHas)
{
    books.Insert(1, TableBilaktau, Node(1, 0, 2, "Aktiva", StructureGruppe));
    books.Insert(1, TableBilaktau, Node(2, 3, 0, "   1000", 0));
    books.Insert(1, TableBilaktau, Node(3, 2, 0, "   1200", 0));
    InsertTree(books, 1, TableBilpasau, {});
    ExpectFailure();
    EXPECT_EQ(2u, sent.Records(4).size());
}

TEST_F(Bilanz, LeafBelowAllAccountsFails)
{
    SetTrees({"0999"}, {});
    ExpectFailure();
}

TEST_F(Bilanz, LeafWithoutAnAccountOfItsOwnTakesTheNextLowerOne)
{
    books.Insert(1, TableSako, SakoWith("1100", ZuordnungGuv, "000000001,00", "000000000,00"));
    SetTrees({"1100", "1199", "9999"}, {});
    ExpectReport();
    EXPECT_EQ((Lines{"   1000 000000010,00", "   1000 000000010,00", "   1200 000000004-00"}),
              AccountLines());
}

TEST_F(Bilanz, BooksWithoutAccountsOfTheBilanzFailAtTheFirstLeafOnly)
{
    VARK_SchliesseDB();
    books.EmptyTable(1, TableSako);
    SetTrees({"Leer"}, {"Leer", "ohne 1000"});
    ExpectReport();
    EXPECT_EQ(2u, sent.Records(1).size());
}

TEST_F(Bilanz, BalanceThatOverflowsIsNeverPrinted)
{
    books.Insert(1, TableSako, SakoWith("0900", ZuordnungPassiva, "999999999,99", "000000000-01"));
    SetTrees({"1000"}, {});
    ExpectFailure();
    EXPECT_TRUE(sent.Records(8).empty()) << "all accounts are reckoned before the first side";
}

TEST_F(Bilanz, GegenpostenIsFoundBehindPlainLeavesAndTitlesOfTheSameText)
{
    SetTrees({"1200"}, {});
    VARK_SchliesseDB();
    books.EmptyTable(1, TableBilpasau);
    books.Insert(1, TableBilpasau, Node(1, 0, 2, "Passiva", StructureGruppe));
    books.Insert(1, TableBilpasau, Node(2, 3, 0, "   1200", StructureGruppe | StructureGegenposten));
    books.Insert(1, TableBilpasau, Node(3, 4, 0, "   1200", 0));
    books.Insert(1, TableBilpasau, Node(4, 0, 0, "   1200", StructureGegenposten));
    ExpectReport();
    EXPECT_EQ((Lines{"   1200 000000004-00", "   1200 000000004,00"}), AccountLines())
        << "the plain leaf among the Passiva has no Gegenposten among the Aktiva";
}

TEST_F(Bilanz, AmountIsTurnedBackAfterAGegenpostenButWhatItIsComparedWithIsNot)
{
    SakoRecord bank = SakoWith("1200", ZuordnungAktiva, "000000000,00", "000000004,00");
    PutPair(bank.Umsaetze.Monat[1], "000000000,00", "000000002,00");
    books.Replace(1, TableSako, bank);
    books.Insert(1, TableSako, SakoWith("1200", ZuordnungAktiva, "000000000,00", "000000001,00"), "1997");
    SetTrees({"1000"}, {"1200 gegen", "1200 gegen"});
    CompareWith("1997");
    ExpectReport();
    const std::string name = "Konto=   1200 | Kuerzel=K1200 | Name=Sachkonto 1200 | ";
    EXPECT_EQ((Lines{name + "Betrag=000000004,00 | Vergleich=000000001,00",
                     name + "Betrag=000000004,00 | Vergleich=000000001-00"}),
              (Lines{sent.Records(4).end()[-2], sent.Records(4).end()[-1]}));
}

TEST_F(Bilanz, NegativeZeroStaysOnItsSideWithoutAGegenposten)
{
    books.Replace(1, TableSako, SakoWith("1200", ZuordnungAktiva, "000000004-00", "000000004-00"));
    SetTrees({"1200"}, {"1200"});
    ExpectReport();
    EXPECT_EQ((Lines{"   1200 000000000-00", "   1200 000000000-00"}), AccountLines());
}

TEST_F(Bilanz, FlagOfTheEroeffnungGoesOutAsGiven)
{
    SetTrees({"1000"}, {});
    params = PeriodBlock(17, 18);
    EXPECT_NE(nullptr, VARK_Bilanz(1, -7, nullptr, &params));
    EXPECT_NE(std::string::npos, sent.Records(0).at(0).find("Eroeffnung=-7"));
    EXPECT_EQ(Lines{"Konto=   1000 | Kuerzel=K1000 | Name=Sachkonto 1000 | Betrag=000000000,00 | "
                    "Vergleich=000000000,00"},
              sent.Records(4));
    EXPECT_EQ(17, int32_t{params.Zeitraum});
    EXPECT_EQ(18, int32_t{params.JahrIndex});
}

TEST_F(Bilanz, UnknownMandantGivesNothingAndShowsNothing)
{
    params.ViewResult = 1;
    EXPECT_EQ(nullptr, VARK_Bilanz(9, 0, nullptr, &params));
    EXPECT_EQ(0u, uint32_t{params.ViewResult});
    EXPECT_EQ(Lines{}, books.TakeBoxes());
    EXPECT_TRUE(sent.Calls.empty());
}

namespace {

// A Bilanz whose dialog is played; returns what the engine was sent.
Lines Play(const std::string &script, const Lines &boxes, ReportParams params = PeriodBlock(1, 18))
{
    Books books(script);
    RecordingEngine sent;
    books.AddMandant(1);
    books.Insert(1, TableSako, SakoWith("1000", ZuordnungAktiva, "000000010,00", "000000000,00"));
    InsertTree(books, 1, TableBilaktau, {"1000"});
    InsertTree(books, 1, TableBilpasau, {});
    EXPECT_EQ(1, VARK_Status());
    sent.Install();
    VARK_Bilanz(1, 0, nullptr, &params);
    Lines shown;
    for (const std::string &line : books.TakeLog()) {
        EXPECT_FALSE(line.starts_with("script:")) << line;
        if (line.starts_with("box ") && line != "box ok") shown.push_back(line.substr(4));
    }
    EXPECT_EQ(boxes, shown);
    VARK_SchliesseDB();
    return sent.Calls;
}

} // namespace

TEST(BilanzDialog, OpensOnTheThirdLevelWithAccounts)
{
    Play("dialog 127\nexpect title \"Bilanz\"\nexpect checked 1004\nexpect unchecked 1002\n"
         "expect checked 1047\nexpect unchecked 1042\nexpect enabled 1042\nexpect unchecked 1041\n"
         "expect unchecked 1048\nexpect unchecked 1046\nexpect checked 20001\npress 2\n",
         {});
}

TEST(BilanzDialog, CancelledSendsNothing)
{
    EXPECT_EQ(Lines{}, Play("dialog 127\ncheck 1046\npress 2\n", {}));
}

TEST(BilanzDialog, PageThatIsNotInViewIsCheckedAtOkWhileTheComparisonIsOn)
{
    const Lines calls = Play("dialog 127\ncheck 1046\nselect 1044 1\ncheck 20018\ntext 22991 31.12.80\n"
                             "uncheck 1046\nselect 1044 0\ncheck 1046\npress 1\nbox ok\n"
                             "dialog 127\nexpect row 1044 1\ntext 22990 1.1.97\ntext 22991 1.2.97\npress 1\n",
                             {"Das Datum muß innerhalb der bebuchbaren Geschäftsjahre liegen!"});
    ASSERT_GT(calls.size(), 1u);
    EXPECT_NE(std::string::npos, calls[1].find("Vergleichstitel=vom 01.01.1997 bis zum 01.02.1997"));
}

TEST(BilanzDialog, BadPageIsNoMatterWhileTheComparisonIsOff)
{
    const Lines calls = Play("dialog 127\ncheck 1046\nselect 1044 1\ncheck 20018\ntext 22991 40.1.98\n"
                             "uncheck 1046\npress 1\n",
                             {});
    EXPECT_GT(calls.size(), 1u);
}
