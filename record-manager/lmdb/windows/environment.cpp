// Opening and closing the books of a directory.
#include "record-manager/limits.h"
#include "record-manager/lmdb/private.h"
#include "record-manager/lmdb/windows/growth.h"
#include "record-manager/range_locks.h"
#include "record-manager/windows/handles.h"

#include <cerrno>
#include <cstdlib>
#include <windows.h>

namespace wbtrv {

namespace {

// Other machines share neither the mapped pages nor the gate.
bool IsOnNetwork(const char *directory)
{
    const auto isSeparator = [](char character) { return character == '\\' || character == '/'; };
    if (isSeparator(directory[0]) && isSeparator(directory[1])) return true;
    char volume[MAX_PATH];
    return GetVolumePathNameA(directory, volume, sizeof volume) != 0 && GetDriveTypeA(volume) == DRIVE_REMOTE;
}

// The books' path as the store takes it. False when it is none.
struct StorePath {
    char Text[3 * sizeof(BooksPath)];
};
bool PathForStore(const char *directory, StorePath *path)
{
    const BooksPath books = PathOfBooks(directory);
    wchar_t wide[sizeof books.Text];
    return MultiByteToWideChar(CP_ACP, MB_ERR_INVALID_CHARS, books.Text, -1, wide, sizeof books.Text) > 0 &&
           WideCharToMultiByte(CP_UTF8, 0, wide, -1, path->Text, sizeof path->Text, nullptr, nullptr) > 0;
}

bool SetLength(const Store *store, int64_t size)
{
    LARGE_INTEGER end;
    end.QuadPart = size;
    HANDLE file = HandleOf(store->PresenceFd);
    return SetFilePointerEx(file, end, nullptr, FILE_BEGIN) != 0 && SetEndOfFile(file) != 0;
}

// The file is as long as the map; sparse, it takes no more of the disk than was written. Not all file
// systems can.
void MakeSparse(const Store *store)
{
    DWORD returned = 0;
    DeviceIoControl(HandleOf(store->PresenceFd), FSCTL_SET_SPARSE, nullptr, 0, nullptr, 0, &returned,
                    nullptr);
}

// Bytes that the books take; 0 when the store does not tell.
int64_t UsedSize(const Store *store)
{
    MDB_envinfo info;
    MDB_stat shape;
    const bool told =
        mdb_env_info(store->Own->Real, &info) == 0 && mdb_env_stat(store->Own->Real, &shape) == 0;
    return told ? (static_cast<int64_t>(info.me_last_pgno) + 1) * shape.ms_psize : 0;
}

void FreeEnvironment(Store *store)
{
    Environment *own = store->Own;
    store->Own = nullptr;
    if (own->Real != nullptr) mdb_env_close(own->Real);
    while (own->Writing.Free != nullptr) {
        Cursor *cursor = own->Writing.Free;
        own->Writing.Free = cursor->Next;
        CloseCursor(cursor);
    }
    pthread_mutex_destroy(&own->Growing.Mutex);
    free(own);
}

int16_t OpenEnvironment(Store *store, const char *directory, int64_t size)
{
    store->Own = static_cast<Environment *>(calloc(1, sizeof(Environment)));
    if (store->Own == nullptr) return BtrStatusHandleTableFull;
    Environment *own = store->Own;
    pthread_mutex_init(&own->Growing.Mutex, nullptr);
    StorePath path;
    if (!PathForStore(directory, &path)) return BtrStatusFileNotFound;
    if (mdb_env_create(&own->Real) != 0) {
        own->Real = nullptr;
        return BtrStatusHandleTableFull;
    }
    // As large as others have it already; what is too large for this process is refused by the system.
    constexpr int64_t grain = 65536;
    const int64_t whole = (size + grain - 1) / grain * grain;
    mdb_env_set_mapsize(own->Real,
                        whole > static_cast<int64_t>(firstMap) ? static_cast<size_t>(whole) : firstMap);
    mdb_env_set_maxreaders(own->Real, limits.Readers);
    mdb_env_set_maxdbs(own->Real, limits.Trees);
    mdb_env_set_assert(own->Real, TellBrokenStore);
    const unsigned flags = MDB_NOSUBDIR | MDB_NOTLS | (store->ReadOnly ? MDB_RDONLY : 0);
    return StatusOf(mdb_env_open(own->Real, path.Text, flags, 0666));
}

// Shorter than two pages, the store had only begun to make its file.
constexpr int64_t leastSize = 2 * 4096;

// Opening makes the file longer; where it then turns out to be none of ours it gets its length back.
int16_t OpenAlone(Store *store, const char *directory, int64_t size, bool create, bool alone)
{
    const bool empty = size < leastSize;
    int16_t status = OpenEnvironment(store, directory, size);
    if (status == BtrStatusOk && !empty && size < UsedSize(store)) status = BtrStatusForeignFile;
    if (status == BtrStatusOk) status = empty ? WriteFormat(store) : CheckFormat(store);
    // Books whose maker came no further than the store's own pages.
    if (status == BtrStatusFileNotFound && create && alone) status = WriteFormat(store);
    if (status == BtrStatusOk || !alone) return status;
    if (store->Own != nullptr) FreeEnvironment(store);
    (void)SetLength(store, empty ? 0 : size);
    return status;
}

// What has to be done while no other process opens or closes these books.
int16_t SetUp(Store *store, const char *directory, bool create)
{
    const bool alone = !store->ReadOnly &&
                       TryLock(store->PresenceFd, LockKind::Write, presenceOffset, 1) == LockResult::Granted;
    BooksFacts found;
    if (!ReadFacts(store->PresenceFd, &found)) return BtrStatusIoError;
    store->Device = found.Device;
    store->Inode = found.Inode;
    const bool empty = found.Size < leastSize;
    if (empty && (!create || !alone)) return BtrStatusForeignFile;
    if (empty && !SetLength(store, 0)) return StatusOfSystem(GetLastError());
    if (alone) MakeSparse(store);
    int16_t status = store->ReadOnly ? static_cast<int16_t>(BtrStatusOk)
                                     : OpenGate(store->DirectoryFd, alone, &store->WriteGate);
    if (status == BtrStatusOk) status = OpenAlone(store, directory, found.Size, create, alone);
    if (status != BtrStatusOk) return status;
    int dead = 0;
    if (!store->ReadOnly) mdb_reader_check(store->Own->Real, &dead);
    const LockResult present = TryLock(store->PresenceFd, LockKind::Read, presenceOffset, 1);
    return present == LockResult::Granted ? BtrStatusOk : BtrStatusIoError;
}

void FreeStore(Store *store)
{
    if (store->Own != nullptr) FreeEnvironment(store);
    if (store->WriteGate != nullptr) CloseGate(store->WriteGate);
    while (store->Files != nullptr) {
        File *file = store->Files;
        store->Files = file->Next;
        free(file);
    }
    FreeSharedLocks(store->Shared);
    pthread_mutex_destroy(&store->Shared.Mutex);
    if (store->PresenceFd >= 0) CloseDescription(store->PresenceFd);
    if (store->DirectoryFd >= 0) CloseDescription(store->DirectoryFd);
    pthread_mutex_destroy(&store->Mutex);
    free(store);
}

int16_t StatusOfMissing(unsigned long error)
{
    switch (error) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_NAME:
    case ERROR_BAD_PATHNAME:
    case ERROR_INVALID_DRIVE:
    case ERROR_NOT_READY:
    case ERROR_FILENAME_EXCED_RANGE: return BtrStatusFileNotFound;
    default: return StatusOfSystem(error);
    }
}

bool IsDirectory(int fd)
{
    BY_HANDLE_FILE_INFORMATION found;
    return GetFileInformationByHandle(HandleOf(fd), &found) != 0 &&
           (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// Opens the books' file for writing where that is possible, and for reading where that is wanted or all
// there is.
int16_t OpenBooks(Store *store, const char *directory, bool create)
{
    const BooksPath path = PathOfBooks(directory);
    constexpr DWORD both = GENERIC_READ | GENERIC_WRITE;
    store->PresenceFd = OpenShareable(path.Text, both, create ? OPEN_ALWAYS : OPEN_EXISTING);
    if (store->PresenceFd < 0) {
        const int16_t status = StatusOfMissing(GetLastError());
        if (status != BtrStatusPermission) return status;
        store->ReadOnly = true;
        store->PresenceFd = OpenShareable(path.Text, GENERIC_READ, OPEN_EXISTING);
    }
    if (store->PresenceFd >= 0) return IsDirectory(store->PresenceFd) ? BtrStatusForeignFile : BtrStatusOk;
    const int16_t status = StatusOfMissing(GetLastError());
    return status == BtrStatusFileNotFound && create ? static_cast<int16_t>(BtrStatusPermission) : status;
}

int16_t OpenFiles(Store *store, const char *directory, bool create)
{
    store->DirectoryFd = OpenDirectory(directory);
    if (store->DirectoryFd < 0) return StatusOfMissing(GetLastError());
    if (!IsDirectory(store->DirectoryFd)) return BtrStatusFileNotFound;
    return OpenBooks(store, directory, create);
}

} // namespace

int16_t OpenStore(const char *directory, bool create, const StoreFunctions *functions, Store **out)
{
    if (IsOnNetwork(directory)) return BtrStatusPermission;
    auto *store = static_cast<Store *>(calloc(1, sizeof(Store)));
    if (store == nullptr) return BtrStatusHandleTableFull;
    store->Do = functions;
    pthread_mutex_init(&store->Mutex, nullptr);
    pthread_mutex_init(&store->Shared.Mutex, nullptr);
    store->DirectoryFd = -1;
    store->PresenceFd = -1;
    int16_t status = OpenFiles(store, directory, create);
    if (status == BtrStatusOk && WaitLock(store->PresenceFd, LockKind::Write, setupOffset, 1,
                                          limits.SetupWait_ms) != LockResult::Granted)
        status = BtrStatusFileLocked;
    if (status == BtrStatusOk) status = SetUp(store, directory, create);
    if (status != BtrStatusOk) {
        FreeStore(store);
        return status;
    }
    Unlock(store->PresenceFd, setupOffset, 1);
    store->Shared.Fd = store->PresenceFd;
    *out = store;
    return BtrStatusOk;
}

// The last one out cuts off what of the map was not used.
void CloseStore(Store *store)
{
    const bool first = WaitLock(store->PresenceFd, LockKind::Write, setupOffset, 1, limits.SetupWait_ms) ==
                       LockResult::Granted;
    const int64_t used = store->Own->Dead ? 0 : UsedSize(store);
    FreeEnvironment(store);
    if (first && used > 0 && !store->ReadOnly &&
        TryLock(store->PresenceFd, LockKind::Write, presenceOffset, 1) == LockResult::Granted)
        (void)SetLength(store, used);
    FreeStore(store);
}

int16_t CheckKnown(const Store &store, const BooksFacts &)
{
    return store.Own->Dead ? BtrStatusIoError : BtrStatusOk;
}

int OpenLockDescription(const Store *store)
{
    char path[MAX_PATH + sizeof booksName + 1];
    HANDLE directory = HandleOf(store->DirectoryFd);
    const DWORD length = GetFinalPathNameByHandleA(directory, path, MAX_PATH, FILE_NAME_NORMALIZED);
    if (length == 0 || length >= MAX_PATH) return -1;
    path[length] = '\\';
    memcpy(path + length + 1, booksName, sizeof booksName);
    const int fd = OpenShareable(path, GENERIC_READ, OPEN_EXISTING);
    BooksFacts found;
    if (fd >= 0 && (!ReadFacts(fd, &found) || found.Inode != store->Inode || found.Device != store->Device)) {
        CloseDescription(fd);
        return -1;
    }
    return fd;
}

int16_t PrepareToWrite(Store *store)
{
    return store->Own->Dead ? static_cast<int16_t>(BtrStatusIoError) : MakeRoom(store);
}

int16_t StatusOfCommit(Store *store, int error)
{
    // The store's own number for a write that was cut short; Windows' is access denied, which no commit
    // meets.
    if (error != EIO) return StatusOf(error);
    char path[MAX_PATH];
    const DWORD length =
        GetFinalPathNameByHandleA(HandleOf(store->DirectoryFd), path, MAX_PATH, FILE_NAME_NORMALIZED);
    ULARGE_INTEGER free{};
    constexpr ULONGLONG least = 65536;
    const bool told =
        length > 0 && length < MAX_PATH && GetDiskFreeSpaceExA(path, &free, nullptr, nullptr) != 0;
    return told && free.QuadPart < least ? BtrStatusDiskFull : BtrStatusIoError;
}

} // namespace wbtrv
