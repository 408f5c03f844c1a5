// Good books are damaged in one way at a time; the check must find it and name table and field. Each kind of
// damage is listed with why it matters.
#include "tests/support/page_sums.h"
#include "tests/tools/program.h"
#include "tools/common/calendar.h"
#include "tools/common/installation.h"

#include <cstring>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <lmdb.h>
#include <rapidjson/document.h>

using namespace tests;
using namespace tools;
using namespace vark;
namespace fs = std::filesystem;

namespace {

struct GoodBooks {
    TemporaryDirectory Directory;
    fs::path Books = Directory.Path / "b";
    fs::path Data = Books / "DB";

    GoodBooks()
    {
        const Result made = tests::Books({"beispiel", Books.string(), "--buchungen", "700"});
        if (made.ExitCode != 0) throw std::runtime_error(made.Err);
        // Something in a Stapel as well: one plain booking with tax and costs.
        const Result booked =
            Vark(Books, {"buchen", "--mandant", "1", "--stapel", "16", "--datum", "15.4.1998", "--soll",
                         "10010", "--haben", "5010", "--betrag", "116,00"});
        if (booked.ExitCode != 0) throw std::runtime_error(booked.Err);
    }

    // Changes the first record (in the order of key 0) that `wanted` accepts.
    template <typename Record>
    void Change(TableId id, const std::string &year, const std::function<bool(const Record &)> &wanted,
                const std::function<void(Record &)> &change) const
    {
        TableFile table(LayoutOf(id), Data / year, OpenMode::Normal);
        Record record{};
        for (bool found = table.First(&record, 0); found; found = table.Next(&record, 0)) {
            if (!wanted(record)) continue;
            change(record);
            table.Update(&record);
            return;
        }
        throw std::logic_error("no such record in " + LayoutOf(id).Stem);
    }

    // The same for what stands in a key that must not be changed: taken out and put in again.
    template <typename Record>
    void Replace(TableId id, const std::string &year, const std::function<bool(const Record &)> &wanted,
                 const std::function<void(Record &)> &change) const
    {
        TableFile table(LayoutOf(id), Data / year, OpenMode::Normal);
        Record record{};
        for (bool found = table.First(&record, 0); found; found = table.Next(&record, 0)) {
            if (!wanted(record)) continue;
            table.Delete();
            change(record);
            table.Insert(&record);
            return;
        }
        throw std::logic_error("no such record in " + LayoutOf(id).Stem);
    }

    template <typename Record>
    void Remove(TableId id, const std::string &year, const std::function<bool(const Record &)> &wanted) const
    {
        TableFile table(LayoutOf(id), Data / year, OpenMode::Normal);
        Record record{};
        for (bool found = table.First(&record, 0); found; found = table.Next(&record, 0)) {
            if (!wanted(record)) continue;
            table.Delete();
            return;
        }
        throw std::logic_error("no such record in " + LayoutOf(id).Stem);
    }

