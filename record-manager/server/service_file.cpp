// The file that tells where a directory's books are.
#include "host/error_texts.h"
#include "host/standard_error.h"
#include "record-manager/server/connection.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

namespace wbtrv {

namespace {

int16_t Refuse(const char *directory, const char *text, int16_t status)
{
    Report(directory, text);
    return status;
}

bool ReadWhole(int fd, char *to, size_t room)
{
    size_t size = 0;
    while (size < room) {
        const ssize_t got = read(fd, to + size, room - size);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return false;
        if (got == 0) break;
        size += static_cast<size_t>(got);
    }
    if (size == room) return false;
    to[size] = 0;
    return strlen(to) == size;
}

// The next line that is neither empty nor a remark, without blanks around it; null behind the last.
char *NextLine(char **rest)
{
    while (**rest != 0) {
        char *line = *rest;
        char *end = strchr(line, '\n');
        *rest = end != nullptr ? end + 1 : line + strlen(line);
        if (end == nullptr) end = *rest;
        while (end > line && strchr(" \t\r\n", end[-1]) != nullptr) {
            --end;
        }
        *end = 0;
        line += strspn(line, " \t\r");
        if (*line != 0 && *line != '#') return line;
    }
    return nullptr;
}

// Passwords are libpq's business: in its own file, with its own rights.
bool NamesPassword(const char *connection, bool *valid)
{
    PQconninfoOption *options = PQconninfoParse(connection, nullptr);
    *valid = options != nullptr;
    bool named = false;
    for (const PQconninfoOption *option = options; option != nullptr && option->keyword != nullptr;
         ++option) {
        named = named || (strcmp(option->keyword, "password") == 0 && option->val != nullptr);
    }
    PQconninfoFree(options);
    return named;
}

} // namespace

int16_t ReadServiceFile(int directoryFd, const char *directory, ServiceFile *service)
{
    const int fd = openat(directoryFd, serverName, O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    if (fd < 0) return Refuse(directory, host::TextOfError(errno).Text, BtrStatusPermission);
    struct stat found;
    char text[connectionSize + schemaSize + 1024];
    const bool regular = fstat(fd, &found) == 0 && S_ISREG(found.st_mode);
    const bool whole = regular && ReadWhole(fd, text, sizeof text);
    close(fd);
    if (!regular) return Refuse(directory, "keine gewöhnliche Datei", BtrStatusPermission);
    if ((found.st_mode & (S_IWGRP | S_IWOTH)) != 0)
        return Refuse(directory, "andere dürfen die Datei schreiben (chmod go-w)", BtrStatusPermission);
    char *rest = text;
    const char *connection = whole ? NextLine(&rest) : nullptr;
    const char *schema = connection != nullptr ? NextLine(&rest) : nullptr;
    if (schema == nullptr || NextLine(&rest) != nullptr || strlen(connection) >= connectionSize ||
        strlen(schema) >= schemaSize) {
        return Refuse(directory, "erwartet werden zwei Zeilen, die Verbindung und das Schema",
                      BtrStatusForeignFile);
    }
    bool valid = false;
    if (NamesPassword(connection, &valid))
        return Refuse(directory, "ein Kennwort gehört nicht hierher, sondern in ~/.pgpass",
                      BtrStatusForeignFile);
    if (!valid)
        return Refuse(directory, "das ist keine Verbindung, wie libpq sie liest", BtrStatusForeignFile);
    for (const char *at = schema; *at != 0; ++at) {
        const bool plain = (*at >= 'a' && *at <= 'z') || (*at >= '0' && *at <= '9') || *at == '_';
        if (!plain)
            return Refuse(directory, "der Name des Schemas hat kleine Buchstaben, Ziffern und _",
                          BtrStatusForeignFile);
    }
    snprintf(service->Connection, sizeof service->Connection, "%s", connection);
    snprintf(service->Schema, sizeof service->Schema, "%s", schema);
    return BtrStatusOk;
}

} // namespace wbtrv
