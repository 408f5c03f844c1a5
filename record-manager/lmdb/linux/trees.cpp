// Only the writer's trees are open: whoever reads finds his way himself.
#include "record-manager/lmdb/private.h"

namespace wbtrv {

namespace {

bool SomeLackTrees(const Store &store)
{
    const File *file = store.Files;
    while (file != nullptr && HasTrees(*file)) {
        file = file->Next;
    }
    return file != nullptr;
}

} // namespace

// A handle reaches the writer only by a commit. What else is opened is opened by the writer itself, so none
// of its numbers is given to two trees.
int16_t OpenTreesToWrite(Store *store)
{
    if (!SomeLackTrees(*store)) return BtrStatusOk;
    View *view = nullptr;
    int16_t status = BeginSnapshot(store, &view);
    if (status != BtrStatusOk) return status;
    status = LookAtTree(*view, view->Main);
    for (File *file = store->Files; file != nullptr && status == BtrStatusOk; file = file->Next) {
        status = NeedTrees(view->Transaction, file);
        // One that another process has replaced has none.
        if (status == BtrStatusForeignFile) status = BtrStatusOk;
    }
    if (status == BtrStatusOk) {
        status = StatusOf(Guarded<mdb_txn_commit>(view->Transaction));
        view->Transaction = nullptr;
    }
    EndSnapshot(view);
    return status;
}

void CloseUndoneTrees(Store *store)
{
    pthread_mutex_lock(&store->Mutex);
    for (File *file = store->Files; file != nullptr; file = file->Next) {
        CloseTrees(file);
    }
    pthread_mutex_unlock(&store->Mutex);
}

} // namespace wbtrv
