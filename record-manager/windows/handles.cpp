#include "record-manager/windows/handles.h"

#include "record-manager/include/btrcall.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>

namespace wbtrv {

namespace {

int Open(const char *path, DWORD access, DWORD disposition, DWORD kind)
{
    constexpr DWORD all = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    HANDLE opened = CreateFileA(path, access, all, nullptr, disposition, kind, nullptr);
    if (opened == INVALID_HANDLE_VALUE) return -1;
    const int fd = _open_osfhandle(reinterpret_cast<intptr_t>(opened), _O_BINARY);
    if (fd >= 0) return fd;
    CloseHandle(opened);
    SetLastError(ERROR_TOO_MANY_OPEN_FILES);
    return -1;
}

} // namespace

int OpenShareable(const char *path, unsigned long access, unsigned long disposition)
{
    return Open(path, access, disposition, FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT);
}

int OpenDirectory(const char *path)
{
    return Open(path, FILE_READ_ATTRIBUTES, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
}

void *HandleOf(int fd) { return reinterpret_cast<void *>(_get_osfhandle(fd)); }

void CloseDescriptor(int fd) { _close(fd); }

namespace {

constexpr DWORD quotaExceeded = 1295; // the compiler's headers do not name it

} // namespace

int16_t StatusOfSystem(unsigned long error)
{
    switch (error) {
    case ERROR_SUCCESS: return BtrStatusOk;
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
    case quotaExceeded:
    case ERROR_FILE_TOO_LARGE: return BtrStatusDiskFull;
    case ERROR_TOO_MANY_OPEN_FILES:
    case ERROR_NO_MORE_FILES:
    case ERROR_NO_SYSTEM_RESOURCES: return BtrStatusFileTableFull;
    case ERROR_NOT_ENOUGH_MEMORY:
    case ERROR_OUTOFMEMORY:
    case ERROR_COMMITMENT_LIMIT: return BtrStatusHandleTableFull;
    case ERROR_ACCESS_DENIED:
    case ERROR_WRITE_PROTECT:
    case ERROR_NETWORK_ACCESS_DENIED:
    case ERROR_PRIVILEGE_NOT_HELD: return BtrStatusPermission;
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION: return BtrStatusFileLocked;
    default: return BtrStatusIoError;
    }
}

} // namespace wbtrv
