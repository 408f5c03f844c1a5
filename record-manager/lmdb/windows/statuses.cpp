// What the store's failures and the system's mean to a caller. The store gives Windows' own numbers, and
// a few of the C library's that mean something else there.
#include "record-manager/lmdb/private.h"
#include "record-manager/windows/handles.h"

#include <cerrno>

namespace wbtrv {

int16_t StatusOf(int error)
{
    switch (error) {
    case MDB_SUCCESS: return BtrStatusOk;
    case MDB_MAP_FULL:
    case MDB_TXN_FULL: return BtrStatusDiskFull;
    case MDB_DBS_FULL: return BtrStatusFileTableFull;
    case MDB_READERS_FULL: return BtrStatusHandleTableFull;
    case MDB_INVALID:
    case MDB_VERSION_MISMATCH:
    case MDB_CORRUPTED:
    case MDB_PAGE_NOTFOUND:
    case MDB_INCOMPATIBLE: return BtrStatusForeignFile;
    // Windows has no failure of these numbers here.
    case ENOMEM: return BtrStatusHandleTableFull;
    case EINVAL: return BtrStatusIoError;
    default:
        return error < 0 ? static_cast<int16_t>(BtrStatusIoError)
                         : StatusOfSystem(static_cast<unsigned long>(error));
    }
}

int16_t StatusOf(int error, int special, int16_t status)
{
    return error == special ? status : StatusOf(error);
}

} // namespace wbtrv
