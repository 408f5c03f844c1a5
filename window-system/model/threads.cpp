#include "window-system/model/threads.h"

#include "window-system/model/as_pointer.h"
#include "window-system/model/memory.h"
#include "window-system/model/model.h"
#include "window-system/model/window.h"

#include <unistd.h>

namespace varkui {

ThreadEvents threadEvents;

namespace {

pthread_once_t slotOnce = PTHREAD_ONCE_INIT;
pthread_key_t slot;
bool slotMade;
thread_local Thread *self;

constexpr ULONG_PTR arrowCursor = 32512;

void OnThreadEnd(void *value)
{
    auto *thread = static_cast<Thread *>(value);
    self = nullptr;
    Lock();
    threadEvents.Ends(thread);
    Unlock();
    if (thread->Descriptor >= 0) close(thread->Descriptor);
    pthread_cond_destroy(&thread->Wake);
    Release(thread);
}

// A forked child has one thread and no windows. The lock is held around fork and so is free in both
// processes.
void AfterForkInChild()
{
    self = nullptr;
    pthread_setspecific(slot, nullptr);
    model.Threads = nullptr;
    threadEvents.Forked();
    pthread_mutex_init(&model.Lock, nullptr);
}

void MakeSlot()
{
    slotMade = pthread_key_create(&slot, OnThreadEnd) == 0;
    pthread_atfork([] { pthread_mutex_lock(&model.Lock); }, [] { pthread_mutex_unlock(&model.Lock); },
                   AfterForkInChild);
}

} // namespace

Thread *Self()
{
    if (self != nullptr) return self;
    pthread_once(&slotOnce, MakeSlot);
    if (!slotMade) return nullptr;
    auto *thread = static_cast<Thread *>(Allocate(sizeof(Thread)));
    if (thread == nullptr) return nullptr;
    thread->Descriptor = -1;
    thread->Cursor = AsPointer<HCURSOR>(arrowCursor);
    pthread_cond_init(&thread->Wake, nullptr);
    if (pthread_setspecific(slot, thread) != 0) {
        pthread_cond_destroy(&thread->Wake);
        Release(thread);
        return nullptr;
    }
    thread->Next = model.Threads;
    model.Threads = thread;
    self = thread;
    return thread;
}

bool IsWindowOfCaller(const Window *window) { return window != nullptr && window->Thread == Self(); }

void WakeThread(Thread *thread)
{
    pthread_cond_broadcast(&thread->Wake);
    if (thread->Descriptor < 0) return;
    const uint64_t one = 1;
    const ssize_t written = write(thread->Descriptor, &one, sizeof one); // full means readable already
    static_cast<void>(written);
}

void WakeAllThreads()
{
    for (Thread *thread = model.Threads; thread != nullptr; thread = thread->Next) {
        WakeThread(thread);
    }
}

} // namespace varkui
