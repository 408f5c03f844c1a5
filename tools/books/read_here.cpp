#include "tools/books/apart.h"
#include "tools/books/check_company.h"
#include "tools/books/check_tables.h"
#include "tools/books/check_year.h"
#include "tools/books/place.h"
#include "tools/common/installation.h"
#include "tools/common/table_file.h"

namespace books {

namespace fs = std::filesystem;
using namespace tools;

namespace {

bool HasAnyTable(const fs::path &directory)
{
    for (const TableLayout &layout : Tables()) {
        try {
            const TableFile table(layout, directory, OpenMode::ReadOnly);
            return true;
        } catch (const EngineError &error) {
            if (error.Status != BtrStatusFileNotFound) throw;
        }
    }
    return false;
}

void CheckDirectory(Findings &findings, const fs::path &data, const std::string &name,
                    const fs::path &directory)
{
    int year = 0;
    int number = 0;
    if (!ParseYearDirectory(name, year, number)) {
        findings.Tell("verzeichnis", "", "", "", "das Verzeichnis hat keinen Namen aus Jahr und Mandant");
        return;
    }
    if (IsOnServer(directory) && !HasAnyTable(directory)) {
        findings.Tell("lesbar", "", "", "",
                      "das Schema, das books.server nennt, hat keine Bücher; hat ein abgebrochenes Laden das "
                      "Verzeichnis hinterlassen, so räumt das nächste es weg");
        return;
    }
    const auto mandant = FindMandant(data, number);
    if (!mandant) {
        findings.Tell("verzeichnis", "", "", "",
                      "zu dem Verzeichnis gibt es keinen Mandanten " + std::to_string(number));
        return;
    }
    const std::string last = mandant->Directory(mandant->UpperYear);
    const YearPlace place = {directory, last == name ? directory : data / last,
                             data / mandant->Directory(std::to_string(year - 1))};
    CheckYear(findings, place, *mandant, year);
}

} // namespace

void ReadHere(const Reading &reading, int to)
{
    // A damaged page ends this process; where it happened is told by the other one.
    Findings findings(to, reading.Name);
    try {
        if (reading.Name.empty()) {
            CheckCompany(findings, reading.Data);
        } else {
            CheckDirectory(findings, reading.Data, reading.Name, reading.Directory);
        }
    } catch (const EngineError &error) {
        if (IsCircumstance(error.Status)) {
            findings.Stop(error.what());
        } else {
            findings.Tell("lesbar", "", "", "", error.what());
        }
    } catch (const std::exception &error) {
        findings.Tell("lesbar", "", "", "", error.what());
    }
}

} // namespace books
