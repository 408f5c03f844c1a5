// The table of the record manager's benchmarks in SQLite: a row each, three indexes; a read is one prepared
// statement, stepped once. WAL, so that a reader and the writer do not keep each other out.
//   record_sqlite DIRECTORY COUNT load|equal|next|scattered [writing]   prints the seconds
#include "bench/peers/peer.h"
#include "bench/record_table.h"

#include <optional>
#include <sqlite3.h>

namespace {

struct Connection {
    sqlite3 *Database = nullptr;

    explicit Connection(const std::string &directory)
    {
        Must(sqlite3_open((directory + "/table.sqlite").c_str(), &Database));
        Must(sqlite3_busy_timeout(Database, 10000));
        Must(sqlite3_exec(Database, "PRAGMA journal_mode=WAL; PRAGMA synchronous=FULL", nullptr, nullptr,
                          nullptr));
    }
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;
    ~Connection() { sqlite3_close(Database); }

    sqlite3_stmt *Prepare(const char *sql) const
    {
        sqlite3_stmt *statement = nullptr;
        Must(sqlite3_prepare_v3(Database, sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr));
        return statement;
    }
};

void Load(const Connection &connection, uint32_t count)
{
    Must(sqlite3_exec(
        connection.Database,
        "CREATE TABLE t (id INTEGER PRIMARY KEY, number INTEGER, random INTEGER, grp BLOB, data BLOB);"
        "CREATE UNIQUE INDEX byNumber ON t (number);"
        "CREATE UNIQUE INDEX byRandom ON t (random);"
        "CREATE INDEX byGroup ON t (grp)",
        nullptr, nullptr, nullptr));
    sqlite3_stmt *insert =
        connection.Prepare("INSERT INTO t (number, random, grp, data) VALUES (?, ?, ?, ?)");
    Must(sqlite3_exec(connection.Database, "BEGIN", nullptr, nullptr, nullptr));
    for (uint32_t number = 1; number <= count; ++number) {
        BenchRecord record;
        FillBenchRecord(&record, number, count);
        sqlite3_bind_int64(insert, 1, record.Number);
        sqlite3_bind_int64(insert, 2, record.Random);
        sqlite3_bind_blob(insert, 3, record.Group, sizeof record.Group, SQLITE_STATIC);
        sqlite3_bind_blob(insert, 4, &record, sizeof record, SQLITE_STATIC);
        Must(sqlite3_step(insert) == SQLITE_DONE ? 0 : 1);
        sqlite3_reset(insert);
        if (number % 25000 == 0)
            Must(sqlite3_exec(connection.Database, "COMMIT; BEGIN", nullptr, nullptr, nullptr));
    }
    Must(sqlite3_exec(connection.Database, "COMMIT; PRAGMA wal_checkpoint(TRUNCATE)", nullptr, nullptr,
                      nullptr));
    sqlite3_finalize(insert);
}

// One step of the statement with the key bound; gives back the row's key and copies the record.
bool Step(sqlite3_stmt *statement, int64_t *key, BenchRecord *record)
{
    sqlite3_bind_int64(statement, 1, *key);
    const bool found = sqlite3_step(statement) == SQLITE_ROW;
    if (found) {
        *key = sqlite3_column_int64(statement, 0);
        memcpy(record, sqlite3_column_blob(statement, 1), sizeof *record);
    }
    sqlite3_reset(statement);
    return found;
}

void ReadEqual(const Connection &connection, uint32_t count)
{
    sqlite3_stmt *statement = connection.Prepare("SELECT number, data FROM t WHERE number = ?");
    BenchRecord record;
    BenchRandom random;
    for (uint32_t i = 0; i < count; ++i) {
        int64_t key = random.Below(count) + 1;
        Must(Step(statement, &key, &record) ? 0 : 1);
    }
    sqlite3_finalize(statement);
}

void ReadAlong(const Connection &connection, const char *sql, uint32_t count)
{
    sqlite3_stmt *statement = connection.Prepare(sql);
    BenchRecord record;
    int64_t key = -1;
    for (uint32_t i = 0; i < count; ++i) {
        Must(Step(statement, &key, &record) ? 0 : 1);
    }
    Must(Step(statement, &key, &record) ? 1 : 0);
    sqlite3_finalize(statement);
}

} // namespace

int main(int argumentCount, char **arguments)
{
    const BenchTask task = BenchTask::From(argumentCount, arguments);
    Stopwatch watch;
    const Connection connection(task.Directory);
    if (task.What == "load") {
        Load(connection, task.Count);
        watch.Print();
        return 0;
    }
    std::optional<BenchWriter> writer;
    if (task.Writing) {
        writer.emplace([&](const std::atomic<bool> &ends) {
            const Connection own(task.Directory);
            sqlite3_stmt *read = own.Prepare("SELECT number, data FROM t WHERE number = ?");
            sqlite3_stmt *write = own.Prepare("UPDATE t SET data = ? WHERE number = ?");
            BenchRandom random{42};
            while (!ends) {
                int64_t key = random.Below(task.Count) + 1;
                BenchRecord record;
                Must(Step(read, &key, &record) ? 0 : 1);
                record.Rest[100]++;
                sqlite3_bind_blob(write, 1, &record, sizeof record, SQLITE_STATIC);
                sqlite3_bind_int64(write, 2, key);
                Must(sqlite3_step(write) == SQLITE_DONE ? 0 : 1);
                sqlite3_reset(write);
            }
            sqlite3_finalize(read);
            sqlite3_finalize(write);
        });
    }
    watch = {};
    if (task.What == "equal") ReadEqual(connection, task.Count);
    if (task.What == "next") {
        ReadAlong(connection, "SELECT number, data FROM t WHERE number > ? ORDER BY number LIMIT 1",
                  task.Count);
    }
    if (task.What == "scattered") {
        ReadAlong(connection, "SELECT random, data FROM t WHERE random > ? ORDER BY random LIMIT 1",
                  task.Count);
    }
    const double seconds = watch.Seconds();
    writer.reset();
    printf("%.6f\n", seconds);
}
