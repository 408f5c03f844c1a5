// Kostensaldenliste and Kostenstellenliste: what may go wrong, and what the caller's block gets back.
#include "include/vark40.h"
#include "src/reports/frame/report_params.h"
#include "tests/support/books.h"
#include "tests/support/recording_engine.h"
#include "tests/support/report_faults.h"

#include <gtest/gtest.h>
#include <string>

using namespace vark;
using namespace vark::test;

namespace {

constexpr char saldenFailure[] = "Die Kostensaldenliste konnte nicht erstellt werden!";
constexpr char listeFailure[] = "Die Kostenstellenliste konnte nicht erstellt werden!";

struct Kostenlisten : testing::Test {
    Books books;
    RecordingEngine sent;
    ReportParams params{};

    void SetUp() override
    {
        books.AddMandant(1);
        for (const char *number : {"100", "200"}) {
            KoreRecord record = MakeKore(number);
            SetText(record.Monat[2], "000000010,00");
            books.Insert(1, TableKore, record);
        }
        EXPECT_EQ(1, VARK_Status());
        sent.Install();
        params.ParamFlags = ParamZeitraum | ParamJahr;
        params.Zeitraum = 3;
        params.JahrIndex = 18;
    }
    void TearDown() override { VARK_SchliesseDB(); }
};

} // namespace

TEST_F(Kostenlisten, SaldenAreWholeOrNotThereWhateverFails)
{
    ExpectWholeOrNotThere(
        {.Installation = &books,
         .Sent = &sent,
         .Params = params,
         .Call = [](ReportParams *block) { return VARK_KostenSaldenListe(1, nullptr, block); },
         .Failure = saldenFailure});
}

TEST_F(Kostenlisten, ListeIsWholeOrNotThereWhateverFails)
{
    ExpectWholeOrNotThere(
        {.Installation = &books,
         .Sent = &sent,
         .Params = params,
         .Call = [](ReportParams *block) { return VARK_KostenstellenListe(1, nullptr, block); },
         .Failure = listeFailure});
}

TEST_F(Kostenlisten, SumWithoutRoomIsNeverPrinted)
{
    KoreRecord full = MakeKore("200");
    SetText(full.Monat[0], "999999999,99");
    SetText(full.Monat[1], "000000000,01");
    books.Replace(1, TableKore, full);
    params.Zeitraum = periodWholeYear;
    EXPECT_EQ(nullptr, VARK_KostenSaldenListe(1, nullptr, &params));
    EXPECT_EQ(Lines{saldenFailure}, books.TakeBoxes());
    EXPECT_EQ(1u, sent.Records(1).size());
}

TEST_F(Kostenlisten, SaldenGiveBackKindLimitsAndPeriodButLeaveTheDates)
{
    params.ParamFlags |= ParamDaten | ParamEinzeln | ParamKontoArt;
    params.KontoArt = KontoartDebitor;
    SetText(params.VonDatum, "010198");
    SetText(params.BisDatum, "310398");
    ASSERT_NE(nullptr, VARK_KostenSaldenListe(1, nullptr, &params));
    EXPECT_EQ(ParamZeitraum | ParamJahr | ParamKontoArt | ParamKonten | ParamAusgabe,
              uint32_t{params.ParamFlags})
        << "dates count no longer, and nobody asked for a single account";
    EXPECT_EQ(KontoartKostenstelle, params.KontoArt);
    EXPECT_EQ(3, int32_t{params.Zeitraum});
    EXPECT_STREQ("010198", params.VonDatum);
    EXPECT_STREQ("310398", params.BisDatum);
}

TEST_F(Kostenlisten, ListeLeavesThePeriodOfTheBlock)
{
    params.ParamFlags |= ParamArchivJahr;
    params.ArchivJahr = 1990;
    ASSERT_NE(nullptr, VARK_KostenstellenListe(1, nullptr, &params));
    EXPECT_EQ(3, int32_t{params.Zeitraum});
    EXPECT_EQ(1990, int32_t{params.ArchivJahr});
    EXPECT_EQ(ParamZeitraum | ParamJahr | ParamArchivJahr,
              params.ParamFlags & (ParamZeitraum | ParamJahr | ParamArchivJahr));
}

TEST_F(Kostenlisten, ListeIsOfTheLastBookableYearWhateverCameBefore)
{
    KoreRecord older = MakeKore("700");
    books.Insert(1, TableKore, older, "1997");
    params.JahrIndex = 17;
    ASSERT_NE(nullptr, VARK_KostenSaldenListe(1, nullptr, &params));
    EXPECT_EQ(1u, sent.Records(1).size());
    sent.Calls.clear();
    ASSERT_NE(nullptr, VARK_KostenstellenListe(1, nullptr, &params));
    EXPECT_EQ(2u, sent.Records(1).size());
}

TEST(KostenlistenDialog, KuerzelIsLookedForAmongKostenstellenAlone)
{
    // A Sachkonto's Kürzel begins so as well.
    Books books(
        "dialog 117\nexpect hidden 20053\nfocus 20054\ntext 20054 K1\nfocus 20055\nexpect text 20054 100\n"
        "text 20055 K9\npress 1\n");
    books.AddMandant(1);
    books.Insert(1, TableSako, MakeSako("1000"));
    books.Insert(1, TableKore, MakeKore("100"));
    books.Insert(1, TableKore, MakeKore("200"));
    EXPECT_EQ(1, VARK_Status());
    RecordingEngine sent;
    sent.Install();
    ReportParams params{};
    EXPECT_NE(nullptr, VARK_KostenSaldenListe(1, nullptr, &params));
    EXPECT_STREQ("100", params.KostenstelleVon);
    EXPECT_STREQ("K9", params.KostenstelleBis) << "what names nothing bounds the list as it was typed";
    for (const std::string &line : books.TakeLog()) {
        EXPECT_FALSE(line.starts_with("script:")) << line;
    }
    VARK_SchliesseDB();
}
