#include "tools/sql/opening.h"

#include "tools/common/installation.h"
#include "tools/sql/table.h"
#include "tools/sql/views.h"

#include <stdexcept>
#include <vector>

namespace sql {

namespace fs = std::filesystem;
using namespace tools;

namespace {

fs::path DataPathIn(const fs::path &given)
{
    if (given.empty()) {
        fs::path configured = ConfiguredDataPath();
        if (!configured.empty()) return configured;
        throw std::runtime_error(
            "In keiner Ini-Datei steht, wo die Bücher liegen. Geben Sie das Verzeichnis an.");
    }
    const fs::path place = fs::absolute(given).lexically_normal();
    if (!fs::is_directory(place)) throw std::runtime_error(place.string() + " ist kein Verzeichnis.");
    const bool isAbove = !fs::exists(place / "books.mdb") && fs::is_directory(place / "DB");
    return isAbove ? place / "DB" : place;
}

// These are books, and may be read.
void CheckBooks(Session &books)
{
    try {
        (void)books.FirstMonthOf(0);
    } catch (const EngineError &error) {
        if (error.Status != BtrStatusFileNotFound || fs::exists(books.Data / "books.mdb")) throw;
        throw std::runtime_error("In " + books.Data.string() + " liegen keine Bücher.");
    }
}

void Do(sqlite3 *database, const std::string &statement)
{
    char *message = nullptr;
    if (sqlite3_exec(database, statement.c_str(), nullptr, nullptr, &message) == SQLITE_OK) return;
    const std::string why = message != nullptr ? message : "SQLite hat keinen Speicher mehr.";
    sqlite3_free(message);
    throw std::runtime_error(why);
}

std::string Quoted(const std::string &text, char quote)
{
    std::string quoted(1, quote);
    for (const char character : text) {
        if (character == quote) quoted += quote;
        quoted += character;
    }
    return quoted + quote;
}

// What an earlier opening has made.
std::vector<std::string> MadeBefore(sqlite3 *database)
{
    std::string statement = "SELECT 'DROP ' || type || ' temp.\"' || name || '\"' FROM sqlite_temp_master "
                            "WHERE type = 'table' AND sql LIKE 'CREATE VIRTUAL TABLE % USING ";
    statement += std::string(moduleName) + "(%'";
    for (const View &view : Views()) {
        statement += " OR type = 'view' AND name = " + Quoted(view.Name, '\'');
    }
    std::vector<std::string> drops;
    char *message = nullptr;
    const auto add = [](void *to, int, char **values, char **) {
        static_cast<std::vector<std::string> *>(to)->emplace_back(values[0]);
        return 0;
    };
    if (sqlite3_exec(database, statement.c_str(), add, &drops, &message) != SQLITE_OK) {
        sqlite3_free(message);
        throw std::runtime_error("SQLite zeigt seine Tabellen nicht.");
    }
    return drops;
}

void MakeTable(sqlite3 *database, const fs::path &data, const TableLayout &layout, const std::string &year)
{
    const std::string name = year.empty() ? layout.Stem : layout.Stem + "_" + year;
    Do(database, "CREATE VIRTUAL TABLE temp." + Quoted(name, '"') + " USING " + moduleName + "(" +
                     Quoted(data.string(), '\'') + ", " + Quoted(layout.Stem, '\'') +
                     (year.empty() ? "" : ", " + Quoted(year, '\'')) + ")");
}

void MakeAll(sqlite3 *database, const fs::path &data, const std::vector<YearPlace> &years)
{
    for (const std::string &drop : MadeBefore(database)) {
        Do(database, drop);
    }
    for (const TableLayout &layout : Tables()) {
        MakeTable(database, data, layout, "");
        if (!IsYearTable(layout)) continue;
        for (const YearPlace &year : years) {
            MakeTable(database, data, layout, year.Name);
        }
    }
    for (const View &view : Views()) {
        Do(database, "CREATE TEMP VIEW " + view.Name + " AS " + view.Select);
    }
}

} // namespace

fs::path OpenBooks(sqlite3 *database, Connection &connection, const fs::path &place)
{
    fs::path data = DataPathIn(place);
    Session &books = connection.At(data);
    const SessionUse use(books);
    CheckBooks(books);
    constexpr const char *savepoint = "buecher_oeffnen";
    Do(database, std::string("SAVEPOINT ") + savepoint);
    try {
        MakeAll(database, data, books.Years());
    } catch (...) {
        Do(database, std::string("ROLLBACK TO ") + savepoint + "; RELEASE " + savepoint);
        throw;
    }
    Do(database, std::string("RELEASE ") + savepoint);
    return data;
}

} // namespace sql
