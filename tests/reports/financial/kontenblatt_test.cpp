// Kontenblatt and Kostenstellenauswertung: what may go wrong, and random books whose sheets are reckoned a
// second time from nothing but their postings.
#include "include/vark40.h"
#include "src/frame/lifecycle.h"
#include "src/reports/frame/report_params.h"
#include "tests/reports/frame/played_dialog.h"
#include "tests/support/books.h"
#include "tests/support/recording_engine.h"
#include "tests/support/report_faults.h"

#include <array>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <string>
#include <vector>

using namespace vark;
using namespace vark::test;

namespace {

constexpr char failure[] = "Das Kontenblatt konnte nicht erstellt werden!";
constexpr char kostenFailure[] = "Die Kostenstellenauswertung konnte nicht erstellt werden!";

int64_t PfennigOf(const std::string &amount)
{
    const int64_t value = std::stoll(amount.substr(0, 9) + amount.substr(10));
    return amount[9] == '-' ? -value : value;
}

std::string AmountOf(int64_t pfennig)
{
    std::string digits = std::to_string(pfennig);
    digits.insert(0, 11 - digits.size(), '0');
    return digits.insert(9, ",");
}

std::string FieldOf(const std::string &record, const std::string &name)
{
    const std::string text = " | " + record + " | ";
    const size_t at = text.find(" | " + name + "=") + name.size() + 4;
    return text.substr(at, text.find(" | ", at) - at);
}

// ---- Random books ----

constexpr int accountCount = 8;

std::string NumberOf(int account) { return std::to_string(1000 + account * 100); }

struct Moved {
    int Month;
    int Day;
    int Account;
    int64_t Amount; // Soll less Haben
};

struct RandomBooks {
    Books Installation;
    RecordingEngine Sent;
    std::mt19937 Random;
    std::array<std::array<int64_t, 13>, accountCount>
        Balance{}; // Soll less Haben; [0] the Vortrag, then months
    std::vector<Moved> Moves;

    explicit RandomBooks(unsigned seed) : Random(seed)
    {
        Installation.AddMandant(1);
        std::vector<SakoRecord> accounts;
        for (int i = 0; i < accountCount; ++i) {
            SakoRecord &record = accounts.emplace_back(MakeSako(NumberOf(i)));
            const int64_t vortrag = Amount();
            SetText(record.Umsaetze.Vortrag.Soll, AmountOf(vortrag));
            Balance[static_cast<size_t>(i)][0] = vortrag;
        }
        for (int number = 1; number <= 300; ++number) {
            AddPosting(number, accounts);
        }
        for (const SakoRecord &record : accounts) {
            Installation.Insert(1, TableSako, record);
        }
        EXPECT_EQ(1, VARK_Status());
        Sent.Install();
    }
    ~RandomBooks() { VARK_SchliesseDB(); }
    RandomBooks(const RandomBooks &) = delete;
    RandomBooks &operator=(const RandomBooks &) = delete;

    int Pick(int below) { return static_cast<int>(Random() % static_cast<unsigned>(below)); }
    int64_t Amount() { return 1 + Pick(1'000'000); }

    static void Move(SakoRecord &record, int month, bool isSoll, int64_t amount)
    {
        SollHaben &pair = record.Umsaetze.Monat[month - 1];
        AmountText &side = isSoll ? pair.Soll : pair.Haben;
        SetText(side, AmountOf(PfennigOf(TextOf(side)) + amount));
        ++record.Umsaetze.Buchungszahl[month - 1];
    }
    // Some with tax: the account that carries it has the net amount.
    void AddPosting(int number, std::vector<SakoRecord> &accounts)
    {
        const int month = 1 + Pick(12);
        const int day = 1 + Pick(28);
        const int soll = Pick(accountCount);
        const int haben = Pick(accountCount);
        const int64_t gross = Amount();
        char date[8];
        std::snprintf(date, sizeof date, "%02d%02d18", day, month);
        BubeRecord record = MakeBube(number, date, NumberOf(soll), NumberOf(haben), AmountOf(gross));
        int64_t net = gross;
        if (Pick(3) == 0) {
            const int tax = Pick(accountCount);
            net = gross - gross / 5;
            SetText(record.Steuerkonto, Justified(NumberOf(tax)));
            SetText(record.Steuer, AmountOf(gross - net));
            record.Steuerflags = BubeSteuerPlus; // the tax lies on Haben
            SetText(record.Haben, AmountOf(net));
            Moves.push_back({month, day, tax, -(gross - net)});
            Move(accounts[static_cast<size_t>(tax)], month, false, gross - net);
            Balance[static_cast<size_t>(tax)][static_cast<size_t>(month)] -= gross - net;
        }
        Moves.push_back({month, day, soll, gross});
        Moves.push_back({month, day, haben, -net});
        Move(accounts[static_cast<size_t>(soll)], month, true, gross);
        Move(accounts[static_cast<size_t>(haben)], month, false, net);
        Balance[static_cast<size_t>(soll)][static_cast<size_t>(month)] += gross;
        Balance[static_cast<size_t>(haben)][static_cast<size_t>(month)] -= net;
        Installation.Insert(1, TableBube, record);
    }
    // Soll less Haben of an account at the end of a day, from its postings alone.
    [[nodiscard]] int64_t BalanceAt(int account, int month, int day) const
    {
        int64_t balance = Balance[static_cast<size_t>(account)][0];
        for (const Moved &moved : Moves) {
            const bool isLater = moved.Month > month || (moved.Month == month && moved.Day > day);
            if (moved.Account == account && !isLater) balance += moved.Amount;
        }
        return balance;
    }

