// The dialog of the tax return, its failures, and the bytes of its record.
#include "include/vark40.h"
#include "src/frame/lifecycle.h"
#include "src/frame/report_engine.h"
#include "tests/support/books.h"
#include "tests/support/engine_faults.h"
#include "tests/support/recording_engine.h"
#include "tests/support/report_calls.h"
#include "tests/support/report_faults.h"

#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <set>
#include <string>

using namespace vark;
using namespace vark::test;

namespace {

const std::string failure = "Die Umsatzsteuervoranmeldung konnte nicht erstellt werden!";

struct Voranmeldung : testing::Test {
    Books books;
    RecordingEngine sent;
    ReportParams params = PeriodOf(3);

    void SetUp() override
    {
        MandantOptions options;
        options.FirstFiscalMonth = 3; // the first quarter straddles two years
        books.AddMandant(1, options);
        Change([](FistaRecord &mandant) { SetText(mandant.Name, "Musterbetrieb"); });
        for (const char *year : {"1997", "1998"}) {
            books.Insert(1, TableSako, Account("1576", 66, "000000160,00", "000000000,00"), year);
            books.Insert(1, TableSako, Account("8400", 50, "000000000,00", "000001000,50"), year);
        }
        EXPECT_EQ(1, VARK_Status());
        sent.Install();
    }
    void TearDown() override { VARK_SchliesseDB(); }

    template <typename Do> void Change(Do change) { books.ChangeMandant(1, change); }

    static SakoRecord Account(const std::string &number, int kennzahl, const std::string &soll,
                              const std::string &haben)
    {
        SakoRecord account = MakeSako(number);
        account.Kennzahl = static_cast<int16_t>(kennzahl);
        for (SollHaben &month : account.Umsaetze.Monat) {
            SetText(month.Soll, soll);
            SetText(month.Haben, haben);
        }
        return account;
    }
    VarkWindow Call() { return VARK_UmsatzSteuerVoranmeldung(1, nullptr, &params); }
    VarkWindow Play(const std::string &instructions)
    {
        return Played(instructions, [this] { return Call(); });
    }
};

} // namespace

TEST_F(Voranmeldung, DialogHasItsControlsAndRemembersTheChoice)
{
    EXPECT_NE(nullptr, Play("dialog 122\n"
                            "expect title Umsatzsteuervoranmeldung\n"
                            "expect checked 20005\n" // fiscal month 3 is May
                            "expect text 20000 1998\n"
                            "expect text 20017 &Kalenderjahr\n"
                            "expect visible 1053\nexpect unchecked 1053\n"
                            "expect checked 20100\nexpect unchecked 20101\n"
                            "check 20014\ntext 20000 1997\npress 1\n"));
    EXPECT_EQ("2. Quartal 1997", FieldsOf(sent.Records(0).at(0))["Zeitraum"]);
    EXPECT_EQ(14, int32_t{params.Zeitraum});
    EXPECT_EQ(17, int32_t{params.JahrIndex});
    EXPECT_EQ(0, int32_t{params.Ausgabe});
    EXPECT_EQ(uint32_t{ParamZeitraum | ParamJahr | ParamAusgabe}, uint32_t{params.ParamFlags});
}

TEST_F(Voranmeldung, CorrectedReturnIsForTheFormWithWholeAmounts)
{
    EXPECT_NE(nullptr, Play("dialog 122\ncheck 1053\npress 1\n"));
    EXPECT_EQ("1", FieldsOf(sent.Records(0).at(0))["Berichtigt"]);
    sent.Calls.clear();
    EXPECT_NE(nullptr, Play("dialog 122\nexpect unchecked 1053\npress 1\n")) << "unticked at every opening";
    EXPECT_EQ("0", FieldsOf(sent.Records(0).at(0))["Berichtigt"]);
    Change([](FistaRecord &mandant) { mandant.UStVAVariante = 2; });
    sent.Calls.clear();
    EXPECT_NE(nullptr, Play("dialog 122\nexpect hidden 1053\npress 1\n"));
    EXPECT_EQ("0", FieldsOf(sent.Records(0).at(0))["Berichtigt"]);
    EXPECT_EQ("open or_ustva.rs tervoUSTVA0.0 0", sent.Calls.front());
}

