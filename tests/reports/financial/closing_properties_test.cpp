// Bilanz and GuV over random books, reckoned a second time from nothing but the postings: in whole Pfennig,
// day by day, without month slots, texts or trees.
#include "tests/reports/financial/closing_books.h"

#include <algorithm>
#include <array>
#include <map>
#include <random>

using namespace vark;
using namespace vark::test;
using namespace std::string_literals;

namespace {

int64_t Pfennig(const std::string &amount)
{
    const int64_t value = std::stoll(amount.substr(0, 9) + amount.substr(10));
    return amount[9] == '-' ? -value : value;
}

std::string Amount(int64_t pfennig)
{
    std::string digits = std::to_string(pfennig < 0 ? -pfennig : pfennig);
    digits.insert(0, 11 - digits.size(), '0');
    return digits.insert(9, pfennig < 0 ? "-" : ",");
}

// The value of a field in a recorded record.
std::string Field(const std::string &record, const std::string &name)
{
    const size_t at = (" | " + record).find(" | " + name + "=");
    EXPECT_NE(std::string::npos, at) << name << " in " << record;
    const size_t from = at + name.size() + 1;
    return record.substr(from, record.find(" | ", from) - from);
}

struct Posting {
    int Month;
    int Day;
    int Soll; // accounts by index
    int Haben;
    int64_t Amount;
};

using GroupSums = std::map<std::string, int64_t>; // in Pfennig, by the group's title

// What a report down to a level shows of the sums of a tree.
GroupSums Shown(const GroupSums &sums, int level)
{
    GroupSums shown;
    for (const auto &[title, sum] : sums) {
        const bool isDeeper = !title.empty() && title["Ebene "s.size()] - '0' >= level;
        if (!isDeeper) shown[title] = sum;
    }
    return shown;
}

// The sums in a printed report: each stands in the line of its title or in one of its own, and once.
GroupSums PrintedSums(const Lines &lines)
{
    GroupSums sums;
    for (std::string line : lines) {
        if (line.starts_with("Summe Ebene")) line = line.substr("Summe "s.size());
        const bool isGroup = line.starts_with("Ebene ");
        if (!isGroup && !line.starts_with("Summe ") && !line.starts_with("Jahres")) continue;
        const size_t last = line.find_last_of(' ');
        if (line.find(',', last) == std::string::npos) continue; // a heading
        std::string digits = line.substr(last + 1);
        std::erase_if(digits, [](char c) { return c == '.' || c == ','; });
        std::string title = line.substr(0, line.find(' ', isGroup ? "Ebene "s.size() : 0));
        if (line.starts_with("Summe ")) title = line.substr(0, line.find(' ', "Summe "s.size()));
        EXPECT_TRUE(sums.emplace(title, std::stoll(digits)).second) << "twice: " << line;
    }
    return sums;
}

constexpr int bilanzAccounts = 12;
constexpr int allAccounts = 20; // those of the GuV behind them

struct RandomBooks {
    Books Installation;
    RecordingEngine Sent;
    std::mt19937 Random;
    std::array<int64_t, allAccounts> Opening{}; // Soll less Haben
    std::vector<Posting> Postings;

    std::string Year; // "1998"
    Lines Trees[3];   // bilaktau, bilpasau, guvauf
    int Groups = 0;   // so far: their titles are "Ebene DEPTH.NUMBER"

    explicit RandomBooks(unsigned seed, const std::string &year = "1998") : Random(seed), Year(year)
    {
        Installation.AddMandant(1);
    }

    int Below(int limit) { return static_cast<int>(Random() % static_cast<unsigned>(limit)); }
    static std::string Number(int account) { return std::to_string(1000 + account * 10); }
    static bool IsAktiv(int account) { return account % 2 == 0; }

