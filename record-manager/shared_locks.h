// Locks that the clients of a process hold together, through one description of the books' file: which files
// are open and how. Between themselves the clients count; other processes see the lock. What a client locks
// for itself, records and whole files, needs a description of its own, which it has as long as it holds some.
#pragma once

#include "record-manager/range_locks.h"

#include <cstdint>
#include <pthread.h>

namespace wbtrv {

inline constexpr unsigned mostSpareDescriptions = 8;

struct OpenLock {
    OpenLock *Next;
    uint32_t Number; // of the file
    unsigned Clients;
    bool Alone; // one client has it open exclusively, or is replacing it
};

// Guarded by Mutex, except in a forked child.
struct SharedLocks {
    pthread_mutex_t Mutex;
    int Fd;
    OpenLock *Files;
    unsigned Using; // clients that have files open
    bool Loading;   // by the one of them
    unsigned Spares;
    int Spare[mostSpareDescriptions]; // without locks, for the next who needs one
};

// A client has a file open, or opens it `alone`. `holds`: it has called this before, and only changes how it
// is open. Fails at once where another client is in the way, of this process or another.
LockResult HoldOpen(SharedLocks &locks, uint32_t number, bool alone, bool holds);
void DropOpen(SharedLocks &locks, uint32_t number);

// A client uses the directory, or is `loading` and wants it alone. `uses` and `loads`: as it is before.
LockResult HoldUsage(SharedLocks &locks, bool loading, bool uses, bool loads);
// `uses` and `loads`: as it stays.
void DropUsage(SharedLocks &locks, bool uses, bool loads, bool wasLoading);

// A description that was given back, or below 0. The caller sees that no fork comes between.
int TakeSpareDescription(SharedLocks &locks);
// Keeps a description without locks, or closes it.
void GiveDescription(SharedLocks &locks, int fd);

// Closes what is left of descriptions and frees the tables.
void FreeSharedLocks(SharedLocks &locks);

} // namespace wbtrv
