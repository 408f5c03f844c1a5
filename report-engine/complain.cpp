#include "report-engine/complain.h"

#include "host/error_texts.h"
#include "host/standard_error.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace rs {

namespace {

thread_local char lastReason[600];

// What was said behind the path; a word that goes on from the path needs it.
void KeepReason(const char *path, const char *rest)
{
    const bool isSentence = std::strncmp(rest, ": ", 2) == 0;
    std::snprintf(lastReason, sizeof lastReason, "%s%s", isSentence ? "" : path,
                  isSentence ? rest + 2 : rest);
}

} // namespace

const char *LastReason() { return lastReason; }

void ComplainOf(const char *path, int error)
{
    // So it is called here when a path leads to a pipe or a device.
    Complain(path, ": %s",
             error == EINVAL ? "Das ist keine gewöhnliche Datei." : host::TextOfError(error).Text);
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
    KeepReason(shown, line + length);
    if (rest > 0) length += rest;
    if (length > static_cast<int>(sizeof line) - 2) length = static_cast<int>(sizeof line) - 2;
    for (int i = 0; i < length; ++i) {
        if (static_cast<unsigned char>(line[i]) < ' ' || line[i] == 0x7F) line[i] = ' ';
    }
    line[length++] = '\n';
    // Nothing can be done about a standard error that takes nothing.
    static_cast<void>(host::WriteToStandardError(line, static_cast<size_t>(length)));
    errno = savedErrno;
}

} // namespace rs
