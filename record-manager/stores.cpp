// Which of the stores a directory is for, and the one on a server, loaded when it is first wanted.
#include "host/companions.h"
#include "host/standard_error.h"
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

// Writes "wbtrv32: PLACE: WHAT" on standard error.
void Tell(const char *place, const char *what)
{
    char line[BtrPathSize + 128];
    if (snprintf(line, sizeof line, "wbtrv32: %s: %s\n", place, what) < 0) return;
    host::WriteToStandardError(line, strlen(line));
}

pthread_mutex_t partMutex = PTHREAD_MUTEX_INITIALIZER;
const ServerPart *part = nullptr; // guarded by partMutex; once set it stays

const ServerPart *LoadPart()
{
    constexpr const char *name = "libwbtrv32-server.so";
    void *library = host::LoadBeside(name);
    if (library == nullptr) {
        const char *reason = dlerror();
        Tell(name, reason != nullptr ? reason : "fehlt, oder andere dürfen hineinschreiben");
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
        Tell(directory, "books.mdb und books.server in einem Verzeichnis");
        return BtrStatusForeignFile;
    }
    const ServerPart *server = Part();
    if (server == nullptr) return BtrStatusNoEngine;
    return server->AcquireStore(directory, create, readOnly, client, store);
}

} // namespace wbtrv