    template <typename Record> void Add(TableId id, const std::string &year, Record record) const
    {
        TableFile(LayoutOf(id), Data / year, OpenMode::Normal).Insert(&record);
    }
};

void PutKonto(AccountNumber &field, const char *digits)
{
    const size_t length = std::strlen(digits);
    std::memset(field, ' ', accountDigits);
    field[accountDigits] = 0;
    std::memcpy(field + accountDigits - length, digits, length);
}

bool IsKonto(const AccountNumber &field, const char *digits)
{
    AccountNumber number{};
    PutKonto(number, digits);
    return std::memcmp(field, number, sizeof number) == 0;
}

int64_t Pfennig(const AmountText &amount)
{
    int64_t value = 0;
    for (int i = 0; i < 12; ++i) {
        if (i != amountMark) value = value * 10 + amount[i] - '0';
    }
    return amount[amountMark] == '-' ? -value : value;
}

// One Pfennig more, whatever it was.
void Nudge(AmountText &amount) { amount[11] = amount[11] == '9' ? '8' : static_cast<char>(amount[11] + 1); }

auto Sako(const char *number)
{
    return std::function<bool(const SakoRecord &)>(
        [number](const SakoRecord &r) { return IsKonto(r.Konto, number); });
}

template <typename Record> std::function<bool(const Record &)> Any()
{
    return [](const Record &) { return true; };
}

bool IsSplit(const BubeRecord &r) { return (r.Status & (BubeSplitSoll | BubeSplitHaben)) != 0; }

bool IsPlainTaxed(const BubeRecord &r) { return r.Steuerkonto[0] != 0 && r.Status == 0; }

bool IsPlainUntaxed(const BubeRecord &r) { return r.Steuerkonto[0] == 0 && r.Status == 0; }

struct Damage {
    const char *Name;
    const char *Why;
    std::function<void(const GoodBooks &)> Do;
    // What must be found.
    const char *Table;
    const char *Field;
    const char *Rule;
};

void PrintTo(const Damage &damage, std::ostream *out) { *out << damage.Name << " (" << damage.Why << ")"; }

// Makes a table again, empty and otherwise than it should be.
void MakeTableAnew(const TableLayout &layout, const fs::path &directory)
{
    ReplaceTable(layout, directory);
    StopEngine();
}

// The entries of one of a table's trees in the store, changed behind the record manager's back: "t" is that
// of its records, "i00" that of its first index.
void WithTree(const fs::path &directory, const std::string &table, const char *which,
              const std::function<void(MDB_txn *, MDB_dbi)> &change)
{
    MDB_env *env = nullptr;
    mdb_env_create(&env);
    mdb_env_set_maxdbs(env, 256);
    mdb_env_set_mapsize(env, size_t{1} << 30);
    ASSERT_EQ(0, mdb_env_open(env, (directory / "books.mdb").c_str(), MDB_NOSUBDIR, 0600));
    MDB_txn *txn = nullptr;
    ASSERT_EQ(0, mdb_txn_begin(env, nullptr, 0, &txn));
    MDB_dbi main = 0;
    ASSERT_EQ(0, mdb_dbi_open(txn, nullptr, 0, &main));
    const std::string name = "n:" + table;
    MDB_val key{name.size(), const_cast<char *>(name.data())};
    MDB_val value{};
    ASSERT_EQ(0, mdb_get(txn, main, &key, &value)) << name;
    uint32_t number = 0;
    std::memcpy(&number, value.mv_data, sizeof number);
    char tree[16];
    std::snprintf(tree, sizeof tree, "%08x%s", number, which);
    MDB_dbi dbi = 0;
    ASSERT_EQ(0, mdb_dbi_open(txn, tree, 0, &dbi)) << tree;
    change(txn, dbi);
    ASSERT_EQ(0, mdb_txn_commit(txn));
    mdb_env_close(env);
    testsupport::SumAnew(directory / "books.mdb");
}

void DeleteFirst(MDB_txn *txn, MDB_dbi dbi)
{
    MDB_cursor *cursor = nullptr;
    mdb_cursor_open(txn, dbi, &cursor);
    MDB_val key{};
    MDB_val value{};
    ASSERT_EQ(0, mdb_cursor_get(cursor, &key, &value, MDB_FIRST));
    ASSERT_EQ(0, mdb_cursor_del(cursor, 0));
    mdb_cursor_close(cursor);
}

// Lets the first two entries of an index lead to each other's records.
void SwapFirstTwo(MDB_txn *txn, MDB_dbi dbi)
{
    MDB_cursor *cursor = nullptr;
    mdb_cursor_open(txn, dbi, &cursor);
    MDB_val key{};
    MDB_val value{};
    ASSERT_EQ(0, mdb_cursor_get(cursor, &key, &value, MDB_FIRST));
    const std::string firstKey(static_cast<char *>(key.mv_data), key.mv_size);
    const std::string firstValue(static_cast<char *>(value.mv_data), value.mv_size);
    ASSERT_EQ(0, mdb_cursor_get(cursor, &key, &value, MDB_NEXT));
    const std::string secondKey(static_cast<char *>(key.mv_data), key.mv_size);
    const std::string secondValue(static_cast<char *>(value.mv_data), value.mv_size);
    mdb_cursor_close(cursor);
    const auto put = [&](const std::string &at, const std::string &what) {
        MDB_val k{at.size(), const_cast<char *>(at.data())};
        MDB_val v{what.size(), const_cast<char *>(what.data())};
        ASSERT_EQ(0, mdb_put(txn, dbi, &k, &v, 0));
    };
    put(firstKey, secondValue);
    put(secondKey, firstValue);
}

// ---- Sums of accounts ----

const std::vector<Damage> inSums = {
    {"MonthSoll", "balances and reports are worked out from the month slots",
     [](const GoodBooks &b) {
         b.Change<SakoRecord>(TableSako, "1998", Sako("1840"),
                              [](auto &r) { Nudge(r.Umsaetze.Monat[2].Soll); });
     },
     "sako", "Umsaetze.Monat[2].Soll", "monat"},
    {"MonthHaben", "the other side likewise",
     [](const GoodBooks &b) {
         b.Change<SakoRecord>(TableSako, "1997", Sako("1840"),
                              [](auto &r) { Nudge(r.Umsaetze.Monat[7].Haben); });
     },
     "sako", "Umsaetze.Monat[7].Haben", "monat"},
    {"MonthOfDebitor", "turnover of a customer feeds statistics and the EC return",
     [](const GoodBooks &b) {
         b.Change<PersonalRecord>(TableDebi, "1998", Any<PersonalRecord>(),
                                  [](auto &r) { Nudge(r.Umsaetze.Monat[0].Soll); });
     },
     "debi", "Umsaetze.Monat[0].Soll", "monat"},
    {"CountOfPostings", "account sheets leave out accounts without postings by this count",
     [](const GoodBooks &b) {
         b.Change<SakoRecord>(TableSako, "1998", Sako("1840"), [](auto &r) { ++r.Umsaetze.Buchungszahl[4]; });
     },
     "sako", "Umsaetze.Buchungszahl[4]", "anzahl"},
    {"CountOfKreditor", "the same of a personal account",
     [](const GoodBooks &b) {
         b.Change<PersonalRecord>(TableKred, "19981", Any<PersonalRecord>(),
                                  [](auto &r) { ++r.Umsaetze.Buchungszahl[0]; });
     },
     "kred", "Umsaetze.Buchungszahl[0]", "anzahl"},
    {"OpeningSum", "an opening Bilanz whose sides differ can't be closed",
     [](const GoodBooks &b) {
         b.Change<SakoRecord>(TableSako, "1998", Sako("2010"),
                              [](auto &r) { Nudge(r.Umsaetze.Vortrag.Haben); });
     },
     "sako", "Umsaetze.Vortrag", "vortrag"},
    {"OpeningOfDebitor", "what a customer owed at the year's end must be owed at its begin",
     [](const GoodBooks &b) {
         b.Change<PersonalRecord>(TableDebi, "1998", Any<PersonalRecord>(),
                                  [](auto &r) { Nudge(r.Umsaetze.Vortrag.Soll); });
     },
     "debi", "Umsaetze.Vortrag", "vortrag"},
    {"OpeningOfResultAccount", "revenue and expense begin each year with nothing",
     [](const GoodBooks &b) {
         b.Change<SakoRecord>(TableSako, "1998", Sako("8410"),
                              [](auto &r) { Nudge(r.Umsaetze.Vortrag.Soll); });
     },
     "sako", "Umsaetze.Vortrag", "vortrag"},
    {"OpeningOfNobody", "an opening balance comes from somewhere",
     [](const GoodBooks &b) {
         b.Remove<PersonalRecord>(TableDebi, "1997",
                                  [](auto &r) { return Pfennig(r.Umsaetze.Vortrag.Soll) != 0; });
     },
     "debi", "Umsaetze.Vortrag", "vortrag"},
    {"YearEndSlot", "what the year's end brings is a posting too and has two sides",
     [](const GoodBooks &b) {
         b.Change<SakoRecord>(TableSako, "1997", Sako("7010"), [](auto &r) { Nudge(r.Umsaetze.Slot0.Soll); });
     },
     "sako", "Umsaetze.Slot0", "abschluss"},
};

// ---- Forms ----

const std::vector<Damage> inForms = {
    {"AmountWithLetter", "amounts are added digit by digit",
     [](const GoodBooks &b) {
         b.Change<SakoRecord>(TableSako, "1998", Sako("5390"),
                              [](auto &r) { r.Umsaetze.Slot0.Soll[3] = 'x'; });
     },
     "sako", "Umsaetze.Slot0.Soll", "form"},
    {"AmountWithoutMark", "without its mark nobody knows the sign",
     [](const GoodBooks &b) {
         b.Change<KoreRecord>(TableKore, "1998", Any<KoreRecord>(), [](auto &r) { r.Monat[11][9] = '.'; });
     },
     "kore", "Monat[11]", "form"},
    {"RateWithPoint", "a rate is compared as text",
     [](const GoodBooks &b) {
         b.Change<StekeRecord>(
             TableSteke, "1998", [](auto &r) { return r.Code == 8; }, [](auto &r) { r.Satz[2] = '.'; });
     },
     "steke", "Satz", "form"},
    {"DayThatIsNone", "31 February is no day",
     [](const GoodBooks &b) {
         b.Change<SakoRecord>(TableSako, "1998", Sako("5010"),
                              [](auto &r) { std::memcpy(r.Datum, "310218", 7); });
     },
     "sako", "Datum", "form"},
    {"TextWithoutEnd", "a text that fills its field runs on into the next one",
     [](const GoodBooks &b) {
         b.Change<SakoRecord>(TableSako, "1998", Sako("5010"),
                              [](auto &r) { std::memset(r.Name, 'x', sizeof r.Name); });
     },
     "sako", "Name", "form"},
    {"NumberNotJustified", "accounts are found by their justified number alone",
     [](const GoodBooks &b) {
         b.Replace<KoreRecord>(TableKore, "1998", Any<KoreRecord>(),
                               [](auto &r) { std::memcpy(r.Nummer, "100    ", 8); });
     },
     "kore", "Nummer", "form"},
    {"BankCodeWithLetter", "payment files take digits only",
     [](const GoodBooks &b) {
         b.Change<PersonalRecord>(
             TableDebi, "1998", [](auto &r) { return r.Blz[0] != 0; }, [](auto &r) { r.Blz[1] = 'A'; });
     },
     "debi", "Blz", "form"},
    {"ShareOfTemplate", "a share that can't be read spreads nothing",
     [](const GoodBooks &b) {
         b.Change<KoschazeRecord>(
             TableKoschaze, "1998", [](auto &r) { return r.Nummer == 2; },
             [](auto &r) { std::memcpy(r.Anteil, "abc", 4); });
     },
     "koschaze", "Anteil", "form"},
};

// ---- Master data ----

const std::vector<Damage> inMasterData = {
    {"NameOfAccount", "an account without a name can't be told in a list",
     [](const GoodBooks &b) {
         b.Change<SakoRecord>(TableSako, "1998", Sako("5010"), [](auto &r) { r.Name[0] = 0; });
     },
     "sako", "Name", "name"},
    {"PlaceThatIsNone", "only four places exist for an account",
     [](const GoodBooks &b) {
         b.Change<SakoRecord>(TableSako, "1998", Sako("9110"), [](auto &r) { r.Zuordnung = 3; });
     },
     "sako", "Zuordnung", "zuordnung"},
    {"PlaceOnTheOtherSide", "the Bilanz takes the sign of an amount from the place of its account",
     [](const GoodBooks &b) {
         b.Change<SakoRecord>(TableSako, "1998", Sako("1840"),
                              [](auto &r) { r.Zuordnung = ZuordnungPassiva; });
     },
     "bilaktau", "Text", "zuordnung"},
    {"TaxKeyThatIsNone", "a posting on the account would have no tax",
     [](const GoodBooks &b) {
         b.Change<SakoRecord>(TableSako, "1998", Sako("5010"), [](auto &r) { r.Steuerflags = 6; });
     },
     "sako", "Steuerflags", "steuerschluessel"},
    {"TaxKeyWithoutRate", "a posting on the account would be refused",
     [](const GoodBooks &b) {
         b.Remove<StekeRecord>(TableSteke, "1998", [](auto &r) { return r.Code == 8; });
     },
     "sako", "Steuerflags", "verweis"},
    {"TemplateOfAccount", "a posting on the account would be refused where costs are needed",
     [](const GoodBooks &b) {
         b.Change<SakoRecord>(TableSako, "1998", Sako("8410"), [](auto &r) { r.Kostenschablone = 77; });
     },
     "sako", "Kostenschablone", "verweis"},
    {"BoxOfReturn", "the tax return has boxes of two digits",
     [](const GoodBooks &b) {
         b.Change<SakoRecord>(TableSako, "1998", Sako("5010"), [](auto &r) { r.Kennzahl = -5; });
     },
     "sako", "Kennzahl", "kennzahl"},
    {"BoxThatTheReturnLacks", "what an account adds to no box is missing from the return",
     [](const GoodBooks &b) {
         b.Change<SakoRecord>(TableSako, "1998", Sako("5010"), [](auto &r) { r.Kennzahl = 51; });
     },
     "sako", "Kennzahl", "kennzahl"},
    {"ShortNameTwice", "a short name finds one account",
     [](const GoodBooks &b) {
         b.Change<SakoRecord>(TableSako, "1998", Sako("5010"),
                              [](auto &r) { std::memcpy(r.Kuerzel, "ADLERAPO\0", 10); });
     },
     "debi", "Kuerzel", "kuerzel"},
    {"ShortNameMissing", "an account that is found by its short name needs one",
     [](const GoodBooks &b) {
         b.Change<PersonalRecord>(TableKred, "1998", Any<PersonalRecord>(),
                                  [](auto &r) { std::memset(r.Kuerzel, 0, 10); });
     },
     "kred", "Kuerzel", "kuerzel"},
    {"NumberInTwoTables", "a number without a kind must mean one account",
     [](const GoodBooks &b) {
         PersonalRecord twin{};
         TableFile(LayoutOf(TableDebi), b.Data / "1998", OpenMode::Normal).First(&twin, 0);
         PutKonto(twin.Konto, "5010");
         std::memcpy(twin.Kuerzel, "ZWILLING\0", 10);
         b.Add(TableDebi, "1998", twin);
     },
     "debi", "Konto", "kontonummer"},
    {"ContraAccount", "the account on the other side doesn't exist",
     [](const GoodBooks &b) {
         b.Change<PersonalRecord>(TableDebi, "1998", Any<PersonalRecord>(),
                                  [](auto &r) { PutKonto(r.Gegenkonto, "5999"); });
     },
     "debi", "Gegenkonto", "verweis"},
    {"TermOfPartner", "the date of payment can't be worked out",
     [](const GoodBooks &b) {
         b.Change<PersonalRecord>(TableKred, "1998", Any<PersonalRecord>(),
                                  [](auto &r) { r.Zahlungsziel = 77; });
     },
     "kred", "Zahlungsziel", "verweis"},
    {"BankWithoutAccount", "a bank code alone pays nobody",
     [](const GoodBooks &b) {
         b.Change<PersonalRecord>(
             TableDebi, "1998", [](auto &r) { return r.Blz[0] != 0; },
             [](auto &r) { std::memset(r.Bankkonto, 0, sizeof r.Bankkonto); });
     },
     "debi", "Blz", "bank"},
    {"ReminderOfKreditor", "suppliers are not reminded",
     [](const GoodBooks &b) {
         b.Change<PersonalRecord>(TableKred, "1998", Any<PersonalRecord>(),
                                  [](auto &r) { r.Mahnkennziffer = 2; });
     },
     "kred", "Mahnkennziffer", "mahnkennziffer"},
    {"TaxAccountOfRate", "the tax of a posting would go nowhere",
     [](const GoodBooks &b) {
         b.Change<StekeRecord>(
             TableSteke, "1998", [](auto &r) { return r.Code == 2; },
             [](auto &r) { PutKonto(r.Umsatzsteuerkonto, "2999"); });
     },
     "steke", "Umsatzsteuerkonto", "verweis"},
    {"GapInRates", "older rates are found by counting on",
     [](const GoodBooks &b) {
         b.Remove<StekeRecord>(TableSteke, "1998", [](auto &r) { return r.Code == 2 && r.Folge == 1; });
     },
     "steke", "Folge", "steuersatz"},
    {"RatesOutOfOrder", "the first rate that holds is taken",
     [](const GoodBooks &b) {
         b.Change<StekeRecord>(
             TableSteke, "1998", [](auto &r) { return r.Code == 2 && r.Folge == 1; },
             [](auto &r) { std::memcpy(r.GueltigAb, "010518", 7); });
     },
     "steke", "GueltigAb", "steuersatz"},
    {"TermWithoutText", "a term without words can't be chosen",
     [](const GoodBooks &b) {
         b.Change<ZahlzielRecord>(TableZahlziel, "1998", Any<ZahlzielRecord>(),
                                  [](auto &r) { r.Text[0] = 0; });
     },
     "zahlziel", "Text", "name"},
    {"IntervalOfBatch", "a recurring Stapel comes round after 1 to 99 months",
     [](const GoodBooks &b) {
         b.Change<StapelRecord>(TableStapel, "1998", Any<StapelRecord>(), [](auto &r) { r.Intervall = 120; });
     },
     "stapel", "Intervall", "stapel"},
    {"RateOfNothing", "an amount times nothing is nothing",
     [](const GoodBooks &b) {
         b.Change<KurseRecord>(TableKurse, "1998", Any<KurseRecord>(),
                               [](auto &r) { std::memcpy(r.Kurs, "000000000,00", 13); });
     },
     "kurse", "Kurs", "kurs"},
    {"TwoAverages", "a month has one average rate",
     [](const GoodBooks &b) {
         b.Change<KurseRecord>(
             TableKurse, "1998",
             [](auto &r) { return std::memcmp(r.Waehrung, "USD", 3) == 0 && r.Durchschnitt == 0; },
             [](auto &r) { r.Durchschnitt = 1; });
     },
     "kurse", "Durchschnitt", "kurs"},
    {"UnitOfRate", "the number of units divides the amount",
     [](const GoodBooks &b) {
         b.Change<KurseRecord>(TableKurse, "1998", Any<KurseRecord>(), [](auto &r) { r.Einheit = 7; });
     },
     "kurse", "Einheit", "kurs"},
    {"LinesOfTemplate", "the last line takes what is left, so their number matters",
     [](const GoodBooks &b) {
         b.Change<KoschaRecord>(TableKoscha, "1998", Any<KoschaRecord>(), [](auto &r) { ++r.Zeilen; });
     },
     "koscha", "Zeilen", "schablone"},
    {"SharesOfTemplate", "shares make a hundred",
     [](const GoodBooks &b) {
         b.Change<KoschazeRecord>(
             TableKoschaze, "1998", [](auto &r) { return r.Nummer == 2; },
             [](auto &r) { std::memcpy(r.Anteil, "090,00", 7); });
     },
     "koscha", "Zeilen", "schablone"},
    {"ObjectOfTemplate", "costs would go to a cost centre that doesn't exist",
     [](const GoodBooks &b) {
         b.Change<KoschazeRecord>(TableKoschaze, "1998", Any<KoschazeRecord>(),
                                  [](auto &r) { PutKonto(r.Kostenobjekt1, "999"); });
     },
     "koschaze", "Kostenobjekt1", "verweis"},
};

// ---- Bilanz and GuV ----

const std::vector<Damage> inTrees = {
    {"RootOfTree", "a report without its root fails",
     [](const GoodBooks &b) {
         b.Remove<StructureRecord>(TableGuvauf, "1998", [](auto &r) { return r.Id == 1; });
     },
     "guvauf", "Id", "baum"},
    {"NodeMissing", "a report ends at a missing node",
     [](const GoodBooks &b) {
         b.Change<StructureRecord>(
             TableGuvauf, "1998", [](auto &r) { return r.Id == 5; }, [](auto &r) { r.Next = 4711; });
     },
     "guvauf", "Id", "baum"},
    {"CircleInTree", "a report over a circle never ends",
     [](const GoodBooks &b) {
         b.Change<StructureRecord>(
             TableBilaktau, "1998", [](auto &r) { return r.Id > 5 && r.Next == 0; },
             [](auto &r) { r.Next = 2; });
     },
     "bilaktau", "Id", "baum"},
    {"LooseNode", "what hangs on nothing isn't printed, and the sides differ",
     [](const GoodBooks &b) {
         b.Change<StructureRecord>(
             TableBilpasau, "1998", [](auto &r) { return r.Id > 1 && r.Child != 0; },
             [](auto &r) { r.Child = 0; });
     },
     "bilpasau", "Id", "baum"},
    {"LeafWithoutAccount", "a line of the Bilanz names an account that doesn't exist",
     [](const GoodBooks &b) {
         b.Change<StructureRecord>(
             TableBilaktau, "1998", [](auto &r) { return r.Art == 0 && r.Id > 1; },
             [](auto &r) { std::memcpy(r.Text, "   1009", 8); });
     },
     "bilaktau", "Text", "verweis"},
    {"AccountTwiceInTree", "its amount would count twice",
     [](const GoodBooks &b) {
         b.Change<StructureRecord>(
             TableGuvauf, "1998",
             [](auto &r) { return r.Art == 0 && r.Id > 1 && std::strcmp(r.Text, "   5010") != 0; },
             [](auto &r) { std::memcpy(r.Text, "   5010", 8); });
     },
     "guvauf", "Text", "baum"},
    {"TitleTooLong", "the group line has room for 27 characters",
     [](const GoodBooks &b) {
         b.Change<StructureRecord>(
             TableGuvauf, "1998", [](auto &r) { return r.Id == 2; },
             [](auto &r) { std::memset(r.Text, 'T', 30); });
     },
     "guvauf", "Text", "baum"},
    {"SecondHomeWithoutFirst", "a Gegenposten is the second home of an account",
     [](const GoodBooks &b) {
         b.Change<StructureRecord>(
             TableBilaktau, "1998", [](auto &r) { return (r.Art & StructureGegenposten) != 0; },
             [](auto &r) { std::memcpy(r.Text, "   2910", 8); });
         b.Remove<StructureRecord>(TableBilpasau, "1998",
                                   [](auto &r) { return std::strcmp(r.Text, "   2910") == 0; });
     },
     "bilaktau", "Art", "baum"},
    {"AccountWithoutPlace", "an account that no list holds is missing from the Bilanz",
     [](const GoodBooks &b) {
         b.Remove<StructureRecord>(TableGuvauf, "1998", [](auto &r) { return r.Id == 0; });
     },
     "sako", "Zuordnung", "zuordnung"},
    {"RootThatIsNoGroup", "a report takes the root for a group",
     [](const GoodBooks &b) {
         b.Change<StructureRecord>(
             TableGuvauf, "1998", [](auto &r) { return r.Id == 1; }, [](auto &r) { r.Art = 0; });
     },
     "guvauf", "Art", "baum"},
    {"NodeBesideTheRoot", "what stands beside the root has no place in a Bilanz",
     [](const GoodBooks &b) {
         b.Change<StructureRecord>(
             TableBilaktau, "1998", [](auto &r) { return r.Id == 1; }, [](auto &r) { r.Next = 2; });
     },
     "bilaktau", "Next", "baum"},
    {"LeafNotJustified", "a leaf is looked up by its number as it stands",
     [](const GoodBooks &b) {
         b.Change<StructureRecord>(
             TableBilpasau, "1998", [](auto &r) { return r.Art == StructureGegenposten; },
             [](auto &r) { std::memcpy(r.Text, "1610\0\0\0", 8); });
     },
     "bilpasau", "Text", "baum"},
    {"SecondHomeTwice", "a negative balance would be printed twice",
     [](const GoodBooks &b) {
         std::string number;
         b.Change<StructureRecord>(
             TableBilpasau, "1998", [](auto &r) { return r.Art == StructureGegenposten; },
             [&](auto &r) { number = r.Text; });
         b.Change<StructureRecord>(
             TableBilpasau, "1998",
             [&](auto &r) { return r.Art == StructureGegenposten && number != r.Text; },
             [&](auto &r) { std::memcpy(r.Text, number.c_str(), 8); });
     },
     "bilpasau", "Text", "baum"},
    {"GroupWithoutTitle", "a sum that nobody can name",
     [](const GoodBooks &b) {
         b.Change<StructureRecord>(
             TableGuvauf, "1998", [](auto &r) { return r.Id == 2; }, [](auto &r) { r.Text[0] = 0; });
     },
     "guvauf", "Text", "name"},
    {"GroupOutsideTheTree", "what has no node is a single account",
     [](const GoodBooks &b) {
         b.Change<StructureRecord>(
             TableGuvauf, "1998", [](auto &r) { return r.Id == 0; }, [](auto &r) { r.Child = 3; });
     },
     "guvauf", "Art", "baum"},
    {"ChildOfAccount", "an account has no lines below it",
     [](const GoodBooks &b) {
         b.Change<StructureRecord>(
             TableGuvauf, "1998", [](auto &r) { return r.Art == 0 && r.Id > 1; },
             [](auto &r) { r.Child = 2; });
     },
     "guvauf", "Child", "baum"},
};

// ---- Final postings ----

const std::vector<Damage> inPostings = {
    {"SollIsNotHaben", "every posting has two equal sides",
     [](const GoodBooks &b) {
         b.Change<BubeRecord>(TableBube, "1998", IsPlainUntaxed, [](auto &r) { Nudge(r.Haben); });
     },
     "bube", "Haben", "soll-haben"},
    {"TaxIsNotTheDifference", "gross is net and tax",
     [](const GoodBooks &b) {
         b.Change<BubeRecord>(
             TableBube, "1998",
             [](auto &r) { return IsPlainTaxed(r) && (r.Steuerflags & BubeSteuerPlus) != 0; },
             [](auto &r) { Nudge(r.Steuer); });
     },
     "bube", "Soll", "soll-haben"},
    {"AccountOfPosting", "a posting on an account that doesn't exist is lost",
     [](const GoodBooks &b) {
         b.Change<BubeRecord>(TableBube, "1998", IsPlainUntaxed,
                              [](auto &r) { PutKonto(r.Sollkonto, "4999"); });
     },
     "bube", "Sollkonto", "verweis"},
    {"TaxAccountOfPosting", "the tax is lost",
     [](const GoodBooks &b) {
         b.Change<BubeRecord>(TableBube, "1998", IsPlainTaxed,
                              [](auto &r) { PutKonto(r.Steuerkonto, "2999"); });
     },
     "bube", "Steuerkonto", "verweis"},
    {"TaxWithoutAccount", "tax that stands on no account is owed to nobody",
     [](const GoodBooks &b) {
         b.Change<BubeRecord>(TableBube, "1998", IsPlainTaxed,
                              [](auto &r) { std::memset(r.Steuerkonto, 0, sizeof r.Steuerkonto); });
     },
     "bube", "Steuer", "steuer"},
    {"SideOfTax", "the tax account's side is told by this flag",
     [](const GoodBooks &b) {
         b.Change<BubeRecord>(TableBube, "1998", IsPlainTaxed, [](auto &r) { r.Steuerflags = 6; });
     },
     "bube", "Steuerflags", "steuer"},
    {"BaseOfTax", "the return is worked out from the base",
     [](const GoodBooks &b) {
         b.Change<BubeRecord>(TableBube, "1998", IsPlainTaxed, [](auto &r) { Nudge(r.Grundbetrag); });
     },
     "bube", "Grundbetrag", "steuer"},
    {"RateOfPosting", "a rate that the key never had",
     [](const GoodBooks &b) {
         b.Change<BubeRecord>(TableBube, "1998", IsPlainTaxed,
                              [](auto &r) { std::memcpy(r.Steuersatz, "11,00", 6); });
     },
     "bube", "Steuersatz", "verweis"},
    {"DateOfPosting", "the date shown is not the one it is sorted by",
     [](const GoodBooks &b) {
         b.Change<BubeRecord>(TableBube, "1998", IsPlainUntaxed, [](auto &r) {
             std::memcpy(r.Datum, "010118", 7);
             r.Datum[1] = '2';
         });
     },
     "bube", "Datum", "datum"},
    {"PostingOfAnotherYear", "a year's directory holds that year",
     [](const GoodBooks &b) {
         b.Change<BubeRecord>(TableBube, "1998", IsPlainUntaxed,
                              [](auto &r) { std::memcpy(r.Buchungsdatum, "170101", 7); });
     },
     "bube", "Buchungsdatum", "datum"},
    {"UserOfPosting", "who made a posting must be known",
     [](const GoodBooks &b) {
         b.Change<BubeRecord>(TableBube, "1998", Any<BubeRecord>(),
                              [](auto &r) { std::memcpy(r.Benutzer, "QQQ", 4); });
     },
     "bube", "Benutzer", "verweis"},
    {"PostingGone", "the slots hold what no posting tells",
     [](const GoodBooks &b) {
         b.Remove<BubeRecord>(TableBube, "1998",
                              [](auto &r) { return IsPlainUntaxed(r) && IsKonto(r.Habenkonto, "1840"); });
     },
     "sako", "Umsaetze.Monat[0].Haben", "monat"},
    {"PostingTakenOutOfTheMonth", "a posting with this flag is in no month slot",
     [](const GoodBooks &b) {
         b.Change<BubeRecord>(
             TableBube, "1998", [](auto &r) { return IsPlainUntaxed(r) && IsKonto(r.Habenkonto, "1840"); },
             [](auto &r) { r.Status |= BubeNichtImMonat; });
     },
     "sako", "Umsaetze.Monat[0].Haben", "monat"},
    {"NumberOfPosting", "journals and cost lines find a posting by its number",
     [](const GoodBooks &b) {
         b.Replace<BubeRecord>(TableBube, "1998", IsPlainUntaxed, [](auto &r) { r.Buchungsnummer = -1; });
     },
     "bube", "Buchungsnummer", "nummer"},
    {"PartsOfSplit", "the journal counts on by this number",
     [](const GoodBooks &b) {
         b.Change<BubeRecord>(
             TableBube, "1998", [](auto &r) { return r.Anzahl > 0; }, [](auto &r) { ++r.Anzahl; });
     },
     "bube", "Anzahl", "split"},
    {"SplitWithoutHead", "parts without a head are not printed",
     [](const GoodBooks &b) {
         b.Remove<BubeRecord>(TableBube, "1998", [](auto &r) { return (r.Status & BubeSplitAnfang) != 0; });
     },
     "bube", "Status", "split"},
    {"MainAccountOfSplit", "all parts share the account of one side",
     [](const GoodBooks &b) {
         b.Change<BubeRecord>(
             TableBube, "1998",
             [](auto &r) { return IsSplit(r) && (r.Status & BubeSplitSoll) != 0 && r.Anzahl == 0; },
             [](auto &r) { PutKonto(r.Sollkonto, "8590"); });
     },
     "bube", "Sollkonto", "split"},
};

// ---- Costs ----

const std::vector<Damage> inCosts = {
    {"CostLineGone", "a cost centre holds what no line tells",
     [](const GoodBooks &b) {
         b.Remove<KobuRecord>(TableKobu, "1998", [](auto &r) { return r.FinaleBuchung != 0; });
     },
     "kore", "Monat[0]", "kosten"},
    {"AmountOfCostLine", "costs are what the posting is without its tax",
     [](const GoodBooks &b) {
         b.Change<KobuRecord>(
             TableKobu, "1998", [](auto &r) { return r.FinaleBuchung != 0; },
             [](auto &r) { Nudge(r.Betrag); });
     },
     "kobu", "Betrag", "kosten"},
    {"MonthOfCostCentre", "the cost lists print the month as it stands",
     [](const GoodBooks &b) {
         b.Change<KoreRecord>(TableKore, "1998", Any<KoreRecord>(), [](auto &r) { Nudge(r.Monat[3]); });
     },
     "kore", "Monat[3]", "kosten"},
    {"ObjectOfCostLine", "costs on a cost centre that doesn't exist",
     [](const GoodBooks &b) {
         b.Change<KobuRecord>(
             TableKobu, "1998", [](auto &r) { return r.FinaleBuchung != 0; },
             [](auto &r) { PutKonto(r.Kostenobjekt1, "999"); });
     },
     "kobu", "Kostenobjekt1", "verweis"},
    {"PostingOfCostLine", "the cost journal ends at a line without its posting",
     [](const GoodBooks &b) {
         b.Change<KobuRecord>(
             TableKobu, "1998", [](auto &r) { return r.FinaleBuchung != 0; },
             [](auto &r) { r.FinaleBuchung = 999999; });
     },
     "kobu", "FinaleBuchung", "verweis"},
    {"AccountOfCostLine", "the distribution of costs goes by account",
     [](const GoodBooks &b) {
         b.Change<KobuRecord>(
             TableKobu, "1998", [](auto &r) { return r.FinaleBuchung != 0; },
             [](auto &r) { PutKonto(r.Konto, "8590"); });
     },
     "kobu", "Konto", "kosten"},
    {"DateOfCostLine", "the cost journal goes by the line's own date",
     [](const GoodBooks &b) {
         b.Change<KobuRecord>(
             TableKobu, "1998", [](auto &r) { return r.FinaleBuchung != 0; },
             [](auto &r) { std::memcpy(r.Datum, "181224", 7); });
     },
     "kobu", "Datum", "datum"},
};

// ---- Open items ----

const std::vector<Damage> inOpenItems = {
    {"AmountOfOpenItem", "what is open is what the account owes",
     [](const GoodBooks &b) {
         b.Change<OpenItemRecord>(TableOpdebi, "1998", Any<OpenItemRecord>(),
                                  [](auto &r) { Nudge(r.Betrag1); });
     },
     "opdebi", "Betrag1", "offene-posten"},
    {"OpenItemGone", "an invoice that nobody asks for",
     [](const GoodBooks &b) { b.Remove<OpenItemRecord>(TableOpkred, "1998", Any<OpenItemRecord>()); },
     "opkred", "Betrag1", "offene-posten"},
    {"AccountOfOpenItem", "an item of nobody",
     [](const GoodBooks &b) {
         b.Change<OpenItemRecord>(TableOpdebi, "1998", Any<OpenItemRecord>(),
                                  [](auto &r) { PutKonto(r.Konto, "19999"); });
     },
     "opdebi", "Konto", "verweis"},
    {"TermBeforeInvoice", "due before it was written",
     [](const GoodBooks &b) {
         b.Change<OpenItemRecord>(TableOpdebi, "1998", Any<OpenItemRecord>(),
                                  [](auto &r) { std::memcpy(r.Termin, "150101", 7); });
     },
     "opdebi", "Termin", "datum"},
};

// ---- Stapel ----

const std::vector<Damage> inBatches = {
    {"BatchOfBooking", "a booking in a Stapel that doesn't exist is never made final",
     [](const GoodBooks &b) {
         b.Change<BatRecord>(TableBat, "1998", Any<BatRecord>(), [](auto &r) { r.Stapel = 99; });
     },
     "bat", "Stapel", "verweis"},
    {"KindOfAccount", "the kind decides where the account is looked for",
     [](const GoodBooks &b) {
         b.Change<BatRecord>(TableBat, "1998", Any<BatRecord>(),
                             [](auto &r) { r.Teil.SollArt = BuchungKreditor; });
     },
     "bat", "Teil.Sollkonto", "kontoart"},
    {"PartsOfBooking", "parts are counted by this number",
     [](const GoodBooks &b) {
         b.Change<BatRecord>(TableBat, "1998", Any<BatRecord>(), [](auto &r) { r.Anzahl = 3; });
     },
     "bat", "Anzahl", "split"},
    {"SignOfNet", "a net amount of the other sign turns the booking round",
     [](const GoodBooks &b) {
         b.Change<BatRecord>(TableBat, "1998", Any<BatRecord>(), [](auto &r) { r.Teil.Netto[9] = '-'; });
     },
     "bat", "Teil.Netto", "soll-haben"},
    {"RateOfBooking", "the rate that was chosen must exist",
     [](const GoodBooks &b) {
         b.Change<BatRecord>(TableBat, "1998", Any<BatRecord>(), [](auto &r) { r.Teil.Steuerfolge = 9; });
     },
     "bat", "Teil.Steuerfolge", "verweis"},
    {"CostLinesOfBooking", "cost lines are counted by this number",
     [](const GoodBooks &b) {
         b.Change<BatRecord>(TableBat, "1998", Any<BatRecord>(), [](auto &r) { ++r.Teil.Kostenzeilen; });
     },
     "bat", "Teil.Kostenzeilen", "kosten"},
    {"DatesOfBooking", "cost lines take the second date",
     [](const GoodBooks &b) {
         b.Change<BatRecord>(TableBat, "1998", Any<BatRecord>(),
                             [](auto &r) { std::memcpy(r.ZweitesDatum, "160418", 7); });
     },
     "bat", "ZweitesDatum", "datum"},
    {"BookingOfAClosedYear", "it can never be made final",
     [](const GoodBooks &b) {
         b.Change<BatRecord>(TableBat, "1998", Any<BatRecord>(), [](auto &r) {
             std::memcpy(r.Buchungsdatum, "150416", 7);
             std::memcpy(r.ZweitesDatum, "150416", 7);
         });
     },
     "bat", "Buchungsdatum", "datum"},
    {"TermOfBooking", "the date of payment can't be worked out",
     [](const GoodBooks &b) {
         b.Change<BatRecord>(TableBat, "1998", Any<BatRecord>(), [](auto &r) { r.Zahlungsziel = 77; });
     },
     "bat", "Zahlungsziel", "verweis"},
    {"PartWithoutBooking", "a part that belongs to no booking",
     [](const GoodBooks &b) {
         SplitRecord part{};
         part.Buchungsnummer = 4711;
         b.Add(TableSplit, "1998", part);
     },
     "split", "Buchungsnummer", "verweis"},
    {"CostsOfNoBooking", "a cost line whose booking is gone",
     [](const GoodBooks &b) {
         b.Change<KobuRecord>(
             TableKobu, "1998", [](auto &r) { return r.Buchungsnummer != 0; },
             [](auto &r) { r.Buchungsnummer = 4711; });
     },
     "kobu", "Buchungsnummer", "verweis"},
};

// ---- Mandanten and directories ----

const std::vector<Damage> inDirectories = {
    {"CollectiveAccount", "the account sheet looks for it",
     [](const GoodBooks &b) {
         b.Change<FistaRecord>(TableFista, "", Any<FistaRecord>(),
                               [](auto &r) { PutKonto(r.Sammelkonto1, "1599"); });
     },
     "fista", "Sammelkonto1", "verweis"},
    {"FirstMonth", "every date hangs on it",
     [](const GoodBooks &b) {
         b.Change<FistaRecord>(
             TableFista, "", [](auto &r) { return r.Nummer == 3; }, [](auto &r) { r.FirstFiscalMonth = 13; });
     },
     "fista", "FirstFiscalMonth", "mandant"},
    {"YearsOfMandant", "no year could be posted to",
     [](const GoodBooks &b) {
         b.Change<FistaRecord>(
             TableFista, "", [](auto &r) { return r.Nummer == 2; },
             [](auto &r) { std::memcpy(r.LowerYear, "1999", 5); });
     },
     "fista", "LowerYear", "mandant"},
    {"DirectoryGone", "the year that is posted to is missing",
     [](const GoodBooks &b) { fs::remove_all(b.Data / "19981"); }, "fista", "UpperYear", "verzeichnis"},
    {"DirectoryOfNobody", "books that no Mandant reaches",
     [](const GoodBooks &b) { fs::copy(b.Data / "1998", b.Data / "19987"); }, "", "", "verzeichnis"},
};

// ---- Files ----

const std::vector<Damage> inFiles = {
    {"RecordLength", "every record would be read askew",
     [](const GoodBooks &b) {
         TableLayout other = LayoutOf(TableBank);
         other.RecordLength = 60;
         MakeTableAnew(other, b.Data / "1998");
     },
     "bank", "", "definition"},
    {"KeyMissing", "a search by this key fails",
     [](const GoodBooks &b) {
         TableLayout other = LayoutOf(TableBat);
         other.Keys.pop_back();
         MakeTableAnew(other, b.Data / "19982");
     },
     "bat", "Schlüssel 1", "definition"},
    {"KeyOfAnotherKind", "records come in another order",
     [](const GoodBooks &b) {
         TableLayout other = LayoutOf(TableBat);
         other.Keys[1].Segments[0].Type = KeyType::Unsigned;
         MakeTableAnew(other, b.Data / "19982");
     },
     "bat", "Schlüssel 1", "definition"},
    {"IndexEntryGone", "the account isn't found by its short name any more",
     [](const GoodBooks &b) { WithTree(b.Data / "1998", "sako.btr", "i01", DeleteFirst); }, "sako",
     "Schlüssel 1", "index"},
    {"IndexEntriesSwapped", "a search by number gives another account",
     [](const GoodBooks &b) { WithTree(b.Data / "1998", "debi.btr", "i00", SwapFirstTwo); }, "debi",
     "Schlüssel 0", "index"},
    {"RecordGoneFromUnderItsIndex", "a search finds an entry and no record",
     [](const GoodBooks &b) { WithTree(b.Data / "1998", "kore.btr", "t", DeleteFirst); }, "kore",
     "Schlüssel 0", "index"},
    {"FileCutOff", "a disk that was full",
     [](const GoodBooks &b) {
         // Its second half might hold free pages alone.
         fs::resize_file(b.Data / "1998" / "books.mdb", 40960);
     },
     "", "", "lesbar"},
    {"FileOfSomethingElse", "a file that was copied over it",
     [](const GoodBooks &b) {
         std::ofstream(b.Data / "1998" / "books.mdb", std::ios::binary | std::ios::trunc)
             << std::string(8192, 'x');
     },
     "", "", "lesbar"},
    {"PagesOverwritten", "a bad sector; the check must live through it",
     [](const GoodBooks &b) {
         std::fstream file(b.Data / "1998" / "books.mdb", std::ios::binary | std::ios::in | std::ios::out);
         const auto size = static_cast<std::streamoff>(fs::file_size(b.Data / "1998" / "books.mdb"));
         constexpr std::streamoff page = 4096;
         for (std::streamoff at = 4 * page; at + page <= size; at += 3 * page) {
             file.seekp(at);
             file << std::string(4096, '\xEE');
         }
     },
     "", "", "lesbar"},
};

// ---- What programs take as it comes ----

const std::vector<Damage> asRemarks = {
    {"ControlCharacter", "a line break in a name breaks every list",
     [](const GoodBooks &b) {
         b.Change<PersonalRecord>(TableDebi, "1998", Any<PersonalRecord>(),
                                  [](auto &r) { r.Name1[2] = '\n'; });
     },
     "debi", "Name1", "form"},
    {"CurrencyWithoutRate", "a posting on the account couldn't be converted",
     [](const GoodBooks &b) {
         b.Change<PersonalRecord>(TableKred, "1998", Any<PersonalRecord>(),
                                  [](auto &r) { std::memcpy(r.Waehrung, "XYZ", 4); });
     },
     "kred", "Waehrung", "verweis"},
    {"CountryOfPartner", "the return for the Community goes by these letters",
     [](const GoodBooks &b) {
         b.Change<PersonalRecord>(
             TableDebi, "1998", [](auto &r) { return r.UstId[0] != 0; },
             [](auto &r) { std::memcpy(r.UstId, "40817263", 9); });
     },
     "debi", "UstId", "ustid"},
    {"CountryOfMandant", "everybody would count as a customer abroad",
     [](const GoodBooks &b) {
         b.Change<FistaRecord>(TableFista, "", Any<FistaRecord>(),
                               [](auto &r) { std::memcpy(r.UstId, "811", 4); });
     },
     "fista", "UstId", "ustid"},
    {"AccountOfBlanks", "an account may be made with an empty number",
     [](const GoodBooks &b) {
         b.Replace<KoreRecord>(
             TableKore, "1998", [](auto &r) { return IsKonto(r.Nummer, "600"); },
             [](auto &r) { std::memset(r.Nummer, ' ', accountDigits); });
     },
     "kore", "Nummer", "form"},
    {"AccountWithoutDigits", "or with a number that is none",
     [](const GoodBooks &b) {
         b.Replace<KoreRecord>(
             TableKore, "1998", [](auto &r) { return IsKonto(r.Nummer, "600"); },
             [](auto &r) { PutKonto(r.Nummer, "HAUS"); });
     },
     "kore", "Nummer", "form"},
    {"AccountWithBlank", "or with two words",
     [](const GoodBooks &b) {
         b.Replace<KoreRecord>(
             TableKore, "1998", [](auto &r) { return IsKonto(r.Nummer, "600"); },
             [](auto &r) { PutKonto(r.Nummer, "6 0"); });
     },
     "kore", "Nummer", "form"},
};

std::vector<Damage> EveryDamage()
{
    std::vector<Damage> all;
    for (const auto *group : {&inSums, &inForms, &inMasterData, &inTrees, &inPostings, &inCosts, &inOpenItems,
                              &inBatches, &inDirectories, &inFiles}) {
        all.insert(all.end(), group->begin(), group->end());
    }
    return all;
}

struct CheckFinds : testing::TestWithParam<Damage> {};
struct CheckRemarks : testing::TestWithParam<Damage> {};

} // namespace

