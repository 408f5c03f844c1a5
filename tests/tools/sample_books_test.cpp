#include "tests/tools/program.h"
#include "tools/common/calendar.h"
#include "tools/common/installation.h"
#include "tools/common/texts.h"

#include <cstring>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <tuple>

using namespace tests;
using namespace tools;
using namespace vark;
namespace fs = std::filesystem;

namespace {

struct SampleBooks : testing::Test {
    TemporaryDirectory Directory;
    fs::path Books = Directory.Path / "buch";
    fs::path Data = Books / "DB";

    void SetUp() override
    {
        const Result made = tests::Books({"beispiel", Books.string()});
        ASSERT_EQ(0, made.ExitCode) << made.Err;
    }
};

const std::vector<std::string> yearDirectories = {"1997", "1998", "19971", "19981", "19972", "19982"};

int FirstMonthOf(const std::string &directory)
{
    return directory.size() == 5 && directory[4] == '1' ? 7 : 1;
}

// All records of a table in the order of key 0.
std::vector<std::string> RecordsOf(const TableLayout &layout, const fs::path &directory)
{
    TableFile table(layout, directory, OpenMode::ReadOnly);
    std::vector<std::string> records;
    std::string record(layout.RecordLength, '\0');
    for (bool found = table.First(record.data(), 0); found; found = table.Next(record.data(), 0)) {
        records.push_back(record);
    }
    return records;
}

template <typename Record> std::vector<Record> Read(TableId id, const fs::path &directory)
{
    std::vector<Record> out;
    for (const std::string &bytes : RecordsOf(LayoutOf(id), directory)) {
        std::memcpy(&out.emplace_back(), bytes.data(), sizeof(Record));
    }
    return out;
}

std::set<std::string> NumbersOf(TableId id, const fs::path &directory)
{
    std::set<std::string> numbers;
    for (const std::string &record : RecordsOf(LayoutOf(id), directory)) {
        numbers.insert(record.substr(0, accountDigits));
    }
    return numbers;
}

int64_t Pfennig(const AmountText &text)
{
    int64_t value = 0;
    for (int i = 0; i < 12; ++i) {
        if (i != amountMark) value = value * 10 + text[i] - '0';
    }
    return text[amountMark] == '-' ? -value : value;
}

bool IsAmount(const char *text)
{
    for (int i = 0; i < 12; ++i) {
        const bool good =
            i == amountMark ? text[i] == ',' || text[i] == '-' : text[i] >= '0' && text[i] <= '9';
        if (!good) return false;
    }
    return text[12] == 0;
}

bool IsRate(const char *text)
{
    for (int i = 0; i < 5; ++i) {
        const bool good = i == rateMark ? text[i] == ',' : text[i] >= '0' && text[i] <= '9';
        if (!good) return false;
    }
    return text[5] == 0;
}

bool SameKeys(const std::vector<KeyLayout> &a, const std::vector<KeyLayout> &b)
{
    if (a.size() != b.size()) return false;
    for (size_t key = 0; key < a.size(); ++key) {
        if (a[key].Duplicates != b[key].Duplicates || a[key].Modifiable != b[key].Modifiable ||
            a[key].Segments.size() != b[key].Segments.size()) {
            return false;
        }
        for (size_t i = 0; i < a[key].Segments.size(); ++i) {
            const KeySegment &left = a[key].Segments[i];
            const KeySegment &right = b[key].Segments[i];
            if (left.Offset != right.Offset || left.Length != right.Length || left.Type != right.Type)
                return false;
        }
    }
    return true;
}

} // namespace

TEST_F(SampleBooks, TwoRunsGiveTheSameRecords)
{
    const fs::path again = Directory.Path / "nochmal";
    ASSERT_EQ(0, tests::Books({"beispiel", again.string()}).ExitCode);
    EXPECT_EQ(RecordsOf(LayoutOf(TableFista), Data), RecordsOf(LayoutOf(TableFista), again / "DB"));
    for (const std::string &year : yearDirectories) {
        for (const TableLayout &table : Tables()) {
            if (!IsYearTable(table)) continue;
            EXPECT_EQ(RecordsOf(table, Data / year), RecordsOf(table, again / "DB" / year))
                << year << table.Stem;
        }
    }
}

TEST_F(SampleBooks, EveryYearHasEveryTableWithItsKeys)
{
    for (const std::string &year : yearDirectories) {
        for (const TableLayout &layout : Tables()) {
            if (!IsYearTable(layout)) continue;
            TableFile table(layout, Data / year, OpenMode::ReadOnly);
            const TableDefinition definition = table.Definition();
            EXPECT_EQ(layout.RecordLength, definition.RecordLength) << year << layout.Stem;
            EXPECT_TRUE(SameKeys(layout.Keys, definition.Keys)) << year << layout.Stem;
        }
    }
    TableFile fista(LayoutOf(TableFista), Data, OpenMode::ReadOnly);
    EXPECT_TRUE(SameKeys(LayoutOf(TableFista).Keys, fista.Definition().Keys));
    EXPECT_EQ(3u, fista.Definition().Records);
}

