#include "record-manager/platform.h"

#include "host/companions.h"
#include "host/error_texts.h"
#include "host/standard_error.h"
#include "record-manager/include/btrcall.h"
#include "record-manager/server_part.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

namespace wbtrv {

size_t NameIn(const char *path, size_t length)
{
    size_t name = length;
    while (name > 0 && path[name - 1] != '/') {
        --name;
    }
    return name;
}

size_t DirectoryBefore(const char *, size_t name) { return name > 1 ? name - 1 : name; }

bool IsThere(const char *directory, const char *name)
{
    char path[2 * BtrPathSize];
    const int size = snprintf(path, sizeof path, "%s/%s", directory, name);
    struct stat found;
    return size > 0 && static_cast<size_t>(size) < sizeof path && lstat(path, &found) == 0;
}

uint32_t OwnProcess() { return static_cast<uint32_t>(getpid()); }

bool HasEnded(uint32_t process) { return kill(static_cast<pid_t>(process), 0) != 0 && errno == ESRCH; }

void OnFork(void (*before)(), void (*inParent)(), void (*inChild)())
{
    pthread_atfork(before, inParent, inChild);
}

bool IsProcessEnding() { return false; }

void Tell(const char *place, const char *what)
{
    char line[BtrPathSize + 128];
    if (snprintf(line, sizeof line, "wbtrv32: %s: %s\n", place, what) < 0) return;
    host::WriteToStandardError(line, strlen(line));
}

namespace {

pthread_mutex_t partMutex = PTHREAD_MUTEX_INITIALIZER;
const ServerPart *part = nullptr; // guarded by partMutex; once set it stays

const ServerPart *LoadPart()
{
    constexpr const char *name = "libwbtrv32-server.so";
    (void)dlerror(); // what was not asked of an earlier failure
    void *library = host::LoadBeside(name);
    if (library == nullptr) {
        Tell(name, host::TextOfLoader(dlerror()).Text);
        return nullptr;
    }
    auto *give = reinterpret_cast<GiveServerPart>(dlsym(library, "WbtrvServerPart"));
    return give != nullptr ? give(serverPartForm, &limits) : nullptr;
}

} // namespace

const ServerPart *LoadServerPart()
{
    pthread_mutex_lock(&partMutex);
    if (part == nullptr) part = LoadPart();
    const ServerPart *loaded = part;
    pthread_mutex_unlock(&partMutex);
    return loaded;
}

} // namespace wbtrv
