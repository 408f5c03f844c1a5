// Locks that clients on all machines see: advisory locks of their sessions, which go with the connection.
// This is what only PostgreSQL has.
#include "record-manager/server/connection.h"

namespace wbtrv {

// Locks of the server are known by 64 bits. Two that come to the same ones by chance, once in more locks than
// there will ever be, would be one lock.
int64_t KeyOf(const Connection *connection, AdvisoryKind kind, uint32_t file, uint32_t record)
{
    uint64_t key = static_cast<uint64_t>(connection->LockSpace) << 32 ^ record;
    key ^= (static_cast<uint64_t>(kind) << 24 | file) * 0x9E3779B97F4A7C15u;
    key = (key ^ key >> 30) * 0xBF58476D1CE4E5B9u;
    key = (key ^ key >> 27) * 0x94D049BB133111EBu;
    return static_cast<int64_t>(key ^ key >> 31);
}

int16_t SendLock(Connection *connection, Statement statement, int64_t first, int64_t second, Answer how)
{
    Parameters keys{};
    AddNumber(&keys, first);
    if (second != 0) AddNumber(&keys, second);
    return Send(connection, statement, keys, how);
}

void Release(Connection *connection, Statement statement, int64_t first, int64_t second)
{
    Parameters keys{};
    AddNumber(&keys, first);
    if (second != 0) AddNumber(&keys, second);
    SendRelease(connection, statement, keys);
}

int64_t FirstNumber(const Connection *connection)
{
    const PGresult *rows = connection->KeptCount > 0 ? connection->Kept[0] : nullptr;
    return rows != nullptr && PQntuples(rows) == 1 ? NumberAt(rows, 0, 0) : -1;
}

int16_t ExchangeHere(Connection *connection, unsigned wait_ms)
{
    const int16_t status = Exchange(connection, wait_ms);
    const bool refused = status == BtrStatusRecordLocked || status == BtrStatusDeadlock;
    if (status != BtrStatusOk && !refused && connection->Writing != nullptr &&
        connection->Writing->Failed == BtrStatusOk) {
        connection->Writing->Failed = status;
    }
    return status;
}

void SendUnlockFiles(Connection *connection)
{
    for (size_t i = 0; i < connection->WholeCount; ++i) {
        const uint32_t file = connection->Whole[i];
        (void)SendLock(connection, Statement::UnlockFile, KeyOf(connection, AdvisoryKind::File, file, 0),
                       KeyOf(connection, AdvisoryKind::WholeFile, file, 0), Answer::Ignored);
    }
}

bool HoldsAnything(const Connection *connection)
{
    return connection->LockedCount > 0 || connection->WholeCount > 0 || connection->InTransaction ||
           connection->Writing != nullptr || connection->Holding || connection->LostLocks;
}

namespace {

LockResult TryHoldOnce(Connection *connection, AdvisoryKind kind, uint32_t file, bool alone)
{
    const Statement statement = alone ? Statement::LockAlone : Statement::LockShared;
    (void)SendLock(connection, statement, KeyOf(connection, kind, file, 0), 0, Answer::Kept);
    // Who opens reads next, and needs to know by then which files have changed.
    const bool readsNext = kind == AdvisoryKind::Open && serverLimits->ReadAhead_ms > 0 &&
                           !connection->InTransaction && !AreFresh(connection);
    // Nobody replaces the file from now on, whose number never becomes another's.
    const PGresult *found = connection->FoundFile;
    const bool known = readsNext && PQntuples(found) == 1 && NumberAt(found, 0, 0) == file;
    if (kind == AdvisoryKind::Open && !known) {
        Parameters wanted{};
        AddNumber(&wanted, file);
        (void)Send(connection, Statement::ReadFile, wanted, Answer::Kept);
    }
    if (readsNext) SendStates(connection);
    if (ExchangeHere(connection, 0) != BtrStatusOk) return LockResult::Failed;
    if (FirstNumber(connection) != 0) return LockResult::RecordBusy;
    if (kind == AdvisoryKind::Open && !known) {
        PQclear(connection->FoundFile);
        connection->FoundFile = TakeKept(connection, 1);
    }
    if (readsNext) {
        const bool same = TakeStates(connection, TakeKept(connection, known ? 1 : 2));
        if (!same) SendStates(connection);
        const int16_t status = same ? static_cast<int16_t>(BtrStatusOk) : ExchangeHere(connection, 0);
        if (connection->Real == nullptr) return LockResult::Failed;
        if (!same && status == BtrStatusOk) (void)TakeStates(connection, TakeKept(connection, 0));
    }
    if (kind == AdvisoryKind::Open)
        connection->FoundFileHeld = !known || FindState(connection, file) != nullptr;
    return LockResult::Granted;
}

} // namespace

// The server learns a little later than others of a client that has died.
LockResult TryHold(Connection *connection, AdvisoryKind kind, uint32_t file, bool alone)
{
    Patience patience = StartPatience(serverLimits->MomentaryWait_ms);
    for (;;) {
        const LockResult result = TryHoldOnce(connection, kind, file, alone);
        if (result != LockResult::RecordBusy || !WaitMore(&patience)) return result;
    }
}

void ReleaseHeld(Connection *connection, AdvisoryKind kind, uint32_t file, bool alone)
{
    const Statement statement = alone ? Statement::UnlockAlone : Statement::UnlockShared;
    const bool owed = connection->Owes;
    Release(connection, statement, KeyOf(connection, kind, file, 0), 0);
    // Only who wants it alone minds, and waits for a moment longer than this is on its way.
    if (owed || serverLimits->MomentaryWait_ms == 0) return;
    Post(connection);
    connection->Owes = false;
}

int16_t RestoreOpens(Connection *connection)
{
    LockResult result = LockResult::Granted;
    for (const HeldOpen *open = connection->Opens; open != nullptr && result == LockResult::Granted;
         open = open->Next) {
        result = TryHold(connection, AdvisoryKind::Open, open->File, open->Alone);
    }
    if (connection->UsageShared && result == LockResult::Granted)
        result = TryHold(connection, AdvisoryKind::Usage, 0, false);
    if (connection->UsageAlone && result == LockResult::Granted)
        result = TryHold(connection, AdvisoryKind::Usage, 0, true);
    return result == LockResult::Granted ? BtrStatusOk : BtrStatusIoError;
}

int16_t SendGateLock(Connection *connection, bool waits, bool exclusive)
{
    const int64_t mark = exclusive ? KeyOf(connection, AdvisoryKind::Exclusive, 0, 0) : 0;
    return SendLock(connection, waits ? Statement::EnterGate : Statement::TryGate, mark, 0, Answer::Kept);
}

bool IsHolderExclusive(Connection *connection)
{
    (void)SendLock(connection, Statement::IsMarkedExclusive, KeyOf(connection, AdvisoryKind::Exclusive, 0, 0),
                   0, Answer::Kept);
    return Exchange(connection, 0) == BtrStatusOk && FirstNumber(connection) == 1;
}

} // namespace wbtrv