namespace {

// Damages good books; whether the check lists it under `list`.
void ExpectListed(const Damage &damage, int exitCode, const char *list)
{
    const GoodBooks books;
    damage.Do(books);
    StopEngine();
    const Result result = tests::Books({"pruefen", books.Books.string(), "--json"});
    EXPECT_EQ(exitCode, result.ExitCode) << result.Err << result.Out;
    rapidjson::Document json;
    json.Parse(result.Out.c_str());
    ASSERT_FALSE(json.HasParseError()) << result.Out;
    bool isFound = false;
    for (const auto &finding : json[list].GetArray()) {
        const bool isTable =
            *damage.Table == 0 || std::string(damage.Table) == finding["tabelle"].GetString();
        const bool isField = *damage.Field == 0 || std::string(damage.Field) == finding["feld"].GetString();
        if (isTable && isField && std::string(damage.Rule) == finding["regel"].GetString()) isFound = true;
    }
    EXPECT_TRUE(isFound) << result.Out;
}

} // namespace

TEST_P(CheckFinds, Damage) { ExpectListed(GetParam(), 1, "abweichungen"); }

TEST_P(CheckRemarks, OnWhatIsTakenAsItComes) { ExpectListed(GetParam(), 0, "hinweise"); }

INSTANTIATE_TEST_SUITE_P(EveryKind, CheckRemarks, testing::ValuesIn(asRemarks),
                         [](const auto &one) { return std::string(one.param.Name); });

