#include "record-manager/lmdb/windows/growth.h"

#include "record-manager/limits.h"
#include "record-manager/lmdb/private.h"
#include "record-manager/locks.h"
#include "record-manager/windows/handles.h"

#include <windows.h>

namespace wbtrv {

namespace {

// How long a writer that needs room soon waits for who reads in this process.
constexpr unsigned roomWait_ms = 1000;

// Waits as long as the condition holds, with the mutex given back meanwhile. False when it still does.
template <typename Condition> bool WaitWhile(Growth &growing, unsigned wait_ms, const Condition &condition)
{
    Patience patience = StartPatience(wait_ms);
    while (condition()) {
        pthread_mutex_unlock(&growing.Mutex);
        const bool more = WaitMore(&patience);
        pthread_mutex_lock(&growing.Mutex);
        if (!more) return !condition();
    }
    return true;
}

// Whether the process has room for a map of this size beside the one there is.
bool HasAddresses(size_t size)
{
    void *place = VirtualAlloc(nullptr, size, MEM_RESERVE, PAGE_NOACCESS);
    if (place == nullptr) return false;
    VirtualFree(place, 0, MEM_RELEASE);
    return true;
}

size_t MapSizeOf(const Environment &own)
{
    MDB_envinfo info;
    return mdb_env_info(own.Real, &info) == 0 ? info.me_mapsize : 0;
}

// What the map has to cover: what another process has made of the file.
size_t FileSizeOf(const Store &store)
{
    LARGE_INTEGER size;
    return GetFileSizeEx(HandleOf(store.PresenceFd), &size) ? static_cast<size_t>(size.QuadPart) : 0;
}

// Nobody reads. A map that could not be made again leaves the books without one.
int16_t ReplaceMap(Store *store, size_t before, size_t size)
{
    if (!HasAddresses(size)) return BtrStatusHandleTableFull;
    const int error = mdb_env_set_mapsize(store->Own->Real, size);
    if (error == 0) return BtrStatusOk;
    store->Own->Dead = mdb_env_set_mapsize(store->Own->Real, before) != 0;
    return StatusOf(error);
}

// Makes the map larger if it is not, as soon as nobody reads in it.
int16_t ChangeMap(Store *store, size_t size, unsigned wait_ms)
{
    Growth &growing = store->Own->Growing;
    pthread_mutex_lock(&growing.Mutex);
    int16_t status = BtrStatusFileLocked;
    if (WaitWhile(growing, wait_ms, [&] { return growing.Waits; })) {
        growing.Waits = true;
        if (WaitWhile(growing, wait_ms, [&] { return growing.Reading > 0; })) {
            const size_t before = MapSizeOf(*store->Own);
            status = before < size ? ReplaceMap(store, before, size) : static_cast<int16_t>(BtrStatusOk);
        }
        growing.Waits = false;
    }
    pthread_mutex_unlock(&growing.Mutex);
    return status;
}

// The file first, so that a full disk is told before the map is given up.
bool Lengthen(const Store &store, size_t size)
{
    LARGE_INTEGER end;
    end.QuadPart = static_cast<LONGLONG>(size);
    return SetFilePointerEx(HandleOf(store.PresenceFd), end, nullptr, FILE_BEGIN) != 0 &&
           SetEndOfFile(HandleOf(store.PresenceFd)) != 0;
}

} // namespace

int16_t EnterMap(Environment *own)
{
    Growth &growing = own->Growing;
    pthread_mutex_lock(&growing.Mutex);
    const bool free = WaitWhile(growing, limits.SetupWait_ms, [&] { return growing.Waits; });
    if (free) growing.Reading++;
    pthread_mutex_unlock(&growing.Mutex);
    return free ? BtrStatusOk : BtrStatusFileLocked;
}

void LeaveMap(Environment *own)
{
    pthread_mutex_lock(&own->Growing.Mutex);
    own->Growing.Reading--;
    pthread_mutex_unlock(&own->Growing.Mutex);
}

int16_t FollowMap(Store *store) { return ChangeMap(store, FileSizeOf(*store), limits.SetupWait_ms); }

int16_t MakeRoom(Store *store)
{
    MDB_envinfo info;
    MDB_stat shape;
    if (mdb_env_info(store->Own->Real, &info) != 0 || mdb_env_stat(store->Own->Real, &shape) != 0)
        return BtrStatusIoError;
    const size_t file = FileSizeOf(*store);
    if (file > info.me_mapsize) return FollowMap(store);
    const size_t used = (info.me_last_pgno + 1) * shape.ms_psize;
    if (used <= info.me_mapsize / 2 || info.me_mapsize >= limits.MapSize) return BtrStatusOk;
    // Where it cannot grow now, the next writer tries again; who finds it full is answered with 18.
    size_t size = info.me_mapsize * 2;
    if (size > limits.MapSize) size = limits.MapSize;
    if (Lengthen(*store, size))
        (void)ChangeMap(store, size, used > info.me_mapsize / 4 * 3 ? roomWait_ms : 0);
    return store->Own->Dead ? BtrStatusIoError : BtrStatusOk;
}

} // namespace wbtrv
