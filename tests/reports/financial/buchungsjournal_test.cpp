// Buchungsjournal: what may go wrong, books with a number twice, and random books whose sums are those of the
// Summen- und Saldenliste.
#include "include/vark40.h"
#include "src/reports/frame/report_params.h"
#include "tests/support/books.h"
#include "tests/support/engine_faults.h"
#include "tests/support/recording_engine.h"
#include "tests/support/report_faults.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <string>

using namespace vark;
using namespace vark::test;

namespace {

constexpr char failure[] = "Das Buchungsjournal konnte nicht erstellt werden!";

int64_t Pfennig(const std::string &amount)
{
    const int64_t value = std::stoll(amount.substr(0, 9) + amount.substr(10));
    return amount[9] == '-' ? -value : value;
}

std::string Field(const std::string &record, const std::string &name)
{
    const size_t at = (" | " + record).find(" | " + name + "=");
    EXPECT_NE(std::string::npos, at) << name << " in " << record;
    const size_t from = at + name.size() + 1;
    return record.substr(from, record.find(" | ", from) - from);
}

BubeRecord Part(int32_t nummer, const std::string &datum, uint16_t status, int16_t anzahl)
{
    BubeRecord record = MakeBube(nummer, datum, "1000", "8400", "000000001,00");
    record.Status = status;
    record.Anzahl = anzahl;
    return record;
}

struct Buchungsjournal : testing::Test {
    Books books;
    RecordingEngine sent;
    ReportParams params{};

    void SetUp() override
    {
        books.AddMandant(1);
        params.ParamFlags = ParamZeitraum | ParamJahr;
        params.Zeitraum = 2;
        params.JahrIndex = 18;
        EXPECT_EQ(1, VARK_Status());
        sent.Install();
    }
    void TearDown() override { VARK_SchliesseDB(); }

    void ExpectFailure()
    {
        EXPECT_EQ(nullptr, VARK_Buchungsjournal(1, nullptr, &params));
        EXPECT_EQ(0u, uint32_t{params.ViewResult});
        EXPECT_EQ(Lines{failure}, books.TakeBoxes());
        EXPECT_EQ("close 7", sent.Calls.back());
    }
};

UserRecord MakeUser(const std::string &key, const std::string &name)
{
    UserRecord user{};
    std::memcpy(user.Schluessel, key.data(), std::min(key.size(), sizeof user.Schluessel));
    SetText(user.Name, name);
    return user;
}

} // namespace

TEST_F(Buchungsjournal, WhateverFailsTheReportIsWholeOrNotThere)
{
    books.Insert(1, TableBube, Part(1, "020218", BubeSplitSoll, 1));
    books.Insert(1, TableBube, Part(2, "020218", BubeSplitSoll | BubeGefaltet, 0));
    books.Insert(1, TableBube, MakeBube(3, "030218", "1000", "1200", "000000002,00"));
    ExpectWholeOrNotThere(
        {.Installation = &books,
         .Sent = &sent,
         .Params = params,
         .Call = [](ReportParams *block) { return VARK_Buchungsjournal(1, nullptr, block); },
         .Failure = failure});
}

TEST_F(Buchungsjournal, FailedReadOfAUserEndsTheReport)
{
    books.Insert(1, TableUser, MakeUser("ANN", "Anna Petersen"));
    BubeRecord record = MakeBube(1, "030218", "1000", "1200", "000000002,00");
    SetText(record.Benutzer, "ANN");
    books.Insert(1, TableBube, record);
    constexpr uint16_t getEqual = 5;
    FailEngineOperation(getEqual, 0, 2);
    EXPECT_NE(nullptr, VARK_Buchungsjournal(1, nullptr, &params));
    const int reads = StopEngineFaults();
    EXPECT_NE(std::string::npos, sent.Records(1).at(0).find("Benutzer=Anna Petersen"));
    FailEngineOperation(getEqual, reads, 2);
    EXPECT_EQ(nullptr, VARK_Buchungsjournal(1, nullptr, &params));
    StopEngineFaults();
    EXPECT_EQ((Lines{"I/O Error", failure}), books.TakeBoxes());
    EXPECT_EQ("close 7", sent.Calls.back());
}

