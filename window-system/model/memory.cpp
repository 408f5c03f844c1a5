#include "window-system/model/memory.h"

#include <atomic>
#include <cstdlib>
#include <cstring>

namespace varkui {

namespace {

std::atomic<long> allocationsToFailure{-1};

bool Refused()
{
    if (allocationsToFailure.load(std::memory_order_relaxed) < 0) return false;
    return allocationsToFailure.fetch_sub(1, std::memory_order_relaxed) == 0;
}

} // namespace

void *Allocate(size_t size) { return Refused() ? nullptr : calloc(1, size != 0 ? size : 1); }

void *Reallocate(void *block, size_t size)
{
    return Refused() ? nullptr : realloc(block, size != 0 ? size : 1);
}

void Release(void *block) { free(block); }

char *CopyText(const char *text, size_t length)
{
    char *copy = static_cast<char *>(Allocate(length + 1));
    if (copy == nullptr) return nullptr;
    memcpy(copy, text, length);
    copy[length] = 0;
    return copy;
}

void FailAllocationAfter(long count) { allocationsToFailure = count; }

long AllocationsToFailure() { return allocationsToFailure; }

} // namespace varkui