TEST(TableLayouts, KeysStandWhereTheAccountingApplicationHasThem)
{
    const auto describe = [](const char *stem) {
        std::string text;
        for (const KeyLayout &key : FindLayout(stem)->Keys) {
            if (!text.empty()) text += " / ";
            for (const KeySegment &segment : key.Segments) {
                if (&segment != &key.Segments.front()) text += "+";
                const char *type = segment.Type == KeyType::Integer         ? "i"
                                   : segment.Type == KeyType::Unsigned      ? "u"
                                   : segment.Type == KeyType::Autoincrement ? "auto"
                                                                            : "";
                text += type +
                        ("(" + std::to_string(segment.Offset) + "," + std::to_string(segment.Length) + ")");
            }
            if (key.Duplicates) text += " dup";
            if (key.Modifiable) text += " mod";
        }
        return text;
    };
    for (const char *stem : {"sako", "kred", "debi", "kore"}) {
        EXPECT_EQ("(0,8) / (8,10) dup mod", describe(stem));
    }
    EXPECT_EQ(
        "(0,18) / (18,8)+(0,18) dup mod / (26,8)+(0,18) dup mod / (34,8)+(0,18) dup mod / (47,9) dup mod / "
        "i(168,4) / (179,8) dup mod / (172,7) dup mod",
        describe("bube"));
    EXPECT_EQ("u(0,2) dup / (17,8) dup mod / u(0,2)+u(2,2)", describe("steke"));
    EXPECT_EQ("i(0,2)", describe("fista"));
    for (const char *stem : {"guvauf", "bilaktau", "bilpasau"}) {
        EXPECT_EQ("i(0,4) dup mod / (16,48) dup mod", describe(stem));
    }
    EXPECT_EQ("i(0,4) dup mod / i(4,4) dup mod / i(8,4) dup mod / (12,7) dup mod / (19,8)+(12,7) dup mod / "
              "(27,8)+(12,7) dup mod",
              describe("kobu"));
    EXPECT_EQ("auto(4,4) / i(0,4) dup mod", describe("bat"));
    EXPECT_EQ("i(0,4) dup mod / auto(4,4)", describe("split"));
    EXPECT_EQ("auto(0,4)", describe("stapel"));
    EXPECT_EQ("u(0,4) / (4,8) dup mod / (48,7) dup mod / (40,7) dup mod", describe("opkred"));
    EXPECT_EQ(describe("opkred"), describe("opdebi"));
    EXPECT_EQ("(0,5)+(5,7)", describe("kurse"));
    for (const char *stem :
         {"koscha", "zahlziel", "butext", "buscha", "bank", "ueberw", "bumak", "mahntext"}) {
        EXPECT_EQ("i(0,4)", describe(stem));
    }
    EXPECT_EQ("i(0,4) dup", describe("koschaze"));
    EXPECT_EQ("(0,4)", describe("user"));
}

TEST(TableLayouts, FieldsLieInOrderInsideTheRecordAndDoNotOverlap)
{
    for (const TableLayout &table : Tables()) {
        int end = 0;
        for (const FieldLayout &field : table.Fields) {
            EXPECT_GE(field.Offset, end) << table.Stem << "." << field.Name;
            end = field.Offset + field.Width;
        }
        EXPECT_LE(end, table.RecordLength) << table.Stem;
    }
}

TEST_F(SampleBooks, TheTradingCompanyHasItsAccounts)
{
    const size_t sachkonten = NumbersOf(TableSako, Data / "1998").size();
    EXPECT_GE(sachkonten, 145u);
    EXPECT_LE(sachkonten, 165u);
    EXPECT_EQ(40u, NumbersOf(TableDebi, Data / "1998").size());
    EXPECT_EQ(25u, NumbersOf(TableKred, Data / "1998").size());
}

TEST_F(SampleBooks, TheMandantenDifferInYearsCalendarsAndCosts)
{
    const auto mandanten = ReadMandanten(Data);
    ASSERT_EQ(3u, mandanten.size());
    EXPECT_EQ("1997", mandanten[0].LowerYear);
    EXPECT_EQ("1998", mandanten[0].UpperYear);
    EXPECT_EQ(1, mandanten[0].FirstMonth);
    EXPECT_EQ(7, mandanten[1].FirstMonth);
    EXPECT_EQ("", mandanten[2].LowerYear);
    EXPECT_EQ(1, mandanten[0].Record.Kostenrechnung);
    EXPECT_EQ(0, mandanten[0].Record.KostenPflicht);
    EXPECT_EQ(0, mandanten[1].Record.Kostenrechnung);
    EXPECT_EQ(1, mandanten[2].Record.KostenPflicht);
    EXPECT_EQ("19981", mandanten[1].Directory("1998"));
}

TEST_F(SampleBooks, EveryTaxKeyOfAnAccountHasARateOnEveryDay)
{
    for (const std::string &year : yearDirectories) {
        const int firstMonth = FirstMonthOf(year);
        const auto rates = Read<StekeRecord>(TableSteke, Data / year);
        std::set<int> codes;
        for (const SakoRecord &account : Read<SakoRecord>(TableSako, Data / year)) {
            if ((account.Steuerflags & ~SteuerVorsteuer) != 0)
                codes.insert(account.Steuerflags & SteuerCodeMaske);
        }
        // A posting on an account with its own rate may look into all of these.
        codes.insert({2, 4, 16});
        for (const int code : codes) {
            for (Day day = DayOf(1997, 1, 1); day <= DayOf(1999, 6, 30); ++day) {
                // Sequences run from 0 without a gap, the newest first: the first one that holds is the rate.
                const StekeRecord *rate = nullptr;
                int sequence = 0;
                for (bool more = true; more && rate == nullptr; ++sequence) {
                    more = false;
                    for (const StekeRecord &row : rates) {
                        if (row.Code != code || row.Folge != sequence) continue;
                        more = true;
                        Day from = 0;
                        if (row.GueltigAb[0] == 0 ||
                            (DayOfPacked(row.GueltigAb, firstMonth, from) && from <= day)) {
                            rate = &row;
                        }
                    }
                }
                ASSERT_NE(nullptr, rate) << "code " << code << " on " << DisplayDay(day);
                const std::string percent = FieldText(rate->Satz);
                if (code == 2) {
                    EXPECT_EQ(day < DayOf(1998, 4, 1) ? "15,00" : "16,00", percent) << DisplayDay(day);
                }
                if (code == 4) {
                    EXPECT_EQ("07,00", percent);
                }
            }
        }
    }
}