    // The records of a sheet, kinds 1 and 2.
    Lines Sheet(int code, int account)
    {
        ReportParams params{};
        params.ParamFlags = ParamZeitraum | ParamJahr;
        params.Zeitraum = code;
        params.JahrIndex = 18;
        return SheetOf(params, account);
    }
    Lines SheetOf(ReportParams params, int account)
    {
        params.ParamFlags |= ParamKontoArt | ParamKonten | ParamEinzeln;
        params.KontoArt = KontoartSachkonto;
        SetText(params.SachkontoVon, NumberOf(account));
        Sent.Calls.clear();
        EXPECT_NE(nullptr, VARK_Kontenblatt(1, 0, nullptr, &params));
        Lines records = Sent.Records(1);
        EXPECT_EQ(1u, records.size());
        for (const std::string &line : Sent.Records(2)) {
            records.push_back(line);
        }
        return records;
    }
};

int64_t OpeningOf(const Lines &sheet)
{
    return PfennigOf(FieldOf(sheet[0], "VortragSoll")) - PfennigOf(FieldOf(sheet[0], "VortragHaben"));
}

int64_t MovedOn(const Lines &sheet)
{
    int64_t sum = 0;
    for (size_t i = 1; i < sheet.size(); ++i) {
        sum += PfennigOf(FieldOf(sheet[i], "Soll")) - PfennigOf(FieldOf(sheet[i], "Haben"));
    }
    return sum;
}

// ---- Fixtures ----

struct Sheets : testing::Test {
    Books books;
    RecordingEngine sent;
    ReportParams params{};

    explicit Sheets(const std::string &script = "") : books(script) {}
    void SetUp() override
    {
        books.AddMandant(1);
        books.Insert(1, TableSako, MakeSako("1200"));
        KoreRecord kore = MakeKore("100");
        books.Insert(1, TableKore, kore);
        EXPECT_EQ(1, VARK_Status());
        sent.Install();
        params.ParamFlags = ParamZeitraum | ParamJahr;
        params.Zeitraum = 3;
        params.JahrIndex = 18;
    }
    void TearDown() override { VARK_SchliesseDB(); }
    void PutPostings()
    {
        BubeRecord part = MakeBube(1, "100318", "1200", "1200", "000000010,00");
        part.Status = BubeGefaltet | BubeSplitSoll;
        books.Insert(1, TableBube, part);
        books.Insert(1, TableBube, MakeBube(2, "120318", "8400", "1200", "000000010,00"));
        books.Insert(1, TableSteke, MakeSteke(2, 0, "010118", "16,00", "1776", "1576"));
    }
    static VarkWindow Call(ReportParams *block) { return VARK_Kontenblatt(1, 0, nullptr, block); }
};

} // namespace

