// Umsatzsteuerverprobung and Zusammenfassende Meldung: dialogs, failures, two years side by side, and how the
// sums of the one agree with the boxes of the return.
#include "include/vark40.h"
#include "src/frame/lifecycle.h"
#include "tests/support/books.h"
#include "tests/support/engine_faults.h"
#include "tests/support/recording_engine.h"
#include "tests/support/report_calls.h"
#include "tests/support/report_faults.h"

#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <string>
#include <vector>

using namespace vark;
using namespace vark::test;

namespace {

using Export = VarkWindow(VARK_CALL *)(int32_t, VarkWindow, ReportParams *);

struct TaxList {
    const char *Name;
    Export Call;
    int Dialog;
    const char *Title;
    const char *Failure;
    const char *Open;
};

void PrintTo(const TaxList &list, std::ostream *out) { *out << list.Name; }

const TaxList taxLists[] = {
    {"Verprobung", VARK_UmsatzSteuerVerprobung, 128, "Umsatzsteuerverprobung",
     "Die Umsatzsteuerverprobung konnte nicht erstellt werden!", "open or_vprob.rs tervoUSTVAVERPROB0.0 0"},
    {"Meldung", VARK_ZusammenfassendeMeldung, 123, "Zusammenfassende Meldung",
     "Die Zusammenfassende Meldung konnte nicht erstellt werden!", "open or_zm.rs tervoZM0.0 0"},
};

struct TaxLists : testing::TestWithParam<TaxList> {
    Books books;
    RecordingEngine sent;
    ReportParams params = PeriodOf(13);

    void SetUp() override
    {
        MandantOptions options;
        options.FirstFiscalMonth = 3; // the first quarter straddles two years
        options.UstId = "DE123456789";
        books.AddMandant(1, options);
        for (const char *year : {"1997", "1998"}) {
            SakoRecord account = MakeSako("8400");
            account.Kennzahl = 50;
            SetText(account.Umsaetze.Monat[0].Haben, "000000001,00");
            SetText(account.Umsaetze.Monat[11].Haben, "000000020,00");
            books.Insert(1, TableSako, account, year);
            books.Insert(1, TableSako, MakeSako("1776"), year);
            PersonalRecord debitor = MakePersonal("10001");
            SetText(debitor.UstId, "ATU1");
            SetText(debitor.Umsaetze.Monat[0].Soll, "000000001,00");
            SetText(debitor.Umsaetze.Monat[11].Soll, "000000020,00");
            books.Insert(1, TableDebi, debitor, year);
            books.Insert(1, TableSteke, MakeSteke(2, 0, "", "16,00", "1776", "1776"), year);
        }
        EXPECT_EQ(1, VARK_Status());
        sent.Install();
    }
    void TearDown() override { VARK_SchliesseDB(); }

    VarkWindow Call() { return GetParam().Call(1, nullptr, &params); }
    VarkWindow Play(const std::string &instructions)
    {
        return Played("dialog " + std::to_string(GetParam().Dialog) + "\n" + instructions,
                      [this] { return Call(); });
    }
};

std::string NameOf(const testing::TestParamInfo<TaxList> &info) { return info.param.Name; }

INSTANTIATE_TEST_SUITE_P(Both, TaxLists, testing::ValuesIn(taxLists), NameOf);

} // namespace

TEST_P(TaxLists, DialogHasItsControlsAndRemembersTheChoice)
{
    EXPECT_NE(nullptr, Play(std::string("expect title ") + GetParam().Title +
                            "\nexpect checked 20013\nexpect text 20000 1998\n"
                            "expect checked 20100\nexpect unchecked 20101\n"
                            "check 20002\ntext 20000 1998\npress 1\n"));
    EXPECT_EQ(GetParam().Open, sent.Calls.front());
    EXPECT_EQ("Februar 1998", FieldsOf(sent.Records(0).at(0))["Zeitraum"]);
    EXPECT_EQ(12, int32_t{params.Zeitraum}) << "month 12 of the fiscal year from March";
    EXPECT_EQ(17, int32_t{params.JahrIndex});
    EXPECT_EQ(uint32_t{ParamZeitraum | ParamJahr | ParamAusgabe}, uint32_t{params.ParamFlags});
}

