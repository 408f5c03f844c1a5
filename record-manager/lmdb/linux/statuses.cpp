// What the store's failures and the system's mean to a caller.
#include "record-manager/lmdb/private.h"

#include <cerrno>

namespace wbtrv {

int16_t StatusOf(int error)
{
    switch (error) {
    case MDB_SUCCESS: return BtrStatusOk;
    case MDB_MAP_FULL:
    case MDB_TXN_FULL:
    case ENOSPC:
    case EDQUOT:
    case EFBIG: return BtrStatusDiskFull;
    case MDB_DBS_FULL:
    case EMFILE:
    case ENFILE: return BtrStatusFileTableFull;
    case MDB_READERS_FULL: return BtrStatusHandleTableFull;
    case ETIMEDOUT: return BtrStatusRecordLocked;
    case EACCES:
    case EPERM:
    case EROFS: return BtrStatusPermission;
    case MDB_INVALID:
    case MDB_VERSION_MISMATCH:
    case MDB_CORRUPTED:
    case MDB_PAGE_NOTFOUND:
    case MDB_INCOMPATIBLE: return BtrStatusForeignFile;
    default: return BtrStatusIoError;
    }
}

int16_t StatusOf(int error, int special, int16_t status)
{
    return error == special ? status : StatusOf(error);
}

} // namespace wbtrv
