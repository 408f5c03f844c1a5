// The gate as a mutex that has a name: the system wakes those who wait in the order in which they came,
// and tells the next one when its holder died. What processes share beside it lies in a mapped file.
#include "record-manager/gate.h"

#include "record-manager/include/btrcall.h"
#include "record-manager/waits.h"
#include "record-manager/windows/handles.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <windows.h>

namespace wbtrv {

namespace {

constexpr char gateName[] = "books.mdb-gate";
constexpr uint32_t gateMagic = 0x45544147; // "GATE"
constexpr uint32_t gateLayout = 101;       // 1 and 2 are those of Linux

// What the file holds.
struct SharedGate {
    uint32_t Magic;
    uint32_t Layout;
    std::atomic<uint32_t> HolderExclusive;
    std::atomic<uint32_t> Waiting;
    WaitTable Waits;
};

} // namespace

struct Gate {
    HANDLE Holder;
    SharedGate *Shared;
    std::atomic<DWORD> HoldingThread; // of this process; the system would let it in again
};

namespace {

// Every user of the books may wait at the gate, in whatever session.
HANDLE MakeMutex(const char *name)
{
    SECURITY_DESCRIPTOR everybody;
    InitializeSecurityDescriptor(&everybody, SECURITY_DESCRIPTOR_REVISION);
    SetSecurityDescriptorDacl(&everybody, TRUE, nullptr, FALSE);
    SECURITY_ATTRIBUTES attributes{sizeof attributes, &everybody, FALSE};
    return CreateMutexA(&attributes, FALSE, name);
}

HANDLE MakeMutexOf(HANDLE directory)
{
    BY_HANDLE_FILE_INFORMATION found;
    if (!GetFileInformationByHandle(directory, &found)) return nullptr;
    char name[64];
    snprintf(name, sizeof name, "Global\\WBTRV32-%08lx-%08lx%08lx", found.dwVolumeSerialNumber,
             found.nFileIndexHigh, found.nFileIndexLow);
    return MakeMutex(name);
}

// Maps the file. A fresh one is emptied of what its users of before have left.
int16_t MapShared(HANDLE file, bool fresh, SharedGate **out)
{
    LARGE_INTEGER size{};
    if (fresh) {
        size.QuadPart = sizeof(SharedGate);
        if (!SetFilePointerEx(file, size, nullptr, FILE_BEGIN) || !SetEndOfFile(file))
            return StatusOfSystem(GetLastError());
    } else if (!GetFileSizeEx(file, &size) || size.QuadPart < static_cast<LONGLONG>(sizeof(SharedGate))) {
        return BtrStatusIoError;
    }
    HANDLE mapping = CreateFileMappingA(file, nullptr, PAGE_READWRITE, 0, sizeof(SharedGate), nullptr);
    if (mapping == nullptr) return StatusOfSystem(GetLastError());
    void *memory = MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, sizeof(SharedGate));
    const DWORD error = GetLastError();
    CloseHandle(mapping);
    if (memory == nullptr) return StatusOfSystem(error);
    auto *shared = static_cast<SharedGate *>(memory);
    if (fresh) {
        memset(memory, 0, sizeof *shared);
        shared->Layout = gateLayout;
        shared->Magic = gateMagic;
    } else if (shared->Magic != gateMagic || shared->Layout != gateLayout) {
        UnmapViewOfFile(memory);
        return BtrStatusIoError;
    }
    *out = shared;
    return BtrStatusOk;
}

int16_t OpenShared(HANDLE directory, bool fresh, SharedGate **out)
{
    char path[2 * MAX_PATH];
    const DWORD length = GetFinalPathNameByHandleA(directory, path, MAX_PATH, FILE_NAME_NORMALIZED);
    if (length == 0 || length >= MAX_PATH) return BtrStatusIoError;
    snprintf(path + length, sizeof path - length, "\\%s", gateName);
    const int fd = OpenShareable(path, GENERIC_READ | GENERIC_WRITE, fresh ? OPEN_ALWAYS : OPEN_EXISTING);
    if (fd < 0) return StatusOfSystem(GetLastError());
    const int16_t status = MapShared(HandleOf(fd), fresh, out);
    CloseDescriptor(fd);
    return status;
}

} // namespace

int16_t OpenGate(int directoryFd, bool fresh, Gate **gate)
{
    auto *made = static_cast<Gate *>(calloc(1, sizeof(Gate)));
    if (made == nullptr) return BtrStatusHandleTableFull;
    int16_t status = OpenShared(HandleOf(directoryFd), fresh, &made->Shared);
    if (status == BtrStatusOk) {
        made->Holder = MakeMutexOf(HandleOf(directoryFd));
        if (made->Holder == nullptr) status = StatusOfSystem(GetLastError());
    }
    if (status != BtrStatusOk) {
        CloseGate(made);
        return status;
    }
    *gate = made;
    return BtrStatusOk;
}

void CloseGate(Gate *gate)
{
    if (gate->Shared != nullptr) UnmapViewOfFile(gate->Shared);
    if (gate->Holder != nullptr) CloseHandle(gate->Holder);
    free(gate);
}

WaitTable *WaitsOf(Gate *gate) { return &gate->Shared->Waits; }

namespace {

// Nothing but the lock itself lies behind the mutex, so what a dead holder leaves is in order.
DWORD WaitFor(Gate *gate, unsigned wait_ms)
{
    const DWORD result = WaitForSingleObject(gate->Holder, wait_ms);
    return result == WAIT_ABANDONED ? WAIT_OBJECT_0 : result;
}

} // namespace

int16_t EnterGate(Gate *gate, unsigned wait_ms, bool exclusive)
{
    const bool own = gate->HoldingThread.load() == GetCurrentThreadId();
    DWORD result = own ? WAIT_TIMEOUT : WaitFor(gate, 0);
    if (!own && result == WAIT_TIMEOUT && wait_ms > 0) {
        gate->Shared->Waiting.fetch_add(1);
        result = WaitFor(gate, wait_ms);
        gate->Shared->Waiting.fetch_sub(1);
    }
    if (result == WAIT_TIMEOUT) {
        return gate->Shared->HolderExclusive.load() != 0 ? BtrStatusFileLocked : BtrStatusRecordLocked;
    }
    if (result != WAIT_OBJECT_0) return BtrStatusIoError;
    gate->HoldingThread.store(GetCurrentThreadId());
    gate->Shared->HolderExclusive.store(exclusive ? 1 : 0);
    return BtrStatusOk;
}

unsigned CountWaiting(Gate *gate) { return gate->Shared->Waiting.load(); }

void LeaveGate(Gate *gate)
{
    gate->HoldingThread.store(0);
    ReleaseMutex(gate->Holder);
}

} // namespace wbtrv
