#include "report-engine/sources.h"

#include "host/descriptors.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace rs {

char *ReadSource(const char *path, size_t &length)
{
    const int file = host::OpenFile(AT_FDCWD, path, O_RDONLY | O_NONBLOCK | O_NOCTTY);
    if (file < 0) return nullptr;
    struct stat status = {};
    char *bytes = nullptr;
    length = 0;
    int error = 0;
    if (fstat(file, &status) != 0) {
        error = errno;
    } else if (!S_ISREG(status.st_mode)) {
        error = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
    } else if (static_cast<uint64_t>(status.st_size) > maxTemplateSize) {
        error = EFBIG;
    } else {
        bytes = static_cast<char *>(std::malloc(maxTemplateSize + 1));
        if (bytes == nullptr) error = ENOMEM;
    }
    while (error == 0 && length <= maxTemplateSize) {
        const ssize_t count = read(file, bytes + length, maxTemplateSize + 1 - length);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) error = errno;
        if (count <= 0) break;
        length += static_cast<size_t>(count);
    }
    if (error == 0 && length > maxTemplateSize) error = EFBIG;
    close(file);
    if (error == 0) {
        char *fitted = static_cast<char *>(std::realloc(bytes, length + 1));
        return fitted != nullptr ? fitted : bytes;
    }
    std::free(bytes);
    errno = error;
    return nullptr;
}

const SharedSource *SharedSourceOf(Report &report, const char *name)
{
    for (int i = 0; i < report.SharedCount; ++i) {
        if (std::strcmp(report.Shared[i].Name, name) == 0) return &report.Shared[i];
    }
    if (report.SharedCount == maxShared) {
        errno = E2BIG;
        return nullptr;
    }
    char path[PATH_MAX];
    const char *slash = std::strrchr(report.Path, '/');
    const int directory = slash != nullptr ? static_cast<int>(slash - report.Path) + 1 : 0;
    const int length = std::snprintf(path, sizeof path, "%.*s%s", directory, report.Path, name);
    if (length < 0 || length >= static_cast<int>(sizeof path)) {
        errno = ENAMETOOLONG;
        return nullptr;
    }
    SharedSource &shared = report.Shared[report.SharedCount];
    shared.Source = ReadSource(path, shared.Length);
    if (shared.Source == nullptr) return nullptr;
    std::snprintf(shared.Name, sizeof shared.Name, "%s", name);
    ++report.SharedCount;
    return &shared;
}

} // namespace rs
