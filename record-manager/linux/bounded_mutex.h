// Waiting for a mutex that other processes share, for no longer than a time.
#pragma once

#include <cstdint>
#include <ctime>
#include <pthread.h>

namespace wbtrv {

// On the monotonic clock.
timespec Now();
timespec After(const timespec &from, int64_t time_ns);
bool IsBefore(const timespec &one, const timespec &other);

// Returns as pthread_mutex_lock does, EOWNERDEAD too, or ETIMEDOUT.
int LockBefore(pthread_mutex_t *mutex, const timespec &deadline);

} // namespace wbtrv