TEST_F(Voranmeldung, RefusedPeriodKeepsTheDialogOpen)
{
    EXPECT_EQ(nullptr, Play("dialog 122\ncheck 20001\ntext 20000 1990\ncheck 20101\npress 1\n"
                            "box ok Das Datum muß innerhalb der bebuchbaren Geschäftsjahre liegen!\n"
                            "text 20000 abc\npress 1\n"
                            "box ok Die Jahresangabe ist unzulässig!\n"
                            "press 2\n"))
        << "the period is checked before anything is asked";
    EXPECT_TRUE(sent.Calls.empty());
}

TEST_F(Voranmeldung, PrinterIsAskedForAtEachOk)
{
    const ReportParams before = params;
    EXPECT_EQ(nullptr, Play("dialog 122\ncheck 20101\npress 1\nbox no Achtung! Nach dem Ausdruck\n"
                            "press 1\nbox no Achtung!\npress 2\n"));
    EXPECT_EQ(0, std::memcmp(&before, &params, sizeof params)) << "nothing is written back before the answer";
    EXPECT_TRUE(sent.Calls.empty());
    EXPECT_EQ(nullptr, Play("dialog 122\ncheck 20101\npress 1\nbox no\npress 1\nbox yes\n"));
    EXPECT_EQ(1u, uint32_t{params.ViewResult});
    EXPECT_EQ("print 0", sent.Calls.back());
    EXPECT_EQ(1, int32_t{params.Ausgabe});
}

TEST_F(Voranmeldung, WithNobodyThereNothingIsPrinted)
{
    params = Printed(params);
    EXPECT_EQ(nullptr, Call());
    EXPECT_EQ(0u, uint32_t{params.ViewResult});
    EXPECT_TRUE(sent.Calls.empty());
    const Lines boxes = books.TakeBoxes();
    ASSERT_EQ(1u, boxes.size());
    EXPECT_EQ("Achtung! Nach dem Ausdruck der Voranmeldung wird dieser Zeitraum für weitere Buchungen "
              "gesperrt. Wenn Sie sich nur eine vorläufige Voranmeldung ansehen möchten, so sollten Sie  die "
              "Voranmeldung am Bildschirm ausgeben. Soll die Voranmeldung trotzdem gedruckt werden?",
              boxes[0]);
}

TEST_F(Voranmeldung, CancelledOpensNothingAndLeavesTheBlock)
{
    const ReportParams before = params;
    params.ViewResult = 1;
    EXPECT_EQ(nullptr, Play("dialog 122\ncheck 20017\npress 2\n"));
    EXPECT_EQ(0, std::memcmp(&before, &params, sizeof params));
    EXPECT_TRUE(sent.Calls.empty());
    EXPECT_EQ(Lines{}, books.TakeBoxes());
}

TEST_F(Voranmeldung, WithoutACallersBlockThisMonthIsShown)
{
    EXPECT_EQ(sent.ViewResult, VARK_UmsatzSteuerVoranmeldung(1, nullptr, nullptr));
    EXPECT_EQ("Juni 1998", FieldsOf(sent.Records(0).at(0))["Zeitraum"]);
}

TEST_F(Voranmeldung, UnknownMandantGivesNothingAndShowsNothing)
{
    EXPECT_EQ(nullptr, VARK_UmsatzSteuerVoranmeldung(9, nullptr, &params));
    EXPECT_TRUE(sent.Calls.empty());
    EXPECT_EQ(Lines{}, books.TakeBoxes());
}

TEST_F(Voranmeldung, EveryByteOfTheRecordIsItsOwn)
{
    static std::string record;
    reportEngine.AddData = [](int32_t, int32_t kind, const void *data) -> int32_t {
        EXPECT_EQ(0, kind);
        record.assign(static_cast<const char *>(data), 1000);
        return 1;
    };
    Change([](FistaRecord &mandant) {
        // Fields filled to the last byte are cut, not run together with what lies behind them.
        std::memset(mandant.Name2, 'x', sizeof mandant.Name2);
        std::memset(mandant.Steuernummer, '1', sizeof mandant.Steuernummer);
        std::memset(mandant.Anschrift6, 'y', sizeof mandant.Anschrift6);
        SetText(mandant.Anschrift1, "A");
        std::memset(mandant.Anschrift1 + 2, 'z', 20); // behind the text's end
    });
    EXPECT_NE(nullptr, Call());
    EXPECT_EQ(std::string(25, 'x') + '\0', record.substr(41, 26));
    EXPECT_EQ("A" + std::string(30, '\0'), record.substr(67, 31));
    EXPECT_EQ(std::string(20, 'y') + '\0', record.substr(232, 21));
    EXPECT_EQ(std::string(19, '1') + std::string(16, '\0'), record.substr(288, 35));
    for (size_t at = 415; at < 1000; at += 13) {
        EXPECT_EQ('\0', record[at + 12]) << at;
        const std::string box = record.substr(at, 12);
        const std::string wanted = at == 493   ? "000001000,00" // 50
                                   : at == 649 ? "000000160-00" // 66
                                               : "000000000,00";
        EXPECT_EQ(wanted, box) << at;
    }
}