TEST_P(TaxLists, RefusedPeriodKeepsTheDialogOpen)
{
    EXPECT_EQ(nullptr, Play("text 20000 1990\npress 1\n"
                            "box ok Das Datum muß innerhalb der bebuchbaren Geschäftsjahre liegen!\n"
                            "text 20000 12345\npress 1\nbox ok Die Jahresangabe ist unzulässig!\npress 2\n"));
    EXPECT_TRUE(sent.Calls.empty());
    EXPECT_EQ(0u, uint32_t{params.ViewResult});
}

TEST_P(TaxLists, PrintedOneLocksNothingAndAsksNothing)
{
    params = Printed(params);
    EXPECT_EQ(nullptr, Play("expect checked 20101\npress 1\n"));
    EXPECT_EQ(1u, uint32_t{params.ViewResult});
    EXPECT_EQ("print 0", sent.Calls.back());
    EXPECT_EQ("", TextOf(books.Mandant(1).Buchungssperre));
}

TEST_P(TaxLists, WhateverFailsTheReportIsWholeOrNotThere)
{
    ExpectWholeOrNotThere({.Installation = &books,
                           .Sent = &sent,
                           .Params = params,
                           .Call = [](ReportParams *block) { return GetParam().Call(1, nullptr, block); },
                           .Failure = GetParam().Failure,
                           .Judge =
                               [] {
                                   EXPECT_EQ(0, GetThreadContext()->OpenCounts[SlotFree29]);
                                   EXPECT_EQ(0, GetThreadContext()->OpenCounts[SlotFree30]);
                               }});
}

TEST_P(TaxLists, SecondYearsTableIsClosedWithTheReport)
{
    EXPECT_NE(nullptr, Call());
    EXPECT_EQ(0, GetThreadContext()->OpenCounts[SlotFree29]);
    EXPECT_EQ(17, int32_t{params.JahrIndex}) << "the fiscal year of the first day";
    const Lines first = sent.Calls;
    sent.Calls.clear();
    params = PeriodOf(13);
    EXPECT_NE(nullptr, Call());
    EXPECT_EQ(first, sent.Calls) << "the same again";
}

TEST_P(TaxLists, SumWithoutRoomIsNeverPrinted)
{
    SakoRecord account = MakeSako("8500");
    account.Kennzahl = 50;
    PersonalRecord debitor = MakePersonal("10002");
    SetText(debitor.UstId, "ATU1");
    for (int month : {1, 2}) {
        SetText(account.Umsaetze.Monat[month].Soll, "999999999,99");
        SetText(debitor.Umsaetze.Monat[month].Soll, "999999999,99");
    }
    books.Insert(1, TableSako, account);
    books.Insert(1, TableDebi, debitor);
    params = PeriodOf(14);
    EXPECT_EQ(nullptr, Call());
    EXPECT_EQ(Lines{GetParam().Failure}, books.TakeBoxes());
    EXPECT_EQ("close 7", sent.Calls.back());
}

TEST_P(TaxLists, UnknownMandantGivesNothingAndShowsNothing)
{
    EXPECT_EQ(nullptr, GetParam().Call(9, nullptr, &params));
    EXPECT_EQ(Lines{}, books.TakeBoxes());
    EXPECT_TRUE(sent.Calls.empty());
}

