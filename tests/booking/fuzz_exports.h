// Calls of every export but the reports, read from bytes: for the fuzz target and for a short run in the
// tests.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vark::test {

// Makes the calls that the bytes say, some of them with a failing record manager, on books
// that are made at the first time and stay. Throws when a call gives a code that it does not have, leaves a
// transaction open, or has written something in part. Returns how many calls gave 1.
int RunCalls(const uint8_t *data, size_t size);

} // namespace vark::test
