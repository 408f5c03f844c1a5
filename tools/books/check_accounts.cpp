#include "tools/books/check_accounts.h"

#include "src/values/amounts.h"
#include "tools/books/check_reading.h"
#include "tools/common/texts.h"

#include <algorithm>

namespace books {

using namespace tools;
using namespace vark;

namespace {

// The boxes of the tax return. What an account adds to another one goes nowhere.
bool IsBox(int kennzahl)
{
    constexpr struct {
        int First, Last;
    } boxes[] = {{35, 39}, {41, 46}, {48, 50}, {57, 59}, {61, 66}, {69, 80}, {85, 88}, {91, 95}};
    return std::any_of(std::begin(boxes), std::end(boxes),
                       [&](const auto &some) { return kennzahl >= some.First && kennzahl <= some.Last; });
}

} // namespace

void CheckRates(YearCheck &year)
{
    const auto read = [&](const char *bytes) {
        StekeRecord row;
        std::memcpy(&row, bytes, sizeof row);
        Rate rate{row.Folge, row.GueltigAb[0] == 0,         0,
                  0,         Packed(row.Umsatzsteuerkonto), Packed(row.Vorsteuerkonto)};
        DayOfPacked(row.GueltigAb, year.Of.FirstMonth, rate.From);
        rate.Percent = static_cast<int>(MagnitudeOf(row.Satz));
        year.Rates[row.Code].push_back(rate);
    };
    if (!CheckTable(year.Out, LayoutOf(TableSteke), year.Directory, year.Of.FirstMonth, read))
        year.Unread.insert(TableSteke);
    for (auto &[code, rows] : year.Rates) {
        std::sort(rows.begin(), rows.end(),
                  [](const Rate &a, const Rate &b) { return a.Sequence < b.Sequence; });
        for (size_t i = 0; i < rows.size(); ++i) {
            const std::string key = std::to_string(code) + " " + std::to_string(rows[i].Sequence);
            if (rows[i].Sequence != static_cast<int>(i)) {
                year.Tell("steuersatz", "steke", key, "Folge", "davor fehlt die Folge " + std::to_string(i));
                break;
            }
            if (i == 0) continue;
            const bool isOlder = !rows[i - 1].IsOpen && (rows[i].IsOpen || rows[i].From < rows[i - 1].From);
            if (!isOlder)
                year.Tell("steuersatz", "steke", key, "GueltigAb", "die höhere Folge ist nicht älter");
        }
    }
}

// The accounts of the rates, once these are known.
void CheckRateRows(YearCheck &year)
{
    if (!year.AreRead({TableSteke})) return;
    TableFile table(LayoutOf(TableSteke), year.Directory, OpenMode::ReadOnly);
    StekeRecord row{};
    for (bool found = table.StepFirst(&row); found; found = table.StepNext(&row)) {
        CheckReferences(year, TableSteke, row);
    }
}

namespace {

void AddAccount(YearCheck &year, AccountKind kind, const AccountNumber &number, int16_t zuordnung,
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
    const bool isNew = year.AccountOf.emplace(Packed(number), year.Accounts.size()).second;
    if (!isNew) {
        year.Tell("kontonummer", KindName(kind), state.Number, "Konto",
                  std::string("die Nummer steht auch in ") + KindName(year.Find(number)->Kind));
        return;
    }
    year.Accounts.push_back(std::move(state));
}

void CheckShortName(YearCheck &year, const char *table, const std::string &number, const std::string &name)
{
    if (name.empty()) {
        year.Tell("kuerzel", table, number, "Kuerzel", "das Kürzel fehlt");
    } else if (!year.ShortNames.insert(name).second) {
        year.Tell("kuerzel", table, number, "Kuerzel",
                  "das Kürzel „" + name + "“ hat schon ein anderes Konto");
    }
}

void CheckSachkonto(YearCheck &year, const SakoRecord &record)
{
    const std::string number = Konto(record.Konto);
    CheckShortName(year, "sako", number, FieldText(record.Kuerzel));
    if (record.Name[0] == 0) year.Tell("name", "sako", number, "Name", "der Name fehlt");
    if (record.Zuordnung != ZuordnungKeine && record.Zuordnung != ZuordnungAktiva &&
        record.Zuordnung != ZuordnungPassiva && record.Zuordnung != ZuordnungGuv) {
        year.Tell("zuordnung", "sako", number, "Zuordnung",
                  "den Wert " + std::to_string(record.Zuordnung) + " gibt es nicht");
    }
    const int tax = record.Steuerflags & ~SteuerVorsteuer;
    constexpr int taxes[] = {0,       SteuerRegelsatz, SteuerErmaessigt, SteuerNullsatz, SteuerSonstigerSatz,
                             SteuerEg};
    if (std::find(std::begin(taxes), std::end(taxes), tax) == std::end(taxes)) {
        year.Tell("steuerschluessel", "sako", number, "Steuerflags",
                  "den Schlüssel " + std::to_string(record.Steuerflags) + " gibt es nicht");
    } else if (tax != 0 && year.AreRead({TableSteke}) &&
               year.Rates.count(record.Steuerflags & SteuerCodeMaske) == 0) {
        year.Tell("verweis", "sako", number, "Steuerflags",
                  "zum Schlüssel " + std::to_string(record.Steuerflags) + " steht kein Satz in steke");
    }
    if (record.Kennzahl != 0 && !IsBox(record.Kennzahl)) {
        year.Tell("kennzahl", "sako", number, "Kennzahl",
                  std::to_string(record.Kennzahl) + " ist keine Kennzahl");
    }
}

void CheckPartner(YearCheck &year, AccountKind kind, const PersonalRecord &record)
{
    const char *table = KindName(kind);
    const std::string number = Konto(record.Konto);
    CheckShortName(year, table, number, FieldText(record.Kuerzel));
    if (record.Name1[0] == 0) year.Tell("name", table, number, "Name1", "der Name fehlt");
    const bool hasBank = record.Bankkonto[0] != 0 || record.BankkontoAlt[0] != 0;
    if ((record.Blz[0] != 0) != hasBank) {
        year.Tell("bank", table, number, "Blz", "Bankleitzahl und Bankkonto gehören zusammen");
    }
    if (record.UstId[0] != 0 && !NamesCountry(FieldText(record.UstId))) {
        year.Out.Remark("ustid", table, number, "UstId", "die Nummer beginnt nicht mit ihrem Land");
    }
    const bool isGoodReminder = kind == AccountKind::Debitor
                                    ? record.Mahnkennziffer >= -1 && record.Mahnkennziffer <= 3
                                    : record.Mahnkennziffer == 0;
    if (!isGoodReminder) {
        year.Tell("mahnkennziffer", table, number, "Mahnkennziffer",
                  "den Wert " + std::to_string(record.Mahnkennziffer) + " gibt es hier nicht");
    }
}

} // namespace

void CheckAccounts(YearCheck &year)
{
    Check<SakoRecord>(year, TableSako, [&](const SakoRecord &record) {
        AddAccount(year, AccountKind::Sachkonto, record.Konto, record.Zuordnung, record.Umsaetze);
        CheckSachkonto(year, record);
    });
    const auto check = [&](AccountKind kind, TableId id) {
        Check<PersonalRecord>(year, id, [&](const PersonalRecord &record) {
            AddAccount(year, kind, record.Konto, ZuordnungKeine, record.Umsaetze);
            CheckPartner(year, kind, record);
        });
    };
    check(AccountKind::Debitor, TableDebi);
    check(AccountKind::Kreditor, TableKred);

    if (!year.AreRead({TableSako})) return;
    // Both sides of the opening Bilanz, and of what the year's end brought, are equal.
    int64_t opening = 0;
    Turnover closing;
    for (const AccountState &account : year.Accounts) {
        if (account.Zuordnung == ZuordnungAktiva || account.Zuordnung == ZuordnungPassiva) {
            opening += account.VortragBalance;
        }
        if (account.Zuordnung == ZuordnungGuv && account.VortragBalance != 0) {
            year.Tell("vortrag", "sako", account.Number, "Umsaetze.Vortrag",
                      "ein Konto der GuV beginnt das Jahr mit " + Money(account.VortragBalance));
        }
        closing.Soll += account.Slot0.Soll;
        closing.Haben += account.Slot0.Haben;
    }
    if (opening != 0) {
        year.Tell("vortrag", "sako", "", "Umsaetze.Vortrag",
                  "die Vorträge der Bilanzkonten gehen um " + Money(opening) + " nicht auf");
    }
    if (closing.Soll != closing.Haben) {
        year.Tell("abschluss", "sako", "", "Umsaetze.Slot0",
                  "Soll " + Money(closing.Soll) + " und Haben " + Money(closing.Haben) + " sind ungleich");
    }
}

} // namespace books