TEST_F(Buchungsjournal, UsersThatCannotBeCountedAreNoneAndTheReportGoesOn)
{
    VARK_SchliesseDB();
    books.Insert(1, TableBube, MakeBube(1, "030218", "1000", "1200", "000000002,00"));
    std::filesystem::remove(books.TablePath(1, TableUser));
    ASSERT_FALSE(std::filesystem::exists(books.TablePath(1, TableUser)));
    EXPECT_NE(nullptr, VARK_Buchungsjournal(1, nullptr, &params));
    EXPECT_EQ(1u, sent.Records(2).size());
}

TEST_F(Buchungsjournal, NetAmountThatOverflowsIsNeverPrinted)
{
    BubeRecord record = MakeBube(1, "030218", "1000", "8400", "999999999,99");
    SetText(record.Steuerkonto, Justified("1775"));
    SetText(record.Steuer, "000000000,01");
    record.Steuerflags = BubeSteuerPlus;
    books.Insert(1, TableBube, record);
    ExpectFailure();
    EXPECT_TRUE(sent.Records(2).empty());
}

TEST_F(Buchungsjournal, SummaryThatOverflowsIsNeverPrinted)
{
    BubeRecord head = MakeBube(1, "030218", "1000", "8400", "000000001,00");
    head.Status = BubeSplitSoll;
    head.Anzahl = 2;
    books.Insert(1, TableBube, head);
    for (int32_t n = 2; n <= 3; ++n) {
        BubeRecord folded = MakeBube(n, "030218", "1000", "8400", "600000000,00");
        folded.Status = BubeSplitSoll | BubeGefaltet;
        books.Insert(1, TableBube, folded);
    }
    ExpectFailure();
    EXPECT_TRUE(sent.Records(3).empty());
}

TEST_F(Buchungsjournal, EmptyAmountsGoOutAsZeroAndABlankAccountIsNone)
{
    BubeRecord record = MakeBube(1, "030218", "1000", "8400", "000000001,00");
    std::memset(record.Soll, 0, sizeof record.Soll);
    SetText(record.Steuerkonto, Justified(""));
    SetText(record.Steuer, "000000005,00");
    books.Insert(1, TableBube, record);
    EXPECT_NE(nullptr, VARK_Buchungsjournal(1, nullptr, &params));
    EXPECT_EQ(Lines{"Nummer=1 | Sollkonto=1000 | Habenkonto=8400 | Steuerkonto= | Satz=00,00 | "
                    "Text=Buchung 1 | Soll=000000000,00 | Haben=000000001,00 | NettoSoll=000000000,00 | "
                    "NettoHaben=000000001,00 | SteuerSoll=000000000,00 | SteuerHaben=000000000,00"},
              sent.Records(2));
}

TEST_F(Buchungsjournal, LinesOfAHeadAreReadBeyondThePeriod)
{
    books.Insert(1, TableBube, Part(1, "280218", BubeSplitHaben, 1));
    books.Insert(1, TableBube, Part(2, "010318", BubeSplitHaben, 0));
    books.Insert(1, TableBube, MakeBube(3, "020318", "1000", "1200", "000000002,00"));
    EXPECT_NE(nullptr, VARK_Buchungsjournal(1, nullptr, &params));
    EXPECT_EQ(2u, sent.Records(2).size());
    EXPECT_EQ(1u, sent.Records(1).size());
}

TEST(BuchungsjournalDialog, SortingIsUntickedAtEveryOpening)
{
    Books books("dialog 113\nexpect title \"Buchungsjournal\"\nexpect unchecked 1018\ncheck 1018\npress 1\n"
                "dialog 113\nexpect unchecked 1018\npress 2\n");
    books.AddMandant(1);
    books.Insert(1, TableBube, MakeBube(1, "030218", "1000", "1200", "000000002,00"));
    EXPECT_EQ(1, VARK_Status());
    RecordingEngine sent;
    sent.Install();
    ReportParams params{};
    params.ParamFlags = ParamZeitraum | ParamJahr;
    params.Zeitraum = 2;
    params.JahrIndex = 18;
    EXPECT_NE(nullptr, VARK_Buchungsjournal(1, nullptr, &params));
    EXPECT_EQ(nullptr, VARK_Buchungsjournal(1, nullptr, &params));
    for (const std::string &line : books.TakeLog()) {
        EXPECT_FALSE(line.starts_with("script:")) << line;
    }
    VARK_SchliesseDB();
}

