// What differs between Linux and Windows beside the gate (gate.h), the locks of ranges (range_locks.h)
// and the store's own half (lmdb/). Everything else is the same on both.
#pragma once

#include <cstddef>
#include <cstdint>

namespace wbtrv {

struct ServerPart;

// ---- Paths ----

// Where the last name of a path begins, and how long the directory before it is, without the separator
// unless that is all there is. The name is never longer than what lies behind the last separator.
size_t NameIn(const char *path, size_t length);
size_t DirectoryBefore(const char *path, size_t name);

// Whether the directory has an entry of this name, a broken link too.
bool IsThere(const char *directory, const char *name);

// ---- Processes ----

uint32_t OwnProcess();
// Whether there is no process of this number any more.
bool HasEnded(uint32_t process);

// Has these called around every fork. Windows knows none.
void OnFork(void (*before)(), void (*inParent)(), void (*inChild)());

// Whether the process is being ended and its other threads are gone already, with whatever they had locked.
bool IsProcessEnding();

// ---- Parts ----

// Writes "wbtrv32: PLACE: WHAT" on standard error.
void Tell(const char *place, const char *what);

// The part for books on a server, loaded at the first call that succeeds; null, and told, where there is
// none.
const ServerPart *LoadServerPart();

} // namespace wbtrv
