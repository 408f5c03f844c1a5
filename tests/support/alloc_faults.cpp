#include "tests/support/alloc_faults.h"

#include <cstddef>
#include <mutex>
#include <unordered_set>

namespace {

// Their own memory comes from the C++ library, which is not led here.
std::mutex liveMutex;
std::unordered_set<void *> &Live()
{
    // Never destroyed: blocks are freed until the very end of the process.
    static auto *const blocks = new std::unordered_set<void *>;
    return *blocks;
}

void *Note(void *block)
{
    const std::lock_guard<std::mutex> guard(liveMutex);
    if (block != nullptr) Live().insert(block);
    return block;
}

// Blocks of other origin are unknown here.
void Forget(void *block)
{
    const std::lock_guard<std::mutex> guard(liveMutex);
    Live().erase(block);
}

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

void __real_free(void *block); // NOLINT

void *__wrap_malloc(size_t size) { return IsRefused() ? nullptr : Note(__real_malloc(size)); } // NOLINT

void *__wrap_calloc(size_t count, size_t size) // NOLINT
{
    return IsRefused() ? nullptr : Note(__real_calloc(count, size));
}

void *__wrap_realloc(void *block, size_t size) // NOLINT
{
    if (IsRefused()) return nullptr;
    // Forgotten before it is given up: another thread may get the same address at once.
    Forget(block);
    void *moved = __real_realloc(block, size);
    Note(moved != nullptr ? moved : block);
    return moved;
}

void __wrap_free(void *block) // NOLINT
{
    Forget(block);
    __real_free(block);
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

long LiveAllocations()
{
    const std::lock_guard<std::mutex> guard(liveMutex);
    return static_cast<long>(Live().size());
}

} // namespace vark::test
