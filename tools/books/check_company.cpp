#include "tools/books/check_company.h"

#include "tools/books/check_tables.h"
#include "tools/books/check_values.h"
#include "tools/common/installation.h"
#include "tools/common/texts.h"

#include <cstring>

namespace books {

namespace fs = std::filesystem;
using namespace tools;
using namespace vark;

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
        if (record.UstId[0] != 0 && !NamesCountry(FieldText(record.UstId))) {
            findings.Remark("ustid", "fista", key, "UstId", "die Nummer beginnt nicht mit ihrem Land");
        }
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
        } catch (const EngineError &error) {
            if (IsCircumstance(error.Status)) throw;
            // Told where that directory is checked.
        }
    });
}

} // namespace books
