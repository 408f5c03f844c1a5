// What a posting writes, by hand through libpq: the record of 500 bytes, its two index entries, the file's
// counters and the number of the session's transaction, the same rows in tables like those of books on a
// server, one durable transaction each.
//   posting_libpq CONNECTION COUNT single|pipelined [CLIENTS]   prints the seconds
// `single` waits for the answer to each statement, as programs are written; `pipelined` only for the
// commit's. The clients are processes that share COUNT among them, each with tables of its own.
#include "bench/peers/processes.h"

#include <libpq-fe.h>
#include <string>

namespace {

void Run(PGconn *connection, const char *sql)
{
    PGresult *result = PQexec(connection, sql);
    const ExecStatusType kind = PQresultStatus(result);
    if (kind != PGRES_COMMAND_OK && kind != PGRES_TUPLES_OK) {
        std::fprintf(stderr, "%s", PQerrorMessage(connection));
        Must(1);
    }
    PQclear(result);
}

struct Step {
    const char *Name;
    const char *Sql;
    int Parameters;
};

constexpr Step steps[] = {
    {"begin", "BEGIN", 0},
    {"number",
     "UPDATE files SET last_record = last_record + 1, records = records + 1, sequence = sequence + 1 "
     "WHERE file = 1 RETURNING last_record",
     0},
    {"record", "INSERT INTO records (file, record, data) VALUES (1, $1::bigint, $2::bytea)", 2},
    {"by_number", "INSERT INTO entries (file, tree, key, record) VALUES (1, 1, $2::bytea, $1::bigint)", 2},
    {"by_stapel", "INSERT INTO entries (file, tree, key, record) VALUES (1, 2, $2::bytea, $1::bigint)", 2},
    {"session", "UPDATE sessions SET number = $1::bigint, since = now() WHERE session = '\\x01'", 1},
    {"commit", "COMMIT", 0},
};

constexpr char record[512] = {};

// The parameters of a step: a record's number, and its bytes or its key.
struct Values {
    uint64_t Number;
    uint8_t Key[10];
    const char *Data[2];
    int Sizes[2];
};

void Fill(const Step &step, long number, Values &values)
{
    values.Number = __builtin_bswap64(static_cast<uint64_t>(number));
    const uint32_t ordered = BigEndian(static_cast<uint32_t>(number) | 0x80000000U);
    const bool byStapel = std::strcmp(step.Name, "by_stapel") == 0;
    const uint32_t stapel = BigEndian(0x80000001U);
    std::memcpy(values.Key, byStapel ? &stapel : &ordered, 4);
    std::memset(values.Key + 4, 0, 2);
    std::memcpy(values.Key + 6, &ordered, 4);
    const bool isRecord = std::strcmp(step.Name, "record") == 0;
    values.Data[0] = reinterpret_cast<const char *>(&values.Number);
    values.Sizes[0] = 8;
    values.Data[1] = isRecord ? record : reinterpret_cast<const char *>(values.Key);
    values.Sizes[1] = isRecord ? static_cast<int>(sizeof record) : byStapel ? 10 : 4;
}

constexpr int binary[2] = {1, 1};

void PostSingle(PGconn *connection, long number)
{
    for (const Step &step : steps) {
        Values values{};
        Fill(step, number, values);
        PGresult *result =
            PQexecPrepared(connection, step.Name, step.Parameters, values.Data, values.Sizes, binary, 1);
        const ExecStatusType kind = PQresultStatus(result);
        if (kind != PGRES_COMMAND_OK && kind != PGRES_TUPLES_OK) Must(1);
        PQclear(result);
    }
}

void PostPipelined(PGconn *connection, long number)
{
    for (const Step &step : steps) {
        Values values{};
        Fill(step, number, values);
        Must(PQsendQueryPrepared(connection, step.Name, step.Parameters, values.Data, values.Sizes, binary,
                                 1) == 1
                 ? 0
                 : 1);
    }
    Must(PQpipelineSync(connection) == 1 ? 0 : 1);
    for (;;) {
        PGresult *result = PQgetResult(connection);
        const ExecStatusType kind = PQresultStatus(result);
        PQclear(result);
        if (kind == PGRES_PIPELINE_SYNC) break;
        if (result != nullptr && kind != PGRES_COMMAND_OK && kind != PGRES_TUPLES_OK) Must(1);
    }
}

PGconn *Connect(const char *target, long client, bool pipelined)
{
    PGconn *connection = PQconnectdb(target);
    if (PQstatus(connection) != CONNECTION_OK) {
        std::fprintf(stderr, "%s", PQerrorMessage(connection));
        Must(1);
    }
    const std::string own = "peer" + std::to_string(client);
    Run(connection,
        ("SET client_min_messages = error; DROP SCHEMA IF EXISTS " + own + " CASCADE; CREATE SCHEMA " + own +
         "; SET search_path = " + own +
         ";"
         "CREATE TABLE files (file bigint PRIMARY KEY, last_record bigint, records bigint, sequence bigint);"
         "CREATE TABLE sessions (session bytea PRIMARY KEY, number bigint, since timestamptz);"
         "CREATE TABLE records (file bigint, record bigint, data bytea NOT NULL, PRIMARY KEY (file, record));"
         "CREATE TABLE entries (file bigint, tree bigint, key bytea, record bigint NOT NULL,"
         " PRIMARY KEY (file, tree, key));"
         "INSERT INTO files VALUES (1, 0, 0, 0);"
         "INSERT INTO sessions VALUES ('\\x01', 0, now())")
            .c_str());
    for (const Step &step : steps) {
        PQclear(PQprepare(connection, step.Name, step.Sql, 0, nullptr));
    }
    if (pipelined) Must(PQenterPipelineMode(connection) == 1 ? 0 : 1);
    return connection;
}

} // namespace

int main(int argumentCount, char **arguments)
{
    const auto [target, count] = PeerArguments(argumentCount, arguments);
    const bool pipelined = argumentCount > 3 && std::strcmp(arguments[3], "pipelined") == 0;
    const long clients = argumentCount > 4 ? NumberOf(arguments[4]) : 1;
    TimeProcesses(clients, [=, each = count / clients](long client) {
        PGconn *connection = Connect(target, client, pipelined);
        return [=] {
            for (long number = 1; number <= each; ++number) {
                if (pipelined) {
                    PostPipelined(connection, number);
                } else {
                    PostSingle(connection, number);
                }
            }
            PQfinish(connection);
        };
    });
}
