// OP-Liste: what may go wrong, the open items beside those of the cursor and the balances of their accounts,
// and what is read on the page.
#include "include/vark40.h"
#include "report-engine/include/rs.h"
#include "src/frame/lifecycle.h"
#include "src/frame/report_engine.h"
#include "src/platform/platform.h"
#include "src/reports/frame/report_params.h"
#include "tests/support/books.h"
#include "tests/support/recording_engine.h"
#include "tests/support/report_faults.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <sstream>

using namespace vark;
using namespace vark::test;

namespace {

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

ReportParams Debitoren()
{
    ReportParams params{};
    params.ParamFlags = ParamKontoArt;
    params.KontoArt = KontoartDebitor;
    return params;
}

struct OpListe : testing::Test {
    Books books;
    RecordingEngine sent;
    ReportParams params = Debitoren();

    void SetUp() override
    {
        books.AddMandant(1);
        EXPECT_EQ(1, VARK_Status());
    }
    void TearDown() override { VARK_SchliesseDB(); }
};

} // namespace

TEST_F(OpListe, WhateverFailsTheReportIsWholeOrNotThere)
{
    books.Insert(1, TableOpdebi, MakeOpenItem(1, "10000", "180301", "000000005,00"));
    books.Insert(1, TableOpdebi, MakeOpenItem(2, "10010", "180302", "000000006,00"));
    sent.Install();
    ExpectWholeOrNotThere({.Installation = &books,
                           .Sent = &sent,
                           .Params = params,
                           .Call = [](ReportParams *block) { return VARK_OPListe(1, nullptr, block); },
                           .Failure = "Die OP-Liste konnte nicht erstellt werden!"});
}

TEST_F(OpListe, OtherKindsThanDebitorenAreKreditoren)
{
    books.Insert(1, TableOpkred, MakeOpenItem(1, "70000", "180301", "000000005,00"));
    sent.Install();
    params.KontoArt = KontoartSachkonto;
    EXPECT_NE(nullptr, VARK_OPListe(1, nullptr, &params));
    EXPECT_EQ(1u, sent.Records(2).size());
    EXPECT_EQ(KontoartKreditor, int32_t{params.KontoArt});
}

TEST(OpListeDialog, GroupingIsBySkontoAtEveryOpening)
{
    Books books("dialog 129\nexpect title \"OP-Liste\"\nexpect checked 1002\ncheck 1004\n"
                "expect unchecked 1002\npress 1\ndialog 129\nexpect checked 1002\npress 2\n");
    books.AddMandant(1);
    EXPECT_EQ(1, VARK_Status());
    RecordingEngine sent;
    sent.Install();
    ReportParams params = Debitoren();
    EXPECT_NE(nullptr, VARK_OPListe(1, nullptr, &params));
    EXPECT_EQ(nullptr, VARK_OPListe(1, nullptr, &params));
    for (const std::string &line : books.TakeLog()) {
        EXPECT_FALSE(line.starts_with("script:")) << line;
    }
    VARK_SchliesseDB();
}

namespace {

struct OpProperties : testing::TestWithParam<unsigned> {};

} // namespace

