#include "tools/books/check_year.h"

#include "src/values/amounts.h"
#include "tools/books/check_tables.h"
#include "tools/common/calendar.h"
#include "tools/common/terminal.h"
#include "tools/common/texts.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <set>
#include <unordered_map>

namespace books {

namespace fs = std::filesystem;
using namespace tools;
using namespace vark;

namespace {

// A year's table of an account has no more than this in a count.
constexpr int32_t countMax = 32767;

// Tables from here on stand in the directory of the last postable year only; older years keep theirs unused.
constexpr TableId firstOfLastYear = TableBat;

int64_t Pfennig(const AmountText &field)
{
    return field[0] != 0 && field[amountMark] == '-' ? -MagnitudeOf(field) : MagnitudeOf(field);
}

std::string Money(int64_t pfennig)
{
    AmountText field{};
    if (!AmountOfMagnitude(field, pfennig < 0 ? -pfennig : pfennig, pfennig < 0))
        return Grouped(pfennig) + " Pfennig";
    FormattedAmount text{};
    std::memcpy(text, field, sizeof field);
    GroupAmount(text);
    return text;
}

uint64_t Packed(const AccountNumber &number)
{
    uint64_t packed;
    std::memcpy(&packed, number, sizeof packed);
    return packed;
}

std::string Konto(const AccountNumber &number) { return std::string(Trimmed(FieldText(number))); }

bool IsEmpty(const AccountNumber &number) { return number[0] == 0; }

struct Turnover {
    int64_t Soll = 0;
    int64_t Haben = 0;
};

enum class AccountKind : uint8_t { Sachkonto, Kreditor, Debitor };

struct AccountState {
    AccountKind Kind;
    uint64_t Key; // the number's eight bytes
    std::string Number;
    int16_t Zuordnung;
    int64_t VortragBalance;
    Turnover Recorded[12], Posted[12];
    Turnover Slot0;
    int32_t RecordedCount[12], PostedCount[12];

    int64_t Balance() const
    {
        int64_t balance = VortragBalance + Slot0.Soll - Slot0.Haben;
        for (const Turnover &month : Recorded) {
            balance += month.Soll - month.Haben;
        }
        return balance;
    }
};

struct Rate {
    int Sequence;
    bool IsOpen; // valid since ever
    Day From;
    int Percent; // hundredths
    uint64_t Umsatzsteuerkonto, Vorsteuerkonto;
};

struct CostState {
    std::string Number;
    int64_t Recorded[12];
    int64_t Posted[12];
};

struct Node {
    StructureRecord Record;
    bool IsReached;
};

struct Tree {
    TableId Id;
    int16_t Zuordnung;
    std::map<int32_t, Node> Nodes;
    std::vector<std::string> Outside;      // accounts of records with Id 0
    std::map<std::string, int> Leaves;     // accounts by how often they have an ordinary leaf
    std::map<std::string, int32_t> Second; // accounts with a Gegenposten leaf, and its node
};

// What a posting of a split needs of the lines before it.
struct SplitState {
    int Expected = 0; // lines that are still to come
    uint16_t Side = 0;
    uint64_t MainAccount = 0;
    std::string Head;
    std::string Day;
};

const char *KindName(AccountKind kind)
{
    switch (kind) {
    case AccountKind::Sachkonto: return "sako";
    case AccountKind::Kreditor: return "kred";
    case AccountKind::Debitor: return "debi";
    }
    return "";
}

struct YearCheck {
    Findings &Out;
    const fs::path &Data;
    const Mandant &Of;
    int Year;
    fs::path Directory;     // of this year
    fs::path LastDirectory; // of the last postable year
    bool IsLastYear;

    std::unordered_map<uint64_t, size_t> AccountOf;
    std::vector<AccountState> Accounts;
    std::unordered_map<uint64_t, size_t> CostOf;
    std::vector<CostState> Costs;
    std::map<int, std::vector<Rate>> Rates; // by code, in the order of their sequence numbers
    std::set<int32_t> Templates, Terms, Batches;
    std::set<std::string> Users, Currencies;
    std::map<int32_t, int> TemplateLines; // as the head says
    std::set<std::string> ShortNames;

    YearCheck(Findings &findings, const fs::path &data, const Mandant &mandant, int year)
        : Out(findings), Data(data), Of(mandant), Year(year),
          Directory(data / mandant.Directory(std::to_string(year))),
          LastDirectory(data / mandant.Directory(mandant.UpperYear)),
          IsLastYear(std::to_string(year) == mandant.UpperYear)
    {}

    void Tell(std::string_view rule, std::string_view table, std::string_view key, std::string_view field,
              std::string_view text)
    {
        Out.Tell(rule, table, key, field, text);
    }

    template <typename Record, typename Visit> bool Check(TableId id, Visit visit)
    {
        return CheckTable(Out, LayoutOf(id), Directory, Of.FirstMonth, [&](const char *bytes) {
            Record record;
            std::memcpy(&record, bytes, sizeof record);
            visit(record);
        });
    }

    // Reads a table that stands in the last year's directory, without checking it: that is done there.
    template <typename Record, typename Visit> void ReadLast(TableId id, Visit visit)
    {
        try {
            TableFile table(LayoutOf(id), LastDirectory, OpenMode::ReadOnly);
            Record record{};
            for (bool found = table.StepFirst(&record); found; found = table.StepNext(&record)) {
                visit(record);
            }
        } catch (const EngineError &) {
            // Told where that directory is checked.
        }
    }

    AccountState *Find(const AccountNumber &number)
    {
        const auto found = AccountOf.find(Packed(number));
        return found != AccountOf.end() ? &Accounts[found->second] : nullptr;
    }

    bool IsSachkonto(const AccountNumber &number)
    {
        const AccountState *account = Find(number);
        return account != nullptr && account->Kind == AccountKind::Sachkonto;
    }

    bool InYear(Day day) const { return FiscalOf(day, Of.FirstMonth).Year == Year; }