INSTANTIATE_TEST_SUITE_P(EveryKind, CheckFinds, testing::ValuesIn(EveryDamage()),
                         [](const auto &one) { return std::string(one.param.Name); });

TEST(CheckBooks, GoodBooksGiveNoFinding)
{
    const GoodBooks books;
    const Result result = tests::Books({"pruefen", books.Books.string()});
    EXPECT_EQ(0, result.ExitCode) << result.Out;
    EXPECT_TRUE(result.Out.ends_with(" Sätze in 7 Verzeichnissen gelesen: alles stimmt überein.\n"))
        << result.Out;
    // The data path itself will do as well.
    EXPECT_EQ(0, tests::Books({"pruefen", books.Data.string()}).ExitCode);
}

TEST(CheckBooks, NothingIsConcludedFromATableThatCannotBeRead)
{
    // Users, Stapel and rates stand in the last year; the year before refers to them.
    const GoodBooks books;
    std::ofstream(books.Data / "1998" / "books.mdb", std::ios::binary | std::ios::trunc)
        << std::string(8192, 'x');
    const Result result = tests::Books({"pruefen", books.Books.string(), "--json"});
    EXPECT_EQ(1, result.ExitCode);
    rapidjson::Document json;
    json.Parse(result.Out.c_str());
    ASSERT_FALSE(json.HasParseError()) << result.Out;
    EXPECT_GT(json["abweichungen"].Size(), 0u);
    for (const auto &finding : json["abweichungen"].GetArray()) {
        EXPECT_STREQ("lesbar", finding["regel"].GetString()) << finding["text"].GetString();
        EXPECT_NE(nullptr, std::strstr(finding["text"].GetString(), "/1998/")) << finding["text"].GetString();
    }
}