TEST_F(SampleBooks, WhatRecordsReferToExists)
{
    for (const std::string &year : yearDirectories) {
        const fs::path directory = Data / year;
        const std::set<std::string> sako = NumbersOf(TableSako, directory);
        const std::set<std::string> kore = NumbersOf(TableKore, directory);
        std::set<int32_t> templates;
        std::set<int32_t> terms;
        for (const auto &row : Read<KoschaRecord>(TableKoscha, directory)) {
            templates.insert(int32_t{row.Nummer});
        }
        for (const auto &row : Read<ZahlzielRecord>(TableZahlziel, directory)) {
            terms.insert(int32_t{row.Nummer});
        }
        for (const auto &account : Read<SakoRecord>(TableSako, directory)) {
            EXPECT_EQ(account.MitKosten != 0, account.Kostenschablone != 0);
            if (account.Kostenschablone != 0) {
                EXPECT_EQ(1u, templates.count(int32_t{account.Kostenschablone}));
            }
        }
        for (const TableId id : {TableDebi, TableKred}) {
            for (const auto &partner : Read<PersonalRecord>(id, directory)) {
                EXPECT_EQ(1u, terms.count(int32_t{partner.Zahlungsziel}));
                EXPECT_EQ(0u, sako.count(partner.Konto));
                EXPECT_EQ(partner.Blz[0] != 0, partner.Bankkonto[0] != 0);
            }
        }
        for (const auto &rate : Read<StekeRecord>(TableSteke, directory)) {
            EXPECT_EQ(1u, sako.count(rate.Umsatzsteuerkonto)) << rate.Code;
            EXPECT_EQ(1u, sako.count(rate.Vorsteuerkonto)) << rate.Code;
        }
        std::map<int32_t, int> lines;
        for (const auto &line : Read<KoschazeRecord>(TableKoschaze, directory)) {
            EXPECT_EQ(1u, kore.count(line.Kostenobjekt1));
            if (line.Kostenobjekt2[0] != 0) {
                EXPECT_EQ(1u, kore.count(line.Kostenobjekt2));
            }
            ++lines[int32_t{line.Nummer}];
        }
        for (const auto &head : Read<KoschaRecord>(TableKoscha, directory)) {
            EXPECT_EQ(int32_t{head.Zeilen}, lines[int32_t{head.Nummer}]);
        }
    }
}

TEST_F(SampleBooks, TreesReachEachAccountOfTheirSideOnce)
{
    const fs::path directory = Data / "1998";
    const std::map<TableId, int16_t> sides = {
        {TableGuvauf, ZuordnungGuv}, {TableBilaktau, ZuordnungAktiva}, {TableBilpasau, ZuordnungPassiva}};
    for (const auto &[id, side] : sides) {
        std::map<int32_t, StructureRecord> nodes;
        std::multiset<std::string> leaves;
        for (const auto &node : Read<StructureRecord>(id, directory)) {
            if (node.Id == 0) leaves.insert(node.Text);
            if (node.Id != 0) {
                EXPECT_TRUE(nodes.emplace(int32_t{node.Id}, node).second);
            }
        }
        std::set<int32_t> seen;
        std::vector<int32_t> open = {structureRoot};
        while (!open.empty()) {
            const int32_t node = open.back();
            open.pop_back();
            ASSERT_EQ(1u, nodes.count(node));
            ASSERT_TRUE(seen.insert(node).second);
            const StructureRecord &record = nodes[node];
            if ((record.Art & StructureGruppe) != 0) {
                EXPECT_LE(std::strlen(record.Text), 27u);
            }
            if (record.Art == 0) leaves.insert(record.Text);
            if (record.Next != 0) open.push_back(int32_t{record.Next});
            if (record.Child != 0) open.push_back(int32_t{record.Child});
        }
        EXPECT_EQ(nodes.size(), seen.size());
        std::multiset<std::string> accounts;
        for (const auto &account : Read<SakoRecord>(TableSako, directory)) {
            if (account.Zuordnung == side) accounts.insert(account.Konto);
        }
        EXPECT_EQ(accounts, leaves);
    }
}

TEST_F(SampleBooks, DatesAndAmountsAreWellFormed)
{
    for (const std::string &year : yearDirectories) {
        const int firstMonth = FirstMonthOf(year);
        for (const TableLayout &table : Tables()) {
            if (!IsYearTable(table)) continue;
            for (const std::string &record : RecordsOf(table, Data / year)) {
                for (const FieldLayout &field : table.Fields) {
                    const char *bytes = record.data() + field.Offset;
                    const std::string where = year + " " + table.Stem + "." + field.Name;
                    Day day = 0;
                    // A booking in the house's own currency leaves the amount in another one empty.
                    const bool mayBeEmpty = table.Id == TableBat && field.Name == "Waehrungsbetrag";
                    if (field.Type == Form::Amount && !(mayBeEmpty && *bytes == 0)) {
                        EXPECT_TRUE(IsAmount(bytes)) << where;
                    }
                    if (field.Type == Form::Rate) {
                        EXPECT_TRUE(IsRate(bytes)) << where;
                    }
                    if (field.Type == Form::PackedDay && *bytes != 0) {
                        EXPECT_TRUE(DayOfPacked(bytes, firstMonth, day)) << where;
                    }
                    if (field.Type == Form::SortDay && *bytes != 0) {
                        EXPECT_TRUE(DayOfSort(bytes, firstMonth, day)) << where;
                    }
                    if (field.Type == Form::Text) {
                        EXPECT_EQ(0, bytes[field.Width - 1]) << where;
                    }
                }
            }
        }
    }
}

