#include "record-manager/calls.h"
#include "record-manager/fields.h"
#include "record-manager/limits.h"
#include "record-manager/platform.h"

#include <cassert>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>

namespace wbtrv {

namespace {

struct FilePath {
    char Whole[BtrPathSize + 1];
    char Directory[BtrPathSize + 1];
    const char *Name;
};

// Takes the path in the key buffer apart: the directory, whose books hold the file, and the file's name in
// them.
int16_t ParsePath(const Call &call, FilePath *path)
{
    if (call.Key == nullptr) return BtrStatusBadName;
    const size_t length = strnlen(reinterpret_cast<const char *>(call.Key), call.KeyLength);
    if (length == call.KeyLength || length == 0) return BtrStatusBadName;
    std::memcpy(path->Whole, call.Key, length);
    path->Whole[length] = 0;
    const size_t name = NameIn(path->Whole, length);
    path->Name = path->Whole + name;
    if (path->Name[0] == 0 || std::strcmp(path->Name, ".") == 0 || std::strcmp(path->Name, "..") == 0)
        return BtrStatusBadName;
    if (name == 0) {
        std::memcpy(path->Directory, ".", 2);
    } else {
        const size_t cut = DirectoryBefore(path->Whole, name);
        std::memcpy(path->Directory, path->Whole, cut);
        path->Directory[cut] = 0;
    }
    return BtrStatusOk;
}

// A file of the name that lies in the directory itself was made by another program.
int16_t StatusOfMissing(const FilePath &path)
{
    struct stat found;
    return stat(path.Whole, &found) == 0 && S_ISREG(found.st_mode) ? BtrStatusForeignFile
                                                                   : BtrStatusFileNotFound;
}

// The first open takes the lock, the first one for loading makes it exclusive.
LockResult LockUsage(ClientStore *store, bool loading)
{
    return store->Books->Do->HoldUsage(store->Books, loading, store->Opens > 0, store->LoadingOpens > 0);
}

// What LockUsage took is given back once the opens are counted without this one.
void UnlockUsage(ClientStore *store, bool loading)
{
    store->Books->Do->DropUsage(store->Books, store->Opens > 0, store->LoadingOpens > 0, loading);
}

int16_t StatusOfOpen(LockResult result)
{
    const bool busy = result == LockResult::RecordBusy || result == LockResult::FileBusy;
    return busy ? static_cast<int16_t>(BtrStatusIncompatibleMode) : StatusOfLock(result);
}

ClientFile *FindClientFile(ClientStore *store, uint32_t number)
{
    ClientFile *found = store->Files;
    while (found != nullptr && found->Of->Number != number) {
        found = found->Next;
    }
    return found;
}

int16_t FindNumber(ClientStore *store, const FilePath &path, uint32_t *number)
{
    const int16_t status = ReadView(
        store, [&](View *view) { return store->Books->Do->FindFileNumber(view, path.Name, number); });
    return status == BtrStatusOk && *number == 0 ? StatusOfMissing(path) : status;
}

int16_t AcquireNamed(ClientStore *store, const FilePath &path, File **file)
{
    const StoreFunctions &books = *store->Books->Do;
    const int16_t status = ReadView(store, [&](View *view) {
        if (*file != nullptr) books.ReleaseFile(store->Books, *file);
        *file = nullptr;
        return books.AcquireFile(view, path.Name, file);
    });
    return status == BtrStatusFileNotFound ? StatusOfMissing(path) : status;
}

int16_t AddClientFile(ClientStore *store, File *file, ClientFile **out)
{
    auto *made = static_cast<ClientFile *>(std::calloc(1, sizeof(ClientFile)));
    if (made == nullptr) return BtrStatusHandleTableFull;
    made->Home = store;
    made->Of = file;
    made->Next = store->Files;
    store->Files = made;
    *out = made;
    return BtrStatusOk;
}

// The client's part of the file, with the lock that tells others of it. The lock comes first: a file that
// somebody is about to replace may not be touched, since its trees are gone from this process already. Who
// has it replaced meanwhile leads to a second try.
int16_t AcquireClientFile(ClientStore *store, const FilePath &path, bool alone, ClientFile **out)
{
    for (;;) {
        uint32_t number = 0;
        int16_t status = FindNumber(store, path, &number);
        if (status != BtrStatusOk) return status;
        ClientFile *found = FindClientFile(store, number);
        if (found != nullptr && found->Opens > 0 && (alone || found->OpenedAlone))
            return BtrStatusIncompatibleMode;
        Store *books = store->Books;
        const LockResult result = books->Do->HoldOpen(books, number, alone, found != nullptr);
        if (result != LockResult::Granted) return StatusOfOpen(result);
        if (found == nullptr) {
            File *file = nullptr;
            status = AcquireNamed(store, path, &file);
            const bool same = status == BtrStatusOk && file->Number == number;
            if (same) status = AddClientFile(store, file, &found);
            if (!same || status != BtrStatusOk) books->Do->DropOpen(books, number);
            if (file != nullptr && found == nullptr) books->Do->ReleaseFile(books, file);
            if (status != BtrStatusOk) return status;
            if (!same) continue;
        }
        found->OpenedAlone = alone;
        *out = found;
        return BtrStatusOk;
    }
}

int16_t OpenIn(const Call &call, const FilePath &path, ClientStore *store)
{
    const bool loading = call.KeyNumber == BtrModeLoading;
    const bool alone = call.KeyNumber == BtrModeExclusive;
    if (store->Books->ReadOnly && (loading || alone)) return BtrStatusPermission;
    ClientFile *in = nullptr;
    int16_t status = AcquireClientFile(store, path, alone, &in);
    if (status != BtrStatusOk) return status;
    assert(in != nullptr);
    const LockResult usage = LockUsage(store, loading);
    status = StatusOfOpen(usage);
    Handle *handle = nullptr;
    if (status == BtrStatusOk) {
        handle = AddHandle(call.Caller, in, call.PositionBlock);
        if (handle == nullptr) status = BtrStatusHandleTableFull;
    }
    if (status == BtrStatusOk && loading && store->LoadingOpens == 0) {
        status = store->Books->Do->SetLoading(store->Books, true);
        if (status != BtrStatusOk) RemoveHandle(call.Caller, handle);
    }
    if (status != BtrStatusOk) {
        if (usage == LockResult::Granted) UnlockUsage(store, loading);
        ReleaseClientFile(in);
        return status;
    }
    handle->Mode = call.KeyNumber;
    in->Opens++;
    store->Opens++;
    if (loading) store->LoadingOpens++;
    return BtrStatusOk;
}

// Only a file that nobody has open, this client neither, may be replaced.
int16_t LockToReplace(ClientStore *store, uint32_t number)
{
    for (const ClientFile *file = store->Files; file != nullptr; file = file->Next) {
        if (file->Of->Number == number) return BtrStatusIncompatibleMode;
    }
    return StatusOfOpen(store->Books->Do->HoldOpen(store->Books, number, true, false));
}

int16_t CreatePending(ClientStore *store, const char *name, const Definition &definition, uint32_t replaced)
{
    auto *created = static_cast<PendingCreate *>(std::calloc(1, sizeof(PendingCreate)));
    if (created == nullptr) return BtrStatusHandleTableFull;
    created->Layout = definition;
    created->Replaced = replaced;
    std::memcpy(created->Name, name, strnlen(name, BtrPathSize));
    const int16_t status = store->Books->Do->CreateFile(store->Pending, name, definition);
    if (status != BtrStatusOk) {
        // The catalogue may be half changed.
        store->Broken = status;
        std::free(created);
        return status;
    }
    PendingCreate **link = &store->Created;
    while (*link != nullptr) {
        link = &(*link)->Next;
    }
    *link = created;
    return BtrStatusOk;
}

} // namespace

int16_t OpenFile(const Call &call)
{
    FilePath path;
    int16_t status = ParsePath(call, &path);
    if (status != BtrStatusOk) return status;
    ClientStore *store = nullptr;
    const bool readOnly = call.KeyNumber == BtrModeReadOnly;
    status = AcquireClientStore(call.Caller, path.Directory, false, readOnly, &store);
    if (status == BtrStatusFileNotFound) return StatusOfMissing(path);
    if (status != BtrStatusOk) return status;
    return OpenIn(call, path, store);
}

int16_t CloseHandle(Handle *handle)
{
    ClientFile *file = handle->In;
    ClientStore *store = file->Home;
    Client *client = store->Owner;
    const bool loading = handle->Mode == BtrModeLoading;
    int16_t status = BtrStatusOk;
    if (loading && client->Transaction == TransactionKind::None) status = CommitChanges(store);
    // Locks that were taken inside the transaction stay until its end.
    if (client->Transaction != TransactionKind::None) {
        if (handle->Single.Record != 0 && handle->Single.InTransaction &&
            AddCount(&file->Implicit, handle->Single.Record)) {
            handle->Single.Record = 0;
        }
        for (size_t i = 0; i < handle->Multiple.Count;) {
            HeldLock &lock = handle->Multiple.Locks[i];
            if (lock.InTransaction && AddCount(&file->Implicit, lock.Record)) {
                lock = handle->Multiple.Locks[--handle->Multiple.Count];
            } else {
                ++i;
            }
        }
    }
    ReleaseSingle(handle);
    ReleaseAllMultiple(handle);
    RemoveHandle(client, handle);
    file->Opens--;
    store->Opens--;
    if (loading && --store->LoadingOpens == 0) {
        const int16_t synced = store->Books->Do->SetLoading(store->Books, false);
        if (status == BtrStatusOk) status = synced;
    }
    UnlockUsage(store, loading);
    ReleaseClientFile(file);
    return status;
}

int16_t CreateFile(const Call &call)
{
    FilePath path;
    int16_t status = ParsePath(call, &path);
    if (status != BtrStatusOk) return status;
    Definition definition;
    status = ParseDefinition(call.Data, DataSize(call), &definition);
    if (status != BtrStatusOk) return status;
    ClientStore *store = nullptr;
    status = AcquireClientStore(call.Caller, path.Directory, true, false, &store);
    if (status != BtrStatusOk) return status;
    if (store->Books->ReadOnly) return BtrStatusPermission;

    // What was loaded is made final, so that the file can be made in a transaction of its own. In a
    // transaction that has changed something it is made there, and again should that be undone.
    if (store->Owner->Transaction == TransactionKind::None) status = CommitChanges(store);
    Store *books = store->Books;
    const bool pending = store->Pending != nullptr;
    Writer *writer = store->Pending;
    if (pending) {
        status = store->Broken;
    } else {
        if (status == BtrStatusOk) status = books->Do->EnterGate(books, limits.ChangeWait_ms, false);
        if (status != BtrStatusOk) return status;
        status = books->Do->BeginWriter(books, &writer);
    }
    uint32_t number = 0;
    if (status == BtrStatusOk)
        status = books->Do->FindFileNumber(books->Do->ViewOf(writer), path.Name, &number);
    if (status == BtrStatusOk && number != 0 && call.KeyNumber == BtrKeepExisting)
        status = BtrStatusFileExists;
    bool locked = false;
    if (status == BtrStatusOk && number != 0) {
        status = LockToReplace(store, number);
        locked = status == BtrStatusOk;
    }
    if (status == BtrStatusOk) {
        status = pending ? CreatePending(store, path.Name, definition, number)
                         : books->Do->CreateFile(writer, path.Name, definition);
    }
    if (!pending) {
        if (status == BtrStatusOk) {
            status = books->Do->CommitWriter(writer);
        } else if (writer != nullptr) {
            books->Do->AbortWriter(writer);
        }
        books->Do->LeaveGate(books);
    }
    if (locked && (!pending || status != BtrStatusOk)) books->Do->DropOpen(books, number);
    return status;
}

int16_t StatFile(const Call &call)
{
    Handle *handle = call.On;
    ClientFile *file = handle->In;
    const Definition &definition = file->Of->Layout;
    if (DataSize(call) < DefinitionSize(definition)) return BtrStatusDataBufferShort;

    Counters counters = file->Now;
    const StoreFunctions &store = *file->Of->Do;
    if (!file->Touched || store.CountGroups != nullptr) {
        const int16_t status = ReadView(file->Home, [&](View *view) {
            int16_t read = BtrStatusOk;
            if (!file->Touched) read = store.ReadCounters(view, *file->Of, &counters);
            if (read == BtrStatusOk && store.CountGroups != nullptr)
                read = store.CountGroups(view, *file->Of, &counters);
            return read;
        });
        if (status != BtrStatusOk) return status;
    }

    BtrFileHeader header = definition.Header;
    header.RecordCount = counters.Records;
    if (call.KeyNumber != -1) header.Version = 0;
    header.DuplicatePointers = 0;
    header.Reserved13 = 0;
    header.Pages = 0;
    PutField(call.Data, header);
    uint8_t *out = call.Data + sizeof header;
    for (size_t i = 0; i < definition.KeyCount; ++i) {
        const Key &key = definition.Keys[i];
        for (size_t j = 0; j < key.SegmentCount; ++j, out += sizeof(BtrKeyEntry)) {
            BtrKeyEntry segment = definition.KeyEntries[key.FirstSegment + j];
            segment.UniqueValues = counters.UniqueValues[i];
            PutField(out, segment);
        }
    }
    *call.DataLength = static_cast<uint32_t>(DefinitionSize(definition));
    return BtrStatusOk;
}

} // namespace wbtrv