TEST(CheckBooks, BooksThatAnotherLoadsAreNoFaultyBooks)
{
    const GoodBooks books;
    const TableFile held(LayoutOf(TableSako), books.Data / "1998", OpenMode::Accelerated);
    const Result result = tests::Books({"pruefen", books.Books.string()});
    EXPECT_EQ(3, result.ExitCode);
    EXPECT_EQ("", result.Out);
    EXPECT_NE(std::string::npos, result.Err.find("die Datei ist in einer anderen Anwendung geöffnet"))
        << result.Err;
}

TEST(CheckBooks, RemarksAreCountedApart)
{
    const GoodBooks books;
    books.Change<PersonalRecord>(TableDebi, "1998", Any<PersonalRecord>(),
                                 [](auto &r) { r.Name1[2] = '\n'; });
    StopEngine();
    const Result result = tests::Books({"pruefen", books.Books.string()});
    EXPECT_EQ(0, result.ExitCode);
    EXPECT_NE(std::string::npos,
              result.Out.find("Hinweis: 1998/debi [10010] Name1: der Text enthält ein Steuerzeichen: „"))
        << result.Out;
    EXPECT_TRUE(result.Out.ends_with(" gelesen: alles stimmt überein, 1 Hinweis.\n")) << result.Out;
}

