#include "record-manager/client.h"

#include "record-manager/fields.h"
#include "text/fixed_text.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <pthread.h>

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

void EndClientStore(ClientStore *store)
{
    if (store->Snapshot != nullptr) store->Books->Do->EndSnapshot(store->Snapshot);
    LockRegistry();
    ClientStore **link = &store->Owner->Stores;
    while (*link != store) {
        link = &(*link)->Next;
    }
    *link = store->Next;
    UnlockRegistry();
    if (store->LockFd >= 0) store->Books->Do->GiveLockDescription(store->Books, &store->LockFd);
    store->Books->Do->ReleaseStore(store->Books);
    std::free(store->Kept.Memory);
    std::free(store);
}

Handle *FindHandle(const Client *client, const void *positionBlock)
{
    const auto image = GetField<BlockImage>(positionBlock);
    if (std::memcmp(image.Mark, blockMark, sizeof image.Mark) != 0 || image.Index >= client->HandleCount)
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
        void *larger = std::realloc(client->Handles, count * sizeof(void *));
        if (larger == nullptr) return nullptr;
        client->Handles = static_cast<Handle **>(larger);
        std::memset(client->Handles + client->HandleCount, 0, (count - client->HandleCount) * sizeof(void *));
        client->HandleCount = count;
    }
    auto *handle = static_cast<Handle *>(std::calloc(1, sizeof(Handle)));
    if (handle == nullptr) return nullptr;
    const size_t trees = IndexTree(file->Of->Layout.KeyCount);
    handle->Cursors = static_cast<Cursor **>(std::calloc(trees, sizeof(void *)));
    if (handle->Cursors == nullptr) {
        std::free(handle);
        return nullptr;
    }
    handle->In = file;
    handle->Check = NewCheck(handle);
    handle->Index = static_cast<uint32_t>(index);
    handle->LogicalKey = noLogicalKey;
    client->Handles[index] = handle;

    BlockImage image{};
    std::memcpy(image.Mark, blockMark, sizeof image.Mark);
    image.Index = handle->Index;
    image.Check = handle->Check;
    std::memset(positionBlock, 0, BtrPositionBlockSize);
    PutField(positionBlock, image);
    return handle;
}

void RemoveHandle(Client *client, Handle *handle)
{
    client->Handles[handle->Index] = nullptr;
    for (size_t tree = 0; tree < IndexTree(handle->In->Of->Layout.KeyCount); ++tree) {
        if (handle->Cursors[tree] != nullptr) handle->In->Of->Do->CloseCursor(handle->Cursors[tree]);
    }
    std::free(handle->Cursors);
    std::free(handle->Multiple.Locks);
    std::free(handle);
}

namespace {

// Books that a client is changing stay the ones of their directory until it is done with them, so that the
// system is not asked again.
bool IsBeingChanged(const ClientStore *store, const char *directory)
{
    return store != nullptr && directory[0] == '/' && std::strcmp(store->Directory, directory) == 0;
}

} // namespace

int16_t AcquireClientStore(Client *client, const char *directory, bool create, bool readOnly,
                           ClientStore **out)
{
    if (IsBeingChanged(client->Changed, directory)) {
        *out = client->Changed;
        return BtrStatusOk;
    }
    Store *books = nullptr;
    const int16_t status = AcquireStore(directory, create, readOnly, client, &books);
    if (status != BtrStatusOk) return status;
    for (ClientStore *store = client->Stores; store != nullptr; store = store->Next) {
        if (store->Books != books) continue;
        books->Do->ReleaseStore(books);
        text::CopyText(store->Directory, directory);
        *out = store;
        return BtrStatusOk;
    }
    auto *store = static_cast<ClientStore *>(std::calloc(1, sizeof(ClientStore)));
    if (store == nullptr) {
        books->Do->ReleaseStore(books);
        return BtrStatusHandleTableFull;
    }
    store->Owner = client;
    store->Books = books;
    store->LockFd = -1;
    text::CopyText(store->Directory, directory);
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

// Everything that is locked is free again for others: the connection that held it is gone.
void ForgetLocks(ClientStore *store)
{
    Client *client = store->Owner;
    for (size_t i = 0; i < client->HandleCount; ++i) {
        Handle *handle = client->Handles[i];
        if (handle == nullptr || handle->In->Home != store) continue;
        handle->Single.Record = 0;
        handle->Multiple.Count = 0;
    }
    for (ClientFile *file = store->Files; file != nullptr; file = file->Next) {
        ClearCounts(&file->Held);
        ClearCounts(&file->Implicit);
        file->Whole = false;
    }
    // What its locks protected may have been changed, so that the transaction can only be aborted.
    if (client->Transaction != TransactionKind::None && client->Failed == BtrStatusOk)
        client->Failed = BtrStatusTransactionIo;
}

} // namespace

