// The system calls of the store that is linked in, under the names that the build gives them there.
#include "host/descriptors.h"

#include "record-manager/limits.h"
#include "record-manager/linux/bounded_mutex.h"
#include "record-manager/lmdb/private.h"

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/random.h>
#include <sys/uio.h>
#include <unistd.h>

namespace wbtrv {

namespace {

thread_local Environment *writing = nullptr;
thread_local uint8_t *lastMap = nullptr;
thread_local bool wasRefused = false;

// The store writes pages out of memory of its own, so its sum can be put into each.
void PutSums(void *from, size_t size, uint64_t offset)
{
    auto *page = static_cast<uint8_t *>(from);
    if (offset == 0) {
        // Both meta pages of new books.
        for (size_t at = 0; at + writing->PageSize <= size; at += writing->PageSize) {
            PutField(page + at + offsetof(MetaPage, Sum), SumOfMeta(page + at + metaBegin));
        }
        return;
    }
    PutSum(page, size);
    const PageHead head = HeadOf(page);
    if (head.Number < writing->MarkCount)
        writing->Marks[head.Number].store(SumIn(head) | looked, std::memory_order_relaxed);
}

// A commit writes the contents of a meta page; the sum goes behind them in one write.
bool IsMeta(size_t size, uint64_t offset)
{
    return size == metaSize && offset % writing->PageSize == metaBegin && offset / writing->PageSize < 2;
}

ssize_t WriteMeta(int fd, const void *from, off_t offset)
{
    uint8_t whole[metaSize + sizeof(uint64_t)];
    std::memcpy(whole, from, metaSize);
    PutField(whole + metaSize, SumOfMeta(from));
    const ssize_t written = pwrite(fd, whole, sizeof whole, offset);
    if (written == static_cast<ssize_t>(sizeof whole)) return metaSize;
    return written < static_cast<ssize_t>(metaSize) ? written : static_cast<ssize_t>(metaSize) - 1;
}

} // namespace

void WriteSums(Environment *environment)
{
    writing = environment != nullptr && environment->Summed ? environment : nullptr;
}

uint8_t *LastMap() { return lastMap; }

bool WasRefused() { return wasRefused; }

} // namespace wbtrv

namespace {

// Both numbers in one, so that a thread sees them of the same process: the system's, and the one drawn.
std::atomic<uint64_t> drawn{0};

} // namespace

extern "C" {

// Where the store tells of a broken assertion before it ends the process: nowhere.
FILE *wbtrv_messages = nullptr;

int wbtrv_open(const char *path, int flags, ...)
{
    mode_t mode = 0;
    if ((flags & O_CREAT) != 0) {
        va_list arguments;
        va_start(arguments, flags);
        mode = va_arg(arguments, mode_t);
        va_end(arguments);
    }
    const int file = host::OpenFile(AT_FDCWD, path, flags, mode);
    if ((flags & O_CREAT) == 0) return file;
    wbtrv::wasRefused = file < 0 && (errno == EACCES || errno == EPERM || errno == EROFS);
    // The store reads without its lock file where the system is read-only, which for us is every place where
    // we may not write it.
    if (wbtrv::wasRefused) errno = EROFS;
    return file;
}

// The store tells processes by their number, which two containers on one directory may give out twice. So
// each draws one of its own, and a child another.
pid_t wbtrv_getpid()
{
    const auto process = static_cast<uint32_t>(getpid());
    uint64_t known = drawn.load(std::memory_order_relaxed);
    while (known >> 32 != process) {
        uint32_t number = 0;
        if (getrandom(&number, sizeof number, GRND_NONBLOCK) != sizeof number) number = process;
        number &= INT32_MAX;
        const uint64_t mine = uint64_t{process} << 32 | (number == 0 ? process : number);
        if (drawn.compare_exchange_strong(known, mine)) known = mine;
    }
    return static_cast<pid_t>(known & UINT32_MAX);
}

ssize_t wbtrv_pwrite(int fd, void *from, size_t size, off_t offset)
{
    using namespace wbtrv;
    const auto at = static_cast<uint64_t>(offset);
    if (writing == nullptr) return pwrite(fd, from, size, offset);
    if (IsMeta(size, at)) return WriteMeta(fd, from, offset);
    PutSums(from, size, at);
    return pwrite(fd, from, size, offset);
}

// Neighbouring pages, each a part, behind the meta pages.
ssize_t wbtrv_writev(int fd, const iovec *parts, int count)
{
    using namespace wbtrv;
    for (int i = 0; i < count && writing != nullptr; ++i) {
        PutSums(parts[i].iov_base, parts[i].iov_len, 1);
    }
    return writev(fd, parts, count);
}

// What is mapped for reading alone are the books.
void *wbtrv_mmap(void *where, size_t size, int protection, int flags, int fd, off_t offset)
{
    void *map = mmap(where, size, protection, flags, fd, offset);
    if (protection == PROT_READ && map != MAP_FAILED) wbtrv::lastMap = static_cast<uint8_t *>(map);
    return map;
}

// The store's own waits have no end.
int wbtrv_lock(pthread_mutex_t *mutex)
{
    using namespace wbtrv;
    return LockBefore(mutex, After(Now(), int64_t{limits.ChangeWait_ms} * 1000000));
}

} // extern "C"