TEST(CheckBooks, ATreeThatIsTooDeepForAReportIsToldAndNotFollowed)
{
    const GoodBooks books;
    {
        constexpr int32_t first = 5000;
        constexpr int32_t levels = 50000;
        TableFile table(LayoutOf(TableGuvauf), books.Data / "1998", OpenMode::Accelerated);
        EngineTransaction transaction;
        StructureRecord group{};
        group.Art = StructureGruppe;
        std::memcpy(group.Text, "tief", 5);
        for (int32_t i = 0; i < levels; ++i) {
            group.Id = first + i;
            group.Child = i + 1 < levels ? first + i + 1 : 0;
            table.Insert(&group);
        }
        StructureRecord root{};
        ASSERT_TRUE(table.Equal(&root, &structureRoot, 0));
        root.Child = first;
        table.Update(&root);
        transaction.Finish();
    }
    StopEngine();
    const Result result = tests::Books({"pruefen", books.Books.string(), "--hoechstens", "200"});
    EXPECT_EQ(1, result.ExitCode);
    EXPECT_NE(std::string::npos, result.Out.find("guvauf [5100] Id: der Baum ist tiefer als 100 Ebenen"))
        << result.Out.substr(0, 4000);
    EXPECT_EQ(std::string::npos, result.Out.find("abgebrochen")) << result.Out.substr(0, 4000);
}

