// Memory that runs out on demand: the library's own allocations, and those of the test itself that go through
// malloc, calloc and realloc. The linker leads them here (--wrap); what the record manager and the C++
// library allocate is not touched.
#pragma once

namespace vark::test {

// From now on this thread's allocations are counted, and number `n` (from 1) gives null; 0 only counts.
void FailAllocation(int n);

// Ends it. Returns how many allocations have been counted.
int StopAllocationFaults();

// Blocks that have been allocated so, by any thread, and not been freed.
long LiveAllocations();

} // namespace vark::test