    // Balanced openings, and postings between any two accounts.
    void Post()
    {
        for (int account = 1; account < bilanzAccounts; ++account) {
            const int64_t amount = Below(2000000) - 1000000;
            Opening[static_cast<size_t>(account)] = amount;
            Opening[0] -= amount;
        }
        for (int n = 1; n <= 150; ++n) {
            Posting posting{1 + Below(12), 1 + Below(28), Below(allAccounts), Below(allAccounts),
                            1 + Below(500000)};
            Postings.push_back(posting);
            const std::string date = Two(posting.Day) + Two(posting.Month) + Two(std::stoi(Year) - 1980);
            Installation.Insert(
                1, TableBube,
                MakeBube(n, date, Number(posting.Soll), Number(posting.Haben), Amount(posting.Amount)), Year);
        }
        for (int account = 0; account < allAccounts; ++account) {
            InsertAccount(account);
        }
    }
    static std::string Two(int number) { return std::to_string(100 + number).substr(1); }
    void InsertAccount(int account)
    {
        const bool isGuv = account >= bilanzAccounts;
        SakoRecord record = MakeSako(Number(account), isGuv              ? ZuordnungGuv
                                                      : IsAktiv(account) ? ZuordnungAktiva
                                                                         : ZuordnungPassiva);
        const int64_t opening = Opening[static_cast<size_t>(account)];
        PutPair(record.Umsaetze.Vortrag, Amount(opening > 0 ? opening : 0),
                Amount(opening < 0 ? -opening : 0));
        for (int month = 1; month <= 12; ++month) {
            int64_t soll = 0;
            int64_t haben = 0;
            for (const Posting &posting : Postings) {
                if (posting.Month != month) continue;
                if (posting.Soll == account) soll += posting.Amount;
                if (posting.Haben == account) haben += posting.Amount;
            }
            PutPair(record.Umsaetze.Monat[month - 1], Amount(soll), Amount(haben));
        }
        Installation.Insert(1, TableSako, record, Year);
    }
    // All accounts of the Bilanz among random groups, half of them with a Gegenposten on the other side.
    void Grow()
    {
        for (int account = 0; account < bilanzAccounts; ++account) {
            const size_t own = IsAktiv(account) ? 0 : 1;
            Plant(Trees[own], Number(account));
            if (Below(2) == 0) Plant(Trees[1 - own], Number(account) + " gegen");
        }
        for (int account = bilanzAccounts; account < allAccounts; ++account) {
            Plant(Trees[2], Number(account));
        }
        InsertTrees(Year);
    }
    void InsertTrees(const std::string &year)
    {
        constexpr TableId tables[] = {TableBilaktau, TableBilpasau, TableGuvauf};
        for (size_t i = 0; i < 3; ++i) {
            InsertTree(Installation, 1, tables[i], Trees[i], year);
        }
    }
    void Plant(Lines &lines, const std::string &leaf)
    {
        const int depth = Below(6);
        if (depth == 5) {
            lines.push_back("ohne " + leaf);
            return;
        }
        // Groups as deep as the leaf wants to hang, each below the one before.
        for (int d = 0; d < depth; ++d) {
            ++Groups;
            lines.push_back(std::string(static_cast<size_t>(d) * 2, ' ') + "Ebene " + std::to_string(d) +
                            "." + std::to_string(Groups) + (Groups % 3 == 0 ? " +" : ""));
        }
        lines.push_back(std::string(static_cast<size_t>(depth) * 2, ' ') + leaf);
    }
    // The sums of all groups of a tree, and of the whole under "", by what its leaves have.
    template <typename LeafAmount> [[nodiscard]] GroupSums SumsOfTree(size_t tree, LeafAmount amountOf) const
    {
        GroupSums sums = {{"", 0}};
        std::vector<std::string> path;
        for (const std::string &line : Trees[tree]) {
            const size_t blanks = line.find_first_not_of(' ');
            const std::string text = line.substr(blanks);
            if (!text.starts_with("ohne ")) path.resize(blanks / 2);
            if (text.starts_with("Ebene ")) {
                const std::string title = text.substr(0, text.find(" +"));
                path.push_back(title);
                sums[title];
                continue;
            }
            const bool isOutside = text.starts_with("ohne ");
            const bool isGegen = text.ends_with(" gegen");
            const std::string digits = text.substr(isOutside ? 5 : 0, 4);
            const int64_t amount = amountOf((std::stoi(digits) - 1000) / 10, isGegen);
            sums[""] += amount;
            if (isOutside) continue;
            for (const std::string &group : path) {
                sums[group] += amount;
            }
        }
        return sums;
    }
    // A negative account goes over to its Gegenposten, where there is one.
    [[nodiscard]] GroupSums SumsOfSide(size_t side, int month, int day) const
    {
        return SumsOfTree(side, [&](int account, bool isGegen) -> int64_t {
            const int64_t balance = Balance(account, month, day);
            const int64_t own = IsAktiv(account) ? balance : -balance;
            if (isGegen) return own < 0 ? -own : 0;
            const size_t other = IsAktiv(account) ? 1 : 0;
            const bool hasGegen =
                std::any_of(Trees[other].begin(), Trees[other].end(),
                            [&](const auto &line) { return line.ends_with(Number(account) + " gegen"); });
            return own < 0 && hasGegen ? 0 : own;
        });
    }
    [[nodiscard]] GroupSums SumsOfGuv(int month, int day) const
    {
        return SumsOfTree(2, [&](int account, bool) { return -Balance(account, month, day); });
    }
    // Soll less Haben of an account from the beginning of the year to a day.
    [[nodiscard]] int64_t Balance(int account, int month, int day) const
    {
        int64_t balance = Opening[static_cast<size_t>(account)];
        for (const Posting &posting : Postings) {
            if (posting.Month > month || (posting.Month == month && posting.Day > day)) continue;
            if (posting.Soll == account) balance += posting.Amount;
            if (posting.Haben == account) balance -= posting.Amount;
        }
        return balance;
    }
    static ReportParams ToDay(int month, int day)
    {
        ReportParams params{};
        params.ParamFlags = ParamZeitraum | ParamDaten;
        SetText(params.VonDatum, "010198");
        SetText(params.BisDatum, Two(day) + Two(month) + "98");
        return params;
    }
};

struct SideSums {
    int64_t Aktiva = 0;
    int64_t Passiva = 0;
    std::map<std::string, int64_t> Printed; // by account, with the sign of Soll less Haben
};

SideSums SumSides(const Lines &calls)
{
    SideSums sums;
    bool isAktiva = false;
    for (const std::string &call : calls) {
        if (call.starts_with("8 | ")) isAktiva = call.ends_with("=1");
        if (call[0] < '4' || call[0] > '7') continue;
        const std::string record = call.substr(4);
        const int64_t amount = Pfennig(Field(record, "Betrag"));
        (isAktiva ? sums.Aktiva : sums.Passiva) += amount;
        EXPECT_TRUE(sums.Printed.emplace(Field(record, "Konto"), isAktiva ? amount : -amount).second)
            << "printed twice: " << record;
    }
    return sums;
}

struct GuvSums {
    int64_t Soll = 0;
    int64_t Haben = 0;
};

GuvSums SumGuv(const Lines &calls)
{
    GuvSums sums;
    for (const std::string &call : calls) {
        if (call[0] < '4' || call[0] > '8') continue;
        sums.Soll += Pfennig(Field(call.substr(4), "Soll"));
        sums.Haben += Pfennig(Field(call.substr(4), "Haben"));
    }
    return sums;
}

struct ClosingProperties : testing::TestWithParam<unsigned> {};

} // namespace

