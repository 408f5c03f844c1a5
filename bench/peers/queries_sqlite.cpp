// The accounts and open items of sample books in SQLite, each record a row with the columns of its keys and
// an index on each of them, asked as the exports ask: one prepared statement stepped once for a record.
//   queries_sqlite load YEAR_DIRECTORY DATABASE       copies the records
//   queries_sqlite saldo|op DATABASE [PASSES]         prints calls, memory and, last, the seconds
#include "bench/query_calls.h"
#include "tools/common/table_file.h"

#include <exception>
#include <sqlite3.h>
#include <vector>

namespace {

using namespace vark;

struct Connection {
    sqlite3 *Database = nullptr;

    explicit Connection(const char *path)
    {
        Must(sqlite3_open(path, &Database));
        Run("PRAGMA journal_mode=WAL; PRAGMA synchronous=FULL");
    }
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;
    ~Connection() { sqlite3_close(Database); }

    void Run(const std::string &sql) const
    {
        Must(sqlite3_exec(Database, sql.c_str(), nullptr, nullptr, nullptr));
    }
    sqlite3_stmt *Prepare(const std::string &sql) const
    {
        sqlite3_stmt *statement = nullptr;
        Must(sqlite3_prepare_v3(Database, sql.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr));
        return statement;
    }
};

// Account records begin with the number, open items with theirs; the second key is the Kürzel, or the account
// of the item.
template <typename Record>
void Load(const Connection &connection, const char *directory, TableId table, const char *name)
{
    constexpr bool isItem = std::is_same_v<Record, OpenItemRecord>;
    const std::string quoted = name;
    connection.Run("CREATE TABLE " + quoted + " (id INTEGER PRIMARY KEY, number " +
                   (isItem ? "INTEGER" : "BLOB") + ", second BLOB, data BLOB);" + "CREATE UNIQUE INDEX " +
                   quoted + "_number ON " + quoted + " (number); CREATE INDEX " + quoted + "_second ON " +
                   quoted + " (second)");
    sqlite3_stmt *insert =
        connection.Prepare("INSERT INTO " + quoted + " (number, second, data) VALUES (?, ?, ?)");
    tools::TableFile file(tools::LayoutOf(table), directory, tools::OpenMode::ReadOnly);
    Record record;
    for (bool found = file.First(&record, 0); found; found = file.Next(&record, 0)) {
        if constexpr (isItem) {
            sqlite3_bind_int64(insert, 1, record.Nummer);
            sqlite3_bind_blob(insert, 2, record.Konto, sizeof record.Konto, SQLITE_STATIC);
        } else {
            sqlite3_bind_blob(insert, 1, record.Konto, sizeof record.Konto, SQLITE_STATIC);
            sqlite3_bind_blob(insert, 2, record.Kuerzel, sizeof record.Kuerzel, SQLITE_STATIC);
        }
        sqlite3_bind_blob(insert, 3, &record, sizeof record, SQLITE_STATIC);
        Must(sqlite3_step(insert) == SQLITE_DONE ? 0 : 1);
        sqlite3_reset(insert);
    }
    sqlite3_finalize(insert);
}

void LoadAll(const char *directory, const char *path)
{
    const Connection connection(path);
    connection.Run("BEGIN");
    Load<SakoRecord>(connection, directory, TableSako, "sako");
    Load<PersonalRecord>(connection, directory, TableKred, "kred");
    Load<PersonalRecord>(connection, directory, TableDebi, "debi");
    Load<OpenItemRecord>(connection, directory, TableOpkred, "opkred");
    Load<OpenItemRecord>(connection, directory, TableOpdebi, "opdebi");
    connection.Run("COMMIT; PRAGMA wal_checkpoint(TRUNCATE)");
}

char kept[2048]; // what was read last

void Keep(sqlite3_stmt *statement, int column)
{
    std::memcpy(kept, sqlite3_column_blob(statement, column),
                static_cast<size_t>(sqlite3_column_bytes(statement, column)));
}

// The numbers of an account table in their order.
std::vector<QueryAccount> AccountsOf(const Connection &connection, const std::string &table)
{
    std::vector<QueryAccount> accounts;
    sqlite3_stmt *all = connection.Prepare("SELECT number FROM " + table + " ORDER BY number");
    while (sqlite3_step(all) == SQLITE_ROW) {
        QueryAccount account{};
        std::memcpy(account.Konto, sqlite3_column_blob(all, 0), sizeof account.Konto);
        accounts.push_back(account);
    }
    sqlite3_finalize(all);
    return accounts;
}

void AskBalances(const Connection &connection, long passes)
{
    const std::string tables[] = {"sako", "kred", "debi"};
    std::vector<QueryAccount> accounts[3];
    sqlite3_stmt *statements[3];
    for (int i = 0; i < 3; ++i) {
        accounts[i] = AccountsOf(connection, tables[i]);
        statements[i] = connection.Prepare("SELECT data FROM " + tables[i] + " WHERE number = ?");
    }
    QueryReport report;
    const Stopwatch watch;
    for (long pass = 0; pass < passes; ++pass) {
        for (int i = 0; i < 3; ++i) {
            for (const QueryAccount &account : accounts[i]) {
                sqlite3_bind_blob(statements[i], 1, account.Konto, sizeof account.Konto, SQLITE_STATIC);
                Must(sqlite3_step(statements[i]) == SQLITE_ROW ? 0 : 1);
                Keep(statements[i], 0);
                sqlite3_reset(statements[i]);
                ++report.Calls;
            }
        }
        report.EndPass();
    }
    report.Print(watch.Seconds());
    for (sqlite3_stmt *statement : statements) {
        sqlite3_finalize(statement);
    }
}

// One item fetched by its number, then the next number, as the cursor does it.
void AskItems(const Connection &connection, long passes)
{
    QueryReport report;
    const Stopwatch watch;
    for (long pass = 0; pass < passes; ++pass) {
        for (const std::string table : {"opkred", "opdebi"}) {
            sqlite3_stmt *fetch = connection.Prepare("SELECT data FROM " + table + " WHERE number = ?");
            sqlite3_stmt *next = connection.Prepare("SELECT number, data FROM " + table +
                                                    " WHERE number > ? ORDER BY number LIMIT 1");
            int64_t number = -1;
            for (bool isFirst = true;; isFirst = false) {
                if (!isFirst) {
                    sqlite3_bind_int64(fetch, 1, number);
                    Must(sqlite3_step(fetch) == SQLITE_ROW ? 0 : 1);
                    Keep(fetch, 0);
                    sqlite3_reset(fetch);
                    ++report.Calls;
                }
                sqlite3_bind_int64(next, 1, number);
                const bool found = sqlite3_step(next) == SQLITE_ROW;
                if (found) {
                    number = sqlite3_column_int64(next, 0);
                    Keep(next, 1);
                }
                sqlite3_reset(next);
                if (!found) break;
            }
            sqlite3_finalize(fetch);
            sqlite3_finalize(next);
        }
        report.EndPass();
    }
    report.Print(watch.Seconds());
}

} // namespace

int main(int argumentCount, char **arguments)
{
    const QueryTask task = QueryTask::From(argumentCount, arguments);
    try {
        if (task.What == "load" && argumentCount > 3) {
            LoadAll(task.Directory, arguments[3]);
            return 0;
        }
        const Connection connection(task.Directory);
        if (task.What == "saldo") AskBalances(connection, task.Passes);
        if (task.What == "op") AskItems(connection, task.Passes);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
