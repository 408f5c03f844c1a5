#include "host/descriptors.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace host {

void GuardStandardDescriptors()
{
    const int saved = errno;
    for (int number = 0; number < firstOwnDescriptor; ++number) {
        if (fcntl(number, F_GETFD) >= 0) continue;
        // A descriptor that only names a place cannot be written, and the root is always there. It takes the
        // lowest free number, which another thread may have changed meanwhile.
        const int place = open("/", O_PATH | O_DIRECTORY | O_CLOEXEC);
        if (place >= firstOwnDescriptor) close(place);
    }
    errno = saved;
}

int KeepAboveStandard(int descriptor)
{
    if (descriptor < 0 || descriptor >= firstOwnDescriptor) return descriptor;
    const int moved = fcntl(descriptor, F_DUPFD_CLOEXEC, firstOwnDescriptor);
    const int error = errno;
    close(descriptor);
    errno = error;
    return moved;
}

int OpenFile(int directory, const char *path, int flags, mode_t mode)
{
    GuardStandardDescriptors();
    return KeepAboveStandard(openat(directory, path, flags | O_CLOEXEC, mode));
}

} // namespace host
