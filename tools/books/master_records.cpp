#include "tools/books/master_records.h"

#include "src/values/amounts.h"
#include "text/windows1252.h"
#include "tools/books/record_fields.h"
#include "tools/common/texts.h"

#include <cstring>
#include <map>
#include <stdexcept>

namespace books {

using namespace tools;
using namespace vark;

namespace {

// Every record of the sample was last touched on the day the books were opened.
const tools::Day openingDay = tools::DayOf(1996, 12, 30);

// The chart is made to fit: what does not is a mistake in it.
template <size_t Width> void PutUtf8(char (&field)[Width], const char *utf8)
{
    if (text::FromUtf8(utf8, field, Width) >= Width)
        throw std::logic_error(std::string("does not fit: ") + utf8);
}

template <size_t Width> void PutUtf8(char (&field)[Width], const std::string &utf8)
{
    PutUtf8(field, utf8.c_str());
}

void PutPair(SollHaben &field, const Totals &totals)
{
    PutAmount(field.Soll, totals.Soll);
    PutAmount(field.Haben, totals.Haben);
}

void PutSums(AccountSums &field, const YearSums &sums)
{
    PutPair(field.Vortrag, sums.Vortrag);
    PutPair(field.Slot0, sums.Slot0);
    for (int month = 0; month < 12; ++month) {
        PutPair(field.Monat[month], sums.Month[month]);
        field.Buchungszahl[month] = static_cast<int16_t>(std::min(sums.Count[month], 32767));
    }
}

// Cost objects have numbers of their own, which chart.cpp holds as text.
void PutNumber(AccountNumber &field, const char *digits)
{
    const size_t length = std::strlen(digits);
    std::memset(field, ' ', accountDigits);
    field[accountDigits] = 0;
    std::memcpy(field + accountDigits - length, digits, length);
}

void PutNumber(AccountNumber &field, int number) { MakeKey(field, number); }

const GroupRow *FindGroup(int code)
{
    for (const GroupRow &group : Groups()) {
        if (group.Code == code) return &group;
    }
    return nullptr;
}

Side SideOf(const AccountRow &row)
{
    if (row.Group == unassignedAktiva) return Side::Aktiva;
    if (row.Group == unassignedPassiva) return Side::Passiva;
    if (row.Group == unassignedGuv) return Side::Guv;
    const GroupRow *group = FindGroup(row.Group);
    return group != nullptr ? group->Place : Side::None;
}

Zuordnung ZuordnungOf(Side side)
{
    switch (side) {
    case Side::Aktiva: return ZuordnungAktiva;
    case Side::Passiva: return ZuordnungPassiva;
    case Side::Guv: return ZuordnungGuv;
    case Side::None: return ZuordnungKeine;
    }
    return ZuordnungKeine;
}

// A table being filled, with the count of its records.
struct Filling {
    TableFile File;
    int64_t Count = 0;

    Filling(TableId id, const std::filesystem::path &directory)
        : File(LayoutOf(id), directory, OpenMode::Accelerated)
    {}

    template <typename Record> void Add(Record &record)
    {
        File.Insert(&record);
        ++Count;
    }

