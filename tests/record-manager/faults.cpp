#include "faults.h"

#include "record-manager/lmdb/guarded.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <lmdb.h>
#include <mutex>
#include <sys/stat.h>
#include <sys/uio.h>
#include <sys/vfs.h>
#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define WITH_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define WITH_SANITIZER 1
#endif
#endif
#ifndef WITH_SANITIZER
#define WITH_SANITIZER 0
#endif

namespace wbtrvtest {

namespace {

struct Armed {
    Fault What = Fault::None;
    uint64_t Nth = 0;
    uint64_t Count = 0;
    bool ForEver = false;
    bool Failed = false;
    bool Paused = false;
};
thread_local constinit Armed armed;

std::atomic<uint32_t> fileSystemType{0};
std::atomic<bool> readOnly{false};

// Ends the process at the call it was armed for, and there as a crash does.
void DieIfArmed()
{
    if (armed.What != Fault::Killed || armed.Paused) return;
    if (++armed.Count == armed.Nth) kill(getpid(), SIGKILL);
}

bool Fails(Fault fault)
{
    if (fault != Fault::Allocation) DieIfArmed();
    if (armed.What != fault || armed.Paused) return false;
    const uint64_t count = ++armed.Count;
    const bool fails = armed.ForEver ? count >= armed.Nth : count == armed.Nth;
    armed.Failed = armed.Failed || fails;
    return fails;
}

template <typename Function> Function *Real(const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

// ---- Recording ----

std::mutex recordMutex;
std::atomic<bool> recording{false};
std::string recordedName;
std::vector<DiskEvent> events;

bool IsRecorded(int fd)
{
    if (!recording) return false;
    std::array<char, PATH_MAX> path{};
    const std::string link = "/proc/self/fd/" + std::to_string(fd);
    const ssize_t length = readlink(link.c_str(), path.data(), path.size() - 1);
    if (length <= 0) return false;
    const std::string name(path.data(), static_cast<size_t>(length));
    return name.size() > recordedName.size() &&
           name.compare(name.size() - recordedName.size() - 1, std::string::npos, "/" + recordedName) == 0;
}

void Record(DiskEvent event)
{
    const std::lock_guard lock(recordMutex);
    events.push_back(std::move(event));
}

bool WaitsForDisk(int fd)
{
    const int flags = fcntl(fd, F_GETFL);
    return flags >= 0 && (flags & (O_DSYNC | O_SYNC)) != 0;
}

} // namespace

void Arm(Fault fault, uint64_t nth, bool forEver)
{
    armed = {};
    armed.Nth = nth;
    armed.ForEver = forEver;
    armed.What = fault;
}

uint64_t Disarm()
{
    armed.What = Fault::None;
    return armed.Count;
}

bool HasFailed() { return armed.Failed; }

void Pause() { armed.Paused = true; }
void Resume() { armed.Paused = false; }

bool CanFailAllocations() { return WITH_SANITIZER == 0; }

void PretendFileSystem(uint32_t type) { fileSystemType = type; }
void PretendReadOnly(bool value) { readOnly = value; }

void StartRecording(const std::string &fileName)
{
    const std::lock_guard lock(recordMutex);
    recordedName = fileName;
    events.clear();
    recording = true;
}

void Note(uint64_t what) { Record({DiskEvent::Returned, what, {}, false}); }

std::vector<DiskEvent> StopRecording()
{
    recording = false;
    const std::lock_guard lock(recordMutex);
    return std::move(events);
}

} // namespace wbtrvtest

using namespace wbtrvtest;

// What follows stands before the C library's and the store's functions of the same names.
#define CAUGHT extern "C" __attribute__((visibility("default")))

#if !WITH_SANITIZER
extern "C" {
void *__libc_malloc(size_t size);
void *__libc_calloc(size_t count, size_t size);
void *__libc_realloc(void *old, size_t size);
}

CAUGHT void *malloc(size_t size)
{
    if (Fails(Fault::Allocation)) {
        errno = ENOMEM;
        return nullptr;
    }
    return __libc_malloc(size);
}

CAUGHT void *calloc(size_t count, size_t size)
{
    if (Fails(Fault::Allocation)) {
        errno = ENOMEM;
        return nullptr;
    }
    return __libc_calloc(count, size);
}

CAUGHT void *realloc(void *old, size_t size)
{
    if (Fails(Fault::Allocation)) {
        errno = ENOMEM;
        return nullptr;
    }
    return __libc_realloc(old, size);
}
#endif

namespace {

// How many of the bytes are to be written; -1 when the disk is full. A write that is cut short fills the
// disk.
ssize_t Room(size_t size)
{
    if (armed.What == Fault::Killed) return static_cast<ssize_t>(size);
    if (Fails(Fault::Write)) return -1;
    if (!Fails(Fault::ShortWrite)) return static_cast<ssize_t>(size);
    return armed.Count == armed.Nth ? static_cast<ssize_t>(size / 2) : -1;
}

// Writes what there is room for, at an offset or, with -1, where the description stands.
template <typename Real> ssize_t WriteRoom(int fd, const char *from, size_t size, off_t offset, Real real)
{
    const bool recorded = IsRecorded(fd);
    const ssize_t room = Room(size);
    if (room < 0) {
        errno = ENOSPC;
        return -1;
    }
    if (recorded) {
        const off_t at = offset < 0 ? lseek(fd, 0, SEEK_CUR) : offset;
        Record({DiskEvent::Written,
                static_cast<uint64_t>(at),
                {from, static_cast<size_t>(room)},
                WaitsForDisk(fd)});
    }
    // One that is killed in its write has written a part of it.
    if (armed.What == Fault::Killed && !armed.Paused && armed.Count + 1 == armed.Nth) {
        (void)!real(static_cast<size_t>(room) / 2);
    }
    DieIfArmed();
    return real(static_cast<size_t>(room));
}

bool WatchesWrites() { return armed.What == Fault::Write || armed.What == Fault::ShortWrite || recording; }

// Only files count; a pipe to another process is no disk.
bool IsFile(int fd)
{
    struct stat found;
    return fstat(fd, &found) == 0 && S_ISREG(found.st_mode);
}

} // namespace

CAUGHT ssize_t pwrite(int fd, const void *from, size_t size, off_t offset)
{
    static auto *real = Real<ssize_t(int, const void *, size_t, off_t)>("pwrite");
    return WriteRoom(fd, static_cast<const char *>(from), size, offset,
                     [&](size_t room) { return real(fd, from, room, offset); });
}

CAUGHT ssize_t pwrite64(int fd, const void *from, size_t size, off_t offset)
{
    return pwrite(fd, from, size, offset);
}

CAUGHT ssize_t write(int fd, const void *from, size_t size)
{
    static auto *real = Real<ssize_t(int, const void *, size_t)>("write");
    if (!WatchesWrites() || !IsFile(fd)) return real(fd, from, size);
    return WriteRoom(fd, static_cast<const char *>(from), size, -1,
                     [&](size_t room) { return real(fd, from, room); });
}

// The parts are joined, so that a cut may lie anywhere in them.
CAUGHT ssize_t writev(int fd, const iovec *parts, int count)
{
    static auto *real = Real<ssize_t(int, const iovec *, int)>("writev");
    if (!WatchesWrites() || !IsFile(fd)) return real(fd, parts, count);
    std::string data;
    for (int i = 0; i < count; ++i) {
        data.append(static_cast<const char *>(parts[i].iov_base), parts[i].iov_len);
    }
    return WriteRoom(fd, data.data(), data.size(), -1, [&](size_t room) {
        const iovec joined{data.data(), room};
        return real(fd, &joined, 1);
    });
}

CAUGHT int fdatasync(int fd)
{
    static auto *real = Real<int(int)>("fdatasync");
    if (Fails(Fault::Sync)) {
        errno = EIO;
        return -1;
    }
    const int result = real(fd);
    if (result == 0 && IsRecorded(fd)) Record({DiskEvent::Synced, 0, {}, false});
    return result;
}

CAUGHT int fsync(int fd)
{
    static auto *real = Real<int(int)>("fsync");
    if (Fails(Fault::Sync)) {
        errno = EIO;
        return -1;
    }
    const int result = real(fd);
    if (result == 0 && IsRecorded(fd)) Record({DiskEvent::Synced, 0, {}, false});
    return result;
}

CAUGHT int posix_fallocate(int fd, off_t offset, off_t length)
{
    static auto *real = Real<int(int, off_t, off_t)>("posix_fallocate");
    if (Fails(Fault::Write)) return ENOSPC;
    return real(fd, offset, length);
}

CAUGHT int ftruncate(int fd, off_t length)
{
    static auto *real = Real<int(int, off_t)>("ftruncate");
    if (IsRecorded(fd)) Record({DiskEvent::Cut, static_cast<uint64_t>(length), {}, false});
    return real(fd, length);
}

CAUGHT int fstatfs(int fd, struct statfs *found) noexcept
{
    static auto *real = Real<int(int, struct statfs *)>("fstatfs");
    const int result = real(fd, found);
    if (result == 0 && fileSystemType != 0)
        found->f_type = static_cast<decltype(found->f_type)>(fileSystemType.load());
    return result;
}

namespace {

bool Refuses(int flags) { return readOnly && ((flags & O_ACCMODE) != O_RDONLY || (flags & O_CREAT) != 0); }

mode_t ModeOf(int flags, va_list arguments)
{
    return (flags & O_CREAT) != 0 ? static_cast<mode_t>(va_arg(arguments, int)) : 0;
}

} // namespace

CAUGHT int open(const char *path, int flags, ...)
{
    static auto *real = Real<int(const char *, int, ...)>("open");
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = ModeOf(flags, arguments);
    va_end(arguments);
    if (Refuses(flags)) {
        errno = EROFS;
        return -1;
    }
    return real(path, flags, mode);
}

CAUGHT int open64(const char *path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = ModeOf(flags, arguments);
    va_end(arguments);
    return open(path, flags, mode);
}

CAUGHT int openat(int directory, const char *path, int flags, ...)
{
    static auto *real = Real<int(int, const char *, int, ...)>("openat");
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = ModeOf(flags, arguments);
    va_end(arguments);
    if (Refuses(flags)) {
        errno = EROFS;
        return -1;
    }
    return real(directory, path, flags, mode);
}

// ---- The store's own calls, which the tests' copy of it has under names of their own ----

#define CAUGHT_STORE_CALL(name, parameters, arguments, error)                                                \
    extern "C" int store_##name parameters;                                                                  \
    CAUGHT int name parameters { return Fails(Fault::StoreCall) ? error : store_##name arguments; }

// The same for a call that may come upon a broken assertion: in its middle, with some of its work done.
#define CAUGHT_GUARDED_CALL(name, parameters, arguments, error)                                              \
    extern "C" int store_##name parameters;                                                                  \
    CAUGHT int name parameters                                                                               \
    {                                                                                                        \
        if (Fails(Fault::StoreCall)) return error;                                                           \
        const int done = store_##name arguments;                                                             \
        if (Fails(Fault::Assertion)) wbtrv::TellBrokenStore(nullptr, "a test");                              \
        return done;                                                                                         \
    }

CAUGHT_STORE_CALL(mdb_env_create, (MDB_env * *env), (env), ENOMEM)
CAUGHT_STORE_CALL(mdb_env_open, (MDB_env * env, const char *path, unsigned flags, mdb_mode_t mode),
                  (env, path, flags, mode), EIO)
CAUGHT_STORE_CALL(mdb_txn_begin, (MDB_env * env, MDB_txn *parent, unsigned flags, MDB_txn **txn),
                  (env, parent, flags, txn), ENOMEM)
CAUGHT_STORE_CALL(mdb_txn_renew, (MDB_txn * txn), (txn), EIO)
CAUGHT_STORE_CALL(mdb_dbi_open, (MDB_txn * txn, const char *name, unsigned flags, MDB_dbi *dbi),
                  (txn, name, flags, dbi), ENOMEM)
CAUGHT_GUARDED_CALL(mdb_drop, (MDB_txn * txn, MDB_dbi dbi, int del), (txn, dbi, del), EIO)
CAUGHT_GUARDED_CALL(mdb_get, (MDB_txn * txn, MDB_dbi dbi, MDB_val *key, MDB_val *data), (txn, dbi, key, data),
                    EIO)
CAUGHT_GUARDED_CALL(mdb_put, (MDB_txn * txn, MDB_dbi dbi, MDB_val *key, MDB_val *data, unsigned flags),
                    (txn, dbi, key, data, flags), MDB_MAP_FULL)
CAUGHT_GUARDED_CALL(mdb_del, (MDB_txn * txn, MDB_dbi dbi, MDB_val *key, MDB_val *data), (txn, dbi, key, data),
                    EIO)
CAUGHT_STORE_CALL(mdb_cursor_open, (MDB_txn * txn, MDB_dbi dbi, MDB_cursor **cursor), (txn, dbi, cursor),
                  ENOMEM)
CAUGHT_STORE_CALL(mdb_cursor_renew, (MDB_txn * txn, MDB_cursor *cursor), (txn, cursor), EIO)
CAUGHT_GUARDED_CALL(mdb_cursor_get, (MDB_cursor * cursor, MDB_val *key, MDB_val *data, MDB_cursor_op op),
                    (cursor, key, data, op), EIO)
CAUGHT_GUARDED_CALL(mdb_cursor_put, (MDB_cursor * cursor, MDB_val *key, MDB_val *data, unsigned flags),
                    (cursor, key, data, flags), MDB_MAP_FULL)
CAUGHT_STORE_CALL(mdb_env_info, (MDB_env * env, MDB_envinfo *info), (env, info), EIO)
CAUGHT_STORE_CALL(mdb_env_stat, (MDB_env * env, MDB_stat *stat), (env, stat), EIO)
CAUGHT_STORE_CALL(mdb_env_sync, (MDB_env * env, int force), (env, force), EIO)
CAUGHT_STORE_CALL(mdb_env_set_flags, (MDB_env * env, unsigned flags, int on), (env, flags, on), ENOMEM)
CAUGHT_STORE_CALL(mdb_stat, (MDB_txn * txn, MDB_dbi dbi, MDB_stat *stat), (txn, dbi, stat), EIO)

extern "C" int store_mdb_txn_commit(MDB_txn *txn);
// A commit that fails has undone the transaction and freed it.
CAUGHT int mdb_txn_commit(MDB_txn *txn)
{
    if (Fails(Fault::StoreCall)) {
        mdb_txn_abort(txn);
        return EIO;
    }
    if (Fails(Fault::Assertion)) wbtrv::TellBrokenStore(nullptr, "a test");
    return store_mdb_txn_commit(txn);
}
