#include "src/platform/platform.h"
#include "src/platform/windows/detach.h"

#include <atomic>
#include <windows.h>

namespace vark {

namespace {

DWORD slot = TLS_OUT_OF_INDEXES;
void (*releaseValue)(void *value);
INIT_ONCE once = INIT_ONCE_STATIC_INIT;
std::atomic<DWORD> runner; // the thread that is within; none has the number 0

BOOL CALLBACK RunBody(PINIT_ONCE, PVOID body, PVOID *)
{
    runner.store(GetCurrentThreadId());
    reinterpret_cast<void (*)()>(body)();
    runner.store(0);
    return TRUE;
}

void DetachThread()
{
    if (slot == TLS_OUT_OF_INDEXES) return;
    void *const value = TlsGetValue(slot);
    if (value == nullptr) return;
    releaseValue(value);
    TlsSetValue(slot, nullptr);
}

void NTAPI OnThread(PVOID, DWORD reason, PVOID)
{
    if (reason == DLL_THREAD_DETACH) DetachThread();
}

} // namespace

// The loader calls what stands in this section when a thread ends, in a DLL as well as in a program that is
// made of the same objects; an entry point only a DLL has.
extern "C" {
extern const PIMAGE_TLS_CALLBACK varkOnThread;
__attribute__((section(".CRT$XLK"), used)) const PIMAGE_TLS_CALLBACK varkOnThread = OnThread;
}

bool AllocateThreadSlot(void (*release)(void *value))
{
    releaseValue = release;
    slot = TlsAlloc();
    return slot != TLS_OUT_OF_INDEXES;
}

void *ThreadSlotValue() { return TlsGetValue(slot); }

bool SetThreadSlotValue(void *value) { return TlsSetValue(slot, value) != 0; }

// A part that the body loads may ask the library something as it begins, and would wait for itself.
void RunOnce(void (*body)())
{
    if (runner.load() == GetCurrentThreadId()) return;
    InitOnceExecuteOnce(&once, RunBody, reinterpret_cast<void *>(body), nullptr);
}

void OnFork(void (*)()) {}

void DetachProcess()
{
    DetachThread();
    if (slot != TLS_OUT_OF_INDEXES) TlsFree(slot);
    slot = TLS_OUT_OF_INDEXES;
}

} // namespace vark