    int64_t Done()
    {
        File.Close();
        return Count;
    }
};

int64_t WriteSachkonten(const Ledger &ledger, int year, const std::filesystem::path &directory)
{
    Filling table(TableSako, directory);
    for (const Account &account : ledger.Sachkonten) {
        const AccountRow &row = *account.Row;
        SakoRecord record{};
        std::memcpy(record.Konto, account.Key, sizeof record.Konto);
        PutUtf8(record.Kuerzel, row.Kuerzel);
        record.Zuordnung = ZuordnungOf(SideOf(row));
        record.Zustand = account.Years[year].IsUsed() ? 0 : 1;
        MakePacked(record.Datum, openingDay, ledger.Of->FirstMonth);
        PutUtf8(record.Name, row.Name);
        record.Steuerflags = row.Tax;
        PutUtf8(record.Steuersatz, *row.Rate != 0 ? row.Rate : zeroRate);
        PutSums(record.Umsaetze, account.Years[year]);
        record.FesterSatz = row.IsFixed ? 1 : 0;
        record.Kontenplanflag =
            row.Number == kontoForderungen || row.Number == kontoVerbindlichkeiten ? 1 : 0;
        record.Kennzahl = static_cast<int16_t>(row.Kennzahl);
        if (ledger.FindTemplate(row.Kostenschablone) != nullptr) {
            record.MitKosten = 1;
            record.Kostenschablone = row.Kostenschablone;
        }
        table.Add(record);
    }
    return table.Done();
}

// A partner's row used again gets a name, a Kürzel and an address of its own.
std::string Numbered(const std::string &text, size_t width, int copy)
{
    if (copy == 0) return text;
    const std::string number = std::to_string(copy + 1);
    std::string head = text;
    // Cut by characters of the code page, which is what the width counts.
    while (tools::Columns(head) + number.size() + 1 > width) {
        head = tools::Head(head, tools::Columns(head) - 1);
    }
    return head + " " + number;
}

// No two accounts have one Kürzel, and no two have one number.
std::string ShortNameOf(const Account &account)
{
    std::string kuerzel = account.Partner->Kuerzel;
    if (account.Copy == 0) return kuerzel;
    const std::string number = std::to_string(account.Number);
    return kuerzel.substr(0, 8 - number.size()) + number;
}

int64_t WritePartners(const std::vector<Account> &accounts, int year, TableId id,
                      const std::filesystem::path &directory)
{
    Filling table(id, directory);
    int64_t serial = 0;
    for (const Account &account : accounts) {
        const PartnerRow &row = *account.Partner;
        ++serial;
        PersonalRecord record{};
        std::memcpy(record.Konto, account.Key, sizeof record.Konto);
        PutUtf8(record.Kuerzel, ShortNameOf(account));
        record.Zustand = account.Years[year].IsUsed() ? 0 : 1;
        MakeCalendar(record.Datum, openingDay);
        for (AmountText &amount : record.ReservedAmounts27) {
            PutAmount(amount, 0);
        }
        record.ReservedOne66 = 1;
        PutUtf8(record.Name1, Numbered(row.Name1, sizeof record.Name1 - 1, account.Copy));
        PutUtf8(record.Name2, row.Name2);
        PutUtf8(record.Adresse1, row.Street);
        PutUtf8(record.Plz, row.Plz);
        PutUtf8(record.Land, row.Land);
        PutUtf8(record.Adresse2, row.Place);
        PutSums(record.Umsaetze, account.Years[year]);
        // Bank codes that begin with 999 belong to no bank. Cash customers and partners abroad have none.
        if (std::strcmp(row.Land, "D") == 0 && row.Zahlungsziel != 1) {
            const bool isHafenbank = serial % 3 != 0;
            PutUtf8(record.Blz, isHafenbank ? "99920030" : "99920070");
            PutUtf8(record.Bank, isHafenbank ? "Hafenbank Hamburg" : "Landeskasse Nord");
            PutUtf8(record.Bankkonto, std::to_string(41000000 + serial * 7919));
        }
        record.Wert1 = 0;
        record.Wert2 = 0;
        PutUtf8(record.Skonto, row.Skonto);
        record.Mahnkennziffer = account.Of == Kind::Debitor ? static_cast<int16_t>(serial % 4) : int16_t{0};
        PutUtf8(record.UstId, row.UstId);
        if (account.Of == Kind::Kreditor) PutUtf8(record.Waehrung, row.Waehrung);
        record.Kennzeichen = *row.UstId != 0 ? 1 : 0;
        for (AmountText &amount : record.ReservedAmounts709) {
            PutAmount(amount, 0);
        }
        record.Zahlungsziel = row.Zahlungsziel;
        table.Add(record);
    }
    return table.Done();
}

int64_t WriteRates(const Ledger &ledger, const std::filesystem::path &directory)
{
    Filling table(TableSteke, directory);
    for (const RateRow &row : Rates()) {
        if (!IsFor(row.Mandanten, ledger.Of->Number)) continue;
        StekeRecord record{};
        record.Code = static_cast<uint16_t>(row.Code);
        record.Folge = static_cast<uint16_t>(row.Sequence);
        if (row.Year != 0) {
            MakePacked(record.GueltigAb, tools::DayOf(row.Year, row.Month, row.Day), ledger.Of->FirstMonth);
        }
        PutUtf8(record.Satz, row.Rate);
        PutNumber(record.Umsatzsteuerkonto, row.Umsatzsteuer);
        PutNumber(record.Vorsteuerkonto, row.Vorsteuer);
        table.Add(record);
    }
    return table.Done();
}

// The tree of one side: groups become nodes from 2 on, their accounts leaves behind them, and the root is 1.
struct Tree {
    std::vector<StructureRecord> Nodes = std::vector<StructureRecord>(1);
    std::map<int32_t, int32_t> LastChild; // of a node

    StructureRecord &Node(int32_t id) { return Nodes[static_cast<size_t>(id - 1)]; }