TEST_F(SampleBooks, OpeningBalancesAddUpToNothing)
{
    const auto balance = [](const AccountSums &sums) {
        return Pfennig(sums.Vortrag.Soll) - Pfennig(sums.Vortrag.Haben);
    };
    for (const std::string &year : yearDirectories) {
        int64_t all = 0;
        int64_t bilanz = 0;
        for (const auto &account : Read<SakoRecord>(TableSako, Data / year)) {
            all += balance(account.Umsaetze);
            if (account.Zuordnung != ZuordnungKeine) {
                bilanz += balance(account.Umsaetze);
            }
        }
        for (const TableId id : {TableDebi, TableKred}) {
            for (const auto &partner : Read<PersonalRecord>(id, Data / year)) {
                all += balance(partner.Umsaetze);
            }
        }
        EXPECT_EQ(0, all) << year;
        EXPECT_EQ(0, bilanz) << year;
    }
}

// ---- What the reports rely on ----

namespace {

int64_t ClosingOf(const AccountSums &sums)
{
    int64_t balance = Pfennig(sums.Vortrag.Soll) - Pfennig(sums.Vortrag.Haben) + Pfennig(sums.Slot0.Soll) -
                      Pfennig(sums.Slot0.Haben);
    for (const SollHaben &month : sums.Monat) {
        balance += Pfennig(month.Soll) - Pfennig(month.Haben);
    }
    return balance;
}

std::map<std::string, int64_t> ClosingBalances(TableId id, const fs::path &directory)
{
    std::map<std::string, int64_t> balances;
    if (id == TableSako) {
        for (const auto &account : Read<SakoRecord>(id, directory)) {
            balances[account.Konto] = ClosingOf(account.Umsaetze);
        }
    } else {
        for (const auto &account : Read<PersonalRecord>(id, directory)) {
            balances[account.Konto] = ClosingOf(account.Umsaetze);
        }
    }
    return balances;
}

// The month of a key of bube or kobu, 0 to 11.
int MonthOf(const char *sortDate) { return (sortDate[2] - '0') * 10 + sortDate[3] - '0' - 1; }

// What a tree adds up to: its plain leaves and those outside of its groups.
int64_t SumOfTree(TableId id, const fs::path &directory, const std::map<std::string, int64_t> &balances)
{
    int64_t sum = 0;
    for (const auto &node : Read<StructureRecord>(id, directory)) {
        if ((node.Art & (StructureGruppe | StructureGegenposten)) == 0) sum += balances.at(node.Text);
    }
    return sum;
}

} // namespace

TEST_F(SampleBooks, MonthSlotsAreTheSumsOfTheFinalBookings)
{
    for (const std::string &year : yearDirectories) {
        std::map<std::pair<std::string, int>, std::pair<int64_t, int64_t>> posted;
        std::map<std::pair<std::string, int>, int> counted;
        for (const auto &posting : Read<BubeRecord>(TableBube, Data / year)) {
            const int month = MonthOf(posting.Schluessel.Folge);
            const bool counts = (posting.Status & (BubeOhneNetto | BubeNichtImMonat)) == 0;
            const auto post = [&](const char *account, int64_t soll, int64_t haben) {
                ++counted[{account, month}];
                if (!counts) return;
                posted[{account, month}].first += soll;
                posted[{account, month}].second += haben;
            };
            post(posting.Sollkonto, Pfennig(posting.Soll), 0);
            post(posting.Habenkonto, 0, Pfennig(posting.Haben));
            const bool onHaben = (posting.Steuerflags & BubeSteuerPlus) != 0;
            const int64_t tax = Pfennig(posting.Steuer);
            if (posting.Steuerkonto[0] != 0) post(posting.Steuerkonto, onHaben ? 0 : tax, onHaben ? tax : 0);
        }
        const auto compare = [&](const AccountNumber &number, const AccountSums &sums) {
            for (int month = 0; month < 12; ++month) {
                const auto wanted = posted[{number, month}];
                EXPECT_EQ(wanted.first, Pfennig(sums.Monat[month].Soll)) << year << number << month;
                EXPECT_EQ(wanted.second, Pfennig(sums.Monat[month].Haben)) << year << number << month;
                EXPECT_EQ((counted[{number, month}]), sums.Buchungszahl[month]) << year << number << month;
            }
        };
        for (const auto &account : Read<SakoRecord>(TableSako, Data / year)) {
            compare(account.Konto, account.Umsaetze);
        }
        for (const TableId id : {TableDebi, TableKred}) {
            for (const auto &partner : Read<PersonalRecord>(id, Data / year)) {
                compare(partner.Konto, partner.Umsaetze);
            }
        }
    }
}

TEST_F(SampleBooks, AktivaLessPassivaIsTheResultOfTheGuv)
{
    for (const std::string &year : yearDirectories) {
        const auto balances = ClosingBalances(TableSako, Data / year);
        const int64_t aktiva = SumOfTree(TableBilaktau, Data / year, balances);
        const int64_t passiva = -SumOfTree(TableBilpasau, Data / year, balances);
        const int64_t result = -SumOfTree(TableGuvauf, Data / year, balances);
        EXPECT_EQ(result, aktiva - passiva) << year;
        EXPECT_NE(0, result) << year;
    }
}

TEST_F(SampleBooks, AYearBeginsWithWhatTheOneBeforeLeft)
{
    const std::pair<const char *, const char *> years[] = {
        {"1997", "1998"}, {"19971", "19981"}, {"19972", "19982"}};
    for (const auto &[before, after] : years) {
        std::map<std::string, int64_t> closing;
        for (const TableId id : {TableSako, TableDebi, TableKred}) {
            closing.merge(ClosingBalances(id, Data / before));
        }
        int64_t result = 0;
        for (const auto &account : Read<SakoRecord>(TableSako, Data / before)) {
            if (account.Zuordnung == ZuordnungGuv) result += closing[account.Konto];
        }
        const auto opening = [](const AccountSums &sums) {
            return Pfennig(sums.Vortrag.Soll) - Pfennig(sums.Vortrag.Haben);
        };
        for (const auto &account : Read<SakoRecord>(TableSako, Data / after)) {
            const std::string number = account.Konto;
            const int64_t wanted = account.Zuordnung == ZuordnungGuv ? 0
                                   : number == "   2040"             ? closing[number] + result
                                                                     : closing[number];
            EXPECT_EQ(wanted, opening(account.Umsaetze)) << after << number;
        }
        for (const TableId id : {TableDebi, TableKred}) {
            for (const auto &partner : Read<PersonalRecord>(id, Data / after)) {
                EXPECT_EQ(closing[partner.Konto], opening(partner.Umsaetze)) << after << partner.Konto;
            }
        }
    }
}