    void Run();
    void ReadReferences();
    void CheckAccounts();
    void AddAccount(AccountKind kind, const AccountNumber &number, int16_t zuordnung,
                    const AccountSums &sums);
    void CheckShortName(const char *table, const std::string &number, const std::string &name);
    void CheckSachkonto(const SakoRecord &record);
    void CheckPartner(AccountKind kind, const PersonalRecord &record);
    void CheckRates();
    void CheckRateRows();
    void CheckTrees();
    void WalkTree(Tree &tree, int32_t id, int depth);
    void CheckPostings();
    void CheckPosting(const BubeRecord &record, SplitState &split);
    void CheckTax(const BubeRecord &record, const std::string &key);
    void CheckSplitLine(const BubeRecord &record, const std::string &key, SplitState &split);
    void Post(const AccountNumber &number, int month, int64_t soll, int64_t haben, bool counts);
    void CompareSums();
    void CheckCostObjects();
    void CheckCostLines();
    void CheckTemplates();
    void CheckSmallTables();
    void CheckExchangeRates();
    void CheckBatches();
    void CheckPart(const SplitRecord &part, const std::string &table, const std::string &key, Day day);
    void CheckOpenItems(TableId id, AccountKind kind);
    void CheckCarriedOver();
    void CheckUnused();
};

void YearCheck::Run()
{
    ReadReferences();
    CheckRates();
    CheckAccounts();
    CheckRateRows();
    CheckTrees();
    CheckCostObjects();
    CheckPostings();
    CompareSums();
    CheckCostLines();
    if (IsLastYear) {
        CheckTemplates();
        CheckSmallTables();
        CheckExchangeRates();
        CheckBatches();
        CheckOpenItems(TableOpdebi, AccountKind::Debitor);
        CheckOpenItems(TableOpkred, AccountKind::Kreditor);
    }
    CheckUnused();
    CheckCarriedOver();
}

void YearCheck::ReadReferences()
{
    ReadLast<KoschaRecord>(TableKoscha, [&](const KoschaRecord &row) {
        Templates.insert(row.Nummer);
        TemplateLines[row.Nummer] = row.Zeilen;
    });
    ReadLast<ZahlzielRecord>(TableZahlziel, [&](const ZahlzielRecord &row) { Terms.insert(row.Nummer); });
    ReadLast<StapelRecord>(TableStapel, [&](const StapelRecord &row) { Batches.insert(row.Nummer); });
    ReadLast<UserRecord>(TableUser, [&](const UserRecord &row) { Users.insert(FieldText(row.Schluessel)); });
    ReadLast<KurseRecord>(TableKurse,
                          [&](const KurseRecord &row) { Currencies.insert(FieldText(row.Waehrung)); });
}

// ---- Tax rates ----

void YearCheck::CheckRates()
{
    Check<StekeRecord>(TableSteke, [&](const StekeRecord &row) {
        Rate rate{row.Folge, row.GueltigAb[0] == 0,         0,
                  0,         Packed(row.Umsatzsteuerkonto), Packed(row.Vorsteuerkonto)};
        DayOfPacked(row.GueltigAb, Of.FirstMonth, rate.From);
        rate.Percent = static_cast<int>(MagnitudeOf(row.Satz));
        Rates[row.Code].push_back(rate);
    });
    for (auto &[code, rows] : Rates) {
        std::sort(rows.begin(), rows.end(),
                  [](const Rate &a, const Rate &b) { return a.Sequence < b.Sequence; });
        for (size_t i = 0; i < rows.size(); ++i) {
            const std::string key = std::to_string(code) + " " + std::to_string(rows[i].Sequence);
            if (rows[i].Sequence != static_cast<int>(i)) {
                Tell("steuersatz", "steke", key, "Folge", "davor fehlt die Folge " + std::to_string(i));
                break;
            }
            if (i == 0) continue;
            const bool isOlder = !rows[i - 1].IsOpen && (rows[i].IsOpen || rows[i].From < rows[i - 1].From);
            if (!isOlder) Tell("steuersatz", "steke", key, "GueltigAb", "die höhere Folge ist nicht älter");
        }
    }
}

// The accounts of the rates, once these are known.
void YearCheck::CheckRateRows()
{
    try {
        TableFile table(LayoutOf(TableSteke), Directory, OpenMode::ReadOnly);
        StekeRecord row{};
        for (bool found = table.StepFirst(&row); found; found = table.StepNext(&row)) {
            const std::string key =
                KeyText(table.Layout, reinterpret_cast<const char *>(&row)) + " " + std::to_string(row.Folge);
            if (!IsSachkonto(row.Umsatzsteuerkonto)) {
                Tell("verweis", "steke", key, "Umsatzsteuerkonto",
                     "das Sachkonto " + Konto(row.Umsatzsteuerkonto) + " gibt es nicht");
            }
            if (!IsSachkonto(row.Vorsteuerkonto)) {
                Tell("verweis", "steke", key, "Vorsteuerkonto",
                     "das Sachkonto " + Konto(row.Vorsteuerkonto) + " gibt es nicht");
            }
        }
    } catch (const EngineError &) {
        // Told when the table itself was checked.
    }
}

// ---- Accounts ----

void YearCheck::AddAccount(AccountKind kind, const AccountNumber &number, int16_t zuordnung,
                           const AccountSums &sums)
{
    AccountState state{};
    state.Kind = kind;
    state.Key = Packed(number);
    state.Number = Konto(number);
    state.Zuordnung = zuordnung;
    state.VortragBalance = Pfennig(sums.Vortrag.Soll) - Pfennig(sums.Vortrag.Haben);
    state.Slot0 = {Pfennig(sums.Slot0.Soll), Pfennig(sums.Slot0.Haben)};
    for (int month = 0; month < 12; ++month) {
        state.Recorded[month] = {Pfennig(sums.Monat[month].Soll), Pfennig(sums.Monat[month].Haben)};
        state.RecordedCount[month] = sums.Buchungszahl[month];
    }
    const bool isNew = AccountOf.emplace(Packed(number), Accounts.size()).second;
    if (!isNew) {
        Tell("kontonummer", KindName(kind), state.Number, "Konto",
             std::string("die Nummer steht auch in ") + KindName(Find(number)->Kind));
        return;
    }
    Accounts.push_back(std::move(state));
}

void YearCheck::CheckShortName(const char *table, const std::string &number, const std::string &name)
{
    if (name.empty()) {
        Tell("kuerzel", table, number, "Kuerzel", "das Kürzel fehlt");
    } else if (!ShortNames.insert(name).second) {
        Tell("kuerzel", table, number, "Kuerzel", "das Kürzel „" + name + "“ hat schon ein anderes Konto");
    }
}

void YearCheck::CheckAccounts()
{
    Check<SakoRecord>(TableSako, [&](const SakoRecord &record) {
        AddAccount(AccountKind::Sachkonto, record.Konto, record.Zuordnung, record.Umsaetze);
        CheckSachkonto(record);
    });
    const auto check = [&](AccountKind kind, TableId id) {
        Check<PersonalRecord>(id, [&](const PersonalRecord &record) {
            AddAccount(kind, record.Konto, ZuordnungKeine, record.Umsaetze);
            CheckPartner(kind, record);
        });
    };
    check(AccountKind::Debitor, TableDebi);
    check(AccountKind::Kreditor, TableKred);

    // Both sides of the opening Bilanz, and of what the year's end brought, are equal.
    int64_t opening = 0;
    Turnover closing;
    for (const AccountState &account : Accounts) {
        if (account.Zuordnung == ZuordnungAktiva || account.Zuordnung == ZuordnungPassiva) {
            opening += account.VortragBalance;
        }
        if (account.Zuordnung == ZuordnungGuv && account.VortragBalance != 0) {
            Tell("vortrag", "sako", account.Number, "Umsaetze.Vortrag",
                 "ein Konto der GuV beginnt das Jahr mit " + Money(account.VortragBalance));
        }
        closing.Soll += account.Slot0.Soll;
        closing.Haben += account.Slot0.Haben;
    }
    if (opening != 0) {
        Tell("vortrag", "sako", "", "Umsaetze.Vortrag",
             "die Vorträge der Bilanzkonten gehen um " + Money(opening) + " nicht auf");
    }
    if (closing.Soll != closing.Haben) {
        Tell("abschluss", "sako", "", "Umsaetze.Slot0",
             "Soll " + Money(closing.Soll) + " und Haben " + Money(closing.Haben) + " sind ungleich");
    }
}

void YearCheck::CheckSachkonto(const SakoRecord &record)
{
    const std::string number = Konto(record.Konto);
    CheckShortName("sako", number, FieldText(record.Kuerzel));
    if (record.Name[0] == 0) Tell("name", "sako", number, "Name", "der Name fehlt");
    if (record.Zuordnung != ZuordnungKeine && record.Zuordnung != ZuordnungAktiva &&
        record.Zuordnung != ZuordnungPassiva && record.Zuordnung != ZuordnungGuv) {
        Tell("zuordnung", "sako", number, "Zuordnung",
             "den Wert " + std::to_string(record.Zuordnung) + " gibt es nicht");
    }
    const int tax = record.Steuerflags & ~SteuerVorsteuer;
    constexpr int taxes[] = {0,       SteuerRegelsatz, SteuerErmaessigt, SteuerNullsatz, SteuerSonstigerSatz,
                             SteuerEg};
    if (std::find(std::begin(taxes), std::end(taxes), tax) == std::end(taxes)) {
        Tell("steuerschluessel", "sako", number, "Steuerflags",
             "den Schlüssel " + std::to_string(record.Steuerflags) + " gibt es nicht");
    } else if (tax != 0 && Rates.count(record.Steuerflags & SteuerCodeMaske) == 0) {
        Tell("verweis", "sako", number, "Steuerflags",
             "zum Schlüssel " + std::to_string(record.Steuerflags) + " steht kein Satz in steke");
    }
    if (record.Kennzahl < 0 || record.Kennzahl > 99) {
        Tell("kennzahl", "sako", number, "Kennzahl", std::to_string(record.Kennzahl) + " ist keine Kennzahl");
    }
    if (record.Kostenschablone != 0 && Templates.count(record.Kostenschablone) == 0) {
        Tell("verweis", "sako", number, "Kostenschablone",
             "die Kostenschablone " + std::to_string(record.Kostenschablone) + " gibt es nicht");
    }
}

void YearCheck::CheckPartner(AccountKind kind, const PersonalRecord &record)
{
    const char *table = KindName(kind);
    const std::string number = Konto(record.Konto);
    CheckShortName(table, number, FieldText(record.Kuerzel));
    if (record.Name1[0] == 0) Tell("name", table, number, "Name1", "der Name fehlt");
    if (!IsEmpty(record.Gegenkonto) && !IsSachkonto(record.Gegenkonto)) {
        Tell("verweis", table, number, "Gegenkonto",
             "das Sachkonto " + Konto(record.Gegenkonto) + " gibt es nicht");
    }
    if (record.Zahlungsziel != 0 && Terms.count(record.Zahlungsziel) == 0) {
        Tell("verweis", table, number, "Zahlungsziel",
             "das Zahlungsziel " + std::to_string(record.Zahlungsziel) + " gibt es nicht");
    }
    const bool hasBank = record.Bankkonto[0] != 0 || record.BankkontoAlt[0] != 0;
    if ((record.Blz[0] != 0) != hasBank) {
        Tell("bank", table, number, "Blz", "Bankleitzahl und Bankkonto gehören zusammen");
    }
    const bool isGoodReminder = kind == AccountKind::Debitor
                                    ? record.Mahnkennziffer >= -1 && record.Mahnkennziffer <= 3
                                    : record.Mahnkennziffer == 0;
    if (!isGoodReminder) {
        Tell("mahnkennziffer", table, number, "Mahnkennziffer",
             "den Wert " + std::to_string(record.Mahnkennziffer) + " gibt es hier nicht");
    }
    const std::string currency = FieldText(record.Waehrung);
    if (!currency.empty() && currency != FieldText(Of.Record.Waehrung) && Currencies.count(currency) == 0) {
        Tell("verweis", table, number, "Waehrung", "zur Währung " + currency + " gibt es keinen Kurs");
    }
}

// ---- Bilanz and GuV ----

void YearCheck::WalkTree(Tree &tree, int32_t id, int depth)
{
    const std::string &stem = LayoutOf(tree.Id).Stem;
    // Siblings in a loop and children by recursion: a level is long, a tree never deep.
    while (id != 0) {
        const auto found = tree.Nodes.find(id);
        if (found == tree.Nodes.end()) {
            Tell("baum", stem, std::to_string(id), "Id", "auf den Knoten wird verwiesen, es gibt ihn nicht");
            return;
        }
        Node &node = found->second;
        if (node.IsReached) {
            Tell("baum", stem, std::to_string(id), "Id", "der Knoten wird mehr als einmal erreicht");
            return;
        }
        node.IsReached = true;
        const StructureRecord &record = node.Record;
        const std::string text = FieldText(record.Text);
        if ((record.Art & StructureGruppe) != 0) {
            if (Columns(text) > 27) {
                Tell("baum", stem, std::to_string(id), "Text", "der Titel ist länger als 27 Zeichen");
            }
            if (depth > 2)
                Tell("baum", stem, std::to_string(id), "Id", "es gibt nur drei Ebenen von Gruppen");
            if (record.Child != 0) WalkTree(tree, record.Child, depth + 1);
        } else {
            if (record.Child != 0)
                Tell("baum", stem, std::to_string(id), "Child", "ein Konto hat keine Unterknoten");
            const std::string number(Trimmed(text));
            if ((record.Art & StructureGegenposten) != 0) {
                tree.Second.emplace(number, id);
            } else {
                ++tree.Leaves[number];
            }
        }
        id = record.Next;
    }
}

void YearCheck::CheckTrees()
{
    Tree trees[] = {{TableGuvauf, ZuordnungGuv, {}, {}, {}, {}},
                    {TableBilaktau, ZuordnungAktiva, {}, {}, {}, {}},
                    {TableBilpasau, ZuordnungPassiva, {}, {}, {}, {}}};
    for (Tree &tree : trees) {
        const std::string &stem = LayoutOf(tree.Id).Stem;
        Check<StructureRecord>(tree.Id, [&](const StructureRecord &record) {
            if (record.Id == 0) {
                tree.Outside.emplace_back(Trimmed(FieldText(record.Text)));
            } else if (!tree.Nodes.emplace(record.Id, Node{record, false}).second) {
                Tell("baum", stem, std::to_string(record.Id), "Id", "die Nummer kommt mehrfach vor");
            }
        });
        if (tree.Nodes.count(structureRoot) == 0) {
            Tell("baum", stem, "1", "Id", "der oberste Knoten fehlt");
            continue;
        }
        WalkTree(tree, structureRoot, -1);
        for (const auto &[id, node] : tree.Nodes) {
            if (!node.IsReached)
                Tell("baum", stem, std::to_string(id), "Id", "der Knoten hängt an keinem anderen");
        }
        for (const std::string &number : tree.Outside) {
            ++tree.Leaves[number];
        }
    }
    for (const Tree &tree : trees) {
        const std::string &stem = LayoutOf(tree.Id).Stem;
        std::map<std::string, const AccountState *> own;
        for (const AccountState &account : Accounts) {
            if (account.Kind == AccountKind::Sachkonto) own.emplace(account.Number, &account);
        }
        for (const auto &[number, count] : tree.Leaves) {
            const auto account = own.find(number);
            if (account == own.end()) {
                Tell("verweis", stem, number, "Text", "das Sachkonto gibt es nicht");
            } else if (account->second->Zuordnung != tree.Zuordnung) {
                Tell("zuordnung", stem, number, "Text",
                     "das Konto hat eine andere Zuordnung als diese Seite");
            }
            if (count > 1) Tell("baum", stem, number, "Text", "das Konto steht mehrfach auf dieser Seite");
        }
        for (const AccountState &account : Accounts) {
            if (account.Kind == AccountKind::Sachkonto && account.Zuordnung == tree.Zuordnung &&
                tree.Leaves.count(account.Number) == 0) {
                Tell("zuordnung", "sako", account.Number, "Zuordnung",
                     "das Konto hat keinen Platz in " + stem);
            }
        }
        // The second home of an account needs its first one on the other side.
        const Tree &other = trees[tree.Id == TableBilaktau ? 2 : 1];
        for (const auto &[number, id] : tree.Second) {
            if (tree.Id == TableGuvauf || other.Leaves.count(number) == 0) {
                Tell("baum", stem, std::to_string(id), "Art",
                     "zum Gegenposten " + number + " fehlt der Posten");
            }
        }
    }
}

// ---- Final postings ----

void YearCheck::Post(const AccountNumber &number, int month, int64_t soll, int64_t haben, bool counts)
{
    AccountState *account = Find(number);
    if (account == nullptr) return;
    ++account->PostedCount[month];
    if (!counts) return;
    account->Posted[month].Soll += soll;
    account->Posted[month].Haben += haben;
}

void YearCheck::CheckTax(const BubeRecord &record, const std::string &key)
{
    const int64_t soll = Pfennig(record.Soll);
    const int64_t haben = Pfennig(record.Haben);
    const int64_t tax = Pfennig(record.Steuer);
    const bool onSoll = (record.Steuerflags & BubeSteuerMinus) != 0;
    const bool onHaben = (record.Steuerflags & BubeSteuerPlus) != 0;
    if (IsEmpty(record.Steuerkonto)) {
        if (tax != 0) Tell("steuer", "bube", key, "Steuer", Money(tax) + " Steuer ohne Steuerkonto");
        if (soll != haben) {
            Tell("soll-haben", "bube", key, "Haben",
                 "Soll " + Money(soll) + " und Haben " + Money(haben) + " sind ungleich");
        }
        return;
    }
    if (!IsSachkonto(record.Steuerkonto)) {
        Tell("verweis", "bube", key, "Steuerkonto",
             "das Sachkonto " + Konto(record.Steuerkonto) + " gibt es nicht");
    }
    if (onSoll == onHaben) {
        Tell("steuer", "bube", key, "Steuerflags", "die Seite der Steuer ist nicht bestimmt");
        return;
    }
    const int64_t sollWith = onSoll ? soll + tax : soll;
    const int64_t habenWith = onHaben ? haben + tax : haben;
    if (sollWith != habenWith) {
        Tell("soll-haben", "bube", key, onSoll ? "Haben" : "Soll",
             "mit Steuer ergibt Soll " + Money(sollWith) + " und Haben " + Money(habenWith));
    }
    if (Pfennig(record.Grundbetrag) != (onSoll ? soll : haben)) {
        Tell("steuer", "bube", key, "Grundbetrag",
             Money(Pfennig(record.Grundbetrag)) + " statt " + Money(onSoll ? soll : haben));
    }
    // The key must have a rate that names this account, whatever its date: an old invoice has its old rate.
    const auto rows = Rates.find(record.Steuerherkunft & SteuerCodeMaske);
    const bool isInput = (record.Steuerherkunft & SteuerVorsteuer) != 0;
    bool isKnown = false;
    if (rows != Rates.end()) {
        for (const Rate &rate : rows->second) {
            const uint64_t account = isInput ? rate.Vorsteuerkonto : rate.Umsatzsteuerkonto;
            const bool isFree = rows->first == SteuerSonstigerSatz;
            isKnown =
                isKnown || (account == Packed(record.Steuerkonto) &&
                            (isFree || rate.Percent == static_cast<int>(MagnitudeOf(record.Steuersatz))));
        }
    }
    if (!isKnown) {
        Tell("verweis", "bube", key, "Steuersatz",
             "zum Schlüssel " + std::to_string(record.Steuerherkunft) + " gibt es keinen Satz von " +
                 FieldText(record.Steuersatz) + " auf Konto " + Konto(record.Steuerkonto));
    }
}

void YearCheck::CheckSplitLine(const BubeRecord &record, const std::string &key, SplitState &split)
{
    constexpr uint16_t sides = BubeSplitSoll | BubeSplitHaben;
    const uint16_t side = record.Status & sides;
    const bool isHead = (record.Status & BubeSplitAnfang) != 0;
    if (split.Expected > 0 && (side == 0 || isHead)) {
        Tell("split", "bube", split.Head, "Anzahl", std::to_string(split.Expected) + " Teilbuchungen fehlen");
        split.Expected = 0;
    }
    if (side == 0) {
        if (record.Anzahl != 0)
            Tell("split", "bube", key, "Anzahl", "eine einfache Buchung hat keine Teilbuchungen");
        if (isHead || (record.Status & BubeGefaltet) != 0) {
            Tell("split", "bube", key, "Status", "eine Teilbuchung ohne Seite");
        }
        return;
    }
    if (side == sides) {
        Tell("split", "bube", key, "Status", "die gemeinsame Seite ist nicht bestimmt");
        return;
    }
    const uint64_t account = Packed(side == BubeSplitSoll ? record.Sollkonto : record.Habenkonto);
    const std::string day(record.Schluessel.Folge, 6);
    if (isHead) {
        if (record.Anzahl < 1) Tell("split", "bube", key, "Anzahl", "der Kopf nennt keine Teilbuchungen");
        split = {record.Anzahl, side, account, key, day};
        return;
    }
    if (split.Expected == 0) {
        Tell("split", "bube", key, "Status", "die Teilbuchung hat keinen Kopf");
        return;
    }
    --split.Expected;
    if (record.Anzahl != 0)
        Tell("split", "bube", key, "Anzahl", "nur der Kopf nennt die Zahl der Teilbuchungen");
    if (side != split.Side || account != split.MainAccount || day != split.Day) {
        Tell("split", "bube", key, side == BubeSplitSoll ? "Sollkonto" : "Habenkonto",
             "die Teilbuchung hat anderes Konto, andere Seite oder anderen Tag als ihr Kopf " + split.Head);
    }
}

void YearCheck::CheckPosting(const BubeRecord &record, SplitState &split)
{
    const std::string key = FieldText(record.Schluessel.Folge);
    Day day = 0;
    Day documentDay = 0;
    if (!DayOfSort(record.Schluessel.Folge, Of.FirstMonth, day)) return; // told as a fault of form
    if (!InYear(day))
        Tell("datum", "bube", key, "Schluessel.Folge", DisplayDay(day) + " liegt nicht im Jahr");
    const char *date = record.Datum[0] != 0 ? record.Datum : record.Schluessel.Belegdatum;
    if (DayOfPacked(date, Of.FirstMonth, documentDay) && documentDay != day) {
        Tell("datum", "bube", key, "Datum", DisplayDay(documentDay) + " ist nicht der Tag des Schlüssels");
    }
    Day entered = 0;
    if (DayOfSort(record.Buchungsdatum, Of.FirstMonth, entered) && !InYear(entered)) {
        Tell("datum", "bube", key, "Buchungsdatum", DisplayDay(entered) + " liegt nicht im Jahr");
    }
    if (record.Buchungsnummer <= 0) {
        Tell("nummer", "bube", key, "Buchungsnummer",
             std::to_string(record.Buchungsnummer) + " ist keine Nummer");
    }
    const int month = FiscalOf(day, Of.FirstMonth).Month - 1;
    const auto checkAccount = [&](const AccountNumber &number, const char *field) {
        if (Find(number) == nullptr) {
            Tell("verweis", "bube", key, field, "das Konto " + Konto(number) + " gibt es nicht");
        }
    };
    checkAccount(record.Sollkonto, "Sollkonto");
    checkAccount(record.Habenkonto, "Habenkonto");
    const std::string user = FieldText(record.Benutzer, sizeof(UserRecord::Schluessel));
    if (!user.empty() && Users.count(user) == 0) {
        Tell("verweis", "bube", key, "Benutzer", "den Benutzer " + user + " gibt es nicht");
    }
    CheckTax(record, key);
    CheckSplitLine(record, key, split);

    const bool counts = (record.Status & (BubeOhneNetto | BubeNichtImMonat)) == 0;
    Post(record.Sollkonto, month, Pfennig(record.Soll), 0, counts);
    Post(record.Habenkonto, month, 0, Pfennig(record.Haben), counts);
    if (IsEmpty(record.Steuerkonto)) return;
    const bool onHaben = (record.Steuerflags & BubeSteuerPlus) != 0;
    const int64_t tax = Pfennig(record.Steuer);
    Post(record.Steuerkonto, month, onHaben ? 0 : tax, onHaben ? tax : 0, counts);
}

void YearCheck::CheckPostings()
{
    if (!CheckTable(Out, LayoutOf(TableBube), Directory, Of.FirstMonth, nullptr)) return;
    // Splits show in the order of key 0 only.
    TableFile table(LayoutOf(TableBube), Directory, OpenMode::ReadOnly);
    BubeRecord record{};
    SplitState split;
    for (bool found = table.First(&record, 0); found; found = table.Next(&record, 0)) {
        CheckPosting(record, split);
    }
    if (split.Expected > 0) {
        Tell("split", "bube", split.Head, "Anzahl", std::to_string(split.Expected) + " Teilbuchungen fehlen");
    }
}

void YearCheck::CompareSums()
{
    for (const AccountState &account : Accounts) {
        for (int month = 0; month < 12; ++month) {
            const std::string field = "Umsaetze.Monat[" + std::to_string(month) + "]";
            const auto compare = [&](int64_t recorded, int64_t posted, const char *side) {
                if (recorded == posted) return;
                Tell("monat", KindName(account.Kind), account.Number, field + side,
                     Money(recorded) + ", nach den Buchungen " + Money(posted));
            };
            compare(account.Recorded[month].Soll, account.Posted[month].Soll, ".Soll");
            compare(account.Recorded[month].Haben, account.Posted[month].Haben, ".Haben");
            const int32_t posted = std::min(account.PostedCount[month], countMax);
            if (account.RecordedCount[month] != posted) {
                Tell("anzahl", KindName(account.Kind), account.Number,
                     "Umsaetze.Buchungszahl[" + std::to_string(month) + "]",
                     std::to_string(account.RecordedCount[month]) + ", gezählt sind " +
                         std::to_string(posted));
            }
        }
    }
}

// ---- Costs ----

void YearCheck::CheckCostObjects()
{
    std::set<std::string> names;
    Check<KoreRecord>(TableKore, [&](const KoreRecord &record) {
        CostState state{};
        state.Number = Konto(record.Nummer);
        for (int month = 0; month < 12; ++month) {
            state.Recorded[month] = Pfennig(record.Monat[month]);
        }
        if (record.Name[0] == 0) Tell("name", "kore", state.Number, "Name", "der Name fehlt");
        const std::string name = FieldText(record.Kuerzel);
        if (!name.empty() && !names.insert(name).second) {
            Tell("kuerzel", "kore", state.Number, "Kuerzel",
                 "das Kürzel „" + name + "“ hat schon eine andere Kostenstelle");
        }
        CostOf.emplace(Packed(record.Nummer), Costs.size());
        Costs.push_back(std::move(state));
    });
}

void YearCheck::CheckCostLines()
{
    if (!CheckTable(Out, LayoutOf(TableKobu), Directory, Of.FirstMonth, nullptr)) return;
    TableFile table(LayoutOf(TableKobu), Directory, OpenMode::ReadOnly);
    TableFile postings(LayoutOf(TableBube), Directory, OpenMode::ReadOnly);
    TableFile bat(LayoutOf(TableBat), LastDirectory, OpenMode::ReadOnly);
    TableFile splits(LayoutOf(TableSplit), LastDirectory, OpenMode::ReadOnly);
    constexpr int keyOfNumber = 5;      // of bube
    constexpr int keyOfBooking = 0;     // of bat
    constexpr int keyOfSplitNumber = 1; // of split

    // Lines of one posting follow each other in key 0. Together they are what the posting is without its tax.
    BubeRecord posting{};
    int32_t current = 0;
    int64_t spread = 0;
    bool onHaben = false;
    bool isKnown = false;
    const auto endPosting = [&]() {
        if (current == 0 || !isKnown) return;
        const int64_t net = onHaben ? Pfennig(posting.Haben) : Pfennig(posting.Soll);
        if (spread != net) {
            Tell("kosten", "kobu", std::to_string(current), "Betrag",
                 "verteilt sind " + Money(spread) + " von " + Money(net));
        }
    };
    KobuRecord line{};
    for (bool found = table.First(&line, 0); found; found = table.Next(&line, 0)) {
        const std::string key = std::to_string(line.FinaleBuchung);
        Day day = 0;
        const bool hasDay = DayOfSort(line.Datum, Of.FirstMonth, day);
        const auto checkObject = [&](const AccountNumber &number, const char *field,
                                     bool isNeeded) -> CostState * {
            if (IsEmpty(number) && !isNeeded) return nullptr;
            const auto object = CostOf.find(Packed(number));
            if (object != CostOf.end()) return &Costs[object->second];
            Tell("verweis", "kobu", key, field, "die Kostenstelle " + Konto(number) + " gibt es nicht");
            return nullptr;
        };
        CostState *first = checkObject(line.Kostenobjekt1, "Kostenobjekt1", true);
        CostState *second = checkObject(line.Kostenobjekt2, "Kostenobjekt2", false);
        if (line.FinaleBuchung == 0) {
            BatRecord head{};
            SplitRecord part{};
            if (line.Splitnummer != 0) {
                if (!splits.Equal(&part, &line.Splitnummer, keyOfSplitNumber)) {
                    Tell("verweis", "kobu", key, "Splitnummer",
                         "die Teilbuchung " + std::to_string(line.Splitnummer) + " gibt es nicht");
                }
            } else if (!bat.Equal(&head, &line.Buchungsnummer, keyOfBooking)) {
                Tell("verweis", "kobu", key, "Buchungsnummer",
                     "die Buchung " + std::to_string(line.Buchungsnummer) + " gibt es nicht im Stapel");
            }
            continue;
        }
        if (line.FinaleBuchung != current) {
            endPosting();
            current = line.FinaleBuchung;
            spread = 0;
            onHaben = (line.Flag & KobuHaben) != 0;
            isKnown = postings.Equal(&posting, &current, keyOfNumber);
            if (!isKnown) Tell("verweis", "kobu", key, "FinaleBuchung", "die Buchung gibt es nicht");
        }
        const int64_t amount = Pfennig(line.Betrag);
        spread += amount;
        if (isKnown) {
            const AccountNumber &account = onHaben ? posting.Habenkonto : posting.Sollkonto;
            if (Packed(line.Konto) != Packed(account)) {
                Tell("kosten", "kobu", key, "Konto", Konto(line.Konto) + " statt " + Konto(account));
            }
            if (std::memcmp(line.Datum, posting.Schluessel.Folge, 6) != 0) {
                Tell("datum", "kobu", key, "Datum", "das ist nicht der Tag der Buchung");
            }
        }
        if (!hasDay) continue;
        if (!InYear(day)) {
            Tell("datum", "kobu", key, "Datum", DisplayDay(day) + " liegt nicht im Jahr");
            continue;
        }
        const int month = FiscalOf(day, Of.FirstMonth).Month - 1;
        const int64_t signedAmount = (line.Flag & KobuHaben) != 0 ? -amount : amount;
        if (first != nullptr) first->Posted[month] += signedAmount;
        if (second != nullptr) second->Posted[month] += signedAmount;
    }
    endPosting();
    for (const CostState &object : Costs) {
        for (int month = 0; month < 12; ++month) {
            if (object.Recorded[month] == object.Posted[month]) continue;
            Tell("kosten", "kore", object.Number, "Monat[" + std::to_string(month) + "]",
                 Money(object.Recorded[month]) + ", nach den Kostenbuchungen " + Money(object.Posted[month]));
        }
    }
}

void YearCheck::CheckTemplates()
{
    Check<KoschaRecord>(TableKoscha, [&](const KoschaRecord &record) {
        if (record.Name[0] == 0)
            Tell("name", "koscha", std::to_string(record.Nummer), "Name", "der Name fehlt");
    });
    std::map<int32_t, int> lines;
    std::map<int32_t, int64_t> shares;
    Check<KoschazeRecord>(TableKoschaze, [&](const KoschazeRecord &record) {
        const std::string key = std::to_string(record.Nummer);
        ++lines[record.Nummer];
        int64_t share = 0;
        for (const char *at = record.Anteil; *at != 0 && at < record.Anteil + sizeof record.Anteil; ++at) {
            if (*at >= '0' && *at <= '9') share = share * 10 + *at - '0';
        }
        shares[record.Nummer] += share;
        if (Templates.count(record.Nummer) == 0) {
            Tell("verweis", "koschaze", key, "Nummer", "die Kostenschablone gibt es nicht");
        }
        const auto check = [&](const AccountNumber &number, const char *field, bool isNeeded) {
            if (IsEmpty(number) && !isNeeded) return;
            if (CostOf.count(Packed(number)) == 0) {
                Tell("verweis", "koschaze", key, field,
                     "die Kostenstelle " + Konto(number) + " gibt es nicht");
            }
        };
        check(record.Kostenobjekt1, "Kostenobjekt1", true);
        check(record.Kostenobjekt2, "Kostenobjekt2", false);
    });
    for (const auto &[number, count] : TemplateLines) {
        const std::string key = std::to_string(number);
        if (lines[number] != count) {
            Tell("schablone", "koscha", key, "Zeilen",
                 std::to_string(count) + ", es gibt " + std::to_string(lines[number]));
        }
        // The last line takes the rest; what rounding leaves open is no fault.
        if (lines[number] > 0 && (shares[number] > 10000 || shares[number] < 9900)) {
            Tell("schablone", "koscha", key, "Zeilen",
                 "die Anteile ergeben " + std::to_string(shares[number] / 100) + " statt 100 Prozent");
        }
    }
}

// ---- Small tables of the last year ----

void YearCheck::CheckSmallTables()
{
    Check<ZahlzielRecord>(TableZahlziel, [&](const ZahlzielRecord &record) {
        if (record.Text[0] == 0)
            Tell("name", "zahlziel", std::to_string(record.Nummer), "Text", "der Text fehlt");
    });
    Check<UserRecord>(TableUser, [&](const UserRecord &record) {
        if (record.Name[0] == 0) Tell("name", "user", FieldText(record.Schluessel), "Name", "der Name fehlt");
    });
    Check<StapelRecord>(TableStapel, [&](const StapelRecord &record) {
        const std::string key = std::to_string(record.Nummer);
        if (record.Name[0] == 0) Tell("name", "stapel", key, "Name", "der Name fehlt");
        if (record.Intervall < 0 || record.Intervall > 99) {
            Tell("stapel", "stapel", key, "Intervall",
                 std::to_string(record.Intervall) + " ist keine Zahl von Monaten");
        }
    });
}

void YearCheck::CheckExchangeRates()
{
    std::set<std::string> averages;
    Check<KurseRecord>(TableKurse, [&](const KurseRecord &record) {
        const std::string key = FieldText(record.Waehrung) + " " + FieldText(record.Datum);
        if (record.Waehrung[0] == 0) Tell("kurs", "kurse", key, "Waehrung", "die Währung fehlt");
        if (Pfennig(record.Kurs) <= 0)
            Tell("kurs", "kurse", key, "Kurs", Money(Pfennig(record.Kurs)) + " ist kein Kurs");
        if (record.Durchschnitt != 0 &&
            !averages.insert(FieldText(record.Waehrung) + FieldText(record.Datum, 4)).second) {
            Tell("kurs", "kurse", key, "Durchschnitt", "der Monat hat mehr als einen Durchschnittskurs");
        }
        constexpr int16_t units[] = {1, 2, 3, 4, 5, 10};
        if (std::find(std::begin(units), std::end(units), record.Einheit) == std::end(units)) {
            Tell("kurs", "kurse", key, "Einheit", std::to_string(record.Einheit) + " ist keine Einheit");
        }
    });
}

// ---- Bookings in a Stapel ----

void YearCheck::CheckPart(const SplitRecord &part, const std::string &table, const std::string &key, Day day)
{
    const auto check = [&](const AccountNumber &number, uint8_t kind, const char *field) {
        const AccountState *account = Find(number);
        if (account == nullptr) {
            Tell("verweis", table, key, field, "das Konto " + Konto(number) + " gibt es nicht");
            return;
        }
        const uint8_t expected = account->Kind == AccountKind::Sachkonto  ? BuchungSachkonto
                                 : account->Kind == AccountKind::Kreditor ? BuchungKreditor
                                                                          : BuchungDebitor;
        if (kind != expected) {
            Tell("kontoart", table, key, field,
                 "die Kontoart " + std::to_string(kind) + " ist nicht die des Kontos");
        }
    };
    const std::string prefix = table == "bat" ? "Teil." : "";
    check(part.Sollkonto, part.SollArt, (prefix + "Sollkonto").c_str());
    check(part.Habenkonto, part.HabenArt, (prefix + "Habenkonto").c_str());
    if (!IsEmpty(part.Steuerkonto) && !IsSachkonto(part.Steuerkonto)) {
        Tell("verweis", table, key, prefix + "Steuerkonto",
             "das Sachkonto " + Konto(part.Steuerkonto) + " gibt es nicht");
    }
    if (part.Kostenschablone != 0 && Templates.count(part.Kostenschablone) == 0) {
        Tell("verweis", table, key, prefix + "Kostenschablone",
             "die Kostenschablone " + std::to_string(part.Kostenschablone) + " gibt es nicht");
    }
    const int64_t gross = Pfennig(part.Brutto);
    const int64_t net = Pfennig(part.Netto);
    if ((gross < 0) != (net < 0) && net != 0 && gross != 0) {
        Tell("soll-haben", table, key, prefix + "Netto", "Brutto und Netto haben verschiedene Vorzeichen");
    }
    if (IsEmpty(part.Steuerkonto)) return;
    const auto rows = Rates.find(part.Steuerschluessel & SteuerCodeMaske);
    const bool isKnown =
        rows != Rates.end() && std::any_of(rows->second.begin(), rows->second.end(), [&](const Rate &rate) {
            return rate.Sequence == part.Steuerfolge && (rate.Umsatzsteuerkonto == Packed(part.Steuerkonto) ||
                                                         rate.Vorsteuerkonto == Packed(part.Steuerkonto));
        });
    if (!isKnown) {
        Tell("verweis", table, key, prefix + "Steuerfolge",
             "zu Schlüssel " + std::to_string(part.Steuerschluessel) + ", Folge " +
                 std::to_string(part.Steuerfolge) + " und Konto " + Konto(part.Steuerkonto) +
                 " steht kein Satz in steke, gebucht am " + DisplayDay(day));
    }
}

void YearCheck::CheckBatches()
{
    if (!CheckTable(Out, LayoutOf(TableBat), Directory, Of.FirstMonth, nullptr) ||
        !CheckTable(Out, LayoutOf(TableSplit), Directory, Of.FirstMonth, nullptr)) {
        return;
    }
    TableFile bat(LayoutOf(TableBat), Directory, OpenMode::ReadOnly);
    TableFile splits(LayoutOf(TableSplit), Directory, OpenMode::ReadOnly);
    TableFile costs(LayoutOf(TableKobu), Directory, OpenMode::ReadOnly);
    constexpr int keyOfBooking = 0;   // of split
    constexpr int keyOfHeadCosts = 1; // of kobu
    constexpr int keyOfPartCosts = 2; // of kobu
    const auto countCosts = [&](int32_t number, int key, int32_t KobuRecord::*field) {
        int count = 0;
        KobuRecord line{};
        for (bool found = costs.Equal(&line, &number, key); found && line.*field == number;
             found = costs.Next(&line, key)) {
            ++count;
        }
        return count;
    };
    const auto compareCosts = [&](const std::string &table, const std::string &key, int stated, int counted) {
        if (stated == counted) return;
        Tell("kosten", table, key, table == "bat" ? "Teil.Kostenzeilen" : "Kostenzeilen",
             std::to_string(stated) + ", es gibt " + std::to_string(counted));
    };

    BatRecord head{};
    for (bool found = bat.First(&head, 0); found; found = bat.Next(&head, 0)) {
        const std::string key = std::to_string(head.Buchungsnummer);
        Day day = 0;
        if (DayOfPacked(head.Buchungsdatum, Of.FirstMonth, day)) {
            const std::string year = std::to_string(FiscalOf(day, Of.FirstMonth).Year);
            const bool isPostable = year == Of.UpperYear ||
                                    (!Of.LowerYear.empty() && year >= Of.LowerYear && year <= Of.UpperYear);
            if (!isPostable)
                Tell("datum", "bat", key, "Buchungsdatum",
                     DisplayDay(day) + " liegt in keinem bebuchbaren Jahr");
        }
        if (std::memcmp(head.Buchungsdatum, head.ZweitesDatum, sizeof head.Buchungsdatum) != 0) {
            Tell("datum", "bat", key, "ZweitesDatum", "die beiden Daten sind verschieden");
        }
        if (Batches.count(head.Stapel) == 0) {
            Tell("verweis", "bat", key, "Stapel",
                 "den Stapel " + std::to_string(head.Stapel) + " gibt es nicht");
        }
        if (head.Zahlungsziel != 0 && Terms.count(head.Zahlungsziel) == 0) {
            Tell("verweis", "bat", key, "Zahlungsziel",
                 "das Zahlungsziel " + std::to_string(head.Zahlungsziel) + " gibt es nicht");
        }
        const std::string currency = FieldText(head.Waehrung);
        if (!currency.empty() && Currencies.count(currency) == 0) {
            Tell("verweis", "bat", key, "Waehrung", "zur Währung " + currency + " gibt es keinen Kurs");
        }
        CheckPart(head.Teil, "bat", key, day);
        compareCosts("bat", key, head.Teil.Kostenzeilen,
                     countCosts(head.Buchungsnummer, keyOfHeadCosts, &KobuRecord::Buchungsnummer));
        int parts = 1;
        SplitRecord part{};
        for (bool more = splits.Equal(&part, &head.Buchungsnummer, keyOfBooking);
             more && part.Buchungsnummer == head.Buchungsnummer; more = splits.Next(&part, keyOfBooking)) {
            ++parts;
            const std::string partKey =
                std::to_string(part.Buchungsnummer) + " " + std::to_string(part.Splitnummer);
            CheckPart(part, "split", partKey, day);
            compareCosts("split", partKey, part.Kostenzeilen,
                         countCosts(part.Splitnummer, keyOfPartCosts, &KobuRecord::Splitnummer));
        }
        if (parts != head.Anzahl) {
            Tell("split", "bat", key, "Anzahl",
                 std::to_string(head.Anzahl) + ", es gibt " + std::to_string(parts));
        }
    }
    SplitRecord part{};
    for (bool found = splits.First(&part, 0); found; found = splits.Next(&part, 0)) {
        if (!bat.Equal(&head, &part.Buchungsnummer, 0)) {
            Tell("verweis", "split", std::to_string(part.Buchungsnummer), "Buchungsnummer",
                 "die Buchung gibt es nicht im Stapel");
        }
    }
}

// ---- Open items ----

void YearCheck::CheckOpenItems(TableId id, AccountKind kind)
{
    const std::string &stem = LayoutOf(id).Stem;
    std::unordered_map<uint64_t, int64_t> open;
    Check<OpenItemRecord>(id, [&](const OpenItemRecord &record) {
        const std::string key = std::to_string(record.Nummer);
        const AccountState *account = Find(record.Konto);
        if (account == nullptr || account->Kind != kind) {
            Tell("verweis", stem, key, "Konto", "das Konto " + Konto(record.Konto) + " gibt es nicht");
        }
        open[Packed(record.Konto)] += Pfennig(record.Betrag1);
        Day first = 0;
        Day due = 0;
        if (DayOfSort(record.Datum1, Of.FirstMonth, first) && DayOfSort(record.Termin, Of.FirstMonth, due) &&
            due < first) {
            Tell("datum", stem, key, "Termin", DisplayDay(due) + " liegt vor dem Belegdatum");
        }
        const std::string currency = FieldText(record.Waehrung);
        if (!currency.empty() && currency != FieldText(Of.Record.Waehrung) &&
            Currencies.count(currency) == 0) {
            Tell("verweis", stem, key, "Waehrung", "zur Währung " + currency + " gibt es keinen Kurs");
        }
    });
    for (const AccountState &account : Accounts) {
        if (account.Kind != kind) continue;
        const int64_t balance = kind == AccountKind::Debitor ? account.Balance() : -account.Balance();
        const auto items = open.find(account.Key);
        const int64_t sum = items != open.end() ? items->second : 0;
        if (sum != balance) {
            Tell("offene-posten", stem, account.Number, "Betrag1",
                 "die Posten ergeben " + Money(sum) + ", der Saldo ist " + Money(balance));
        }
    }
}

// ---- From year to year ----

// Assets, Debitoren and Kreditoren begin a year with what the year before left. Equity takes the result over.
void YearCheck::CheckCarriedOver()
{
    const fs::path before = Data / Of.Directory(std::to_string(Year - 1));
    if (!fs::exists(before)) return;
    const auto balanceOf = [](const AccountSums &sums) {
        int64_t balance = Pfennig(sums.Vortrag.Soll) - Pfennig(sums.Vortrag.Haben) +
                          Pfennig(sums.Slot0.Soll) - Pfennig(sums.Slot0.Haben);
        for (const SollHaben &month : sums.Monat) {
            balance += Pfennig(month.Soll) - Pfennig(month.Haben);
        }
        return balance;
    };
    const auto compare = [&](const AccountNumber &number, int64_t closing) {
        const AccountState *account = Find(number);
        if (account == nullptr) {
            if (closing != 0) {
                Tell("vortrag", "sako", Konto(number), "Konto",
                     "das Konto des Vorjahrs fehlt, sein Saldo war " + Money(closing));
            }
            return;
        }
        const bool isCarried =
            account->Kind != AccountKind::Sachkonto || account->Zuordnung == ZuordnungAktiva;
        if (isCarried && account->VortragBalance != closing) {
            Tell("vortrag", KindName(account->Kind), account->Number, "Umsaetze.Vortrag",
                 Money(account->VortragBalance) + ", das Vorjahr endete mit " + Money(closing));
        }
    };
    try {
        TableFile accounts(LayoutOf(TableSako), before, OpenMode::ReadOnly);
        SakoRecord account{};
        for (bool found = accounts.StepFirst(&account); found; found = accounts.StepNext(&account)) {
            compare(account.Konto, balanceOf(account.Umsaetze));
        }
        for (const TableId id : {TableDebi, TableKred}) {
            TableFile partners(LayoutOf(id), before, OpenMode::ReadOnly);
            PersonalRecord partner{};
            for (bool found = partners.StepFirst(&partner); found; found = partners.StepNext(&partner)) {
                compare(partner.Konto, balanceOf(partner.Umsaetze));
            }
        }
    } catch (const EngineError &) {
        // Told where that year is checked.
    }
}

// Tables whose records nothing here refers to, and those that an older year keeps without use.
void YearCheck::CheckUnused()
{
    constexpr TableId numbered[] = {TableBank,   TableUeberw, TableButext,
                                    TableBuscha, TableBumak,  TableMahntext};
    for (const TableLayout &layout : Tables()) {
        const bool isNumbered =
            std::find(std::begin(numbered), std::end(numbered), layout.Id) != std::end(numbered);
        const bool isUnused = !IsLastYear && IsYearTable(layout) && layout.Id >= firstOfLastYear;
        if (isNumbered || isUnused) CheckTable(Out, layout, Directory, Of.FirstMonth, nullptr);
    }
}

} // namespace

void CheckCompany(Findings &findings, const fs::path &data)
{
    CheckTable(findings, LayoutOf(TableFista), data, 1, [&](const char *bytes) {
        FistaRecord record;
        std::memcpy(&record, bytes, sizeof record);
        const std::string key = std::to_string(record.Nummer);
        const auto tell = [&](const char *rule, const char *field, const std::string &text) {
            findings.Tell(rule, "fista", key, field, text);
        };
        if (record.Nummer < 1) tell("mandant", "Nummer", "die Nummern beginnen mit 1");
        if (record.Name[0] == 0) tell("name", "Name", "der Name fehlt");
        if (record.FirstFiscalMonth < 0 || record.FirstFiscalMonth > 12) {
            tell("mandant", "FirstFiscalMonth", std::to_string(record.FirstFiscalMonth) + " ist kein Monat");
        }
        const std::string upper = FieldText(record.UpperYear);
        const std::string lower = FieldText(record.LowerYear);
        if (upper.empty()) {
            tell("mandant", "UpperYear", "das letzte bebuchbare Jahr fehlt");
        } else if (lower > upper) {
            tell("mandant", "LowerYear", "das erste bebuchbare Jahr liegt hinter dem letzten");
        }
        const Mandant mandant{record.Nummer,
                              FieldText(record.Name),
                              lower,
                              upper,
                              record.FirstFiscalMonth == 0 ? 1 : record.FirstFiscalMonth,
                              record};
        const auto checkDirectory = [&](const std::string &year, const char *field) {
            if (year.empty() || fs::is_directory(data / mandant.Directory(year))) return;
            tell("verzeichnis", field, "das Verzeichnis " + mandant.Directory(year) + " fehlt");
        };
        checkDirectory(lower, "LowerYear");
        checkDirectory(upper, "UpperYear");
        if (record.Waehrung[0] == 0) tell("mandant", "Waehrung", "die Währung fehlt");
        if (upper.empty() || !fs::is_directory(data / mandant.Directory(upper))) return;
        try {
            TableFile accounts(LayoutOf(TableSako), data / mandant.Directory(upper), OpenMode::ReadOnly);
            SakoRecord account{};
            const auto check = [&](const AccountNumber &number, const char *field, bool isNeeded) {
                if (IsEmpty(number) && !isNeeded) return;
                if (!accounts.Equal(&account, number, 0)) {
                    tell("verweis", field, "das Sachkonto " + Konto(number) + " gibt es nicht");
                }
            };
            check(record.Sammelkonto1, "Sammelkonto1", false);
            check(record.Sammelkonto2, "Sammelkonto2", false);
            check(record.Sonderkonto, "Sonderkonto", record.Sonderkontomodus != 0);
        } catch (const EngineError &) {
            // Told where that directory is checked.
        }
    });
}

void CheckYear(Findings &findings, const fs::path &data, const Mandant &mandant, int year)
{
    YearCheck(findings, data, mandant, year).Run();
}

} // namespace books