TEST(CheckBooks, NegativeNumbersStandBeforeTheOthersInAnIndex)
{
    const GoodBooks books;
    ZahlzielRecord record{};
    record.Nummer = -5;
    std::memcpy(record.Text, "x", 2);
    books.Add(TableZahlziel, "1998", record);
    StopEngine();
    EXPECT_EQ(0, tests::Books({"pruefen", books.Books.string()}).ExitCode);
}

TEST(CheckBooks, ManyFindingsOfOneKindAreCounted)
{
    const GoodBooks books;
    {
        TableFile table(LayoutOf(TableBube), books.Data / "1997", OpenMode::Normal);
        BubeRecord record{};
        for (bool found = table.First(&record, 0); found; found = table.Next(&record, 0)) {
            std::memcpy(record.Benutzer, "QQQ", 4);
            table.Update(&record);
        }
    }
    StopEngine();
    const Result result = tests::Books({"pruefen", books.Books.string(), "--hoechstens", "2"});
    EXPECT_EQ(1, result.ExitCode);
    EXPECT_NE(std::string::npos,
              result.Out.find("1997/bube [1701010001] Benutzer: den Benutzer QQQ gibt es nicht\n"))
        << result.Out;
    EXPECT_NE(std::string::npos, result.Out.find(" weitere der Art „verweis“\n")) << result.Out;
}

TEST(CheckBooks, WhatIsNoInstallationIsRefused)
{
    const TemporaryDirectory directory;
    const Result result = tests::Books({"pruefen", directory.Path.string()});
    EXPECT_EQ(3, result.ExitCode);
    EXPECT_NE(std::string::npos, result.Err.find("liegen keine Bücher")) << result.Err;
}
