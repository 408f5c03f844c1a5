// Which of the stores a directory is for, and the one on a server, loaded when it is first wanted.
#include "record-manager/platform.h"
#include "record-manager/server_part.h"
#include "record-manager/store.h"

namespace wbtrv {

int16_t AcquireStore(const char *directory, bool create, bool readOnly, const void *client, Store **store)
{
    if (!IsThere(directory, serverName)) return AcquireBooks(directory, create, &booksFunctions, store);
    if (IsThere(directory, booksName)) {
        Tell(directory, "books.mdb und books.server in einem Verzeichnis");
        return BtrStatusForeignFile;
    }
    const ServerPart *server = LoadServerPart();
    if (server == nullptr) return BtrStatusNoEngine;
    return server->AcquireStore(directory, create, readOnly, client, store);
}

} // namespace wbtrv
