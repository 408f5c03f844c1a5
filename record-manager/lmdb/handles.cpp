// The numbers by which the store knows a file's trees while they are open.
#include "record-manager/lmdb/private.h"

namespace wbtrv {

int16_t OpenTrees(MDB_txn *transaction, uint32_t number, size_t keys, unsigned *trees)
{
    for (size_t tree = 0; tree < IndexTree(keys); ++tree) {
        MDB_dbi opened = 0;
        const int error = mdb_dbi_open(transaction, KeyOfTree(number, tree).Text, 0, &opened);
        if (error != 0) return StatusOf(error, MDB_NOTFOUND, BtrStatusForeignFile);
        trees[tree] = opened;
    }
    return BtrStatusOk;
}

void CloseTrees(File *file)
{
    for (unsigned &tree : file->Trees) {
        tree = noTree;
    }
}

int16_t NeedTrees(MDB_txn *transaction, File *file)
{
    if (HasTrees(*file)) return BtrStatusOk;
    const int16_t status = OpenTrees(transaction, file->Number, file->Layout.KeyCount, file->Trees);
    if (status != BtrStatusOk) CloseTrees(file);
    return status;
}

} // namespace wbtrv
