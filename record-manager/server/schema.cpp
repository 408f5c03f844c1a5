// The schema of a directory's books: its head, which tells whose it is, and its tables.
#include "record-manager/server/connection.h"

#include <cstdio>
#include <cstring>

namespace wbtrv {

int16_t ReadHead(Connection *connection)
{
    const ServiceFile &service = connection->Of->Own->Service;
    Parameters none{};
    (void)Send(connection, Statement::SetUpSession, none, Answer::Ignored);
    // Should one of the settings be refused, the answer to the next statement is to come all the same.
    Post(connection);
    Parameters schema{};
    AddBytes(&schema, service.Schema, strlen(service.Schema));
    (void)Send(connection, Statement::ReadHead, schema, Answer::Kept);
    const int16_t status = Exchange(connection, 0);
    if (status != BtrStatusOk) return status;
    const PGresult *head = connection->Kept[0];
    if (head == nullptr || PQntuples(head) != 1) return BtrStatusForeignFile;
    const Bytes mark = BytesAt(head, 0, 0);
    const bool ours = mark.Size == strlen(schemaMark) && memcmp(mark.Data, schemaMark, mark.Size) == 0;
    if (!ours || NumberAt(head, 0, 1) != schemaForm) {
        Report(connection->Of->Own->Directory,
               ours ? "das Schema hat eine andere Form" : "kein Schema von Büchern");
        return BtrStatusForeignFile;
    }
    connection->LockSpace = NumberAt(head, 0, 2);
    connection->Of->ReadOnly = NumberAt(head, 0, 3) == 0;
    return BtrStatusOk;
}

int16_t MakeSchema(Connection *connection)
{
    // One after the other, since no statement can be prepared before its tables are there.
    char text[1024];
    const char *schema = connection->Of->Own->QuotedSchema;
    PGconn *real = connection->Real;
    if (PQexitPipelineMode(real) != 1 || PQsetnonblocking(real, 0) != 0) return BtrStatusIoError;
    snprintf(text, sizeof text,
             "BEGIN; SELECT pg_advisory_xact_lock(hashtext('%s')); CREATE SCHEMA IF NOT EXISTS %.*s",
             connection->Of->Own->Service.Schema, static_cast<int>(strlen(schema) - 1), schema);
    PGresult *result = PQexec(real, text);
    bool done = PQresultStatus(result) == PGRES_TUPLES_OK || PQresultStatus(result) == PGRES_COMMAND_OK;
    for (size_t i = 0; done && SetupText(i) != nullptr; ++i) {
        done = WriteStatement(SetupText(i), schema, text, sizeof text);
        if (!done) break;
        PQclear(result);
        result = PQexec(real, text);
        done = PQresultStatus(result) == PGRES_COMMAND_OK;
    }
    if (done) {
        PQclear(result);
        result = PQexec(real, "COMMIT");
        done = PQresultStatus(result) == PGRES_COMMAND_OK;
    }
    int16_t status = BtrStatusOk;
    if (!done) {
        const char *state = PQresultErrorField(result, PG_DIAG_SQLSTATE);
        // Somebody else has made it just now.
        const bool there = state != nullptr && strcmp(state, "42P07") == 0;
        const bool refused = state != nullptr && strcmp(state, "42501") == 0;
        if (!there) {
            Report(connection->Of->Own->Directory, PQerrorMessage(real));
            status = refused ? BtrStatusPermission : BtrStatusIoError;
        }
        PQclear(PQexec(real, "ROLLBACK"));
    }
    PQclear(result);
    if (PQsetnonblocking(real, 1) != 0 || PQenterPipelineMode(real) != 1) return BtrStatusIoError;
    return status;
}

} // namespace wbtrv
