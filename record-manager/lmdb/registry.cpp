// The books that are open in this process, and the descriptions through which its clients lock.
#include "record-manager/limits.h"
#include "record-manager/lmdb/books_file.h"
#include "record-manager/lmdb/private.h"
#include "record-manager/range_locks.h"

#include <cstring>

namespace wbtrv {

namespace {

pthread_mutex_t registryMutex = PTHREAD_MUTEX_INITIALIZER;
// Held while a client's description is on its way to or from where a forked child closes it.
pthread_mutex_t descriptionMutex = PTHREAD_MUTEX_INITIALIZER;
Store *stores = nullptr; // most recently used first

// Closes idle books that are dead, or more than the limit.
void CloseIdle()
{
    unsigned idle = 0;
    for (Store **link = &stores; *link != nullptr;) {
        Store *store = *link;
        BooksFacts found;
        const bool stays = store->Users > 0 || (!store->Own->Dead && ReadFacts(store->PresenceFd, &found) &&
                                                found.Links > 0 && ++idle <= limits.IdleStores);
        if (stays) {
            link = &store->Next;
            continue;
        }
        *link = store->Next;
        CloseStore(store);
    }
}

// The store of the directory's books, taken out of the list, or null if this process has not opened them.
Store *TakeKnown(const char *directory, BooksFacts *found)
{
    if (!ReadFacts(PathOfBooks(directory).Text, found)) return nullptr;
    Store **link = &stores;
    while (*link != nullptr && ((*link)->Inode != found->Inode || (*link)->Device != found->Device)) {
        link = &(*link)->Next;
    }
    Store *store = *link;
    if (store != nullptr) *link = store->Next;
    return store;
}

} // namespace

void LockRegistry() { pthread_mutex_lock(&registryMutex); }
void UnlockRegistry() { pthread_mutex_unlock(&registryMutex); }

void BeforeFork()
{
    LockRegistry();
    pthread_mutex_lock(&descriptionMutex);
}

void AfterForkInParent()
{
    pthread_mutex_unlock(&descriptionMutex);
    UnlockRegistry();
}

int16_t AcquireBooks(const char *directory, bool create, const StoreFunctions *functions, Store **out)
{
    LockRegistry();
    CloseIdle();
    BooksFacts found;
    Store *store = TakeKnown(directory, &found);
    const int16_t status =
        store != nullptr ? CheckKnown(*store, found) : OpenStore(directory, create, functions, &store);
    if (store != nullptr) {
        store->Next = stores;
        stores = store;
        if (status == BtrStatusOk) store->Users++;
    }
    UnlockRegistry();
    *out = store;
    return status;
}

void ReleaseStore(Store *store)
{
    LockRegistry();
    store->Users--;
    if (limits.IdleStores == 0) CloseIdle();
    UnlockRegistry();
}

int16_t TakeLockDescription(Store *store, int *fd)
{
    pthread_mutex_lock(&descriptionMutex);
    *fd = TakeSpareDescription(store->Shared);
    if (*fd < 0) *fd = OpenLockDescription(store);
    pthread_mutex_unlock(&descriptionMutex);
    return *fd < 0 ? BtrStatusFileTableFull : BtrStatusOk;
}

void GiveLockDescription(Store *store, int *fd)
{
    pthread_mutex_lock(&descriptionMutex);
    GiveDescription(store->Shared, *fd);
    *fd = -1;
    pthread_mutex_unlock(&descriptionMutex);
}

void ForgetStores()
{
    for (Store *store = stores; store != nullptr; store = store->Next) {
        // A description that the child kept would hold the parent's locks after the parent's end.
        FreeSharedLocks(store->Shared);
        CloseDescription(store->PresenceFd);
        CloseDescription(store->DirectoryFd);
    }
    stores = nullptr;
    pthread_mutex_init(&registryMutex, nullptr);
    pthread_mutex_init(&descriptionMutex, nullptr);
}

} // namespace wbtrv