TEST_F(SampleBooks, OpenItemsAddUpToTheirAccount)
{
    for (const char *year : {"1998", "19981", "19982"}) {
        const std::tuple<TableId, TableId, int> kinds[] = {{TableDebi, TableOpdebi, 1},
                                                           {TableKred, TableOpkred, -1}};
        for (const auto &[accounts, items, sign] : kinds) {
            std::map<std::string, int64_t> open;
            for (const auto &item : Read<OpenItemRecord>(items, Data / year)) {
                open[item.Konto] += sign * Pfennig(item.Betrag1);
            }
            for (const auto &[number, balance] : ClosingBalances(accounts, Data / year)) {
                EXPECT_EQ(balance, open[number]) << year << number;
            }
        }
    }
}

TEST_F(SampleBooks, CostObjectsHoldTheSumsOfTheirFinalCostLines)
{
    for (const std::string &year : yearDirectories) {
        std::map<std::pair<std::string, int>, int64_t> costs;
        for (const auto &line : Read<KobuRecord>(TableKobu, Data / year)) {
            if (line.FinaleBuchung == 0) continue;
            const int64_t amount =
                (line.Flag & KobuHaben) != 0 ? -Pfennig(line.Betrag) : Pfennig(line.Betrag);
            for (const AccountNumber *object : {&line.Kostenobjekt1, &line.Kostenobjekt2}) {
                if ((*object)[0] != 0) costs[{*object, MonthOf(line.Datum)}] += amount;
            }
        }
        for (const auto &object : Read<KoreRecord>(TableKore, Data / year)) {
            for (int month = 0; month < 12; ++month) {
                EXPECT_EQ((costs[{object.Nummer, month}]), Pfennig(object.Monat[month]))
                    << year << object.Nummer << month;
            }
        }
    }
}

TEST_F(SampleBooks, ABoxOfTheTaxReturnFitsTheTaxKeyOfItsAccount)
{
    const std::map<int, std::set<int>> keysOfBox = {
        {41, {SteuerEg}},
        {43, {SteuerNullsatz}},
        {48, {SteuerNullsatz}},
        {50, {SteuerRegelsatz, SteuerEg}}, // private customers in the EC pay this country's tax
        {86, {SteuerErmaessigt}},
        {35, {SteuerSonstigerSatz}},
    };
    std::set<int> used;
    for (const std::string &year : yearDirectories) {
        std::set<std::string> input, output;
        for (const auto &rate : Read<StekeRecord>(TableSteke, Data / year)) {
            output.insert(rate.Umsatzsteuerkonto);
            input.insert(rate.Vorsteuerkonto);
        }
        for (const auto &account : Read<SakoRecord>(TableSako, Data / year)) {
            const int box = account.Kennzahl;
            if (box == 0) continue;
            used.insert(box);
            const auto keys = keysOfBox.find(box);
            if (keys != keysOfBox.end()) {
                EXPECT_EQ(1u, keys->second.count(account.Steuerflags)) << account.Konto;
            } else {
                EXPECT_EQ(0, account.Steuerflags) << account.Konto;
            }
            if (box == 66 || box == 61) {
                EXPECT_EQ(1u, input.count(account.Konto)) << account.Konto;
            }
            if (box == 36) {
                EXPECT_EQ(1u, output.count(account.Konto)) << account.Konto;
            }
        }
    }
    EXPECT_EQ((std::set<int>{35, 36, 39, 41, 43, 48, 50, 61, 62, 66, 86, 92}), used);
    EXPECT_EQ(0, ReadMandanten(Data)[0].Record.UStVAVariante);
    EXPECT_NE(0, ReadMandanten(Data)[1].Record.UStVAVariante);
    EXPECT_EQ(0, ReadMandanten(Data)[1].Record.Sonderkontomodus);
    EXPECT_NE(0, ReadMandanten(Data)[2].Record.Sonderkontomodus);
    EXPECT_STREQ("   2480", ReadMandanten(Data)[2].Record.Sonderkonto);
}

TEST_F(SampleBooks, CustomersInTheCommunityTakeTheSuppliesOfTheirBox)
{
    std::map<std::string, int64_t> countries;
    std::set<std::string> numbers;
    int64_t bought = 0;
    for (const auto &partner : Read<PersonalRecord>(TableDebi, Data / "1997")) {
        if (partner.UstId[0] == 0) continue;
        numbers.insert(partner.Konto);
        for (const SollHaben &month : partner.Umsaetze.Monat) {
            countries[std::string(partner.UstId, 2)] += Pfennig(month.Soll);
            bought += Pfennig(month.Soll);
        }
    }
    EXPECT_GE(countries.size(), 4u);
    for (const auto &[country, turnover] : countries) {
        EXPECT_GT(turnover, 0) << country;
    }
    int64_t sold = 0;
    for (const auto &account : Read<SakoRecord>(TableSako, Data / "1997")) {
        if (account.Kennzahl != 41) continue;
        for (const SollHaben &month : account.Umsaetze.Monat) {
            sold += Pfennig(month.Haben);
        }
    }
    // Money that came ahead goes back on Soll: it is no turnover of goods.
    for (const auto &posting : Read<BubeRecord>(TableBube, Data / "1997")) {
        const bool isPaidBack =
            numbers.count(posting.Sollkonto) > 0 && std::memcmp(posting.Beleg, "BA", 2) == 0;
        if (isPaidBack) bought -= Pfennig(posting.Soll);
    }
    EXPECT_EQ(sold, bought);
}

