#include "tests/tools/program.h"
#include "tools/common/calendar.h"
#include "tools/common/installation.h"
#include "tools/common/texts.h"

#include <cstring>
#include <gtest/gtest.h>
#include <set>

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
                    if (field.Type == Form::Amount) {
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
