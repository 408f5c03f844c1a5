// Memory that may be refused. Every allocation of the window system goes through here, so that a test can
// have the n-th one fail.
#pragma once

#include <cstddef>

namespace varkui {

// Zeroed memory, null when there is none.
void *Allocate(size_t size);

// `block` in its new size with its old content, null when there is none; `block` stays as it is then.
void *Reallocate(void *block, size_t size);

void Release(void *block);

// A copy of `length` bytes of `text` with a NUL behind; null when there is no memory.
char *CopyText(const char *text, size_t length);

// Has the allocation after `count` further ones fail, once; negative for none.
void FailAllocationAfter(long count);

// How many further ones succeed before; negative when it has failed already.
long AllocationsToFailure();

} // namespace varkui