TEST_F(SampleBooks, EveryMarkOfAFinalBookingIsUsed)
{
    unsigned status = 0;
    unsigned taxFlags = 0;
    unsigned origins = 0;
    unsigned classes = 0;
    unsigned costs = 0;
    for (const std::string &year : yearDirectories) {
        for (const auto &posting : Read<BubeRecord>(TableBube, Data / year)) {
            status |= posting.Status;
            taxFlags |= posting.Steuerflags;
            origins |= posting.Steuerherkunft;
            classes |= posting.Steuerklasse;
        }
        for (const auto &line : Read<KobuRecord>(TableKobu, Data / year)) {
            costs |= line.Flag;
        }
    }
    EXPECT_EQ(BubeOhneNetto | BubeNichtImMonat | BubeGefaltet | BubeOhneKennzahl | BubeSplitSoll |
                  BubeSplitHaben | BubeSteuerbuchung | BubeSplitAnfang,
              static_cast<int>(status));
    EXPECT_EQ(BubeSteuerMinus | BubeSteuerPlus | BubeSteuerErrechnet, static_cast<int>(taxFlags));
    EXPECT_NE(0u, origins & BubeVorsteuer);
    EXPECT_EQ(BubeKlasse2 | BubeKlasse4 | BubeKlasse40 | BubeKlasse80, static_cast<int>(classes));
    EXPECT_EQ(KobuArt | KobuHaben, static_cast<int>(costs));
}

TEST_F(SampleBooks, OpenItemsShowPartsRemindersAdvancesAndCurrencies)
{
    for (const TableId id : {TableOpdebi, TableOpkred}) {
        std::set<int> reminders, ways;
        std::set<std::string> currencies;
        int parts = 0;
        int advances = 0;
        int ofYearBefore = 0;
        for (const auto &item : Read<OpenItemRecord>(id, Data / "1998")) {
            reminders.insert(item.Wert1);
            ways.insert(item.Zahlungsart);
            if (item.Waehrung[0] != 0) {
                currencies.insert(item.Waehrung);
                EXPECT_NE(0, Pfennig(item.Waehrungsbetrag));
            }
            EXPECT_EQ(Pfennig(item.Betrag3), Pfennig(item.Betrag1) + Pfennig(item.Betrag4));
            if (item.Flag != 0) ++parts;
            if (Pfennig(item.Betrag1) < 0) ++advances;
            if (item.Referenz2[0] != 0) ++ofYearBefore;
        }
        EXPECT_GE(parts, 1);
        EXPECT_GE(advances, 1);
        EXPECT_GE(currencies.size(), 1u);
        EXPECT_EQ((std::set<int>{0, 1, 2, 3, 4}), ways);
        EXPECT_EQ(id == TableOpdebi ? (std::set<int>{0, 1, 2, 3}) : std::set<int>{0}, reminders);
    }
}

TEST_F(SampleBooks, AStapelHoldsBookingsWithCostLines)
{
    const fs::path directory = Data / "19982";
    std::map<int32_t, int> linesOfBooking, linesOfPart;
    int64_t spread = 0;
    for (const auto &line : Read<KobuRecord>(TableKobu, directory)) {
        if (line.FinaleBuchung != 0) continue;
        EXPECT_NE(line.Buchungsnummer == 0, line.Splitnummer == 0);
        EXPECT_EQ(0, line.Konto[0]);
        if (line.Buchungsnummer != 0) ++linesOfBooking[int32_t{line.Buchungsnummer}];
        if (line.Splitnummer != 0) ++linesOfPart[int32_t{line.Splitnummer}];
        spread += Pfennig(line.Betrag);
    }
    const auto bookings = Read<BatRecord>(TableBat, directory);
    ASSERT_EQ(4u, bookings.size());
    int64_t net = 0;
    for (const auto &booking : bookings) {
        EXPECT_EQ(int16_t{booking.Teil.Kostenzeilen}, linesOfBooking[int32_t{booking.Buchungsnummer}]);
        net += Pfennig(booking.Teil.Netto);
    }
    const auto parts = Read<SplitRecord>(TableSplit, directory);
    ASSERT_EQ(2u, parts.size());
    for (const auto &part : parts) {
        EXPECT_EQ(int16_t{part.Kostenzeilen}, linesOfPart[int32_t{part.Splitnummer}]);
        net += Pfennig(part.Netto);
    }
    EXPECT_EQ(net, spread);
    // 200,00 + 3.100,00 + 6.400,10 + 55,00, and of the further parts 240,00 + 90,00.
    EXPECT_EQ(1008510, net);
    // 16 % on 200,00, 6.400,10 and 240,00; 7 % on 90,00.
    EXPECT_EQ(23200, Pfennig(bookings[0].Teil.Brutto));
    EXPECT_EQ(742412, Pfennig(bookings[2].Teil.Brutto));
    EXPECT_EQ(27840, Pfennig(parts[0].Brutto));
    EXPECT_EQ(9630, Pfennig(parts[1].Brutto));
    // Every Stapel of the trading company waits for bookings.
    EXPECT_TRUE(Read<BatRecord>(TableBat, Data / "1998").empty());
}

