#include "report-engine/complain.h"

#include "host/standard_error.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <unistd.h>

namespace rs {

namespace {

thread_local char lastLine[1024];

} // namespace

namespace {

struct Reason {
    int Error;
    const char *German;
};

constexpr Reason reasons[] = {
    {ENOSPC, "Auf dem Datenträger ist kein Platz mehr."},
    {EDQUOT, "Ihr Anteil am Datenträger ist aufgebraucht."},
    {EFBIG, "Die Datei wird zu groß."},
    {EACCES, "Dort darf nicht geschrieben werden."},
    {EPERM, "Dort darf nicht geschrieben werden."},
    {EROFS, "Der Datenträger ist schreibgeschützt."},
    {ENOENT, "Das Verzeichnis gibt es nicht."},
    {ENOTDIR, "Das Verzeichnis gibt es nicht."},
    {EISDIR, "Das ist ein Verzeichnis."},
    {EINVAL, "Das ist keine gewöhnliche Datei."},
    {ENAMETOOLONG, "Der Dateiname ist zu lang."},
    {ENOMEM, "Der Arbeitsspeicher reicht nicht."},
    {EIO, "Der Datenträger meldet einen Fehler."},
};

} // namespace

const char *InGerman(int error)
{
    for (const Reason &reason : reasons) {
        if (reason.Error == error) return reason.German;
    }
    return nullptr;
}

const char *LastComplaintInGerman()
{
    const size_t length = std::strlen(lastLine);
    for (const Reason &reason : reasons) {
        const char *english = strerrordesc_np(reason.Error);
        const size_t part = std::strlen(english);
        if (length >= part && std::strcmp(lastLine + length - part, english) == 0) return reason.German;
    }
    return "Den Grund nennt die Fehlerausgabe des Programms.";
}

void Complain(const char *path, const char *format, ...)
{
    const int savedErrno = errno;
    constexpr size_t longestPath = 500;
    const size_t pathLength = std::strlen(path);
    const char *const shown = pathLength > longestPath ? path + (pathLength - longestPath) : path;
    char line[1024];
    int length = std::snprintf(line, sizeof line, "librs: %s%s", shown == path ? "" : "...", shown);
    va_list arguments;
    va_start(arguments, format);
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): it was started one line above
    const int rest =
        std::vsnprintf(line + length, sizeof line - static_cast<size_t>(length), format, arguments);
    va_end(arguments);
    if (rest > 0) length += rest;
    if (length > static_cast<int>(sizeof line) - 2) length = static_cast<int>(sizeof line) - 2;
    for (int i = 0; i < length; ++i) {
        if (static_cast<unsigned char>(line[i]) < ' ' || line[i] == 0x7F) line[i] = ' ';
    }
    line[length++] = '\n';
    std::memcpy(lastLine, line, static_cast<size_t>(length));
    lastLine[length - 1] = 0; // without the line end
    // Nothing can be done about a standard error that takes nothing.
    static_cast<void>(host::WriteToStandardError(line, static_cast<size_t>(length)));
    errno = savedErrno;
}

} // namespace rs
