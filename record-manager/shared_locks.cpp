#include "record-manager/shared_locks.h"

#include <cstdlib>

namespace wbtrv {

namespace {

OpenLock *Find(const SharedLocks &locks, uint32_t number)
{
    OpenLock *found = locks.Files;
    while (found != nullptr && found->Number != number) {
        found = found->Next;
    }
    return found;
}

LockResult LockFile(const SharedLocks &locks, uint32_t number, bool alone)
{
    return TryLock(locks.Fd, alone ? LockKind::Write : LockKind::Read, OpensOffset(number), 1);
}

LockResult HoldFirst(SharedLocks &locks, uint32_t number, bool alone)
{
    auto *made = static_cast<OpenLock *>(std::calloc(1, sizeof(OpenLock)));
    if (made == nullptr) return LockResult::NoMemory;
    const LockResult result = LockFile(locks, number, alone);
    if (result != LockResult::Granted) {
        std::free(made);
        return result;
    }
    *made = {locks.Files, number, 1, alone};
    locks.Files = made;
    return result;
}

LockResult HoldOneMore(const SharedLocks &locks, OpenLock *file, bool alone, bool holds)
{
    const bool others = file->Clients > (holds ? 1u : 0u);
    if (others && (alone || file->Alone)) return LockResult::RecordBusy;
    if (alone != file->Alone) {
        const LockResult result = LockFile(locks, file->Number, alone);
        if (result != LockResult::Granted) return result;
        file->Alone = alone;
    }
    if (!holds) file->Clients++;
    return LockResult::Granted;
}

LockResult HoldUsageLocked(SharedLocks &locks, bool loading, bool uses, bool loads)
{
    LockResult result = LockResult::Granted;
    if (loading && !loads) {
        if (locks.Using > (uses ? 1u : 0u)) return LockResult::RecordBusy;
        result = TryLock(locks.Fd, LockKind::Write, usageOffset, 1);
        locks.Loading = result == LockResult::Granted;
    } else if (!uses) {
        if (locks.Loading) return LockResult::RecordBusy;
        if (locks.Using == 0) result = TryLock(locks.Fd, LockKind::Read, usageOffset, 1);
    }
    if (result == LockResult::Granted && !uses) locks.Using++;
    return result;
}

} // namespace

LockResult HoldOpen(SharedLocks &locks, uint32_t number, bool alone, bool holds)
{
    pthread_mutex_lock(&locks.Mutex);
    OpenLock *file = Find(locks, number);
    const LockResult result =
        file == nullptr ? HoldFirst(locks, number, alone) : HoldOneMore(locks, file, alone, holds);
    pthread_mutex_unlock(&locks.Mutex);
    return result;
}

void DropOpen(SharedLocks &locks, uint32_t number)
{
    pthread_mutex_lock(&locks.Mutex);
    OpenLock **link = &locks.Files;
    while (*link != nullptr && (*link)->Number != number) {
        link = &(*link)->Next;
    }
    OpenLock *file = *link;
    if (file != nullptr && --file->Clients == 0) {
        *link = file->Next;
        Unlock(locks.Fd, OpensOffset(number), 1);
        std::free(file);
    }
    pthread_mutex_unlock(&locks.Mutex);
}

LockResult HoldUsage(SharedLocks &locks, bool loading, bool uses, bool loads)
{
    pthread_mutex_lock(&locks.Mutex);
    const LockResult result = HoldUsageLocked(locks, loading, uses, loads);
    pthread_mutex_unlock(&locks.Mutex);
    return result;
}

void DropUsage(SharedLocks &locks, bool uses, bool loads, bool wasLoading)
{
    pthread_mutex_lock(&locks.Mutex);
    if (wasLoading && !loads) locks.Loading = false;
    if (!uses && --locks.Using == 0) {
        Unlock(locks.Fd, usageOffset, 1);
    } else if (wasLoading && !loads) {
        (void)TryLock(locks.Fd, LockKind::Read, usageOffset, 1);
    }
    pthread_mutex_unlock(&locks.Mutex);
}

int TakeSpareDescription(SharedLocks &locks)
{
    pthread_mutex_lock(&locks.Mutex);
    const int fd = locks.Spares > 0 ? locks.Spare[--locks.Spares] : -1;
    pthread_mutex_unlock(&locks.Mutex);
    return fd;
}

void GiveDescription(SharedLocks &locks, int fd)
{
    pthread_mutex_lock(&locks.Mutex);
    const bool kept = locks.Spares < mostSpareDescriptions;
    if (kept) locks.Spare[locks.Spares++] = fd;
    pthread_mutex_unlock(&locks.Mutex);
    if (!kept) CloseDescription(fd);
}

void FreeSharedLocks(SharedLocks &locks)
{
    while (locks.Files != nullptr) {
        OpenLock *file = locks.Files;
        locks.Files = file->Next;
        std::free(file);
    }
    while (locks.Spares > 0) {
        CloseDescription(locks.Spare[--locks.Spares]);
    }
}

} // namespace wbtrv