void ReleaseIdle(Client *client)
{
    for (ClientStore *store = client->Stores; store != nullptr;) {
        ClientStore *next = store->Next;
        const StoreFunctions &functions = *store->Books->Do;
        if (functions.HasLostLocks != nullptr && functions.HasLostLocks(store->Books)) ForgetLocks(store);
        if (store->LockFd >= 0 && !HoldsLocks(store))
            functions.GiveLockDescription(store->Books, &store->LockFd);
        const bool idle = store->Opens == 0 && store->Files == nullptr && store->Pending == nullptr &&
                          !(client->Holds && store->Snapshot != nullptr);
        if (idle && client->Changed != store) EndClientStore(store);
        store = next;
    }
}

int16_t NeedLockDescription(ClientStore *store)
{
    return store->LockFd >= 0 ? static_cast<int16_t>(BtrStatusOk)
                              : store->Books->Do->TakeLockDescription(store->Books, &store->LockFd);
}

void ReleaseClientFile(ClientFile *file)
{
    if (file->Opens > 0 || file->Whole || file->Touched || file->Held.Used > 0) return;
    ClientFile **link = &file->Home->Files;
    while (*link != file) {
        link = &(*link)->Next;
    }
    *link = file->Next;
    file->Of->Do->DropOpen(file->Home->Books, file->Of->Number);
    file->Of->Do->ReleaseFile(file->Home->Books, file->Of);
    std::free(file->Held.Entries);
    std::free(file->Implicit.Entries);
    std::free(file);
}

namespace {

// The snapshot of a client that Holds, taken at its first use of the directory.
int16_t HoldView(ClientStore *store)
{
    const StoreFunctions &functions = *store->Books->Do;
    if (store->Snapshot != nullptr && functions.IsOpen(*store->Snapshot)) return BtrStatusOk;
    const int16_t status = functions.BeginSnapshot(store->Books, &store->Snapshot);
    if (status != BtrStatusOk || functions.HoldSnapshot == nullptr) return status;
    return functions.HoldSnapshot(store->Snapshot);
}

} // namespace

int16_t BeginView(ClientStore *store, View **view)
{
    if (store->Pending != nullptr) {
        *view = store->Books->Do->ViewOf(store->Pending);
        return store->Broken;
    }
    const int16_t status = store->Owner->Holds
                               ? HoldView(store)
                               : store->Books->Do->BeginSnapshot(store->Books, &store->Snapshot);
    *view = store->Snapshot;
    return status;
}

void EndView(ClientStore *store)
{
    if (store->Pending == nullptr && !store->Owner->Holds) store->Books->Do->ResetSnapshot(store->Snapshot);
}

bool Keep(ClientStore *store, Bytes *first, Bytes *second)
{
    Keeping &kept = store->Kept;
    const size_t size = first->Size + second->Size;
    if (size > kept.Size) {
        void *larger = std::realloc(kept.Memory, size);
        if (larger == nullptr) return false;
        kept = {static_cast<uint8_t *>(larger), size};
    }
    if (first->Size > 0) std::memcpy(kept.Memory, first->Data, first->Size);
    if (second->Size > 0) std::memcpy(kept.Memory + first->Size, second->Data, second->Size);
    *first = {kept.Memory, first->Size};
    *second = {kept.Memory + first->Size, second->Size};
    return true;
}

int16_t UseWriteCursor(ClientFile *file, size_t tree, Cursor **cursor)
{
    int16_t status = BtrStatusOk;
    if (file->WriteCursors[tree] == nullptr) {
        status =
            file->Of->Do->OpenWriteCursor(file->Home->Pending, *file->Of, tree, &file->WriteCursors[tree]);
        file->Cursors = true;
    }
    *cursor = file->WriteCursors[tree];
    return status;
}

} // namespace wbtrv
