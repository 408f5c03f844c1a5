// Every limit of the record manager, with its reason; those of 0 are set by linux/ and windows/.
// One instance, which tests shorten before their first call.
#pragma once

#include <cstddef>
#include <cstdint>

namespace wbtrv {

struct Limits {
    // Address space, not memory: a directory's books can grow to this size.
    size_t MapSize = 0;
    // One reader per thread and directory, over all processes.
    unsigned Readers = 4096;
    // Of one directory: one for each file and one for each of its keys.
    unsigned Trees = 2048;

    // How long a change waits for another's lock or for the one writer of the directory.
    unsigned ChangeWait_ms = 5000;
    // How long a waiting lock request waits when no deadlock is seen.
    unsigned LockWait_ms = 30000;
    // How long a no-wait request outlasts a lock that an update holds only while it is carried out.
    unsigned MomentaryWait_ms = 50;
    // How long an open waits while another process opens or closes the same directory.
    unsigned SetupWait_ms = 5000;

    // Tree changes after which loading commits: a change dirties a page at most, and the store keeps dirty
    // pages in memory up to 131071 of them.
    unsigned LoadingChanges = 100000;

    // How long what was read from a server ahead of being asked for may be given.
    unsigned ReadAhead_ms = 100;
    // How long a server's answer is awaited, beside what the call itself waits for.
    unsigned ServerAnswer_ms = 10000;
    // How long a server is looked for that knows whether a commit whose answer was lost is in the books.
    unsigned ServerTruth_ms = 30000;

    // Directories that stay open in the process after their last file was closed.
    unsigned IdleStores = 0;
};

extern Limits limits;

inline constexpr uint32_t maxRecordLength = 65535;  // fixed and variable part together
inline constexpr uint32_t maxFileNumber = 0xFFFFFF; // fits the field of a lock's offset
inline constexpr size_t maxKeyLength = 255;

} // namespace wbtrv