TEST_P(ClosingProperties, AktivaLessPassivaIsTheResultOfTheGuvOnAnyDay)
{
    RandomBooks books(GetParam());
    books.Post();
    books.Grow();
    ASSERT_EQ(1, VARK_Status());
    books.Sent.Install();
    for (int round = 0; round < 4; ++round) {
        const int month = 1 + books.Below(12);
        const int day = 1 + books.Below(28);
        ReportParams params = RandomBooks::ToDay(month, day);
        books.Sent.Calls.clear();
        ASSERT_NE(nullptr, VARK_Bilanz(1, 0, nullptr, &params));
        const SideSums sides = SumSides(books.Sent.Calls);
        int64_t result = 0; // Haben less Soll of the accounts of the GuV
        for (int account = 0; account < allAccounts; ++account) {
            const int64_t balance = books.Balance(account, month, day);
            if (account >= bilanzAccounts) {
                result -= balance;
                continue;
            }
            const auto printed = sides.Printed.find(Justified(RandomBooks::Number(account)));
            ASSERT_NE(sides.Printed.end(), printed) << RandomBooks::Number(account) << " is missing";
            EXPECT_EQ(balance, printed->second)
                << RandomBooks::Number(account) << " on " << day << "." << month;
        }
        EXPECT_EQ(result, sides.Aktiva - sides.Passiva);

        params = RandomBooks::ToDay(month, day);
        books.Sent.Calls.clear();
        ASSERT_NE(nullptr, VARK_GUV(1, nullptr, &params));
        const GuvSums guv = SumGuv(books.Sent.Calls);
        EXPECT_EQ(result, guv.Haben - guv.Soll) << "on " << day << "." << month;
    }
    VARK_SchliesseDB();
}

TEST_P(ClosingProperties, QuartersOfTheGuvAddUpToTheYear)
{
    RandomBooks books(GetParam() + 1000);
    books.Post();
    books.Grow();
    ASSERT_EQ(1, VARK_Status());
    books.Sent.Install();
    const auto sumsOf = [&](int32_t zeitraum) {
        ReportParams params = PeriodBlock(zeitraum, 18);
        books.Sent.Calls.clear();
        EXPECT_NE(nullptr, VARK_GUV(1, nullptr, &params));
        return SumGuv(books.Sent.Calls);
    };
    GuvSums quarters;
    GuvSums months;
    for (int32_t quarter = 13; quarter <= 16; ++quarter) {
        const GuvSums sums = sumsOf(quarter);
        quarters.Soll += sums.Soll;
        quarters.Haben += sums.Haben;
    }
    for (const Posting &posting : books.Postings) {
        if (posting.Soll >= bilanzAccounts) months.Soll += posting.Amount;
        if (posting.Haben >= bilanzAccounts) months.Haben += posting.Amount;
    }
    const GuvSums year = sumsOf(17);
    EXPECT_EQ(months.Soll, year.Soll);
    EXPECT_EQ(months.Haben, year.Haben);
    EXPECT_EQ(year.Soll, quarters.Soll);
    EXPECT_EQ(year.Haben, quarters.Haben);
    VARK_SchliesseDB();
}

