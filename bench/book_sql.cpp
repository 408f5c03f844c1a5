// Questions in SQL over live books, and over the same rows in a plain SQLite table with the indexes of the
// books: a sum over every posting, an account looked up again and again, and a posting.
//   book_sql EXTENSION DATA_PATH PLAIN_FILE make|sum|account|posting [plain]   prints the seconds
#include "bench/peers/peer.h"

#include <sqlite3.h>
#include <string>

namespace {

constexpr int lookups = 20000; // that are timed together

struct Connection {
    sqlite3 *Database = nullptr;

    explicit Connection(const char *file) { Must(sqlite3_open(file, &Database)); }
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;
    ~Connection() { sqlite3_close(Database); }

    void Do(const std::string &statement) const
    {
        Must(sqlite3_exec(Database, statement.c_str(), nullptr, nullptr, nullptr));
    }
    void OpenBooks(const char *extension, const std::string &data) const
    {
        Must(sqlite3_db_config(Database, SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 1, nullptr));
        Must(sqlite3_load_extension(Database, extension, nullptr, nullptr));
        Do("SELECT buecher_oeffnen('" + data + "')");
    }
};

struct Question {
    sqlite3_stmt *Statement = nullptr;

    Question(const Connection &connection, const std::string &text)
    {
        Must(sqlite3_prepare_v2(connection.Database, text.c_str(), -1, &Statement, nullptr));
    }
    Question(const Question &) = delete;
    Question &operator=(const Question &) = delete;
    ~Question() { sqlite3_finalize(Statement); }

    // There has to be an answer, which is told, so that both are seen to say the same.
    int64_t Answer() const
    {
        Must(sqlite3_step(Statement) == SQLITE_ROW ? 0 : 1);
        const int64_t answer = sqlite3_column_int64(Statement, 0);
        Must(sqlite3_reset(Statement));
        return answer;
    }
};

void MakePlain(const Connection &connection)
{
    connection.Do("CREATE TABLE main.plain_bube AS SELECT * FROM temp.bube_1997;"
                  "CREATE TABLE main.plain_sako AS SELECT * FROM temp.sako_1997;"
                  "CREATE UNIQUE INDEX plain_konto ON plain_sako (Konto);"
                  "CREATE UNIQUE INDEX plain_nummer ON plain_bube (Buchungsnummer)");
}

int64_t Ask(const Connection &connection, const std::string &task, bool isPlain)
{
    const std::string postings = isPlain ? "plain_bube" : "bube_1997";
    const std::string accounts = isPlain ? "plain_sako" : "sako_1997";
    if (task == "sum") return Question(connection, "SELECT sum(Soll) FROM " + postings).Answer();
    const bool isAccount = task == "account";
    const Question question(
        connection, isAccount ? "SELECT \"Umsaetze.Vortrag.Soll\" FROM " + accounts + " WHERE Konto = ?"
                              : "SELECT Soll FROM " + postings + " WHERE Buchungsnummer = ?");
    int64_t sum = 0;
    for (int i = 0; i < lookups; ++i) {
        constexpr int spread = 211;
        if (isAccount) {
            Must(sqlite3_bind_text(question.Statement, 1, "1840", -1, SQLITE_STATIC));
        } else {
            Must(sqlite3_bind_int(question.Statement, 1, 1 + i * spread % lookups));
        }
        sum += question.Answer();
    }
    return sum;
}

} // namespace

int main(int count, char **arguments)
{
    if (count < 5) return 2;
    const std::string task = arguments[4];
    const bool isPlain = count > 5;
    const Connection connection(arguments[3]);
    if (!isPlain) connection.OpenBooks(arguments[1], arguments[2]);
    if (task == "make") {
        MakePlain(connection);
        return 0;
    }
    const Stopwatch watch;
    const int64_t answer = Ask(connection, task, isPlain);
    const double seconds = watch.Seconds();
    std::printf("%lld %.6f\n", static_cast<long long>(answer), seconds);
    return 0;
}
