/* Loaded before the C library: of the calls of the system that a program and its children make, one fails.
   The environment says which: FAILING_CALL is its number, counted from 1 in each process, FAILING_ERROR the
   error, and FAILING_DONE a file that is made when the call has been met, so that no other fails. A write
   that fails may have written half. FAILING_KIND lets the calls of that name alone be counted. With
   FAILING_SIGNAL in place of the error the signal arrives in the middle of the call, which fails with EINTR
   unless the signal is held back. */
#define _GNU_SOURCE
#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdarg.h>
#include <stdatomic.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/sendfile.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

static atomic_long counted;

static long NumberIn(const char *name)
{
    const char *text = getenv(name);
    long number = 0;
    while (text != NULL && *text >= '0' && *text <= '9') {
        number = 10 * number + (*text++ - '0');
    }
    return number;
}

/* Whether this call is the one; what is told is told in the file. */
static int Fails(const char *call)
{
    const long wanted = NumberIn("FAILING_CALL");
    const char *done = getenv("FAILING_DONE");
    const char *kind = getenv("FAILING_KIND");
    if (kind != NULL && strcmp(kind, call) != 0) return 0;
    if (wanted == 0 || done == NULL || atomic_fetch_add(&counted, 1) + 1 != wanted) return 0;
    const long file = syscall(SYS_openat, AT_FDCWD, done, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (file < 0) return 0;
    syscall(SYS_write, file, call, strlen(call));
    syscall(SYS_close, file);
    const int arriving = (int)NumberIn("FAILING_SIGNAL");
    if (arriving == 0) {
        errno = (int)NumberIn("FAILING_ERROR");
        return 1;
    }
    sigset_t held;
    sigprocmask(SIG_SETMASK, NULL, &held);
    raise(arriving);
    errno = EINTR;
    return !sigismember(&held, arriving);
}

#define FAILING(call)                                                                                        \
    if (Fails(call)) return -1

ssize_t write(int file, const void *data, size_t size)
{
    if (Fails("write")) {
        if (errno == ENOSPC && size > 1) return syscall(SYS_write, file, data, size / 2);
        return -1;
    }
    return syscall(SYS_write, file, data, size);
}

ssize_t pwrite(int file, const void *data, size_t size, off_t at)
{
    if (Fails("pwrite")) {
        if (errno == ENOSPC && size > 1) return syscall(SYS_pwrite64, file, data, size / 2, at);
        return -1;
    }
    return syscall(SYS_pwrite64, file, data, size, at);
}

ssize_t pwrite64(int file, const void *data, size_t size, off64_t at) { return pwrite(file, data, size, at); }

ssize_t writev(int file, const struct iovec *parts, int count)
{
    FAILING("writev");
    return syscall(SYS_writev, file, parts, count);
}

ssize_t pwritev(int file, const struct iovec *parts, int count, off_t at)
{
    FAILING("pwritev");
    return syscall(SYS_pwritev, file, parts, count, at, at >> 32);
}

ssize_t read(int file, void *data, size_t size)
{
    FAILING("read");
    return syscall(SYS_read, file, data, size);
}

ssize_t pread(int file, void *data, size_t size, off_t at)
{
    FAILING("pread");
    return syscall(SYS_pread64, file, data, size, at);
}

ssize_t pread64(int file, void *data, size_t size, off64_t at) { return pread(file, data, size, at); }

ssize_t sendfile(int to, int from, off_t *at, size_t size)
{
    FAILING("sendfile");
    return syscall(SYS_sendfile, to, from, at, size);
}

ssize_t sendfile64(int to, int from, off64_t *at, size_t size) { return sendfile(to, from, at, size); }

int fsync(int file)
{
    FAILING("fsync");
    return (int)syscall(SYS_fsync, file);
}

int fdatasync(int file)
{
    FAILING("fdatasync");
    return (int)syscall(SYS_fdatasync, file);
}

int msync(void *at, size_t size, int flags)
{
    FAILING("msync");
    return (int)syscall(SYS_msync, at, size, flags);
}

int flock(int file, int operation)
{
    FAILING("flock");
    return (int)syscall(SYS_flock, file, operation);
}

int fcntl(int file, int command, ...)
{
    va_list rest;
    va_start(rest, command);
    void *argument = va_arg(rest, void *);
    va_end(rest);
    FAILING("fcntl");
    return (int)syscall(SYS_fcntl, file, command, argument);
}

int fcntl64(int file, int command, ...)
{
    va_list rest;
    va_start(rest, command);
    void *argument = va_arg(rest, void *);
    va_end(rest);
    FAILING("fcntl");
    return (int)syscall(SYS_fcntl, file, command, argument);
}

int openat(int directory, const char *path, int flags, ...)
{
    va_list rest;
    va_start(rest, flags);
    const unsigned mode = (flags & (O_CREAT | __O_TMPFILE)) != 0 ? va_arg(rest, unsigned) : 0;
    va_end(rest);
    FAILING("openat");
    return (int)syscall(SYS_openat, directory, path, flags, mode);
}

int open(const char *path, int flags, ...)
{
    va_list rest;
    va_start(rest, flags);
    const unsigned mode = (flags & (O_CREAT | __O_TMPFILE)) != 0 ? va_arg(rest, unsigned) : 0;
    va_end(rest);
    FAILING("open");
    return (int)syscall(SYS_openat, AT_FDCWD, path, flags, mode);
}

int open64(const char *path, int flags, ...)
{
    va_list rest;
    va_start(rest, flags);
    const unsigned mode = (flags & (O_CREAT | __O_TMPFILE)) != 0 ? va_arg(rest, unsigned) : 0;
    va_end(rest);
    FAILING("open");
    return (int)syscall(SYS_openat, AT_FDCWD, path, flags, mode);
}

void *mmap(void *at, size_t size, int protection, int flags, int file, off_t offset)
{
    if (Fails("mmap")) return MAP_FAILED;
    return (void *)syscall(SYS_mmap, at, size, protection, flags, file, offset);
}

void *mmap64(void *at, size_t size, int protection, int flags, int file, off64_t offset)
{
    return mmap(at, size, protection, flags, file, offset);
}

int ftruncate(int file, off_t size)
{
    FAILING("ftruncate");
    return (int)syscall(SYS_ftruncate, file, size);
}

int ftruncate64(int file, off64_t size) { return ftruncate(file, size); }

int dup2(int from, int to)
{
    FAILING("dup2");
    return (int)syscall(SYS_dup2, from, to);
}

int memfd_create(const char *name, unsigned flags)
{
    FAILING("memfd_create");
    return (int)syscall(SYS_memfd_create, name, flags);
}

int mkdir(const char *path, mode_t mode)
{
    FAILING("mkdir");
    return (int)syscall(SYS_mkdir, path, mode);
}

int rename(const char *from, const char *to)
{
    FAILING("rename");
    return (int)syscall(SYS_rename, from, to);
}

int renameat2(int fromDirectory, const char *from, int toDirectory, const char *to, unsigned flags)
{
    FAILING("renameat2");
    return (int)syscall(SYS_renameat2, fromDirectory, from, toDirectory, to, flags);
}

int unlink(const char *path)
{
    FAILING("unlink");
    return (int)syscall(SYS_unlink, path);
}

int pipe2(int ends[2], int flags)
{
    FAILING("pipe2");
    return (int)syscall(SYS_pipe2, ends, flags);
}

int poll(struct pollfd *files, nfds_t count, int timeout)
{
    FAILING("poll");
    return (int)syscall(SYS_poll, files, count, timeout);
}
