#include "record-manager/linux/bounded_mutex.h"

#include <cerrno>
#ifdef __SANITIZE_THREAD__
#include <sanitizer/tsan_interface.h>
#endif

namespace wbtrv {

timespec Now()
{
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now;
}

timespec After(const timespec &from, int64_t time_ns)
{
    const int64_t sum = from.tv_nsec + time_ns;
    return {from.tv_sec + static_cast<time_t>(sum / 1000000000), static_cast<long>(sum % 1000000000)};
}

bool IsBefore(const timespec &one, const timespec &other)
{
    return one.tv_sec != other.tv_sec ? one.tv_sec < other.tv_sec : one.tv_nsec < other.tv_nsec;
}

int LockBefore(pthread_mutex_t *mutex, const timespec &deadline)
{
    int error = pthread_mutex_trylock(mutex);
    if (error != EBUSY) return error;
#ifdef __SANITIZE_THREAD__
    // The thread sanitizer does not know this call, and untold takes what the mutex guards for unguarded.
    __tsan_mutex_pre_lock(mutex, __tsan_mutex_try_lock);
#endif
    error = pthread_mutex_clocklock(mutex, CLOCK_MONOTONIC, &deadline);
#ifdef __SANITIZE_THREAD__
    const bool locked = error == 0 || error == EOWNERDEAD;
    __tsan_mutex_post_lock(mutex, locked ? __tsan_mutex_try_lock : __tsan_mutex_try_lock_failed, 0);
#endif
    return error;
}

} // namespace wbtrv
