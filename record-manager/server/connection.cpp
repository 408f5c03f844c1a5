// A client's connection from its beginning to its end: whatever the client still has open is taken again with
// a new one.
#include "record-manager/server/connection.h"
#include "host/descriptors.h"

#include <cstdlib>
#include <cstring>

namespace wbtrv {

// What is taken for granted where the connection string is silent. Several hosts are a primary and its
// standbys: books are written to the one that can be.
PGconn *OpenServer(const ServiceFile &service, bool reads)
{
    bool several = false;
    PQconninfoOption *options = PQconninfoParse(service.Connection, nullptr);
    for (const PQconninfoOption *option = options; option != nullptr && option->keyword != nullptr;
         ++option) {
        const bool host = strcmp(option->keyword, "host") == 0 || strcmp(option->keyword, "hostaddr") == 0;
        several = several || (host && option->val != nullptr && strchr(option->val, ',') != nullptr);
    }
    PQconninfoFree(options);
    const char *const keywords[] = {"connect_timeout",
                                    "tcp_user_timeout",
                                    "keepalives_idle",
                                    "application_name",
                                    "target_session_attrs",
                                    "dbname",
                                    nullptr};
    const char *const values[] = {
        "3", "15000", "10", "VARK40", several && !reads ? "read-write" : "any", service.Connection, nullptr};
    // A host may have closed its standard descriptors; a connection is never to take their place.
    host::GuardStandardDescriptors();
    return PQconnectdbParams(keywords, values, 1);
}

namespace {

void NoNotice(void *, const PGresult *) {}

int16_t OpenReal(Connection *connection)
{
    connection->Real = OpenServer(connection->Of->Own->Service, connection->Of->ReadOnly);
    if (connection->Real == nullptr) return BtrStatusHandleTableFull;
    if (PQstatus(connection->Real) == CONNECTION_OK) {
        PQsetNoticeReceiver(connection->Real, NoNotice, nullptr);
        if (PQsetnonblocking(connection->Real, 1) == 0 && PQenterPipelineMode(connection->Real) == 1)
            return BtrStatusOk;
    }
    const char *message = PQerrorMessage(connection->Real);
    const bool refused = strstr(message, "authentication failed") != nullptr ||
                         strstr(message, "permission denied") != nullptr ||
                         strstr(message, "no password") != nullptr;
    const int16_t status =
        refused ? static_cast<int16_t>(BtrStatusPermission) : static_cast<int16_t>(BtrStatusNoEngine);
    ReportFailure(connection, message, status);
    PQfinish(connection->Real);
    connection->Real = nullptr;
    return status;
}

} // namespace

int16_t Connect(Connection *connection)
{
    if (connection->Real != nullptr && PQstatus(connection->Real) == CONNECTION_OK) return BtrStatusOk;
    if (connection->Real != nullptr) (void)Lose(connection);
    connection->Failure = BtrStatusOk;
    int16_t status = OpenReal(connection);
    if (status != BtrStatusOk) return status;
    status = ReadHead(connection);
    if (status == BtrStatusFileNotFound && connection->Of->Own->Create) {
        status = MakeSchema(connection);
        if (status == BtrStatusOk) status = ReadHead(connection);
    }
    if (status == BtrStatusOk) status = RestoreOpens(connection);
    if (status == BtrStatusOk) return status;
    if (status == BtrStatusFileNotFound)
        Report(connection->Of->Own->Directory, "in diesem Schema sind keine Bücher");
    const bool lost = connection->LostLocks;
    Drop(connection);
    connection->LostLocks = lost;
    return status;
}

void EndConnection(Connection *connection)
{
    if (connection->Real != nullptr && connection->HasSession) {
        Parameters session{};
        AddBytes(&session, connection->Session, sizeof connection->Session);
        (void)Send(connection, Statement::CloseSession, session, Answer::Ignored);
        Post(connection);
    }
    Drop(connection);
    while (connection->Opens != nullptr) {
        HeldOpen *open = connection->Opens;
        connection->Opens = open->Next;
        free(open);
    }
    free(connection->Queue);
    free(connection->States);
    free(connection->Locked);
    free(connection->Whole);
    free(connection);
}

} // namespace wbtrv