namespace {

struct JournalProperties : testing::TestWithParam<unsigned> {};

} // namespace

TEST_P(JournalProperties, SumsAreThoseOfTheSummenUndSaldenlisteForTheSamePeriod)
{
    Books books;
    RecordingEngine sent;
    std::mt19937 random(GetParam());
    const auto below = [&](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
    books.AddMandant(1);
    constexpr int accounts = 6;
    int64_t soll[accounts][13] = {};
    int64_t haben[accounts][13] = {};
    int left = 0; // of the split in hand
    BubeRecord head{};
    for (int n = 1; n <= 120; ++n) {
        const int month = 1 + n / 11;
        const int64_t pfennig = 1 + below(100000);
        std::string amount = std::to_string(100000000000 + pfennig).substr(1);
        amount.insert(9, ",");
        int from = below(accounts);
        const int to = below(accounts);
        const std::string day = std::to_string(101 + n % 11).substr(1);
        const std::string date = day + std::to_string(100 + month).substr(1) + "18";
        if (left > 0 && n % 11 == 0) left = 0;
        if (left > 0) from = head.Sollkonto[6] - '0';
        BubeRecord record =
            MakeBube(n, date, "100" + std::to_string(from), "100" + std::to_string(to), amount);
        if (left > 0) {
            record.Status = static_cast<uint16_t>(BubeSplitSoll | (below(2) == 0 ? BubeGefaltet : 0));
            --left;
        } else if (below(3) == 0 && n % 11 < 6 && n < 110) {
            left = 1 + below(4);
            record.Status = BubeSplitSoll;
            record.Anzahl = static_cast<int16_t>(left);
            head = record;
        }
        books.Insert(1, TableBube, record);
        soll[from][month] += pfennig;
        haben[to][month] += pfennig;
    }
    for (int account = 0; account < accounts; ++account) {
        SakoRecord record = MakeSako("100" + std::to_string(account));
        for (int month = 1; month <= 12; ++month) {
            const auto put = [](AmountText &field, int64_t value) {
                SetText(field, std::to_string(100000000000 + value).substr(1).insert(9, ","));
            };
            put(record.Umsaetze.Monat[month - 1].Soll, soll[account][month]);
            put(record.Umsaetze.Monat[month - 1].Haben, haben[account][month]);
        }
        books.Insert(1, TableSako, record);
    }
    ASSERT_EQ(1, VARK_Status());
    sent.Install();
    for (int month = 1; month <= 10; ++month) {
        ReportParams params{};
        params.ParamFlags = ParamZeitraum | ParamJahr;
        params.Zeitraum = month;
        params.JahrIndex = 18;
        sent.Calls.clear();
        ASSERT_NE(nullptr, VARK_Buchungsjournal(1, nullptr, &params));
        int64_t journal[2] = {};
        for (const int kind : {2, 3}) {
            for (const std::string &line : sent.Records(kind)) {
                journal[0] += Pfennig(Field(line, "Soll"));
                journal[1] += Pfennig(Field(line, "Haben"));
            }
        }
        params = {};
        params.ParamFlags = ParamZeitraum | ParamDaten | ParamKontoArt;
        params.KontoArt = 1;
        SetText(params.VonDatum, "280198");
        SetText(params.BisDatum, "28" + std::to_string(100 + month).substr(1) + "98");
        sent.Calls.clear();
        ASSERT_NE(nullptr, VARK_SummenSaldenListe(1, nullptr, &params));
        int64_t list[2] = {};
        for (const std::string &line : sent.Records(1)) {
            list[0] += Pfennig(Field(line, "MonatSoll"));
            list[1] += Pfennig(Field(line, "MonatHaben"));
        }
        EXPECT_GT(list[0], 0);
        EXPECT_EQ(list[0], journal[0]) << "month " << month;
        EXPECT_EQ(list[1], journal[1]) << "month " << month;
    }
    VARK_SchliesseDB();
}

INSTANTIATE_TEST_SUITE_P(Seeds, JournalProperties, testing::Range(1u, 7u));
