#include "record-manager/gate.h"

#include "host/descriptors.h"
#include "record-manager/include/btrcall.h"
#include "record-manager/linux/bounded_mutex.h"
#include "record-manager/waits.h"

#include <algorithm>
#include <array> // std::begin
#include <atomic>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace wbtrv {

namespace {

constexpr char gateName[] = "books.mdb-gate";
constexpr uint32_t gateMagic = 0x45544147; // "GATE"
constexpr uint32_t gateLayout = 2;

// Where a queue was left in disorder by somebody who died in its door, it is looked at again after this time.
constexpr int64_t longestNap_ns = 100000000;

} // namespace

// More who wait at once than have a place in the queue wait beside it, in no order.
inline constexpr size_t places = 512;

// A queue of places, each a mutex that its owner holds while it waits: who comes next waits for the mutex of
// the place before, so a place whose owner died or gave up opens by itself. Only the first in the queue waits
// for Holder. The links are guarded by Door; a link is a place's number and 1, or 0.
struct Gate {
    uint32_t Magic;
    uint32_t Layout;
    pthread_mutex_t Door;
    pthread_mutex_t Holder;
    std::atomic<uint32_t> HolderExclusive;
    uint16_t Last;
    uint16_t Before[places];
    uint16_t Awaits[places]; // the place whose mutex the owner of this one waits for
    pthread_mutex_t Turn[places];
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
    const int error = LockBefore(mutex, deadline);
    return error == EOWNERDEAD ? pthread_mutex_consistent(mutex) : error;
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
            do {
                errno = posix_fallocate(fd, 0, sizeof(Gate));
            } while (errno == EINTR);
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
        bool made = InitMutex(&mapped->Door) && InitMutex(&mapped->Holder);
        for (size_t i = 0; i < places && made; ++i) {
            made = InitMutex(&mapped->Turn[i]);
        }
        if (!made) status = BtrStatusIoError;
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

namespace {

constexpr size_t noPlace = places;

// Somebody who died in the door may have left links half changed. Those who wait then find nobody before.
int LockDoor(Gate *gate, const timespec &deadline)
{
    const int error = LockBefore(&gate->Door, deadline);
    if (error != EOWNERDEAD) return error;
    gate->Last = 0;
    memset(gate->Before, 0, sizeof gate->Before);
    memset(gate->Awaits, 0, sizeof gate->Awaits);
    return pthread_mutex_consistent(&gate->Door);
}

// Takes a place out of the queue.
void Unlink(Gate *gate, size_t place)
{
    const auto link = static_cast<uint16_t>(place + 1);
    const uint16_t before = gate->Before[place];
    for (uint16_t &other : gate->Before) {
        if (other == link) other = before;
    }
    if (gate->Last == link) gate->Last = before;
    gate->Before[place] = 0;
    gate->Awaits[place] = 0;
}

bool IsAwaited(const Gate *gate, size_t place)
{
    return std::find(std::begin(gate->Awaits), std::end(gate->Awaits), place + 1) != std::end(gate->Awaits);
}

// Puts the caller at the end of the queue.
size_t TakePlace(Gate *gate)
{
    for (size_t place = 0; place < places; ++place) {
        const int error = pthread_mutex_trylock(&gate->Turn[place]);
        if (error != 0 && error != EOWNERDEAD) continue;
        if (error == EOWNERDEAD) (void)pthread_mutex_consistent(&gate->Turn[place]);
        Unlink(gate, place);
        if (IsAwaited(gate, place)) {
            pthread_mutex_unlock(&gate->Turn[place]);
            continue;
        }
        gate->Before[place] = gate->Last;
        gate->Last = static_cast<uint16_t>(place + 1);
        return place;
    }
    return noPlace;
}

// Waits until nobody is before the place. The door is locked when it is called and when it returns 0.
int WaitForTurn(Gate *gate, size_t place, const timespec &deadline)
{
    while (gate->Before[place] != 0) {
        const size_t before = gate->Before[place] - 1u;
        gate->Awaits[place] = gate->Before[place];
        pthread_mutex_unlock(&gate->Door);
        const timespec nap = After(Now(), longestNap_ns);
        const int waited = LockUntil(&gate->Turn[before], IsBefore(nap, deadline) ? nap : deadline);
        if (waited == 0) pthread_mutex_unlock(&gate->Turn[before]);
        if (waited != 0 && !IsBefore(Now(), deadline)) return ETIMEDOUT;
        const int error = LockDoor(gate, deadline);
        if (error != 0) return error;
        gate->Awaits[place] = 0;
        if (waited == 0 && gate->Before[place] == before + 1) Unlink(gate, before);
    }
    return 0;
}

// Takes the holder's mutex in the order in which the callers came.
int WaitInQueue(Gate *gate, const timespec &deadline)
{
    int error = LockDoor(gate, deadline);
    if (error != 0) return error;
    if (gate->Last == 0) {
        error = pthread_mutex_trylock(&gate->Holder);
        if (error != EBUSY) {
            pthread_mutex_unlock(&gate->Door);
            return error == EOWNERDEAD ? pthread_mutex_consistent(&gate->Holder) : error;
        }
    }
    const size_t place = TakePlace(gate);
    if (place == noPlace) {
        pthread_mutex_unlock(&gate->Door);
        return LockUntil(&gate->Holder, deadline);
    }
    error = WaitForTurn(gate, place, deadline);
    if (error == 0) {
        pthread_mutex_unlock(&gate->Door);
        error = LockUntil(&gate->Holder, deadline);
    }
    // Who comes next does this itself where the door stays shut.
    if (LockDoor(gate, Now()) == 0) {
        Unlink(gate, place);
        pthread_mutex_unlock(&gate->Door);
    }
    pthread_mutex_unlock(&gate->Turn[place]);
    return error;
}

} // namespace

int16_t EnterGate(Gate *gate, unsigned wait_ms, bool exclusive)
{
    const int error = WaitInQueue(gate, After(Now(), int64_t{wait_ms} * 1000000));
    if (error == ETIMEDOUT) {
        return gate->HolderExclusive.load(std::memory_order_relaxed) != 0 ? BtrStatusFileLocked
                                                                          : BtrStatusRecordLocked;
    }
    if (error != 0) return BtrStatusIoError;
    gate->HolderExclusive.store(exclusive ? 1 : 0, std::memory_order_relaxed);
    return BtrStatusOk;
}

unsigned CountWaiting(Gate *gate)
{
    if (LockDoor(gate, After(Now(), longestNap_ns)) != 0) return 0;
    unsigned count = 0;
    for (size_t link = gate->Last; link != 0 && count < places; link = gate->Before[link - 1]) {
        ++count;
    }
    pthread_mutex_unlock(&gate->Door);
    return count;
}

void LeaveGate(Gate *gate) { pthread_mutex_unlock(&gate->Holder); }

} // namespace wbtrv
