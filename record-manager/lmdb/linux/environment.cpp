// Opening and closing the books of a directory.
#include "host/descriptors.h"
#include "record-manager/limits.h"
#include "record-manager/lmdb/books_file.h"
#include "record-manager/lmdb/private.h"
#include "record-manager/range_locks.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

namespace wbtrv {

namespace {

constexpr char lockName[] = "books.mdb-lock";

// Whether the lock file by which this process works is still the one that newcomers find.
bool HasLockFile(const Store *store)
{
    struct stat found;
    return fstatat(store->DirectoryFd, lockName, &found, AT_SYMLINK_NOFOLLOW) == 0 &&
           found.st_ino == store->LockInode;
}

// Network file systems share neither the mapped pages nor, on all of them, the locks.
bool OnNetwork(int fd)
{
    struct statfs found;
    if (fstatfs(fd, &found) != 0) return false;
    switch (static_cast<uint32_t>(found.f_type)) {
    case 0x6969:     // nfs
    case 0x517B:     // smb
    case 0xFE534D42: // smb2
    case 0xFF534D42: // cifs
    case 0x73757245: // coda
    case 0x5346414F: // afs
    case 0x6B414653: // kafs
    case 0x00C36400: // ceph
    case 0x01021997: // 9p
    case 0x564C:     // ncp
    case 0x01161970: // gfs2
    case 0x7461636F: // ocfs2
    case 0x0BD00BD0: // lustre
        return true;
    default: return false;
    }
}

// A file cut off behind its first pages still opens, and reading what is missing ends the process by a
// signal.
int16_t CheckLength(const Store *store, int64_t size)
{
    MDB_envinfo info;
    MDB_stat shape;
    if (mdb_env_info(store->Own->Real, &info) != 0 || mdb_env_stat(store->Own->Real, &shape) != 0) {
        return BtrStatusIoError;
    }
    const uint64_t needed = (uint64_t{info.me_last_pgno} + 1) * shape.ms_psize;
    if (static_cast<uint64_t>(size) >= needed) return BtrStatusOk;
    return OnlyFreePagesMissing(store->PresenceFd) ? BtrStatusOk : BtrStatusForeignFile;
}

// The store's lock file is mapped, and a hole in a mapped file is a signal on a full disk: its blocks are
// taken before the store opens it. What another program may have left there is of no use to anybody.
int16_t PrepareLockFile(const Store *store)
{
    const int fd = host::OpenFile(store->DirectoryFd, lockName, O_RDWR | O_CREAT | O_NOFOLLOW);
    if (fd < 0) return StatusOf(errno);
    constexpr off_t readerSize = 64;
    int error = ftruncate(fd, 0) == 0 ? 0 : errno;
    while (error == 0 || error == EINTR) {
        error = posix_fallocate(fd, 0, readerSize * static_cast<off_t>(limits.Readers + 1));
        if (error != EINTR) break;
    }
    close(fd);
    return StatusOf(error);
}

// A file that was just made is only there for good once its directory is.
int16_t SyncDirectory(const Store *store)
{
    const int fd = host::OpenFile(store->DirectoryFd, ".", O_RDONLY | O_DIRECTORY);
    if (fd < 0) return errno == EACCES ? static_cast<int16_t>(BtrStatusOk) : StatusOf(errno);
    const int error = fsync(fd) == 0 ? 0 : errno;
    close(fd);
    return StatusOf(error);
}

// What the store does with a meta page that is none would be a matter of luck.
int16_t CheckMetas(Store *store, bool empty)
{
    MetaPage metas[2];
    Environment *own = store->Own;
    own->PageSize = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    own->Summed = true;
    if (empty) return BtrStatusOk;
    if (!ReadMetas(store->PresenceFd, metas, &own->Summed)) return BtrStatusForeignFile;
    own->PageSize = metas[0].Free.PageSize;
    return BtrStatusOk;
}

// The marks take room only where pages are used.
int16_t MakeTables(Environment *own)
{
    own->MarkCount = limits.MapSize / own->PageSize;
    const size_t size = own->MarkCount * sizeof *own->Marks;
    void *marks =
        mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (marks == MAP_FAILED) return BtrStatusHandleTableFull;
    own->Marks = static_cast<std::atomic<uint32_t> *>(marks);
    own->Trees = static_cast<LookedAt *>(std::calloc(limits.Trees, sizeof(LookedAt)));
    return own->Trees != nullptr ? BtrStatusOk : BtrStatusHandleTableFull;
}

void FreeEnvironment(Environment *own)
{
    View *spare = own->Spare.exchange(nullptr);
    if (spare != nullptr) FreeSnapshot(spare);
    if (own->Real != nullptr) mdb_env_close(own->Real);
    if (own->Marks != nullptr) munmap(own->Marks, own->MarkCount * sizeof *own->Marks);
    while (own->Writing.Free != nullptr) {
        Cursor *cursor = own->Writing.Free;
        own->Writing.Free = cursor->Next;
        CloseCursor(cursor);
    }
    std::free(own->Trees);
    std::free(own);
}

int16_t OpenEnvironment(Store *store, const char *directory, bool empty)
{
    store->Own = static_cast<Environment *>(std::calloc(1, sizeof(Environment)));
    if (store->Own == nullptr) return BtrStatusHandleTableFull;
    Environment *own = store->Own;
    int16_t status = CheckMetas(store, empty);
    if (status == BtrStatusOk) status = MakeTables(own);
    if (status != BtrStatusOk) return status;
    if (mdb_env_create(&own->Real) != 0) {
        own->Real = nullptr;
        return BtrStatusHandleTableFull;
    }
    mdb_env_set_mapsize(own->Real, limits.MapSize);
    mdb_env_set_maxreaders(own->Real, limits.Readers);
    mdb_env_set_maxdbs(own->Real, limits.Trees);
    const unsigned flags = MDB_NOSUBDIR | MDB_NOTLS | (store->ReadOnly ? MDB_RDONLY : 0);
    mdb_env_set_assert(own->Real, TellBrokenStore);
    WriteSums(own);
    status = StatusOf(mdb_env_open(own->Real, PathOfBooks(directory).Text, flags, 0666));
    own->Map = LastMap();
    store->Unseen = store->ReadOnly && WasRefused();
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
    const bool unfinished = found.Size != 0 && IsUnfinished(store->PresenceFd);
    const bool empty = found.Size == 0 || unfinished;
    if (empty && (!create || !alone)) return BtrStatusForeignFile;
    if (unfinished && ftruncate(store->PresenceFd, 0) != 0) return StatusOf(errno);

    int16_t status = BtrStatusOk;
    if (alone) {
        status = PrepareLockFile(store);
    } else if (!store->ReadOnly && faccessat(store->DirectoryFd, lockName, F_OK, 0) != 0) {
        // Gone while others still work by it: a new one would let two writers in.
        status = BtrStatusIoError;
    }
    if (status == BtrStatusOk && !store->ReadOnly)
        status = OpenGate(store->DirectoryFd, alone, &store->WriteGate);
    if (status != BtrStatusOk) return status;

    status = OpenEnvironment(store, directory, empty);
    if (status == BtrStatusOk && !empty) status = CheckLength(store, found.Size);
    if (status == BtrStatusOk && empty) status = WriteFormat(store);
    if (status == BtrStatusOk && !empty) status = CheckFormat(store);
    // Books whose maker came no further than the store's own pages.
    if (status == BtrStatusFileNotFound && create && alone) status = WriteFormat(store);
    if (status == BtrStatusOk && empty) status = SyncDirectory(store);
    WriteSums(nullptr);
    // Half a head would be foreign to the next who tries, where an empty file is as good as none.
    if (status != BtrStatusOk && empty) (void)!ftruncate(store->PresenceFd, 0);
    if (status != BtrStatusOk) return status;

    struct stat lockFile;
    if (fstatat(store->DirectoryFd, lockName, &lockFile, AT_SYMLINK_NOFOLLOW) == 0) {
        store->LockInode = lockFile.st_ino;
    }
    int dead = 0;
    if (!store->ReadOnly) mdb_reader_check(store->Own->Real, &dead);
    // Who does not use the lock file does not keep others from laying it anew.
    if (store->Unseen) return BtrStatusOk;
    const LockResult present = TryLock(store->PresenceFd, LockKind::Read, presenceOffset, 1);
    return present == LockResult::Granted ? BtrStatusOk : BtrStatusIoError;
}

void FreeStore(Store *store)
{
    if (store->Own != nullptr) FreeEnvironment(store->Own);
    if (store->WriteGate != nullptr) CloseGate(store->WriteGate);
    while (store->Files != nullptr) {
        File *file = store->Files;
        store->Files = file->Next;
        std::free(file);
    }
    FreeSharedLocks(store->Shared);
    pthread_mutex_destroy(&store->Shared.Mutex);
    if (store->PresenceFd >= 0) close(store->PresenceFd);
    if (store->DirectoryFd >= 0) close(store->DirectoryFd);
    pthread_mutex_destroy(&store->Mutex);
    std::free(store);
}

} // namespace

// Closing is under the same lock as opening, since the store's lock file changes hands in both.
void CloseStore(Store *store)
{
    (void)WaitLock(store->PresenceFd, LockKind::Write, setupOffset, 1, limits.SetupWait_ms);
    FreeStore(store);
}

namespace {

// Opens the books' file for writing where that is possible, and for reading where that is wanted or all there
// is.
int16_t OpenBooks(Store *store, bool create)
{
    const int creates = create ? O_CREAT : 0;
    store->PresenceFd = host::OpenFile(store->DirectoryFd, booksName, O_NOFOLLOW | O_RDWR | creates);
    if (store->PresenceFd >= 0) return BtrStatusOk;
    if (errno != EROFS && errno != EACCES && errno != EPERM) {
        return StatusOf(errno, ENOENT, BtrStatusFileNotFound);
    }
    store->ReadOnly = true;
    store->PresenceFd = host::OpenFile(store->DirectoryFd, booksName, O_NOFOLLOW | O_RDONLY);
    if (store->PresenceFd >= 0) return BtrStatusOk;
    return StatusOf(errno, ENOENT, create ? BtrStatusPermission : BtrStatusFileNotFound);
}

} // namespace

int16_t OpenStore(const char *directory, bool create, const StoreFunctions *functions, Store **out)
{
    const int directoryFd = host::OpenFile(AT_FDCWD, directory, O_PATH | O_DIRECTORY);
    if (directoryFd < 0) {
        const bool missing = errno == ENOENT || errno == ENOTDIR || errno == ENAMETOOLONG || errno == ELOOP;
        return missing ? static_cast<int16_t>(BtrStatusFileNotFound) : StatusOf(errno);
    }
    auto *store = static_cast<Store *>(std::calloc(1, sizeof(Store)));
    if (store == nullptr) {
        close(directoryFd);
        return BtrStatusHandleTableFull;
    }
    store->Do = functions;
    pthread_mutex_init(&store->Mutex, nullptr);
    pthread_mutex_init(&store->Shared.Mutex, nullptr);
    store->DirectoryFd = directoryFd;
    store->PresenceFd = -1;
    int16_t status = BtrStatusOk;
    if (OnNetwork(directoryFd)) status = BtrStatusPermission;
    if (status == BtrStatusOk) status = OpenBooks(store, create);
    if (status == BtrStatusOk) {
        const LockKind kind = store->ReadOnly ? LockKind::Read : LockKind::Write;
        if (WaitLock(store->PresenceFd, kind, setupOffset, 1, limits.SetupWait_ms) != LockResult::Granted) {
            status = BtrStatusFileLocked;
        }
    }
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

int16_t CheckKnown(const Store &store, const BooksFacts &found)
{
    if (store.Own->Dead || (!store.ReadOnly && !HasLockFile(&store))) return BtrStatusIoError;
    return CheckLength(&store, found.Size);
}

int OpenLockDescription(const Store *store)
{
    const int fd =
        host::OpenFile(store->DirectoryFd, booksName, O_NOFOLLOW | (store->ReadOnly ? O_RDONLY : O_RDWR));
    BooksFacts found;
    if (fd >= 0 && (!ReadFacts(fd, &found) || found.Inode != store->Inode || found.Device != store->Device)) {
        close(fd);
        errno = ENOENT;
        return -1;
    }
    return fd;
}

int16_t PrepareToWrite(Store *store)
{
    // Newcomers would not find the lock file by which we are told from them.
    return HasLockFile(store) ? BtrStatusOk : BtrStatusIoError;
}

namespace {

// Whether the books could not grow by a page. The store tells of a write that was cut short as of any other
// failure; only the holder of the gate may ask.
bool IsDiskFull(const Store *store)
{
    const uint8_t page[4096] = {};
    BooksFacts found;
    if (!ReadFacts(store->PresenceFd, &found)) return false;
    const ssize_t written = pwrite(store->PresenceFd, page, sizeof page, found.Size);
    const bool full =
        written < 0 ? StatusOf(errno) == BtrStatusDiskFull : static_cast<size_t>(written) < sizeof page;
    if (written > 0) (void)!ftruncate(store->PresenceFd, found.Size);
    return full;
}

} // namespace

int16_t StatusOfCommit(Store *store, int error)
{
    return error == EIO && IsDiskFull(store) ? static_cast<int16_t>(BtrStatusDiskFull) : StatusOf(error);
}

} // namespace wbtrv
