#include "record-manager/client.h"

#include "record-manager/calls.h"
#include "record-manager/limits.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <pthread.h>
#include <unistd.h>

namespace wbtrv {

namespace {

// The first bytes of a position block in use. It holds nothing that could be followed when it is garbage.
struct BlockImage {
    char Mark[8];
    uint32_t Index;
    uint32_t Reserved12;
    uint64_t Check;
};
static_assert(sizeof(BlockImage) <= BtrPositionBlockSize);
constexpr char blockMark[9] = "WBTRVPOS";

thread_local Client *current = nullptr;
pthread_key_t endOfThread;
bool threadsAreWatched = false;
pthread_once_t once = PTHREAD_ONCE_INIT;
Client *clients = nullptr; // guarded by the registry's lock, which a fork waits for

void EndOfThread(void *client)
{
    current = static_cast<Client *>(client);
    EndClient();
}

// The child has the parent's position blocks and descriptions, and no right to either.
void ForgetParent()
{
    for (Client *client = clients; client != nullptr; client = client->Next) {
        for (ClientStore *store = client->Stores; store != nullptr; store = store->Next) {
            if (store->LockFd >= 0) close(store->LockFd);
        }
    }
    clients = nullptr;
    current = nullptr;
    if (threadsAreWatched) pthread_setspecific(endOfThread, nullptr);
    ForgetStores();
}

void WatchThreads()
{
    threadsAreWatched = pthread_key_create(&endOfThread, EndOfThread) == 0;
    pthread_atfork(BeforeFork, AfterForkInParent, ForgetParent);
}

// Unlike for every handle of every process there has been, so that an old position block is told from a new
// one.
uint64_t NewCheck(const Handle *handle)
{
    static std::atomic<uint64_t> counter{0};
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    uint64_t check = static_cast<uint64_t>(now.tv_sec) * 1000000000 + static_cast<uint64_t>(now.tv_nsec);
    check += counter.fetch_add(1, std::memory_order_relaxed) * 0x9E3779B97F4A7C15u;
    check ^= reinterpret_cast<uintptr_t>(handle);
    check = (check ^ check >> 31) * 0xBF58476D1CE4E5B9u;
    return check ^ check >> 29;
}

} // namespace

Client *CurrentClient()
{
    if (current != nullptr) return current;
    pthread_once(&once, WatchThreads);
    if (!threadsAreWatched) return nullptr;
    auto *client = static_cast<Client *>(calloc(1, sizeof(Client)));
    if (client == nullptr) return nullptr;
    if (pthread_setspecific(endOfThread, client) != 0) {
        free(client);
        return nullptr;
    }
    LockRegistry();
    client->Next = clients;
    client->Link = &clients;
    if (clients != nullptr) clients->Link = &client->Next;
    clients = client;
    UnlockRegistry();
    current = client;
    return client;
}

namespace {

void EndClientStore(ClientStore *store)
{
    if (store->Snapshot != nullptr) EndSnapshot(store->Snapshot);
    LockRegistry();
    ClientStore **link = &store->Owner->Stores;
    while (*link != store) {
        link = &(*link)->Next;
    }
    *link = store->Next;
    UnlockRegistry();
    if (store->LockFd >= 0) GiveLockDescription(store->Books, &store->LockFd);
    ReleaseStore(store->Books);
    free(store);
}

} // namespace

void ResetClient(Client *client)
{
    client->Group = GroupState::None; // so that the abort undoes all of it
    if (client->Transaction != TransactionKind::None) AbortTransaction(client);
    for (size_t i = 0; i < client->HandleCount; ++i) {
        if (client->Handles[i] != nullptr) (void)CloseHandle(client->Handles[i]);
    }
}

void EndClient()
{
    Client *client = current;
    if (client == nullptr) return;
    ResetClient(client);
    while (client->Stores != nullptr) {
        EndClientStore(client->Stores);
    }
    LockRegistry();
    *client->Link = client->Next;
    if (client->Next != nullptr) client->Next->Link = client->Link;
    UnlockRegistry();
    free(client->Handles);
    free(client);
    pthread_setspecific(endOfThread, nullptr);
    current = nullptr;
}

Handle *FindHandle(const Client *client, const void *positionBlock)
{
    BlockImage image;
    memcpy(&image, positionBlock, sizeof image);
    if (memcmp(image.Mark, blockMark, sizeof image.Mark) != 0 || image.Index >= client->HandleCount)
        return nullptr;
    Handle *handle = client->Handles[image.Index];
    return handle != nullptr && handle->Check == image.Check ? handle : nullptr;
}

Handle *AddHandle(Client *client, ClientFile *file, void *positionBlock)
{
    size_t index = 0;
    while (index < client->HandleCount && client->Handles[index] != nullptr) {
        ++index;
    }
    if (index == client->HandleCount) {
        const size_t count = client->HandleCount == 0 ? 32 : client->HandleCount * 2;
        void *larger = realloc(client->Handles, count * sizeof(void *));
        if (larger == nullptr) return nullptr;
        client->Handles = static_cast<Handle **>(larger);
        memset(client->Handles + client->HandleCount, 0, (count - client->HandleCount) * sizeof(void *));
        client->HandleCount = count;
    }
    auto *handle = static_cast<Handle *>(calloc(1, sizeof(Handle)));
    if (handle == nullptr) return nullptr;
    const size_t trees = IndexTree(file->Of->Layout.KeyCount);
    handle->Cursors = static_cast<Cursor **>(calloc(trees, sizeof(Cursor *)));
    if (handle->Cursors == nullptr) {
        free(handle);
        return nullptr;
    }
    handle->In = file;
    handle->Check = NewCheck(handle);
    handle->Index = static_cast<uint32_t>(index);
    handle->LogicalKey = noLogicalKey;
    client->Handles[index] = handle;

    BlockImage image{};
    memcpy(image.Mark, blockMark, sizeof image.Mark);
    image.Index = handle->Index;
    image.Check = handle->Check;
    memset(positionBlock, 0, BtrPositionBlockSize);
    memcpy(positionBlock, &image, sizeof image);
    return handle;
}

void RemoveHandle(Client *client, Handle *handle)
{
    client->Handles[handle->Index] = nullptr;
    for (size_t tree = 0; tree < IndexTree(handle->In->Of->Layout.KeyCount); ++tree) {
        if (handle->Cursors[tree] != nullptr) CloseCursor(handle->Cursors[tree]);
    }
    free(handle->Cursors);
    free(handle->Multiple.Locks);
    free(handle);
}

int16_t AcquireClientStore(Client *client, const char *directory, bool create, bool readOnly,
                           ClientStore **out)
{
    Store *books = nullptr;
    const int16_t status = AcquireStore(directory, create, readOnly, &books);
    if (status != BtrStatusOk) return status;
    for (ClientStore *store = client->Stores; store != nullptr; store = store->Next) {
        if (store->Books != books) continue;
        ReleaseStore(books);
        *out = store;
        return BtrStatusOk;
    }
    auto *store = static_cast<ClientStore *>(calloc(1, sizeof(ClientStore)));
    if (store == nullptr) {
        ReleaseStore(books);
        return BtrStatusHandleTableFull;
    }
    store->Owner = client;
    store->Books = books;
    store->LockFd = -1;
    LockRegistry();
    store->Next = client->Stores;
    client->Stores = store;
    UnlockRegistry();
    *out = store;
    return BtrStatusOk;
}

namespace {

bool HoldsLocks(const ClientStore *store)
{
    const ClientFile *file = store->Files;
    while (file != nullptr && file->Held.Used == 0 && !file->Whole) {
        file = file->Next;
    }
    return file != nullptr;
}

} // namespace

void ReleaseIdle(Client *client)
{
    for (ClientStore *store = client->Stores; store != nullptr;) {
        ClientStore *next = store->Next;
        if (store->LockFd >= 0 && !HoldsLocks(store)) GiveLockDescription(store->Books, &store->LockFd);
        const bool idle = store->Opens == 0 && store->Files == nullptr && store->Pending == nullptr;
        if (idle && client->Changed != store) EndClientStore(store);
        store = next;
    }
}

int16_t NeedLockDescription(ClientStore *store)
{
    return store->LockFd >= 0 ? static_cast<int16_t>(BtrStatusOk)
                              : TakeLockDescription(store->Books, &store->LockFd);
}

void ReleaseClientFile(ClientFile *file)
{
    if (file->Opens > 0 || file->Whole || file->Touched || file->Held.Used > 0) return;
    ClientFile **link = &file->Home->Files;
    while (*link != file) {
        link = &(*link)->Next;
    }
    *link = file->Next;
    DropOpen(file->Home->Books->Shared, file->Of->Number);
    ReleaseFile(file->Home->Books, file->Of);
    free(file->Held.Entries);
    free(file->Implicit.Entries);
    free(file);
}

int16_t BeginView(ClientStore *store, View **view)
{
    if (store->Pending != nullptr) {
        *view = ViewOf(store->Pending);
        return store->Broken;
    }
    const int16_t status = BeginSnapshot(store->Books, &store->Snapshot);
    *view = store->Snapshot;
    return status;
}

void EndView(ClientStore *store)
{
    if (store->Pending == nullptr) ResetSnapshot(store->Snapshot);
}

int16_t UseWriteCursor(ClientFile *file, size_t tree, Cursor **cursor)
{
    int16_t status = BtrStatusOk;
    if (file->WriteCursors[tree] == nullptr) {
        status = OpenWriteCursor(file->Home->Pending, *file->Of, tree, &file->WriteCursors[tree]);
        file->Cursors = true;
    }
    *cursor = file->WriteCursors[tree];
    return status;
}

namespace {

// Whether a client holds a record of its directory; `who` is the client's part of it.
bool Holds(const void *who, uint32_t number, uint32_t record)
{
    const auto *store = static_cast<const ClientStore *>(who);
    for (const ClientFile *file = store->Files; file != nullptr; file = file->Next) {
        if (file->Of->Number == number) return file->Whole || CountOf(file->Held, record) > 0;
    }
    return false;
}

LockResult LockRecord(const ClientFile *file, uint32_t record, const LockRequest &request)
{
    ClientStore *store = file->Home;
    if (NeedLockDescription(store) != BtrStatusOk) return LockResult::NoDescription;
    const int64_t offset = RecordOffset(file->Of->Number, record);
    Patience patience = StartPatience(request.Wait_ms);
    LockResult result = TryLock(store->LockFd, LockKind::Write, offset, 1);
    if (result == LockResult::Granted || result == LockResult::Failed) return result;
    WaitTable *table = WaitsOf(store->Books->WriteGate);
    Wait *wait = request.Waits ? EnterWait(table, file->Of->Number, record) : nullptr;
    while (result != LockResult::Granted && result != LockResult::Failed && WaitMore(&patience)) {
        result = TryLock(store->LockFd, LockKind::Write, offset, 1);
        if (result == LockResult::Granted || wait == nullptr) continue;
        if (MustGiveWay(table, wait, Holds, store)) {
            result = LockResult::Deadlock;
            break;
        }
    }
    if (wait != nullptr) LeaveWait(wait);
    return result;
}

} // namespace

LockResult HoldRecord(ClientFile *file, uint32_t record, const LockRequest &request)
{
    if (!file->Whole && CountOf(file->Held, record) == 0) {
        const LockResult result = LockRecord(file, record, request);
        if (result != LockResult::Granted) return result;
    }
    if (AddCount(&file->Held, record)) return LockResult::Granted;
    if (!file->Whole && CountOf(file->Held, record) == 0) {
        Unlock(file->Home->LockFd, RecordOffset(file->Of->Number, record), 1);
    }
    return LockResult::Failed;
}

LockResult HoldRecordAtOnce(ClientFile *file, uint32_t record)
{
    return HoldRecord(file, record, {LockMode::None, false, false, 0});
}

void DropRecord(ClientFile *file, uint32_t record)
{
    if (SubtractCount(&file->Held, record) > 0 || file->Whole) return;
    Unlock(file->Home->LockFd, RecordOffset(file->Of->Number, record), 1);
}

int16_t LockWholeFile(Handle *handle, const LockRequest &request)
{
    ClientFile *file = handle->In;
    if (file->Home->Owner->Transaction != TransactionKind::Exclusive || file->Whole) return BtrStatusOk;
    // Where nothing can be written the lock cannot be one for writing either.
    if (NeedLockDescription(file->Home) != BtrStatusOk) return BtrStatusFileTableFull;
    const LockKind kind = file->Home->Books->ReadOnly ? LockKind::Read : LockKind::Write;
    const LockResult result =
        WaitLock(file->Home->LockFd, kind, RecordOffset(file->Of->Number, 0), wholeFile, request.Wait_ms);
    if (result != LockResult::Granted) return StatusOfLock(result);
    file->Whole = true;
    ReleaseSingle(handle);
    ReleaseAllMultiple(handle);
    return BtrStatusOk;
}

void UnlockWholeFile(ClientFile *file)
{
    if (!file->Whole) return;
    file->Whole = false;
    // Locks from before the transaction stay; only what lies between them is given back. They are few, so the
    // next one is looked for each time, without memory that might not be there.
    const int64_t first = RecordOffset(file->Of->Number, 0);
    int64_t from = 0;
    for (size_t left = file->Held.Used; left > 0; --left) {
        const int64_t next = NextHeld(file->Held, static_cast<uint32_t>(from));
        if (next > from) Unlock(file->Home->LockFd, first + from, next - from);
        from = next + 1;
    }
    if (from < wholeFile) Unlock(file->Home->LockFd, first + from, wholeFile - from);
}

int16_t ReserveLock(LockList *list)
{
    if (list->Count < list->Capacity) return BtrStatusOk;
    const size_t capacity = list->Capacity == 0 ? 8 : list->Capacity * 2;
    void *larger = realloc(list->Locks, capacity * sizeof(HeldLock));
    if (larger == nullptr) return BtrStatusHandleTableFull;
    list->Locks = static_cast<HeldLock *>(larger);
    list->Capacity = capacity;
    return BtrStatusOk;
}

bool AppendLock(LockList *list, HeldLock lock)
{
    if (ReserveLock(list) != BtrStatusOk) return false;
    list->Locks[list->Count++] = lock;
    return true;
}

int16_t CheckLockMode(const Handle *handle, LockMode mode)
{
    const bool mixed = (mode == LockMode::Single && handle->Multiple.Count > 0) ||
                       (mode == LockMode::Multiple && handle->Single.Record != 0);
    return mixed ? BtrStatusBadLockType : BtrStatusOk;
}

int16_t NoteLock(Handle *handle, LockMode mode, uint32_t record)
{
    const bool inTransaction = handle->In->Home->Owner->Transaction != TransactionKind::None;
    if (mode == LockMode::Single) {
        // A lock from before the transaction that is asked for again stays one from before.
        const bool again = handle->Single.Record == record;
        const bool since = again ? handle->Single.InTransaction : inTransaction;
        ReleaseSingle(handle);
        handle->Single = {record, since};
        return BtrStatusOk;
    }
    for (size_t i = 0; i < handle->Multiple.Count; ++i) {
        if (handle->Multiple.Locks[i].Record != record) continue;
        DropRecord(handle->In, record);
        return BtrStatusOk;
    }
    if (AppendLock(&handle->Multiple, {record, inTransaction})) return BtrStatusOk;
    DropRecord(handle->In, record);
    return BtrStatusHandleTableFull;
}

void ReleaseSingle(Handle *handle)
{
    if (handle->Single.Record == 0) return;
    DropRecord(handle->In, handle->Single.Record);
    handle->Single.Record = 0;
}

bool ReleaseMultiple(Handle *handle, uint32_t record)
{
    LockList &list = handle->Multiple;
    for (size_t i = 0; i < list.Count; ++i) {
        if (list.Locks[i].Record != record) continue;
        DropRecord(handle->In, record);
        list.Locks[i] = list.Locks[--list.Count];
        return true;
    }
    return false;
}

void ReleaseAllMultiple(Handle *handle)
{
    for (size_t i = 0; i < handle->Multiple.Count; ++i) {
        DropRecord(handle->In, handle->Multiple.Locks[i].Record);
    }
    handle->Multiple.Count = 0;
}

} // namespace wbtrv
