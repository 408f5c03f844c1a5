// Statements go out in a pipeline, and whoever needs an answer waits for all that are on their way, for a
// bounded time.
#include "record-manager/server/connection.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <poll.h>

namespace wbtrv {

namespace {

thread_local uint64_t roundTrips = 0;

// More than this is not sent without reading answers, so that neither side waits for the other to read.
constexpr size_t mostOnTheWay = 400;
constexpr size_t fewOnTheWay = 100;

bool IsState(const char *state, const char *wanted) { return strncmp(state, wanted, strlen(wanted)) == 0; }

// Besides its own code for a full disk there are a file that may not grow, by a limit or a quota, which the
// server has no code for, and a table that has reached its largest size.
bool IsFull(const PGresult *result, const char *state)
{
    const char *where = PQresultErrorField(result, PG_DIAG_SOURCE_FUNCTION);
    const bool extends =
        where != nullptr && (strcmp(where, "mdextend") == 0 || strcmp(where, "mdzeroextend") == 0);
    return IsState(state, "53100") || IsState(state, "54000") || (IsState(state, "XX000") && extends);
}

// What a failure of the server means to a caller, from its SQLSTATE.
int16_t StatusOfFailure(const PGresult *result, const char *state)
{
    if (IsFull(result, state)) return BtrStatusDiskFull;
    if (IsState(state, "53")) return BtrStatusHandleTableFull;
    if (IsState(state, "42501") || IsState(state, "25006") || IsState(state, "28"))
        return BtrStatusPermission;
    if (IsState(state, "55P03")) return BtrStatusRecordLocked;
    if (IsState(state, "40P01")) return BtrStatusDeadlock;
    if (IsState(state, "3F000") || IsState(state, "42P01")) return BtrStatusFileNotFound;
    // A column that is not there or of another type, and what found nothing to change (statements.cpp).
    if (IsState(state, "42") || IsState(state, "22") || IsState(state, "23")) return BtrStatusForeignFile;
    return BtrStatusIoError;
}

bool EndsConnection(const char *state) { return IsState(state, "57P") || IsState(state, "08"); }

bool IsExpected(int16_t status)
{
    return status == BtrStatusRecordLocked || status == BtrStatusDeadlock || status == BtrStatusFileNotFound;
}

bool IsRelease(Statement statement)
{
    return statement == Statement::UnlockRecord || statement == Statement::UnlockFile ||
           statement == Statement::UnlockShared || statement == Statement::UnlockAlone ||
           statement == Statement::Rollback;
}

bool Append(Connection *connection, Awaited awaited)
{
    if (connection->QueueCount == connection->QueueSize) {
        const size_t size = connection->QueueSize == 0 ? 64 : connection->QueueSize * 2;
        auto *larger = static_cast<Awaited *>(malloc(size * sizeof(Awaited)));
        if (larger == nullptr) return false;
        for (size_t i = 0; i < connection->QueueCount; ++i) {
            larger[i] = connection->Queue[(connection->QueueFirst + i) % connection->QueueSize];
        }
        free(connection->Queue);
        connection->Queue = larger;
        connection->QueueFirst = 0;
        connection->QueueSize = size;
    }
    connection->Queue[(connection->QueueFirst + connection->QueueCount) % connection->QueueSize] = awaited;
    connection->QueueCount++;
    return true;
}

void Note(Connection *connection, int16_t status)
{
    if (connection->Failure == BtrStatusOk) connection->Failure = status;
}

// Takes the answer to the first in the queue. False: the connection is lost.
bool Handle(Connection *connection, PGresult *result, const Awaited &awaited)
{
    const ExecStatusType kind = PQresultStatus(result);
    const bool failed = kind == PGRES_FATAL_ERROR || kind == PGRES_PIPELINE_ABORTED;
    bool lives = true;
    if (kind == PGRES_FATAL_ERROR) {
        const char *state = PQresultErrorField(result, PG_DIAG_SQLSTATE);
        const int16_t status =
            state != nullptr ? StatusOfFailure(result, state) : static_cast<int16_t>(BtrStatusIoError);
        lives = state != nullptr && !EndsConnection(state);
        if (awaited.How == Answer::Needed || awaited.How == Answer::Kept) {
            const char *message = PQresultErrorField(result, PG_DIAG_MESSAGE_PRIMARY);
            if (!IsExpected(status))
                ReportFailure(connection, message != nullptr ? message : "Fehler", status);
            Note(connection, status);
        }
    }
    if (kind == PGRES_FATAL_ERROR && IsRelease(awaited.Which)) connection->Leaks = true;
    if (failed && awaited.What == Awaited::Kind::Prepare)
        connection->Prepared[static_cast<size_t>(awaited.Which)] = false;
    if (awaited.What == Awaited::Kind::Statement && awaited.How == Answer::Kept &&
        connection->KeptCount < mostKept) {
        connection->Kept[connection->KeptCount++] = failed ? nullptr : result;
        if (!failed) return lives;
    }
    if (awaited.How == Answer::Coming || awaited.How == Answer::Change) {
        const auto take = awaited.How == Answer::Coming ? TakeComing : TakeAhead;
        take(connection, failed ? nullptr : result);
        if (!failed) return lives;
    }
    PQclear(result);
    return lives;
}

// Waits until something can be read, or written where something is left to be. False when the time is over or
// the connection gone.
bool Wait(Connection *connection, int64_t deadline_us)
{
    for (;;) {
        const int unsent = PQflush(connection->Real);
        if (unsent < 0) return false;
        const int64_t left_us = deadline_us - Now_us();
        if (left_us <= 0) return false;
        pollfd wanted{PQsocket(connection->Real), static_cast<short>(unsent > 0 ? POLLIN | POLLOUT : POLLIN),
                      0};
        const int ready = poll(&wanted, 1, static_cast<int>((left_us + 999) / 1000));
        if (ready < 0 && errno != EINTR) return false;
        if (ready <= 0) continue;
        if ((wanted.revents & ~POLLOUT) != 0) return PQconsumeInput(connection->Real) == 1;
    }
}

// Reads answers until no more than `left` are awaited.
bool ReadAnswers(Connection *connection, size_t left, int64_t deadline_us)
{
    while (connection->QueueCount > left) {
        if (PQisBusy(connection->Real) != 0) {
            if (!Wait(connection, deadline_us)) return false;
            continue;
        }
        const Awaited awaited = connection->Queue[connection->QueueFirst];
        PGresult *result = PQgetResult(connection->Real);
        if (result != nullptr && PQresultStatus(result) != PGRES_PIPELINE_SYNC) {
            if (!Handle(connection, result, awaited)) return false;
            if (PQstatus(connection->Real) == CONNECTION_BAD) return false;
            continue;
        }
        // Behind the answer to a statement comes nothing; a sync is an answer by itself.
        const bool sync = result != nullptr;
        PQclear(result);
        if (sync != (awaited.What == Awaited::Kind::Sync)) {
            if (PQstatus(connection->Real) == CONNECTION_BAD) return false;
            if (sync) return false;
            continue;
        }
        connection->QueueFirst = (connection->QueueFirst + 1) % connection->QueueSize;
        connection->QueueCount--;
    }
    return true;
}

void ClearKept(Connection *connection)
{
    for (size_t i = 0; i < connection->KeptCount; ++i) {
        PQclear(connection->Kept[i]);
        connection->Kept[i] = nullptr;
    }
    connection->KeptCount = 0;
}

constexpr size_t longestStatement = 2048;

// What a statement is called on the server.
struct StatementName {
    char Text[4];
};
static_assert(static_cast<size_t>(Statement::Count) <= 100);

StatementName NameOf(Statement statement)
{
    const auto number = static_cast<unsigned>(statement);
    return {{'w', static_cast<char>('0' + number / 10), static_cast<char>('0' + number % 10), 0}};
}

int16_t PutPrepare(Connection *connection, Statement statement, Answer how)
{
    char text[longestStatement];
    const StatementName name = NameOf(statement);
    if (!WriteStatement(TextOf(statement), connection->Of->Own->QuotedSchema, text, sizeof text))
        return BtrStatusIoError;
    if (!Append(connection, {Awaited::Kind::Prepare, statement, how})) return BtrStatusHandleTableFull;
    if (PQsendPrepare(connection->Real, name.Text, text, 0, nullptr) != 1) {
        connection->QueueCount--;
        return BtrStatusIoError;
    }
    connection->Prepared[static_cast<size_t>(statement)] = true;
    return BtrStatusOk;
}

// Puts a statement behind those on their way. 0; 87; 2, and the connection is no good any more.
int16_t Put(Connection *connection, Statement statement, const Parameters &parameters, Answer how)
{
    int16_t status = BtrStatusOk;
    if (!connection->Prepared[static_cast<size_t>(statement)])
        status =
            PutPrepare(connection, statement,
                       how == Answer::Coming || how == Answer::Change ? Answer::Ignored : Answer::Needed);
    if (status != BtrStatusOk) return status;
    if (!Append(connection, {Awaited::Kind::Statement, statement, how})) return BtrStatusHandleTableFull;
    const StatementName name = NameOf(statement);
    const char *values[mostParameters];
    int formats[mostParameters];
    for (int i = 0; i < parameters.Count; ++i) {
        const auto *number = reinterpret_cast<const char *>(parameters.Numbers[i]);
        values[i] = parameters.Data[i] != nullptr ? parameters.Data[i] : number;
        formats[i] = 1;
    }
    if (PQsendQueryPrepared(connection->Real, name.Text, parameters.Count, values, parameters.Sizes, formats,
                            1) == 1)
        return BtrStatusOk;
    connection->QueueCount--;
    return BtrStatusIoError;
}

} // namespace

void ReportFailure(const Connection *connection, const char *message, int16_t status)
{
    char text[400];
    snprintf(text, sizeof text, "%s (Status %d)", message, status);
    Report(connection->Of->Own->Directory, text);
}

void Drop(Connection *connection)
{
    if (connection->Real != nullptr) PQfinish(connection->Real);
    connection->Real = nullptr;
    ClearKept(connection);
    connection->QueueCount = 0;
    connection->IsComing = false;
    connection->ChangeComing = false;
    connection->Owes = false;
    connection->Leaks = false;
    connection->Unsynced = false;
    memset(connection->Prepared, 0, sizeof connection->Prepared);
    connection->InTransaction = false;
    connection->Holding = false;
    connection->HasSession = false;
    connection->Failure = BtrStatusOk;
    if (connection->Writing != nullptr && connection->Writing->Failed == BtrStatusOk)
        connection->Writing->Failed = BtrStatusIoError;
    connection->LostLocks =
        connection->LostLocks || connection->LockedCount > 0 || connection->WholeCount > 0;
    connection->LockedCount = 0;
    connection->WholeCount = 0;
    ForgetAllRuns(connection);
    PQclear(connection->FoundFile);
    connection->FoundFile = nullptr;
}

int16_t Lose(Connection *connection)
{
    if (connection->Real != nullptr) {
        const char *message = PQerrorMessage(connection->Real);
        const bool told = message != nullptr && *message != 0;
        ReportFailure(connection, told ? message : "keine Antwort vom Server", BtrStatusIoError);
    }
    const int16_t failure = connection->Failure;
    Drop(connection);
    return failure != BtrStatusOk ? failure : static_cast<int16_t>(BtrStatusIoError);
}

int16_t Send(Connection *connection, Statement statement, const Parameters &parameters, Answer how)
{
    if (connection->Real == nullptr) {
        Note(connection, BtrStatusIoError);
        return BtrStatusIoError;
    }
    if (connection->QueueCount > mostOnTheWay) {
        const int64_t deadline_us = Now_us() + int64_t{serverLimits->ServerAnswer_ms} * 1000;
        if (PQsendFlushRequest(connection->Real) != 1 || !ReadAnswers(connection, fewOnTheWay, deadline_us)) {
            const int16_t status = Lose(connection);
            Note(connection, status);
            return status;
        }
    }
    int16_t status = Put(connection, statement, parameters, how);
    if (status == BtrStatusIoError) status = Lose(connection);
    connection->Unsynced = true;
    Note(connection, status);
    return status;
}

int16_t Exchange(Connection *connection, unsigned wait_ms)
{
    ClearKept(connection);
    if (connection->Real == nullptr) {
        const int16_t failure = connection->Failure;
        connection->Failure = BtrStatusOk;
        return failure != BtrStatusOk ? failure : static_cast<int16_t>(BtrStatusIoError);
    }
    ++roundTrips;
    connection->Owes = false;
    connection->Unsynced = false;
    const int64_t deadline_us = Now_us() + (int64_t{serverLimits->ServerAnswer_ms} + wait_ms) * 1000;
    if (!Append(connection, {Awaited::Kind::Sync, Statement::Begin, Answer::Ignored}) ||
        PQpipelineSync(connection->Real) != 1 || !ReadAnswers(connection, 0, deadline_us)) {
        const int16_t status = Lose(connection);
        connection->Failure = BtrStatusOk;
        return status;
    }
    const int16_t failure = connection->Failure;
    connection->Failure = BtrStatusOk;
    return failure;
}

void Post(Connection *connection)
{
    if (connection->Real == nullptr) return;
    connection->Unsynced = false;
    if (!Append(connection, {Awaited::Kind::Sync, Statement::Begin, Answer::Ignored}) ||
        PQpipelineSync(connection->Real) != 1 || PQflush(connection->Real) < 0) {
        (void)Lose(connection);
    }
}

namespace {

// That this fails is found by whoever asks next: what was read before is still in use.
bool SendUnawaited(Connection *connection, Statement statement, const Parameters &parameters, Answer how)
{
    // Should the statement fail, it fails alone.
    if (connection->Real == nullptr || connection->Unsynced) return false;
    if (Put(connection, statement, parameters, how) != BtrStatusOk) return false;
    connection->Unsynced = !Append(connection, {Awaited::Kind::Sync, Statement::Begin, Answer::Ignored});
    if (connection->Unsynced) return true;
    if (PQpipelineSync(connection->Real) != 1) {
        connection->QueueCount--;
        connection->Unsynced = true;
    }
    (void)PQflush(connection->Real);
    return true;
}

} // namespace

void SendComing(Connection *connection, Statement statement, const Parameters &parameters, const Run &asked)
{
    if (connection->IsComing || !SendUnawaited(connection, statement, parameters, Answer::Coming)) return;
    connection->IsComing = true;
    connection->Coming = asked;
}

int16_t AwaitComing(Connection *connection)
{
    if (!connection->IsComing && !connection->ChangeComing) return BtrStatusOk;
    if (connection->Unsynced) Post(connection);
    if (connection->Real == nullptr) return BtrStatusIoError;
    ++roundTrips;
    const int64_t deadline_us = Now_us() + int64_t{serverLimits->ServerAnswer_ms} * 1000;
    return ReadAnswers(connection, 0, deadline_us) ? static_cast<int16_t>(BtrStatusOk) : Lose(connection);
}

void SendRelease(Connection *connection, Statement statement, const Parameters &parameters)
{
    if (connection->Real == nullptr) return;
    if (connection->Unsynced) Post(connection);
    const int16_t failure = connection->Failure;
    (void)Send(connection, statement, parameters, Answer::Ignored);
    connection->Failure = failure;
    connection->Owes = true;
}

void Repay(Connection *connection)
{
    if (connection->Owes && connection->Real != nullptr) {
        const int16_t status = Exchange(connection, 0);
        Writer *writer = connection->Writing;
        if (writer != nullptr && writer->Failed == BtrStatusOk) writer->Failed = status;
    }
    connection->Owes = false;
    // What could not be given back one by one goes with the connection.
    if (connection->Leaks && !connection->InTransaction) Drop(connection);
    if (!connection->InTransaction) connection->Leaks = false;
}

PGresult *TakeKept(Connection *connection, size_t index)
{
    if (index >= connection->KeptCount) return nullptr;
    PGresult *result = connection->Kept[index];
    connection->Kept[index] = nullptr;
    return result;
}

void SendStates(Connection *connection)
{
    connection->Asked_us = Now_us();
    connection->AskedForChange = connection->HasStates && !connection->StatesAreOld;
    const Statement question = connection->AskedForChange ? Statement::ReadChanges : Statement::ReadStates;
    (void)Send(connection, question, Parameters{}, Answer::Kept);
}

void SendAhead(Connection *connection)
{
    if (connection->ChangeComing || !connection->HasStates || connection->StatesAreOld) return;
    const int64_t now_us = Now_us();
    if (!SendUnawaited(connection, Statement::ReadChanges, Parameters{}, Answer::Change)) return;
    connection->ChangeComing = true;
    connection->AheadIsOld = false;
    connection->Ahead_us = now_us;
}

uint64_t CountRoundTrips() { return roundTrips; }

} // namespace wbtrv