TEST_F(SampleBooks, SomeAccountsStandOnTheOtherSideOfTheBilanz)
{
    const auto balances = ClosingBalances(TableSako, Data / "1998");
    const std::tuple<TableId, TableId, int> sides[] = {{TableBilaktau, TableBilpasau, 1},
                                                       {TableBilpasau, TableBilaktau, -1}};
    for (const auto &[own, other, sign] : sides) {
        std::set<std::string> leaves;
        for (const auto &node : Read<StructureRecord>(own, Data / "1998")) {
            if ((node.Art & (StructureGruppe | StructureGegenposten)) == 0) leaves.insert(node.Text);
        }
        int turned = 0;
        int outside = 0;
        for (const auto &node : Read<StructureRecord>(other, Data / "1998")) {
            if ((node.Art & StructureGegenposten) == 0) continue;
            EXPECT_EQ(1u, leaves.count(node.Text)) << node.Text;
            if (sign * balances.at(node.Text) < 0) ++turned;
        }
        for (const auto &node : Read<StructureRecord>(own, Data / "1998")) {
            if (node.Id == 0 && balances.at(node.Text) != 0) ++outside;
        }
        EXPECT_GE(turned, 1);
        EXPECT_EQ(1, outside);
    }
}

TEST_F(SampleBooks, IniFilesNameTheBooksByTheirFullPath)
{
    EXPECT_EQ("[TOLKA]\nPfad32=" + Data.string() + "\nPfad=" + Data.string() +
                  "\nReportPfad=" + (Books / "reports").string() + "/\n",
              ReadFile(Books / "tolka.ini"));
    EXPECT_EQ("[VARK]\nPfad=" + Data.string() + "\nReportPfad=" + (Books / "reports").string() + "/\n",
              ReadFile(Books / "vark.ini"));
    EXPECT_TRUE(fs::is_directory(Books / "reports"));
}

TEST_F(SampleBooks, ExistingBooksAreReplacedOnlyWhenTold)
{
    WriteFile(Books / "reports" / "eigen.txt", "x");
    const Result refused = tests::Books({"beispiel", Books.string()});
    EXPECT_EQ(3, refused.ExitCode);
    EXPECT_NE(std::string::npos, refused.Err.find("liegen schon Bücher. Mit --ersetzen"));
    EXPECT_TRUE(fs::exists(Books / "reports" / "eigen.txt"));

    EXPECT_EQ(0, tests::Books({"beispiel", Books.string(), "--ersetzen"}).ExitCode);
    EXPECT_FALSE(fs::exists(Books / "reports" / "eigen.txt"));
    EXPECT_EQ(40u, NumbersOf(TableDebi, Data / "1998").size());
}

TEST_F(SampleBooks, BooksInUseAreNotReplaced)
{
    TableFile held(LayoutOf(TableSako), Data / "19981", OpenMode::Normal);
    const Result refused = tests::Books({"beispiel", Books.string(), "--ersetzen"});
    EXPECT_EQ(3, refused.ExitCode);
    EXPECT_NE(std::string::npos, refused.Err.find("in einer anderen Anwendung geöffnet")) << refused.Err;
}

TEST_F(SampleBooks, AsManyPersonalAccountsAsWanted)
{
    const fs::path made = Directory.Path / "viele";
    ASSERT_EQ(0, tests::Books({"beispiel", made.string(), "--personenkonten", "300"}).ExitCode);
    for (const char *year : {"1997", "1998"}) {
        EXPECT_EQ(200u, NumbersOf(TableDebi, made / "DB" / year).size());
        EXPECT_EQ(100u, NumbersOf(TableKred, made / "DB" / year).size());
    }
    // The others keep theirs.
    EXPECT_EQ(NumbersOf(TableDebi, Data / "19981"), NumbersOf(TableDebi, made / "DB" / "19981"));
    EXPECT_EQ(0, tests::Books({"pruefen", made.string()}).ExitCode);
}

TEST_F(SampleBooks, ManyPersonalAccountsHaveAKuerzelEach)
{
    const fs::path made = Directory.Path / "viele";
    const Result result = tests::Books(
        {"beispiel", made.string(), "--buchungen", "4000", "--personenkonten", "10000", "--posten", "500"});
    ASSERT_EQ(0, result.ExitCode) << result.Err;
    const Result checked = tests::Books({"pruefen", made.string()});
    EXPECT_EQ(0, checked.ExitCode) << checked.Out.substr(0, 2000);
}

TEST_F(SampleBooks, WithoutTemplatesBesideTheProgramItSaysSo)
{
    EXPECT_EQ("", tests::Books({"beispiel", (Directory.Path / "mit").string(), "--buchungen", "0"}).Err);
    const fs::path bare = Directory.Path / "programm";
    fs::create_directory(bare);
    fs::copy_file(BOOKS_PROGRAM, bare / "books");
    fs::copy_file(fs::path(BOOKS_PROGRAM).parent_path() / "libwbtrv32.so", bare / "libwbtrv32.so");
    const Result result = tests::Run(
        {(bare / "books").string(), {"beispiel", (Directory.Path / "ohne").string(), "--buchungen", "0"}});
    EXPECT_EQ(0, result.ExitCode) << result.Err;
    EXPECT_EQ(
        "books: Neben dem Programm liegen keine Berichtsvorlagen (templates); aus diesen Büchern gibt es "
        "keine Berichte.\n",
        result.Err);
}

TEST_F(SampleBooks, AboutAsManyOpenItemsAsWanted)
{
    const auto itemsOf = [&](const char *wanted) {
        const fs::path made = Directory.Path / wanted;
        EXPECT_EQ(
            0, tests::Books({"beispiel", made.string(), "--buchungen", "4000", "--posten", wanted}).ExitCode);
        EXPECT_EQ(0, tests::Books({"pruefen", made.string()}).ExitCode);
        return RecordsOf(LayoutOf(TableOpdebi), made / "DB" / "1998").size() +
               RecordsOf(LayoutOf(TableOpkred), made / "DB" / "1998").size();
    };
    const size_t few = itemsOf("100");
    const size_t many = itemsOf("900");
    EXPECT_GE(few, 70u);
    EXPECT_LE(few, 140u);
    EXPECT_GE(many, 650u);
    EXPECT_LE(many, 1100u);
}

