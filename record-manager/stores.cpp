// Which of the stores a directory is for, and the one on a server, loaded when it is first wanted.
#include "record-manager/limits.h"
#include "record-manager/server_part.h"
#include "record-manager/store.h"

#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <pthread.h>
#include <sys/stat.h>

namespace wbtrv {

namespace {

pthread_mutex_t partMutex = PTHREAD_MUTEX_INITIALIZER;
const ServerPart *part = nullptr; // guarded by partMutex; once set it stays

// The part lies beside this library, or beside the program that this library is linked into.
const ServerPart *LoadPart()
{
    constexpr const char *name = "libwbtrv32-server.so";
    Dl_info here;
    char path[4096];
    if (dladdr(reinterpret_cast<const void *>(&AcquireStore), &here) == 0) return nullptr;
    const char *slash = strrchr(here.dli_fname, '/');
    const int length = slash != nullptr ? static_cast<int>(slash - here.dli_fname) + 1 : 0;
    const int size = snprintf(path, sizeof path, "%.*s%s", length, here.dli_fname, name);
    if (size < 0 || static_cast<size_t>(size) >= sizeof path) return nullptr;
    void *library = dlopen(path, RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (library == nullptr) {
        fprintf(stderr, "wbtrv32: %s\n", dlerror());
        return nullptr;
    }
    auto *give = reinterpret_cast<GiveServerPart>(dlsym(library, "WbtrvServerPart"));
    return give != nullptr ? give(serverPartForm, &limits) : nullptr;
}

const ServerPart *Part()
{
    pthread_mutex_lock(&partMutex);
    if (part == nullptr) part = LoadPart();
    const ServerPart *loaded = part;
    pthread_mutex_unlock(&partMutex);
    return loaded;
}

bool IsThere(const char *directory, const char *name)
{
    char path[2 * BtrPathSize];
    const int size = snprintf(path, sizeof path, "%s/%s", directory, name);
    struct stat found;
    return size > 0 && static_cast<size_t>(size) < sizeof path && lstat(path, &found) == 0;
}

} // namespace

int16_t AcquireStore(const char *directory, bool create, bool readOnly, const void *client, Store **store)
{
    if (!IsThere(directory, serverName)) return AcquireBooks(directory, create, &booksFunctions, store);
    if (IsThere(directory, booksName)) {
        fprintf(stderr, "wbtrv32: %s: %s und %s in einem Verzeichnis\n", directory, booksName, serverName);
        return BtrStatusForeignFile;
    }
    const ServerPart *server = Part();
    if (server == nullptr) return BtrStatusNoEngine;
    return server->AcquireStore(directory, create, readOnly, client, store);
}

} // namespace wbtrv
