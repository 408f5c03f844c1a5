#include "src/platform/platform.h"
#include "src/platform/windows/detach.h"

#include <windows.h>

namespace vark {

namespace {

DWORD slot = TLS_OUT_OF_INDEXES;
void (*releaseValue)(void *value);
INIT_ONCE once = INIT_ONCE_STATIC_INIT;

BOOL CALLBACK RunBody(PINIT_ONCE, PVOID body, PVOID *)
{
    reinterpret_cast<void (*)()>(body)();
    return TRUE;
}

} // namespace

bool AllocateThreadSlot(void (*release)(void *value))
{
    releaseValue = release;
    slot = TlsAlloc();
    return slot != TLS_OUT_OF_INDEXES;
}

void *ThreadSlotValue() { return TlsGetValue(slot); }

bool SetThreadSlotValue(void *value) { return TlsSetValue(slot, value) != 0; }

void RunOnce(void (*body)()) { InitOnceExecuteOnce(&once, RunBody, reinterpret_cast<void *>(body), nullptr); }

void OnFork(void (*)()) {}

void DetachThread()
{
    if (slot == TLS_OUT_OF_INDEXES) return;
    void *const value = TlsGetValue(slot);
    if (value == nullptr) return;
    releaseValue(value);
    TlsSetValue(slot, nullptr);
}

void DetachProcess()
{
    DetachThread();
    if (slot != TLS_OUT_OF_INDEXES) TlsFree(slot);
}

} // namespace vark