TEST_F(Voranmeldung, SumWithoutRoomIsNeverPrinted)
{
    books.Insert(1, TableSako, Account("8500", 50, "000000000,00", "999999999,99"));
    EXPECT_EQ(nullptr, Call());
    EXPECT_EQ(Lines{failure}, books.TakeBoxes());
    EXPECT_EQ("close 7", sent.Calls.back());
    EXPECT_TRUE(sent.Records(0).empty());
}

TEST_F(Voranmeldung, OverflowOnTheWayOfABoxThatGoesNowhereFailsToo)
{
    SakoRecord account = Account("8500", 85, "000000000,00", "999999999,99");
    books.Insert(1, TableSako, account);
    params = PeriodOf(14);
    EXPECT_EQ(nullptr, Call());
    EXPECT_EQ(Lines{failure}, books.TakeBoxes());
}

TEST_F(Voranmeldung, WhateverFailsTheReportIsWholeOrNotThere)
{
    Change([](FistaRecord &mandant) {
        mandant.Sonderkontomodus = 1;
        SetText(mandant.Sonderkonto, Justified("1790"));
    });
    for (const char *year : {"1997", "1998"}) {
        const std::string day = std::strcmp(year, "1997") == 0 ? "151117" : "150118";
        BubeRecord posting = MakeBube(1, day, "1576", "8400", "000000010,00");
        posting.Status = 0x210;
        posting.Steuerflags = 4;
        books.Insert(1, TableBube, posting, year);
        books.Insert(1, TableBube, MakeBube(2, day, "1576", "8400", "000000010,00"), year);
    }
    ExpectWholeOrNotThere(
        {.Installation = &books,
         .Sent = &sent,
         .Params = PeriodOf(13),
         .Call = [](ReportParams *block) { return VARK_UmsatzSteuerVoranmeldung(1, nullptr, block); },
         .Failure = failure,
         .Judge = [this] { EXPECT_EQ("", TextOf(books.Mandant(1).Buchungssperre)); }});
}

TEST_F(Voranmeldung, MissingYearIsAFailedReport)
{
    Change([](FistaRecord &mandant) { SetText(mandant.LowerYear, "1996"); });
    params = PeriodOf(1, 16);
    EXPECT_EQ(nullptr, Call());
    const Lines boxes = books.TakeBoxes();
    ASSERT_FALSE(boxes.empty());
    EXPECT_EQ(failure, boxes.back());
    EXPECT_EQ("close 7", sent.Calls.back());
}

TEST_F(Voranmeldung, BlockOfRandomBytesIsReadWithinItself)
{
    constexpr unsigned seed = 19960229;
    std::mt19937 random(seed);
    struct {
        char Before[64];
        ReportParams Block;
        char After[64];
    } fenced;
    int made = 0;
    for (int round = 0; round < 200; ++round) {
        std::memset(&fenced, 0x5A, sizeof fenced);
        auto *bytes = reinterpret_cast<unsigned char *>(&fenced.Block);
        for (size_t i = 0; i < sizeof fenced.Block; ++i) {
            bytes[i] = static_cast<unsigned char>(random());
        }
        if (round % 2 == 0) {
            fenced.Block.ParamFlags &= ~uint32_t{ParamArchivJahr};
            fenced.Block.Ausgabe = 0;
        }
        const bool isShown = VARK_UmsatzSteuerVoranmeldung(1, nullptr, &fenced.Block) != nullptr;
        EXPECT_EQ(isShown ? 1u : 0u, uint32_t{fenced.Block.ViewResult})
            << "seed " << seed << " round " << round;
        made += isShown ? 1 : 0;
        for (size_t i = 0; i < sizeof fenced.Before; ++i) {
            ASSERT_EQ(0x5A, fenced.Before[i]) << "seed " << seed << " round " << round;
            ASSERT_EQ(0x5A, fenced.After[i]) << "seed " << seed << " round " << round;
        }
    }
    EXPECT_GT(made, 50);
}
