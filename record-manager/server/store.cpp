// The schemas that are open in this process: a store with a connection for each client that uses one.
#include "record-manager/server/private.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

namespace wbtrv {

namespace {

extern const StoreFunctions serverFunctions;

pthread_mutex_t registry = PTHREAD_MUTEX_INITIALIZER;
Store *stores = nullptr;

void FreeStore(Store *store)
{
    if (store->Own->Link != nullptr) EndConnection(store->Own->Link);
    while (store->Files != nullptr) {
        File *file = store->Files;
        store->Files = file->Next;
        free(file);
    }
    pthread_mutex_destroy(&store->Mutex);
    free(store->Own);
    free(store);
}

int64_t WrittenAt(const struct stat &facts)
{
    return int64_t{facts.st_mtim.tv_sec} * 1000000000 + facts.st_mtim.tv_nsec;
}

int16_t OpenStore(int directoryFd, const char *directory, const struct stat &facts, Store **out)
{
    auto *store = static_cast<Store *>(calloc(1, sizeof(Store)));
    auto *own = static_cast<Environment *>(calloc(1, sizeof(Environment)));
    auto *connection = static_cast<Connection *>(calloc(1, sizeof(Connection)));
    if (store == nullptr || own == nullptr || connection == nullptr) {
        free(store);
        free(own);
        free(connection);
        return BtrStatusHandleTableFull;
    }
    store->Do = &serverFunctions;
    store->Own = own;
    own->Link = connection;
    connection->Of = store;
    store->DirectoryFd = -1;
    store->PresenceFd = -1;
    store->Device = facts.st_dev;
    store->Inode = facts.st_ino;
    pthread_mutex_init(&store->Mutex, nullptr);
    snprintf(own->Directory, sizeof own->Directory, "%s", directory);
    own->Written_ns = WrittenAt(facts);
    const int16_t status = ReadServiceFile(directoryFd, directory, &own->Service);
    if (status != BtrStatusOk) {
        FreeStore(store);
        return status;
    }
    snprintf(own->QuotedSchema, sizeof own->QuotedSchema, "\"%s\".", own->Service.Schema);
    *out = store;
    return BtrStatusOk;
}

constexpr unsigned mostIdle = 4;

// Closes those that nobody uses, but for some.
void CloseIdle()
{
    unsigned idle = 0;
    for (Store **link = &stores; *link != nullptr;) {
        Store *store = *link;
        if (store->Users > 0 || (store->Own->Link->Real != nullptr && ++idle <= mostIdle)) {
            link = &store->Next;
            continue;
        }
        *link = store->Next;
        FreeStore(store);
    }
}

// The client's store of the service file, which is known by what it is and when it was written: its own, or
// one that is idle.
Store *FindKnown(const struct stat &facts, const void *client)
{
    Store *idle = nullptr;
    for (Store *store = stores; store != nullptr; store = store->Next) {
        const bool same = store->Inode == facts.st_ino && store->Device == facts.st_dev &&
                          store->Own->Written_ns == WrittenAt(facts);
        if (!same) continue;
        if (store->Users > 0 && store->Own->Client == client) return store;
        if (store->Users == 0) idle = store;
    }
    return idle;
}

int16_t FindStore(const char *directory, const void *client, Store **out)
{
    const int fd = open(directory, O_PATH | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return BtrStatusFileNotFound;
    struct stat facts;
    int16_t status = BtrStatusFileNotFound;
    if (fstatat(fd, serverName, &facts, AT_SYMLINK_NOFOLLOW) == 0) {
        Store *store = FindKnown(facts, client);
        const bool known = store != nullptr && (facts.st_mode & (S_IWGRP | S_IWOTH)) == 0;
        status = known ? static_cast<int16_t>(BtrStatusOk) : OpenStore(fd, directory, facts, &store);
        if (status == BtrStatusOk && !known) {
            store->Next = stores;
            stores = store;
        }
        *out = store;
    }
    close(fd);
    return status;
}

void LockBeforeFork() { pthread_mutex_lock(&registry); }
void UnlockAfterFork() { pthread_mutex_unlock(&registry); }

// The child closes its copies of the sockets without a word, which would be the parent's.
void ForgetParent()
{
    for (const Store *store = stores; store != nullptr; store = store->Next) {
        if (store->Own->Link->Real != nullptr) close(PQsocket(store->Own->Link->Real));
    }
    stores = nullptr;
    pthread_mutex_init(&registry, nullptr);
}

} // namespace

int16_t AcquireServerStore(const char *directory, bool create, bool, const void *client, Store **out)
{
    pthread_mutex_lock(&registry);
    CloseIdle();
    Store *store = nullptr;
    int16_t status = FindStore(directory, client, &store);
    if (status == BtrStatusOk) {
        store->Own->Create = create;
        store->Own->Client = client;
        store->Users++;
    }
    pthread_mutex_unlock(&registry);
    if (status != BtrStatusOk) return status;
    Connection *connection = ConnectionOf(store);
    if (!connection->InTransaction && !connection->Holding) status = Connect(connection);
    if (status != BtrStatusOk) {
        ReleaseStore(store);
        return status;
    }
    *out = store;
    return BtrStatusOk;
}

void ReleaseStore(Store *store)
{
    if (store->Users == 1) {
        Repay(ConnectionOf(store));
        ForgetAllRuns(ConnectionOf(store));
        ConnectionOf(store)->LostLocks = false;
    }
    pthread_mutex_lock(&registry);
    store->Users--;
    pthread_mutex_unlock(&registry);
}

namespace {

const ServerPart serverPart = {AcquireServerStore, CountRoundTrips};

const StoreFunctions serverFunctions = {
    .ReleaseStore = ReleaseStore,
    .TakeLockDescription = TakeLockDescription,
    .GiveLockDescription = GiveLockDescription,
    .LockRecord = LockRecord,
    .LockFile = LockFile,
    .Unlock = Unlock,
    .HasLostLocks = HasLostLocks,
    .HoldOpen = HoldOpen,
    .DropOpen = DropOpen,
    .HoldUsage = HoldUsage,
    .DropUsage = DropUsage,
    .EnterGate = EnterGate,
    .LeaveGate = LeaveGate,
    .AcquireFile = AcquireFile,
    .ReleaseFile = ReleaseFile,
    .CreateFile = CreateFile,
    .ForgetTrees = ForgetTrees,
    .RenewTrees = RenewTrees,
    .ReadLastFile = ReadLastFile,
    .FindFileNumber = FindFileNumber,
    .BeginSnapshot = BeginSnapshot,
    .ResetSnapshot = ResetSnapshot,
    .EndSnapshot = EndSnapshot,
    .HoldSnapshot = HoldSnapshot,
    .IsOpen = IsOpen,
    .IsStillWhole = nullptr,
    .ForgetReads = ForgetReads,
    .AskAhead = AskAhead,
    .BeginWriter = BeginWriter,
    .CommitWriter = CommitWriter,
    .AbortWriter = AbortWriter,
    .ViewOf = ViewOf,
    .SetLoading = SetLoading,
    .ReadCounters = ReadCounters,
    .WriteCounters = WriteCounters,
    .CountGroups = CountGroups,
    .OpenWriteCursor = OpenWriteCursor,
    .UseCursor = UseCursor,
    .CloseCursor = CloseCursor,
    .Seek = Seek,
    .SeekNext = SeekNext,
    .SeekPrevious = SeekPrevious,
    .SeekExactly = SeekExactly,
    .Get = Get,
    .Reserve = Reserve,
    .Add = Add,
    .Remove = Remove,
};

} // namespace

} // namespace wbtrv

extern "C" __attribute__((visibility("default"))) const wbtrv::ServerPart *
WbtrvServerPart(uint32_t form, const wbtrv::Limits *limits)
{
    if (form != wbtrv::serverPartForm) return nullptr;
    static bool watched = false;
    if (!watched) pthread_atfork(wbtrv::LockBeforeFork, wbtrv::UnlockAfterFork, wbtrv::ForgetParent);
    watched = true;
    wbtrv::serverLimits = limits;
    return &wbtrv::serverPart;
}