TEST_P(OpProperties, ItemsOfEachAccountAreThoseOfTheCursorAndItsBalance)
{
    Books books;
    RecordingEngine sent;
    std::mt19937 random(GetParam());
    const auto below = [&](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
    books.AddMandant(1);
    std::map<std::string, int64_t> balances;
    for (uint32_t n = 1; n <= 60; ++n) {
        const std::string konto = std::to_string(10000 + below(8));
        const int64_t pfennig = 1 + below(1000000);
        std::string amount = std::to_string(100000000000 + pfennig).substr(1).insert(9, ",");
        const bool isNegative = below(4) == 0;
        if (isNegative) amount[9] = '-';
        balances[konto] += isNegative ? -pfennig : pfennig;
        const std::string day = std::to_string(101 + below(28)).substr(1);
        OpenItemRecord item = MakeOpenItem(n, konto, below(5) == 0 ? "" : "1803" + day, amount);
        books.Insert(1, TableOpdebi, item);
    }
    for (const auto &[konto, balance] : balances) {
        PersonalRecord record = MakePersonal(konto);
        SetText(balance < 0 ? record.Umsaetze.Monat[2].Haben : record.Umsaetze.Monat[2].Soll,
                std::to_string(100000000000 + std::abs(balance)).substr(1).insert(9, ","));
        books.Insert(1, TableDebi, record);
    }
    ASSERT_EQ(1, VARK_Status());
    sent.Install();
    ReportParams params = Debitoren();
    ASSERT_NE(nullptr, VARK_OPListe(1, nullptr, &params));
    std::map<std::string, int64_t> listed;
    for (const std::string &item : sent.Records(2)) {
        listed[Field(item, "Konto")] += Pfennig(Field(item, "Betrag"));
    }
    EXPECT_EQ(balances, listed);

    std::map<std::string, int64_t> read;
    ASSERT_EQ(1, VARK_InitHoleOP(1, "", KontoartDebitor, 0));
    for (int32_t code = 1; code == 1;) {
        char konto[8] = {};
        char amount[32] = {};
        code = VARK_HoleOP(konto, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, 1, amount,
                           nullptr, nullptr);
        ASSERT_GT(code, 0);
        const std::string text = amount; // sign, then the fixed text
        const int64_t value = std::stoll(text.substr(1, 9) + text.substr(11));
        read[konto] += text[0] == '-' ? -value : value;
    }
    EXPECT_EQ(read, listed);
    for (const auto &[konto, balance] : balances) {
        char saldo[32] = {};
        ASSERT_EQ(1, VARK_HoleSaldo(1, konto.c_str(), KontoartDebitor, 0, 1, saldo));
        const std::string text = saldo;
        const int64_t value = std::stoll(text.substr(1, 9) + text.substr(11));
        EXPECT_EQ(balance, text[0] == '-' ? -value : value) << konto;
    }
    VARK_SchliesseDB();
}

INSTANTIATE_TEST_SUITE_P(Seeds, OpProperties, testing::Range(1u, 6u));

TEST_F(OpListe, PageGroupsItemsWithoutADaySumsCurrenciesApartAndTellsDaysOverdue)
{
    for (const char *name : {"or_oplst.rs", "or_page.lua"}) {
        std::filesystem::copy_file(std::string(TEMPLATES) + "/" + name, std::string(ReportPath) + name);
    }
    const auto insert = [&](uint32_t n, const std::string &skonto, const std::string &termin,
                            const std::string &waehrung) {
        OpenItemRecord item = MakeOpenItem(n, "10000", skonto, "000000010,00");
        SetText(item.Datum1, "");
        SetText(item.Termin, termin);
        SetText(item.Betrag2, "000000000,00");
        SetText(item.Waehrung, waehrung);
        SetText(item.Waehrungsbetrag, "000000003,00");
        books.Insert(1, TableOpdebi, item);
    };
    insert(1, "", "180614", ""); // a day before today
    insert(2, "", "180615", "USD");
    insert(3, "180301", "180301", "");
    VarkWindow view = VARK_OPListe(1, nullptr, &params);
    ASSERT_NE(nullptr, view);
    const std::string path = books.Directory() + "/op.txt";
    const auto exportView = reinterpret_cast<decltype(&RSExportView)>(
        FindEntry(reportEngine.ReportEngineLibrary, "RSExportView"));
    ASSERT_EQ(1, exportView(view, path.c_str()));
    std::ifstream file(path);
    Lines lines;
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        std::string tidy;
        for (std::string word; words >> word;) {
            tidy += (tidy.empty() ? "" : " ") + word;
        }
        if (!tidy.empty()) lines.push_back(tidy);
    }
    ASSERT_GT(lines.size(), 5u);
    EXPECT_EQ(
        (Lines{"ohne Skontofrist", "10000 14.06.1998 1 sonstige 10,00 DEM",
               "10000 15.06.1998 sonstige 3,00 USD", "Summe ohne Skontofrist 10,00 0,00 DEM", "3,00 0,00 USD",
               "Skonto bis 01.03.1998", "10000 01.03.1998 106 01.03.1998 sonstige 10,00 DEM",
               "Gesamtsumme, 3 Posten 20,00 0,00 DEM", "3,00 0,00 USD"}),
        Lines(lines.begin() + 5, lines.end()));
}
