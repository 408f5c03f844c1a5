// Every statement that this store sends. Those that only PostgreSQL has are in advisory.cpp's list below.
//
// A change that finds nothing to change divides by zero, so that the transaction fails with it.
#include "record-manager/server/connection.h"

#include <cstring>

namespace wbtrv {

namespace {

struct Text {
    Statement Which;
    const char *Sql;
};

// Rows of an index with their records. The record is a subselect, so that its rows are never sorted.
#define ENTRY_ROWS                                                                                           \
    "SELECT e.key, e.record, (SELECT r.data FROM @records r WHERE r.file = e.file AND r.record = e.record) " \
    "FROM @entries e WHERE e.file = $1::bigint AND e.tree = $2::bigint "
#define RECORD_ROWS "SELECT record, record, data FROM @records WHERE file = $1::bigint "

constexpr Text texts[] = {
    {Statement::Begin, "BEGIN"},
    {Statement::BeginReading, "BEGIN"},
    {Statement::Commit, "COMMIT"},
    {Statement::Rollback, "ROLLBACK"},
    {Statement::BeginSnapshot, "BEGIN ISOLATION LEVEL REPEATABLE READ READ ONLY"},
    {Statement::Savepoint, "SAVEPOINT waiting"},
    {Statement::RollbackToSavepoint, "ROLLBACK TO SAVEPOINT waiting"},
    {Statement::SetUpSession,
     "SELECT set_config(name, value, false) FROM (VALUES ('enable_seqscan', 'off'), ('enable_bitmapscan', "
     "'off'), "
     "('enable_sort', 'off'), ('plan_cache_mode', 'force_generic_plan'), ('jit', 'off'), "
     "('default_transaction_isolation', 'read committed'), ('statement_timeout', '0'), ('lock_timeout', "
     "'5000'), "
     "('idle_in_transaction_session_timeout', '0'), ('client_min_messages', 'error'), "
     "('tcp_keepalives_idle', '10'), "
     "('tcp_keepalives_interval', '5'), ('tcp_keepalives_count', '4')) AS wanted (name, value)"},
    {Statement::ReadHead,
     "SELECT mark, form, (SELECT oid::bigint FROM pg_namespace WHERE nspname = $1::text), "
     "CASE WHEN has_table_privilege('@records', 'INSERT') AND NOT pg_is_in_recovery() THEN 1 ELSE 0 "
     "END::bigint "
     "FROM @head WHERE one"},
    {Statement::SetTimeout, "SELECT set_config('lock_timeout', ($1::bigint)::text, true)"},
    {Statement::SetAsynchronous, "SELECT set_config('synchronous_commit', CASE WHEN $1::bigint = 1 THEN "
                                 "'off' ELSE (SELECT reset_val FROM "
                                 "pg_settings WHERE name = 'synchronous_commit') END, false)"},
    {Statement::ReadChanges, "SELECT changes FROM @head WHERE one"},
    {Statement::ReadStates, "SELECT file, last_record, records, sequence, counts, (SELECT changes FROM @head "
                            "WHERE one) FROM @files ORDER BY file"},
    {Statement::ReadFile, "SELECT file, name, definition FROM @files WHERE file = $1::bigint"},
    {Statement::ReadFileByName, "SELECT file, name, definition FROM @files WHERE name = $1::bytea"},
    {Statement::ReadFileCounters,
     "SELECT file, last_record, records, sequence, counts FROM @files WHERE file = $1::bigint"},
    {Statement::ReadGroups, "SELECT tree, count FROM @groups WHERE file = $1::bigint"},
    {Statement::ReadLastFile, "SELECT last_file FROM @head WHERE one"},
    {Statement::FirstEntries, ENTRY_ROWS "ORDER BY e.key LIMIT $3::bigint"},
    {Statement::LastEntries, ENTRY_ROWS "ORDER BY e.key DESC LIMIT $3::bigint"},
    {Statement::EntriesFrom, ENTRY_ROWS "AND e.key >= $3::bytea ORDER BY e.key LIMIT $4::bigint"},
    {Statement::EntriesBefore, ENTRY_ROWS "AND e.key < $3::bytea ORDER BY e.key DESC LIMIT $4::bigint"},
    {Statement::FirstRecords, RECORD_ROWS "ORDER BY record LIMIT $2::bigint"},
    {Statement::LastRecords, RECORD_ROWS "ORDER BY record DESC LIMIT $2::bigint"},
    {Statement::RecordsFrom, RECORD_ROWS "AND record >= $2::bigint ORDER BY record LIMIT $3::bigint"},
    {Statement::RecordsBefore, RECORD_ROWS "AND record < $2::bigint ORDER BY record DESC LIMIT $3::bigint"},
    {Statement::OneEntry, ENTRY_ROWS "AND e.key = $3::bytea"},
    {Statement::OneRecord, RECORD_ROWS "AND record = $2::bigint"},
    {Statement::AddEntry, "INSERT INTO @entries (file, tree, key, record) VALUES ($1::bigint, $2::bigint, "
                          "$3::bytea, $4::bigint)"},
    {Statement::AddUnique,
     "INSERT INTO @entries (file, tree, key, record) VALUES ($1::bigint, $2::bigint, $3::bytea, $4::bigint) "
     "ON CONFLICT (file, tree, key) DO NOTHING RETURNING record"},
    {Statement::AddToGroup,
     "WITH added AS (INSERT INTO @entries (file, tree, key, record) VALUES ($1::bigint, $2::bigint, "
     "$3::bytea, "
     "$4::bigint) RETURNING 1) UPDATE @groups SET count = count + 1 WHERE file = $1::bigint AND tree = "
     "$2::bigint AND NOT EXISTS (SELECT 1 FROM @entries WHERE file = $1::bigint AND tree = $2::bigint AND "
     "key "
     ">= $5::bytea AND key < $6::bytea)"},
    {Statement::RemoveUnique, "WITH removed AS (DELETE FROM @entries WHERE file = $1::bigint AND tree = "
                              "$2::bigint AND key = $3::bytea "
                              "RETURNING 1) SELECT 1 / count(*) FROM removed"},
    {Statement::RemoveFromGroup,
     "WITH removed AS (DELETE FROM @entries WHERE file = $1::bigint AND tree = $2::bigint AND key = "
     "$3::bytea "
     "RETURNING 1), counted AS (UPDATE @groups SET count = count - 1 WHERE file = $1::bigint AND tree = "
     "$2::bigint AND NOT EXISTS (SELECT 1 FROM @entries WHERE file = $1::bigint AND tree = $2::bigint AND "
     "key "
     ">= $4::bytea AND key < $5::bytea AND key <> $3::bytea) RETURNING 1) SELECT 1 / count(*) FROM removed"},
    {Statement::PutRecord,
     "INSERT INTO @records (file, record, data) VALUES ($1::bigint, $2::bigint, $3::bytea)"},
    {Statement::PutRecords, "INSERT INTO @records (file, record, data) SELECT $1::bigint, r, d FROM "
                            "unnest($2::bigint[], $3::bytea[]) AS given (r, d)"},
    {Statement::AddUniques,
     "INSERT INTO @entries (file, tree, key, record) SELECT $1::bigint, $2::bigint, k, r FROM "
     "unnest($3::bytea[], $4::bigint[]) AS given (k, r)"},
    // Whether a group is new tells the entry that lies nearest to its beginning.
    {Statement::AddToGroups,
     "WITH given AS (SELECT k, r FROM unnest($3::bytea[], $4::bigint[]) AS u (k, r)), added AS (INSERT INTO "
     "@entries "
     "(file, tree, key, record) SELECT $1::bigint, $2::bigint, k, r FROM given) UPDATE @groups SET count = "
     "count + "
     "(SELECT count(*) FROM (SELECT DISTINCT substring(k FROM 1 FOR ($5::bigint)::int) AS p FROM given) AS d "
     "WHERE "
     "coalesce((SELECT e.key FROM @entries e WHERE e.file = $1::bigint AND e.tree = $2::bigint AND e.key >= "
     "d.p ORDER BY "
     "e.key LIMIT 1) >= d.p || $6::bytea, true)) WHERE file = $1::bigint AND tree = $2::bigint"},
    {Statement::ReplaceRecord,
     "WITH replaced AS (UPDATE @records SET data = $3::bytea WHERE file = $1::bigint AND record = $2::bigint "
     "RETURNING 1) SELECT 1 / count(*) FROM replaced"},
    {Statement::RemoveRecord,
     "WITH removed AS (DELETE FROM @records WHERE file = $1::bigint AND record = $2::bigint RETURNING 1) "
     "SELECT 1 / count(*) FROM removed"},
    {Statement::WriteCounters,
     "UPDATE @files SET last_record = $2::bigint, records = $3::bigint, sequence = $4::bigint, "
     "counts = $5::bytea WHERE file = $1::bigint"},
    {Statement::WriteLastFile, "UPDATE @head SET last_file = $1::bigint, changes = changes + 1 WHERE one"},
    {Statement::CountChange, "UPDATE @head SET changes = changes + 1 WHERE one"},
    {Statement::RemoveFile, "DELETE FROM @files WHERE file = $1::bigint"},
    {Statement::RemoveGroups, "DELETE FROM @groups WHERE file = $1::bigint"},
    {Statement::RemoveEntries, "DELETE FROM @entries WHERE file = $1::bigint"},
    {Statement::RemoveRecords, "DELETE FROM @records WHERE file = $1::bigint"},
    {Statement::MakeFile, "INSERT INTO @files (file, name, definition, last_record, records, sequence, "
                          "counts) VALUES ($1::bigint, "
                          "$2::bytea, $3::bytea, 0, 0, 0, $4::bytea)"},
    {Statement::MakeGroup, "INSERT INTO @groups (file, tree, count) VALUES ($1::bigint, $2::bigint, 0)"},
    {Statement::OpenSession,
     "WITH old AS (DELETE FROM @sessions WHERE since < now() - interval '30 days') INSERT INTO @sessions "
     "(session, number, since) VALUES ($1::bytea, 0, now())"},
    {Statement::CloseSession, "DELETE FROM @sessions WHERE session = $1::bytea"},
    {Statement::NoteTransaction,
     "INSERT INTO @sessions (session, number, since) VALUES ($1::bytea, $2::bigint, now()) "
     "ON CONFLICT (session) DO UPDATE SET number = excluded.number, since = excluded.since"},
    {Statement::FindTransaction, "SELECT number FROM @sessions WHERE session = $1::bytea FOR UPDATE"},
    {Statement::Touch, "UPDATE @head SET last_file = last_file WHERE one"},

    // Advisory locks. A record has one, alone, and under it the file's, shared; who locks the whole file has
    // the file's alone, and a second one that tells so.
    {Statement::LockRecord, "SELECT CASE WHEN NOT pg_try_advisory_lock_shared($1::bigint) THEN 2 WHEN "
                            "pg_try_advisory_lock($2::bigint) "
                            "THEN 0 WHEN pg_advisory_unlock_shared($1::bigint) THEN 1 ELSE 1 END::bigint"},
    {Statement::AwaitRecord, "SELECT CASE WHEN pg_advisory_lock_shared($1::bigint) IS NULL THEN NULL WHEN "
                             "pg_advisory_lock($2::bigint) IS NULL THEN NULL ELSE 0 END::bigint"},
    {Statement::UnlockRecord, "SELECT pg_advisory_unlock($2::bigint), pg_advisory_unlock_shared($1::bigint)"},
    {Statement::LockFile, "SELECT CASE WHEN pg_try_advisory_lock($1::bigint) THEN CASE WHEN "
                          "pg_try_advisory_lock($2::bigint) THEN 0 "
                          "ELSE 0 END WHEN NOT pg_try_advisory_lock_shared($2::bigint) THEN 2 WHEN "
                          "pg_advisory_unlock_shared($2::bigint) THEN 1 ELSE 1 END::bigint"},
    {Statement::UnlockFile, "SELECT pg_advisory_unlock($2::bigint), pg_advisory_unlock($1::bigint)"},
    {Statement::LockShared,
     "SELECT CASE WHEN pg_try_advisory_lock_shared($1::bigint) THEN 0 ELSE 1 END::bigint"},
    {Statement::LockAlone, "SELECT CASE WHEN pg_try_advisory_lock($1::bigint) THEN 0 ELSE 1 END::bigint"},
    {Statement::UnlockShared, "SELECT pg_advisory_unlock_shared($1::bigint)"},
    {Statement::UnlockAlone, "SELECT pg_advisory_unlock($1::bigint)"},
    // The gate, and with a key the mark of an exclusive holder, which is set when the gate is entered.
    {Statement::EnterGate, "SELECT last_file, changes, CASE WHEN $1::bigint = 0 THEN 0 WHEN "
                           "pg_try_advisory_xact_lock($1::bigint) THEN 1 ELSE 0 END::bigint FROM (SELECT "
                           "last_file, changes FROM @head WHERE one FOR UPDATE) AS entered"},
    {Statement::TryGate, "SELECT last_file, changes, CASE WHEN $1::bigint = 0 THEN 0 WHEN "
                         "pg_try_advisory_xact_lock($1::bigint) THEN 1 ELSE 0 END::bigint FROM (SELECT "
                         "last_file, changes FROM @head WHERE one FOR UPDATE NOWAIT) AS entered"},
    {Statement::IsMarkedExclusive, "SELECT CASE WHEN NOT pg_try_advisory_lock($1::bigint) THEN 1 WHEN "
                                   "pg_advisory_unlock($1::bigint) THEN 0 "
                                   "ELSE 0 END::bigint"},
    {Statement::UnlockAll, "SELECT pg_advisory_unlock_all()"},
};
static_assert(sizeof texts / sizeof texts[0] == static_cast<size_t>(Statement::Count));

constexpr bool InOrder()
{
    for (size_t i = 0; i < static_cast<size_t>(Statement::Count); ++i) {
        if (static_cast<size_t>(texts[i].Which) != i) return false;
    }
    return true;
}
static_assert(InOrder());

constexpr const char *setup[] = {
    "CREATE TABLE @head (one boolean PRIMARY KEY CHECK (one), mark text NOT NULL, form bigint NOT NULL, "
    "last_file "
    "bigint NOT NULL, changes bigint NOT NULL)",
    "CREATE TABLE @files (file bigint PRIMARY KEY, name bytea NOT NULL UNIQUE, definition bytea NOT NULL, "
    "last_record bigint NOT NULL, records bigint NOT NULL, sequence bigint NOT NULL, counts bytea NOT NULL)",
    "CREATE TABLE @groups (file bigint, tree bigint, count bigint NOT NULL, PRIMARY KEY (file, tree))",
    "CREATE TABLE @records (file bigint, record bigint, data bytea NOT NULL, PRIMARY KEY (file, record))",
    "CREATE TABLE @entries (file bigint, tree bigint, key bytea, record bigint NOT NULL, PRIMARY KEY (file, "
    "tree, "
    "key))",
    "CREATE TABLE @sessions (session bytea PRIMARY KEY, number bigint NOT NULL, since timestamptz NOT NULL)",
    "INSERT INTO @head (one, mark, form, last_file, changes) VALUES (true, 'WBTRVBKS', 2, 0, 0)",
};

} // namespace

const char *TextOf(Statement statement) { return texts[static_cast<size_t>(statement)].Sql; }

const char *SetupText(size_t index)
{
    return index < sizeof setup / sizeof setup[0] ? setup[index] : nullptr;
}

bool WriteStatement(const char *text, const char *quotedSchema, char *out, size_t room)
{
    const size_t schemaLength = strlen(quotedSchema);
    size_t size = 0;
    for (; *text != 0; ++text) {
        const size_t length = *text == '@' ? schemaLength : 1;
        if (size + length >= room) return false;
        memcpy(out + size, *text == '@' ? quotedSchema : text, length);
        size += length;
    }
    out[size] = 0;
    return true;
}

} // namespace wbtrv
