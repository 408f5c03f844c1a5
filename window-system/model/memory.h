// Allocation without exceptions. All memory of the window system comes from here, so that a test can fail the
// n-th allocation.
#pragma once

#include <cstddef>

namespace varkui {

// Zeroed memory; null on failure.
void *Allocate(size_t size);

// `block` in its new size with its old content; null on failure, and `block` stays valid.
void *Reallocate(void *block, size_t size);

// Frees a block of Allocate or Reallocate; null is fine.
void Release(void *block);

// A copy of `length` bytes of `text` with a NUL behind; null on failure.
char *CopyText(const char *text, size_t length);

// Fails one allocation, after `count` more have succeeded; negative fails none.
void FailAllocationAfter(long count);

// The number of allocations left before that failure; negative once it has happened.
long AllocationsToFailure();

} // namespace varkui
