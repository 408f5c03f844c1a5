// Gewinn- und Verlustrechnung: what may go wrong, and the dialog's ways out.
#include "src/frame/thread_context.h"
#include "tests/reports/financial/closing_books.h"
#include "tests/support/report_faults.h"

using namespace vark;
using namespace vark::test;

namespace {

constexpr char failure[] = "Die Gewinn- und Verlustrechnung konnte nicht erstellt werden!";

struct Guv : testing::Test {
    Books books;
    RecordingEngine sent;
    ReportParams params = PeriodBlock(1, 18);

    void SetUp() override
    {
        books.AddMandant(1);
        books.Insert(1, TableSako, SakoWith("4100", ZuordnungGuv, "000000010,00", "000000000,00"));
        books.Insert(1, TableSako, SakoWith("8400", ZuordnungGuv, "000000000,00", "000000025,00"));
        EXPECT_EQ(1, VARK_Status());
        sent.Install();
    }
    void TearDown() override { VARK_SchliesseDB(); }

    void ExpectFailure()
    {
        EXPECT_EQ(nullptr, VARK_GUV(1, nullptr, &params));
        EXPECT_EQ(0u, uint32_t{params.ViewResult});
        EXPECT_EQ(Lines{failure}, books.TakeBoxes());
        EXPECT_EQ("close 7", sent.Calls.back());
    }
};

} // namespace

TEST_F(Guv, WhateverFailsTheReportIsWholeOrNotThere)
{
    // A day inside a month, so that postings are read as well.
    params = {};
    params.ParamFlags = ParamZeitraum | ParamDaten;
    SetText(params.VonDatum, "010198");
    SetText(params.BisDatum, "150198");
    books.Insert(1, TableBube, MakeBube(1, "200118", "4100", "1200", "000000001,00"));
    InsertTree(books, 1, TableGuvauf, {"Aufwand", "  4100", "ohne 8400"});
    ExpectWholeOrNotThere({.Installation = &books,
                           .Sent = &sent,
                           .Params = params,
                           .Call = [](ReportParams *block) { return VARK_GUV(1, nullptr, block); },
                           .Failure = failure});
}

TEST_F(Guv, WhateverFailsWithAComparisonBothFreeSlotsAreClosed)
{
    books.Insert(1, TableSako, SakoWith("4100", ZuordnungGuv, "000000003,00", "000000001,00"), "1997");
    InsertTree(books, 1, TableGuvauf, {"4100"});
    ExpectWholeOrNotThere({.Installation = &books,
                           .Sent = &sent,
                           .Params = params,
                           .Call =
                               [](ReportParams *block) {
                                   CompareWith("1997");
                                   return VARK_GUV(1, nullptr, block);
                               },
                           .Failure = failure,
                           .Judge =
                               [] {
                                   EXPECT_EQ(0, GetThreadContext()->OpenCounts[SlotFree29]);
                                   EXPECT_EQ(0, GetThreadContext()->OpenCounts[SlotFree30]);
                               }});
    CompareWith("1997");
    sent.Calls.clear();
    EXPECT_NE(nullptr, VARK_GUV(1, nullptr, &params));
    EXPECT_EQ(Lines{"Konto=4100 | Kuerzel=K4100 | Name=Sachkonto 4100 | Soll=000000010,00 | "
                    "Haben=000000000,00 | VergleichSoll=000000003,00 | VergleichHaben=000000001,00"},
              sent.Records(4));
}

TEST_F(Guv, TreeWithoutRootFails) { ExpectFailure(); }

TEST_F(Guv, AccountInNoPlaceIsNotPrinted)
{
    InsertTree(books, 1, TableGuvauf, {"4100"});
    EXPECT_NE(nullptr, VARK_GUV(1, nullptr, &params));
    EXPECT_EQ(1u, sent.Records(4).size());
}

TEST_F(Guv, SumThatOverflowsIsNeverPrinted)
{
    SakoRecord full = SakoWith("4200", ZuordnungGuv, "999999999,99", "000000000,00");
    PutPair(full.Umsaetze.Monat[1], "000000000,01", "000000000,00");
    books.Insert(1, TableSako, full);
    InsertTree(books, 1, TableGuvauf, {"4200"});
    params = PeriodBlock(13, 18);
    ExpectFailure();
    EXPECT_TRUE(sent.Records(4).empty());
}

TEST_F(Guv, EmptyAmountsOfARecordGoOutAsZero)
{
    SakoRecord bare = MakeSako("4200");
    std::memset(&bare.Umsaetze, 0, sizeof bare.Umsaetze);
    books.Insert(1, TableSako, bare);
    InsertTree(books, 1, TableGuvauf, {"4200"});
    EXPECT_NE(nullptr, VARK_GUV(1, nullptr, &params));
    EXPECT_EQ(Lines{"Konto=4200 | Kuerzel=K4200 | Name=Sachkonto 4200 | Soll=000000000,00 | "
                    "Haben=000000000,00 | VergleichSoll=000000000,00 | VergleichHaben=000000000,00"},
              sent.Records(4));
}

TEST(GuvDialog, OffersQuartersOnBothPagesAndOpensWithAccounts)
{
    Books books("dialog 124\nexpect title \"GuV\"\nexpect checked 1047\nexpect checked 1004\n"
                "expect unchecked 1046\nexpect checked 20013\nselect 1044 1\nexpect checked 20013\n"
                "press 2\n");
    books.AddMandant(1);
    EXPECT_EQ(1, VARK_Status());
    RecordingEngine sent;
    sent.Install();
    ReportParams params = PeriodBlock(13, 18);
    EXPECT_EQ(nullptr, VARK_GUV(1, nullptr, &params));
    for (const std::string &line : books.TakeLog()) {
        EXPECT_FALSE(line.starts_with("script:")) << line;
    }
    EXPECT_TRUE(sent.Calls.empty());
    VARK_SchliesseDB();
}