TEST_P(TaxLists, BlockOfRandomBytesIsReadWithinItself)
{
    constexpr unsigned seed = 19971231;
    std::mt19937 random(seed);
    struct {
        char Before[64];
        ReportParams Block;
        char After[64];
    } fenced;
    int made = 0;
    for (int round = 0; round < 100; ++round) {
        std::memset(&fenced, 0x5A, sizeof fenced);
        auto *bytes = reinterpret_cast<unsigned char *>(&fenced.Block);
        for (size_t i = 0; i < sizeof fenced.Block; ++i) {
            bytes[i] = static_cast<unsigned char>(random());
        }
        if (round % 2 == 0) fenced.Block.ParamFlags &= ~uint32_t{ParamArchivJahr};
        GetParam().Call(1, nullptr, &fenced.Block);
        made += uint32_t{fenced.Block.ViewResult} == 1 ? 1 : 0;
        for (size_t i = 0; i < sizeof fenced.Before; ++i) {
            ASSERT_EQ(0x5A, fenced.Before[i]) << "seed " << seed << " round " << round;
            ASSERT_EQ(0x5A, fenced.After[i]) << "seed " << seed << " round " << round;
        }
    }
    EXPECT_GT(made, 20);
}

TEST(VerprobungBesideTheReturn, BoxesAreTheNegativeSumsOfTheirAccounts)
{
    // Without a Sonderkonto, without postings left out, and with the same accounts in both years, both
    // reports go over the same amounts; the exact form shows them to the cent.
    constexpr unsigned seed = 421;
    std::mt19937 random(seed);
    const auto below = [&random](int end) { return static_cast<int>(random() % static_cast<unsigned>(end)); };
    constexpr int boxes[] = {41, 42, 50, 86, 35, 36, 66, 61, 62, 79, 76, 39};
    Books books;
    int16_t firstMonth = 1;
    for (int mandant = 1; mandant <= 3; ++mandant, firstMonth = static_cast<int16_t>(firstMonth + 4)) {
        MandantOptions options;
        options.FirstFiscalMonth = firstMonth;
        books.AddMandant(mandant, options);
        books.ChangeMandant(mandant, [](FistaRecord &record) { record.UStVAVariante = 1; });
        for (int i = 0; i < 40; ++i) {
            SakoRecord account = MakeSako(std::to_string(1000 + 7 * i));
            account.Kennzahl = static_cast<int16_t>(boxes[below(12)]);
            for (const char *year : {"1997", "1998"}) {
                for (SollHaben &month : account.Umsaetze.Monat) {
                    SetText(month.Soll, AmountOf(below(999'999'999)));
                    SetText(month.Haben, AmountOf(below(999'999'999)));
                }
                books.Insert(mandant, TableSako, account, year);
            }
        }
    }
    ASSERT_EQ(1, VARK_Status());
    RecordingEngine sent;
    sent.Install();
    for (int mandant = 1; mandant <= 3; ++mandant) {
        for (int code = 1; code <= 17; ++code) {
            sent.Calls.clear();
            ReportParams params = PeriodOf(code);
            ASSERT_NE(nullptr, VARK_UmsatzSteuerVoranmeldung(mandant, nullptr, &params));
            std::map<std::string, int64_t> ofReturn;
            for (const auto &[name, value] : FieldsOf(sent.Records(0).at(0))) {
                if (name.starts_with("Kz") && !name.ends_with("Kopie"))
                    ofReturn[name.substr(2)] = PfennigOf(value);
            }
            sent.Calls.clear();
            params = PeriodOf(code);
            ASSERT_NE(nullptr, VARK_UmsatzSteuerVerprobung(mandant, nullptr, &params));
            std::map<std::string, int64_t> ofVerprobung;
            for (const std::string &record : sent.Records(3)) {
                auto fields = FieldsOf(record);
                ofVerprobung[fields["Kennzahl"]] -= PfennigOf(fields["Betrag"]);
            }
            EXPECT_EQ(ofReturn, ofVerprobung)
                << "seed " << seed << " mandant " << mandant << " code " << code;
            EXPECT_FALSE(ofReturn.empty());
        }
    }
    VARK_SchliesseDB();
}