TEST_P(ClosingProperties, OpeningIsTheClosingOfTheYearBeforeWhereItIsCarriedForward)
{
    RandomBooks books(GetParam() + 2000, "1997");
    books.Post();
    books.Grow();
    books.InsertTrees("1998");
    for (int account = 0; account < bilanzAccounts; ++account) {
        SakoRecord carried = MakeSako(RandomBooks::Number(account),
                                      RandomBooks::IsAktiv(account) ? ZuordnungAktiva : ZuordnungPassiva);
        const int64_t balance = books.Balance(account, 12, 31);
        PutPair(carried.Umsaetze.Vortrag, Amount(std::max<int64_t>(balance, 0)),
                Amount(std::max<int64_t>(-balance, 0)));
        PutPair(carried.Umsaetze.Monat[0], "000000123,45", "000000000,00"); // is no part of it
        books.Installation.Insert(1, TableSako, carried);
    }
    ASSERT_EQ(1, VARK_Status());
    books.Sent.Install();
    ReportParams closing = PeriodBlock(17, 17);
    ASSERT_NE(nullptr, VARK_Bilanz(1, 0, nullptr, &closing));
    const SideSums closed = SumSides(books.Sent.Calls);
    books.Sent.Calls.clear();
    ReportParams opening = PeriodBlock(17, 18);
    ASSERT_NE(nullptr, VARK_Bilanz(1, 1, nullptr, &opening));
    const SideSums opened = SumSides(books.Sent.Calls);
    EXPECT_EQ(closed.Printed, opened.Printed);
    EXPECT_EQ(closed.Aktiva, opened.Aktiva);
    EXPECT_EQ(closed.Passiva, opened.Passiva);
    VARK_SchliesseDB();
}

TEST_P(ClosingProperties, LevelsShowTheSameTotals)
{
    RandomBooks books(GetParam() + 3000);
    books.Post();
    books.Grow();
    const int month = 1 + books.Below(12);
    const ReportParams toDay = RandomBooks::ToDay(month, 28);
    ASSERT_EQ(1, VARK_Status());
    CopyClosingTemplates();
    const GroupSums aktiva = books.SumsOfSide(0, month, 28);
    const GroupSums passiva = books.SumsOfSide(1, month, 28);
    const GroupSums guv = books.SumsOfGuv(month, 28);
    for (int level = 1; level <= 3; ++level) {
        for (const bool withAccounts : {true, false}) {
            const bool isBelow = books.Below(2) == 0;
            const std::string choice = "level " + std::to_string(level) +
                                       (withAccounts ? " with" : " without") + " accounts" +
                                       (isBelow ? ", first below second" : "");
            ReportParams params = toDay;
            ChooseLevel(level, withAccounts, isBelow);
            const Lines bilanz = ExportLines(books.Installation, VARK_Bilanz(1, 0, nullptr, &params), "txt");
            GroupSums both = Shown(aktiva, level);
            both.merge(Shown(passiva, level));
            const int64_t result = aktiva.at("") - passiva.at("");
            both.erase("");
            both["Summe Aktiva"] = aktiva.at("");
            both["Summe Passiva"] = aktiva.at(""); // with the result
            if (result != 0) both[result > 0 ? "Jahresüberschuß" : "Jahresfehlbetrag"] = result;
            EXPECT_EQ(both, PrintedSums(bilanz)) << choice;

            params = toDay;
            ChooseLevel(level, withAccounts, isBelow);
            GroupSums expected = Shown(guv, level);
            expected.erase("");
            expected[guv.at("") >= 0 ? "Jahresüberschuß" : "Jahresfehlbetrag"] = guv.at("");
            EXPECT_EQ(expected,
                      PrintedSums(ExportLines(books.Installation, VARK_GUV(1, nullptr, &params), "txt")))
                << choice;
        }
    }
    VARK_SchliesseDB();
}

INSTANTIATE_TEST_SUITE_P(Seeds, ClosingProperties, testing::Range(1u, 9u));
