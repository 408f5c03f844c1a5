// The invariants of client.h as a function.
#include "record-manager/client.h"

#include <algorithm>
#include <array> // std::begin

namespace wbtrv {

namespace {

size_t CountLocks(const RecordCounts &counts)
{
    size_t count = 0;
    for (size_t i = 0; i < counts.Capacity; ++i) {
        count += counts.Entries[i].Count;
    }
    return count;
}

// What of a file is told by its position blocks.
struct FileTally {
    unsigned Opens;
    size_t Locks;
    bool LocksAreHeld;
};

FileTally TallyOf(const Client &client, const ClientFile &file)
{
    FileTally tally{0, CountLocks(file.Implicit), true};
    const auto add = [&](uint32_t record) {
        tally.Locks++;
        tally.LocksAreHeld = tally.LocksAreHeld && CountOf(file.Held, record) > 0;
    };
    for (size_t i = 0; i < file.Implicit.Capacity; ++i) {
        const RecordCounts::Entry &entry = file.Implicit.Entries[i];
        tally.LocksAreHeld = tally.LocksAreHeld && CountOf(file.Held, entry.Record) >= entry.Count;
    }
    for (size_t i = 0; i < client.HandleCount; ++i) {
        const Handle *handle = client.Handles[i];
        if (handle == nullptr || handle->In != &file) continue;
        tally.Opens++;
        if (handle->Single.Record != 0) add(handle->Single.Record);
        for (size_t lock = 0; lock < handle->Multiple.Count; ++lock) {
            add(handle->Multiple.Locks[lock].Record);
        }
    }
    return tally;
}

bool IsCursor(const Cursor *cursor) { return cursor != nullptr; }

unsigned BrokenIn(const Client &client, const ClientFile &file)
{
    const bool pending = file.Home->Pending != nullptr;
    const bool newer = file.Now.Sequence >= file.FirstSequence && file.Now.LastRecord >= file.FirstRecord;
    if (file.Touched && (!pending || !newer)) return 3;
    const FileTally tally = TallyOf(client, file);
    if (!tally.LocksAreHeld || tally.Locks != CountLocks(file.Held)) return 4;
    if (file.Cursors ? !pending
                     : std::any_of(std::begin(file.WriteCursors), std::end(file.WriteCursors), IsCursor)) {
        return 5;
    }
    return file.Opens == tally.Opens ? 0 : 6;
}

unsigned BrokenIn(const Client &client, const ClientStore &store)
{
    if (store.Snapshot != nullptr && store.Books->Do->IsOpen(*store.Snapshot) && !client.Holds) return 1;
    const bool changing = client.Transaction != TransactionKind::None && client.Changed == &store;
    if (store.Pending != nullptr && !changing && store.LoadingOpens == 0) return 2;
    unsigned opens = 0;
    bool locks = false;
    for (const ClientFile *file = store.Files; file != nullptr; file = file->Next) {
        const unsigned broken = BrokenIn(client, *file);
        if (broken != 0) return broken;
        opens += file->Opens;
        locks = locks || file->Whole || file->Held.Used > 0;
    }
    unsigned loading = 0;
    for (size_t i = 0; i < client.HandleCount; ++i) {
        const Handle *handle = client.Handles[i];
        if (handle != nullptr && handle->In->Home == &store && handle->Mode == BtrModeLoading) ++loading;
    }
    if (store.Opens != opens || store.LoadingOpens != loading) return 6;
    if (locks != (store.LockFd >= 0)) return 7;
    return client.Holds && store.Pending != nullptr ? 8 : 0;
}

} // namespace

unsigned BrokenInvariant(const Client &client)
{
    unsigned broken = client.Holds && client.Transaction != TransactionKind::None ? 8 : 0;
    for (const ClientStore *store = client.Stores; store != nullptr && broken == 0; store = store->Next) {
        broken = BrokenIn(client, *store);
    }
    return broken;
}

} // namespace wbtrv
