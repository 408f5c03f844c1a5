// Statements of tools that set up books on a server.
#include "record-manager/include/book_server.h"
#include "record-manager/server/private.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <type_traits>
#include <unistd.h>

namespace wbtrv {

namespace {

const Limits ordinaryLimits;

// The text with the schema's name for each @; null for lack of memory.
char *Expand(const char *sql, const char *schema)
{
    size_t size = 1;
    for (const char *at = sql; *at != 0; ++at) {
        size += *at == '@' ? strlen(schema) : 1;
    }
    auto *text = static_cast<char *>(malloc(size));
    if (text != nullptr) (void)WriteStatement(sql, schema, text, size);
    return text;
}

using RowFunction = void (*)(void *context, int count, const char *const *values);

void GiveRows(const PGresult *result, RowFunction row, void *context)
{
    constexpr int mostColumns = 32;
    const int count = PQnfields(result) < mostColumns ? PQnfields(result) : mostColumns;
    for (int i = 0; i < PQntuples(result); ++i) {
        const char *values[mostColumns];
        for (int column = 0; column < count; ++column) {
            values[column] = PQgetisnull(result, i, column) != 0 ? nullptr : PQgetvalue(result, i, column);
        }
        row(context, count, values);
    }
}

int16_t RunOn(PGconn *connection, const char *sql, RowFunction row, void *context, char *message, size_t room)
{
    int16_t status = BtrStatusOk;
    if (PQstatus(connection) != CONNECTION_OK) {
        snprintf(message, room, "%s", PQerrorMessage(connection));
        return BtrStatusNoEngine;
    }
    PGresult *result = PQexec(connection, sql);
    const ExecStatusType kind = PQresultStatus(result);
    if (kind == PGRES_TUPLES_OK && row != nullptr) GiveRows(result, row, context);
    if (kind != PGRES_TUPLES_OK && kind != PGRES_COMMAND_OK) {
        const char *state = PQresultErrorField(result, PG_DIAG_SQLSTATE);
        status = state != nullptr && strcmp(state, "42501") == 0 ? BtrStatusPermission : BtrStatusIoError;
        snprintf(message, room, "%s", PQerrorMessage(connection));
    }
    PQclear(result);
    return status;
}

int16_t Make(const char *directory, char *message, size_t room)
{
    Store *store = nullptr;
    const int16_t status = AcquireServerStore(directory, true, false, nullptr, &store);
    if (status == BtrStatusOk) {
        ReleaseStore(store);
    } else {
        snprintf(message, room, "Status %d", status);
    }
    return status;
}

} // namespace

} // namespace wbtrv

extern "C" __attribute__((visibility("default"))) int16_t
WbtrvServerRun(const char *directory, const char *sql, int create, wbtrv::RowFunction row, void *context,
               char *message, size_t room)
{
    using namespace wbtrv;
    if (serverLimits == nullptr) serverLimits = &ordinaryLimits;
    ServiceFile service;
    message[0] = 0;
    const int fd = open(directory, O_PATH | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return BtrStatusFileNotFound;
    int16_t status = ReadServiceFile(fd, directory, &service);
    close(fd);
    if (status == BtrStatusOk && create != 0) status = Make(directory, message, room);
    if (status != BtrStatusOk) return status;
    char schema[schemaSize + 4];
    snprintf(schema, sizeof schema, "\"%s\".", service.Schema);
    char *text = Expand(sql, schema);
    if (text == nullptr) return BtrStatusHandleTableFull;
    PGconn *connection = OpenServer(service, false);
    PQsetNoticeReceiver(
        connection, [](void *, const PGresult *) {}, nullptr);
    status = RunOn(connection, text, row, context, message, room);
    PQfinish(connection);
    free(text);
    return status;
}

static_assert(std::is_same_v<decltype(WbtrvServerRun), WbtrvServerRunFunction>);
