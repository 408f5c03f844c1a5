// Umsatzstatistik: what may go wrong, the checks of the dialog in their order, and turnovers reckoned a
// second time from the postings alone.
#include "include/vark40.h"
#include "src/reports/frame/report_params.h"
#include "tests/support/books.h"
#include "tests/support/recording_engine.h"
#include "tests/support/report_faults.h"

#include <gtest/gtest.h>
#include <map>
#include <random>

using namespace vark;
using namespace vark::test;

namespace {

constexpr char failure[] = "Die Umsatzstatistik konnte nicht erstellt werden!";

ReportParams Quarter(int32_t kontoart)
{
    ReportParams params{};
    params.ParamFlags = ParamZeitraum | ParamJahr | ParamKontoArt;
    params.Zeitraum = 13;
    params.JahrIndex = 18;
    params.KontoArt = kontoart;
    return params;
}

std::string Field(const std::string &record, const std::string &name)
{
    const size_t at = (" | " + record).find(" | " + name + "=");
    EXPECT_NE(std::string::npos, at) << name << " in " << record;
    const size_t from = at + name.size() + 1;
    return record.substr(from, record.find(" | ", from) - from);
}

} // namespace

TEST(Umsatzstatistik, WhateverFailsTheReportIsWholeOrNotThere)
{
    Books books;
    RecordingEngine sent;
    books.AddMandant(1);
    books.Insert(1, TableDebi, MakePersonal("10000"));
    books.Insert(1, TableDebi, MakePersonal("10010"));
    books.Insert(1, TableBube, MakeBube(1, "010218", "10000", "8400", "000000005,00"));
    EXPECT_EQ(1, VARK_Status());
    sent.Install();
    ExpectWholeOrNotThere(
        {.Installation = &books,
         .Sent = &sent,
         .Params = Quarter(KontoartDebitor),
         .Call = [](ReportParams *block) { return VARK_UmsatzStatistik(1, nullptr, block); },
         .Failure = failure});
    VARK_SchliesseDB();
}

TEST(Umsatzstatistik, TurnoverThatOverflowsIsNeverPrinted)
{
    Books books;
    RecordingEngine sent;
    books.AddMandant(1);
    books.Insert(1, TableDebi, MakePersonal("10000"));
    books.Insert(1, TableBube, MakeBube(1, "010218", "10000", "8400", "999999999,99"));
    books.Insert(1, TableBube, MakeBube(2, "020218", "10000", "8400", "000000000,01"));
    EXPECT_EQ(1, VARK_Status());
    sent.Install();
    ReportParams params = Quarter(KontoartDebitor);
    EXPECT_EQ(nullptr, VARK_UmsatzStatistik(1, nullptr, &params));
    EXPECT_EQ(Lines{failure}, books.TakeBoxes());
    EXPECT_EQ("close 7", sent.Calls.back());
    VARK_SchliesseDB();
}

TEST(UmsatzstatistikDialog, ChecksAccountThenPeriodThenMinimumAndStaysOpen)
{
    // Each round mends one more fault, so the order of the checks shows.
    Books books("dialog 119\ncheck 20056\ntext 20054 9999\ntext 20000 1950\ntext 1005 0\npress 1\n"
                "box ok \"Es existiert kein Konto mit dieser Kontonummer!\"\n"
                "dialog 119\nexpect focus 20054\ntext 20054 10000\npress 1\nbox ok\n"
                "dialog 119\ntext 20000 1998\npress 1\n"
                "box ok \"Bitte geben Sie einen Mindestumsatz ein, der größer als 0 ist.\"\n"
                "dialog 119\nexpect focus 1005\ntext 1005 abc\npress 1\n"
                "box ok \"Bitte geben Sie einen Mindestumsatz ein, der größer als 0 ist.\"\n"
                "dialog 119\ntext 1005 1.000,5\npress 1\n");
    books.AddMandant(1);
    books.Insert(1, TableDebi, MakePersonal("10000"));
    books.Insert(1, TableBube, MakeBube(1, "010218", "10000", "8400", "000001000,50"));
    EXPECT_EQ(1, VARK_Status());
    RecordingEngine sent;
    sent.Install();
    ReportParams params = Quarter(KontoartDebitor);
    EXPECT_NE(nullptr, VARK_UmsatzStatistik(1, nullptr, &params));
    for (const std::string &line : books.TakeLog()) {
        EXPECT_FALSE(line.starts_with("script:")) << line;
    }
    ASSERT_EQ(1u, sent.Records(0).size());
    EXPECT_EQ("Mindestumsatz: 1.000,50", Field(sent.Records(0)[0], "Auswahl"));
    EXPECT_EQ(1u, sent.Records(1).size());
    VARK_SchliesseDB();
}

namespace {

struct UmsatzProperties : testing::TestWithParam<unsigned> {};

} // namespace

TEST_P(UmsatzProperties, TurnoverIsTheSumOfThePostings)
{
    Books books;
    RecordingEngine sent;
    std::mt19937 random(GetParam());
    const auto below = [&](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
    const auto amountOf = [](int64_t value) {
        return std::to_string(100000000000 + value).substr(1).insert(9, ",");
    };
    books.AddMandant(1);
    std::map<std::string, int64_t> net;
    std::map<std::string, int64_t> slots[12];
    for (int n = 1; n <= 200; ++n) {
        const std::string konto = std::to_string(10000 + below(7));
        const int month = 1 + below(6);
        const int64_t value = int64_t{116} * (1 + below(9000));
        const std::string day = std::to_string(101 + below(28)).substr(1);
        BubeRecord record =
            MakeBube(n, day + "0" + std::to_string(month) + "18", konto, "8400", amountOf(value));
        SetText(record.Haben, amountOf(value / 116 * 100));
        const bool isLeftOut = below(9) == 0;
        if (isLeftOut) record.Status = BubeOhneNetto;
        books.Insert(1, TableBube, record);
        slots[month - 1][konto] += value;
        if (month > 3) continue;
        if (!isLeftOut) net[konto] += value / 116 * 100;
    }
    for (int i = 0; i < 7; ++i) {
        const std::string konto = std::to_string(10000 + i);
        PersonalRecord record = MakePersonal(konto);
        for (int month = 0; month < 12; ++month) {
            SetText(record.Umsaetze.Monat[month].Soll, amountOf(slots[month][konto]));
        }
        books.Insert(1, TableDebi, record);
        net[konto] += 0;
    }
    ASSERT_EQ(1, VARK_Status());
    sent.Install();
    ReportParams params = Quarter(KontoartDebitor);
    ASSERT_NE(nullptr, VARK_UmsatzStatistik(1, nullptr, &params));
    std::map<std::string, int64_t> listed;
    for (const std::string &line : sent.Records(1)) {
        const std::string amount = Field(line, "Umsatz");
        listed[Field(line, "Konto")] = std::stoll(amount.substr(0, 9) + amount.substr(10));
    }
    EXPECT_EQ(net, listed);
    VARK_SchliesseDB();
}

INSTANTIATE_TEST_SUITE_P(Seeds, UmsatzProperties, testing::Range(1u, 6u));