    int32_t Append(int32_t parent, uint16_t art)
    {
        const auto id = static_cast<int32_t>(Nodes.size() + 1);
        Nodes.push_back({});
        Node(id).Id = id;
        Node(id).Art = art;
        const auto last = LastChild.find(parent);
        if (last == LastChild.end()) {
            Node(parent).Child = id;
        } else {
            Node(last->second).Next = id;
        }
        LastChild[parent] = id;
        return id;
    }
};

int64_t WriteTree(const Ledger &ledger, Side side, TableId id, const std::filesystem::path &directory)
{
    Tree tree;
    tree.Node(structureRoot).Id = structureRoot;
    tree.Node(structureRoot).Art = StructureGruppe;
    PutUtf8(tree.Node(structureRoot).Text, side == Side::Aktiva    ? "Aktiva"
                                           : side == Side::Passiva ? "Passiva"
                                                                   : "GuV");
    std::map<int, int32_t> groupNodes;
    for (const GroupRow &group : Groups()) {
        if (group.Place != side) continue;
        const int32_t parent = group.Parent == 0 ? structureRoot : groupNodes.at(group.Parent);
        const int32_t node = tree.Append(parent, StructureGruppe);
        groupNodes[group.Code] = node;
        tree.Node(node).Summenzeile = group.HasTotal ? 1 : 0;
        PutUtf8(tree.Node(node).Text, group.Title);
        // Subgroups come after the accounts of a group; the chart puts accounts into the lowest groups only.
        for (const Account &account : ledger.Sachkonten) {
            const bool isOther = account.Row->OtherGroup == group.Code;
            if (account.Row->Group != group.Code && !isOther) continue;
            const int32_t leaf = tree.Append(node, isOther ? uint16_t{StructureGegenposten} : uint16_t{0});
            PutUtf8(tree.Node(leaf).Text, account.Key);
        }
    }

    Filling table(id, directory);
    for (StructureRecord &record : tree.Nodes) {
        table.Add(record);
    }
    for (const Account &account : ledger.Sachkonten) {
        if (account.Row->Group >= noTree || SideOf(*account.Row) != side) continue;
        StructureRecord record{};
        PutUtf8(record.Text, account.Key);
        table.Add(record);
    }
    return table.Done();
}

int64_t WriteCosts(const Ledger &ledger, int year, const std::filesystem::path &directory)
{
    const auto mandant = ledger.Of->Number;
    Filling objects(TableKore, directory);
    for (const CostObject &object : ledger.CostObjects) {
        const CostObjectRow &row = *object.Row;
        KoreRecord record{};
        PutNumber(record.Nummer, row.Number);
        PutUtf8(record.Kuerzel, row.Kuerzel);
        PutUtf8(record.Name, row.Name);
        record.Kennzeichen = row.IsCarrier ? 1 : 0;
        for (int month = 0; month < 12; ++month) {
            PutAmount(record.Monat[month], object.Month[year][month]);
        }
        PutUtf8(record.Text, row.Text);
        objects.Add(record);
    }

    Filling templates(TableKoscha, directory);
    Filling lines(TableKoschaze, directory);
    for (const CostTemplateRow &row : CostTemplates()) {
        if (!IsFor(row.Mandanten, mandant)) continue;
        KoschaRecord head{};
        head.Nummer = row.Number;
        PutUtf8(head.Name, row.Name);
        for (const CostLineRow &line : CostLines()) {
            if (line.Template != row.Number || !IsFor(line.Mandanten, mandant)) continue;
            ++head.Zeilen;
            KoschazeRecord record{};
            record.Nummer = row.Number;
            PutNumber(record.Kostenobjekt1, line.Object1);
            if (*line.Object2 != 0) PutNumber(record.Kostenobjekt2, line.Object2);
            record.Flag = line.IsDirect ? KobuArt : 0;
            PutUtf8(record.Anteil, line.Share);
            PutUtf8(record.Text, line.Text);
            lines.Add(record);
        }
        templates.Add(head);
    }
    return objects.Done() + templates.Done() + lines.Done();
}

int64_t WriteSmallTables(const std::filesystem::path &directory)
{
    Filling terms(TableZahlziel, directory);
    for (const TermRow &row : Terms()) {
        ZahlzielRecord record{};
        record.Nummer = row.Number;
        PutUtf8(record.Text, row.Text);
        terms.Add(record);
    }
    Filling batches(TableStapel, directory);
    for (const StapelRow &row : Batches()) {
        StapelRecord record{};
        record.Nummer = row.Number;
        PutUtf8(record.Name, row.Name);
        record.Intervall = static_cast<int16_t>(row.Interval);
        batches.Add(record);
    }
    Filling users(TableUser, directory);
    for (const UserRow &row : Users()) {
        UserRecord record{};
        PutUtf8(record.Schluessel, row.Key);
        PutUtf8(record.Name, row.Name);
        users.Add(record);
    }
    return terms.Done() + batches.Done() + users.Done();
}

// Each currency has an average rate for every month of 1997 and 1998, dated on its last day. The dollar has a
// rate of its own on the 10th and the 20th.
int64_t WriteExchangeRates(const Ledger &ledger, const std::filesystem::path &directory)
{
    Filling table(TableKurse, directory);
    const auto add = [&](const CurrencyRow &row, tools::Day day, int rate, bool isAverage) {
        KurseRecord record{};
        PutUtf8(record.Waehrung, row.Code);
        MakeSort(record.Datum, day, ledger.Of->FirstMonth);
        PutAmount(record.Kurs, rate);
        record.Durchschnitt = isAverage ? 1 : 0;
        record.Einheit = static_cast<int16_t>(row.UnitCode);
        table.Add(record);
    };
    for (const CurrencyRow &row : Currencies()) {
        for (int month = 0; month < 12 * yearCount; ++month) {
            const int year = firstFiscalYear + month / 12;
            const int calendarMonth = month % 12 + 1;
            const int average = row.FirstRate + month * row.MonthlyChange;
            if (std::strcmp(row.Code, "USD") == 0) {
                add(row, tools::DayOf(year, calendarMonth, 10), average - 1, false);
                add(row, tools::DayOf(year, calendarMonth, 20), average + 2, false);
            }
            add(row, tools::DayOf(year, calendarMonth, DaysInMonth(year, calendarMonth)), average, true);
        }
    }
    return table.Done();
}

} // namespace

int64_t WriteYear(const Ledger &ledger, int yearIndex, const std::filesystem::path &directory)
{
    return WriteSachkonten(ledger, yearIndex, directory) +
           WritePartners(ledger.Debitoren, yearIndex, TableDebi, directory) +
           WritePartners(ledger.Kreditoren, yearIndex, TableKred, directory) + WriteRates(ledger, directory) +
           WriteTree(ledger, Side::Guv, TableGuvauf, directory) +
           WriteTree(ledger, Side::Aktiva, TableBilaktau, directory) +
           WriteTree(ledger, Side::Passiva, TableBilpasau, directory) +
           WriteCosts(ledger, yearIndex, directory) + WriteSmallTables(directory) +
           WriteExchangeRates(ledger, directory);
}

void WriteCompany(const Ledger &ledger, TableFile &fista)
{
    const Profile &profile = *ledger.Of;
    FistaRecord record{};
    record.Nummer = static_cast<int16_t>(profile.Number);
    PutUtf8(record.Name, profile.Name);
    PutUtf8(record.Name2, profile.Name2);
    if (profile.IsFirstYearOpen) PutUtf8(record.LowerYear, std::to_string(firstFiscalYear));
    PutUtf8(record.UpperYear, std::to_string(firstFiscalYear + yearCount - 1));
    PutNumber(record.Sammelkonto1, kontoForderungen);
    PutNumber(record.Sammelkonto2, kontoVerbindlichkeiten);
    PutUtf8(record.Steuernummer, profile.Steuernummer);
    PutUtf8(record.UstId, profile.UstId);
    if (profile.PaysTaxOnReceipt) {
        record.Sonderkontomodus = 1;
        PutNumber(record.Sonderkonto, kontoSteuerNichtFaellig);
    }
    record.FirstFiscalMonth = static_cast<int16_t>(profile.FirstMonth);
    record.Vordruckcode = profile.Vordruckcode;
    PutUtf8(record.Anschrift1, "Finanzamt Hamburg-Hafen");
    PutUtf8(record.Anschrift2, "Steuerstraße 1");
    PutUtf8(record.Anschrift3, "20457 Hamburg");
    PutUtf8(record.Anschrift4, profile.Street);
    PutUtf8(record.Anschrift5, profile.Place);
    PutUtf8(record.Anschrift6, "Telefon 040 555 0");
    PutUtf8(record.Land, "D");
    PutUtf8(record.Waehrung, "DM");
    record.Kostenrechnung = profile.HasCosts ? 1 : 0;
    record.KostenPflicht = profile.NeedsCosts ? 1 : 0;
    record.UStVAVariante = profile.UStVAVariante;
    fista.Insert(&record);
}

} // namespace books
