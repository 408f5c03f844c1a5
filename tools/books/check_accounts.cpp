#include "tools/books/year_check.h"

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

bool NamesCountry(const std::string &ustId)
{
    const auto isLetter = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); };
    return ustId.size() > 2 && isLetter(ustId[0]) && isLetter(ustId[1]);
}

void YearCheck::CheckRates()
{
    CheckTable(Out, LayoutOf(TableSteke), Directory, Of.FirstMonth, [&](const char *bytes) {
        StekeRecord row;
        std::memcpy(&row, bytes, sizeof row);
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
            CheckReferences(TableSteke, row);
        }
    } catch (const EngineError &) {
        // Told when the table itself was checked.
    }
}

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
    if (record.Kennzahl != 0 && !IsBox(record.Kennzahl)) {
        Tell("kennzahl", "sako", number, "Kennzahl", std::to_string(record.Kennzahl) + " ist keine Kennzahl");
    }
}

void YearCheck::CheckPartner(AccountKind kind, const PersonalRecord &record)
{
    const char *table = KindName(kind);
    const std::string number = Konto(record.Konto);
    CheckShortName(table, number, FieldText(record.Kuerzel));
    if (record.Name1[0] == 0) Tell("name", table, number, "Name1", "der Name fehlt");
    const bool hasBank = record.Bankkonto[0] != 0 || record.BankkontoAlt[0] != 0;
    if ((record.Blz[0] != 0) != hasBank) {
        Tell("bank", table, number, "Blz", "Bankleitzahl und Bankkonto gehören zusammen");
    }
    if (record.UstId[0] != 0 && !NamesCountry(FieldText(record.UstId))) {
        Tell("ustid", table, number, "UstId", "die Nummer beginnt nicht mit ihrem Land");
    }
    const bool isGoodReminder = kind == AccountKind::Debitor
                                    ? record.Mahnkennziffer >= -1 && record.Mahnkennziffer <= 3
                                    : record.Mahnkennziffer == 0;
    if (!isGoodReminder) {
        Tell("mahnkennziffer", table, number, "Mahnkennziffer",
             "den Wert " + std::to_string(record.Mahnkennziffer) + " gibt es hier nicht");
    }
}

} // namespace books
