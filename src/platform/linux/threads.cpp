#include "src/platform/platform.h"

#include <atomic>
#include <pthread.h>

namespace vark {

namespace {

pthread_key_t slot;
pthread_once_t once = PTHREAD_ONCE_INIT;
std::atomic<void (*)()> wanted;
std::atomic<pthread_t> runner; // the thread that is within; none has the number 0

void RunBody()
{
    runner.store(pthread_self());
    wanted.load()();
    runner.store(0);
}

} // namespace

bool AllocateThreadSlot(void (*release)(void *value)) { return pthread_key_create(&slot, release) == 0; }

void *ThreadSlotValue() { return pthread_getspecific(slot); }

bool SetThreadSlotValue(void *value) { return pthread_setspecific(slot, value) == 0; }

// A part that the body loads may ask the library something as it begins, and would wait for itself.
void RunOnce(void (*body)())
{
    if (runner.load() == pthread_self()) return;
    if (wanted.load() == nullptr) wanted.store(body);
    pthread_once(&once, RunBody);
}

void OnFork(void (*dropInherited)()) { pthread_atfork(nullptr, nullptr, dropInherited); }

} // namespace vark
