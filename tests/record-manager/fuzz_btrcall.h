// Calls of BTRCALL read from bytes: for the fuzz target and for a short run in the tests.
#pragma once

#include <cstddef>
#include <cstdint>

namespace wbtrvtest {

// Makes the calls that the bytes say, by two clients, some with a failing store, on books of their own.
// Throws when a call gives a status that does not exist, changes the length it was given without succeeding,
// or leaves behind a file that does not hold together or a lock. Returns how many calls succeeded.
int RunCalls(const uint8_t *data, size_t size);

} // namespace wbtrvtest
