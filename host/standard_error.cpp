#include "host/standard_error.h"

#include <cerrno>
#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

namespace host {

namespace {

bool IsWritable(int descriptor)
{
    const int flags = fcntl(descriptor, F_GETFL);
    return flags >= 0 && (flags & O_PATH) == 0 && (flags & O_ACCMODE) != O_RDONLY;
}

// A file for messages is opened for writing alone, or is one without a name, into which a host catches them;
// a terminal, pipe or socket may be read as well. What else can be read has been opened by the host while the
// number was free.
bool IsStreamForMessages(int descriptor)
{
    struct stat status = {};
    if (!IsWritable(descriptor) || fstat(descriptor, &status) != 0) return false;
    if ((fcntl(descriptor, F_GETFL) & O_ACCMODE) == O_WRONLY) return true;
    return S_ISCHR(status.st_mode) || S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode) ||
           status.st_nlink == 0;
}

bool wasStreamAtLoad;

__attribute__((constructor)) void LookAtStandardError()
{
    wasStreamAtLoad = IsStreamForMessages(STDERR_FILENO);
}

// Keeps SIGPIPE from the calling thread, and takes back one that was raised meanwhile.
struct WithoutPipeSignal {
    sigset_t Pipe;
    sigset_t Before;
    bool WasPending;

    WithoutPipeSignal()
    {
        sigset_t pending;
        sigemptyset(&Pipe);
        sigaddset(&Pipe, SIGPIPE);
        sigpending(&pending);
        WasPending = sigismember(&pending, SIGPIPE) == 1;
        pthread_sigmask(SIG_BLOCK, &Pipe, &Before);
    }
    ~WithoutPipeSignal()
    {
        const timespec now = {};
        while (!WasPending && sigtimedwait(&Pipe, nullptr, &now) < 0 && errno == EINTR) {
        }
        pthread_sigmask(SIG_SETMASK, &Before, nullptr);
    }
    WithoutPipeSignal(const WithoutPipeSignal &) = delete;
    WithoutPipeSignal &operator=(const WithoutPipeSignal &) = delete;
};

long MillisecondsSince(const timespec &begin)
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return (now.tv_sec - begin.tv_sec) * 1000 + (now.tv_nsec - begin.tv_nsec) / 1000000;
}

} // namespace

bool WriteWithinASecond(int descriptor, const char *bytes, size_t size)
{
    constexpr long patience_ms = 1000;
    constexpr size_t step = 4096; // what a pipe that is ready takes without waiting
    const WithoutPipeSignal without;
    timespec begin = {};
    clock_gettime(CLOCK_MONOTONIC, &begin);
    while (size > 0) {
        const long left = patience_ms - MillisecondsSince(begin);
        pollfd ready = {descriptor, POLLOUT, 0};
        const int found = left > 0 ? poll(&ready, 1, static_cast<int>(left)) : 0;
        if (found < 0 && errno == EINTR) continue;
        if (found <= 0) return false;
        const ssize_t written = write(descriptor, bytes, size < step ? size : step);
        if (written < 0 && (errno == EINTR || errno == EAGAIN)) continue;
        if (written <= 0) return false;
        bytes += written;
        size -= static_cast<size_t>(written);
    }
    return true;
}

bool WriteToStandardError(const char *bytes, size_t size)
{
    if (!wasStreamAtLoad || !IsWritable(STDERR_FILENO)) return false;
    return WriteWithinASecond(STDERR_FILENO, bytes, size);
}

} // namespace host
