// The writer of a schema: its changes are on their way as soon as they are made, and their answers are looked
// at where a status depends on them, at the latest with the commit's.
#include "record-manager/fields.h"
#include "record-manager/server/private.h"

#include <cstdlib>
#include <cstring>
#include <ctime>
#include <initializer_list>
#include <sys/random.h>

namespace wbtrv {

namespace {

// The connection's own row among the sessions, made before the first transaction writes its number there.
int16_t SendSession(Connection *connection)
{
    if (connection->HasSession) return BtrStatusOk;
    if (getrandom(connection->Session, sizeof connection->Session, 0) !=
        static_cast<ssize_t>(sizeof connection->Session)) {
        return BtrStatusIoError;
    }
    Parameters session{};
    AddBytes(&session, connection->Session, sizeof connection->Session);
    (void)Send(connection, Statement::OpenSession, session, Answer::Needed);
    Post(connection);
    return BtrStatusOk;
}

int16_t TryGate(Connection *connection, unsigned wait_ms, bool exclusive)
{
    int16_t status = SendGate(connection, wait_ms, exclusive);
    if (status == BtrStatusOk) status = Exchange(connection, wait_ms);
    return status == BtrStatusOk ? TakeGate(connection, 0) : status;
}

} // namespace

int16_t SendGate(Connection *connection, unsigned wait_ms, bool exclusive)
{
    const int16_t status = SendSession(connection);
    if (status != BtrStatusOk) return status;
    Parameters timeout{};
    AddNumber(&timeout, wait_ms);
    (void)Send(connection, Statement::Begin, Parameters{}, Answer::Needed);
    if (wait_ms > 0) (void)Send(connection, Statement::SetTimeout, timeout, Answer::Needed);
    (void)SendGateLock(connection, wait_ms > 0, exclusive);
    return BtrStatusOk;
}

int16_t TakeGate(Connection *connection, size_t kept)
{
    const PGresult *head = connection->Kept[kept];
    if (head == nullptr || PQntuples(head) != 1) return BtrStatusForeignFile;
    connection->LastFile = static_cast<uint32_t>(NumberAt(head, 0, 0));
    const bool same = connection->HasStates && NumberAt(head, 0, 1) == connection->Changes;
    connection->InTransaction = true;
    connection->HasSession = true;
    connection->StatesAreOld = connection->StatesAreOld || !same;
    if (!connection->StatesAreOld) return BtrStatusOk;
    SendStates(connection);
    const int16_t status = Exchange(connection, 0);
    if (status == BtrStatusOk) (void)TakeStates(connection, TakeKept(connection, 0));
    return status;
}

void SendRollback(Connection *connection)
{
    SendRelease(connection, Statement::Rollback, Parameters{});
    connection->InTransaction = false;
    connection->Failure = BtrStatusOk;
}

int16_t EnterGate(Store *store, unsigned wait_ms, bool exclusive)
{
    Connection *connection = ConnectionOf(store);
    int16_t status = BtrStatusOk;
    if (connection->InTransaction) return status; // entered with a file's lock
    for (const bool again : {false, true}) {
        const bool risks = HoldsAnything(connection);
        status = Connect(connection);
        if (status != BtrStatusOk) return status;
        status = TryGate(connection, wait_ms, exclusive);
        if (status == BtrStatusOk) return status;
        if (connection->Real != nullptr || risks || again) break;
    }
    if (connection->Real == nullptr) return status;
    SendRollback(connection);
    if (status == BtrStatusRecordLocked && IsHolderExclusive(connection)) return BtrStatusFileLocked;
    return status;
}

void LeaveGate(Store *store)
{
    Connection *connection = ConnectionOf(store);
    if (connection->InTransaction) SendRollback(connection);
}

int16_t BeginWriter(Store *store, Writer **out)
{
    Connection *connection = ConnectionOf(store);
    *out = nullptr;
    if (!connection->InTransaction) {
        const int16_t status = EnterGate(store, serverLimits->ChangeWait_ms, false);
        if (status != BtrStatusOk) return status;
    }
    auto *writer = static_cast<Writer *>(calloc(1, sizeof(Writer)));
    if (writer == nullptr) return BtrStatusHandleTableFull;
    writer->Seen.Of = store;
    writer->Seen.By = connection;
    writer->Seen.Writing = true;
    writer->Seen.Open = true;
    connection->Writing = writer;
    *out = writer;
    return BtrStatusOk;
}

View *ViewOf(Writer *writer) { return &writer->Seen; }

namespace {

// What a writer has changed is not what was read before.
void Touch(Writer *writer, uint32_t file)
{
    Connection *connection = writer->Seen.By;
    ForgetOwn(&writer->Seen);
    ForgetRuns(connection, file);
    for (size_t i = 0; i < writer->TouchedCount; ++i) {
        if (writer->Touched[i] == file) return;
    }
    if (writer->TouchedCount < sizeof writer->Touched / sizeof writer->Touched[0])
        writer->Touched[writer->TouchedCount] = file;
    writer->TouchedCount++;
}

void EndWriter(Writer *writer, bool committed)
{
    Connection *connection = writer->Seen.By;
    if (!committed) {
        // What is known of the ends of indexes has the writer's own entries in it.
        for (size_t i = 0; i < writer->TouchedCount && i < sizeof writer->Touched / sizeof writer->Touched[0];
             ++i) {
            ForgetHighest(connection, writer->Touched[i]);
            FileState *state = FindState(connection, writer->Touched[i]);
            if (state != nullptr) state->Sequence = -1;
            connection->StatesAreOld = true;
        }
        if (writer->TouchedCount > sizeof writer->Touched / sizeof writer->Touched[0])
            ForgetAllRuns(connection);
    }
    connection->Checked_us = 0;
    connection->Writing = nullptr;
    ForgetOwn(&writer->Seen);
    while (writer->Used != nullptr) {
        Cursor *cursor = writer->Used;
        writer->Used = cursor->Next;
        free(cursor);
    }
    FreeBatches(writer);
    free(writer->Place);
    free(writer);
}

// Whether the transaction of a connection that was lost is in the books. It holds the gate as long as the
// server is still at work on it, be it with statements that it had received before the connection broke.
int16_t FindOut(Connection *connection, const uint8_t *session, int64_t number)
{
    const int64_t deadline_us = Now_us() + int64_t{serverLimits->ServerTruth_ms} * 1000;
    do {
        if (Connect(connection) == BtrStatusOk) {
            Parameters timeout{};
            AddNumber(&timeout, serverLimits->ServerAnswer_ms);
            Parameters unmarked{};
            AddNumber(&unmarked, 0);
            Parameters wanted{};
            AddBytes(&wanted, session, sizeof connection->Session);
            (void)Send(connection, Statement::Begin, Parameters{}, Answer::Needed);
            (void)Send(connection, Statement::SetTimeout, timeout, Answer::Needed);
            (void)Send(connection, Statement::EnterGate, unmarked, Answer::Needed);
            (void)Send(connection, Statement::FindTransaction, wanted, Answer::Kept);
            (void)Send(connection, Statement::Commit, Parameters{}, Answer::Needed);
            const int16_t status = Exchange(connection, serverLimits->ServerAnswer_ms);
            const PGresult *rows = connection->Kept[0];
            if (status == BtrStatusOk && rows != nullptr) {
                const bool done = PQntuples(rows) == 1 && NumberAt(rows, 0, 0) == number;
                return done ? BtrStatusOk : BtrStatusIoError;
            }
            if (connection->Real != nullptr) SendRollback(connection);
        }
        const timespec pause{0, 100000000};
        nanosleep(&pause, nullptr);
    } while (Now_us() < deadline_us);
    Report(
        connection->Of->Own->Directory,
        "die Verbindung brach beim Abschluss ab, und kein Server sagt, ob die Änderung in den Büchern ist");
    return BtrStatusIoError;
}

} // namespace

int16_t CommitWriter(Writer *writer)
{
    Connection *connection = writer->Seen.By;
    int16_t status = Settle(writer);
    if (status == BtrStatusOk) status = FlushBatches(writer);
    uint8_t session[sizeof connection->Session];
    memcpy(session, connection->Session, sizeof session);
    const int64_t number = ++connection->Transactions;
    if (status == BtrStatusOk) {
        Parameters noted{};
        AddBytes(&noted, session, sizeof session);
        AddNumber(&noted, number);
        if (writer->WritesCounters)
            (void)Send(connection, Statement::CountChange, Parameters{}, Answer::Needed);
        (void)Send(connection, Statement::NoteTransaction, noted, Answer::Needed);
        status = Send(connection, Statement::Commit, Parameters{}, Answer::Needed);
        const bool sent = status == BtrStatusOk;
        // Files are locked whole to the end of a transaction, which a commit with counters is.
        const bool unlocks = writer->WritesCounters;
        if (unlocks) SendUnlockFiles(connection);
        status = Exchange(connection, connection->Loading ? serverLimits->ServerTruth_ms : 0);
        if (unlocks && status == BtrStatusOk) connection->WholeCount = 0;
        if (writer->WritesCounters && status == BtrStatusOk) ++connection->Changes;
        if (status != BtrStatusOk && sent && connection->Real == nullptr) {
            connection->Writing = nullptr;
            status = FindOut(connection, session, number);
        }
    }
    if (status == BtrStatusOk) {
        connection->InTransaction = false;
    } else if (connection->Real != nullptr && connection->InTransaction) {
        SendRollback(connection);
    }
    EndWriter(writer, status == BtrStatusOk);
    return status;
}

void AbortWriter(Writer *writer)
{
    Connection *connection = writer->Seen.By;
    if (connection->InTransaction) SendRollback(connection);
    EndWriter(writer, false);
}

int16_t SetLoading(Store *store, bool loading)
{
    Connection *connection = ConnectionOf(store);
    connection->Loading = loading;
    Parameters wanted{};
    AddNumber(&wanted, loading ? 1 : 0);
    (void)Send(connection, Statement::SetAsynchronous, wanted, Answer::Needed);
    // A commit that is awaited awaits all those before it.
    if (!loading) {
        Post(connection);
        (void)Send(connection, Statement::Touch, Parameters{}, Answer::Needed);
    }
    return Exchange(connection, 0);
}

int16_t OpenWriteCursor(Writer *writer, const File &file, size_t tree, Cursor **cursor)
{
    auto *made = static_cast<Cursor *>(calloc(1, sizeof(Cursor)));
    if (made == nullptr) return BtrStatusHandleTableFull;
    made->By = writer->Seen.By;
    made->In = &file;
    made->Tree = static_cast<uint32_t>(tree);
    made->Next = writer->Used;
    writer->Used = made;
    *cursor = made;
    return BtrStatusOk;
}

int16_t Reserve(Writer *writer, const File &file, size_t, Bytes key, size_t size, bool append,
                uint8_t **place)
{
    const int16_t status = Settle(writer);
    if (status != BtrStatusOk) return status;
    if (writer->PlaceRoom < size) {
        void *larger = realloc(writer->Place, size);
        if (larger == nullptr) return BtrStatusHandleTableFull;
        writer->Place = static_cast<uint8_t *>(larger);
        writer->PlaceRoom = size;
    }
    writer->Record = GetField<uint32_t>(key.Data);
    writer->File = file.Number;
    writer->Appends = append;
    writer->PlaceSize = size;
    writer->Unfinished = true;
    Touch(writer, file.Number);
    *place = writer->Place;
    return BtrStatusOk;
}

namespace {

// All entries of a key's group begin alike; those bytes, and what lies behind all of them.
struct Group {
    size_t Size;
    uint8_t Begin[maxBound];
    uint8_t End[maxBound];
};

Group GroupOf(const File &file, size_t tree, Bytes key)
{
    Group group{};
    group.Size = file.Layout.Keys[tree - 1].Length;
    memcpy(group.Begin, key.Data, group.Size);
    memcpy(group.End, key.Data, group.Size);
    memset(group.End + group.Size, 0xFF, 8);
    return group;
}

Parameters EntryOf(const File &file, size_t tree, Bytes key)
{
    Parameters values{};
    AddNumber(&values, file.Number);
    AddNumber(&values, static_cast<int64_t>(tree));
    AddBytes(&values, key.Data, key.Size);
    return values;
}

bool LiesBehind(Bytes key, const HighestKey &highest)
{
    const size_t common = key.Size < highest.Size ? key.Size : highest.Size;
    const int order = memcmp(key.Data, highest.Key, common);
    return order > 0 || (order == 0 && key.Size > highest.Size);
}

// A key that lies behind all there are is not there. The last one is asked for with the first that is added.
int16_t AddUnique(Writer *writer, const File &file, size_t tree, Bytes key, uint32_t record)
{
    Connection *connection = writer->Seen.By;
    const auto number = static_cast<uint32_t>(tree);
    HighestKey *highest = FindHighest(connection, file.Number, number);
    const bool behind = highest != nullptr && LiesBehind(key, *highest);
    Parameters values = EntryOf(file, tree, key);
    AddNumber(&values, record);
    Parameters last{};
    AddNumber(&last, file.Number);
    AddNumber(&last, number);
    AddNumber(&last, 1);
    if (behind && connection->Loading) {
        SetHighest(connection, file.Number, number, key, record);
        return AddToBatch(writer, file.Number, number, 0, record, key);
    }
    if (FlushBatches(writer) != BtrStatusOk) return writer->Failed;
    (void)Send(connection, behind ? Statement::AddEntry : Statement::AddUnique, values,
               behind ? Answer::Needed : Answer::Kept);
    if (behind) {
        SetHighest(connection, file.Number, number, key, record);
        return connection->Failure;
    }
    if (highest == nullptr) (void)Send(connection, Statement::LastEntries, last, Answer::Kept);
    const int16_t status = ExchangeIn(writer, 0);
    if (status != BtrStatusOk) return status;
    const PGresult *added = connection->Kept[0];
    const PGresult *end = highest == nullptr ? connection->Kept[1] : nullptr;
    if (end != nullptr && PQntuples(end) == 1) {
        SetHighest(connection, file.Number, number, BytesAt(end, 0, 0),
                   static_cast<uint32_t>(NumberAt(end, 0, 1)));
    }
    return added != nullptr && PQntuples(added) == 1 ? BtrStatusOk : BtrStatusDuplicateKey;
}

} // namespace

int16_t Add(Cursor *cursor, Bytes key, Bytes value)
{
    const File &file = *cursor->In;
    Writer *writer = cursor->By->Writing;
    int16_t status = Settle(writer);
    if (status != BtrStatusOk) return status;
    const auto record = GetField<uint32_t>(value.Data);
    Touch(writer, file.Number);
    if (!file.Layout.Keys[cursor->Tree - 1].Duplicates)
        return AddUnique(writer, file, cursor->Tree, key, record);
    const Group group = GroupOf(file, cursor->Tree, key);
    if (cursor->By->Loading) return AddToBatch(writer, file.Number, cursor->Tree, group.Size, record, key);
    Parameters values = EntryOf(file, cursor->Tree, key);
    AddNumber(&values, record);
    const HighestKey *known = FindHighest(cursor->By, file.Number, cursor->Tree);
    if (known != nullptr && known->Size == group.Size && memcmp(known->Key, group.Begin, group.Size) == 0)
        return Send(cursor->By, Statement::AddEntry, values, Answer::Needed);
    SetHighest(cursor->By, file.Number, cursor->Tree, {group.Begin, group.Size}, record);
    AddBytes(&values, group.Begin, group.Size);
    AddBytes(&values, group.End, group.Size + 8);
    return Send(cursor->By, Statement::AddToGroup, values, Answer::Needed);
}

int16_t Remove(Writer *writer, const File &file, size_t tree, Bytes key)
{
    Connection *connection = writer->Seen.By;
    int16_t status = Settle(writer);
    if (status == BtrStatusOk) status = FlushBatches(writer);
    if (status != BtrStatusOk) return status;
    Touch(writer, file.Number);
    if (tree == recordTree) {
        const auto record = GetField<uint32_t>(key.Data);
        Parameters values{};
        AddNumber(&values, file.Number);
        AddNumber(&values, record);
        return Send(connection, Statement::RemoveRecord, values, Answer::Needed);
    }
    Parameters values = EntryOf(file, tree, key);
    HighestKey *highest = FindHighest(connection, file.Number, static_cast<uint32_t>(tree));
    if (!file.Layout.Keys[tree - 1].Duplicates) {
        if (highest != nullptr) highest->Exact = false;
        return Send(connection, Statement::RemoveUnique, values, Answer::Needed);
    }
    if (highest != nullptr) *highest = {};
    const Group group = GroupOf(file, tree, key);
    AddBytes(&values, group.Begin, group.Size);
    AddBytes(&values, group.End, group.Size + 8);
    return Send(connection, Statement::RemoveFromGroup, values, Answer::Needed);
}

} // namespace wbtrv
