#include "report-engine/complain.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <unistd.h>

namespace rs {

void Complain(const char *format, ...)
{
    const int savedErrno = errno;
    char line[1024] = "librs: ";
    constexpr int prefix = 7;
    va_list arguments;
    va_start(arguments, format);
    int length = std::vsnprintf(line + prefix, sizeof line - prefix - 1, format, arguments);
    va_end(arguments);
    if (length < 0) length = 0;
    length += prefix;
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
