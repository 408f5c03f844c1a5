// What a posting writes, into SQLite: the record of 500 bytes with an index each on Buchungsnummer and
// Stapel, one durable commit each.
//   posting_sqlite DIRECTORY COUNT wal|journal   prints the seconds
#include "bench/peers/peer.h"

#include <cstring>
#include <sqlite3.h>
#include <string>

int main(int argumentCount, char **arguments)
{
    const auto [directory, count] = PeerArguments(argumentCount, arguments);
    const bool wal = argumentCount > 3 && std::strcmp(arguments[3], "wal") == 0;
    sqlite3 *database = nullptr;
    Must(sqlite3_open((std::string(directory) + "/books.sqlite").c_str(), &database));
    const auto run = [database](const char *statement) {
        Must(sqlite3_exec(database, statement, nullptr, nullptr, nullptr));
    };
    run(wal ? "PRAGMA journal_mode=WAL" : "PRAGMA journal_mode=DELETE");
    run("PRAGMA synchronous=FULL");
    run("CREATE TABLE IF NOT EXISTS bat (Buchungsnummer INTEGER PRIMARY KEY, Stapel INTEGER, Record BLOB)");
    run("CREATE INDEX IF NOT EXISTS byStapel ON bat (Stapel)");
    sqlite3_stmt *insert = nullptr;
    Must(
        sqlite3_prepare_v2(database, "INSERT INTO bat (Stapel, Record) VALUES (1, ?)", -1, &insert, nullptr));

    const Stopwatch watch;
    for (long i = 0; i < count; ++i) {
        const char record[500] = {};
        Must(sqlite3_bind_blob(insert, 1, record, sizeof record, SQLITE_TRANSIENT));
        Must(sqlite3_step(insert) == SQLITE_DONE ? SQLITE_OK : SQLITE_ERROR);
        Must(sqlite3_reset(insert));
    }
    watch.Print();
    sqlite3_finalize(insert);
    sqlite3_close(database);
}