TEST(SheetsOfRandomBooks, EndWithTheBalanceThatHoleSaldoTells)
{
    constexpr unsigned seed = 19980630;
    RandomBooks books(seed);
    for (int account = 0; account < accountCount; ++account) {
        const Lines sheet = books.Sheet(periodWholeYear, account);
        char saldo[32] = "";
        ASSERT_EQ(1, VARK_HoleSaldo(1, NumberOf(account).c_str(), KontoartSachkonto, 0, 1, saldo));
        const int64_t told =
            PfennigOf(std::string(saldo).substr(1)) * (saldo[0] == '-' ? -1 : 1); // "+000001234,50"
        EXPECT_EQ(told, OpeningOf(sheet) + MovedOn(sheet)) << "seed " << seed << " account " << account;
    }
}

namespace {

struct SheetsOfRandomPeriods : testing::TestWithParam<unsigned> {};

} // namespace

TEST_P(SheetsOfRandomPeriods, GoFromTheirFirstDayToTheirLast)
{
    RandomBooks books(GetParam());
    for (int account = 0; account < accountCount; ++account) {
        const int fromMonth = 1 + books.Pick(12);
        const int fromDay = 1 + books.Pick(28);
        const bool toTheEnd = books.Pick(2) == 0;
        const int toMonth = toTheEnd ? 12 : fromMonth + books.Pick(13 - fromMonth);
        const int toDay = toTheEnd ? 31 : fromDay + books.Pick(29 - fromDay);
        ReportParams params{};
        params.ParamFlags = ParamZeitraum | ParamDaten;
        char date[8];
        std::snprintf(date, sizeof date, "%02d%02d98", fromDay, fromMonth);
        SetText(params.VonDatum, date);
        std::snprintf(date, sizeof date, "%02d%02d98", toDay, toMonth);
        SetText(params.BisDatum, date);
        const Lines sheet = books.SheetOf(params, account);
        const std::string which =
            "account " + std::to_string(account) + " from " + params.VonDatum + " to " + date;
        EXPECT_EQ(books.BalanceAt(account, fromMonth, fromDay - 1), OpeningOf(sheet)) << which;
        const int64_t end = OpeningOf(sheet) + MovedOn(sheet);
        EXPECT_EQ(books.BalanceAt(account, toMonth, toDay), end) << which;
        if (!toTheEnd) continue;
        char saldo[32] = "";
        ASSERT_EQ(1, VARK_HoleSaldo(1, NumberOf(account).c_str(), KontoartSachkonto, 0, 1, saldo));
        EXPECT_EQ(PfennigOf(std::string(saldo).substr(1)) * (saldo[0] == '-' ? -1 : 1), end) << which;
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, SheetsOfRandomPeriods, testing::Range(1u, 6u));

TEST(SheetsOfRandomBooks, CarryEachMonthIntoTheNext)
{
    constexpr unsigned seed = 20010911;
    RandomBooks books(seed);
    for (int account = 0; account < accountCount; ++account) {
        int64_t balance = 0;
        size_t lines = 0;
        for (int month = 1; month <= 12; ++month) {
            const Lines sheet = books.Sheet(month, account);
            const auto &reckoned = books.Balance[static_cast<size_t>(account)];
            if (month == 1) balance = reckoned[0];
            EXPECT_EQ(balance, OpeningOf(sheet))
                << "seed " << seed << " account " << account << " month " << month;
            EXPECT_EQ(reckoned[static_cast<size_t>(month)], MovedOn(sheet))
                << "seed " << seed << " account " << account << " month " << month;
            balance = OpeningOf(sheet) + MovedOn(sheet);
            lines += sheet.size() - 1;
        }
        const Lines year = books.Sheet(periodWholeYear, account);
        EXPECT_EQ(balance, OpeningOf(year) + MovedOn(year)) << "the year is its twelve months";
        EXPECT_EQ(lines, year.size() - 1);
    }
}

TEST_F(Sheets, AreWholeOrNotThereWhateverFails)
{
    PutPostings();
    ExpectWholeOrNotThere(
        {.Installation = &books, .Sent = &sent, .Params = params, .Call = Call, .Failure = failure});
}

TEST_F(Sheets, OfKostenstellenAreWholeOrNotThereWhateverFails)
{
    KobuRecord line{};
    line.FinaleBuchung = 1;
    SetText(line.Datum, "180310");
    SetText(line.Kostenobjekt1, Justified("100"));
    SetText(line.Betrag, "000000010,00");
    books.Insert(1, TableKobu, line);
    books.Insert(1, TableBube, MakeBube(1, "100318", "4100", "1200", "000000010,00"));
    ExpectWholeOrNotThere({.Installation = &books,
                           .Sent = &sent,
                           .Params = params,
                           .Call = [](ReportParams *block) { return VARK_Kontenblatt(1, 1, nullptr, block); },
                           .Failure = kostenFailure});
}

TEST_F(Sheets, RefusalOfTheCountingReportEndsThem)
{
    for (const int refused : {0, 1, 2, 3}) {
        sent = {};
        sent.Install();
        sent.CountsUntilRefusal = refused;
        books.TakeBoxes();
        EXPECT_EQ(nullptr, Call(&params)) << refused;
        EXPECT_EQ(Lines{failure}, books.TakeBoxes());
        const size_t calls = sent.Calls.size();
        ASSERT_GE(calls, 2u);
        EXPECT_EQ((Lines{"endcount 9", "close 7"}), (Lines{sent.Calls[calls - 2], sent.Calls[calls - 1]}));
    }
    sent = {};
    sent.Install();
    sent.CountingResult = 0;
    EXPECT_EQ(nullptr, Call(&params));
    EXPECT_EQ((Lines{"count 7", "close 7"}), (Lines{sent.Calls.end()[-2], sent.Calls.end()[-1]}));
}

TEST_F(Sheets, SumWithoutRoomIsNeverPrinted)
{
    SakoRecord full = MakeSako("1200");
    SetText(full.Umsaetze.Vortrag.Soll, "999999999,99");
    SetText(full.Umsaetze.Monat[0].Soll, "000000000,01");
    books.Replace(1, TableSako, full);
    EXPECT_EQ(nullptr, Call(&params));
    EXPECT_EQ(Lines{failure}, books.TakeBoxes());
}

TEST_F(Sheets, MissingTableEndsTheCallBeforeAReport)
{
    MandantOptions options;
    options.Without = {TableSteke};
    books.AddMandant(2, options);
    VARK_SchliesseDB();
    params.ViewResult = 5;
    EXPECT_EQ(nullptr, VARK_Kontenblatt(2, 0, nullptr, &params));
    EXPECT_TRUE(sent.Calls.empty());
    EXPECT_EQ(1u, books.TakeBoxes().size())
        << "the record store has told its status, and nothing else is told";
    EXPECT_EQ(5u, uint32_t{params.ViewResult});
}

TEST(SheetsDialog, TellsOfASingleAccountThatIsNotThere)
{
    Books books("dialog 114\ncheck 20056\nfocus 20054\ntext 20054 4711\npress 1\n"
                "box ok Es existiert kein Konto mit dieser Kontonummer!\nexpect focus 20054\n"
                "text 20054 1200\npress 1\n"
                "dialog 132\ncheck 20056\nfocus 20054\ntext 20054 4711\npress 1\nbox ok\nexpect focus 20054\n"
                "text 20054 100\npress 1\n");
    books.AddMandant(1);
    books.Insert(1, TableSako, MakeSako("1200"));
    books.Insert(1, TableKore, MakeKore("100"));
    EXPECT_EQ(1, VARK_Status());
    RecordingEngine sent;
    sent.Install();
    ReportParams params{};
    EXPECT_NE(nullptr, VARK_Kontenblatt(1, 0, nullptr, &params));
    EXPECT_NE(nullptr, VARK_Kontenblatt(1, 1, nullptr, &params));
    EXPECT_EQ(KontoartKostenstelle, params.KontoArt);
    EXPECT_STREQ("100", params.KostenstelleVon);
    for (const std::string &line : books.TakeLog()) {
        EXPECT_FALSE(line.starts_with("script:")) << line;
    }
    VARK_SchliesseDB();
}

TEST(SheetsDialog, RefusedKostenstelleLeavesTheOnlyKindChosen)
{
    Books books("dialog 132\ncheck 20056\nfocus 20054\ntext 20054 4711\npress 1\nbox ok\n"
                "uncheck 20056\ntext 20054 100\ntext 20055 100\npress 1\n");
    books.AddMandant(1);
    books.Insert(1, TableKore, MakeKore("100"));
    books.Insert(1, TableKore, MakeKore("200"));
    EXPECT_EQ(1, VARK_Status());
    RecordingEngine sent;
    sent.Install();
    ReportParams params{};
    EXPECT_NE(nullptr, VARK_Kontenblatt(1, 1, nullptr, &params));
    EXPECT_EQ(1u, sent.Records(1).size()) << "limits typed after a refusal count";
    VARK_SchliesseDB();
}
