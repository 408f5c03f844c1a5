#include "report-engine/complain.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <unistd.h>

namespace rs {

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
    // Nothing can be done about a standard error that takes nothing.
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, line, static_cast<size_t>(length));
    errno = savedErrno;
}

} // namespace rs
