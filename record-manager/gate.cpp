#include "record-manager/gate.h"

#include "host/descriptors.h"
#include "record-manager/btrcall.h"

#include <atomic>
#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#ifdef __SANITIZE_THREAD__
#include <sanitizer/tsan_interface.h>
#endif

namespace wbtrv {

namespace {

constexpr char gateName[] = "books.mdb-gate";
constexpr uint32_t gateMagic = 0x45544147; // "GATE"
constexpr uint32_t gateLayout = 1;

} // namespace

// Whoever wants in waits at Next before it waits for Holder, and lets go of Next once inside. So the one who
// just left cannot overtake the first of those who wait, which with a lone mutex it nearly always would.
struct Gate {
    uint32_t Magic;
    uint32_t Layout;
    pthread_mutex_t Next;
    pthread_mutex_t Holder;
    std::atomic<uint32_t> HolderExclusive;
    WaitTable Waits;
};

namespace {

bool InitMutex(pthread_mutex_t *mutex)
{
    pthread_mutexattr_t attributes;
    if (pthread_mutexattr_init(&attributes) != 0) return false;
    const bool done = pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED) == 0 &&
                      pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST) == 0 &&
                      pthread_mutex_init(mutex, &attributes) == 0;
    pthread_mutexattr_destroy(&attributes);
    return done;
}

// Nothing but the lock itself lies behind these mutexes, so what a dead owner leaves is in order.
int LockUntil(pthread_mutex_t *mutex, const timespec &deadline)
{
    int error = pthread_mutex_trylock(mutex);
    if (error == EBUSY) {
#ifdef __SANITIZE_THREAD__
        // The thread sanitizer does not know this call, and untold takes what the gate guards for unguarded.
        __tsan_mutex_pre_lock(mutex, __tsan_mutex_try_lock);
#endif
        error = pthread_mutex_clocklock(mutex, CLOCK_MONOTONIC, &deadline);
#ifdef __SANITIZE_THREAD__
        const bool locked = error == 0 || error == EOWNERDEAD;
        __tsan_mutex_post_lock(mutex, locked ? __tsan_mutex_try_lock : __tsan_mutex_try_lock_failed, 0);
#endif
    }
    if (error == EOWNERDEAD) error = pthread_mutex_consistent(mutex);
    return error;
}

int16_t StatusOfErrno()
{
    switch (errno) {
    case ENOSPC:
    case EDQUOT: return BtrStatusDiskFull;
    case EACCES:
    case EPERM:
    case EROFS: return BtrStatusPermission;
    case EMFILE:
    case ENFILE: return BtrStatusFileTableFull;
    default: return BtrStatusIoError;
    }
}

} // namespace

int16_t OpenGate(int directoryFd, bool fresh, Gate **gate)
{
    const int flags = fresh ? O_RDWR | O_CREAT | O_NOFOLLOW : O_RDWR | O_NOFOLLOW;
    const int fd = host::OpenFile(directoryFd, gateName, flags);
    if (fd < 0) return StatusOfErrno();
    // Blocks are taken now: a hole in a mapped file is a signal on a full disk.
    int16_t status = BtrStatusOk;
    struct stat found;
    if (fresh) {
        if (ftruncate(fd, 0) != 0) status = StatusOfErrno();
        if (status == BtrStatusOk) {
            errno = posix_fallocate(fd, 0, sizeof(Gate));
            if (errno != 0) status = StatusOfErrno();
        }
    } else if (fstat(fd, &found) != 0 || found.st_size < static_cast<off_t>(sizeof(Gate))) {
        status = BtrStatusIoError;
    }
    void *memory = MAP_FAILED;
    if (status == BtrStatusOk) {
        memory = mmap(nullptr, sizeof(Gate), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
        if (memory == MAP_FAILED) status = StatusOfErrno();
    }
    close(fd);
    if (status != BtrStatusOk) return status;

    auto *mapped = static_cast<Gate *>(memory);
    if (fresh) {
        if (!InitMutex(&mapped->Next) || !InitMutex(&mapped->Holder)) status = BtrStatusIoError;
        mapped->Layout = gateLayout;
        mapped->Magic = gateMagic;
    } else if (mapped->Magic != gateMagic || mapped->Layout != gateLayout) {
        status = BtrStatusIoError;
    }
    if (status != BtrStatusOk) {
        CloseGate(mapped);
        return status;
    }
    *gate = mapped;
    return BtrStatusOk;
}

void CloseGate(Gate *gate) { munmap(gate, sizeof *gate); }

WaitTable *WaitsOf(Gate *gate) { return &gate->Waits; }

int16_t EnterGate(Gate *gate, unsigned wait_ms, bool exclusive)
{
    timespec deadline;
    clock_gettime(CLOCK_MONOTONIC, &deadline);
    deadline.tv_sec += static_cast<time_t>(wait_ms / 1000);
    deadline.tv_nsec += static_cast<long>(wait_ms % 1000) * 1000000;
    if (deadline.tv_nsec >= 1000000000) {
        deadline.tv_nsec -= 1000000000;
        deadline.tv_sec++;
    }
    int error = LockUntil(&gate->Next, deadline);
    if (error == 0) {
        error = LockUntil(&gate->Holder, deadline);
        pthread_mutex_unlock(&gate->Next);
    }
    if (error == ETIMEDOUT) {
        return gate->HolderExclusive.load(std::memory_order_relaxed) != 0 ? BtrStatusFileLocked
                                                                          : BtrStatusRecordLocked;
    }
    if (error != 0) return BtrStatusIoError;
    gate->HolderExclusive.store(exclusive ? 1 : 0, std::memory_order_relaxed);
    return BtrStatusOk;
}

void LeaveGate(Gate *gate) { pthread_mutex_unlock(&gate->Holder); }

} // namespace wbtrv
