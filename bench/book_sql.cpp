// Questions in SQL over live books, and over the same rows in a plain SQLite table: a sum over every posting,
// and one account looked up again and again. The plain tables lie in a file and have the indexes of the books.
//   book_sql EXTENSION DATA_PATH PLAIN_FILE make|sum|point [plain|posting]   prints the seconds
#include "bench/peers/peer.h"

#include <chrono>
#include <cstdio>
#include <sqlite3.h>
#include <string>

namespace {

constexpr int points = 20000; // lookups that are timed together

struct Connection {
    sqlite3 *Database = nullptr;

    explicit Connection(const char *file) { Must(sqlite3_open(file, &Database)); }
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;
    ~Connection() { sqlite3_close(Database); }

    void Do(const std::string &statement) const
    {
        char *message = nullptr;
        if (sqlite3_exec(Database, statement.c_str(), nullptr, nullptr, &message) == SQLITE_OK) return;
        std::fprintf(stderr, "%s: %s\n", statement.c_str(), message);
        Must(1);
    }
    sqlite3_stmt *Prepare(const char *statement) const
    {
        sqlite3_stmt *prepared = nullptr;
        Must(sqlite3_prepare_v2(Database, statement, -1, &prepared, nullptr));
        return prepared;
    }
    void OpenBooks(const std::string &extension, const std::string &data) const
    {
        Must(sqlite3_db_config(Database, SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 1, nullptr));
        Must(sqlite3_load_extension(Database, extension.c_str(), nullptr, nullptr));
        Do("SELECT buecher_oeffnen('" + data + "')");
    }
};

void MakePlain(const Connection &connection)
{
    connection.Do("CREATE TABLE main.plain_bube AS SELECT * FROM temp.bube_1997;"
                  "CREATE TABLE main.plain_sako AS SELECT * FROM temp.sako_1997;"
                  "CREATE UNIQUE INDEX plain_konto ON plain_sako (Konto);"
                  "CREATE UNIQUE INDEX plain_nummer ON plain_bube (Buchungsnummer);"
                  "CREATE INDEX plain_soll ON plain_bube (Sollkonto, \"Schluessel.Tag\");"
                  "ANALYZE");
}

int64_t SumOf(sqlite3_stmt *statement)
{
    Must(sqlite3_step(statement) == SQLITE_ROW ? 0 : 1);
    const int64_t sum = sqlite3_column_int64(statement, 0);
    sqlite3_reset(statement);
    return sum;
}

} // namespace

int main(int count, char **arguments)
{
    if (count < 5) return 2;
    const std::string task = arguments[4];
    const std::string kind = count > 5 ? arguments[5] : "";
    const bool isPlain = kind.starts_with("plain");
    const Connection connection(arguments[3]);
    if (task == "make" || !isPlain) connection.OpenBooks(arguments[1], arguments[2]);
    if (task == "make") {
        MakePlain(connection);
        return 0;
    }
    const auto begin = std::chrono::steady_clock::now();
    int64_t sum = 0;
    if (task == "sum") {
        sum = SumOf(
            connection.Prepare(isPlain ? "SELECT sum(Soll) FROM plain_bube" : "SELECT sum(Soll) FROM bube_1997"));
    } else if (task == "point") {
        sqlite3_stmt *statement =
            connection.Prepare(isPlain ? "SELECT \"Umsaetze.Vortrag.Soll\" FROM plain_sako WHERE Konto = ?"
                                       : "SELECT \"Umsaetze.Vortrag.Soll\" FROM sako_1997 WHERE Konto = ?");
        sqlite3_bind_text(statement, 1, "1840", -1, SQLITE_STATIC);
        for (int i = 0; i < points; ++i) {
            sum += SumOf(statement);
        }
    } else {
        sqlite3_stmt *statement =
            connection.Prepare(isPlain ? "SELECT Soll FROM plain_bube WHERE Buchungsnummer = ?"
                                       : "SELECT Soll FROM bube_1997 WHERE Buchungsnummer = ?");
        for (int i = 0; i < points; ++i) {
            sqlite3_bind_int(statement, 1, 1 + i % 100);
            Must(sqlite3_step(statement) == SQLITE_ERROR ? 1 : 0);
            sqlite3_reset(statement);
        }
    }
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
    std::printf("%lld %.6f\n", static_cast<long long>(sum), seconds.count());
    return 0;
}
