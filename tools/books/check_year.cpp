#include "tools/books/year_check.h"

#include <algorithm>

namespace books {

namespace fs = std::filesystem;
using namespace tools;
using namespace vark;

namespace {

// Tables from here on stand in the directory of the last postable year only; older years keep theirs unused.
constexpr TableId firstOfLastYear = TableBat;

} // namespace

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

const char *KindName(AccountKind kind)
{
    switch (kind) {
    case AccountKind::Sachkonto: return "sako";
    case AccountKind::Kreditor: return "kred";
    case AccountKind::Debitor: return "debi";
    }
    return "";
}

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
        Templates.insert(int32_t{row.Nummer});
        TemplateLines[row.Nummer] = row.Zeilen;
    });
    ReadLast<ZahlzielRecord>(TableZahlziel,
                             [&](const ZahlzielRecord &row) { Terms.insert(int32_t{row.Nummer}); });
    ReadLast<StapelRecord>(TableStapel,
                           [&](const StapelRecord &row) { Batches.insert(int32_t{row.Nummer}); });
    ReadLast<UserRecord>(TableUser, [&](const UserRecord &row) { Users.insert(FieldText(row.Schluessel)); });
    ReadLast<KurseRecord>(TableKurse,
                          [&](const KurseRecord &row) { Currencies.insert(FieldText(row.Waehrung)); });
}

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
    std::set<uint64_t> known;
    const auto compare = [&](const AccountNumber &number, int64_t closing) {
        known.insert(Packed(number));
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
        for (const AccountState &one : Accounts) {
            if (one.VortragBalance == 0 || known.count(one.Key) > 0) continue;
            Tell("vortrag", KindName(one.Kind), one.Number, "Umsaetze.Vortrag",
                 Money(one.VortragBalance) + ", im Vorjahr gab es das Konto nicht");
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

void CheckYear(Findings &findings, const fs::path &data, const Mandant &mandant, int year)
{
    YearCheck(findings, data, mandant, year).Run();
}

} // namespace books
