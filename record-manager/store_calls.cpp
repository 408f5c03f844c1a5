// The system calls of the store that is linked in, under the names that the build gives them there.
#include "host/descriptors.h"

#include <cstdarg>
#include <cstdio>
#include <fcntl.h>

extern "C" {

// Where the store tells of a broken assertion before it ends the process: nowhere.
FILE *wbtrv_messages = nullptr;

int wbtrv_open(const char *path, int flags, ...)
{
    mode_t mode = 0;
    if ((flags & O_CREAT) != 0) {
        va_list arguments;
        va_start(arguments, flags);
        mode = va_arg(arguments, mode_t);
        va_end(arguments);
    }
    return host::OpenFile(AT_FDCWD, path, flags, mode);
}

} // extern "C"
