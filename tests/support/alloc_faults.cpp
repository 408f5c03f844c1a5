#include "tests/support/alloc_faults.h"

#include <cstddef>

namespace {

thread_local bool armed;
thread_local int countdown;
thread_local int counted;

bool IsRefused() { return armed && ++counted == countdown; }

} // namespace

// Visible, since the sanitizers' libraries are bound to these names as well.
#pragma GCC visibility push(default)
extern "C" {

void *__real_malloc(size_t size);               // NOLINT: the linker's name
void *__real_calloc(size_t count, size_t size); // NOLINT
void *__real_realloc(void *block, size_t size); // NOLINT

void *__wrap_malloc(size_t size) { return IsRefused() ? nullptr : __real_malloc(size); } // NOLINT

void *__wrap_calloc(size_t count, size_t size) // NOLINT
{
    return IsRefused() ? nullptr : __real_calloc(count, size);
}

void *__wrap_realloc(void *block, size_t size) // NOLINT
{
    return IsRefused() ? nullptr : __real_realloc(block, size);
}
}
#pragma GCC visibility pop

namespace vark::test {

void FailAllocation(int n)
{
    countdown = n;
    counted = 0;
    armed = true;
}

int StopAllocationFaults()
{
    armed = false;
    return counted;
}

} // namespace vark::test
