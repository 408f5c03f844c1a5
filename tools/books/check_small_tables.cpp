#include "tools/books/check_small_tables.h"

#include "tools/books/check_reading.h"
#include "tools/common/texts.h"

#include <algorithm>

namespace books {

using namespace tools;
using namespace vark;

namespace {

// Tables from here on stand in the directory of the last postable year only; older years keep theirs unused.
constexpr TableId firstOfLastYear = TableBat;

} // namespace

void ReadReferences(YearCheck &year)
{
    ReadLast<KoschaRecord>(year, TableKoscha, [&](const KoschaRecord &row) {
        year.Templates.insert(int32_t{row.Nummer});
        year.TemplateLines[row.Nummer] = row.Zeilen;
    });
    ReadLast<ZahlzielRecord>(year, TableZahlziel,
                             [&](const ZahlzielRecord &row) { year.Terms.insert(int32_t{row.Nummer}); });
    ReadLast<StapelRecord>(year, TableStapel,
                           [&](const StapelRecord &row) { year.Batches.insert(int32_t{row.Nummer}); });
    ReadLast<UserRecord>(year, TableUser,
                         [&](const UserRecord &row) { year.Users.insert(FieldText(row.Schluessel)); });
    ReadLast<KurseRecord>(year, TableKurse,
                          [&](const KurseRecord &row) { year.Currencies.insert(FieldText(row.Waehrung)); });
}

void CheckSmallTables(YearCheck &year)
{
    Check<ZahlzielRecord>(year, TableZahlziel, [&](const ZahlzielRecord &record) {
        if (record.Text[0] == 0)
            year.Tell("name", "zahlziel", std::to_string(record.Nummer), "Text", "der Text fehlt");
    });
    Check<UserRecord>(year, TableUser, [&](const UserRecord &record) {
        if (record.Name[0] == 0)
            year.Tell("name", "user", FieldText(record.Schluessel), "Name", "der Name fehlt");
    });
    Check<StapelRecord>(year, TableStapel, [&](const StapelRecord &record) {
        const std::string key = std::to_string(record.Nummer);
        if (record.Name[0] == 0) year.Tell("name", "stapel", key, "Name", "der Name fehlt");
        if (record.Intervall < 0 || record.Intervall > 99) {
            year.Tell("stapel", "stapel", key, "Intervall",
                      std::to_string(record.Intervall) + " ist keine Zahl von Monaten");
        }
    });
}

void CheckExchangeRates(YearCheck &year)
{
    std::set<std::string> averages;
    Check<KurseRecord>(year, TableKurse, [&](const KurseRecord &record) {
        const std::string key = FieldText(record.Waehrung) + " " + FieldText(record.Datum);
        if (record.Waehrung[0] == 0) year.Tell("kurs", "kurse", key, "Waehrung", "die Währung fehlt");
        if (Pfennig(record.Kurs) <= 0)
            year.Tell("kurs", "kurse", key, "Kurs", Money(Pfennig(record.Kurs)) + " ist kein Kurs");
        if (record.Durchschnitt != 0 &&
            !averages.insert(FieldText(record.Waehrung) + FieldText(record.Datum, 4)).second) {
            year.Tell("kurs", "kurse", key, "Durchschnitt", "der Monat hat mehr als einen Durchschnittskurs");
        }
        constexpr int16_t units[] = {1, 2, 3, 4, 5, 10};
        if (std::find(std::begin(units), std::end(units), record.Einheit) == std::end(units)) {
            year.Tell("kurs", "kurse", key, "Einheit", std::to_string(record.Einheit) + " ist keine Einheit");
        }
    });
}

void CheckUnused(YearCheck &year)
{
    constexpr TableId numbered[] = {TableBank,   TableUeberw, TableButext,
                                    TableBuscha, TableBumak,  TableMahntext};
    for (const TableLayout &layout : Tables()) {
        const bool isNumbered =
            std::find(std::begin(numbered), std::end(numbered), layout.Id) != std::end(numbered);
        const bool isUnused = !year.IsLastYear && IsYearTable(layout) && layout.Id >= firstOfLastYear;
        if (isNumbered || isUnused) CheckAlone(year, layout.Id);
    }
}

} // namespace books
