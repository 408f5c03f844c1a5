#include "src/platform/platform.h"

#include <pthread.h>

namespace vark {

namespace {

pthread_key_t slot;
pthread_once_t once = PTHREAD_ONCE_INIT;

} // namespace

bool AllocateThreadSlot(void (*release)(void *value)) { return pthread_key_create(&slot, release) == 0; }

void *ThreadSlotValue() { return pthread_getspecific(slot); }

bool SetThreadSlotValue(void *value) { return pthread_setspecific(slot, value) == 0; }

void RunOnce(void (*body)()) { pthread_once(&once, body); }

void OnFork(void (*dropInherited)()) { pthread_atfork(nullptr, nullptr, dropInherited); }

} // namespace vark
