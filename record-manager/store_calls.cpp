// The system calls of the store that is linked in, under the names that the build gives them there.
#include "host/descriptors.h"

#include "record-manager/bounded_mutex.h"
#include "record-manager/limits.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <fcntl.h>
#include <sys/random.h>
#include <unistd.h>

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
    return host::OpenFile(AT_FDCWD, path, flags, mode);
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

// The store's own waits have no end.
int wbtrv_lock(pthread_mutex_t *mutex)
{
    using namespace wbtrv;
    return LockBefore(mutex, After(Now(), int64_t{limits.ChangeWait_ms} * 1000000));
}

} // extern "C"
