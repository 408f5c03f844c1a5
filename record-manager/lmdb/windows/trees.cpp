// The store's own cursors read, so the trees of every file are open.
#include "record-manager/lmdb/windows/trees.h"
#include "record-manager/lmdb/private.h"

namespace wbtrv {

int16_t OpenAllTrees(Store *store, uint32_t last)
{
    Environment *own = store->Own;
    View *view = nullptr;
    int16_t status = BeginSnapshot(store, &view);
    if (status != BtrStatusOk) return status;
    status = LookAtTree(*view, view->Main);
    for (uint32_t number = own->KnownFile + 1; number <= last && status == BtrStatusOk; ++number) {
        size_t keys = 0;
        unsigned trees[1 + BtrMaxKeys];
        status = ReadKeyCount(view, number, &keys);
        if (status == BtrStatusOk) status = OpenTrees(view->Transaction, number, keys, trees);
        if (status == BtrStatusKeyNotFound) status = BtrStatusOk;
    }
    if (status == BtrStatusOk) {
        status = StatusOf(Guarded<mdb_txn_commit>(view->Transaction));
        view->Transaction = nullptr;
    }
    EndSnapshot(view);
    if (status == BtrStatusOk) own->KnownFile = last;
    return status;
}

int16_t OpenTreesToWrite(Store *store)
{
    View *view = nullptr;
    int16_t status = BeginSnapshot(store, &view);
    if (status != BtrStatusOk) return status;
    uint32_t last = 0;
    status = ReadLastFile(view, &last);
    EndSnapshot(view);
    if (status != BtrStatusOk || last <= store->Own->KnownFile) return status;
    return OpenAllTrees(store, last);
}

void CloseUndoneTrees(Store *store)
{
    if (store->Own->TreesDropped) store->Own->KnownFile = 0;
}

} // namespace wbtrv