TEST_F(SampleBooks, TheSeedDecidesTheBookings)
{
    int times = 0;
    const auto bookings = [&](const char *seed) {
        const fs::path made = Directory.Path / ("saat" + std::to_string(++times));
        EXPECT_EQ(0,
                  tests::Books({"beispiel", made.string(), "--saat", seed, "--buchungen", "700"}).ExitCode);
        return RecordsOf(LayoutOf(TableBube), made / "DB" / "1998");
    };
    const auto one = bookings("7");
    EXPECT_NE(one, bookings("8"));
    EXPECT_EQ(one, bookings("7"));
}

TEST_F(SampleBooks, AsManyFinalBookingsAsWanted)
{
    for (const int wanted : {600, 601, 1234, 12345}) {
        const fs::path made = Directory.Path / std::to_string(wanted);
        ASSERT_EQ(0,
                  tests::Books({"beispiel", made.string(), "--buchungen", std::to_string(wanted)}).ExitCode);
        const auto count = [&](const char *year) {
            return static_cast<int>(RecordsOf(LayoutOf(TableBube), made / "DB" / year).size());
        };
        EXPECT_EQ(wanted, count("1997") + count("1998"));
        // The others have a tenth, but no fewer than what every month brings.
        const int others = std::max(600, wanted / 10);
        EXPECT_EQ(others, count("19971") + count("19981"));
        EXPECT_EQ(others, count("19972") + count("19982"));
    }
}

TEST(BooksProgram, WhatSampleBooksCannotHoldIsRefused)
{
    const TemporaryDirectory directory;
    const std::string place = (directory.Path / "b").string();
    const auto refused = [&](std::vector<std::string> arguments, const char *reason) {
        arguments.insert(arguments.begin(), {"beispiel", place});
        const Result result = tests::Books(std::move(arguments));
        EXPECT_EQ(2, result.ExitCode);
        EXPECT_NE(std::string::npos, result.Err.find(reason)) << result.Err;
        EXPECT_FALSE(fs::exists(place));
    };
    refused({"--buchungen", "599"}, "muß 0 sein oder zwischen 600 und 3.000.000 liegen");
    refused({"--buchungen", "3000001"}, "muß 0 sein oder zwischen 600 und 3.000.000 liegen");
    refused({"--buchungen", "viele"}, "viele");
    refused({"--personenkonten", "5"}, "muß zwischen 6 und 25.000 liegen");
    refused({"--personenkonten", "25001"}, "muß zwischen 6 und 25.000 liegen");
    refused({"--posten", "751"}, "nicht mehr Posten offen sein, als ein Viertel");
}

TEST_F(SampleBooks, OtherThingsInTheWayAreNotTouched)
{
    const fs::path other = Directory.Path / "anderes";
    fs::create_directory(other);
    WriteFile(other / "brief.txt", "x");
    for (const std::vector<std::string> &arguments :
         {std::vector<std::string>{"beispiel", other.string()},
          std::vector<std::string>{"beispiel", other.string(), "--ersetzen"}}) {
        const Result refused = tests::Books(arguments);
        EXPECT_EQ(3, refused.ExitCode);
        EXPECT_NE(std::string::npos, refused.Err.find("enthält anderes als Bücher")) << refused.Err;
    }
    EXPECT_EQ("x", ReadFile(other / "brief.txt"));

    const Result file = tests::Books({"beispiel", (other / "brief.txt").string()});
    EXPECT_EQ(3, file.ExitCode);
    EXPECT_NE(std::string::npos, file.Err.find("ist kein Verzeichnis"));
}

TEST_F(SampleBooks, NothingIsLeftBesideTheBooks)
{
    size_t entries = 0;
    for ([[maybe_unused]] const auto &entry : fs::directory_iterator(Directory.Path)) {
        ++entries;
    }
    EXPECT_EQ(1u, entries);
}

TEST(BooksProgram, APathThatIniFilesCannotHoldIsRefused)
{
    const TemporaryDirectory directory;
    const fs::path deep = directory.Path / std::string(120, 'a') / std::string(120, 'b');
    const Result refused = tests::Books({"beispiel", deep.string()});
    EXPECT_EQ(3, refused.ExitCode);
    EXPECT_NE(std::string::npos, refused.Err.find("Der Pfad ist zu lang"));
    EXPECT_FALSE(fs::exists(deep));
}

TEST(BooksProgram, CommandLineFaultsAreToldInGerman)
{
    const auto expect = [](std::vector<std::string> arguments, const char *text) {
        const Result result = tests::Books(std::move(arguments));
        EXPECT_EQ(2, result.ExitCode);
        EXPECT_NE(std::string::npos, result.Err.find(text)) << result.Err;
    };
    expect({}, "Es fehlt der Befehl.");
    expect({"irgendwas"}, "Unbekannte Angabe: irgendwas");
    expect({"beispiel"}, "Es fehlt die Angabe VERZEICHNIS.");
    expect({"beispiel", "a", "--falsch"}, "Unbekannte Angabe: --falsch");
}

TEST(BooksProgram, HelpIsGermanAndHasAnExample)
{
    for (const std::vector<std::string> &arguments :
         {std::vector<std::string>{"--hilfe"}, std::vector<std::string>{"--help"},
          std::vector<std::string>{"beispiel", "--hilfe"}}) {
        const Result help = tests::Books(arguments);
        EXPECT_EQ(0, help.ExitCode);
        EXPECT_NE(std::string::npos, help.Out.find("Aufruf: books")) << help.Out;
        EXPECT_NE(std::string::npos, help.Out.find("Beispiel")) << help.Out;
        EXPECT_EQ(std::string::npos, help.Out.find("Options")) << help.Out;
    }
}
